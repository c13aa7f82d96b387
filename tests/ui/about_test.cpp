#include <wx/stattext.h>
#include <wx/versioninfo.h>

#include <algorithm>
#include <set>

#include "ui/common/strings.h"
#include "ui/frmAbout/frmAbout.h"
#include "ui/harness.h"

namespace kestrel::test {
namespace {

class AboutBox : public UiTest {
  protected:
    AboutBox() { gProgram().version = {L"Kestrel Trial Browser", L"Kestrel", 4, 15, 6}; }

    frmAbout& shown(std::wstring_view website) {
        auto* box = new frmAbout(nullptr, website);
        show(*box);
        return *box;
    }
};

std::vector<wxString> texts(const wxWindow& window) {
    std::vector<wxString> found;
    for (const wxWindow* child : window.GetChildren()) {
        if (dynamic_cast<const wxStaticText*>(child)) found.push_back(child->GetLabel());
    }
    return found;
}

bool contains(const std::vector<wxString>& all, const wxString& text) {
    return std::find(all.begin(), all.end(), text) != all.end();
}

TEST_F(AboutBox, ShowsAndCopiesTheVersionFirstThenAValueALine) {
    frmAbout& box = shown(L"");
    const std::vector<wxString> seen = texts(box);
    for (const char* text :
         {"Kestrel", "Kestrel Trial Browser, version 4.15.6", "Made by the Kestrel developers"}) {
        EXPECT_TRUE(contains(seen, text)) << text;
    }
    EXPECT_EQ(box.lnkWebsite, nullptr);
    EXPECT_TRUE(contains(seen, "No web page is set for this build.")) << "no dead link";
    const wxArrayString lines = wxSplit(toWx(aboutText()), '\n');
    ASSERT_GT(lines.size(), 5U);
    EXPECT_EQ(lines[0].Strip(wxString::trailing), "Kestrel Trial Browser 4.15.6");
    EXPECT_TRUE(lines.Last().empty());
    std::set<wxString> labels;
    for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
        const wxString label = lines[i].BeforeFirst(':');
        const wxString value = lines[i].AfterFirst(':').Strip(wxString::both);
        EXPECT_TRUE(labels.insert(label).second) << label;
        EXPECT_FALSE(value.empty() || value.StartsWith("0.0") || value.StartsWith("-")) << lines[i];
        EXPECT_TRUE(contains(seen, label + ":") && contains(seen, value)) << lines[i];
    }
    const wxVersionInfo wx = wxGetLibraryVersionInfo();
    EXPECT_TRUE(
        lines[1].StartsWith(wxString::Format("wxWidgets: %d.%d.", wx.GetMajor(), wx.GetMinor())));
    for (const char* label : {"Scintilla", "C++ library", "Compiler", "System"}) {
        EXPECT_EQ(labels.count(label), 1U) << label;
    }
    click(*box.cmdCommands[1]);
    EXPECT_EQ(host.log, std::vector<std::string>{"clipboard: " + test::shown(aboutText())});
    EXPECT_TRUE(box.IsShown());
}

TEST_F(AboutBox, OpensItsPageThroughTheShellOnce) {
    frmAbout& box = shown(L"https://kestrel.example/a?b=1&c");
    ASSERT_NE(box.lnkWebsite, nullptr);
    EXPECT_EQ(box.lnkWebsite->GetLabel(), "https://kestrel.example/a?b=1&c");
    wxHyperlinkEvent event(box.lnkWebsite, box.lnkWebsite->GetId(), box.lnkWebsite->GetURL());
    // An event that goes on is opened by the toolkit too.
    EXPECT_TRUE(box.lnkWebsite->ProcessWindowEvent(event));
    EXPECT_EQ(host.log,
              std::vector<std::string>{"perform: open | https://kestrel.example/a?b=1&c"});
}

TEST_F(AboutBox, IsModalAndClosedByEscAndItsDefaultButton) {
    frmAbout& byKey = shown(L"");
    EXPECT_EQ(byKey.GetDefaultItem(), byKey.cmdCommands[0]);
    key(*byKey.cmdCommands[1], WXK_ESCAPE);
    waitUntil("Esc has closed the box", [&] { return !byKey.IsShown(); });
    frmAbout& byButton = shown(L"");
    EXPECT_EQ(byButton.cmdCommands[0]->GetLabel(), "Close");
    EXPECT_EQ(byButton.cmdCommands[1]->GetLabel(), "&Copy");
    click(*byButton.cmdCommands[0]);
    waitUntil("the button has closed the box", [&] { return !byButton.IsShown(); });

    const ExpectDialog dialog([](wxDialog& box) {
        EXPECT_NE(dynamic_cast<frmAbout*>(&box), nullptr);
        EXPECT_EQ(box.GetTitle(), "About Kestrel");
        return wxID_CANCEL;
    });
    showAbout(nullptr);
}

}  // namespace
}  // namespace kestrel::test
