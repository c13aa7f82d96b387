#include "services/process.h"

#include <gtest/gtest.h>

#include <set>

#include "services/errors.h"
#include "support/shown.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

using test::TempFolder;

std::function<bool(std::wstring_view)> onlyFiles(std::set<std::wstring> files) {
    return [files = std::move(files)](std::wstring_view path) {
        return files.count(std::wstring(path)) != 0;
    };
}

TEST(Process, AConfiguredPathIsTakenWhole) {
    const struct {
        const wchar_t* line;
        const wchar_t* configured;
        CommandParts parts;
    } cases[] = {
        {L"/opt/my pad/run /a b.gas", L"/opt/my pad/run", {L"/opt/my pad/run", L"/a b.gas"}},
        {L"/opt/my pad/run -x", L"/opt/my pad/run -x", {L"/opt/my pad/run -x", L""}},
        {L"/opt/my pad/run", L"", {L"/opt/my pad/run", L""}},
        {L"notepad.exe /a b.gas", L"notepad.exe", {L"notepad.exe", L"/a b.gas"}},
        {L"wine /opt/my pad.exe a", L"wine /opt/my pad.exe", {L"wine", L"/opt/my pad.exe a"}},
        {L"  tool  ", L"", {L"tool", L""}},
        {L"", L"", {L"", L""}},
    };
    for (const auto& c : cases) {
        const CommandParts parts = splitCommandLine(c.line, c.configured);
        EXPECT_EQ(test::shown(parts.program), test::shown(c.parts.program)) << test::shown(c.line);
        EXPECT_EQ(test::shown(parts.arguments), test::shown(c.parts.arguments));
    }
}

TEST(Process, AFileNameAtTheEndIsOneWord) {
    const auto isFile = onlyFiles({L"/a b.gas", L"b.gas"});
    using Words = std::vector<std::wstring>;
    EXPECT_EQ(splitArguments(L" --wide  -x /a b.gas", isFile),
              (Words{L"--wide", L"-x", L"/a b.gas"}));
    EXPECT_EQ(splitArguments(L"/c b.gas", isFile), (Words{L"/c", L"b.gas"}));
    EXPECT_EQ(splitArguments(L"  ", isFile), Words{});
}

TEST(Process, FailsWithTheSystemsReason) {
    const TempFolder folder;
    const std::wstring text = folder.put(L"plain.txt", "no program\n");
    std::filesystem::permissions(folder.native(L"plain.txt"), std::filesystem::perms::owner_all);
    const struct {
        std::wstring line;
        int number;
    } cases[] = {{folder.path(L"missing"), kFileNotFound},
                 {L"no-such-program-anywhere x", kFileNotFound},
                 {folder.path(), kPermissionDenied},
                 {text, kPathError}};
    for (const auto& c : cases) {
        try {
            startProgram(c.line);
            ADD_FAILURE() << test::shown(c.line) << " was started";
        } catch (const RunTimeError& error) {
            EXPECT_EQ(error.number(), c.number) << test::shown(error.description());
        }
    }
}

}  // namespace
}  // namespace kestrel
