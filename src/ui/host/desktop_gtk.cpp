#include <gtk/gtk.h>
#include <unicode/ucal.h>
#include <unicode/udat.h>
#include <unicode/ustring.h>
#include <wx/dirdlg.h>
#include <wx/filedlg.h>
#include <wx/window.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cmath>
#include <memory>

#include "base/bytes.h"
#include "base/error.h"
#include "ui/common/strings.h"
#include "ui/host/desktop.h"

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

// The system's dialog for a file or folder, which stands in no list of the toolkit's windows.
GtkWindow* openChooser() {
    GtkWindow* chooser = nullptr;
    GList* const windows = gtk_window_list_toplevels();
    for (const GList* one = windows; one != nullptr; one = one->next) {
        if (GTK_IS_FILE_CHOOSER_DIALOG(one->data) &&
            gtk_widget_get_visible(GTK_WIDGET(one->data))) {
            chooser = GTK_WINDOW(one->data);
        }
    }
    g_list_free(windows);
    return chooser;
}

std::wstring pathIn(GtkWidget* chooser) {
    const std::unique_ptr<char, Free> path(
        gtk_file_chooser_get_filename(GTK_FILE_CHOOSER(chooser)));
    return path ? fromUtf8(path.get()) : std::wstring();
}

void goTo(GtkWidget* chooser, const std::wstring& folder) {
    if (folder.empty()) return;
    gtk_file_chooser_set_current_folder(GTK_FILE_CHOOSER(chooser), toUtf8(folder).c_str());
}

// Now, in a format of the user's language; the one of a system without a language is for
// logs, and stands for American English.
std::wstring formatted(UDateFormatStyle time, UDateFormatStyle date) {
    const std::string_view name = std::setlocale(LC_TIME, nullptr);
    const bool plain = name == "C" || name == "POSIX" || name.starts_with("C.");
    UErrorCode code = U_ZERO_ERROR;
    const std::unique_ptr<UDateFormat, decltype(&udat_close)> format(
        udat_open(time, date, plain ? "en_US" : std::string(name).c_str(), nullptr, -1, nullptr, -1,
                  &code),
        udat_close);
    constexpr std::size_t kMost = 256;
    std::array<UChar, kMost> text{};
    udat_format(format.get(), ucal_getNow(), text.data(),
                static_cast<std::int32_t>(text.size() - 1), nullptr, &code);
    // No 8-bit code page has narrow blanks.
    std::ranges::replace(text, u'\u202F', u' ');
    std::array<char, 4 * kMost> bytes{};
    u_strToUTF8(bytes.data(), static_cast<std::int32_t>(bytes.size()), nullptr, text.data(), -1,
                &code);
    return U_FAILURE(code) ? std::wstring() : fromUtf8(bytes.data());
}

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

bool systemDialogIsOpen() {
    return openChooser() != nullptr;
}

void restoreSystemDialog() {
    if (GtkWindow* const chooser = openChooser()) gtk_window_deiconify(chooser);
}

bool cancelSystemDialog() {
    GtkWindow* const chooser = openChooser();
    if (chooser != nullptr) gtk_dialog_response(GTK_DIALOG(chooser), GTK_RESPONSE_CANCEL);
    return chooser != nullptr;
}

void openTextEditor(const std::wstring& path) {
    const std::unique_ptr<GAppInfo, Unref> editor(
        g_app_info_get_default_for_type("text/plain", FALSE));
    if (!editor) {
        throw RunTimeError(kFileNotFound, L"This desktop has no text editor for plain text");
    }
    const std::unique_ptr<GFile, Unref> file(g_file_new_for_path(toUtf8(path).c_str()));
    GList files{file.get(), nullptr, nullptr};
    GError* error = nullptr;
    if (g_app_info_launch(editor.get(), &files, nullptr, &error)) return;
    const std::wstring reason = fromUtf8(error->message);
    g_error_free(error);
    throw RunTimeError(kFileNotFound, L"Cannot start the text editor: " + reason);
}

void awaitPlace(const wxWindow& window) {
    GtkWidget* const widget = window.GetHandle();
    if (!window.IsShown() || gtk_widget_get_mapped(widget)) return;
    bool late = false;
    const guint limit = g_timeout_add(
        500,
        [](gpointer flag) -> gboolean {
            *static_cast<bool*>(flag) = true;
            return G_SOURCE_CONTINUE;
        },
        &late);
    while (!late && !gtk_window_is_active(GTK_WINDOW(widget))) {
        g_main_context_iteration(nullptr, TRUE);
    }
    g_source_remove(limit);
}

void takeInput(wxDialog& dialog, bool takes) {
    (takes ? gtk_grab_add : gtk_grab_remove)(dialog.m_widget);
}

int dotsPerInch(const wxWindow& window) {
    const double dots = gdk_screen_get_resolution(gtk_widget_get_screen(window.m_widget));
    return dots > 0 ? static_cast<int>(std::lround(dots)) : 96;
}

void startIn(wxFileDialog& dialog, const std::wstring& folder) {
    goTo(dialog.m_widget, folder);
}
void startIn(wxDirDialog& dialog, const std::wstring& folder) {
    goTo(dialog.m_widget, folder);
}
std::wstring chosenPath(const wxFileDialog& dialog) {
    return pathIn(dialog.m_widget);
}
std::wstring chosenPath(const wxDirDialog& dialog) {
    return pathIn(dialog.m_widget);
}

std::wstring longTimeText() {
    return formatted(UDAT_MEDIUM, UDAT_NONE);
}

std::wstring longDateText() {
    return formatted(UDAT_NONE, UDAT_FULL);
}

}  // namespace kestrel
