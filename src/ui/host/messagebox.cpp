#include "ui/host/messagebox.h"

#include <wx/artprov.h>
#include <wx/button.h>
#include <wx/sizer.h>
#include <wx/statbmp.h>
#include <wx/stattext.h>

#include "services/program.h"
#include "ui/common/accessible.h"
#include "ui/common/dialogend.h"
#include "ui/common/strings.h"
#include "ui/common/twips.h"

namespace kestrel {
namespace {

constexpr int kMargin = 12;
constexpr int kTextWidth = 460;

struct IconLook {
    const char* art;
    const char* name;
};

// By Icon.
const IconLook kIcons[] = {{"", ""},
                           {wxART_INFORMATION, "Information"},
                           {wxART_QUESTION, "Question"},
                           {wxART_WARNING, "Warning"}};

struct ButtonSet {
    long flags;
    int escape;                    // what Esc and closing the box stand for
    const char* captions[3] = {};  // of Yes, No and Cancel, where they are others
};

// By Buttons.
constexpr ButtonSet kButtons[] = {
    {wxOK, wxID_OK},
    {wxOK | wxCANCEL, wxID_CANCEL},
    {wxYES_NO, wxID_NO},
    {wxYES_NO | wxCANCEL, wxID_CANCEL},
    {wxYES_NO | wxNO_DEFAULT, wxID_NO},
    {wxYES_NO | wxCANCEL, wxID_CANCEL, {"&Open", "&Discard", "&Later"}},
    {wxYES_NO | wxCANCEL, wxID_CANCEL, {"&Leave Running", "&Stop", "&Cancel"}}};

Answer answerOf(int id) {
    switch (id) {
        case wxID_OK:
            return Answer::ok;
        case wxID_YES:
            return Answer::yes;
        case wxID_NO:
            return Answer::no;
        default:
            return Answer::cancel;
    }
}

class MessageBox final : public wxDialog {
  public:
    MessageBox(wxWindow* parent, std::wstring_view text, std::wstring_view title, Icon icon,
               const ButtonSet& buttons)
        : wxDialog(parent, wxID_ANY, toWx(title), wxDefaultPosition, wxDefaultSize,
                   wxDEFAULT_DIALOG_STYLE, "messageBox") {
        const int margin = scaled(*this, kMargin);
        auto* words = new wxStaticText(this, wxID_ANY, "");
        words->SetLabelText(shownLines(text));
        words->Wrap(scaled(*this, kTextWidth));
        auto* row = new wxBoxSizer(wxHORIZONTAL);
        if (icon != Icon::none) {
            row->Add(picture(icon), wxSizerFlags().Top().Border(wxRIGHT, margin));
        }
        row->Add(words, wxSizerFlags(1).CentreVertical());
        auto* column = new wxBoxSizer(wxVERTICAL);
        column->Add(row, wxSizerFlags(1).Expand().Border(wxALL, margin));
        column->Add(CreateStdDialogButtonSizer(buttons.flags),
                    wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, margin));
        for (int i = 0; i < 3; ++i) {
            constexpr int kIds[] = {wxID_YES, wxID_NO, wxID_CANCEL};
            if (buttons.captions[i] != nullptr) FindWindow(kIds[i])->SetLabel(buttons.captions[i]);
        }
        SetSizerAndFit(column);
        SetAffirmativeId(wxID_NONE);
        SetEscapeId(buttons.escape);
        for (const int id : {wxID_OK, wxID_YES, wxID_NO, wxID_CANCEL}) {
            if (wxWindow* button = FindWindow(id)) {
                button->Bind(wxEVT_BUTTON, [this, id](wxCommandEvent&) { EndModal(id); });
            }
        }
        Bind(wxEVT_CHAR_HOOK, [text = std::wstring(text)](wxKeyEvent& event) {
            const bool copies = event.GetModifiers() == wxMOD_CONTROL && event.GetKeyCode() == 'C';
            Clipboard* clipboard = gProgram().host.clipboard;
            if (!copies || clipboard == nullptr) return event.Skip();
            clipboard->setText(text);
        });
        markAsMessage(*this);
        CentreOnParent();
    }

  private:
    wxStaticBitmap* picture(Icon icon) {
        const IconLook& look = kIcons[static_cast<std::size_t>(icon)];
        auto* bitmap = new wxStaticBitmap(
            this, wxID_ANY, wxArtProvider::GetBitmapBundle(look.art, wxART_MESSAGE_BOX));
        setAccessibleName(*bitmap, look.name);
        return bitmap;
    }
};

}  // namespace

Answer showMessageBox(wxWindow* parent, std::wstring_view text, std::wstring_view title, Icon icon,
                      Buttons buttons) {
    const ButtonSet& set = kButtons[static_cast<std::size_t>(buttons)];
    MessageBox box(parent, text, title, icon, set);
    return answerOf(showModal(box));
}

}  // namespace kestrel
