"""The main window."""

import os

from app import needs
from desk import wait


@needs(windows=True)
def try_opens(k):
    k.open()
    assert k.find("Templates").row_count() == 40
    assert k.status() == ["Template K0 is Base prop", "Template", "40 Templates", "14 Properties"]
    k.quit()


def try_buttons_stand_in_one_row(k):
    k.open()
    names = ("Use Tree as Filter", "View Specializes Chain", "As Listed", "Parsed", "Source")
    boxes = [k.find(name).box for name in names]
    middles = [y + height // 2 for _, y, _, height in boxes]
    assert max(middles) - min(middles) <= 2, boxes
    right = k.main.box[0] + k.main.box[2]
    assert all(x + width < right for x, _, width, _ in boxes), boxes
    rows = k.find("Properties")
    row = rows.cell(0).box[3]
    assert (rows.box[3] - 24) // row >= 9, "properties to be seen"


def try_right_click_in_a_source(k):
    """Away from the caret, many times: the pane paints there at once."""
    for _ in range(2):
        if k.process is None:
            k.open()
        k.click("Source")
        view = k.window("Edit Source: Base prop")
        text = k.find("Text", "text")
        for line in (3, 9, 14, 5):
            k.click(text.place(text.text().index("\n", line * 20)), button=3)
            k.find_item("Select All")
            k.keys("Escape")
        k.keys("Escape", on=view)
        k.gone(view)
    k.quit()


def hidden(k):
    return wait(lambda: k.main.name not in [one.name for one in k.windows()], "a hidden window")


def minimise(k):
    """The window's number."""
    window = k.desk.run("xdotool", "getactivewindow").strip()
    k.desk.input("windowminimize", window)
    return window


def come_back(k):
    k.main = k.window("Kestrel Template Browser (*")
    k.focus_is("Templates")
    k.keys("Down")
    wait(lambda: k.find("Templates").selected() == ["Base wooden prop"], "the next row")


def hides_and_comes_back(k, bring_back):
    k.open()
    minimise(k)
    hidden(k)
    bring_back()
    come_back(k)
    k.quit()


@needs(windows=True)
def try_icon_brings_the_window_back(k):
    hides_and_comes_back(k, lambda: k.click(k.icon(), times=2))


@needs(desk={"manager": "icewm", "tray": False})
def try_icon_brings_the_window_back_in_another_desktop(k):
    hides_and_comes_back(k, lambda: k.click(k.icon(), times=2))


def try_menu_of_the_icon_brings_the_window_back(k):
    def restore():
        k.click(k.icon(), button=3)
        k.menu("Restore")
    hides_and_comes_back(k, restore)


def try_end_of_the_notification_area_brings_the_window_back(k):
    hides_and_comes_back(k, k.desk.tray.kill)


@needs(desk={"tray": False})
def try_without_a_notification_area_the_window_is_minimised(k):
    k.open()
    window = minimise(k)
    wait(lambda: "Iconic" in k.desk.run("xprop", "-id", window, "WM_STATE"), "a minimised window")
    k.desk.input("windowactivate", window)
    come_back(k)
    k.quit()


@needs(windows=True)
def try_keys_work_after_saving(k):
    """Whatever was answered, and though the mouse chose the command."""
    k.open()
    for answer in ("cancel", "No"):
        if k.on_windows:
            k.menu("Edit", "Save Current Only...")
        else:
            k.click("Save Template (Tab Delimited): choices")
            k.menu("Current Only")
        k.window("Please specify a filename")
        if answer == "cancel":
            k.keys("Escape")
        else:
            k.keys("Return")
            k.answer("File saved successfully. Do you wish to edit the file?", "No", "Information")
        wait(lambda: k.main.has("active"), "the main window")
        k.keys("F3", "Down")
        wait(lambda: k.status()[0].startswith("Template K"), "a selected template")
        k.focus_is("Templates")
    k.quit()
    assert open(k.file[:-4] + ".tab", encoding="cp1252").read().count("\nDS Template for: ") == 40


def try_typing_after_opening_goes_to_the_list(k):
    second = k.sample("tides.gas")

    def typed():
        k.click("Path of the .gas file", at=(60, 10))
        k.keys("ctrl+a")
        k.type(second + "\n")

    def chosen():
        k.keys("ctrl+o", on=k.main)
        k.choose(second)

    def recent():
        k.click(k.find("Path of the .gas file", "combo box"), at=(-12, 10))
        k.click(k.find_item("*tides.gas"))

    k.open()
    for way in (typed, chosen, recent):
        way()
        wait(lambda: k.status()[2] != "40 Templates", "the other file")
        k.focus_is("Templates")
        k.keys("End")
        wait(lambda: k.find("Templates").selected()[0] != k.find("Templates").row(0)[0], "the end")
        k.menu("Edit", "Reload")
        k.click("Path of the .gas file", at=(60, 10))
        k.keys("ctrl+a")
        k.type(k.file + "\n")
        wait(lambda: k.status()[2] == "40 Templates", "the first file")
    k.quit()


@needs(windows=True)
def try_find_box_leaves_the_list_to_be_seen(k):
    k.open()
    k.keys("ctrl+f")
    box = k.window("Search Properties")
    x, y = box.box[0] - k.main.box[0], box.box[1] - k.main.box[1]
    assert -40 <= x <= 10 and -60 <= y <= 10, (x, y)
    k.type("model\n")
    wait(lambda: k.main.has("active"), "the main window")
    assert k.find("Properties").selected()[0] == "model"


def try_columns_and_panes_are_remembered(k):
    k.open()
    header = k.find("Properties").header(1).box
    k.drag((header[0] + 1, header[1] + 8), (header[0] + 31, header[1] + 8))
    widths = [k.find("Properties").header(i).box[2] for i in range(3)]
    k.desk.input("getactivewindow", "windowsize", 1200, 800)
    wait(lambda: k.main.box[2] > 1100, "a larger window")
    wait(lambda: k.find("Properties").header(2).box[2] > widths[2] + 150, "a wide column")
    rows = k.find("Properties")
    assert rows.box[2] - 4 <= sum(rows.header(i).box[2] for i in range(3)) <= rows.box[2]
    shared = [k.find(name).box[2] for name in ("Templates", "Blocks", "Properties")]
    assert shared[0] > 170 and shared[1] > 250, shared
    first, second = k.find("Properties").header(0).box[2], shared[1]
    x, y, width, height = k.find("Blocks").box
    k.drag((x + width + 4, y + 50), (x + width + 64, y + 50))
    wait(lambda: k.find("Blocks").box[2] >= second + 50, "a wider tree")
    k.quit()
    k.start(k.file)
    assert k.find("Properties").header(0).box[2] == first
    assert k.main.box[2] == 600, "as large as always"
    k.menu("View", "Remember Window")
    k.desk.input("getactivewindow", "windowsize", 900, 700)
    wait(lambda: k.main.box[2] > 850, "a larger window")
    k.quit()
    k.start(k.file)
    wait(lambda: k.main.box[2] > 850, "the size of before")
    k.quit()


def try_large_text_shows_as_much(k):
    k.open(env={"GDK_DPI_SCALE": "1.75"})
    for name, least in (("Templates", 8), ("Properties", 8)):
        rows = k.find(name)
        assert (rows.box[3] - 40) // rows.cell(0).box[3] >= least, name
    k.find("Source", "push button")
    k.quit()


def try_properties_sheet_stands_over_the_window(k):
    k.open()
    k.click(".GAS File Properties")
    sheet = k.window("Properties of harbour.gas")
    x, y, width, height = k.main.box
    left, top, wide, high = sheet.box
    assert abs(left + wide // 2 - x - width // 2) < 30 and abs(top + high // 2 - y - height // 2) < 60
    k.keys("Escape")
    k.gone(sheet)
    k.quit()


def try_pickers_start_where_the_user_is(k):
    k.open()
    k.keys("ctrl+o", on=k.main)
    chooser = k.window("Select a Gas File")
    assert k.find("mod", "toggle button", chooser).has("checked")
    k.keys("Escape")
    k.gone(chooser)
    k.keys("ctrl+s", on=k.main)
    chooser = k.window("Please specify a filename")
    wait(lambda: k.focus().text() == "harbour.tab", "a proposed name")
    k.keys("Escape")
    k.gone(chooser)
    k.quit()


@needs(windows=True)
def try_commands_that_can_do_nothing_are_disabled(k):
    k.start()
    idle = ["Reload", "Source", "Parsed", "As Listed", "View Specializes Chain"]
    if not k.on_windows:
        idle += [".GAS File Properties", "View Template (Tab Delimited)"]
    for name in idle:
        assert not k.find(name, "push button").has("sensitive"), name
    k.focus_is("Path of the .gas file")
    k.type(k.sample() + "\n")
    wait(lambda: len(k.status()) == 4 and k.status()[2] == "40 Templates", "the file")
    for name in idle:
        assert k.find(name, "push button").has("sensitive"), name
    k.quit()


def try_without_a_display_a_line_tells_so(k):
    k.start(env={"DISPLAY": ":77"}, ready=False)
    assert k.ended() == 1
    assert k.error_lines() == [
        'kestrel: there is no display to show its windows on (DISPLAY is ":77")']
    k.expected_errors = "there is no display"
    k.start()
    k.quit()


def try_the_window_closes_though_nothing_can_be_written(k):
    for name in ("settings.set", "info.his"):
        os.mkdir(os.path.join(k.folder, name))
    k.open()
    k.keys("Escape", on=k.main)
    k.answer("*/info.his*", "OK", "Warning")
    k.answer("*/settings.set*", "OK", "Warning")
    assert k.ended() == 0
