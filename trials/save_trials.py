"""Edited sources: what a save writes and leaves alone, and what is kept of what is not saved."""

import os
import signal
import time

from app import needs
from desk import wait

REPLACE = "File already exists. Replace existing file?"
IN_PLACE = "This text is one of the * blocks of this file. Put it in its place and keep the others?"


def save(k, view):
    """Ctrl+S, and the file that is proposed. The desktop's buttons are in its own language."""
    k.keys("ctrl+s", on=view)
    k.keys("Return", on=k.window("Select Save As Filename and Location"))


def in_place(k, view):
    save(k, view)
    for text in (REPLACE, IN_PLACE):
        k.answer(text, "Yes", "Question")
    wait(lambda: view.has("active") and not view.name.endswith(" *"), "no mark")


def changed(before, now):
    pairs = zip(before.split(b"\r\n"), now.split(b"\r\n"), strict=True)
    return [line for was, line in pairs if was != line]


def try_a_template_is_edited_all_day(k):
    before = k.read(k.file)
    k.select("Templates", "Small crate")
    view = k.press("Source", "Edit Source: Small crate")
    text = k.pane()
    for number, (old, new) in enumerate((("weight = 12.5", "weight = 99;"),
                                         ("slots = 4", "slots = 77;"))):
        k.click(text.place(text.text().index(old) + 1))
        k.keys("Home", "shift+End")
        k.type(new)
        wait(lambda: view.name.endswith(" *"), "the mark")
        in_place(k, view)
        lines = changed(before, k.read(k.file))
        assert len(lines) == number + 1 and lines[-1] == b"        " + new.encode(), lines
        assert k.read(k.file + ".bak") == before
    k.close(view)
    k.selected_is("Templates", "Small crate")
    assert k.status()[2] == "40 Templates"


def try_losing_is_never_the_default(k):
    before = k.read(k.file)
    view = k.press("Source", "Edit Source: Base prop")
    k.type("x")
    for ask, question in ((lambda: k.keys("Escape", on=view), "Source has been changed. *"),
                          (lambda: save(k, view), REPLACE)):
        ask()
        k.answer(question, None, "Question")
        wait(lambda: view.has("active"), "the view")
    assert k.read(k.file) == before and view.name.endswith(" *")
    k.discard(view)


def try_a_parent_is_saved_to_its_own_file(k):
    """The chain grows over files; each parent goes back to the one that it came from."""
    files = [k.sample(f"chain-{one}.gas") for one in "abc"]
    k.load(files[0])
    before = [k.read(path) for path in files]
    browser = k.open_by("Specializes Browser", "View", "Specializes Chain")
    chain, pane = k.find("Chain"), k.pane()

    def shows(start):
        wait(lambda: pane.text().startswith(start), start)
    k.keys("End", on=browser)
    k.keys("Escape", on=k.window("Select the node's source file"))
    shows("Source not available.")
    for key, path, start in (("Return", files[1], "[t:template,n:dinghy_painted]"),
                             ("End", files[2], "[t:template,n:dinghy_plain]")):
        k.keys(key, on=browser)
        k.window("Select the node's source file")
        k.choose(path)
        shows(start)
        assert chain.row_count() == 3 and browser.find(os.path.basename(path)), "the file's name"
    k.keys("Up", on=browser)
    shows("[t:template,n:dinghy_painted]")
    k.click(pane.place(pane.text().index("doc")))
    k.keys("Home")
    k.type("q = 1; ")
    wait(lambda: browser.name.endswith(" *"), "the mark")
    in_place(k, browser)
    lines = [changed(*texts) for texts in zip(before, map(k.read, files))]
    assert [len(one) for one in lines] == [0, 1, 0] and b"q = 1;" in lines[1][0], lines
    k.click("Reset File List")
    k.answer("Really reset the list of files that are searched for source?", "No", "Question")
    k.close(browser)
    k.finish()
    assert k.read(k.folder, "spec.his").decode().split("\r\n") == files


def try_a_parent_is_shown_from_an_archive(k):
    child, text = k.sample("chain-a.gas"), "[t:template,n:dinghy_painted];x = 1;"
    archive = k.write(k.desk.path("mod.dsres"), "tank\nfile|name=none.gas\ndir|name=art\n"
                      f".file|name=boats.gas|size={len(text)}|data={text}\n")
    k.load(child)
    browser = k.open_by("Specializes Browser", "View", "Specializes Chain")
    k.keys("End", on=browser)
    k.window("Select the node's source file")
    k.choose(archive)
    k.answer("Error loading gas file!*", "OK", "Warning")
    wait(lambda: k.pane().text().startswith(text[:28]), "the parent")
    assert not k.pane().has("editable") and browser.find("boats.gas"), "the file's name"
    k.focus_is("Chain")
    k.close(browser)
    k.finish()
    assert k.read(k.folder, "spec.his").decode().split("\r\n") == [child, archive]


def drafts(k):
    files = [os.path.join(k.folder, name) for name in os.listdir(k.folder) if ".draft" in name]
    return [name for name in files if os.path.getsize(name) or name.endswith(".lock")]


def kept(k, text):
    return any(text in k.read(name) for name in drafts(k) if name.endswith(".draft"))


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
    k.select("Templates", "Small crate")
    k.click("Source")
    typed = "{"

    def shows_it():
        wait(lambda: k.pane().text().splitlines()[1] == typed, typed)
    for how, code in ((signal.SIGKILL, -9), (signal.SIGTERM, 0), ("display", 1)):
        view = k.window("Edit Source: Small crate*")
        k.keys("ctrl+Home", "Down", "End", on=view)
        k.type("lost")
        typed += "lost"
        shows_it()
        if how == signal.SIGKILL:
            wait(lambda: kept(k, typed.encode()), "a draft")
        assert end_by(k, how) == code, how
        assert how == signal.SIGKILL or k.read(k.folder, "info.his").decode() == k.file + "\r\n"
        k.start(k.file, ready=False)
        k.answer("Changes that were not saved are kept from an earlier run: Edit Source: Small"
                 " crate *", "Open", "Question")
        shows_it()
    view = k.window("Edit Source: Small crate [*]")
    in_place(k, view)
    assert k.read(k.file).count(f"n:crate_small]\r\n{typed}\r\n".encode()) == 1
    assert not drafts(k), drafts(k)
    k.close(view)


@needs(windows=True, opened=False)
def try_logging_out_keeps_a_draft(k):
    if not k.on_windows:
        k.desk.env["SESSION_MANAGER"] = k.other("session")
    k.open()
    k.click("Source")
    k.keys("ctrl+Home", "Down", "End", on=k.window("Edit Source: Base prop"))
    k.type("lost")
    wait(lambda: kept(k, b"{lost\r\n"), "a draft")
    k.type("more")
    time.sleep(0.5)
    assert end_by(k, "session") == 0
    assert kept(k, b"{lostmore\r\n")
    k.start(ready=False)
    k.answer("Changes that were not saved*", "Open", "Question")
    k.discard(k.window("Edit Source: Base prop [*]"))
    # Two windows that go at once take the keyboard from Wine's.
    k.window("Kestrel Template Browser (*")
    k.click("Templates")
    k.finish()
    assert not drafts(k), drafts(k)


def try_a_draft_waits_for_its_user(k):
    view = k.press("Source", "Edit Source: Base prop")
    k.type("x")
    wait(lambda: kept(k, b""), "a draft")
    assert all(os.stat(name).st_mode & 0o777 == 0o600 for name in drafts(k))
    k.keys("ctrl+z", on=view)
    wait(lambda: not drafts(k), "no draft of an unchanged text")
    k.type("y")
    wait(lambda: kept(k, b""), "a draft")
    end_by(k, signal.SIGKILL)
    for answer in ("Later", "Later", "Discard"):
        k.start(ready=False)
        k.answer("*" + k.file + "*", answer)
        k.finish()
    assert not drafts(k), drafts(k)
    k.start()


@needs(opened=False)
def try_whatever_is_open_ends_with_the_program(k):
    for key, *menu in (("", "Edit"), ("", "Edit", "Open..."), ("", "Tools", "Print"),
                       ("ctrl+s", "View", "Source")):
        k.open()
        k.menu(*menu)
        wait(lambda: len(menu) == 1 or not k.main.has("active"), "a dialog")
        if key:
            k.type("x")
            k.keys(key)
            k.window("Select Save As*")
        assert end_by(k, signal.SIGTERM) == 0, menu
    assert kept(k, b"x")
