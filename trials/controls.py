"""Windows and controls as assistive programs know them, over the accessibility bus.

Asked directly, call by call: the usual client library's cache can wait for itself for ever.
"""

import contextlib
import fnmatch

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402  (the version comes first)

from desk import LIMIT, wait

SPI = "org.a11y.atspi."
ROOT = "/org/a11y/atspi/accessible/root"
NULL = "/org/a11y/atspi/null"
SCREEN = 0  # coordinates of the screen
STATES = {"active": 1, "checked": 4, "editable": 7, "focused": 12, "sensitive": 24,
          "showing": 25, "visible": 30}
# What only holds others.
SILENT = ("filler", "panel", "scroll pane", "split pane", "viewport")
# Roles whose children are cells by the thousand.
LEAVES = ("table", "tree table", "text")


class Bus:
    scale = 1  # pixels of the screen in one of what programs tell

    def __init__(self):
        session = Gio.bus_get_sync(Gio.BusType.SESSION)
        address = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress",
                                    None, None, 0, LIMIT * 1000).unpack()[0]
        flags = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
                 | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
        self.connection = Gio.DBusConnection.new_for_address_sync(address, flags)

    def call(self, name, path, interface, method, signature="()", *arguments):
        answer = self.connection.call_sync(name, path, interface, method,
                                           GLib.Variant(signature, arguments), None, 0,
                                           LIMIT * 1000).unpack()
        return answer[0] if len(answer) == 1 else answer

    def application(self, process):
        """The program of that number; nothing while it is not on the bus."""
        for one in Node(self, SPI + "Registry", ROOT).children():
            with contextlib.suppress(GLib.Error):
                if process == self.call("org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                                        "GetConnectionUnixProcessID", "(s)", one.owner):
                    return one
        return None

    def listen(self, *kinds):
        """What the programs tell of themselves from now on: what(), a list of the event, the
        control and its new place or descendant."""
        heard = []

        def hear(_bus, owner, path, _interface, event, words):
            _, place, _, what, *_ = words.unpack()
            with contextlib.suppress(GLib.Error):  # it has gone
                heard.append((event, Node(self, *what).name) if event == "ActiveDescendantChanged"
                             else (event, Node(self, owner, path).name, place))
        for kind in kinds:
            self.call(SPI + "Registry", "/org/a11y/atspi/registry", SPI + "Registry",
                      "RegisterEvent", "(sass)", kind, [], "")
        self.connection.signal_subscribe(None, SPI + "Event.Object", None, None, None, 0, hear)

        def told():
            while GLib.MainContext.default().iteration(False):
                pass
            return heard
        return told


class Node:
    def __init__(self, bus, owner, path):
        self.bus, self.owner, self.path = bus, owner, path

    def __eq__(self, other):
        return isinstance(other, Node) and (self.owner, self.path) == (other.owner, other.path)

    def call(self, interface, method, *arguments):
        return self.bus.call(self.owner, self.path, SPI + interface, method, *arguments)

    def get(self, interface, name):
        return self.bus.call(self.owner, self.path, "org.freedesktop.DBus.Properties", "Get",
                             "(ss)", SPI + interface, name)

    name = property(lambda self: self.get("Accessible", "Name"))
    role = property(lambda self: self.call("Accessible", "GetRoleName"))
    box = property(lambda self: tuple(
        number * self.bus.scale for number in self.call("Component", "GetExtents", "(u)", SCREEN)))

    def states(self):
        low, _high = self.call("Accessible", "GetState")
        return {name for name, bit in STATES.items() if low >> bit & 1}

    def has(self, state):
        return state in self.states()

    def children(self):
        return [Node(self.bus, *one) for one in self.call("Accessible", "GetChildren")
                if one[1] != NULL]

    def all(self):
        yield self
        if self.role not in LEAVES:
            for child in self.children():
                yield from child.all()

    def find(self, name=None, role=None):
        """The shown controls below whose name fits the pattern."""
        return [one for one in self.all()
                if (role is None or one.role == role)
                and (name is None or fnmatch.fnmatchcase(one.name, name)) and one.has("showing")]

    def middle(self):
        x, y, width, height = self.box
        return x + width // 2, y + height // 2

    # Texts.

    def text(self):
        return self.call("Text", "GetText", "(ii)", 0, -1)

    def caret(self):
        return self.get("Text", "CaretOffset")

    def selection(self):
        """Begin and end; nothing without one."""
        return (self.call("Text", "GetSelection", "(i)", 0)
                if self.call("Text", "GetNSelections") else None)

    def place(self, offset):
        """Where a character stands on the screen."""
        x, y, width, height = self.call("Text", "GetCharacterExtents", "(iu)", offset, SCREEN)
        return x + width // 2, y + height // 2

    # Lists and trees.

    def row_count(self):
        return self.get("Table", "NRows")

    def cell(self, row, column=0):
        return Node(self.bus, *self.call("Table", "GetAccessibleAt", "(ii)", row, column))

    def header(self, column):
        return Node(self.bus, *self.call("Table", "GetColumnHeader", "(i)", column))

    def row(self, row):
        return [self.cell(row, column).name for column in range(self.get("Table", "NColumns"))]

    def rows(self, limit=200):
        return [self.row(row) for row in range(min(limit, self.row_count()))]

    def selected(self):
        """The texts of the selected row; nothing without one."""
        rows = self.call("Table", "GetSelectedRows")
        return self.row(rows[0]) if rows else None

    def select(self, text):
        """The cell in the first column that reads so."""
        return wait(lambda: next(self.cell(row) for row in range(self.row_count())
                                 if self.cell(row).name == text), f"the row {text!r}")

    def tree(self, depth=0):
        """The control and those below it, a line each: role, name, content, tooltip, states.
        What has neither a name nor more than one control in it is left out."""
        role, name, states = self.role, self.name, self.states()
        children = [] if role in LEAVES else self.children()
        if role in ("scroll bar", "separator") or "visible" not in states:
            return []
        if role in SILENT and not name:
            return [line for child in children for line in child.tree(depth)]
        line = f"{role} \"{name}\"" if name else role
        if role in ("table", "tree table"):
            headers = [self.header(i).name for i in range(self.get("Table", "NColumns"))]
            line += f" of {', '.join(headers)}" if any(headers) else ""
        elif role == "text" and "\n" not in self.text():
            line += f" = {self.text()!r}" if self.text() else ""
        tooltip = self.get("Accessible", "Description")
        line += f" ({tooltip})" if tooltip and tooltip != name else ""
        states &= {"focused", "checked", "editable"} if role != "table" else {"focused"}
        line += "".join(f" [{state}]" for state in sorted(states))
        if "sensitive" not in self.states() and role not in ("label", "menu item", "menu"):
            line += " [disabled]"
        return ["  " * depth + line, *(more for one in children for more in one.tree(depth + 1))]
