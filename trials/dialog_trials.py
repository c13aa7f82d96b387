"""The dialogs over paths, and the boxes in front of all windows."""

import difflib
import fnmatch
import os
import re
import shutil

from app import needs
from desk import wait

DIALOGS = {"Mini-Orvane": ("Tools", "Mini-Orvane"), "Rapid Zeltor": ("Tools", "Zeltor"),
           "Convert Multiple .gas to TAB Delimited": ("Edit", "Convert Multiple Files...")}


def start(k):
    shutil.copy(k.stub(k.tank), k.folder)
    k.settings(zeltor=k.stub("builder/kestrel_stub_builder"))
    return k.open()


def hold_escape(k, window):
    """Until its repeats have come, and on."""
    wait(lambda: window.has("active"), window.name)
    k.desk.input("keydown", "Escape", "sleep", 1.2, "keyup", "Escape")


@needs(windows=True)
def try_a_held_escape_closes_one_window(k):
    start(k)
    for title, entry in DIALOGS.items():
        k.menu(*entry)
        dialog = k.window(title)
        hold_escape(k, dialog)
        k.gone(dialog)
        assert k.process.poll() is None, "the program ended, too"
    k.menu("Tools", "Print")
    wait(lambda: k.box()[0] == "Not implemented at this time.", "the box")
    hold_escape(k, k.active())
    wait(lambda: k.main.has("active"), "the main window")
    k.click("Source")
    view = k.window("Edit Source*")
    k.keys("ctrl+f")
    find = k.window("Find Text")
    hold_escape(k, find)
    assert view.has("active"), "the viewer closed, too"
    k.keys("Menu", on=view)
    k.keys("Escape")
    wait(lambda: view.has("active"), "the viewer")
    k.keys("Escape")
    k.gone(view)
    k.quit()


@needs(windows=True)
def try_boxes_show_their_icons(k):
    start(k)
    k.menu("Tools", "Print")
    k.answer("Not implemented at this time.", "OK", "Information")
    k.menu("Tools", "Reset Tools")
    k.answer("Reset ALL User Tool Settings?", "No", "Question")
    k.click("Path of the .gas file", at=(60, 10))
    k.keys("ctrl+a")
    k.type("/nowhere.gas\n")
    k.answer("File loading error: *", "OK", "Warning")
    k.quit()


def links(k):
    found = []
    for entry, title in (("Mini-Orvane", "Mini-Orvane"), ("Zeltor", "Rapid Zeltor")):
        k.menu("Tools", entry)
        dialog = k.window(title)
        found.append([one.name for one in dialog.all() if one.name.startswith("Click for")])
        k.keys("Escape", on=dialog)
        k.gone(dialog)
    k.menu("Help", "About Kestrel")
    about = k.window("About Kestrel")
    found.append([one.name for one in about.all() if "http" in one.name or "No web page" in one.name])
    k.keys("Escape", on=about)
    k.gone(about)
    return found


def try_links_are_there_with_an_address_alone(k):
    start(k)
    assert links(k) == [[], [], []]
    k.quit()
    k.start(env={"KESTREL_WEBSITE": "https://kestrel.example/"})
    assert links(k) == [["Click for more info on Orvane..."], ["Click for more info on Zeltor..."],
                        ["https://kestrel.example/"]]
    k.quit()


def try_a_minimised_dialog_comes_back_with_its_window(k):
    start(k)
    for title, entry in DIALOGS.items():
        k.menu(*entry)
        dialog = k.window(title)
        window = k.desk.run("xdotool", "getactivewindow").strip()
        k.desk.input("windowminimize", window)
        main = k.desk.run("xdotool", "search", "--name", "^Kestrel Template").split()[0]
        wait(lambda: not k.desk.run("xdotool", "getactivewindow").strip() == window, "it to go")
        k.desk.input("windowactivate", main)
        wait(lambda: dialog.has("active"), title)
        k.keys("Escape")
        k.gone(dialog)
    k.quit()




def fill(k, name, text):
    k.click(k.find(name, "text"), at=(20, 8))
    k.keys("ctrl+a")
    k.type(text)


def without_times(text):
    return re.sub(rb"(?m)^(Time|Date):.*?\r\n", b"", text)


def golden(k, name, path):
    """What the tests expect of a sample's text, as of a file at the path."""
    text = k.read(k.top, "tests/golden/folder", name)
    return without_times(text).replace(b"C:\\mods\\" + name[:-4].encode(), path[:-4].encode())


def try_a_folder_is_converted(k):
    start(k)
    folder = os.path.join(shutil.copytree(os.path.join(k.top, "samples/folder"), k.desk.path("in")), "")
    k.menu("Edit", "Convert Multiple Files...")
    dialog = k.window("Convert*")
    fill(k, "Source Folder", "/nowhere\n")
    k.answer("Source Folder not found. Please enter a valid Source Folder name and try again.", "OK",
             "Warning")
    fill(k, "Source Folder", folder + "\n")
    k.answer("File conversion complete. Files processed: 6 Files converted: 5 Output folder: " + folder
             + " Not converted: ledger.gas: it holds no .gas data", "OK", "Information")
    for name in os.listdir(os.path.join(k.top, "tests/golden/folder")):
        assert without_times(k.read(folder, name)) == golden(k, name, folder + name), name
    k.click("Single output file?")
    for name, text in (("Title", " T "), ("Copyright", "me"), ("Destination Filename", folder + "all.tab")):
        fill(k, name, text)
    k.click("Convert")
    k.answer("File conversion complete. *Output filename: " + folder + "all.tab Not converted: *", "OK")
    assert k.read(folder, "all.tab").startswith(
        b"Title:  T \r\nAuthor: \r\nBuild: \r\nCopyright: me\r\nFiles processed: 6\r\n")
    k.click("Convert")
    k.answer("Target file already exists, do you wish to overwrite the existing file?", "No", "Question")
    fill(k, "Source Folder", k.folder)
    k.click("Convert")
    k.answer("Target file already exists, *", "Yes")
    k.answer('File conversion failed! Please verify source folder contents, all other settings and then'
             ' try again. See ""About"" for reporting issues', "OK", "Information")
    k.keys("Escape", on=dialog)
    k.gone(dialog)
    k.quit()


def try_a_conversion_gathers_failures_and_is_cancelled(k):
    start(k)
    folder, sources = k.desk.path("many", ""), 8
    os.mkdir(folder)
    for number in range(sources):  # one property each: no percentage is odd
        with open(f"{folder}{number}.gas", "w", encoding="ascii") as file:
            file.write("[t:template,n:a]\n{\nx = 1;\n}\n" * 40000)
        if number % 2:
            os.mkdir(f"{folder}{number}.tab")
    k.menu("Edit", "Convert Multiple Files...")
    dialog = k.window("Convert*")
    fill(k, "Source Folder", folder + "\n")
    k.answer(f"Error (75): Cannot write '{folder}*.tab': Is a directory in 'gblnConvertFolder'", "OK", "Warning")
    progress = k.window("Please wait...")
    wait(lambda: any(fnmatch.fnmatch(one.name, f"File [3-7] of {sources}") for one in
                     progress.find(role="label")), "the files that are done")
    k.click("Cancel")
    text = wait(lambda: next((said for said in [k.box()[0]] if said.startswith("File conv")), None), "its end")
    assert fnmatch.fnmatch(text, f"File conversion cancelled. Files processed: {sources} Files converted: *"
                           f" Output folder: {folder} Not converted: *.gas: Cannot write '*.tab': Is a directory*"), text
    written = [name for name in os.listdir(folder) if os.path.isfile(folder + name) and name.endswith(".tab")]
    assert f"converted: {len(written)} " in text and len(os.listdir(folder)) == sources * 3 // 2 + len(written), text
    k.answer(text, "OK", "Information")
    k.keys("Escape", on=dialog)
    k.gone(dialog)
    k.quit()


ARCHIVE = "tank\ndir|name=art|path=\\\n.file|name=A.GAS|path=\\art|size=5|comp=4|crc=-5|format=1|data=ab\\0c\n"


def try_an_archive_is_listed_searched_and_tested(k):
    start(k)
    archive = k.desk.path("mod", "a.dsres")
    with open(archive, "w", encoding="ascii") as file:
        file.write(ARCHIVE)
    k.click("Repeat Orvane")
    dialog = k.window("Mini-Orvane")
    assert not k.find("Test Tank").has("sensitive")
    k.click("Choose the Tank Filename")
    k.choose(archive)
    k.click("Test Tank")
    k.answer("Tank test passed.", "OK", "Information")
    question = ("Which list do you want? Select Yes for a 'Name List', No for a 'Full List', or Cancel"
                " to exit.")
    for button, lines in (("Yes", 12), ("No", 22)):
        k.click("Generate a list (Name or Full)")
        k.answer(question, button, "Question")
        view = k.window("Tank List: " + archive)
        text = k.find("Text", "text")
        assert text.text().startswith(f"Filename: {archive}\r\nTime: ") and not text.has("editable")
        assert text.text().count("\r\n") == lines, text.text()
        k.keys("Escape", on=view)
        k.gone(view)
    k.click("Generate a list (Name or Full)")
    k.answer(question, "Cancel")
    for words, found in (("nothing", False), ("a.g", True)):
        k.click("Find Object by Name")
        k.window("Find Child")
        assert k.focus().text() == ""
        k.type(words + "\n")
        if not found:
            k.answer("Search name not found!", "OK", "Warning")
    view = k.window("Tank List: " + archive)
    assert "Name: \tA.GAS\r\nPath: \t\\Root\\art" in k.find("Text", "text").text()
    k.keys("Escape", on=view)
    k.gone(view)
    k.click("Find Object by Name")
    k.window("Find Child")
    assert k.focus().text() == "a.g"
    k.keys("Escape")
    fill(k, "Selected Tank Filename", "/nowhere.dsres\n")
    k.answer(question, "Yes")
    k.answer("Tank list failed!", "OK", "Warning")
    k.keys("Escape", on=dialog)
    k.gone(dialog)
    k.quit()
    assert k.read(k.folder, "mor.his").decode() == archive + "\r\n"


def try_without_the_archive_library_the_error_tells_where_it_was_looked_for(k):
    k.open()
    k.click("Repeat Orvane")
    dialog = k.window("Mini-Orvane")
    fill(k, "Selected Tank Filename", k.file)
    k.click("Test Tank")
    k.answer(f"Error (53): *{k.folder}*'gOpenTank'", "OK", "Warning")
    k.answer("Tank test failed!", "OK", "Warning")
    k.keys("Escape", on=dialog)
    k.gone(dialog)
    k.quit()


def try_the_builders_log_is_shown_as_it_comes(k):
    start(k)
    target = k.desk.path("mod", "my islands.dsres")
    k.menu("Tools", "Zeltor")
    dialog = k.window("Rapid Zeltor")
    assert not k.find("Create").has("sensitive")
    for name, text in (("Source Folder", k.desk.path("mod")), ("Destination Tank Filename", target),
                       ("Title", "words"), ("Author", "Me and You"), ("Priority", "1x2")):
        fill(k, name, text)
    k.click("Protected?")
    k.click("Create")
    view = k.window("View Log: " + target)
    log = k.find("Text", "text")
    wait(lambda: log.text().endswith("<words>\n"), "the builder's words")
    assert "<-author>\n<Me and You>\n" in log.text() and "<-flagprotected>\n" in log.text()
    assert "<-priority>\n<12>\n" in log.text() and not log.has("editable")
    k.keys("Escape", on=view)
    k.gone(view)
    fill(k, "Title", "wait")
    k.click("Create")
    view = k.window("View Log: " + target)
    wait(lambda: k.find("Text", "text").text() == "waiting\n", "the first output")
    k.keys("Escape", on=view)
    k.gone(view)
    k.click("Create")
    k.answer("Error (*): App is already running! in 'gExecZeltor'", "OK", "Warning")
    open(target + ".go", "w", encoding="ascii").close()
    k.keys("Escape", on=k.window("View Log: " + target))
    wait(lambda: os.path.exists(target + ".done"), "the builder's end, without its log")
    wait(lambda: dialog.has("active"), "the dialog")
    open(target, "w", encoding="ascii").close()
    k.click("Create")
    k.answer("Target file already exists, do you wish to overwrite the existing file?", "No", "Question")
    k.keys("Escape", on=dialog)
    k.gone(dialog)
    k.quit()


def try_every_window_reads_as_written(k):
    """docs/windows.txt: all windows as assistive programs tell them. KESTREL_WRITE=1 writes it."""
    start(k)
    told = []

    def tell(title, *keys):
        window = k.window(title)
        wait(lambda: any(one.has("focused") for one in window.all()), "a focus")
        told.extend([*window.tree(), ""])
        k.keys("Escape", on=window)
        k.gone(window)

    told.extend([*k.main.tree(), ""])
    opened = [(("Edit", "Find Property Name..."), "Search Properties"),
              (("View", "Source"), "Edit Source: *"), (("View", ".GAS File Properties"), "Properties of*"),
              (("Tools", "Reset Tools"), "Kestrel Template Browser"),
              (("Help", "About Kestrel"), "About Kestrel"), *((e, t) for t, e in DIALOGS.items())]
    for entry, title in opened:
        k.menu(*entry)
        tell(title)
    k.click(k.find("Templates").select("Large crate"))
    k.menu("View", "Specializes Chain")
    tell("Specializes Browser")
    k.quit()
    text = "\n".join(told).replace(k.desk.folder, "~")
    text = re.sub(r'(?m)^( *)label "(Linux|GCC|3\.|libstdc).*', r'\1label "(of this machine)"', text)
    text = re.sub(r"'\d{4}-\d\d-\d\d \d\d:\d\d:\d\d'", "(a time)", text)
    path = os.path.join(k.top, "docs/windows.txt")
    if os.environ.get("KESTREL_WRITE"):
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
    with open(path, encoding="utf-8") as file:
        expected = file.read()
    assert text == expected, "\n".join(difflib.unified_diff(expected.split("\n"), text.split("\n")))
