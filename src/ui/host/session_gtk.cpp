#include <X11/SM/SMlib.h>
#include <gdk/gdkx.h>
#include <glib-unix.h>
#include <gtk/gtk.h>
#include <unistd.h>
#include <wx/stdpaths.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <string>
#include <utility>

#include "services/program.h"
#include "ui/host/session.h"

namespace kestrel {
namespace {

SessionEnd& sessionEnd() {
    static SessionEnd end;
    return end;
}

// An open menu holds the mouse and the keyboard, and waits for its end.
void closeMenus() {
    GtkWidget* const grabbing = gtk_grab_get_current();
    if (GTK_IS_MENU_SHELL(grabbing)) gtk_menu_shell_cancel(GTK_MENU_SHELL(grabbing));
}

gboolean close(gpointer) {
    closeMenus();
    sessionEnd().close();
    return G_SOURCE_CONTINUE;
}

// Not what whoever started the program wants ignored.
void watchSignal(int number) {
    struct sigaction now {};
    if (::sigaction(number, nullptr, &now) == 0 && now.sa_handler != SIG_IGN) {
        g_unix_signal_add(number, close, nullptr);
    }
}

// Nothing can be shown any more, and the display's library ends the program behind this.
int displayLost(Display*) {
    static bool again = false;
    // No box, which would wait for the display for ever.
    gProgram().host = {};
    if (!std::exchange(again, true)) sessionEnd().keep();
    std::_Exit(EXIT_FAILURE);
}

// The conversation with the session's manager, which desktops of all kinds speak.
class SessionClient {
  public:
    void open() {
        IceSetIOErrorHandler([](IceConn) {});
        SmcCallbacks callbacks{};
        callbacks.save_yourself.callback = saveYourself;
        callbacks.die.callback = die;
        callbacks.save_complete.callback = [](SmcConn, SmPointer) {};
        callbacks.shutdown_cancelled.callback = [](SmcConn, SmPointer) {};
        for (SmPointer* data : {&callbacks.save_yourself.client_data, &callbacks.die.client_data}) {
            *data = this;
        }
        char* id = nullptr;
        char reason[1] = {};
        connection_ =
            SmcOpenConnection(nullptr, this, SmProtoMajor, SmProtoMinor,
                              SmcSaveYourselfProcMask | SmcDieProcMask | SmcSaveCompleteProcMask |
                                  SmcShutdownCancelledProcMask,
                              &callbacks, nullptr, &id, static_cast<int>(sizeof reason), reason);
        if (connection_ == nullptr) return;
        g_free(id);
        describe();
        const int file = IceConnectionNumber(SmcGetIceConnection(connection_));
        g_unix_fd_add(file, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), hear, this);
    }

  private:
    // What the manager has to know to start the program at the next login.
    void describe() {
        std::string program = wxStandardPaths::Get().GetExecutablePath().utf8_string();
        std::string user = g_get_user_name();
        SmPropValue command{static_cast<int>(program.size()), program.data()};
        SmPropValue owner{static_cast<int>(user.size()), user.data()};
        std::string types[] = {SmARRAY8, SmLISTofARRAY8};
        struct {
            std::string name;
            std::string& type;
            SmPropValue& value;
        } told[] = {{SmProgram, types[0], command},
                    {SmUserID, types[0], owner},
                    {SmCloneCommand, types[1], command},
                    {SmRestartCommand, types[1], command}};
        std::array<SmProp, std::size(told)> all{};
        std::array<SmProp*, std::size(told)> pointers{};
        for (std::size_t i = 0; i < all.size(); ++i) {
            all[i] = {told[i].name.data(), told[i].type.data(), 1, &told[i].value};
            pointers[i] = &all[i];
        }
        SmcSetProperties(connection_, static_cast<int>(pointers.size()), pointers.data());
    }

    void leave() {
        if (SmcConn open = std::exchange(connection_, nullptr)) {
            SmcCloseConnection(open, 0, nullptr);
        }
    }

    static gboolean hear(int, GIOCondition, gpointer self) {
        auto& client = *static_cast<SessionClient*>(self);
        if (client.connection_ == nullptr) return G_SOURCE_REMOVE;
        const IceConn ice = SmcGetIceConnection(client.connection_);
        if (IceProcessMessages(ice, nullptr, nullptr) == IceProcessMessagesIOError) client.leave();
        return client.connection_ == nullptr ? G_SOURCE_REMOVE : G_SOURCE_CONTINUE;
    }

    static void saveYourself(SmcConn connection, SmPointer, int, int shutdown, int, int) {
        if (shutdown != 0) sessionEnd().keep();
        SmcSaveYourselfDone(connection, 1);
    }

    static void die(SmcConn, SmPointer self) {
        static_cast<SessionClient*>(self)->leave();
        close(nullptr);
    }

    SmcConn connection_ = nullptr;
};

}  // namespace

void watchSession(SessionEnd end) {
    sessionEnd() = std::move(end);
    for (const int number : {SIGTERM, SIGHUP, SIGINT}) watchSignal(number);
    if (GDK_IS_X11_DISPLAY(gdk_display_get_default())) XSetIOErrorHandler(displayLost);
    static SessionClient client;
    if (std::getenv("SESSION_MANAGER") != nullptr) client.open();
}

}  // namespace kestrel
