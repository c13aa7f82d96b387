"""Kestrel as its user meets it: windows and controls by their names, real keys and mouse."""

import fnmatch
import os
import re
import shutil
import subprocess

from controls import Bus
from desk import LIMIT, Desk, wait


def needs(**what):
    """Marks a trial with what it needs: desk={...} for Desk, installed=True, opened=False for one
    that starts the program itself, windows=True for one that can be tried there, too, or "only"."""
    def mark(trial):
        trial.needs = what
        return trial
    return mark


# What the accessibility bridge says when it is asked of a menu that has just closed, and the
# toolkit, with its debugging on, when the desktop took the keyboard before it knew.
REMARKS = re.compile("gtk_container_forall: assertion|lost focus even though it didn't have it")

# A leak whose memory was asked for far below Kestrel and the toolkit is the desktop's own.
LEAK = re.compile(r"^(?:Direct|Indirect) leak of .*\n(?: +#.*\n)*", re.MULTILINE)
NEAR = re.compile(r"(?: +#\d .*\n){2,8}? +#\d .*(?: kestrel::|/libwx_)")
LEAKS = re.compile(r"^=+\n.*LeakSanitizer: detected.*\n\s*SUMMARY: .* leaked in .*\n", re.MULTILINE)


class Kestrel:
    """The program under trial and the desk that it runs on."""

    on_windows = False
    tank = "tank/kestrel_stub_tank/libtank.so"

    def __init__(self, build, top, installed=None, **desk):
        self.build, self.top, self.installed = build, top, installed
        self.desk = Desk(**desk)
        if installed:
            self.folder = self.desk.env["XDG_CONFIG_HOME"] + "/kestrel"
            self.program = os.path.join(installed, "usr/bin/kestrel")
        else:
            self.folder = self.desk.path("app")
            os.mkdir(self.folder)
            self.program = shutil.copy(os.path.join(build, "src/ui/kestrel"), self.folder)
            shutil.copy(os.path.join(build, "src/tankhost/kestrel-tank"), self.folder)
        self.errors = self.desk.path("errors")
        self.bus = Bus()
        self.process = None
        self.expected_errors = None  # a pattern of lines that the trial provokes

    # Starting and ending.

    def start(self, *words, env=None, ready=True):
        self.bus.scale = int((env or {}).get("GDK_SCALE", 1))
        with open(self.errors, "ab") as errors:
            self.process = subprocess.Popen(
                [self.program, *words], env=self.desk.env | (env or {}), stdin=subprocess.DEVNULL,
                stdout=errors, stderr=errors, cwd=self.desk.env["HOME"])
        if ready:
            self.main = self.window("Kestrel Template Browser (*")
        return self

    def sample(self, name="harbour.gas"):
        """A copy of a sample, in a folder of the user's."""
        folder = self.desk.path("mod")
        os.makedirs(folder, exist_ok=True)
        return shutil.copy(os.path.join(self.top, "samples", name), folder)

    def stub(self, name):
        """A program or library of the tests that stands in for another one."""
        return os.path.join(self.build, "tests/stubs", name)

    def settings(self, **paths):
        text = "".join(f"{name}={path}\r\n" for name, path in paths.items())
        self.write(os.path.join(self.folder, "settings.set"), text)

    def write(self, path, text, mode=0o644):
        """A file of a text, or of bytes, in a folder that may be new; its path."""
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(text if isinstance(text, bytes) else text.encode())
        os.chmod(path, mode)
        return path

    def read(self, *names):
        with open(os.path.join(*names), "rb") as file:
            return file.read()

    def open(self, sample="harbour.gas", env=None, ready=True, **settings):
        """Starts it over a sample, with all that it knows beside it."""
        self.settings(zeltor=self.stub("builder/kestrel_stub_builder"), **settings)
        shutil.copy(self.stub(self.tank), self.folder)
        self.file = self.sample(sample)
        return self.start(self.file, env=env, ready=ready)

    def ended(self, limit=LIMIT):
        """The exit code, once it has ended."""
        wait(lambda: self.process.poll() is not None, "the program's end", limit)
        return self.process.returncode

    def finish(self):
        """What holds after every trial: it ends as its user ends it, in order and in silence."""
        if self.process.poll() is None:
            assert not self.find_windows("*Debug Alert*"), "an assert"
            self.keys("Escape", on=self.window("Kestrel Template Browser (*"))
            self.ended()
        assert self.process.returncode == 0, f"ended with {self.process.returncode}"
        lines = [line for line in self.error_lines() if not REMARKS.search(line)
                 and not (self.expected_errors and re.search(self.expected_errors, line))]
        assert not lines, "on stderr:\n" + "\n".join(lines)

    def error_lines(self):
        with open(self.errors, encoding="utf-8", errors="replace") as errors:
            said = LEAK.sub(lambda leak: leak[0] if NEAR.search(leak[0]) else "", errors.read())
        return [line for line in LEAKS.sub("", said).splitlines() if line.strip()]

    def leave_traces(self, path):
        """What a failure looked like: a picture, and the controls as text."""
        runs = self.process and self.process.poll() is None
        lines = [line for one in self.windows() for line in one.tree()] if runs else []
        self.write(path + ".txt", "\n".join(lines))
        self.desk.run("import", "-window", "root", path + ".png")
        print(f"See {path}.png and {path}.txt")
        if os.path.exists(self.errors):
            shutil.copy(self.errors, path + ".err")
            print("\n".join(self.error_lines()[:20]))

    # Windows and controls.

    def app(self):
        return self.bus.application(self.process.pid)

    def windows(self):
        app = self.app()
        return [one for one in app.children() if one.has("showing")] if app else []

    def find_windows(self, title):
        return [one for one in self.windows() if fnmatch.fnmatchcase(one.name or "", title)]

    def window(self, title, limit=LIMIT):
        """The window with that title, once it is there and active."""
        return wait(lambda: next(one for one in self.find_windows(title) if one.has("active")),
                    f"the window {title!r}", limit)

    def gone(self, window):
        wait(lambda: window not in self.windows(), "the end of a window")

    def find(self, name=None, role=None, window=None):
        """The one control of the active window that fits, once it is there."""
        return wait(lambda: (window or self.active()).find(name, role)[0],
                    f"{role or 'a control'} {name!r}")

    def active(self):
        return wait(lambda: next(one for one in self.windows() if one.has("active")),
                    "an active window")

    def focus(self):
        return wait(lambda: next(one for one in self.active().all() if one.has("focused")),
                    "a focused control")

    def focus_is(self, name):
        wait(lambda: self.focus().name == name, f"the focus in {name!r}")

    def status(self):
        return [one.name for one in self.find(role="statusbar").find(role="label")]

    def loaded(self, templates):
        """Waits for a file of so many."""
        wait(lambda: self.status()[2] == f"{templates} Templates", "the file")

    def pane(self):
        """The text in front."""
        return self.find("Text", "text")

    # Keys and mouse.

    def keys(self, *keys, on=None):
        if on:
            wait(lambda: on.has("active"), f"{on.name!r} to be active")
        for key in keys:
            self.desk.input("key", key)

    def type(self, text):
        """Types it; a line end at its end is the Enter key."""
        self.desk.input("type", "--delay", "5", text.removesuffix("\n"))
        if text.endswith("\n"):
            self.keys("Return")

    def walk(self, *steps):
        """Presses a key, and waits for what it gives the keyboard, again and again."""
        for key, name in steps:
            self.keys(key)
            self.focus_is(name)

    def press(self, button, title):
        """Presses what opens a window; the window."""
        self.click(button)
        return self.window(title)

    def open_by(self, title, *menu):
        """Chooses what opens a window; the window."""
        self.menu(*menu)
        return self.window(title)

    def reply(self, title, text):
        """Types into the box that asks for a text."""
        self.window(title)
        self.type(text)

    def click(self, what, button=1, times=1, at=None):
        """A press in the middle of a control, or `at` a place in it (from the right and the
        bottom if negative); or at a place of the screen."""
        if isinstance(what, str):
            what = self.find(what)
        if hasattr(what, "box"):
            wait(lambda: what.has("sensitive"), f"{what.name!r} to be enabled")
            x, y, width, height = what.box
            x, y = ((x + at[0] % width, y + at[1] % height) if at
                    else (x + width // 2, y + height // 2))
        else:
            x, y = what
        self.desk.input("mousemove", x, y)
        self.desk.input("click", "--repeat", times, "--delay", 60, button)

    def fill(self, name, text):
        """Types into a text box, in the place of what it holds."""
        self.click(self.find(name, "text"), at=(20, 8))
        self.keys("ctrl+a")
        self.type(text)

    def load(self, path):
        self.fill("Path of the .gas file", path + "\n")

    def load_text(self, text):
        self.load(self.write(self.sample("info.gas"), text.replace("\n", "\r\n").encode("cp1252")))

    def select(self, name, text):
        """Clicks the row that begins with the text."""
        self.click(self.find(name).select(text))
        self.selected_is(name, text)

    def selected_is(self, name, text):
        wait(lambda: self.find(name).selected()[0] == text, f"{text!r} selected")

    def close(self, window):
        self.keys("Escape", on=window)
        self.gone(window)

    def discard(self, window):
        self.keys("Escape", on=window)
        self.answer("Source has been changed. Exit anyway and discard changes?", "Yes", "Question")
        self.gone(window)

    def drag(self, start, end, pause=0):
        self.desk.input("mousemove", *start, "sleep", 0.02, "mousedown", 1)
        for place in ([(a + b) // 2 for a, b in zip(start, end)], end, end):
            self.desk.input("sleep", pause, "mousemove", *place)
        self.desk.input("sleep", pause, "mouseup", 1)

    def menu(self, *names):
        """Chooses an entry of the menu bar, or of a menu that is open."""
        for name in names:
            self.click(self.find_item(name))

    def find_item(self, name):
        return wait(lambda: next(one for window in self.windows() for one in window.find(name)
                                 if "menu" in one.role and one.box[0] >= 0),
                    f"the menu entry {name!r}")

    # Boxes.

    def box(self):
        """The text of the message box in front, in one line, and its icon's name."""
        box = self.active()
        texts, icons = ([one.name for one in box.find(role=role)] for role in ("label", "icon"))
        return " ".join(" ".join(texts).split()), "".join(icons[:1])

    def answer(self, text, button, icon=None):
        """Answers the message box whose text fits: by the button, or by its default."""
        wait(lambda: fnmatch.fnmatchcase(self.box()[0], text), f"the box {text!r}")
        if icon:
            assert self.box()[1] == icon, f"the icon is {self.box()[1]!r}"
        box = self.active()
        self.click(self.find(button, "push button")) if button else self.keys("Return")
        wait(lambda: self.process.poll() is not None or not box.has("active"),
             f"the end of the box {text!r}")

    def choose(self, path):
        """Names a file or folder in the system's dialog for it."""
        chooser = wait(lambda: next(one for one in self.windows() if one.role == "file chooser"),
                       "a file dialog")
        self.keys("ctrl+a", on=chooser)
        self.type(path)
        self.click(next(one for one in chooser.find(role="push button")
                        if one.name in ("Open", "Save", "Select")))
        self.gone(chooser)

    def icon(self):
        """Where the small window is that the notification area took in."""
        x, y, width, height = wait(lambda: next(
            box for box in self.desk.geometries("^Kestrel Template") if box[2] < 50), "the icon")
        return x + width // 2, y + height // 2

    def clipboard(self):
        return self.desk.run("xclip", "-o", "-selection", "clipboard").replace("\r\n", "\n")

    def effort(self, act):
        """The seconds that it computes for it until it answers: others' load does not count."""
        def spent():
            self.main.name
            ticks = self.read(f"/proc/{self.process.pid}/stat").split(b")")[-1].split()[11:13]
            return sum(map(int, ticks)) / os.sysconf("SC_CLK_TCK")
        before = spent()
        act()
        return spent() - before

    def other(self, *words):
        """Starts a program of others.py; it is ready when this returns."""
        return self.desk.start_with_answer(
            "/usr/bin/python3", os.path.join(self.top, "trials/others.py"), "{fd}", *words)
