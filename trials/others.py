#!/usr/bin/python3
"""Programs that a trial needs around Kestrel.

    others.py FD refuse       a notification area that takes no icon
    others.py FD offer URI... a window out of which one after the other can be dragged

Once it is ready it writes a line to the descriptor FD.
"""

import os
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


if __name__ == "__main__":
    {"refuse": refuse, "offer": offer}[sys.argv[2]](*sys.argv[3:])
    os.write(int(sys.argv[1]), b"ready\n")
    Gtk.main()
