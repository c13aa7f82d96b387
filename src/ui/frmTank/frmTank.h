#pragma once

#include <wx/button.h>
#include <wx/sizer.h>
#include <wx/statbox.h>

#include <array>
#include <string>
#include <string_view>

#include "ui/common/pathdialog.h"
#include "view/viewtext.h"

namespace kestrel {

// Asks which archive to look into, and shows what is in it. Shown modal.
class frmTank final : public PathDialog {
  public:
    // `openFile` is for the viewer of the reports.
    frmTank(wxWindow* parent, OpenFile openFile);

    // There is no 3.
    enum Command { kDone, kPick, kFind, kTest = 4, kList, kProperties, kBrowse, kCommands };

    // As of frmArchive.
    const std::wstring& copy() const noexcept { return copy_; }

    wxStaticBox* fraName;
    HistoryCombo* cboTankFilename;
    wxStaticBox* fraTools;
    wxWindow* lblInfo;  // null without a page to show
    std::array<wxButton*, kCommands> cmdCommands{};

    // Takes over a file that was dropped on the dialog; false when it is none.
    bool drop(const std::wstring& path);

  private:
    wxSizer* buildName();
    wxSizer* buildTools();
    wxSizer* buildButtons();
    void layOut();
    void bindCommands();

    void pathsChanged() override;
    void entered() override { press(*cmdCommands[kList]); }

    std::wstring path();
    void pick();
    void find();
    void test();
    void list();
    void showProperties();
    void browse();
    void showReport(std::wstring report, std::wstring_view path);

    OpenFile openFile_;
    std::wstring copy_;
    std::wstring lastSearch_;  // the last text that was found
};

}  // namespace kestrel
