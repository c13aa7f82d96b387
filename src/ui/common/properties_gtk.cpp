#include <gio/gio.h>

#include <memory>

#include "services/bytes.h"
#include "ui/common/properties_wx.h"

namespace kestrel {
namespace {

// A file manager that is only now started may take its time; the user waits.
constexpr int kLimitMilliseconds = 2000;

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct Free {
    void operator()(gpointer text) const { g_free(text); }
};

}  // namespace

bool showDesktopProperties(const std::wstring& path) {
    const std::unique_ptr<char, Free> uri(
        g_filename_to_uri(toUtf8(path).c_str(), nullptr, nullptr));
    if (!uri) return false;
    const std::unique_ptr<GDBusConnection, Unref> bus(
        g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    if (!bus) return false;
    const char* const uris[] = {uri.get(), nullptr};
    GVariant* answer = g_dbus_connection_call_sync(
        bus.get(), "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
        "org.freedesktop.FileManager1", "ShowItemProperties", g_variant_new("(^ass)", uris, ""),
        nullptr, G_DBUS_CALL_FLAGS_NONE, kLimitMilliseconds, nullptr, nullptr);
    if (answer == nullptr) return false;
    g_variant_unref(answer);
    return true;
}

}  // namespace kestrel
