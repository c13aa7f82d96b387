"""Edited sources: what a save writes and leaves alone, and what is kept of what is not saved."""

import os
import signal
import time

from app import needs
from desk import wait
from start_trials import other

REPLACE = "File already exists. Replace existing file?"
IN_PLACE = "This text is one of the * blocks of this file. Put it in its place and keep the others?"


def save(k, view, *answers):
    """Ctrl+S, and the file that is proposed. The desktop's buttons are in its own language."""
    k.keys("ctrl+s", on=view)
    chooser = k.window("Select Save As Filename and Location")
    k.keys("Return", on=chooser)
    for text, answer in answers:
        k.answer(text, answer, "Question")
    wait(lambda: view.has("active"), "the view")


def in_place(k, view):
    save(k, view, (REPLACE, "Yes"), (IN_PLACE, "Yes"))


def try_a_template_is_edited_all_day(k):
    k.open()
    before = k.read(k.file)
    k.click(k.find("Templates").select("Small crate"))
    k.click("Source")
    view = k.window("Edit Source: Small crate")
    text = k.find("Text", "text")
    for number, (old, new) in enumerate(((b"weight = 12.5", b"weight = 99"), (b"slots = 4", b"slots = 77"))):
        at = text.text().index(old.decode())
        k.click(text.place(at + 1))
        k.keys("Home", "shift+End")
        k.type(new.decode() + ";")
        wait(lambda: view.name.endswith(" *"), "the mark")
        in_place(k, view)
        wait(lambda: not view.name.endswith(" *"), "no mark")
        lines, saved = before.split(b"\r\n"), k.read(k.file).split(b"\r\n")
        changed = [i for i, (one, other) in enumerate(zip(lines, saved)) if one != other]
        assert len(lines) == len(saved) and len(changed) == number + 1, changed
        assert saved[changed[-1]] == b"        " + new + b";", saved[changed[-1]]
        assert k.read(k.file + ".bak") == before
    k.keys("Escape", on=view)
    k.gone(view)
    wait(lambda: k.find("Templates").selected() == ["Small crate"], "the same template")
    assert k.status()[2] == "40 Templates"
    k.quit()


def try_losing_is_never_the_default(k):
    k.open()
    before = k.read(k.file)
    k.click("Source")
    view = k.window("Edit Source: Base prop")
    k.type("x")
    k.keys("Escape", on=view)
    k.box()
    k.keys("Return")
    wait(lambda: view.has("active"), "the view")
    k.keys("ctrl+s", on=view)
    chooser = k.window("Select Save As Filename and Location")
    k.keys("Return", on=chooser)
    wait(lambda: k.box()[0] == REPLACE, "the question")
    k.keys("Return")
    wait(lambda: view.has("active"), "the view")
    assert k.read(k.file) == before and view.name.endswith(" *")
    k.keys("Escape", on=view)
    k.answer("Source has been changed. Exit anyway and discard changes?", "Yes", "Question")
    k.gone(view)
    k.quit()


def try_a_parent_is_saved_to_its_own_file(k):
    other = k.sample("chain-b.gas")
    k.open("chain-a.gas")
    before, parent = k.read(k.file), k.read(other)
    k.menu("View", "Specializes Chain")
    browser = k.window("Specializes Browser")
    pane = k.find("Text", "text")
    k.keys("End", on=browser)
    k.window("Select the node's source file")
    k.choose(other)
    wait(lambda: pane.text().startswith("[t:template,n:dinghy_painted]"), "its source")
    assert browser.find("chain-b.gas"), "the file's name"
    at = pane.text().index("doc")
    k.click(pane.place(at))
    k.keys("Home")
    k.type("q = 1; ")
    wait(lambda: browser.name.endswith(" *"), "the mark")
    save(k, browser, (REPLACE, "Yes"), (IN_PLACE, "Yes"))
    assert k.read(k.file) == before
    lines, saved = parent.split(b"\r\n"), k.read(other).split(b"\r\n")
    changed = [one for one, was in zip(saved, lines) if one != was]
    assert len(lines) == len(saved) and len(changed) == 1 and b"q = 1;" in changed[0], changed
    k.keys("Escape", on=browser)
    k.gone(browser)
    k.quit()


OFFER = "Changes that were not saved are kept from an earlier run: Edit Source: Small crate *"


def drafts(k):
    files = [os.path.join(k.folder, name) for name in os.listdir(k.folder) if ".draft" in name]
    return [name for name in files if os.path.getsize(name) or name.endswith(".lock")]


def has_draft(k):
    return any(name.endswith(".draft") for name in drafts(k))


def shows(k, typed):
    wait(lambda: k.find("Text", "text").text().splitlines()[1] == "{" + typed, typed)


def end_by(k, how):
    """Ends the program as others do; its exit code."""
    if how == "display":
        k.desk.input("search", "--name", "^Edit Source", "windowkill")
    elif how == "session" and k.on_windows:
        k.desk.run("wine", "wineboot", "--end-session")
    elif how == "session":
        k.desk.processes[-1].send_signal(signal.SIGUSR1)
    else:
        k.process.send_signal(how)
    return k.ended()


def try_a_draft_outlives_every_end(k):
    k.open()
    k.click(k.find("Templates").select("Small crate"))
    k.click("Source")
    typed = ""
    for how, code in ((signal.SIGKILL, -9), (signal.SIGTERM, 0), ("display", 1)):
        view = k.window("Edit Source: Small crate*")
        k.keys("ctrl+Home", "Down", "End", on=view)
        k.type("lost")
        typed += "lost"
        shows(k, typed)
        if how == signal.SIGKILL:
            time.sleep(5)
        assert end_by(k, how) == code, how
        assert how == signal.SIGKILL or k.read(k.folder, "info.his").decode() == k.file + "\r\n"
        k.start(k.file, ready=False)
        k.answer(OFFER, "Open", "Question")
        shows(k, typed)
    view = k.window("Edit Source: Small crate [*]")
    in_place(k, view)
    assert k.read(k.file).count(b"n:crate_small]\r\n{" + typed.encode() + b"\r\n") == 1
    assert not drafts(k), drafts(k)


@needs(windows=True)
def try_logging_out_keeps_a_draft(k):
    if not k.on_windows:
        k.desk.env["SESSION_MANAGER"] = other(k, "session")

    def kept(text):
        return any(text in k.read(name) for name in drafts(k) if name.endswith(".draft"))
    k.open()
    k.click("Source")
    k.keys("ctrl+Home", "Down", "End", on=k.window("Edit Source: Base prop"))
    k.type("lost")
    wait(lambda: kept(b"{lost\r\n"), "a draft")
    k.type("more")
    time.sleep(0.5)
    assert end_by(k, "session") == 0
    assert kept(b"{lostmore\r\n")
    k.start(ready=False)
    k.answer("Changes that were not saved*", "Open", "Question")
    view = k.window("Edit Source: Base prop [*]")
    k.keys("Escape", on=view)
    k.answer("Source has been changed. Exit anyway and discard changes?", "Yes", "Question")
    k.main = k.window("Kestrel Template Browser (*")
    # Two windows that go at once take the keyboard from Wine's.
    k.click("Templates")
    k.quit()
    assert not drafts(k), drafts(k)


def try_a_draft_waits_for_its_user(k):
    k.open()
    k.click("Source")
    view = k.window("Edit Source: Base prop")
    k.type("x")
    wait(lambda: has_draft(k), "a draft")
    assert all(os.stat(name).st_mode & 0o777 == 0o600 for name in drafts(k))
    k.keys("ctrl+z", on=view)
    wait(lambda: not drafts(k), "no draft of an unchanged text")
    k.type("y")
    wait(lambda: has_draft(k), "a draft")
    k.process.kill()
    k.ended()
    for answer in ("Later", "Later", "Discard"):
        k.start(ready=False)
        k.answer("*" + k.file + "*", answer)
        k.main = k.window("Kestrel Template Browser (*")
        k.quit()
    assert not drafts(k), drafts(k)
    k.start()


def try_whatever_is_open_ends_with_the_program(k):
    for menu, key in ((("Edit",), None), (("Edit", "Open..."), None), (("Tools", "Print"), None),
                      (("View", "Source"), "ctrl+s")):
        k.open()
        k.menu(*menu)
        if len(menu) > 1:
            wait(lambda: not k.main.has("active"), "a dialog")
        if key:
            k.type("x")
            k.keys(key)
            k.window("Select Save As*")
        assert end_by(k, signal.SIGTERM) == 0, menu
    assert has_draft(k)
