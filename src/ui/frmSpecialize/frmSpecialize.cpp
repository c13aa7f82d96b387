#include "ui/frmSpecialize/frmSpecialize.h"

#include <algorithm>
#include <utility>

#include "base/paths.h"
#include "services/guard.h"
#include "services/program.h"
#include "ui/common/accessible.h"
#include "ui/common/listen.h"
#include "ui/common/sash.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/host/host_wx.h"

namespace kestrel {
namespace {

constexpr int kFirstWidth = 860;
constexpr int kFirstHeight = 560;
constexpr int kTreeWidth = 240;
constexpr int kLeastPane = 90;
constexpr int kFileShare = 5;

// Far more than any chain that people write. A tree of many more is wider than
// toolkits can draw.
constexpr std::size_t kMostLevels = 250;

wxButton* addResetButton(wxWindow* parent) {
    auto* button = new wxButton(parent, wxID_ANY, "&Reset File List", wxDefaultPosition,
                                wxDefaultSize, 0, wxDefaultValidator, "cmdCommands6");
    button->SetToolTip("Forget the files that are searched for source");
    return button;
}

std::array<wxButton*, TextCommands::kButtons + 1> withReset(const TextCommands& commands,
                                                            wxButton* reset) {
    std::array<wxButton*, TextCommands::kButtons + 1> buttons{};
    std::ranges::copy(commands.cmdCommands, buttons.begin());
    buttons.back() = reset;
    return buttons;
}

}  // namespace

frmSpecialize::frmSpecialize(wxWindow* parent, OpenFile openFile)
    : TextWindow(parent, "Specializes Browser", "frmSpecialize", openFile, kFileShare),
      openFile_(std::move(openFile)),
      treeWidth_(scaled(*this, kTreeWidth)),
      tvwTemplates(makeNodeTree(this, "tvwTemplates")),
      cmdCommands(withReset(commands_, addResetButton(this))) {
    setAccessibleName(tvwTemplates->window(), "Chain");
    tvwTemplates->window().MoveBeforeInTabOrder(txtView);
    cmdCommands.back()->MoveBeforeInTabOrder(cmdCommands[TextCommands::kScriptEditor]);
    wxSizer* content = panes();
    commands_.frame(tvwTemplates->window());
    listen(*this, wxEVT_SIZE, [this] { fitTree(); });
    layOut(content, buttonRow(), wxSize(kFirstWidth, kFirstHeight));
    bindTree();
    txtView->tabMovesOn(true);
    cmdCommands.back()->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) {
        guarded(L"cmdCommands", [this] { chain_.resetFiles(); });
    });
    tvwTemplates->window().SetFocus();
}

frmSpecialize::~frmSpecialize() {
    saveList();
}

wxSizer* frmSpecialize::panes() {
    const int margin = commands_.margin();
    auto* sash = new Sash(this, margin, [this, margin](int x) {
        treeWidth_ = x - margin;
        fitTree();
        Layout();
        Refresh();
    });
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    treeItem_ = row->Add(&tvwTemplates->window(), wxSizerFlags().Expand());
    row->Add(sash, wxSizerFlags().Expand());
    row->Add(txtView, wxSizerFlags(1).Expand());
    return row;
}

wxSizer* frmSpecialize::buttonRow() {
    wxSizer* row = commands_.buttonRow();
    row->Insert(1, cmdCommands.back(), wxSizerFlags().Expand().Border(wxLEFT, commands_.margin()));
    return row;
}

void frmSpecialize::fitTree() {
    const int least = scaled(*this, kLeastPane);
    const int most = GetClientSize().x - 3 * commands_.margin() - least;
    treeItem_->SetMinSize(std::max(least, std::min(treeWidth_, most)), -1);
}

void frmSpecialize::bindTree() {
    tvwTemplates->onSelect = [this] { clickLater(); };
    // A click on the selected node is one too, though it selects nothing.
    tvwTemplates->onPress = [this] { clickLater(); };
}

// A click may ask the user. The tree has to be done with the mouse and the key
// before.
void frmSpecialize::clickLater() {
    if (std::exchange(clicked_, true)) return;
    CallAfter([this] {
        clicked_ = false;
        nodeClicked();
    });
}

void frmSpecialize::nodeClicked() {
    const auto node = tvwTemplates->selected();
    if (!node) return;
    if (!mayReplaceText()) return showChain(shown_);
    shown_ = *node;
    OwnerWx owner(*this);
    chain_.click(shown_, &owner);
    showChain(shown_);
    showSource();
}

bool frmSpecialize::mayReplaceText() const {
    if (!txtView->canEdit() || !txtView->changed()) return true;
    return askUser(L"Source has been changed. Go on and discard changes?", Icon::question,
                   Buttons::noYes) == Answer::yes;
}

void frmSpecialize::showChain(std::size_t selectedNode) {
    std::vector<NodeTree::Node> nodes;
    for (const ChainNode& node : chain_.nodes()) {
        if (nodes.size() < kMostLevels) nodes.push_back({shownLine(node.text), node.parent});
    }
    const bool there = selectedNode < nodes.size();
    tvwTemplates->setNodes(std::move(nodes), true);
    if (there) tvwTemplates->select(selectedNode);
}

void frmSpecialize::BaseTemplateName(std::wstring_view name) {
    unsaved_ = true;
    chain_.open(name, openFile_.path ? openFile_.path() : std::wstring());
    if (chain_.nodes().empty()) return;
    showChain(0);
    showSource();
}

void frmSpecialize::showSource() {
    TextBlock(chain_.text());
    const std::wstring name = shown_ < chain_.nodes().size() ? chain_.nodes()[shown_].text : L"";
    commands_.shows(chain_.block(), L"Edit Source: " + name);
    stbMain->setPanel(TextCommands::pnlMore, fileName(chain_.source()));
    stbMain->setTooltip(TextCommands::pnlMore, shownLine(chain_.source()));
}

void frmSpecialize::saveFiles() {
    TextWindow::saveFiles();
    saveList();
}

void frmSpecialize::saveList() {
    if (std::exchange(unsaved_, false)) chain_.saveFiles();
}

}  // namespace kestrel
