"""Other programs, and the text that Kestrel writes for them."""

import os

from app import needs
from desk import wait


def tool(k, name, folder="tools"):
    """A program that writes down what it was started with; and where it writes."""
    return k.write(k.desk.path(folder, name), '#!/bin/sh\nprintf "<%s>" "$@" >"$0.said"\n', 0o755)


def said(k, path):
    """What it was started with, once."""
    words = wait(lambda: k.read(path + ".said").decode(), "the program to run")
    os.remove(path + ".said")
    return words


def try_tools_are_asked_for_once_and_repeated(k):
    program, button = tool(k, "Edit.EXE", "my tools"), "External Tools (Click to repeat last Tool)"
    k.click(button + ": choices")
    k.menu("Tool3")
    k.choose(program)
    assert said(k, program) == "<>"
    k.click(button)
    assert said(k, program) == "<>"
    k.menu("Tools")
    assert [one for one in k.main.all() if one.role == "menu item" and one.name == "Edit"]
    k.menu("Reset Tools")
    k.answer("Reset ALL User Tool Settings?", "Yes", "Question")
    k.menu("Tools")
    k.find_item("Tool3")
    k.keys("Escape")
    wait(lambda: k.main.has("active"), "a closed menu")


@needs(opened=False)
def try_the_script_editor_gets_the_file_or_the_text(k):
    program = tool(k, "skritpad")
    k.open(skritpad=program)
    k.click("Open .GAS file in SkritPad")
    assert said(k, program) == f"<{k.file}>"
    k.select("Templates", "Small crate")
    view = k.press("Source", "Edit Source: Small crate")
    text = k.pane().text()
    k.type("x")
    k.keys("ctrl+e")
    k.answer("Source has been changed. ScritPad will open with the original file loaded.", "OK",
             "Question")
    assert k.read(said(k, program)[1:-1]).decode("cp1252") == "x" + text
    k.discard(view)


@needs(opened=False)
def try_another_is_offered_for_a_program_that_is_not_there(k):
    program = tool(k, "browser")
    k.open(orvane="/nowhere/orvane")
    k.menu("Tools", "Full Orvane")
    k.answer("Cannot start '/nowhere/orvane': *Do you wish to choose another program?", "Yes",
             "Question")
    k.choose(program)
    assert said(k, program) == "<>"
    k.finish()
    assert f"orvane={program}\r\n".encode() in k.read(k.folder, "settings.set")


def try_what_was_copied_stays(k):
    """It can be repeated, and outlives the program where something takes it over."""
    k.other("keep")
    repeat = "Repeat Copy  (to clipboard)"
    listed, row = "#\tTemplate\n", "Property\tValue\tGroup"
    for copy, text in (
            (lambda: k.click(repeat), row),
            (lambda: (k.click(repeat + ": choices"), k.menu("Copy Template List")), listed),
            (lambda: k.menu("Edit", "Copy Row"), "name\tbase_prop\t"),
            (lambda: (k.click("Templates"), k.keys("ctrl+a")), listed),
            (lambda: k.menu("Edit", "Copy Property List"), row)):
        copy()
        wait(lambda: text in k.clipboard(), text)
    k.finish()
    wait(lambda: row in k.clipboard(), "it still there")


def try_views_of_a_template_cannot_be_edited(k):
    k.select("Templates", "Small crate")
    for button, title, start in (
            ("Parsed", "View Parsed Text: Small crate", "DS Template for: Small crate"),
            ("As Listed", "View Listed Text: Small crate", "[t:template,n:crate_small]"),
            ("View Template (Tab Delimited)", "View All Templates", "Filename: ")):
        view = k.press(button, title)
        pane = k.pane()
        text = pane.text()
        assert text.startswith(start) and not pane.has("editable"), text[:80]
        k.keys("ctrl+a", "ctrl+c", "ctrl+x", "ctrl+v", "Delete", "BackSpace", "Return", "x")
        wait(lambda: k.clipboard() == text.replace("\r\n", "\n"), "the text")
        assert pane.text() == text and view.name == title
        k.keys("Tab")
        wait(lambda: k.focus().role == "push button", "the next control")
        k.close(view)
