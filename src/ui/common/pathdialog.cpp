#include "ui/common/pathdialog.h"

#include <wx/dnd.h>

#include <algorithm>

#include "services/files.h"
#include "services/guard.h"
#include "services/histories.h"
#include "services/pickers.h"
#include "system/filesystem.h"
#include "ui/common/accessible.h"
#include "ui/common/buttons.h"
#include "ui/common/listen.h"
#include "ui/common/mnemonics.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"
#include "ui/host/host_wx.h"

namespace kestrel {
namespace {

constexpr long kStyle = wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER | wxMINIMIZE_BOX;

using Takes = std::function<bool(const std::wstring& path)>;

class PathDropTarget final : public wxFileDropTarget {
  public:
    explicit PathDropTarget(Takes takes) : takes_(std::move(takes)) {}

    bool OnDropFiles(wxCoord, wxCoord, const wxArrayString& files) override {
        return std::any_of(files.begin(), files.end(),
                           [this](const wxString& file) { return takes_(fromWx(file)); });
    }

  private:
    Takes takes_;
};

}  // namespace

PathDialog::PathDialog(wxWindow* parent, const wxString& title, const wxString& name)
    : wxDialog(parent, wxID_ANY, title, wxDefaultPosition, wxDefaultSize, kStyle, name),
      released_(
          *this, [this](const KeyPress& key) { return key.code == WXK_ESCAPE && !listIsOpen(); },
          [this](const KeyPress&) { Close(); }) {
    Bind(wxEVT_CHAR_HOOK, &PathDialog::keyPressed, this);
    Bind(wxEVT_CLOSE_WINDOW, &PathDialog::closing, this);
    listen(*this, wxEVT_SHOW, [this](const wxShowEvent& event) {
        if (event.IsShown()) CallAfter([this] { keepHeight(); });
    });
    // The main window, which waits for this one, goes and comes back with it.
    listen(*this, wxEVT_ICONIZE, [this](const wxIconizeEvent& event) {
        auto* main = dynamic_cast<wxTopLevelWindow*>(GetParent());
        if (main == nullptr || !event.IsIconized()) return;
        main->Iconize();
    });
}

HistoryCombo* PathDialog::addPathBox(wxWindow* parent, const wxString& name, const wxString& spoken,
                                     std::wstring_view history) {
    auto* box = new HistoryCombo(parent, name);
    setAccessibleName(*box, wxControl::RemoveMnemonics(spoken));
    gLoadHistory(*box, history);
    box->onChange = [this] { pathsChanged(); };
    box->onEnter = [this] { entered(); };
    boxes_.emplace_back(box, history);
    return box;
}

wxFlexGridSizer* PathDialog::addGrid(int columns) const {
    auto* grid = new wxFlexGridSizer(columns, wxSize(scaled(*this, kGap), scaled(*this, kGap)));
    grid->AddGrowableCol(1);
    return grid;
}

wxSizer* PathDialog::addPaths(wxStaticBox*& frame, std::initializer_list<PathRow> rows) {
    auto* box = new wxStaticBoxSizer(wxVERTICAL, this);
    frame = box->GetStaticBox();
    frame->SetName("fraMain");
    auto* grid = addGrid(3);
    const auto centred = wxSizerFlags().CentreVertical();
    for (const PathRow& row : rows) {
        row.label = new wxStaticText(frame, wxID_ANY, row.text);
        grid->Add(row.label, centred);
        row.box = addPathBox(frame, row.name, row.text, row.history);
        grid->Add(row.box, wxSizerFlags().Expand());
        row.picker = addPictureButton(frame, "folder", row.pickerName, "Open Recent");
        grid->Add(row.picker, centred);
    }
    box->Add(grid, wxSizerFlags().Expand().Border(wxALL, scaled(*this, kGap)));
    return box;
}

wxStaticBoxSizer* PathDialog::addOptional(wxStaticBox*& frame) {
    auto* box = new wxStaticBoxSizer(wxVERTICAL, this, "&Optional");
    frame = box->GetStaticBox();
    frame->SetName("fraOptional");
    return box;
}

wxTextCtrl* PathDialog::addText(wxSizer& labels, wxSizer& row, wxStaticText*& label,
                                wxWindow* parent, const wxString& text, const wxString& name,
                                const wxSizerFlags& place) {
    label = new wxStaticText(parent, wxID_ANY, text);
    labels.Add(label, place);
    auto* box = new wxTextCtrl(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0,
                               wxDefaultValidator, name);
    setAccessibleName(*box, text.BeforeLast(':'));
    row.Add(box, wxSizerFlags(1).Expand());
    return box;
}

wxSizer* PathDialog::addButtons(wxWindow* link, std::initializer_list<wxButton*> buttons) const {
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    if (link != nullptr) row->Add(link, wxSizerFlags().CentreVertical());
    row->AddStretchSpacer();
    int gap = kMargin;
    for (wxButton* button : buttons) {
        row->Add(button, wxSizerFlags().Border(wxLEFT, scaled(*this, std::exchange(gap, kGap))));
    }
    return row;
}

void PathDialog::alignLabels(std::span<wxStaticText* const> labels) {
    int width = 0;
    for (const wxStaticText* label : labels) width = std::max(width, label->GetBestSize().x);
    for (wxStaticText* label : labels) label->SetMinSize(wxSize(width, -1));
}

void PathDialog::choose(HistoryCombo& box, const std::wstring& text) {
    if (!text.empty()) {
        box.setText(text);
        gAddHistoryItem(box, text);
    }
    pathsChanged();
}

void PathDialog::chooseFolder(HistoryCombo& box, std::wstring_view title) {
    OwnerWx owner(*this);
    choose(box, gBrowseFolder(title, &owner, box.text()).value_or(std::wstring()));
}

bool PathDialog::mayMake(const std::wstring& source, const std::wstring& target) {
    if (!filesystem::isFolder(source)) {
        tellUser(L"Source Folder not found. Please enter a valid Source Folder name and try again.",
                 Icon::exclamation);
        return false;
    }
    return !fileExists(target) ||
           askUser(L"Target file already exists, do you wish to overwrite the existing file?",
                   Icon::question, Buttons::noYes) == Answer::yes;
}

void PathDialog::onPress(wxButton& button, std::function<void()> command) {
    button.Bind(wxEVT_BUTTON, [this, command = std::move(command)](wxCommandEvent&) {
        guarded(L"cmdCommands_Click", command);
        pathsChanged();
    });
}

void PathDialog::press(wxButton& button) {
    if (!button.IsEnabled()) return;
    wxCommandEvent event(wxEVT_BUTTON, button.GetId());
    event.SetEventObject(&button);
    button.ProcessWindowEvent(event);
}

void PathDialog::acceptDrops(const Takes& takes) {
    SetDropTarget(new PathDropTarget(takes));
    // A text box would take the name of what is dropped on it for a text.
    for (const auto& [box, history] : boxes_) box->SetDropTarget(new PathDropTarget(takes));
}

void PathDialog::fitTo(wxSizer* column, int width) {
    SetSizerAndFit(column);
    SetClientSize(std::max(scaled(*this, width), GetClientSize().x), GetClientSize().y);
    CentreOnParent();
}

// More room helps long paths, but no row can use more height. What the frame
// adds to it is known once the dialog is shown.
void PathDialog::keepHeight() {
    const wxSize least = GetSizer()->CalcMin();
    SetMinClientSize(least);
    SetMaxClientSize(wxSize(wxDefaultCoord, least.y));
}

void PathDialog::keyPressed(wxKeyEvent& event) {
    if (event.GetModifiers() == wxMOD_ALT && pressMnemonic(*this, event.GetKeyCode())) return;
    // An open list takes it, and the dialog must not.
    if (event.GetKeyCode() == WXK_ESCAPE) return event.DoAllowNextEvent();
    event.Skip();
}

bool PathDialog::listIsOpen() const {
    return std::any_of(boxes_.begin(), boxes_.end(),
                       [](const auto& entry) { return entry.first->isOpen(); });
}

void PathDialog::closing(wxCloseEvent& event) {
    if (gProgram().progress != nullptr && event.CanVeto()) {
        event.Veto();
        return;
    }
    saveFiles();
    endDialog(*this);
}

void PathDialog::saveFiles() {
    if (!std::exchange(unsaved_, false)) return;
    for (const auto& [box, history] : boxes_) gSaveHistory(*box, history);
}

}  // namespace kestrel
