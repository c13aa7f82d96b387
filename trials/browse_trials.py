"""What a file's lists and its tree show, and what can be done from them."""

from desk import wait

CRATE = "Small crate\\"


def column(k, name, number=0):
    return [row[number] for row in k.find(name).rows()]


def shows_the_block(k, path):
    """Whose own properties alone the filter leaves."""
    wait(lambda: set(column(k, "Properties", 2)) == {path}, path)


def try_a_selected_template_fills_the_tree_and_the_properties(k):
    assert column(k, "Blocks") == ["Base prop", "look_1", "body_2", "collide_3"]
    assert k.find("Properties").rows()[:2] == [["name", "base_prop", "Base prop\\"],
                                              ["doc", "Base prop", "Base prop\\"]]
    k.select("Templates", "Small crate")
    assert k.status()[0] == "Template K3 is Small crate"
    k.select("Blocks", "body_2")
    wait(lambda: k.status()[0] == CRATE + "body_2", "the block's path")
    everything = k.find("Properties").row_count()
    k.click("Use Tree as Filter")
    k.selected_is("Blocks", "Small crate")
    shows_the_block(k, CRATE)
    assert k.find("Properties").row_count() < everything
    assert k.status()[0] == CRATE + " (Screen Name='Small Crate')"
    assert k.status()[3] == f"{k.find('Properties').row_count()} Properties"


def try_keys_browse(k):
    k.keys("Down", "Down")
    k.selected_is("Templates", "Base iron prop")
    k.type("sma")
    k.selected_is("Templates", "Small crate")
    k.keys("Escape")
    wait(lambda: k.main.has("active"), "the window, still")
    k.walk(("F6", "Blocks"), ("F6", "Properties"), ("shift+F6", "Blocks"))
    k.keys("Down")
    wait(lambda: k.status()[0] == CRATE + "look_1", "the block")
    k.keys("Left", "Left")
    k.selected_is("Blocks", "Small crate")
    k.keys("Left")
    wait(lambda: k.find("Blocks").row_count() == 1, "a closed tree")
    k.keys("Right")
    wait(lambda: k.find("Blocks").row_count() > 1, "an open one")
    k.keys("F5")
    k.selected_is("Templates", "Small crate")
    k.focus_is("Blocks")
    k.walk(("F6", "Properties"), ("F6", "Open"), ("Right", "View Template (Tab Delimited)"),
           ("F6", "Path of the .gas file"))
    k.keys("ctrl+w")
    assert k.ended() == 0


def try_every_click_on_a_header_turns_the_order(k):
    k.select("Templates", "Small crate")
    for name, header, turned in (("Templates", 0, False), ("Templates", 0, True),
                                 ("Properties", 1, False), ("Properties", 0, True)):
        k.click(k.find(name).header(header))
        wait(lambda: column(k, name, header)
             == sorted(column(k, name, header), key=str.lower, reverse=turned), "the order")
        assert k.find("Templates").selected() == ["Small crate"]


def try_search_wraps_and_repeats(k):
    def ask(text):
        k.menu("Edit", "Find Template Name...")
        k.reply("Search Templates", text)
    ask("CRATE\n")
    k.selected_is("Templates", "Small crate")
    for name in ("Large crate", "Small crate"):
        k.keys("F3", on=k.main)
        k.selected_is("Templates", name)
    ask("no such\n")
    k.answer("Search text not found.", "OK", "Information")


def try_following(k):
    title = "View Source: Base wooden prop"
    k.select("Templates", "Small crate")
    k.click(k.find("Properties").select("specializes"), times=2)
    view = k.window(title)
    assert "[t:template,n:base_wooden]" in k.pane().text() and not k.pane().has("editable")
    k.close(view)
    k.select("Properties", "name")
    k.keys("Return")
    wait(lambda: k.status()[0] == "Small crate > Base wooden prop > Base prop", "the chain")
    k.click(k.find("Properties").select("specializes"), button=3)
    k.close(k.open_by(title, "Follow"))


def try_menus_of_rows_copy_and_filter(k):
    k.select("Templates", "Small crate")
    for name, row, entry, text in (
            ("Properties", "specializes", "Copy Value", "base_wooden"),
            ("Properties", "specializes", "Copy Path", CRATE),
            ("Properties", "specializes", "Copy Row", "specializes\tbase_wooden\t" + CRATE),
            ("Templates", "Large crate", "Copy Name", "Large crate"),
            ("Templates", "Small crate", "Copy Name", "Small crate"),
            ("Blocks", "body_2", "Copy Path", CRATE + "body_2\\")):
        k.click(k.find(name).select(row), button=3)
        k.menu(entry)
        wait(lambda: k.clipboard() == text, entry)
    k.keys("shift+F10")
    k.menu("Filter by This Block")
    shows_the_block(k, CRATE + "body_2\\")
    k.keys("ctrl+c")
    wait(lambda: k.clipboard().startswith(f"DS Template for: {k.file}\n"), "the list")
    k.click("Path of the .gas file", button=3, at=(60, 10))
    k.find_item("Select All")
    menu = next(one for one in k.windows() if one.find("Select All"))
    assert not menu.find("*Emoji*"), "it would take all keys, for what no file can hold"
    k.keys("Escape")


def try_a_file_that_does_not_load_leaves_the_window_usable(k):
    told = "File loading error: Either no data found or unsupported file type."
    for path in (k.write(k.sample("info.gas"), ""), "/nowhere/at/all.gas"):
        k.load(path)
        k.answer(told, "OK", "Warning")
        assert k.find("Templates").row_count() == 0 and k.status() == ["", "", "", ""]
    k.load(k.file)
    k.loaded(40)
    k.finish()
    assert k.read(k.folder, "info.his").decode() == k.file + "\r\n"
    k.start("/nowhere/at/all.gas", ready=False)
    wait(lambda: k.box() == (told, "Warning"), "the box, in front")
    left, top, width, height = k.find_windows("Kestrel Template Browser (*")[0].box
    x, y = k.active().middle()
    assert left < x < left + width and top < y < top + height, "over its window"
    k.keys("Escape")


def try_moving_is_told_to_screen_readers(k):
    told = k.bus.listen("object:active-descendant-changed", "object:text-caret-moved",
                        "object:state-changed:focused")
    row = "ActiveDescendantChanged"
    for key, *event in (("Down", row, "Base wooden prop"), ("F6", "StateChanged", "Blocks", 1),
                        ("Down", row, "look_1"), ("F6", "StateChanged", "Properties", 1),
                        ("Down", row, "doc")):
        k.keys(key)
        wait(lambda: tuple(event) in told(), event)
        told().clear()
    view = k.press("Source", "Edit Source*")
    k.keys("Down", "Right")
    wait(lambda: ("TextCaretMoved", "Text", 29) in told(), "the caret's place")
    k.keys("F6")
    wait(lambda: ("StateChanged", "Save to file...", 1) in told(), "the focus")
    k.close(view)


def try_sub_blocks_of_any_depth_are_browsed(k):
    k.load_text("[info]\n{\n" + "[a]\n{\n" * 5000 + "mass = 1;\n" + "}\n" * 5001)
    wait(lambda: k.status()[3] == "5001 Properties", "all of them")
    k.keys("F6", "F6")
    k.focus_is("Properties")
    for header, key, text in ((2, "End", "Info0\\a_1\\"), (0, "Home", "mass")):
        k.click(k.find("Properties").header(header))
        k.keys(key)
        wait(lambda: k.find("Properties").selected()[header] == text, text)
    k.keys("shift+F10")
    k.menu("Filter by This Block")
    wait(lambda: k.status()[3] == "2 Properties", "the block's header and its property")
    assert k.status()[0].startswith("Info0\\a\\a\\a\\")
    assert k.find("Blocks").selected() == ["a_5000"]
    k.click("Use Tree as Filter")
    wait(lambda: k.status()[3] == "5001 Properties", "all of them again")
