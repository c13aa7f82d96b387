#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/dnd.h>
#include <wx/textctrl.h>

#include <functional>

#include "monkey/monkey.h"
#include "ui/common/strings.h"
#include "ui/common/textpane.h"
#include "ui/events.h"
#include "ui/frmExport/frmExport.h"
#include "ui/frmProgress/frmProgress.h"
#include "ui/frmTank/frmTank.h"

namespace kestrel::test {
namespace {

bool usable(const wxWindow& window) {
    return window.IsShownOnScreen() && window.IsEnabled() && !window.IsBeingDeleted();
}

// All controls of a window that a user could reach.
void collect(wxWindow& window, std::vector<wxWindow*>& found) {
    for (wxWindow* child : window.GetChildren()) {
        if (child->IsTopLevel() || !usable(*child)) continue;
        found.push_back(child);
        collect(*child, found);
    }
}

struct Key {
    int code;
    int modifiers;
};

// As the toolkit does it; false when the key needs nothing more.
bool sendKey(wxWeakRef<wxWindow>& window, wxEventType type, const Key& key) {
    if (!window) return false;
    wxKeyEvent event = keyEvent(*window, type, key.code, key.modifiers);
    return !window->ProcessWindowEvent(event) || event.IsNextEventAllowed();
}

void sendMouse(wxWeakRef<wxWindow>& window, wxEventType type, const wxPoint& where, bool down) {
    if (!window) return;
    wxMouseEvent event(type);
    event.SetPosition(where);
    event.SetLeftDown(down);
    event.SetEventObject(window);
    event.SetId(window->GetId());
    event.m_clickCount = type == wxEVT_LEFT_DCLICK ? 2 : 1;
    event.m_wheelDelta = 120;
    event.m_wheelRotation = where.x % 2 == 0 ? 120 : -120;
    event.m_linesPerAction = 3;
    window->ProcessWindowEvent(event);
}

}  // namespace

template <class Kind>
Kind* Monkey::any(wxWindow& window) {
    std::vector<wxWindow*> all;
    collect(window, all);
    std::vector<Kind*> kinds;
    for (wxWindow* one : all) {
        if (auto* kind = dynamic_cast<Kind*>(one)) kinds.push_back(kind);
    }
    return kinds.empty() ? nullptr : random_.of(kinds);
}

void Monkey::actInMain() {
    if (!main_->IsShownOnScreen() || main_->IsIconized()) {
        note("restore");
        main_->Iconize(false);
        main_->Show();
        main_->Raise();
        return;
    }
    switch (random_.below(12)) {
        case 0:
        case 1:
        case 2:
            return runCommand();
        case 3:
        case 4:
            return openAny();
        case 5:
        case 6:
            return selectRow();
        case 7:
            return selectNode();
        default:
            return actAnywhere(*main_);
    }
}

void Monkey::actInDialog(wxTopLevelWindow& window) {
    if (random_.oneIn(14)) {
        note("close " + window.GetName().utf8_string());
        window.Close();
    } else if (random_.oneIn(400)) {
        logOut();
    } else {
        actAnywhere(window);
    }
}

void Monkey::actAnywhere(wxTopLevelWindow& window) {
    using Act = void (Monkey::*)(wxTopLevelWindow&);
    static constexpr Act kActs[] = {
        &Monkey::press,  &Monkey::press,  &Monkey::press,   &Monkey::tick,
        &Monkey::type,   &Monkey::type,   &Monkey::type,    &Monkey::choose,
        &Monkey::hitKey, &Monkey::hitKey, &Monkey::mouse,   &Monkey::mouse,
        &Monkey::mouse,  &Monkey::mouse,  &Monkey::reshape, &Monkey::drop};
    (this->*random_.of(kActs))(window);
}

// While something works everything else must be refused.
void Monkey::actInProgress() {
    frmProgress& progress = *frmProgress::current();
    const std::size_t open = dialogs_.count();
    const std::wstring file = main_ ? main_->document().path : std::wstring();
    switch (random_.below(20)) {
        case 0:
            note("cancel the work");
            send(*progress.cmdCommands[0], wxEVT_BUTTON);
            break;
        case 1:
            note("close the progress");
            progress.Close();
            break;
        case 2:
            note("close the window that works");
            front()->Close();
            break;
        case 3:
            runCommand();
            break;
        case 4:
            openAny();
            break;
        case 5:
            drop(*main_);
            break;
        case 6:
            hitKey(*front());
            break;
        case 7:
            if (random_.oneIn(10)) logOut();
            return;
        default:
            return;
    }
    if (dialogs_.count() != open) fail("a dialog opened while something works");
    if (main_ && main_->document().path != file) fail("a file was opened while something works");
    if (!main_ || main_->IsBeingDeleted()) fail("the window closed while something works");
}

void Monkey::runCommand() {
    const Command& command = random_.of(mainCommands());
    note("command " + std::string(command.key));
    main_->run(command);
}

void Monkey::openAny() {
    const std::wstring file = files_.source(random_);
    note("open " + toWx(file).utf8_string());
    main_->openFile(file);
}

void Monkey::selectRow() {
    ReportList& list = random_.oneIn(2) ? *main_->lvwTemplates : *main_->lvwProperties;
    if (list.GetItemCount() == 0) return;
    const auto row =
        static_cast<long>(random_.below(static_cast<std::size_t>(list.GetItemCount())));
    note("row " + std::to_string(row) + " of " + list.GetName().utf8_string());
    constexpr long kState = wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED;
    list.SetItemState(row, kState, kState);
}

void Monkey::selectNode() {
    wxTreeCtrl& tree = *main_->tvwInfo;
    wxTreeItemId item = tree.GetRootItem();
    if (!item.IsOk()) return;
    for (std::size_t i = random_.below(20); i > 0; --i) {
        wxTreeItemIdValue cookie{};
        wxTreeItemId next =
            random_.oneIn(2) ? tree.GetFirstChild(item, cookie) : tree.GetNextSibling(item);
        if (next.IsOk()) item = next;
    }
    note("node " + tree.GetItemText(item).utf8_string().substr(0, 40));
    if (random_.oneIn(4)) tree.Toggle(item);
    tree.SelectItem(item);
}

// The desktop closes the program, whatever it is doing.
void Monkey::logOut() {
    note("the user logs out");
    main_->Close(true);
}

void Monkey::press(wxTopLevelWindow& window) {
    auto* button = any<wxButton>(window);
    if (button == nullptr) return;
    note("press " + button->GetLabel().utf8_string() + " " + button->GetName().utf8_string());
    send(*button, wxEVT_BUTTON);
}

void Monkey::tick(wxTopLevelWindow& window) {
    auto* box = any<wxCheckBox>(window);
    if (box == nullptr) return;
    note("tick " + box->GetLabel().utf8_string());
    box->SetValue(!box->GetValue());
    send(*box, wxEVT_CHECKBOX, box->GetValue());
}

void Monkey::type(wxTopLevelWindow& window) {
    auto* control = any<wxControl>(window);
    for (int i = 0; i < 10 && dynamic_cast<wxTextEntryBase*>(control) == nullptr; ++i) {
        control = any<wxControl>(window);
    }
    auto* entry = dynamic_cast<wxTextEntryBase*>(control);
    if (entry == nullptr || !entry->IsEditable()) return;
    const wxString text = toWx(files_.text(random_));
    note("type into " + control->GetName().utf8_string() + ": " + text.utf8_string().substr(0, 60));
    const long last = entry->GetLastPosition();
    auto at = static_cast<long>(random_.below(static_cast<std::size_t>(last) + 1));
    long end = std::min(last, at + 5);
    if (auto* pane = dynamic_cast<TextPane*>(control)) {
        // A pane's positions are bytes; nobody can cut a character in two.
        at = pane->PositionAfter(pane->PositionBefore(static_cast<int>(at)));
        end = pane->PositionAfter(static_cast<int>(at));
    }
    const std::size_t how = random_.below(4);
    note("  way " + std::to_string(how));
    switch (how) {
        case 0:
            entry->WriteText(text);
            break;
        case 1:
            entry->SetSelection(at, end);
            break;
        case 2:
            entry->Remove(at, end);
            break;
        default:
            entry->SetValue(text);
    }
}

void Monkey::choose(wxTopLevelWindow& window) {
    auto* box = any<HistoryCombo>(window);
    if (box == nullptr) return;
    if (box->count() == 0 || random_.oneIn(3)) {
        note("enter in " + box->GetName().utf8_string());
        return send(*box, wxEVT_TEXT_ENTER);
    }
    const auto item = static_cast<int>(random_.below(box->count()));
    note("choose " + std::to_string(item) + " in " + box->GetName().utf8_string());
    send(*box, wxEVT_COMBOBOX_DROPDOWN);
    box->SetSelection(item);
    send(*box, wxEVT_COMBOBOX, item);
    send(*box, wxEVT_COMBOBOX_CLOSEUP);
}

void Monkey::hitKey(wxTopLevelWindow& window) {
    static constexpr int kCodes[] = {
        'A',        'C',      'E',       'F',        'O',        'S',        'V',         'X',
        'Y',        'Z',      'T',       'P',        'L',        'D',        '1',         WXK_F3,
        WXK_ESCAPE, WXK_TAB,  WXK_UP,    WXK_DOWN,   WXK_LEFT,   WXK_RIGHT,  WXK_HOME,    WXK_END,
        WXK_PAGEUP, WXK_BACK, WXK_SPACE, WXK_DELETE, WXK_RETURN, WXK_INSERT, WXK_PAGEDOWN};
    static constexpr int kModifiers[] = {wxMOD_NONE,    wxMOD_NONE, wxMOD_NONE,
                                         wxMOD_CONTROL, wxMOD_ALT,  wxMOD_SHIFT};
    const Key key{random_.of(kCodes), random_.of(kModifiers)};
    wxWindow* focused = wxWindow::FindFocus();
    if (focused == nullptr || wxGetTopLevelParent(focused) != &window || random_.oneIn(4)) {
        focused = any<wxWindow>(window);
    }
    if (focused == nullptr) return;
    note("key " + std::to_string(key.code) + "+" + std::to_string(key.modifiers) + " in " +
         focused->GetName().utf8_string());
    wxWeakRef<wxWindow> target(focused);
    if (sendKey(target, wxEVT_CHAR_HOOK, key) && sendKey(target, wxEVT_KEY_DOWN, key)) {
        sendKey(target, wxEVT_CHAR, key);
    }
    sendKey(target, wxEVT_KEY_UP, key);
}

void Monkey::mouse(wxTopLevelWindow& window) {
    if (wxWindow* holder = wxWindow::GetCapture()) {
        wxWeakRef<wxWindow> held(holder);
        sendMouse(held, wxEVT_LEFT_UP, wxPoint(), false);
    }
    auto* hit = any<wxWindow>(window);
    if (hit == nullptr) return;
    const wxSize size = hit->GetClientSize();
    const auto somewhere = [&] {
        return wxPoint(random_.between(0, std::max(0, size.x - 1)),
                       random_.between(0, std::max(0, size.y - 1)));
    };
    const wxPoint from = somewhere();
    note("mouse in " + hit->GetName().utf8_string() + " at " + std::to_string(from.x) + "," +
         std::to_string(from.y));
    wxWeakRef<wxWindow> target(hit);
    switch (random_.below(8)) {
        case 0:
            return sendMouse(target, wxEVT_MOUSEWHEEL, from, false);
        case 1:
            return sendMouse(target, wxEVT_MOTION, from, false);
        case 2:
            sendMouse(target, wxEVT_LEFT_DOWN, from, true);
            sendMouse(target, wxEVT_LEFT_UP, from, false);
            sendMouse(target, wxEVT_LEFT_DCLICK, from, true);
            return sendMouse(target, wxEVT_LEFT_UP, from, false);
        case 4:
            // Held until the next time.
            return sendMouse(target, wxEVT_LEFT_DOWN, from, true);
        case 3: {
            const wxPoint to = somewhere();
            sendMouse(target, wxEVT_LEFT_DOWN, from, true);
            sendMouse(target, wxEVT_MOTION, to, true);
            return sendMouse(target, wxEVT_LEFT_UP, to, false);
        }
        default:
            sendMouse(target, wxEVT_LEFT_DOWN, from, true);
            sendMouse(target, wxEVT_LEFT_UP, from, false);
    }
}

void Monkey::reshape(wxTopLevelWindow& window) {
    switch (random_.below(8)) {
        case 0:
            note("minimise");
            return window.Iconize();
        case 1:
            note("maximise or not");
            return window.Maximize(!window.IsMaximized());
        case 2: {
            note("another theme");
            wxSysColourChangedEvent event;
            event.SetEventObject(&window);
            window.ProcessWindowEvent(event);
            return;
        }
        default: {
            const wxSize size(random_.between(1, 1400), random_.between(1, 1200));
            note("size " + std::to_string(size.x) + " x " + std::to_string(size.y));
            window.SetSize(size);
        }
    }
}

void Monkey::drop(wxTopLevelWindow& window) {
    const std::wstring file = random_.oneIn(2) ? files_.source(random_) : files_.archive(random_);
    note("drop " + toWx(file).utf8_string());
    if (&window == main_.get()) {
        auto* target = dynamic_cast<wxFileDropTarget*>(window.GetDropTarget());
        wxArrayString names;
        names.push_back(toWx(file));
        target->OnDropFiles(0, 0, names);
    } else if (auto* tank = dynamic_cast<frmTank*>(&window)) {
        tank->drop(file);
    } else if (auto* convert = dynamic_cast<frmExport*>(&window)) {
        convert->drop(file);
    }
}

}  // namespace kestrel::test
