"""Other programs, and the text that Kestrel writes for them."""

import os
import stat

from browse_trials import select
from desk import wait
from start_trials import other


def tool(k, name, folder="tools"):
    """A program that writes down what it was started with; and where it writes."""
    path = k.desk.path(folder, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as script:
        script.write('#!/bin/sh\nprintf "<%s>" "$@" >"$0.said"\n')
    os.chmod(path, os.stat(path).st_mode | stat.S_IXUSR)
    return path


def said(path):
    return wait(lambda: os.path.exists(path + ".said") and open(path + ".said", encoding="utf-8").read(),
                "the program to run")


def try_tools_are_asked_for_once_and_repeated(k):
    k.open()
    program = tool(k, "Edit.EXE", "my tools")
    k.click("External Tools (Click to repeat last Tool): choices")
    k.menu("Tool3")
    k.choose(program)
    assert said(program) == "<>"
    os.remove(program + ".said")
    k.click("External Tools (Click to repeat last Tool)")
    said(program)
    k.menu("Tools")
    assert [one for one in k.main.all() if one.role == "menu item" and one.name == "Edit"]
    k.menu("Reset Tools")
    k.answer("Reset ALL User Tool Settings?", "No", "Question")
    k.quit()
    assert f"tool3=Edit|{program}\r\n".encode() in k.read(k.folder, "settings.set")
    k.start(k.file)
    k.menu("Tools", "Reset Tools")
    k.answer("Reset ALL User Tool Settings?", "Yes", "Question")
    k.menu("Tools")
    k.find_item("Tool3")
    k.keys("Escape")
    wait(lambda: k.main.has("active"), "a closed menu")
    k.quit()


def try_the_script_editor_gets_the_file_or_the_text(k):
    program = tool(k, "skritpad")
    k.settings(skritpad=program)
    k.open()
    k.click("Open .GAS file in SkritPad")
    assert said(program) == f"<{k.file}>"
    os.remove(program + ".said")
    select(k, "Templates", "Small crate")
    k.click("Source")
    view = k.window("Edit Source: Small crate")
    text = k.find("Text", "text").text()
    k.type("x")
    k.keys("ctrl+e")
    k.answer("Source has been changed. ScritPad will open with the original file loaded.", "OK",
             "Question")
    copy = said(program)[1:-1]
    assert os.path.basename(copy).startswith("gsv")
    assert k.read(copy).decode("cp1252").replace("\r\n", "\n") == "x" + text.replace("\r\n", "\n")
    k.keys("Escape", on=view)
    k.answer("Source has been changed. Exit anyway and discard changes?", "Yes", "Question")
    k.quit()


def try_another_is_offered_for_a_program_that_is_not_there(k):
    k.settings(orvane="/nowhere/orvane")
    program = tool(k, "browser")
    k.open()
    k.menu("Tools", "Full Orvane")
    k.answer("Cannot start '/nowhere/orvane': *Do you wish to choose another program?", "Yes", "Question")
    k.choose(program)
    assert said(program) == "<>"
    k.quit()
    assert f"orvane={program}\r\n".encode() in k.read(k.folder, "settings.set")


def try_what_was_copied_stays(k):
    other(k, "keep")
    k.open()
    k.click("Repeat Copy  (to clipboard)")
    wait(lambda: "Property\tValue\tGroup" in k.clipboard(), "the properties")
    k.quit()
    wait(lambda: "Property\tValue\tGroup" in k.clipboard(), "them still there")


def try_copies_are_repeated(k):
    k.open()
    k.click("Repeat Copy  (to clipboard)")
    wait(lambda: "Property\tValue\tGroup" in k.clipboard(), "the properties")
    k.click("Repeat Copy  (to clipboard): choices")
    k.menu("Copy Template List")
    wait(lambda: "#\tTemplate\n" in k.clipboard(), "the templates")
    k.click("Templates")
    k.keys("ctrl+a")
    wait(lambda: k.clipboard().count("\n") > 40, "the templates again")
    k.menu("Edit", "Copy Property List")
    wait(lambda: "Property\tValue\tGroup" in k.clipboard(), "the properties again")
    k.quit()


def try_views_of_a_template(k):
    k.open()
    select(k, "Templates", "Small crate")
    for button, title, start in (("Parsed", "View Parsed Text: Small crate", "DS Template for: Small crate"),
                                 ("As Listed", "View Listed Text: Small crate", "[t:template,n:crate_small]"),
                                 ("View Template (Tab Delimited)", "View All Templates", "Filename: ")):
        k.click(button)
        view = k.window(title)
        pane = k.find("Text", "text")
        assert pane.text().startswith(start) and not pane.has("editable"), pane.text()[:80]
        k.keys("Escape", on=view)
        k.gone(view)
    k.quit()
