"""The dialogs over paths, and the boxes in front of all windows."""

import difflib
import os
import re
import shutil
import time

from app import needs
from desk import wait

EXISTS = "Target file already exists, do you wish to overwrite the existing file?"
# What opens each, its first box, the picker for that with its filter, and the list of its paths.
DIALOGS = {
    "Mini-Orvane": (("Tools", "Mini-Orvane"), "Selected Tank Filename",
                    "Select a TANK File to view", "Tank Files([*].ds[*])", "mor.his"),
    "Rapid Zeltor": (("Tools", "Zeltor"), "Source Folder",
                     "Select the Source Folder of your New Tank file*", None, "zeltor1.his"),
    "Convert Multiple .gas to TAB Delimited": (
        ("Edit", "Convert Multiple Files..."), "Source Folder",
        "Select the Source Folder that contains your .gas files to be converted*", None,
        "cnv1.his")}


def open_dialog(k, title):
    wait(lambda: k.main.has("active"), "the main window")
    return k.open_by(title, *DIALOGS[title][0])


def hold_escape(k, window):
    """Until its repeats have come, and on."""
    wait(lambda: window.has("active"), window.name)
    k.desk.input("keydown", "Escape", "sleep", 1.2, "keyup", "Escape")


@needs(windows=True)
def try_a_held_escape_closes_one_window(k):
    """And the boxes that it closes show their icons."""
    for title in DIALOGS:
        dialog = open_dialog(k, title)
        hold_escape(k, dialog)
        k.gone(dialog)
        assert k.process.poll() is None, "the program ended, too"
    k.menu("Tools", "Print")
    wait(lambda: k.box() in (("Not implemented at this time.", icon) for icon in
                             ("Information", "an icon")), "the box")
    hold_escape(k, k.active())
    wait(lambda: k.main.has("active"), "the main window")
    view = k.press("Source", "Edit Source*")
    k.keys("ctrl+f")
    hold_escape(k, k.window("Find Text"))
    # The key in between takes it back.
    k.desk.input("keydown", "Escape", "key", "Down", "keyup", "Escape", "sleep", 0.5)
    assert view.has("active"), "the viewer closed, too"
    k.keys("Menu", on=view)
    k.keys("Escape")
    wait(lambda: view.has("active"), "the viewer")
    k.close(view)
    k.menu("Tools", "Reset Tools")
    k.answer("Reset ALL User Tool Settings?", "No", "Question")
    k.load("/nowhere.gas")
    k.answer("File loading error: *", "OK", "Warning")


@needs(opened=False)
def try_links_are_there_with_an_address(k):
    """Without one docs/windows.txt has none."""
    k.open(env={"KESTREL_WEBSITE": "https://kestrel.example/"})
    for title, link, *menu in (
            ("Mini-Orvane", "Click for more info on Orvane...", "Tools", "Mini-Orvane"),
            ("Rapid Zeltor", "Click for more info on Zeltor...", "Tools", "Zeltor"),
            ("About Kestrel", "https://kestrel.example/", "Help", "About Kestrel")):
        window = k.open_by(title, *menu)
        k.find(link)
        k.close(window)


def try_paths_are_dropped_picked_and_remembered(k):
    """On every pane, and in each dialog, which is minimised and comes back with its window."""
    mod = os.path.dirname(k.file)
    panes = {pane: k.sample(name) for pane, name in
             (("Templates", "tides.gas"), ("Blocks", "party.gas"), ("Properties", "info.gas"))}
    k.other("offer", *("file://" + path for path in (*panes.values(), k.file, k.file)))
    files = wait(lambda: k.desk.run("xdotool", "search", "--name", "^Files$").split(), "files")[0]
    main = k.desk.run("xdotool", "search", "--name", "^Kestrel Template").split()[0]
    k.desk.input("windowmove", "--sync", files, 1000, 100, "windowactivate", "--sync", main)
    left, top = k.desk.geometries("^Files$")[0][:2]

    def drop(control, window):
        k.drag((left + 50, top + 50), control.middle(), pause=0.1)
        k.desk.input("windowactivate", "--sync", window)
    for pane, path in panes.items():
        drop(k.main.find(pane)[0], main)
        wait(lambda: k.find("Path of the .gas file", "text").text() == path, "the dropped file")
    for title, (_, name, picker, shown, history) in DIALOGS.items():
        dialog = open_dialog(k, title)
        window = k.desk.run("xdotool", "getactivewindow").strip()
        box, first = k.find(name, "text"), k.file if shown else mod
        if title == "Rapid Zeltor":
            k.fill(name, first)
        else:
            drop(box, window)
        wait(lambda: box.text() == first, "the first")
        chooser = k.press("Choose the " + name.removeprefix("Selected "), picker)
        assert not shown or k.find(shown, "combo box", chooser)
        chosen = k.sample("tides.gas") if shown else k.folder
        k.choose(chosen)
        wait(lambda: box.text() == chosen, "the chosen one")
        k.desk.input("windowminimize", window)
        wait(lambda: k.desk.run("xdotool", "getactivewindow").strip() != window, "it to go")
        k.desk.input("windowactivate", main)
        k.close(dialog)
        told = [chosen] + [first] * (title != "Rapid Zeltor")
        assert k.read(k.folder, history).decode().split() == told
        dialog = open_dialog(k, title)
        k.keys(*["Down"] * len(told))
        wait(lambda: k.find(name, "text").text() == told[-1], "the last of the list")
        k.close(dialog)


def convert(k, folder):
    """Begins to convert a folder; the dialog."""
    dialog = open_dialog(k, "Convert Multiple .gas to TAB Delimited")
    k.fill("Source Folder", folder + "\n")
    return dialog


def try_a_folder_is_converted(k):
    folder = shutil.copytree(os.path.join(k.top, "samples/folder"), k.desk.path("in")) + "/"
    dialog = convert(k, "/nowhere")
    k.answer("Source Folder not found. Please enter a valid Source Folder name and try again.",
             "OK", "Warning")
    k.fill("Source Folder", folder + "\n")
    k.answer("File conversion complete. Files processed: 6 Files converted: 5 Output folder: "
             + folder + " Not converted: ledger.gas: it holds no .gas data", "OK", "Information")
    golden = os.listdir(os.path.join(k.top, "tests/golden/folder"))
    assert {*golden} == {name for name in os.listdir(folder) if name.endswith(".tab")}
    k.click("Single output file?")
    for name, text in (("Title", " T "), ("Copyright", "me"),
                       ("Destination Filename", folder + "all.tab")):
        k.fill(name, text)
    k.click("Convert")
    k.answer(f"File conversion complete. *Output filename: {folder}all.tab Not converted: *", "OK")
    assert k.read(folder, "all.tab").startswith(
        b"Title:  T \r\nAuthor: \r\nBuild: \r\nCopyright: me\r\nFiles processed: 6\r\n")
    k.click("Convert")
    k.answer(EXISTS, "No", "Question")
    k.fill("Source Folder", k.folder)
    k.click("Convert")
    k.answer(EXISTS, "Yes")
    k.answer('File conversion failed! Please verify source folder contents, all other settings and'
             ' then try again. See ""About"" for reporting issues', "OK", "Information")
    k.close(dialog)


def try_a_conversion_gathers_failures_and_is_cancelled(k):
    folder, count = k.desk.path("many", ""), 8
    for number in range(count):  # one property each: no percentage is odd
        k.write(f"{folder}{number}.gas", "[t:template,n:a]\n{\nx = 1;\n}\n" * 40000)
        if number % 2:
            os.mkdir(f"{folder}{number}.tab")
    dialog = convert(k, folder)
    for cancel in ("Cancel", "Escape", "alt+F4"):
        k.answer(f"Error (75): Cannot write '{folder}*.tab': Is a directory in 'gblnConvertFolder'",
                 "OK", "Warning")
        progress = k.window("Please wait...")
        assert not dialog.has("sensitive")
        wait(lambda: progress.find(f"File [3-7] of {count}"), "the files that are done")
        assert progress.find("Processing: Template[0-9]*")
        k.click(cancel) if cancel == "Cancel" else k.keys(cancel)
        wait(lambda: k.box()[0].startswith("File conv"), "its end")
        written = [one for one in os.listdir(folder) if os.path.isfile(folder + one)
                   and not one.endswith(".gas")]
        assert all(name.endswith(".tab") for name in written), written
        k.answer(f"File conversion cancelled. Files processed: {count} Files converted:"
                 f" {len(written)} Output folder: {folder} Not converted: *.gas: Cannot write"
                 " '*.tab': Is a directory*", "OK", "Information")
        k.focus_is("Source Folder" if cancel == "Cancel" else "Convert")
        for name in written:
            os.remove(folder + name)
        if cancel != "alt+F4":
            k.click("Convert")
    k.close(dialog)


ARCHIVE = ("tank\ndir|name=art|path=\\\n"
           ".file|name=A.GAS|path=\\art|size=5|comp=4|crc=-5|format=1|data=ab\\0c\n")


def open_archive(k, path):
    dialog = k.press("Repeat Orvane", "Mini-Orvane")
    k.fill("Selected Tank Filename", path)
    return dialog


def try_an_archive_is_listed_searched_and_tested(k):
    """By a library that is looked for when it is needed."""
    library, away = os.path.join(k.folder, "libtank.so"), k.desk.path("libtank.so")
    os.rename(library, away)
    archive = k.write(k.desk.path("mod", "a.dsres"), ARCHIVE)
    dialog = open_archive(k, archive)
    k.click("Test Tank")
    k.answer(f"Error (53): *{k.folder}*'gOpenTank'", "OK", "Warning")
    k.answer("Tank test failed!", "OK", "Warning")
    k.close(dialog)
    os.rename(away, library)
    dialog = open_archive(k, archive)
    k.click("Test Tank")
    k.answer("Tank test passed.", "OK", "Information")
    question = ("Which list do you want? Select Yes for a 'Name List', No for a 'Full List', or"
                " Cancel to exit.")
    for button, lines in (("Yes", 12), ("No", 22), ("Cancel", 0)):
        k.click("Generate a list (Name or Full)")
        k.answer(question, button, "Question")
        if lines:
            view = k.window("Tank List: " + archive)
            text = k.pane().text()
            assert text.startswith(f"Filename: {archive}\r\nTime: "), text
            assert text.count("\r\n") == lines and not k.pane().has("editable"), text
            k.close(view)
    k.click("Find Object by Name")
    k.reply("Find Child", "nothing\n")
    k.answer("Search name not found!", "OK", "Warning")
    k.click("Find Object by Name")
    k.reply("Find Child", "a.g\n")
    view = k.window("Tank List: " + archive)
    assert "Name: \tA.GAS\r\nPath: \t\\Root\\art" in k.pane().text()
    k.close(view)
    box = k.press("Find Object by Name", "Find Child")
    assert k.focus().text() == "a.g", "what was found last"
    assert k.box()[0].endswith(": Note: This sub-string search is not case sensitive and does not "
                               "support regular expressions or wildcards. Only the first find will "
                               "be returned.")
    k.close(box)
    # A library that never answers, or ends, takes nothing along.
    k.write(archive, "tank|harm=GetChildName|by=hang\n" + ARCHIVE.split("\n", 1)[1])
    k.press("Test Tank", "Please wait...")
    start = time.monotonic()
    k.click("Cancel")
    k.answer("Tank test failed!", "OK", "Warning")
    assert time.monotonic() - start < 3, "ended at once"
    k.write(archive, "tank|harm=GetChildName|by=crash\n" + ARCHIVE.split("\n", 1)[1])
    k.click("Test Tank")
    k.answer("Error (57): The archive library stopped working while listing a folder of *(signal 11)*",
             "OK", "Warning")
    k.answer("Tank test failed!", "OK", "Warning")
    k.fill("Selected Tank Filename", "/nowhere.dsres\n")
    k.answer(question, "Yes")
    k.answer("Tank list failed!", "OK", "Warning")
    k.close(dialog)


def try_files_are_got_out_of_an_archive(k):
    boats = '[t:template,n:boats];specializes="x";'
    archive = k.write(k.desk.path("mod", "a.dsres"), "tank\n"
                      f"dir|name=art\n.file|name=boats.gas|size={len(boats)}|comp=13|data={boats}\n"
                      ".file|name=sail.raw|size=3|data=a\\0b\n"
                      "dir|name=..\n.file|name=../../sails.txt|size=5|data=sails\n")
    open_archive(k, "/nowhere.dsres")
    k.click("Browse...")
    k.answer("The archive library cannot open '/nowhere.dsres'", "OK", "Warning")
    k.fill("Selected Tank Filename", archive)
    window = k.press("Browse...", f"Archive: {archive}")
    assert k.status() == ["Shown: 2 folders, 0 files, 0 bytes",
                          "Archive: 2 folders, 3 files, 45 bytes, 13 packed (29 %)"], k.status()

    def listed(names):
        wait(lambda: [row[0] for row in k.find("Files").rows()] == names, f"the rows {names}")

    # Down a folder and up again, by the keyboard.
    k.keys("Home")
    k.selected_is("Files", "art")
    k.keys("Return")
    listed(["boats.gas", "sail.raw"])
    k.keys("BackSpace")
    listed(["art", ".."])
    # All of it that holds a text, wherever it stands.
    k.walk(("alt+i", "Filter"))
    k.type("SA")
    listed(["sail.raw", "../../sails.txt"])
    k.select("Files", "sail.raw")
    k.walk(("alt+i", "Filter"))
    k.keys("End")
    k.type("IL")
    k.selected_is("Files", "sail.raw")
    k.click("View")
    k.answer("'sail.raw' holds no text. Extract it to open it with another program.", "OK",
             "Information")
    k.keys("ctrl+f")
    k.reply("Find All", "nothing\n")
    k.answer("Substring not found: nothing", "OK", "Warning")
    k.keys("ctrl+f")
    k.reply("Find All", "boat\n")
    k.selected_is("Files", "boats.gas")
    # Nothing is written outside the folder, and nothing that is there gets lost.
    out = k.desk.path("out")
    k.write(os.path.join(out, "art", "boats.gas"), "mine")
    dialog = k.press("Extract...", "Extract Files")
    k.fill("Target Folder", out)
    k.click("Extract")
    k.answer("1 of the files is already in*", "No", "Question")
    k.answer("0 files (0 bytes) written*1 file that was there was left alone.", "OK")
    k.walk(("alt+t", "Target Folder"),
           ("alt+w", "The whole archive (2 folders, 3 files, 45 bytes, 13 packed (29 %))"))
    k.click("Extract")
    k.answer("1 of the files is already in*", "Yes", "Question")
    told = k.window("Extracted Files")
    assert "renamed: .. is now __\r\n" in k.pane().text() and not k.pane().has("editable")
    k.close(told)
    k.close(dialog)
    assert sorted(os.listdir(out)) == ["__", "art"] and os.listdir(out + "/__") == [".._.._sails.txt"]
    assert k.read(out, "art/boats.gas") == boats.encode()
    assert k.read(out, "art/boats.gas.bak") == b"mine"
    # A copy of a file is opened in the main window, and in no history.
    k.click(k.find("Files").select("boats.gas"), times=2)
    k.window("art\\boats.gas")
    assert k.pane().text() == boats
    k.click("Open in Main Window")
    k.window("Kestrel Template Browser (*")
    k.loaded(1)
    assert k.find("Path of the .gas file", "text").text().endswith("-boats.gas")
    k.gone(window)
    k.close(k.open_by("Specializes Browser", "View", "Specializes Chain"))
    k.finish()
    assert k.read(k.folder, "spec.his").decode() == archive, "its parents are looked for there"
    assert k.read(k.folder, "info.his").decode().strip() == k.file, "the copy is in no history"


def try_every_window_reads_as_written(k):
    """docs/windows.txt: all windows as assistive programs tell them. KESTREL_WRITE=1 writes it."""
    told = [*k.main.tree(), ""]
    for title, *menu in (
            ("Search Properties", "Edit", "Find Property Name..."),
            ("Edit Source: *", "View", "Source"),
            ("Properties of*", "View", ".GAS File Properties"),
            ("Kestrel Template Browser", "Tools", "Reset Tools"),
            ("About Kestrel", "Help", "About Kestrel"),
            *((title, *row[0]) for title, row in DIALOGS.items()),
            ("Specializes Browser", "View", "Specializes Chain")):
        if title == "Specializes Browser":
            k.select("Templates", "Large crate")
        window = k.open_by(title, *menu)
        wait(lambda: any(one.has("focused") for one in window.all()), "a focus")
        told += [*window.tree(), ""]
        k.close(window)
    dialog = open_archive(k, k.write(k.desk.path("mod", "a.dsres"), ARCHIVE))
    archive = k.press("Browse...", "Archive: *")
    told += [*archive.tree(), ""]
    window = k.press("Extract...", "Extract Files")
    told += [*window.tree(), ""]
    for one in (window, archive, dialog):
        k.close(one)
    text = "\n".join(told).replace(k.desk.folder, "~")
    text = re.sub(r'(?m)^( *)label "(Linux|GCC|3\.|libstdc).*',
                  r'\1label "(of this machine)"', text)
    text = re.sub(r"'\d{4}-\d\d-\d\d \d\d:\d\d:\d\d'", "(a time)", text)
    path = os.path.join(k.top, "docs/windows.txt")
    if os.environ.get("KESTREL_WRITE"):
        k.write(path, text)
    expected = k.read(path).decode()
    assert text == expected, "\n".join(difflib.unified_diff(expected.split("\n"), text.split("\n")))
