#include "services/drafts.h"

#include <gtest/gtest.h>

#include "services/files.h"
#include "services/filesystem.h"
#include "support/recordinghost.h"
#include "support/system.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

class Drafts : public testing::Test {
  protected:
    Drafts() { test::setSettingsFolder(folder.native()); }

    test::RecordingHost host;
    test::TempFolder folder;
    Draft draft{L"Edit Source: \u0142ukasz",
                {folder.put(L"a.gas", "[x]"), 3},
                FileStamp{3, -7},
                L"[x]\r\n{}",
                L"12:\n\u20ac"};
};

TEST_F(Drafts, AreOfferedOnceTheirRunHasEnded) {
    DraftFile open;
    open.keep(draft);
    EXPECT_TRUE(leftDrafts().empty());
    open = {};
    {
        const auto left = leftDrafts();
        ASSERT_EQ(left.size(), 1U);
        EXPECT_EQ(left[0].draft, draft);
        EXPECT_TRUE(leftDrafts().empty()) << "two programs ask";
    }
    auto again = leftDrafts();
    ASSERT_EQ(again.size(), 1U);
    again[0].file.drop();
    EXPECT_TRUE(leftDrafts().empty());
}

// What a crash of the system may leave of a file.
TEST_F(Drafts, ThatAreNoneArePassedOver) {
    DraftFile open;
    open.keep(draft);
    const std::wstring own = draftFolder();
    const std::wstring path = joinPath(own, filesystem::fileNames(own).front());
    const std::string whole = *filesystem::read(path.substr(0, path.rfind(L".draft") + 6));
    open.drop();
    EXPECT_TRUE(filesystem::fileNames(own).empty());
    const std::wstring name = joinPath(own, L"0.draft");
    for (std::size_t size = 1; size < whole.size(); size += 5) {
        filesystem::replace(name, whole.substr(0, size), {});
        EXPECT_TRUE(leftDrafts().empty()) << size;
    }
    EXPECT_TRUE(host.log.empty());
    EXPECT_TRUE(fileExists(name)) << "another version may know it";
    filesystem::replace(name, whole, {});
    EXPECT_EQ(leftDrafts().size(), 1U);
}

TEST_F(Drafts, AFailureIsToldOnce) {
    folder.put(fileName(draftFolder()), "no folder");
    DraftFile open;
    open.keep(draft);
    draft.text += L"x";
    open.keep(draft);
    EXPECT_EQ(host.log.size(), 1U);
}

}  // namespace
}  // namespace kestrel
