#include <wx/display.h>
#include <wx/fileconf.h>
#include <wx/log.h>
#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/sstream.h>
#include <wx/wrapsizer.h>

#include <algorithm>
#include <cmath>

#include "services/files.h"
#include "services/guard.h"
#include "ui/common/accessible.h"
#include "ui/common/listen.h"
#include "ui/common/strings.h"
#include "ui/common/style.h"
#include "ui/common/twips.h"
#include "ui/frmMain/frmMain.h"
#include "view/browse.h"

namespace kestrel {
namespace {

constexpr int kWidthTwips = 9000;
constexpr int kHeightTwips = 6250;
constexpr int kSmallestPane = 90;  // at 96 dots an inch
constexpr int kButtonPadding = 5;
constexpr double kTemplatesShare = 0.23;  // of the width, at first and at most
constexpr double kTreeShare = 0.33;       // of what is left

// Where the window's parts stand, kept between starts.
constexpr std::wstring_view kLayoutFile = L"layout.set";

double shareOf(const wxSplitterWindow& panes) {
    const int width = panes.GetClientSize().x;
    return width > 0 ? std::round(1000.0 * panes.GetSashPosition() / width) / 1000.0 : 0;
}

// The share that the right pane leaves when all of it is to be seen.
double shareBeside(const wxSplitterWindow& panes) {
    const double width = panes.GetClientSize().x;
    return (width - panes.GetSashSize() - panes.GetWindow2()->GetBestSize().x) / width;
}

// The place nearest to `position` that leaves both panes their least width.
int sashWithRoom(const wxSplitterWindow& panes, int position) {
    const int left = panes.GetMinimumPaneSize();
    const int right = std::max(left, panes.GetWindow2()->GetMinSize().x);
    const int most = panes.GetClientSize().x - panes.GetSashSize() - right;
    return std::max(left, std::min(position, most));
}

std::vector<int> numbersOf(const wxString& text) {
    std::vector<int> numbers;
    for (const wxString& word : wxSplit(text, ' ', '\0')) {
        if (int number = 0; word.ToInt(&number)) numbers.push_back(number);
    }
    return numbers;
}

wxString textOf(const std::vector<int>& numbers) {
    wxString text;
    for (const int number : numbers) text << (text.empty() ? "" : " ") << number;
    return text;
}

// True when enough of the place is on a screen to be seen and taken hold of.
bool isOnScreen(const wxRect& place) {
    for (unsigned i = 0; i < wxDisplay::GetCount(); ++i) {
        const wxRect seen = wxDisplay(i).GetClientArea().Intersect(place);
        if (seen.width >= 100 && seen.height >= 50) return true;
    }
    return false;
}

}  // namespace

void frmMain::buildControls() {
    auto* panel = new wxPanel(this);
    const int gap = fromTwips(*this, kGapTwips);

    cboHistory = new HistoryCombo(panel, "cboHistory");
    cboHistory->SetToolTip("Path of the .gas file to open");
    setAccessibleName(*cboHistory, "Path of the .gas file");
    auto* top = new wxBoxSizer(wxHORIZONTAL);
    top->Add(cboHistory, wxSizerFlags(1).CentreVertical());
    top->Add(addButton(panel, kReload), wxSizerFlags().CentreVertical().Border(wxLEFT, gap));

    outerPanes_ = makePanes(panel, kTemplatesShare);
    wxWindow* templates = buildTemplatePane(outerPanes_);
    outerPanes_->SplitVertically(templates, buildInfoPane(outerPanes_));

    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(top, wxSizerFlags().Expand().Border(wxALL, gap));
    column->Add(outerPanes_, wxSizerFlags(1).Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, gap));
    panel->SetSizer(column);

    const wxSize size(fromTwips(*this, kWidthTwips), fromTwips(*this, kHeightTwips));
    SetMinSize(size);
    SetSize(size);
}

// Both panes take their share of what a larger window has to give.
wxSplitterWindow* frmMain::makePanes(wxWindow* parent, double share) {
    auto* panes = new wxSplitterWindow(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                       wxSP_LIVE_UPDATE | wxSP_3DSASH);
    panes->SetMinimumPaneSize(scaled(*this, kSmallestPane));
    panes->Bind(wxEVT_SPLITTER_SASH_POS_CHANGING, [panes](wxSplitterEvent& event) {
        event.SetSashPosition(sashWithRoom(*panes, event.GetSashPosition()));
    });
    shares_[panes] = share;
    listen(*panes, wxEVT_SIZE, [this, panes] { CallAfter([this, panes] { shareWidth(*panes); }); });
    listen(*panes, wxEVT_SPLITTER_SASH_POS_CHANGED,
           [this, panes] { CallAfter([this, panes] { shares_[panes] = shareOf(*panes); }); });
    return panes;
}

void frmMain::shareWidth(wxSplitterWindow& panes) {
    const int width = panes.GetClientSize().x;
    if (width <= 0) return;
    panes.SetSashPosition(
        sashWithRoom(panes, static_cast<int>(std::lround(shares_[&panes] * width))));
}

wxWindow* frmMain::buildTemplatePane(wxWindow* parent) {
    const int gap = fromTwips(*this, kGapTwips);
    auto* pane = new wxPanel(parent);
    auto* box = new wxStaticBoxSizer(wxVERTICAL, pane);
    fraTemplate = box->GetStaticBox();
    lvwTemplates = std::make_unique<ReportList>(
        fraTemplate, "lvwTemplates", std::vector<ReportList::Column>{{L"Template", 60, 1}},
        [this](std::size_t position, std::size_t) {
            return document_.templates.at(position).Name.wide();
        });
    setAccessibleName(lvwTemplates->window(), "Templates");
    auto* buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(addButton(fraTemplate, kTest));
    buttons->AddStretchSpacer();
    buttons->Add(addButton(fraTemplate, kDone));
    box->Add(&lvwTemplates->window(), wxSizerFlags(1).Expand().Border(wxALL, gap));
    box->Add(buttons, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, gap));
    pane->SetSizer(box);
    return pane;
}

wxWindow* frmMain::buildInfoPane(wxWindow* parent) {
    const int gap = fromTwips(*this, kGapTwips);
    auto* pane = new wxPanel(parent);
    auto* box = new wxStaticBoxSizer(wxVERTICAL, pane, "&Selected Template");
    fraInfo = box->GetStaticBox();
    innerPanes_ = makePanes(fraInfo, kTreeShare);
    tvwInfo = makeNodeTree(innerPanes_, "tvwInfo");
    setAccessibleName(tvwInfo->window(), "Blocks");
    lvwProperties = std::make_unique<ReportList>(
        innerPanes_, "lvwProperties",
        std::vector<ReportList::Column>{{L"Property", 80, 1}, {L"Value", 80, 2}, {L"Group", 80, 2}},
        [this](std::size_t position, std::size_t column) {
            const GasTemplate* record = selectedTemplate();
            return record == nullptr ? std::wstring()
                                     : propertyText(*record, position, PropertyColumn{column});
        });
    lvwProperties->sortText = [this](std::size_t position, std::size_t column) {
        const GasTemplate* record = selectedTemplate();
        return record == nullptr ? std::wstring()
                                 : propertySortText(*record, position, PropertyColumn{column});
    };
    setAccessibleName(lvwProperties->window(), "Properties");
    innerPanes_->SplitVertically(&tvwInfo->window(), &lvwProperties->window());
    box->Add(innerPanes_, wxSizerFlags(1).Expand().Border(wxALL, gap));
    box->Add(buildInfoButtons(), wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, gap));
    pane->SetSizer(box);
    pane->SetMinSize(wxSize(cmdCommands.at(kChain)->GetMinSize().x + 4 * gap, -1));
    return pane;
}

wxSizer* frmMain::buildInfoButtons() {
    const int gap = fromTwips(*this, kGapTwips);
    chkTree = new wxCheckBox(fraInfo, wxID_ANY, "Use Tree as Filter", wxDefaultPosition,
                             wxDefaultSize, 0, wxDefaultValidator, "chkTree");
    auto* row = new wxWrapSizer(wxHORIZONTAL, wxREMOVE_LEADING_SPACES);
    row->Add(chkTree, wxSizerFlags(1).CentreVertical());
    for (const Button index : {kChain, kListed, kParsed, kSource}) {
        row->Add(addButton(fraInfo, index), wxSizerFlags().CentreVertical().Border(wxLEFT, gap));
    }
    int width = gap;  // the row breaks if a pixel is missing
    for (wxSizerItem* item : row->GetChildren()) width += item->CalcMin().x;
    row->SetMinSize(width, -1);
    return row;
}

wxButton* frmMain::addButton(wxWindow* parent, Button index) {
    const auto& table = mainCommands();
    const Command& command = *std::find_if(table.begin(), table.end(),
                                           [&](const Command& row) { return row.index == index; });
    auto* button = new wxButton(parent, wxID_ANY, command.caption);
    // Narrower than the desktop's own: they all stand in one row.
    const int text = button->GetTextExtent(button->GetLabelText()).x;
    button->SetMinSize(wxSize(text + 2 * scaled(*this, kButtonPadding), -1));
    if (*command.tooltip != '\0') button->SetToolTip(command.tooltip);
    button->Bind(wxEVT_BUTTON, [this, &command](wxCommandEvent&) { run(command); });
    cmdCommands[index] = button;
    return button;
}

void frmMain::buildStatusBar() {
    stbMain = new StatusPanels(this, {{4, ""},
                                      {2, "Type of Template"},
                                      {2, "Number of Templates"},
                                      {2, "Number of Properties"}});
    SetStatusBar(stbMain);
    // The panels tell of the file; help on menus and tools would overwrite them.
    SetStatusBarPane(-1);
}

wxString frmMain::layoutText() const {
    wxString text;
    text << "templates=" << wxString::FromCDouble(shares_.at(outerPanes_)) << '\n'
         << "tree=" << wxString::FromCDouble(shares_.at(innerPanes_)) << '\n'
         << "properties=" << textOf(lvwProperties->widths()) << '\n'
         << "remember=" << (remember_ ? 1 : 0) << '\n';
    if (!remember_) return text;
    const wxRect place = IsMaximized() || IsIconized() ? placed_ : GetRect();
    return text << "maximised=" << (IsMaximized() ? 1 : 0) << '\n'
                << "window=" << textOf({place.x, place.y, place.width, place.height}) << '\n';
}

void frmMain::loadLayout() {
    const wxLogNull quiet;  // what cannot be read is nothing
    const Silence silence;
    wxStringInputStream text(toWx(gstrReadFile(programFile(kLayoutFile))));
    wxFileConfig file(text);
    const auto readShare = [&](const char* key, wxSplitterWindow* panes) {
        const double share = file.ReadDouble(key, shares_[panes]);
        if (share > 0 && share < 1) shares_[panes] = share;
        shareWidth(*panes);
    };
    shares_[outerPanes_] = std::min(kTemplatesShare, shareBeside(*outerPanes_));
    // From now on the user may break the row of buttons.
    chkTree->GetContainingSizer()->SetMinSize(-1, -1);
    readShare("templates", outerPanes_);
    readShare("tree", innerPanes_);
    lvwProperties->setWidths(numbersOf(file.Read("properties", "")));
    remember_ = file.ReadBool("remember", false);
    const auto place = numbersOf(file.Read("window", ""));
    if (remember_ && place.size() == 4) {
        const wxRect rect(place[0], place[1], place[2], place[3]);
        if (isOnScreen(rect)) {
            SetSize(rect.GetSize());
            placeAt(*this, rect.GetPosition());
        }
        if (file.ReadBool("maximised", false)) Maximize();
    }
    layoutBefore_ = layoutText();
}

// Only what the user has changed is written.
void frmMain::saveLayout() {
    const wxString text = layoutText();
    if (text == layoutBefore_) return;
    writeFile(programFile(kLayoutFile), fromWx(text));
}

}  // namespace kestrel
