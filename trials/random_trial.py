"""Random real use of all windows: buttons, wheel, drags, keys, menus, resizing, minimising, themes."""

import os
import random
import shutil

from desk import wait

KEYS = ("Tab", "shift+Tab", "Return", "space", "Escape", "Up", "Down", "Left", "Right", "Home", "End",
        "Prior", "Next", "Delete", "BackSpace", "Menu", "shift+F10", "F1", "F3", "F5", "F6", "F10",
        "ctrl+a", "ctrl+c", "ctrl+e", "ctrl+f", "ctrl+o", "ctrl+s", "ctrl+v", "ctrl+x", "ctrl+z",
        "ctrl+shift+z", "ctrl+Home", "ctrl+End", "shift+Down", "shift+End", "alt+f", "alt+e", "alt+v",
        "alt+t", "alt+h", "alt+s", "alt+p", "alt+l", "alt+d", "alt+c", "a", "x", "7", "bracketleft")
LOOKS = ({}, {"GDK_SCALE": "2"}, {"GTK_THEME": "Adwaita:dark"}, {"GTK_THEME": "HighContrast"},
         {"GDK_DPI_SCALE": "1.75"})


class Random:
    def __init__(self, k, steps, seed):
        self.k, self.steps, self.random = k, steps, random.Random(seed)
        self.log = []
        self.starts = 0

    def start(self):
        k = self.k
        samples = k.desk.path("mod")
        if not os.path.exists(samples):
            shutil.copytree(os.path.join(k.top, "samples"), samples)
        shutil.copy(k.stub(k.tank), k.folder)
        k.settings(zeltor=k.stub("builder/kestrel_stub_builder"), skritpad="/bin/true",
                   orvane="/bin/true", tool1="True|/bin/true")
        with open(os.path.join(samples, "a.dsres"), "w", encoding="ascii") as file:
            file.write("tank\ndir|name=art|path=\\\n.file|name=A.GAS|path=\\art|size=5|data=abc\n")
        for name, path in (("mor", "a.dsres"), ("zeltor1", "folder"), ("zeltor2", "b.dsres"), ("cnv1", "folder")):
            with open(os.path.join(k.folder, name + ".his"), "w", encoding="ascii") as file:
                file.write(os.path.join(samples, path) + "\r\n")
        files = sorted(one for one in os.listdir(samples) if one.endswith(".gas"))
        look = LOOKS[self.starts % len(LOOKS)]
        self.starts += 1
        k.start(os.path.join(samples, self.random.choice(files)), env=look, ready=False)
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
        k, choose = self.k, self.random.random()
        if choose < 0.45:
            key = self.random.choice(KEYS)
            self.tell("key", key)
            k.keys(key)
        elif choose < 0.75:
            place, button = self.place(), self.random.choice((1, 1, 1, 1, 2, 3, 3))
            self.tell("click", button, *place)
            k.click(place, button=button, times=self.random.choice((1, 1, 1, 2)))
        elif choose < 0.82:
            self.tell("wheel")
            k.click(self.place(), button=self.random.choice((4, 5, 6, 7)), times=3)
        elif choose < 0.92:
            start, end, key = self.place(), self.place(), self.random.choice(KEYS)
            self.tell("drag", *start, *end, "and", key)
            k.move(*start)
            k.desk.input("mousedown", 1)
            try:
                k.move(*end)
                if self.random.random() < 0.3:
                    k.keys(key)
            finally:
                k.desk.input("mouseup", 1)
        elif choose < 0.95:
            size = self.random.randrange(200, 1300), self.random.randrange(200, 1000)
            self.tell("size", *size)
            k.desk.input("getactivewindow", "windowsize", *size)
        elif choose < 0.97:
            self.tell("minimise")
            k.desk.input("getactivewindow", "windowminimize")
            self.come_back()
        else:
            self.tell("type")
            k.type(self.random.choice(("crate", "[x] { a = 1; }", k.desk.path("mod", "party.gas"))))

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

    def tell(self, *words):
        self.log.append(" ".join(map(str, words)))

    def run(self):
        k = self.k
        self.start()
        for i in range(self.steps):
            if k.process.poll() is not None:
                assert k.process.returncode == 0, f"ended with {k.process.returncode} in step {i}"
                k.said_nothing()
                self.start()
            try:
                self.step()
            except AssertionError:
                raise
            except Exception:  # a window that has just gone
                continue
            if i % 20 == 0:
                wait(lambda: k.process.poll() is not None or k.app(), "an answer", 30)
            if i % 500 == 499:
                self.leave()
        self.leave()
        k.finish()

    def leave(self):
        """Closes window after window as a user does; each has a way out, and the last ends it all."""
        k = self.k
        for _ in range(60):
            if k.process.poll() is not None:
                return
            try:
                self.come_back()
                yes = k.active().find("Yes", "push button")
                if yes:
                    k.click(yes[0])
                else:
                    k.keys("Escape")
                    k.desk.input("sleep", 0.2)
            except Exception:  # a window that has just gone, or a menu of the window manager
                k.keys("Escape")
        raise AssertionError("there is no way out")


def run(k, steps, seed):
    one = Random(k, steps, seed)
    # GTK says much of its own widgets, its file dialog above all, when one goes in the midst of
    # what it does. What it says in ordinary use is for the other trials.
    k.expected_errors = "Gtk-(CRITICAL|WARNING)"
    try:
        one.run()
    except BaseException:
        print("The last steps:\n" + "\n".join(one.log[-40:]))
        raise
    print(f"{steps} steps, {one.starts} starts")
