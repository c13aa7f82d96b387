#include "ui/common/mnemonics.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/radiobut.h>
#include <wx/statbox.h>
#include <wx/stattext.h>

namespace kestrel {
namespace {

// The letter behind the first "&" of the caption; none of them shows an "&".
bool marks(const wxWindow& control, int letter) {
    const wxString behind = control.GetLabel().AfterFirst('&').Upper();
    return !behind.empty() && behind[0] == letter;
}

void send(wxWindow& control, wxEventType type, int value) {
    wxCommandEvent event(type, control.GetId());
    event.SetEventObject(&control);
    event.SetInt(value);
    control.ProcessWindowEvent(event);
}

bool focusFirst(const wxWindowList& controls) {
    for (wxWindow* control : controls) {
        if (!control->CanAcceptFocusFromKeyboard()) continue;
        control->SetFocus();
        return true;
    }
    return false;
}

bool focusBehind(const wxWindow& label) {
    for (wxWindow* next = label.GetNextSibling(); next != nullptr; next = next->GetNextSibling()) {
        if (!next->CanAcceptFocusFromKeyboard()) continue;
        next->SetFocus();
        return true;
    }
    return false;
}

bool press(wxWindow& control) {
    if (auto* box = dynamic_cast<wxCheckBox*>(&control)) {
        box->SetValue(!box->GetValue());
        send(*box, wxEVT_CHECKBOX, box->GetValue() ? 1 : 0);
        return true;
    }
    if (auto* option = dynamic_cast<wxRadioButton*>(&control)) {
        option->SetValue(true);
        option->SetFocus();
        send(*option, wxEVT_RADIOBUTTON, 1);
        return true;
    }
    if (dynamic_cast<wxButton*>(&control) != nullptr) {
        send(control, wxEVT_BUTTON, 0);
        return true;
    }
    if (dynamic_cast<wxStaticText*>(&control) != nullptr) return focusBehind(control);
    if (dynamic_cast<wxStaticBox*>(&control) != nullptr) return focusFirst(control.GetChildren());
    return false;
}

}  // namespace

bool pressMnemonic(wxWindow& window, int letter) {
    for (wxWindow* child : window.GetChildren()) {
        if (child->IsTopLevel() || !child->IsShown() || !child->IsEnabled()) continue;
        if (marks(*child, letter) && press(*child)) return true;
        if (pressMnemonic(*child, letter)) return true;
    }
    return false;
}

}  // namespace kestrel
