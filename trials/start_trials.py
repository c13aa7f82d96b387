"""Starting: the installed program, its first steps, the first rows of large files."""

import os
import re

from app import needs
from desk import wait
from save_trials import in_place


@needs(installed=True, opened=False)
def try_the_manual_opens(k):
    """By a stand-in for the desktop's way to open a file."""
    told = k.desk.path("bin", "told")
    k.write(k.desk.path("bin", "xdg-open"), f'#!/bin/sh\necho "$1" >"{told}"\n', 0o755)
    k.desk.env["PATH"] = k.desk.path("bin") + ":" + k.desk.env["PATH"]
    k.start()
    for way in (lambda: k.keys("F1"), lambda: k.menu("Help", "Contents")):
        way()
        wait(lambda: k.read(told).endswith(b"/manual.html\n"), "the manual")
        text = k.read(k.read(told).decode().strip().removeprefix("file://"))
        assert b"<h2>Keys</h2>" in text and b"data:image/png;base64,iVBOR" in text
        os.remove(told)


@needs(installed=True, opened=False)
def try_the_first_steps_of_the_readme(k):
    """What its reader does at each sentence, with the names that stand in it."""
    own = os.path.join(k.folder, "my-samples/")

    def esc():
        k.close(k.active())
    steps = (
        k.start,
        lambda entry, name: (k.menu("Help", entry), k.choose(own + name)),
        lambda name: k.select("Templates", name),
        lambda box, block: (k.click(box), k.select("Blocks", block)),
        lambda button: k.press(button, "View Parsed Text: Small crate"),
        esc,
        lambda button: (k.press(button, "Specializes Browser"), k.keys("End"),
                        wait(lambda: k.find("Chain").row_count() == 3, "the parent's parent")),
        esc,
        lambda button, words: (k.press(button, "Edit Source: Small crate"),
                               k.keys("Down", "Down", "End"), k.type(" " + words)),
        lambda _save, _yes: in_place(k, k.active()))
    readme = k.read(k.installed, "usr/share/doc/kestrel/README.md").decode()
    written = re.findall(r"(?m)^\d\. (.*)$", readme.split("## First steps")[1])
    for sentence, do in zip(re.split(r"(?<=\.) ", " ".join(written)), steps, strict=True):
        do(*re.findall('"([^"]*)"', sentence))
    assert k.read(own, "harbour.gas").count(b" // mine") == 1
    esc()


def try_a_hundred_thousand_rows_make_no_pause(k):
    k.load_text("".join(f"[t:template,n:t{i}]\n{{\n\tname{i} = {i};\n}}\n" for i in range(1000))
                + '[t:template,n:many]\n{\n\tdoc = "many";\n'
                + "".join(f"\tvalue{i} = {i * 7919 % 100_003};\n" for i in range(100_000)) + "}\n")
    k.keys("End")
    wait(lambda: "100002" in k.status()[3], "them")
    efforts = {}
    for name, act in (
            *((key, lambda key=key: k.keys(key)) for key in
              ("F6", "F6", "End", "Home", "Next", "ctrl+f")),
            ("find", lambda: (k.type("value99999\n"), k.window("Kestrel Template Browser (*"))),
            ("sort", lambda: (k.click(k.find("Properties").header(1)),
                              wait(lambda: k.find("Properties").row(0)[1] == "0", "an order")))):
        efforts[name] = k.effort(act)
    assert k.find("Properties").row_count() > 100_000
    assert max(efforts.values()) < 0.5, efforts
