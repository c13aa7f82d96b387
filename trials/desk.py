"""A desktop for one trial: an X display with a window manager, a notification area and the buses.

Everything is started here, belongs to the trial alone and ends with it.
"""

import ctypes
import os
import shutil
import signal
import subprocess
import tempfile
import time

# Only what a desktop session needs of whoever starts the trials.
KEPT = ("KESTREL_WINEPREFIX", "KESTREL_WRITE", "WINEDLLPATH", "WINEDEBUG", "WINEDLLOVERRIDES",
        "PATH", "LANG", "TMPDIR", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS")
LIMIT = 15  # seconds for anything that a user would wait for


def wait(condition, what, limit=LIMIT):
    """The first true value of condition(), which may also fail while things change."""
    end = time.monotonic() + limit
    problem = None
    while time.monotonic() < end:
        try:
            if value := condition():
                return value
            problem = None
        except Exception as error:  # a control that has just gone
            problem = error
        time.sleep(0.01)
    raise AssertionError(f"waited {limit} s for {what}" + (f": {problem}" if problem else ""))


def die_with_parent():
    ctypes.CDLL(None).prctl(1, signal.SIGKILL)


class Desk:
    def __init__(self, manager="openbox", tray=True):
        self.folder = tempfile.mkdtemp(prefix="kestrel-trial-")
        self.log = open(self.path("desk.log"), "wb")
        self.processes = []
        self.env = {name: os.environ[name] for name in KEPT if name in os.environ}
        home, run = self.path("home"), self.path("run")
        os.mkdir(home)
        os.mkdir(run, 0o700)
        self.env |= {
            "HOME": home, "XDG_RUNTIME_DIR": run, "XDG_CONFIG_HOME": home + "/.config",
            "XDG_DATA_HOME": home + "/.local/share", "XDG_STATE_HOME": home + "/.local/state",
            "XDG_CACHE_HOME": home + "/.cache", "GDK_BACKEND": "x11", "GTK_THEME": "Adwaita",
            "GTK_USE_PORTAL": "0", "GSETTINGS_BACKEND": "memory", "LC_ALL": "C.UTF-8", "TZ": "UTC"}
        self.env["DISPLAY"] = ":" + self.start_with_answer(
            "Xvfb", "-displayfd", "{fd}", "-screen", "0", "1280x1024x24", "-noreset", "-nolisten",
            "tcp")
        self.env["DBUS_SESSION_BUS_ADDRESS"] = self.start_with_answer(
            "dbus-daemon", "--session", "--nofork", "--print-address={fd}")
        self.start(manager)
        wait(lambda: "# 0x" in self.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"), manager)
        if tray:
            self.tray = self.start("trayer", "--edge", "bottom", "--align", "left",
                                   "--SetPartialStrut", "true", "--height", "24")
            wait(lambda: "_NET_SYSTEM_TRAY" in self.run("xprop", "-root")
                 or self.run("xdotool", "search", "--class", "trayer"), "the notification area")
        os.environ.clear()
        os.environ.update(self.env)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def start(self, *command, **more):
        process = subprocess.Popen(command, env=self.env, stdin=subprocess.DEVNULL, stdout=self.log,
                                   stderr=self.log, preexec_fn=die_with_parent,
                                   start_new_session=True, **more)
        self.processes.append(process)
        return process

    def start_with_answer(self, *command):
        """Starts a program that tells a line on the descriptor {fd}; that line."""
        read, write = os.pipe()
        self.start(*(word.format(fd=write) for word in command), pass_fds=[write])
        os.close(write)
        with open(read, encoding="utf-8") as answer:
            return answer.readline().strip()

    def run(self, *command):
        """What the program says; nothing where it fails."""
        return subprocess.run(command, env=self.env, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=self.log, timeout=LIMIT,
                              check=False).stdout.decode("utf-8", "surrogateescape")

    def input(self, *words):
        """Real keys and mouse."""
        self.run("xdotool", *map(str, words))

    def geometries(self, word, kind="--name"):
        """Left, top, width and height of the windows whose titles (or --class) fit."""
        boxes = []
        for window in self.run("xdotool", "search", kind, word).split():
            place = dict(line.split("=") for line in
                         self.run("xdotool", "getwindowgeometry", "--shell", window).split())
            boxes.append(tuple(int(place[one]) for one in ("X", "Y", "WIDTH", "HEIGHT")))
        return boxes

    def end(self):
        for process in reversed(self.processes):
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
        self.log.close()
        shutil.rmtree(self.folder, ignore_errors=True)
