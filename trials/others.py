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
    box.connect("drag-data-get", lambda _box, _context, data, _info, _time: data.set_uris([left.pop(0)]))
    window.add(box)
    window.show_all()


def keep():
    owner = Gtk.Invisible()
    owner.realize()
    clipboard = Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD)
    kept = []

    def save(_owner, event):
        kept.append(clipboard.wait_for_text())
        Gdk.selection_send_notify(event.requestor, event.selection, event.target, event.property, event.time)
        return True

    def step_in(*_):
        if kept:
            clipboard.set_text(kept.pop(), -1)

    owner.connect("selection-request-event", save)
    clipboard.connect("owner-change", step_in)
    assert Gtk.selection_owner_set(owner, Gdk.atom_intern("CLIPBOARD_MANAGER", False), 0)


class Session:
    """By the library that the desktops' own managers are built on."""

    def __init__(self):
        self.ice, self.sm = ctypes.CDLL("libICE.so.6"), ctypes.CDLL("libSM.so.6")
        for call in (self.ice.IceComposeNetworkIdList, self.ice.IceAcceptConnection,
                     self.sm.SmsGetIceConnection):
            call.restype = ctypes.c_void_p
        self.kept, self.clients, self.connections = [], [], {}
        pointer, call = ctypes.c_void_p, self.call
        new_client = call(self.new_client, pointer, pointer, ctypes.POINTER(ctypes.c_ulong),
                          ctypes.POINTER(pointer * 20), pointer)
        anybody = call(lambda name: 1, ctypes.c_char_p)
        self.ice.IceSetIOErrorHandler(call(self.nothing, pointer))
        self.callbacks = [call(one, pointer, pointer, pointer, pointer, pointer, pointer) for one in (
            self.register, self.nothing, self.nothing, self.nothing, self.nothing, self.done,
            self.nothing, self.nothing, self.nothing, self.nothing)]
        said = ctypes.create_string_buffer(100)
        assert self.sm.SmsInitialize(b"trial", b"1", new_client, None, anybody, 100, said), said.value
        count, self.listening = ctypes.c_int(), ctypes.POINTER(pointer)()
        assert self.ice.IceListenForConnections(ctypes.byref(count), ctypes.byref(self.listening), 100, said)
        self.count = count.value
        for one in self.listening[:self.count]:
            self.ice.IceSetHostBasedAuthProc(pointer(one), anybody)
        names = ctypes.string_at(self.ice.IceComposeNetworkIdList(count, self.listening))
        self.address = next(name for name in names.split(b",") if name.startswith(b"local/"))

    def call(self, body, *arguments):
        self.kept.append(ctypes.CFUNCTYPE(ctypes.c_int, *arguments)(body))
        return self.kept[-1]

    def new_client(self, client, _data, mask, callbacks, _reason):
        mask[0] = 0x3FF
        for i, one in enumerate(self.callbacks):
            callbacks[0][2 * i] = ctypes.cast(one, ctypes.c_void_p).value
        self.clients.append(ctypes.c_void_p(client))
        return 1

    def register(self, client, *_):
        self.sm.SmsRegisterClientReply(ctypes.c_void_p(client), b"1")
        self.sm.SmsSaveYourself(ctypes.c_void_p(client), 1, 0, 0, 0)
        self.leaving = False
        return 1

    def done(self, client, *_):
        if self.leaving:
            self.sm.SmsDie(ctypes.c_void_p(client))
        return 1

    @staticmethod
    def nothing(*_):
        return 1

    def log_out(self, *_):
        self.leaving = True
        self.sm.SmsSaveYourself(self.clients[-1], 2, 1, 0, 0)
        self.ice.IceFlush(ctypes.c_void_p(self.sm.SmsGetIceConnection(self.clients[-1])))

    def run(self):
        doors = {self.ice.IceGetListenConnectionNumber(ctypes.c_void_p(one)): one
                 for one in self.listening[:self.count]}
        while True:
            for file in select.select([*doors, *self.connections], [], [])[0]:
                if file in doors:
                    one = self.ice.IceAcceptConnection(ctypes.c_void_p(doors[file]), ctypes.byref(ctypes.c_int()))
                    self.connections[self.ice.IceConnectionNumber(ctypes.c_void_p(one))] = one
                elif self.ice.IceProcessMessages(ctypes.c_void_p(self.connections[file]), None, None):
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
