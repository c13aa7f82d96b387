#pragma once

#include <wx/checkbox.h>
#include <wx/radiobut.h>

#include <string>

#include "tank/extract.h"
#include "ui/common/pathdialog.h"

namespace kestrel {

// Asks what to get out of an archive and where to, and does it. Shown modal.
class frmExtract final : public PathDialog {
  public:
    // `selected` and `shown` are what the archive's window has selected (nothing, or one) and
    // shows; `filtered` where it shows some of what there is.
    frmExtract(wxWindow* parent, TankContents& contents, TankContents::Numbers selected,
               TankContents::Numbers shown, bool filtered);

    wxStaticBox* fraTarget;
    wxStaticText* lblTarget;
    HistoryCombo* cboTarget;
    wxButton* cmdPick;
    wxStaticBox* fraFiles;
    wxRadioButton* optSelected;
    wxRadioButton* optShown;
    wxRadioButton* optAll;
    wxCheckBox* chkPaths;
    wxButton* cmdExtract;
    wxButton* cmdDone;

  private:
    wxSizer* buildFiles(bool filtered);
    void layOut(bool filtered);
    void pathsChanged() override;
    void entered() override { press(*cmdExtract); }
    TankContents::Numbers wanted() const;
    Existing ask(std::size_t count, std::wstring_view folder) const;
    void extractFiles();

    TankContents& contents_;
    TankContents::Numbers selected_;
    TankContents::Numbers shown_;
};

}  // namespace kestrel
