"""Starting: the installed program, its first steps, files from elsewhere, the first rows of large files."""

import os
import re
import time

from app import needs
from desk import wait


def opener(k):
    """A stand-in for the desktop's way to open a file; where it tells what it was given."""
    folder = k.desk.path("bin")
    os.makedirs(folder)
    with open(os.path.join(folder, "xdg-open"), "w", encoding="ascii") as script:
        script.write(f'#!/bin/sh\necho "$1" >"{folder}/told"\n')
    os.chmod(script.name, 0o755)
    k.desk.env["PATH"] = folder + ":" + k.desk.env["PATH"]
    return os.path.join(folder, "told")


def other(k, *words):
    """Starts a program of others.py; it is ready when this returns."""
    return k.desk.start_with_answer("/usr/bin/python3", os.path.join(k.top, "trials/others.py"), "{fd}", *words)


@needs(installed=True)
def try_the_manual_opens(k):
    told = opener(k)
    k.start()
    for way in (lambda: k.keys("F1"), lambda: k.menu("Help", "Contents")):
        way()
        wait(lambda: os.path.exists(told) and k.read(told).endswith(b"/manual.html\n"), "the manual")
        with open(k.read(told).decode().strip().removeprefix("file://"), encoding="utf-8") as manual:
            text = manual.read()
        assert "<h2>Keys</h2>" in text and "data:image/png;base64,iVBOR" in text
        os.remove(told)
    k.quit()


@needs(installed=True)
def try_the_first_steps_of_the_readme(k):
    """Each sentence of the README's steps, and what its reader does."""
    def open_sample():
        k.menu("Help", "Open a Sample...")
        k.choose(os.path.join(k.folder, "my-samples/harbour.gas"))
        wait(lambda: k.status()[2] == "40 Templates", "the sample")

    def parsed():
        k.click("Parsed")
        view = k.window("View Parsed Text: Small crate")
        assert "weight\t" in k.find("Text", "text").text()
        return view

    def chain():
        k.click("View Specializes Chain")
        browser = k.window("Specializes Browser")
        k.keys("End")
        wait(lambda: k.find("Chain").row_count() == 3, "the parent's parent")
        return browser

    def select(name, row):
        k.click(k.find(name).select(row))
        wait(lambda: k.find(name).selected() == [row], row)

    def comment():
        k.click("Source")
        k.window("Edit Source: Small crate")
        k.keys("Down", "Down", "End")
        k.type(" // mine")

    def saved():
        view = k.active()
        own = k.read(k.folder, "my-samples/harbour.gas")
        k.keys("ctrl+s", on=view)
        k.click(k.find("Save", "push button", k.window("Select Save As Filename and Location")))
        for _ in range(2):
            k.answer("*", "Yes", "Question")
        wait(lambda: not view.name.endswith(" *"), "no mark")
        now = k.read(k.folder, "my-samples/harbour.gas")
        assert now.count(b" // mine") == 1 and len(now) - len(own) < 40, "in its place"
        k.keys("Escape", on=view)
        k.gone(view)

    opened = []

    def close():
        k.keys("Escape", on=opened[-1])
        k.gone(opened.pop())

    steps = (
        ('Start Kestrel.', k.start),
        ('Choose "Open a Sample..." in the Help menu, and then "harbour.gas".', open_sample),
        ('Select "Small crate" in the list at the left.', lambda: select("Templates", "Small crate")),
        ('Tick "Use Tree as Filter", and select the block "body_2" in the tree.',
         lambda: (k.click("Use Tree as Filter"), select("Blocks", "body_2"))),
        ('Press "Parsed" to read the block as a table.', lambda: opened.append(parsed())),
        ('Close the table with Esc.', close),
        ('Press "View Specializes Chain", and the End key to go one parent up.',
         lambda: opened.append(chain())),
        ('Close the browser with Esc.', close),
        ('Press "Source", and type "// mine" at the end of a line.', comment),
        ('Save it with Ctrl+S, "Save", and twice "Yes": it stands in its place in the file.', saved))
    readme = k.read(k.installed, "usr/share/doc/kestrel/README.md").decode()
    written = re.findall(r"(?m)^\d\. (.*)$", readme.split("## First steps")[1])
    assert " ".join(written) == " ".join(sentence for sentence, _ in steps)
    for _, do in steps:
        do()
    k.quit()


@needs(desk={"tray": False})
def try_an_area_that_refuses_the_icon_hides_nothing(k):
    other(k, "refuse")
    k.open()
    window = k.desk.run("xdotool", "getactivewindow").strip()
    k.desk.input("windowminimize", window)
    wait(lambda: "Iconic" in k.desk.run("xprop", "-id", window, "WM_STATE"), "a minimised window")
    k.desk.input("windowactivate", window)
    k.main = k.window("Kestrel Template Browser (*")
    k.quit()


def try_files_are_dropped_on_every_pane(k):
    k.open()
    drops = [(pane, k.sample(file)) for pane, file in (
        ("Templates", "tides.gas"), ("Blocks", "party.gas"), ("Properties", "info.gas"))]
    other(k, "offer", *("file://" + path for _, path in drops))
    files = wait(lambda: k.desk.run("xdotool", "search", "--name", "^Files$").split(), "the files")[0]
    k.desk.input("windowmove", "--sync", files, 1000, 100)
    left, top = k.desk.geometries("^Files$")[0][:2]
    window = k.desk.run("xdotool", "search", "--name", "^Kestrel Template").split()[-1]
    for pane, path in drops:
        k.drag((left + 50, top + 50), k.main.find(pane)[0].middle(), pause=0.1)
        k.desk.input("windowactivate", window)
        wait(lambda: k.find("Path of the .gas file", "text").text() == path, "the dropped file")
    k.quit()


def try_a_hundred_thousand_rows_make_no_pause(k):
    path = k.sample("info.gas")
    with open(path, "w", encoding="ascii", newline="\r\n") as file:
        for i in range(1000):
            file.write(f"[t:template,n:t{i}]\n{{\n\tname{i} = {i};\n}}\n")
        file.write("[t:template,n:many]\n{\n\tdoc = \"many\";\n")
        file.writelines(f"\tvalue{i} = {i * 7919 % 100_003};\n" for i in range(100_000))
        file.write("}\n")
    k.start(path)
    k.keys("End")
    wait(lambda: "100002" in k.status()[3], "them")
    pauses = {}

    def measure(what):
        """The longest time for an answer until half a second is quiet."""
        end = time.monotonic() + 0.5
        while time.monotonic() < end:
            pauses[what] = max(pauses.get(what, 0), k.answers())
    for keys in (("F6", "F6"), ("End",), ("Home",), ("Next", "Next"), ("ctrl+f",)):
        k.keys(*keys)
        measure(keys[0])
    k.type("value99999\n")
    measure("find")
    k.click(k.find("Properties").header(1))
    measure("sort")
    assert k.find("Properties").row_count() > 100_000
    assert max(pauses.values()) < 0.4, pauses
    print(pauses)
    k.quit()
