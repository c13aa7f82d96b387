#include "ui/common/accessible.h"

#include <initguid.h>
#include <oleacc.h>
#include <wx/dynlib.h>

#include <memory>

namespace kestrel {
namespace {

struct Release {
    void operator()(IUnknown* object) const { object->Release(); }
};

using Annotations = std::unique_ptr<IAccPropServices, Release>;

Annotations annotations() {
    void* object = nullptr;
    CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                     &object);
    return Annotations(static_cast<IAccPropServices*>(object));
}

}  // namespace

// The system's controls speak for themselves; a name is added to what they say.
void setAccessibleName(wxWindow& control, const wxString& name) {
    const Annotations services = annotations();
    if (!services) return;
    const auto annotate = [&](HWND window) {
        services->SetHwndPropStr(window, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                                 PROPID_ACC_NAME, name.wc_str());
    };
    annotate(control.GetHWND());
    // The text of a combo box is a window of its own.
    if (const HWND text = FindWindowExW(control.GetHWND(), nullptr, L"EDIT", nullptr)) {
        annotate(text);
    }
}

// The system's readers read the texts of any dialog.
void markAsMessage(wxWindow&) {}

}  // namespace kestrel
