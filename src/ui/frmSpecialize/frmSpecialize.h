#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "ui/common/rowlist.h"
#include "ui/textpane/textwindow.h"
#include "view/chain.h"

namespace kestrel {

// The Specializes browser: the chain of a template as a tree and, beside it, the
// source of the node that was clicked last. The caller names the template.
class frmSpecialize final : public TextWindow {
  public:
    frmSpecialize(wxWindow* parent, OpenFile openFile);
    ~frmSpecialize() override;
    void saveFiles() override;

    // Builds the chain of the template `name` of the open file.
    void BaseTemplateName(std::wstring_view name);

  private:
    wxSizer* panes();
    wxSizer* buttonRow();
    // Gives the tree the width that the user chose, as far as the text keeps some.
    void fitTree();
    void bindTree();

    void clickLater();
    void nodeClicked();
    bool mayReplaceText() const;
    void showChain(std::size_t selectedNode);
    void showSource();
    void saveList();

    OpenFile openFile_;
    SpecializesChain chain_;
    std::size_t shown_ = 0;  // the node whose source is shown
    wxSizerItem* treeItem_ = nullptr;
    int treeWidth_;
    bool clicked_ = false;  // a click waits for its events to end
    bool unsaved_ = false;

  public:
    NodeTree* const tvwTemplates;
    const std::array<wxButton*, TextCommands::kButtons + 1> cmdCommands;
};

}  // namespace kestrel
