#include <wx/filedlg.h>

#include "services/filesystem.h"
#include "ui/common/host_wx.h"
#include "ui/common/strings.h"
#include "ui/harness.h"

namespace kestrel::test {
namespace {

TEST(FileFilters, AreWhatTheToolkitUnderstands) {
    EXPECT_EQ(toolkitPattern(L"*.gas"), L"*.[Gg][Aa][Ss]");
    EXPECT_EQ(toolkitPattern(L" *.ds*"), L"*.[Dd][Ss]*") << "no blank at the start";
    EXPECT_EQ(toolkitPattern(L"*.*"), L"*") << "files without a dot too";
    EXPECT_EQ(toolkitFilter(L"Save (*.a;*.b)|*.a;*.b|All (*.*)|*.*"),
              L"Save (*.a;*.b)|*.[Aa];*.[Bb]|All (*.*)|*");
}

TEST(FileFilters, GiveABareNameItsExtension) {
    EXPECT_EQ(extensionOf(L"*.tab"), L".tab");
    for (const wchar_t* pattern : {L"*.*", L"*.a;*.b", L"name.tab", L"*.t*", L""}) {
        EXPECT_EQ(extensionOf(pattern), L"") << toWx(pattern);
    }
}

class FileDialogs : public UiTest {};

TEST_F(FileDialogs, ProposeTheNameOfAFile) {
    FileDialogWx dialog;
    const std::wstring file = folder.put(L"a.gas", "x");
    for (const bool atFile : {true, false}) {
        const ExpectDialog expected([&](wxDialog& shownDialog) {
            const auto& picker = dynamic_cast<wxFileDialog&>(shownDialog);
            EXPECT_EQ(picker.GetFilename(), atFile ? "a.gas" : "");
            return wxID_CANCEL;
        });
        EXPECT_FALSE(dialog.show({L"Title", L"All|*.*", atFile ? file : folder.path(), true}));
        EXPECT_EQ(dialog.path(), L"");
    }
    const ExpectDialog expected([](wxDialog& shownDialog) {
        // Only there programs are known by their names.
        EXPECT_EQ(dynamic_cast<wxFileDialog&>(shownDialog).GetFilterIndex(),
                  filesystem::separator() == L'\\' ? 0 : 1);
        return wxID_CANCEL;
    });
    dialog.show({L"Title", L"Programs|*.exe|All|*.*", folder.path(), false});
}

}  // namespace
}  // namespace kestrel::test
