"""The main window."""

import os

from app import needs
from desk import wait


@needs(windows=True, opened=False)
def try_commands_that_can_do_nothing_are_disabled(k):
    k.start()
    idle = ["Reload", "Source", "Parsed", "As Listed", "View Specializes Chain"]
    if not k.on_windows:
        idle += [".GAS File Properties", "View Template (Tab Delimited)"]
    for name in idle:
        assert not k.find(name, "push button").has("sensitive"), name
    assert k.find("Templates").row_count() == 0
    k.focus_is("Path of the .gas file")
    k.type(k.sample() + "\n")
    wait(lambda: k.status() == ["Template K0 is Base prop", "Template", "40 Templates",
                                "14 Properties"], "the file")
    assert k.find("Templates").row_count() == 40
    for name in idle:
        assert k.find(name, "push button").has("sensitive"), name
    k.keys("ctrl+f")
    box = k.window("Search Properties")
    x, y = box.box[0] - k.main.box[0], box.box[1] - k.main.box[1]
    assert -40 <= x <= 10 and -60 <= y <= 10, "the list can be seen beside it"
    k.type("model\n")
    wait(lambda: k.main.has("active"), "the main window")
    assert k.find("Properties").selected()[0] == "model"


@needs(opened=False)
def try_usual_and_large_text_show_as_much(k):
    for scale in ("1", "1.75"):
        k.open(env={"GDK_DPI_SCALE": scale})
        boxes = [k.find(name).box for name in
                 ("Use Tree as Filter", "View Specializes Chain", "As Listed", "Parsed", "Source")]
        middles = [y + height // 2 for _, y, _, height in boxes]
        assert max(middles) - min(middles) <= 2, boxes
        assert all(x + width < k.main.box[0] + k.main.box[2] for x, _, width, _ in boxes), boxes
        for rows in (k.find("Templates"), k.find("Properties")):
            assert (rows.box[3] - 40) // rows.cell(0).box[3] >= 8, rows.name
        k.finish()


def activate(k, window):
    k.desk.input("windowactivate", window)


def click_icon(k, _window):
    k.click(k.icon(), times=2)


def restore(k, _window):
    k.click(k.icon(), button=3)
    k.menu("Restore")


def trial_of(what, bring_back, begin=lambda k: None):
    @needs(opened=False, **what)
    def minimise(k):
        begin(k)
        k.open()
        wait(lambda: "Kestrel Template" in k.desk.run("xdotool", "getactivewindow",
                                                      "getwindowname"), "it in front")
        window = k.desk.run("xdotool", "getactivewindow").strip()
        k.desk.input("windowminimize", window)
        # It is hidden where an icon brings it back.
        wait(lambda: "Iconic" in k.desk.run("xprop", "-id", window, "WM_STATE")
             if bring_back == activate else not k.find_windows(k.main.name), "no window")
        bring_back(k, window)
        k.main = k.window("Kestrel Template Browser (*")
        k.focus_is("Templates")
        k.keys("Down")
        k.selected_is("Templates", "Base wooden prop")
    return minimise


BARE = {"desk": {"tray": False}}
for each, *row in (
        ("icon_brings_the_window_back", {"windows": True}, click_icon),
        ("icon_brings_the_window_back_in_another_desktop",
         {"desk": {"manager": "icewm", "tray": False}}, click_icon),
        ("menu_of_the_icon_brings_the_window_back", {}, restore),
        ("end_of_the_notification_area_brings_the_window_back", {},
         lambda k, _: k.desk.tray.kill()),
        ("without_a_notification_area_the_window_is_minimised", BARE, activate),
        ("an_area_that_refuses_the_icon_hides_nothing", BARE, activate,
         lambda k: k.other("refuse"))):
    globals()["try_" + each] = trial_of(*row)


def try_the_systems_dialog_comes_back_with_its_window(k):
    main = k.desk.run("xdotool", "getactivewindow").strip()
    k.keys("ctrl+o")
    chooser = k.window("Select a Gas File")
    for minimised in (k.desk.run("xdotool", "getactivewindow").strip(), main):
        k.desk.input("windowminimize", minimised)
        wait(lambda: not chooser.has("active"), "it to go")
        activate(k, main)
        wait(lambda: chooser.has("active"), "it again")
    k.keys("Escape")
    k.gone(chooser)


@needs(windows=True)
def try_keys_work_after_saving(k):
    """Whatever was answered, and though the mouse chose the command."""
    for key in ("Escape", "Return"):
        k.keys(key, on=k.open_by("Please specify a filename", "Edit", "Save Current Only..."))
        if key == "Return":
            k.answer("File saved successfully. Do you wish to edit the file?", "No", "Information")
        wait(lambda: k.main.has("active"), "the main window")
        k.keys("F3", "Down")
        wait(lambda: k.status()[0].startswith("Template K"), "a selected template")
        k.focus_is("Templates")
    assert k.read(k.file[:-4] + ".tab").count(b"\nDS Template for: ") == 40


def try_typing_after_opening_goes_to_the_list(k):
    second = k.sample("tides.gas")
    for way in (lambda: k.load(second),
                lambda: (k.keys("ctrl+o", on=k.main), k.choose(second)),
                lambda: (k.click(k.find("Path of the .gas file", "combo box"), at=(-12, 10)),
                         k.click(k.find_item("*tides.gas")))):
        way()
        wait(lambda: k.status()[2] != "40 Templates", "the other file")
        k.focus_is("Templates")
        k.keys("End")
        rows = k.find("Templates")
        wait(lambda: rows.selected() == rows.row(rows.row_count() - 1), "the end")
        k.load(k.file)
        k.loaded(40)


def try_columns_and_panes_are_remembered(k):
    def size(*wanted):
        k.desk.input("getactivewindow", "windowsize", *wanted)
        wait(lambda: k.main.box[2] > wanted[0] - 100, "a larger window")

    def header(number):
        return k.find("Properties").header(number).box

    def widths():
        return [k.find(name).box[2] for name in ("Templates", "Blocks", "Properties")]
    x, y = header(1)[:2]
    k.drag((x + 1, y + 8), (x + 31, y + 8))
    last = header(2)[2]
    size(1200, 800)
    wait(lambda: header(2)[2] > last + 150, "a wide column")
    templates, blocks, properties = widths()
    assert properties - 4 <= sum(header(i)[2] for i in range(3)) <= properties
    assert templates > 170 and blocks > 250, widths()
    first = header(0)[2]
    x, y, width, _ = k.find("Blocks").box
    k.drag((x + width + 4, y + 50), (x + width + 64, y + 50))
    wait(lambda: widths()[1] >= blocks + 50, "a wider tree")
    k.finish()
    k.start(k.file)
    assert header(0)[2] == first
    assert k.main.box[2] == 600, "as large as always"
    k.menu("View", "Remember Window")
    size(900, 700)
    k.finish()
    k.start(k.file)
    wait(lambda: k.main.box[2] > 850, "the size of before")
    k.finish()
    k.write(os.path.join(k.folder, "layout.set"), "remember=1\n")
    k.start(k.file)


def try_system_boxes_open_where_the_user_is(k):
    sheet = k.press(".GAS File Properties", "Properties of harbour.gas")
    (x, y), (left, top) = k.main.middle(), sheet.middle()
    assert abs(left - x) < 30 and abs(top - y) < 60
    k.close(sheet)
    for title, shown, name, *menu in (
            ("Select a Gas File", "Gas File (*.gas)", "", "Edit", "Open..."),
            ("Please specify a filename", "Text files (*.tab)", "harbour.tab", "Edit",
             "Save Current Only..."),
            ("Please specify *", "All files (*.*)", "", "Tools", "Tool1")):
        chooser = k.open_by(title, *menu)
        assert k.find(role="combo box", window=chooser).name == shown
        wait(lambda: not name or k.focus().text() == name, "a proposed name")
        assert menu[1] != "Open..." or k.find("mod", "toggle button", chooser).has("checked")
        k.close(chooser)


@needs(opened=False)
def try_without_a_display_a_line_tells_so(k):
    k.expected_errors = 'kestrel: there is no display to show its windows on .DISPLAY is ":77".$'
    k.start(env={"DISPLAY": ":77"}, ready=False)
    assert k.ended() == 1
    assert len(k.error_lines()) == 1
    k.start()
    k.finish()
    assert k.read(k.folder, "settings.set").count(b"=\r\n") == 8


@needs(opened=False)
def try_the_window_closes_though_nothing_can_be_written(k):
    for name in ("settings.set", "info.his"):
        os.mkdir(os.path.join(k.folder, name))
    k.start(k.sample())
    k.keys("Escape", on=k.main)
    for name in ("info.his", "settings.set"):
        k.answer(f"*/{name}*", "OK", "Warning")
    assert k.ended() == 0
