"""Starting: the installed program, its first steps, files from elsewhere, the first rows of large files."""

import os
import re

from app import needs
from desk import wait
from save_trials import in_place


def opener(k):
    """A stand-in for the desktop's way to open a file; where it tells what it was given."""
    folder = k.desk.path("bin")
    k.write(os.path.join(folder, "xdg-open"), f'#!/bin/sh\necho "$1" >"{folder}/told"\n', 0o755)
    k.desk.env["PATH"] = folder + ":" + k.desk.env["PATH"]
    return os.path.join(folder, "told")


@needs(installed=True, opened=False)
def try_the_manual_opens(k):
    told = opener(k)
    k.start()
    for way in (lambda: k.keys("F1"), lambda: k.menu("Help", "Contents")):
        way()
        wait(lambda: os.path.exists(told) and k.read(told).endswith(b"/manual.html\n"), "the manual")
        text = k.read(k.read(told).decode().strip().removeprefix("file://"))
        assert b"<h2>Keys</h2>" in text and b"data:image/png;base64,iVBOR" in text
        os.remove(told)


@needs(installed=True, opened=False)
def try_the_first_steps_of_the_readme(k):
    """Each sentence of the README's steps, and what its reader does."""
    own = os.path.join(k.folder, "my-samples/harbour.gas")

    def close():
        k.close(k.active())
    steps = (
        ('Start Kestrel.', k.start),
        ('Choose "Open a Sample..." in the Help menu, and then "harbour.gas".',
         lambda: (k.menu("Help", "Open a Sample..."), k.choose(own))),
        ('Select "Small crate" in the list at the left.', lambda: k.select("Templates", "Small crate")),
        ('Tick "Use Tree as Filter", and select the block "body_2" in the tree.',
         lambda: (k.click("Use Tree as Filter"), k.select("Blocks", "body_2"))),
        ('Press "Parsed" to read the block as a table.', lambda: k.press("Parsed", "View Parsed Text: Small crate")),
        ('Close the table with Esc.', close),
        ('Press "View Specializes Chain", and the End key to go one parent up.',
         lambda: (k.press("View Specializes Chain", "Specializes Browser"), k.keys("End"),
                  wait(lambda: k.find("Chain").row_count() == 3, "the parent's parent"))),
        ('Close the browser with Esc.', close),
        ('Press "Source", and type "// mine" at the end of a line.',
         lambda: (k.press("Source", "Edit Source: Small crate"), k.keys("Down", "Down", "End"), k.type(" // mine"))),
        ('Save it with Ctrl+S, "Save", and twice "Yes": it stands in its place in the file.',
         lambda: in_place(k, k.active())))
    readme = k.read(k.installed, "usr/share/doc/kestrel/README.md").decode()
    written = re.findall(r"(?m)^\d\. (.*)$", readme.split("## First steps")[1])
    assert " ".join(written) == " ".join(sentence for sentence, _ in steps)
    for _, do in steps:
        do()
    assert k.read(own).count(b" // mine") == 1
    close()


def try_a_hundred_thousand_rows_make_no_pause(k):
    k.load_text("".join(f"[t:template,n:t{i}]\n{{\n\tname{i} = {i};\n}}\n" for i in range(1000))
                + '[t:template,n:many]\n{\n\tdoc = "many";\n'
                + "".join(f"\tvalue{i} = {i * 7919 % 100_003};\n" for i in range(100_000)) + "}\n")
    k.keys("End")
    wait(lambda: "100002" in k.status()[3], "them")
    efforts = {}
    for name, act in (*((key, lambda key=key: k.keys(key)) for key in ("F6", "F6", "End", "Home", "Next", "ctrl+f")),
                      ("find", lambda: (k.type("value99999\n"), k.window("Kestrel Template Browser (*"))),
                      ("sort", lambda: k.click(k.find("Properties").header(1)))):
        before = k.effort()
        act()
        efforts[name] = k.effort() - before
    wait(lambda: k.find("Properties").row(0)[1] == "0", "their order")
    efforts["sort"] = max(efforts["sort"], k.effort() - before)
    assert k.find("Properties").row_count() > 100_000
    assert max(efforts.values()) < 0.5, efforts
    print(efforts)
