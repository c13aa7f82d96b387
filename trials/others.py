#!/usr/bin/python3
"""Programs that a trial needs around Kestrel.

    others.py FD refuse       a notification area that takes no icon
    others.py FD offer URI... a window out of which one after the other can be dragged
    others.py FD session      a manager of the session, which logs out at SIGUSR1
    others.py FD keep         a clipboard manager: it takes over what a program that ends asks it to

Once it is ready it writes a line to the descriptor FD: of the session, its address.
"""

import ctypes
import os
import select
import signal
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402  (the version comes first)

POINTER, INT = ctypes.c_void_p, ctypes.c_int


def refuse():
    owner = Gtk.Invisible()
    owner.realize()
    area = Gdk.atom_intern("_NET_SYSTEM_TRAY_S0", False)
    assert Gdk.selection_owner_set(owner.get_window(), area, 0, True)


def offer(*files):
    left = list(files)
    window = Gtk.Window(title="Files")
    window.set_default_size(200, 100)
    box = Gtk.EventBox()
    box.drag_source_set(Gdk.ModifierType.BUTTON1_MASK, [], Gdk.DragAction.COPY)
    box.drag_source_add_uri_targets()
    box.connect("drag-data-get", lambda _box, _context, data, *_: data.set_uris([left.pop(0)]))
    window.add(box)
    window.show_all()


def keep():
    owner = Gtk.Invisible()
    owner.realize()
    clipboard = Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD)
    kept = []

    def save(_owner, event):
        kept.append(clipboard.wait_for_text())
        Gdk.selection_send_notify(event.requestor, event.selection, event.target, event.property,
                                  event.time)
        return True
    owner.connect("selection-request-event", save)
    clipboard.connect("owner-change", lambda *_: kept and clipboard.set_text(kept.pop(), -1))
    assert Gtk.selection_owner_set(owner, Gdk.atom_intern("CLIPBOARD_MANAGER", False), 0)


class Session:
    """By the library that the desktops' own managers are built on."""

    def __init__(self):
        self.ice, self.sm = ctypes.CDLL("libICE.so.6"), ctypes.CDLL("libSM.so.6")
        for call in (self.ice.IceComposeNetworkIdList, self.ice.IceAcceptConnection,
                     self.sm.SmsGetIceConnection):
            call.restype = POINTER
        self.kept, self.clients, self.connections = [], [], {}
        new_client = self.call(self.new_client, POINTER, POINTER, ctypes.POINTER(ctypes.c_ulong),
                               ctypes.POINTER(POINTER * 20), POINTER)
        anybody = self.call(lambda name: 1, ctypes.c_char_p)
        self.ice.IceSetIOErrorHandler(self.call(lambda *_: 1, POINTER))
        said = ctypes.create_string_buffer(100)
        assert self.sm.SmsInitialize(b"trial", b"1", new_client, None, anybody, 100, said)
        count, listening = INT(), ctypes.POINTER(POINTER)()
        assert self.ice.IceListenForConnections(ctypes.byref(count), ctypes.byref(listening), 100,
                                                said)
        self.listening = [POINTER(one) for one in listening[:count.value]]
        for one in self.listening:
            self.ice.IceSetHostBasedAuthProc(one, anybody)
        names = ctypes.string_at(self.ice.IceComposeNetworkIdList(count, listening))
        self.address = next(name for name in names.split(b",") if name.startswith(b"local/"))

    def call(self, body, *arguments):
        self.kept.append(ctypes.CFUNCTYPE(INT, *arguments)(body))
        return self.kept[-1]

    def new_client(self, client, _data, mask, callbacks, _reason):
        """Of what a client may say, the first tells of itself, the sixth that it has saved."""
        mask[0] = 0x3FF
        for i in range(10):
            body = {0: self.register, 5: self.done}.get(i, lambda *_: 1)
            callbacks[0][2 * i] = ctypes.cast(self.call(body, *[POINTER] * 6), POINTER).value
        self.clients.append(POINTER(client))
        return 1

    def register(self, client, *_):
        self.sm.SmsRegisterClientReply(POINTER(client), b"1")
        self.sm.SmsSaveYourself(POINTER(client), 1, 0, 0, 0)
        self.leaving = False
        return 1

    def done(self, client, *_):
        if self.leaving:
            self.sm.SmsDie(POINTER(client))
        return 1

    def log_out(self, *_):
        self.leaving = True
        self.sm.SmsSaveYourself(self.clients[-1], 2, 1, 0, 0)
        self.ice.IceFlush(POINTER(self.sm.SmsGetIceConnection(self.clients[-1])))

    def run(self):
        doors = {self.ice.IceGetListenConnectionNumber(one): one for one in self.listening}
        while True:
            for file in select.select([*doors, *self.connections], [], [])[0]:
                if file in doors:
                    one = POINTER(self.ice.IceAcceptConnection(doors[file], ctypes.byref(INT())))
                    self.connections[self.ice.IceConnectionNumber(one)] = one
                elif self.ice.IceProcessMessages(self.connections[file], None, None):
                    del self.connections[file]


if __name__ == "__main__":
    ready = os.fdopen(int(sys.argv[1]), "wb")
    if sys.argv[2] == "session":
        session = Session()
        signal.signal(signal.SIGUSR1, session.log_out)
        ready.write(session.address + b"\n")
        ready.close()
        session.run()
    {"refuse": refuse, "offer": offer, "keep": keep}[sys.argv[2]](*sys.argv[3:])
    ready.write(b"ready\n")
    ready.close()
    Gtk.main()
