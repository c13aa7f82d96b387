"""What a file's lists and its tree show, and what can be done from them."""

from desk import wait


def selected(k, name):
    return k.find(name).selected()


def select(k, name, text):
    k.click(k.find(name).select(text))
    wait(lambda: selected(k, name)[0] == text, text)


def first_column(k):
    return [row[0] for row in k.find("Properties").rows()]


def try_a_selected_template_fills_the_tree_and_the_properties(k):
    k.open()
    assert [row[0] for row in k.find("Blocks").rows()] == ["Base prop", "look_1", "body_2", "collide_3"]
    assert k.find("Properties").rows()[:2] == [["name", "base_prop", "Base prop\\"],
                                              ["doc", "Base prop", "Base prop\\"]]
    select(k, "Templates", "Small crate")
    assert k.status()[0] == "Template K3 is Small crate"
    assert k.find("Blocks").row(0) == ["Small crate"]
    select(k, "Blocks", "body_2")
    wait(lambda: k.status()[0] == "Small crate\\body_2", "the block's path")
    everything = first_column(k)
    k.click("Use Tree as Filter")
    wait(lambda: selected(k, "Blocks") == ["Small crate"], "the root")
    wait(lambda: 0 < len(first_column(k)) < len(everything), "the root's own properties")
    assert {row[2] for row in k.find("Properties").rows()} == {"Small crate\\"}
    assert k.status()[0] == "Small crate\\ (Screen Name='Small Crate')"
    select(k, "Blocks", "body_2")
    wait(lambda: {row[2] for row in k.find("Properties").rows()} == {"Small crate\\body_2\\"}, "it")
    assert k.status()[3] == f"{len(first_column(k))} Properties"
    k.quit()


def try_keys_browse(k):
    k.open()
    k.keys("Down", "Down")
    wait(lambda: selected(k, "Templates") == ["Base iron prop"], "the third")
    k.type("sma")
    wait(lambda: selected(k, "Templates") == ["Small crate"], "the one that begins so")
    k.keys("Escape")
    wait(lambda: k.main.has("active"), "the window, still")
    for name in ("Blocks", "Properties"):
        k.keys("F6")
        k.focus_is(name)
    k.keys("shift+F6")
    k.focus_is("Blocks")
    k.keys("Down")
    wait(lambda: k.status()[0] == "Small crate\\look_1", "the block")
    k.keys("Left", "Left")
    wait(lambda: selected(k, "Blocks") == ["Small crate"], "the root")
    k.keys("Left")
    wait(lambda: k.find("Blocks").row_count() == 1, "a closed tree")
    k.keys("Right")
    wait(lambda: k.find("Blocks").row_count() > 1, "an open one")
    k.keys("F5")
    wait(lambda: selected(k, "Templates") == ["Small crate"], "the same template")
    k.focus_is("Blocks")
    k.keys("F6", "F6")
    wait(lambda: k.focus().name == "Open", "the tool bar")
    k.keys("Right")
    wait(lambda: k.focus().name == "View Template (Tab Delimited)", "the next tool")
    k.keys("F6")
    k.focus_is("Path of the .gas file")
    k.menu("Tools")
    k.keys("Escape")
    wait(lambda: not [one for one in k.main.find("SkritPad", "menu item")], "a closed menu")
    k.keys("ctrl+w")
    assert k.ended() == 0


def try_every_click_on_a_header_turns_the_order(k):
    k.open()
    names = [row[0] for row in k.find("Templates").rows()]
    select(k, "Templates", "Small crate")
    for expected in (sorted(names, key=str.lower), sorted(names, key=str.lower, reverse=True)):
        k.click(k.find("Templates").header(0))
        wait(lambda: [row[0] for row in k.find("Templates").rows()] == expected, "the order")
        assert selected(k, "Templates") == ["Small crate"]
    k.click(k.find("Properties").header(1))
    wait(lambda: [row[1] for row in k.find("Properties").rows()]
         == sorted((row[1] for row in k.find("Properties").rows()), key=str.lower), "by value")
    k.click(k.find("Properties").header(0))
    wait(lambda: first_column(k) == sorted(first_column(k), key=str.lower, reverse=True), "turned")
    k.quit()


def try_search_wraps_and_repeats(k):
    k.open()
    k.menu("Edit", "Find Template Name...")
    k.window("Search Templates")
    k.type("CRATE\n")
    wait(lambda: selected(k, "Templates") == ["Small crate"], "the first")
    found = []
    for _ in range(8):
        before = selected(k, "Templates")
        k.keys("F3", on=k.main)
        wait(lambda: selected(k, "Templates") != before, "the next")
        found += selected(k, "Templates")
    assert found.count("Small crate") >= 1 and "Large crate" in found, found
    k.menu("Edit", "Find Template Name...")
    k.window("Search Templates")
    k.type("no such\n")
    k.answer("Search text not found.", "OK", "Information")
    k.quit()


def try_following(k):
    k.open()
    select(k, "Templates", "Small crate")
    k.click(k.find("Properties").select("specializes"), times=2)
    view = k.window("View Source: Base wooden prop")
    assert "[t:template,n:base_wooden]" in k.find("Text", "text").text()
    assert not k.find("Text", "text").has("editable")
    k.keys("Escape", on=view)
    k.gone(view)
    select(k, "Properties", "name")
    k.keys("Return")
    wait(lambda: k.status()[0] == "Small crate > Base wooden prop > Base prop", "the chain")
    k.click(k.find("Properties").select("specializes"), button=3)
    k.menu("Follow")
    k.keys("Escape", on=k.window("View Source: Base wooden prop"))
    k.quit()


def try_menus_of_rows_copy_and_filter(k):
    k.open()
    select(k, "Templates", "Small crate")
    row = k.find("Properties").select("specializes")
    for entry, text in (("Copy Value", "base_wooden"), ("Copy Path", "Small crate\\"),
                        ("Copy Row", "specializes\tbase_wooden\tSmall crate\\")):
        k.click(row, button=3)
        k.menu(entry)
        wait(lambda: k.clipboard() == text, entry)
    k.click(k.find("Blocks").select("body_2"), button=3)
    k.menu("Copy Path")
    wait(lambda: k.clipboard() == "Small crate\\body_2\\", "the block's path")
    k.keys("shift+F10")
    k.menu("Filter by This Block")
    wait(lambda: {one[2] for one in k.find("Properties").rows()} == {"Small crate\\body_2\\"}, "it")
    k.keys("ctrl+c")
    wait(lambda: k.clipboard().startswith(f"DS Template for: {k.file}\n"), "the list")
    k.click("Path of the .gas file", button=3, at=(60, 10))
    k.find_item("Select All")
    menu = next(one for one in k.windows() if one.find("Select All"))
    assert not menu.find("*Emoji*"), "it would take all keys, for what no file can hold"
    k.keys("Escape")
    k.click(k.find("Templates").select("Large crate"), button=3)
    k.menu("Copy Name")
    wait(lambda: k.clipboard() == "Large crate", "the name")
    k.quit()


def try_a_file_that_does_not_load_leaves_the_window_usable(k):
    k.open()
    empty = k.sample("info.gas")
    with open(empty, "wb"):
        pass
    for path in (empty, "/nowhere/at/all.gas"):
        k.click("Path of the .gas file", at=(60, 10))
        k.keys("ctrl+a")
        k.type(path + "\n")
        k.answer("File loading error: Either no data found or unsupported file type.", "OK", "Warning")
        assert k.find("Templates").row_count() == 0 and k.status() == ["", "", "", ""]
    k.click("Path of the .gas file", at=(60, 10))
    k.keys("ctrl+a")
    k.type(k.file + "\n")
    wait(lambda: k.status()[2] == "40 Templates", "the file")
    k.quit()
    assert k.read(k.folder, "info.his").decode() == k.file + "\r\n"
    assert k.read(k.folder, "settings.set").count(b"=\r\n") == 8
    k.start("/nowhere/at/all.gas", ready=False)
    wait(lambda: k.box()[1] == "Warning", "the box, in front")
    left, top, width, height = k.find_windows("Kestrel Template Browser (*")[0].box
    x, y = k.active().middle()
    assert left < x < left + width and top < y < top + height, "over its window"


def try_moving_is_told_to_screen_readers(k):
    k.open()
    told = k.bus.listen("object:active-descendant-changed", "object:text-caret-moved",
                        "object:state-changed:focused")
    row = "ActiveDescendantChanged"
    for key, event in (("Down", (row, "Base wooden prop")), ("F6", ("StateChanged", "Blocks", 1)),
                       ("Down", (row, "look_1")), ("F6", ("StateChanged", "Properties", 1)),
                       ("Down", (row, "doc"))):
        k.keys(key)
        wait(lambda: event in told(), event)
        told().clear()
    k.click("Source")
    view = k.window("Edit Source*")
    k.keys("Down", "Right")
    wait(lambda: ("TextCaretMoved", "Text", 29) in told(), "the caret's place")
    k.keys("F6")
    wait(lambda: ("StateChanged", "Save to file...", 1) in told(), "the focus")
    k.keys("Escape", on=view)
    k.gone(view)
    k.quit()


def try_sub_blocks_of_any_depth_are_browsed(k):
    path = k.sample("info.gas")
    with open(path, "w", encoding="ascii", newline="\r\n") as file:
        file.write("[info]\n{\n" + "[a]\n{\n" * 5000 + "mass = 1;\n" + "}\n" * 5001)
    k.start(path)
    wait(lambda: k.status()[3] == "5001 Properties", "all of them")
    k.keys("F6", "F6")
    k.focus_is("Properties")
    k.click(k.find("Properties").header(2))
    k.keys("End")
    wait(lambda: selected(k, "Properties")[2] == "Info0\\a_1\\", "the last group")
    k.click(k.find("Properties").header(0))
    k.keys("Home")
    wait(lambda: selected(k, "Properties")[0] == "mass", "the last name, first")
    k.keys("shift+F10")
    k.menu("Filter by This Block")
    wait(lambda: k.status()[3] == "2 Properties", "the block's header and its property")
    assert k.status()[0].startswith("Info0\\a\\a\\a\\")
    assert selected(k, "Blocks") == ["a_5000"]
    k.click("Use Tree as Filter")
    wait(lambda: k.status()[3] == "5001 Properties", "all of them again")
    k.quit()
