"""Kestrel for Windows under Wine: the same trials, over what a program beside it tells."""

import fnmatch
import os
import shutil
import subprocess

from app import Kestrel
from desk import Desk, wait

ROLES = {"Static": "label", "SysListView32": "table", "Edit": "text", "ComboBox": "combo box",
         "msctls_statusbar32": "statusbar", "Button": "push button", "#32768": "menu"}
STATES = {"visible": "v", "showing": "v", "sensitive": "e", "focused": "f", "active": "a"}


def shown(text):
    """A caption without the mark of its letter, and without its key."""
    return text.split("\\n")[0].replace("&&", "\0").replace("&", "").replace("\0", "&")


class Control:
    def __init__(self, line):
        _, self.kind, self.caption, *box, self.told, self.content = line.split("\t")
        self.box, self.below = tuple(map(int, box)), []
        self.name, self.role = shown(self.caption), ROLES.get(self.kind, "panel")

    def __eq__(self, other):
        return (self.kind, self.name) == (other.kind, other.name)

    def has(self, state):
        return STATES.get(state, "?") in self.told

    def all(self):
        yield self
        for child in self.below:
            yield from child.all()

    def find(self, name=None, role=None):
        return [one for one in self.all() if (role is None or one.role == role)
                and (name is None or fnmatch.fnmatchcase(one.name, name)) and one.has("showing")]

    def row_count(self):
        return int(self.content.split()[0])

    def selected(self):
        number = int(self.content.split("\\n")[0].split(", ")[1])
        return self.content.split("\\n")[number + 1].split("|")[1:] if number >= 0 else None

    def tree(self, depth=0):
        return ["  " * depth + f'{self.role} "{self.name}" {self.told} {self.content[:60]}',
                *(line for one in self.below for line in one.tree(depth + 1))]


class KestrelOnWindows(Kestrel):
    on_windows = True
    tank = "tank/kestrel_stub_tank/tank.dll"
    NAMES = {"Templates": ("table", 0), "Properties": ("table", 1),
             "Path of the .gas file": ("text", 0)}

    def __init__(self, build, top, _installed=None, **desk):
        self.top, self.build, self.desk = top, build, Desk(**desk)
        # Its own, since the server of a prefix keeps to the display that it began on.
        shutil.copytree(os.environ["KESTREL_WINEPREFIX"], self.desk.path("prefix"), symlinks=True)
        self.desk.env["WINEPREFIX"] = self.desk.path("prefix")
        self.folder = self.desk.path("app")
        os.mkdir(self.folder)
        self.program = shutil.copy(os.path.join(build, "src/ui/kestrel.exe"), self.folder)
        # The archive library, and its process, have 32 bits.
        self.library_build = os.path.join(top, "build/windows-i686")
        shutil.copy(os.path.join(self.library_build, "src/tankhost/kestrel-tank.exe"), self.folder)
        self.errors = self.desk.path("errors")
        self.process = self.expected_errors = None
        self.teller = subprocess.Popen(["wine", os.path.join(build, "trials/tell.exe")],
                                       env=self.desk.env, stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)

    def stub(self, name):
        if name == self.tank:
            return os.path.join(self.library_build, "tests/stubs", name)
        return super().stub(name) + ".exe"

    def settings(self, **paths):
        super().settings(**{name: self.path_there(path) for name, path in paths.items()})

    def start(self, *words, env=None, ready=True):
        words = [self.path_there(one) for one in words]
        with open(self.errors, "ab") as errors:
            self.process = subprocess.Popen(
                ["wine", self.program, *words], env=self.desk.env | (env or {}),
                stdin=subprocess.DEVNULL, stdout=errors, stderr=errors, cwd=self.desk.env["HOME"])
        if ready:
            self.main = self.window("Kestrel Template Browser (*", 60)
        return self

    @staticmethod
    def path_there(path):
        return "Z:" + path.replace("/", "\\")

    def ended(self, limit=30):
        return super().ended(limit)

    def error_lines(self):
        return []  # Wine says much of itself

    def app(self):
        return self.windows()

    def windows(self):
        self.teller.stdin.write(b"\n")
        self.teller.stdin.flush()
        tops, above = [], []
        while line := self.teller.stdout.readline().decode("utf-8", "replace").rstrip("\r\n"):
            depth = int(line.split("\t")[0])
            above[depth:] = [Control(line)]
            (above[depth - 1].below if depth else tops).append(above[depth])
        return [one for one in tops if one.name or one.kind == "#32768"]

    def window(self, title, limit=30):
        return Live(self, super().window(title, limit))

    def active(self):
        return Live(self, super().active())

    def find(self, name=None, role=None, window=None):
        role, index = self.NAMES.get(name, (role, 0))
        if name in self.NAMES:
            return wait(lambda: self.active().find(role=role)[index:][:1], name)[0]
        return super().find(name, role, window)

    def focus_is(self, name):
        wait(lambda: self.find(name).has("focused"), f"the focus in {name!r}")

    def status(self):
        return self.find(role="statusbar").content.split("\\n")

    def menu(self, *names):
        """By the letters that the captions mark: nothing tells of another program's menus here."""
        if len(names) > 1:
            self.keys("alt+" + names[0][0].lower())
        wait(lambda: any(one.kind == "#32768" for one in self.windows()), "a menu")
        self.keys({"Convert Multiple Files...": "m"}.get(names[-1], names[-1][0].lower()))

    def box(self):
        box = self.active()
        icons = [one for one in box.all() if one.kind == "Static" and one.box[2] == one.box[3]
                 and not one.name]
        texts = [one.caption.replace("\\n", " ") for one in box.find(role="label") if one.name]
        return " ".join(" ".join(texts).split()), "an icon" if icons else ""

    def answer(self, text, button, icon=None):
        super().answer(text, button, icon and "an icon")

    def icon(self):
        boxes = [box for box in self.desk.geometries("explorer.exe", "--class") if 8 < box[2] < 50]
        return boxes[0][0] + 8, boxes[0][1] + 8


class Live:
    """A window that is asked for anew each time."""

    def __init__(self, kestrel, found):
        self.kestrel, self.name, self.found = kestrel, found.name, found

    def __getattr__(self, name):
        now = next((one for one in self.kestrel.windows()
                    if one.kind == self.found.kind and one.name == self.name), None)
        if now is None:
            return (lambda state: False) if name == "has" else getattr(self.found, name)
        return getattr(now, name)
