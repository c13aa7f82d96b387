#pragma once

#include <wx/checkbox.h>

#include <array>
#include <string>
#include <string_view>

#include "tank/build.h"
#include "tank/buildmemory.h"
#include "ui/common/pathdialog.h"
#include "ui/frmZeltor/timedlauncher.h"
#include "view/viewtext.h"

namespace kestrel {

// Asks what archive to build, starts the builder and shows what it writes. Shown
// modal.
class frmZeltor final : public PathDialog {
  public:
    // `launcher` must outlive the dialog; `openFile` is for the log's viewer.
    frmZeltor(wxWindow* parent, TimedLauncher& launcher, OpenFile openFile);

    void saveFiles() override;

    enum Command { kDone, kCreate, kPickSource, kPickTarget, kLastLog, kCommands };
    enum Label {
        lblSource,
        lblTarget,
        lblTitle,
        lblAuthor,
        lblBuild,
        lblPriority,
        lblCopyright,
        kLabels
    };

    wxStaticBox* fraMain;
    HistoryCombo* cboSourceFolder;
    HistoryCombo* cboTarget;
    wxStaticBox* fraOptional;
    wxTextCtrl* txtTitle;
    wxTextCtrl* txtAuthor;
    wxTextCtrl* txtBuild;
    wxTextCtrl* txtPriority;
    wxTextCtrl* txtCopyright;
    wxCheckBox* chkDev;
    wxCheckBox* chkMPXfer;
    wxCheckBox* chkProtected;
    wxWindow* lblInfo;  // null without a page to show
    std::array<wxStaticText*, kLabels> lblGeneric;
    std::array<wxButton*, kCommands> cmdCommands;
    TimedLauncher& redLauncher;

  private:
    wxSizer* buildMain();
    wxSizer* buildOptional();
    wxSizer* buildFlags();
    wxSizer* buildButtons();
    void layOut();
    void bindCommands();

    void pathsChanged() override;
    void entered() override { press(*cmdCommands[kCreate]); }
    void create();
    BuildRequest request() const;
    bool mayCut(const BuildRequest& request);
    void showLog();
    BuildFields fields() const;
    void fill(const BuildFields& fields);
    void fillRemembered();
    void pickTarget();
    void priorityLeft();
    void refusePriority();

    OpenFile openFile_;
    BuildMemory memory_;
    std::wstring lastTarget_;  // as the box had it
    BuildFields filled_;       // what the dialog put into the fields, or keeps of them
    bool cutsAgreed_ = false;
};

}  // namespace kestrel
