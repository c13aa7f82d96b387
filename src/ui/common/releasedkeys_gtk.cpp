#include <gtk/gtk.h>
#include <wx/utils.h>

#include <set>

#include "ui/common/releasedkeys.h"

namespace kestrel {
namespace {

// The keys that are down, by what any widget of the program, also a menu's or a file
// dialog's, is told.
class KeysDown {
  public:
    static KeysDown& get() {
        // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): one keyboard.
        static KeysDown keys;
        return keys;
    }

    bool repeated() const { return repeated_; }

  private:
    KeysDown() {
        const auto hook = [](const char* signal, GSignalEmissionHook told) {
            g_type_class_unref(g_type_class_ref(GTK_TYPE_WIDGET));
            g_signal_add_emission_hook(g_signal_lookup(signal, GTK_TYPE_WIDGET), 0, told, nullptr,
                                       nullptr);
        };
        hook("key-press-event", [](GSignalInvocationHint*, guint, const GValue* values, gpointer) {
            get().pressed(*eventOf(values));
            return gboolean{TRUE};
        });
        hook("key-release-event",
             [](GSignalInvocationHint*, guint, const GValue* values, gpointer) {
                 get().down_.erase(eventOf(values)->hardware_keycode);
                 return gboolean{TRUE};
             });
        // What was let go in another program's window is told to nobody here.
        hook("focus-in-event", [](GSignalInvocationHint*, guint, const GValue* values, gpointer) {
            if (GTK_IS_WINDOW(g_value_peek_pointer(values))) get().entered();
            return gboolean{TRUE};
        });
    }

    static const GdkEventKey* eventOf(const GValue* values) {
        return static_cast<const GdkEventKey*>(g_value_get_boxed(values + 1));
    }

    // An event is told to one widget after the other.
    void pressed(const GdkEventKey& event) {
        if (event.time == time_ && event.hardware_keycode == code_) return;
        time_ = event.time;
        code_ = event.hardware_keycode;
        repeated_ = !down_.insert(event.hardware_keycode).second;
    }

    void entered() {
        if (!wxGetKeyState(WXK_ESCAPE)) down_.clear();
    }

    std::set<guint16> down_;
    guint32 time_ = 0;
    guint16 code_ = 0;
    bool repeated_ = false;
};

}  // namespace

bool isRepeated(const wxKeyEvent&) {
    return KeysDown::get().repeated();
}

}  // namespace kestrel
