"""The windows that show a text: the viewer and the browser of chains."""

from desk import wait


def edit(k):
    return k.press("Source", "Edit Source: *")


def chain(k):
    return k.open_by("Specializes Browser", "View", "Specializes Chain")


def try_tab_leaves_the_chains_text(k):
    k.load(k.sample("chain-a.gas"))
    browser = chain(k)
    before = k.pane().text()
    k.walk(("Tab", "Text"), ("Tab", "Reset File List"))
    assert k.pane().text() == before and browser.name == "Specializes Browser"
    x, y, width, _ = k.find("Chain").box
    k.drag((x + width + 3, y + 50), (x + width + 63, y + 50))
    wait(lambda: k.find("Chain").box[2] > width + 40, "a wider tree")
    k.close(browser)
    view = edit(k)
    k.focus_is("Text")
    k.keys("Tab")
    wait(lambda: k.pane().text().startswith("\t"), "a tab")
    k.keys("F6")
    wait(lambda: k.focus().role == "push button", "the next control")
    k.keys("shift+Tab", "BackSpace")
    wait(lambda: not view.name.endswith("*"), "no mark")
    k.close(view)


def try_the_end_of_a_deep_chain_is_seen(k):
    last = "level_60"
    k.load_text("".join(f'[t:template,n:level_{i}]\n{{\n  specializes = "level_{i + 1}";\n}}\n'
                        for i in range(60)) + f"[t:template,n:{last}]\n{{\n  mass = 1;\n}}\n")
    browser = chain(k)
    k.focus_is("Chain")
    k.keys("End")
    k.selected_is("Chain", last)
    left, top, width, height = k.find("Chain").box

    def inside():
        x, y, wide, high = k.find("Chain").cell(60).box
        return left <= x + min(wide, 60) <= left + width and top <= y <= top + height - high
    wait(inside, "the last node to be seen")
    k.close(browser)


def try_a_line_of_two_megabytes_is_no_effort(k):
    path, long = k.sample("info.gas"), "word and more; " * 140_000
    k.load_text(f'[t:template,n:long]\n{{\n  doc = "long";\n  // {long}\n  a = 1;\n}}\n')
    view = edit(k)
    for key in ("Down", "Down", "Down", "End", "Right", "Right", "Home", "Up", "Down"):
        assert k.effort(lambda: k.keys(key)) < 0.3, key
    assert "more characters of this line are not shown" in k.pane().text()
    assert not k.pane().has("editable")
    k.click("Save to file...")
    k.choose(path[:-4] + "-copy.txt")
    wait(lambda: k.active() == view, "the viewer")
    assert k.read(path[:-4] + "-copy.txt").startswith(k.read(path)[:-2])
    k.close(view)


def try_the_viewer_tells_of_text_and_caret(k):
    k.select("Templates", "Small crate")
    view = edit(k)
    pane = k.pane()
    before = pane.text()
    lines = before.count("\n") + 1

    def chosen(text):
        wait(lambda: pane.selection() and pane.text()[slice(*pane.selection())] == text, text)
    assert k.status() == ["Line: 1", "Col: 1", "Char: 0", f"Chars: {len(before)}",
                          f"Lines: {lines}"]
    k.keys("Down", "Right")
    wait(lambda: k.status()[:3] == ["Line: 2", "Col: 2", "Char: 29"], "the caret's place")
    assert pane.caret() == 29
    k.keys("ctrl+f")
    k.reply("Find Text", "SMALL CRATE\n")
    chosen("Small crate")
    k.keys("F3", on=view)
    chosen("Small Crate")
    k.keys("ctrl+f")
    k.reply("Find Text", "no such\n")
    k.answer("Substring not found: no such", "OK", "Warning")
    k.keys("ctrl+a", on=view)
    chosen(before)
    k.type("x")
    wait(lambda: pane.text() == "x", "it alone")
    k.discard(view)


def try_keys_edit_as_in_a_text_box(k):
    """What each key makes of the text; and clicks away from the caret, where it paints at once."""
    k.load_text("\n".join(("[t:template,n:a]", "{", *["é = 1;"] * 60, "}", "")))
    view = edit(k)
    pane = k.pane()
    rest = pane.text()
    for keys, text in (
            ("ctrl+Home Return", "\r\n"), ("ctrl+z", ""), ("ctrl+shift+z", "\r\n"), ("ctrl+z", ""),
            ("ctrl+y", "\r\n"), ("ctrl+d ctrl+l ctrl+t ctrl+u", "\r\n"), ("a", "\r\na"),
            ("shift+Left ctrl+x", "\r\n"), ("ctrl+v ctrl+v", "\r\naa"),
            ("shift+Home ctrl+Insert Right shift+Insert", "\r\naaaa"),
            ("shift+Home shift+Delete", "\r\n"), ("BackSpace", "")):
        k.keys(*keys.split())
        wait(lambda: pane.text() == text + rest and view.name.endswith("*") == (text != ""), keys)
    for line in (3, 9, 14, 5):
        k.click(pane.place(rest.index("\n", line * 8)), button=3)
        k.find_item("Select All")
        k.keys("Escape")
    k.keys("ctrl+End", "ctrl+f")
    k.reply("Find Text", "T:TEMPLATE\n")
    wait(lambda: pane.selection() == (1, 11), "it")
    left, top, width, height = pane.box
    x, y = pane.place(pane.caret())
    assert left < x < left + width and top < y < top + height, "in view"
    k.keys("Right")
    k.click("Copy")
    wait(lambda: k.clipboard() == rest.replace("\r", ""), "all of it, as nothing is selected")
    k.click(pane)
    k.keys("ctrl+a", "Delete", "Return")
    wait(lambda: k.status()[3:] == ["Chars: 2", "Lines: 2"], "CR LF")
    k.discard(view)
