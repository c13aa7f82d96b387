#pragma once

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/sizer.h>
#include <wx/textctrl.h>

#include <memory>
#include <string>

#include "tank/contents.h"
#include "ui/common/releasedkeys.h"
#include "ui/common/reportlist.h"
#include "ui/common/rowlist.h"
#include "ui/common/statuspanels.h"
#include "view/viewtext.h"

namespace kestrel {

// Shows what an archive holds, and gets it out. Shown modal.
class frmArchive final : public wxDialog {
  public:
    // `openFile` is for the viewer of texts.
    frmArchive(wxWindow* parent, std::unique_ptr<TankContents> contents, OpenFile openFile);

    wxTextCtrl* txtFilter;
    NodeTree* tvwFolders;
    std::unique_ptr<ReportList> lvwFiles;
    wxButton* cmdView;
    wxButton* cmdFind;
    wxButton* cmdExtract;
    wxButton* cmdDone;
    StatusPanels* stbMain;

    enum Panel { pnlShown, pnlArchive };

    // The copy of a file that is to be opened in the main window, which ended this one; empty
    // without one.
    const std::wstring& copy() const noexcept { return copy_; }

  private:
    using Numbers = TankContents::Numbers;

    wxSizer* buildFilter();
    wxSizer* buildPanes();
    wxSizer* buildButtons();
    void layOut();
    void bind();
    void fillTree();
    void fitTree();

    bool wants(const KeyPress& key) const;
    void keyReleased(const KeyPress& key);
    RowOrder sorted(const SortState& state);
    RowOrder shownOf(const RowOrder& order);
    void enter(std::uint32_t folder);
    void showFolder(std::uint32_t folder);
    void limit();
    void tellShown();
    void refresh();
    void activate();
    void view(std::uint32_t number);
    void openCopy(std::uint32_t number);
    void find();
    void extractSome();

    std::unique_ptr<TankContents> contents_;
    OpenFile openFile_;
    Numbers nodes_;  // the folders of the tree's nodes
    std::uint32_t folder_ = 0;
    Numbers found_;  // all that the list would show
    int treeWidth_;
    wxSizerItem* treeItem_ = nullptr;
    std::wstring lastSearch_;
    std::wstring copy_;
    ReleasedKeys released_;
};

}  // namespace kestrel
