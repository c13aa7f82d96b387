#pragma once

#include <wx/checkbox.h>

#include <array>
#include <string>

#include "ui/common/pathdialog.h"

namespace kestrel {

// Asks what to convert, and converts it. Shown modal.
class frmExport final : public PathDialog {
  public:
    explicit frmExport(wxWindow* parent);

    enum Command { kDone, kConvert, kPickSource, kPickTarget, kCommands };
    enum Label { lblSource, lblTarget, lblTitle, lblAuthor, lblBuild, lblCopyright, kLabels };

    wxStaticBox* fraMain;
    HistoryCombo* cboSourceFolder;
    HistoryCombo* cboTarget;
    wxStaticBox* fraOptional;
    wxCheckBox* chkSingleFile;
    wxTextCtrl* txtTitle;
    wxTextCtrl* txtAuthor;
    wxTextCtrl* txtBuild;
    wxTextCtrl* txtCopyright;
    std::array<wxStaticText*, kLabels> lblGeneric;
    std::array<wxButton*, kCommands> cmdCommands;

    // Takes over a file or folder that was dropped on the dialog: a folder, or
    // that of a `.gas` file, becomes the source. False for anything else.
    bool drop(const std::wstring& path);

  private:
    wxSizer* buildMain();
    wxSizer* buildOptional();
    wxSizer* buildButtons();
    void layOut();
    void bindCommands();

    void pathsChanged() override;
    void entered() override { press(*cmdCommands[kConvert]); }
    void modeChanged();
    void convert();
    std::wstring header() const;
    void pickTarget();
};

}  // namespace kestrel
