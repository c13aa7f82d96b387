"""Random real use of all windows: keys, buttons, wheel, drags, menus, sizes, minimising, themes,
and requests to end in the midst of it."""

import os
import random
import shutil

from app import needs
from desk import wait
from dialog_trials import ARCHIVE

KEYS = """Tab shift+Tab Return space Escape Up Down Left Right Home End Prior Next Delete BackSpace
    Menu shift+F10 F1 F3 F5 F6 F10 ctrl+a ctrl+c ctrl+e ctrl+f ctrl+o ctrl+s ctrl+v ctrl+x ctrl+z
    ctrl+shift+z ctrl+Home ctrl+End shift+Down shift+End alt+f alt+e alt+v alt+t alt+h alt+s alt+p
    alt+l alt+d alt+c a x 7 bracketleft""".split()
LOOKS = ({}, {"GDK_SCALE": "2"}, {"GTK_THEME": "Adwaita:dark"}, {"GTK_THEME": "HighContrast"},
         {"GDK_DPI_SCALE": "1.75"})


class Random:
    def __init__(self, k, seed):
        self.k, self.random = k, random.Random(seed)
        self.starts, self.log, self.input = 0, [], k.desk.input
        k.desk.input = self.input_and_tell

    def input_and_tell(self, *words):
        self.log.append(" ".join(map(str, words)))
        self.input(*words)

    def ended(self):
        return self.k.process.poll() is not None

    def start(self):
        k, look = self.k, LOOKS[self.starts % len(LOOKS)]
        self.starts += 1
        mod = os.path.dirname(k.sample())
        samples = os.path.join(k.top, "samples")
        shutil.copytree(samples, mod, dirs_exist_ok=True)
        k.write(os.path.join(mod, "a.dsres"), ARCHIVE)
        for name, path in (("mor", "a.dsres"), ("zeltor1", "folder"), ("zeltor2", "b.dsres"),
                           ("cnv1", "folder")):
            k.write(os.path.join(k.folder, name + ".his"), os.path.join(mod, path) + "\r\n")
        files = sorted(one for one in os.listdir(samples) if one.endswith(".gas"))
        # Whatever is done with it shows its progress.
        files += 4 * [k.write(k.desk.path("large.gas"), "[t:template,n:a]\n{\nx = 1;\n}\n" * 30000)]
        k.open(self.random.choice(files), env=look, ready=False,
               skritpad="/bin/true", orvane="/bin/true", tool1="True|/bin/true")
        wait(k.windows, "a window")

    def place(self):
        """Somewhere in a window of the program, mostly on a control."""
        windows = self.k.windows()
        if not windows:
            return 640, 512
        controls = list(windows[-1].all()) if self.random.random() < 0.8 else windows
        x, y, width, height = self.random.choice(controls).box
        if width <= 1 or x < 0:
            x, y, width, height = windows[-1].box
        # A window that has just gone stands nowhere.
        return (max(0, x + self.random.randrange(max(1, width))),
                max(0, y + self.random.randrange(max(1, height))))

    def step(self):
        k, one_of, number = self.k, self.random.choice, self.random.randrange
        choose = number(100)
        if choose < 45:
            k.keys(one_of(KEYS))
        elif choose < 75:
            k.click(self.place(), button=one_of((1, 1, 1, 1, 2, 3, 3)), times=one_of((1, 1, 1, 2)))
        elif choose < 82:
            k.click(self.place(), button=one_of((4, 5, 6, 7)), times=3)
        elif choose < 92:
            k.desk.input("mousemove", *self.place(), "mousedown", 1)
            try:
                k.desk.input("mousemove", *self.place())
                if number(10) < 3:
                    k.keys(one_of(KEYS))
            finally:
                k.desk.input("mouseup", 1)
        elif choose < 95:
            k.desk.input("getactivewindow", "windowsize", number(200, 1300), number(200, 1000))
        elif choose < 97:
            k.desk.input("getactivewindow", "windowminimize")
            self.come_back()
        else:
            k.type(one_of(("crate", "[x] { a = 1; }", k.desk.path("mod", "party.gas"))))

    def come_back(self):
        """By the icon, or by the window manager."""
        k = self.k
        if any(one.has("active") for one in k.windows()):
            return
        for box in k.desk.geometries("^Kestrel Template"):
            if box[2] < 50:
                k.click((box[0] + 8, box[1] + 8), times=2)
        for window in k.desk.run("xdotool", "search", "--name", "^Kestrel Template").split():
            k.desk.input("windowactivate", window)

    def run(self, steps):
        self.start()
        for i in range(steps):
            if self.ended():
                self.k.finish()
                self.start()
            try:
                self.step()
                working = self.k.find_windows("Please wait...")
            except AssertionError:
                raise
            except Exception:  # a window that has just gone
                continue
            if i % 20 == 0:
                wait(lambda: self.ended() or self.k.app(), "an answer", 30)
            if self.random.randrange(2 if working else 60) == 0:
                self.k.process.terminate()
                self.k.ended(30)
            elif i % 500 == 499:
                self.leave()
        self.leave()

    def leave(self):
        """Closes window after window as a user does: each has a way out, and the last ends all."""
        k, told = self.k, len(self.log)
        for _ in range(60):
            if self.ended():
                return
            try:
                self.come_back()
                if yes := k.active().find("Yes", "push button"):
                    k.click(yes[0])
                else:
                    k.keys("Escape")
                    k.desk.input("sleep", 0.2)
            except Exception:  # a window that has just gone, or a menu of the window manager
                k.keys("Escape")
        del self.log[told:]
        raise AssertionError("there is no way out")


def trial_of(steps, seed):
    @needs(opened=False)
    def use_at_random(k):
        one = Random(k, seed)
        # GTK says much of its own widgets, its file dialog above all, when one goes in the midst of
        # what it does. What it says in ordinary use is for the other trials.
        k.expected_errors = "Gtk-(CRITICAL|WARNING)"
        try:
            one.run(steps)
        finally:
            print(f"{one.starts} starts; the last steps:\n" + "\n".join(one.log[-40:]))
    return use_at_random
