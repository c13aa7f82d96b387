#pragma once

#include <wx/dialog.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "gas/chain.h"
#include "ui/common/dialogend.h"
#include "ui/common/rowlist.h"
#include "ui/common/textcommands.h"

namespace kestrel {

// The Specializes browser: the chain of a template as a tree and, beside it, the
// source of the node that was clicked last. The caller names the template and
// shows the window, modal or not. One that is shown modeless destroys itself when
// it closes.
class frmSpecialize final : public wxDialog, public FileKeeper {
  public:
    frmSpecialize(wxWindow* parent, OpenFile openFile);
    ~frmSpecialize() override;
    void saveFiles() override;

    // Builds the chain of the template `name` of the open file.
    void BaseTemplateName(std::wstring_view name);

    // As those of frmView.
    void CanEdit(bool can) { txtView->canEdit(can); }
    void TextFormat(int format) { txtView->textFormat(format); }
    void TextBlock(std::wstring_view text);
    std::wstring TextBlock() const { return txtView->text(); }
    bool TextBlockChanged() const { return txtView->changed(); }

    bool Show(bool show = true) override;

  private:
    void layOut();
    wxSizer* panes();
    wxSizer* buttonRow();
    void paintBorder(wxPaintEvent& event);
    // Gives the tree the width that the user chose, as far as the text keeps some.
    void fitTree();
    void bindTree();

    void clickLater();
    void nodeClicked();
    bool mayReplaceText() const;
    void showChain(std::size_t selectedNode);
    void showSource();
    void closing(wxCloseEvent& event);
    void saveList();

    OpenFile openFile_;
    TextCommands commands_;
    SpecializesChain chain_;
    std::size_t shown_ = 0;  // the node whose source is shown
    wxSizerItem* treeItem_ = nullptr;
    int treeWidth_;
    bool clicked_ = false;  // a click waits for its events to end
    bool unsaved_ = false;

  public:
    TextPane* const txtView;
    NodeTree* const tvwTemplates;
    const std::array<wxButton*, TextCommands::kButtons + 1> cmdCommands;
    StatusPanels* const stbMain;
};

}  // namespace kestrel
