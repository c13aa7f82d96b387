#include "ui/frmZeltor/builderlog.h"

#include <chrono>
#include <utility>

#include "services/guard.h"
#include "ui/common/listen.h"
#include "ui/common/strings.h"
#include "view/saving.h"

namespace kestrel {
namespace {

using Steady = std::chrono::steady_clock;

constexpr int kStateShare = 6;  // of the status bar
constexpr int kPause = 50;      // milliseconds
// How long the text may grow at a time, and the pause when there is more, in which the windows
// are painted.
constexpr std::chrono::milliseconds kBusy{20};
constexpr int kShortPause = 10;

// The text is cut back to three quarters, so that this is done seldom.
constexpr int kMostShown = static_cast<int>(LogReader::kMost);
constexpr int kCutAtOnce = kMostShown / 4;

wxButton* addStop(wxWindow* parent) {
    auto* button = new wxButton(parent, wxID_ANY, "&Stop", wxDefaultPosition, wxDefaultSize, 0,
                                wxDefaultValidator, "cmdStop");
    button->SetToolTip("End the builder and all that it has started");
    return button;
}

}  // namespace

BuilderLog::BuilderLog(wxWindow* parent, TimedLauncher& launcher, OpenFile openFile)
    : TextWindow(parent, shownLine(L"View Log: " + launcher.log()->name), "frmView",
                 std::move(openFile), kStateShare),
      cmdStop(addStop(this)),
      launcher_(launcher),
      log_(launcher.log()),
      reader_(log_) {
    TextBlock(L"");
    CanEdit(false);
    // To move a long text to more room would take longer than a user should wait.
    txtView->Allocate(kMostShown + kMostShown / 16);
    cmdStop->MoveBeforeInTabOrder(commands_.cmdCommands[TextCommands::kScriptEditor]);
    cmdStop->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { stop(); });
    auto* content = new wxBoxSizer(wxVERTICAL);
    content->Add(txtView, wxSizerFlags(1).Expand());
    wxSizer* buttons = commands_.buttonRow();
    buttons->Insert(0, cmdStop, wxSizerFlags().Expand());
    layOut(content, buttons, wxSize(860, 560));
    commands_.savesOther = [this] { return cut_ && saveAll(); };
    timer_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) {
        guarded(L"redLauncher_DataReceived", [this] { takeOutput(); });
    });
    txtView->SetFocus();
    takeOutput();
}

void BuilderLog::stop() {
    launcher_.stop();
    showState();
}

void BuilderLog::takeOutput() {
    const auto until = Steady::now() + kBusy;
    // Takes long enough to be all that is done at this time.
    bool more = cutStart();
    if (!more) {
        do more = takePiece();
        while (more && Steady::now() < until);
    }
    showState();
    if (more || !log_->end) timer_.StartOnce(more ? kShortPause : kPause);
}

bool BuilderLog::cutStart() {
    if (txtView->GetLength() <= kMostShown) return false;
    txtView->cutStart(kCutAtOnce);
    return cut_ = true;
}

bool BuilderLog::takePiece() {
    const LogReader::Piece piece = reader_.next();
    cut_ = cut_ || piece.anew;
    if (piece.anew) TextBlock(L"");
    if (!piece.text.empty()) txtView->append(piece.text);
    return !piece.text.empty();
}

void BuilderLog::showState() {
    const std::wstring state = log_->stateText();
    const wxString tooltip = cut_ ? "The text begins late in the output; Save writes all of it"
                                  : "How the builder stands";
    stbMain->setPanel(TextCommands::pnlMore, cut_ ? state + L", start cut off" : state);
    stbMain->setTooltip(TextCommands::pnlMore, tooltip);
    const bool canStop = !log_->end && !log_->stopping;
    // A disabled button would keep the keyboard.
    if (!canStop && cmdStop->HasFocus()) txtView->SetFocus();
    if (cmdStop->IsEnabled() != canStop) cmdStop->Enable(canStop);
}

bool BuilderLog::saveAll() const {
    log_->file().whole(saveBytes);
    return true;
}

}  // namespace kestrel
