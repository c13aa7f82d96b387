#include "gas/browse.h"

#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/wrapsizer.h>

#include <algorithm>

#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/frmMain/frmMain.h"

namespace kestrel {
namespace {

constexpr int kListPane = 150;  // width of the template pane at first, in DIP
constexpr int kTreePane = 140;  // width of the tree at first
constexpr int kSmallestPane = 90;

wxSplitterWindow* makeSplitter(wxWindow* parent) {
    auto* splitter = new wxSplitterWindow(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                          wxSP_LIVE_UPDATE | wxSP_3DSASH);
    splitter->SetMinimumPaneSize(parent->FromDIP(kSmallestPane));
    // The pane at the right takes what a larger window has to give.
    splitter->SetSashGravity(0.0);
    return splitter;
}

}  // namespace

void frmMain::buildControls() {
    auto* panel = new wxPanel(this);
    const int gap = fromTwips(*this, kGapTwips);

    cboHistory = new HistoryCombo(panel, "cboHistory");
    cboHistory->SetToolTip("Path of the .gas file to open");
    auto* top = new wxBoxSizer(wxHORIZONTAL);
    top->Add(cboHistory, wxSizerFlags(1).CentreVertical());
    top->Add(addButton(panel, kReload), wxSizerFlags().CentreVertical().Border(wxLEFT, gap));

    wxSplitterWindow* panes = makeSplitter(panel);
    wxWindow* templates = buildTemplatePane(panes);
    panes->SplitVertically(templates, buildInfoPane(panes), FromDIP(kListPane));

    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(top, wxSizerFlags().Expand().Border(wxALL, 2 * gap));
    column->Add(panes, wxSizerFlags(1).Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, 2 * gap));
    panel->SetSizer(column);
}

wxWindow* frmMain::buildTemplatePane(wxWindow* parent) {
    const int gap = fromTwips(*this, kGapTwips);
    auto* pane = new wxPanel(parent);
    auto* box = new wxStaticBoxSizer(wxVERTICAL, pane);
    fraTemplate = box->GetStaticBox();
    lvwTemplates = new ReportList(fraTemplate, "lvwTemplates", {{L"Template", 60, 1}},
                                  [this](std::size_t position, std::size_t) {
                                      return document_.templates.at(position).Name;
                                  });
    auto* buttons = new wxBoxSizer(wxHORIZONTAL);
    buttons->Add(addButton(fraTemplate, kTest));
    buttons->AddStretchSpacer();
    buttons->Add(addButton(fraTemplate, kDone));
    box->Add(lvwTemplates, wxSizerFlags(1).Expand().Border(wxALL, gap));
    box->Add(buttons, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, gap));
    pane->SetSizer(box);
    return pane;
}

wxWindow* frmMain::buildInfoPane(wxWindow* parent) {
    const int gap = fromTwips(*this, kGapTwips);
    auto* pane = new wxPanel(parent);
    auto* box = new wxStaticBoxSizer(wxVERTICAL, pane, "&Selected Template");
    fraInfo = box->GetStaticBox();
    wxSplitterWindow* views = makeSplitter(fraInfo);
    tvwInfo = new wxTreeCtrl(views, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                             wxTR_DEFAULT_STYLE | wxTR_SINGLE, wxDefaultValidator, "tvwInfo");
    lvwProperties = new ReportList(
        views, "lvwProperties", {{L"Property", 90, 1}, {L"Value", 80, 2}, {L"Group", 105, 2}},
        [this](std::size_t position, std::size_t column) {
            const GasTemplate* record = selectedTemplate();
            return record == nullptr ? std::wstring()
                                     : propertyText(*record, position, PropertyColumn{column});
        });
    views->SplitVertically(tvwInfo, lvwProperties, FromDIP(kTreePane));

    chkTree = new wxCheckBox(fraInfo, wxID_ANY, "Use Tree as Filter", wxDefaultPosition,
                             wxDefaultSize, 0, wxDefaultValidator, "chkTree");
    // In a narrow window the row goes on in a second line rather than under the edge.
    auto* row = new wxWrapSizer(wxHORIZONTAL, wxREMOVE_LEADING_SPACES);
    const auto put = [&](wxWindow* control) {
        row->Add(control, wxSizerFlags().CentreVertical().Border(wxRIGHT | wxBOTTOM, gap));
    };
    put(chkTree);
    put(addButton(fraInfo, kChain));
    put(addButton(fraInfo, kListed));
    put(addButton(fraInfo, kParsed));
    put(addButton(fraInfo, kSource));
    box->Add(views, wxSizerFlags(1).Expand().Border(wxALL, gap));
    box->Add(row, wxSizerFlags().Expand().Border(wxLEFT, gap));
    pane->SetSizer(box);
    return pane;
}

wxButton* frmMain::addButton(wxWindow* parent, Button index) {
    const auto& table = mainCommands();
    const Command& command = *std::find_if(table.begin(), table.end(),
                                           [&](const Command& row) { return row.index == index; });
    auto* button = new wxButton(parent, wxID_ANY, command.caption);
    if (*command.tooltip != '\0') button->SetToolTip(command.tooltip);
    button->Bind(wxEVT_BUTTON, [this, &command](wxCommandEvent&) { run(command); });
    cmdCommands[index] = button;
    return button;
}

void frmMain::buildStatusBar() {
    stbMain =
        CreateStatusBar(kPanelCount, wxSTB_DEFAULT_STYLE & ~wxSTB_SHOW_TIPS, wxID_ANY, "stbMain");
    // The panels tell of the file; help on menus and tools would overwrite them.
    SetStatusBarPane(-1);
    const int widths[kPanelCount] = {-4, -2, -2, -2};
    stbMain->SetStatusWidths(kPanelCount, widths);
    stbMain->Bind(wxEVT_MOTION, [this](wxMouseEvent& event) {
        tellPanel(event.GetPosition());
        event.Skip();
    });
}

// A status bar has one tooltip; each panel has its own text.
void frmMain::tellPanel(const wxPoint& mouse) {
    static const char* const kTips[kPanelCount] = {"", "Type of Template", "Number of Templates",
                                                   "Number of Properties"};
    wxString tip;
    for (int i = 0; i < kPanelCount; ++i) {
        wxRect field;
        if (stbMain->GetFieldRect(i, field) && field.Contains(mouse)) tip = kTips[i];
    }
    if (stbMain->GetToolTipText() == tip) return;
    if (tip.empty()) {
        stbMain->UnsetToolTip();
    } else {
        stbMain->SetToolTip(tip);
    }
}

}  // namespace kestrel
