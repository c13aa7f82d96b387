"""The windows that show a text: the viewer and the browser of chains."""

from desk import wait


def edit(k, template=None):
    """Opens the source of a template; the viewer."""
    if template:
        k.click(k.find("Templates").select(template))
        wait(lambda: k.find("Templates").selected() == [template], template)
    k.click("Source")
    return k.window("Edit Source: *")


def try_right_click_in_a_chain(k):
    k.open("chain-a.gas")
    k.click("View Specializes Chain")
    browser = k.window("Specializes Browser")
    text = k.find("Text", "text")
    for line in (1, 2, 3):
        k.click(text.place([i for i, c in enumerate(text.text()) if c == "\n"][line] - 1), button=3)
        k.find_item("Select All")
        k.keys("Escape")
    k.keys("Escape", on=browser)
    k.gone(browser)
    k.quit()


def try_tab_leaves_the_chains_text(k):
    k.open("chain-a.gas")
    k.click("View Specializes Chain")
    browser = k.window("Specializes Browser")
    before = k.find("Text", "text").text()
    k.keys("Tab")
    k.focus_is("Text")
    k.keys("Tab")
    k.focus_is("Reset File List")
    assert k.find("Text", "text").text() == before and browser.name == "Specializes Browser"
    k.keys("Escape", on=browser)
    k.gone(browser)
    view = edit(k)
    k.focus_is("Text")
    k.keys("Tab")
    wait(lambda: k.find("Text", "text").text().startswith("\t"), "a tab")
    k.keys("F6")
    wait(lambda: k.focus().role == "push button", "the next control")
    k.keys("shift+Tab", "BackSpace")
    wait(lambda: view.name == "Edit Source: " + k.find("*").name or not view.name.endswith("*"), "it")
    k.keys("Escape", on=view)
    k.gone(view)
    k.quit()


def deep(k, levels):
    """A file of templates each of which specializes the next one."""
    path = k.sample("chain-a.gas").replace("chain-a", "deep")
    with open(path, "w", encoding="ascii", newline="\r\n") as file:
        for i in range(levels):
            file.write(f'[t:template,n:level_{i}]\n{{\n  specializes = "level_{i + 1}";\n}}\n')
        file.write(f'[t:template,n:level_{levels}]\n{{\n  mass = 1;\n}}\n')
    return path


def try_the_end_of_a_deep_chain_is_seen(k):
    k.start(deep(k, 60))
    k.click("View Specializes Chain")
    browser = k.window("Specializes Browser")
    chain = k.find("Chain")
    k.focus_is("Chain")
    k.keys("End")
    wait(lambda: chain.selected() == ["level_60"], "the last level")
    left, top, width, height = chain.box

    def inside():
        x, y, wide, high = chain.cell(60).box
        return left <= x + min(wide, 60) <= left + width and top <= y <= top + height - high
    wait(inside, "the last node to be seen")
    k.keys("Escape", on=browser)
    k.gone(browser)
    k.quit()


def try_a_line_of_two_megabytes_is_no_effort(k):
    path = k.sample("info.gas")
    long = "word and more; " * 140_000
    with open(path, "w", encoding="ascii", newline="") as file:
        file.write(f'[t:template,n:long]\r\n{{\r\n  doc = "long";\r\n  // {long}\r\n  a = 1;\r\n}}\r\n')
    k.start(path)
    view = edit(k)
    for key in ("Down", "Down", "Down", "End", "Right", "Right", "Home", "Up", "Down"):
        k.keys(key)
        assert k.answers() < 0.3, key
    assert "more characters of this line are not shown" in k.find("Text", "text").text()
    assert not k.find("Text", "text").has("editable")
    k.click("Save to file...")
    k.choose(path[:-4] + "-copy.txt")
    wait(lambda: k.active() == view, "the viewer")
    assert k.read(path[:-4] + "-copy.txt").startswith(k.read(path)[:-2])
    k.keys("Escape", on=view)
    k.gone(view)
    k.quit()


def try_the_viewer_tells_of_text_and_caret(k):
    k.open()
    view = edit(k, "Small crate")
    pane = k.find("Text", "text")
    before = pane.text()
    lines = before.count("\n") + 1
    assert k.status() == ["Line: 1", "Col: 1", "Char: 0", f"Chars: {len(before)}", f"Lines: {lines}"]
    k.keys("Down", "Right")
    wait(lambda: k.status()[:3] == ["Line: 2", "Col: 2", "Char: 29"], "the caret's place")
    assert pane.caret() == 29
    k.keys("BackSpace")
    wait(lambda: view.name == "Edit Source: Small crate *", "a mark")
    k.keys("ctrl+z")
    wait(lambda: view.name == "Edit Source: Small crate", "no mark")
    k.keys("ctrl+f")
    k.window("Find Text")
    k.type("SMALL CRATE\n")
    wait(lambda: pane.selection() and before[slice(*pane.selection())] == "Small crate", "the first hit")
    k.keys("F3", on=view)
    wait(lambda: before[slice(*pane.selection())] == "Small Crate", "the next one")
    k.keys("ctrl+c")
    wait(lambda: k.clipboard() == "Small Crate", "the selection")
    k.keys("ctrl+f")
    k.window("Find Text")
    k.type("no such\n")
    k.answer("Substring not found: no such", "OK", "Warning")
    k.keys("ctrl+a", on=view)
    wait(lambda: pane.selection() == (0, len(before)), "all of it")
    k.type("x")
    k.keys("Escape")
    k.answer("Source has been changed. Exit anyway and discard changes?", "No", "Question")
    assert pane.text() == "x"
    k.keys("Escape", on=view)
    k.answer("Source has been changed. Exit anyway and discard changes?", "Yes")
    k.quit()


def try_a_chain_grows_over_files(k):
    for name in ("chain-b.gas", "chain-c.gas"):
        k.sample(name)
    k.open("chain-a.gas")
    k.menu("View", "Specializes Chain")
    browser = k.window("Specializes Browser")
    chain, pane = k.find("Chain"), k.find("Text", "text")
    k.keys("End", on=browser)
    k.window("Select the node's source file")
    k.keys("Escape")
    wait(lambda: pane.text() == "Source not available.", "nothing")
    for name, start, rows in (("chain-b.gas", "[t:template,n:dinghy_painted]", 3),
                              ("chain-c.gas", "[t:template,n:dinghy_plain]", 3)):
        k.keys("Return" if name == "chain-b.gas" else "End", on=browser)
        k.window("Select the node's source file")
        k.choose(k.desk.path("mod", name))
        wait(lambda: pane.text().startswith(start), "its source")
        assert chain.row_count() == rows
    k.click("Reset File List")
    k.answer("Really reset the list of files that are searched for source?", "No", "Question")
    k.keys("Escape", on=browser)
    k.gone(browser)
    k.quit()
    assert k.read(k.folder, "spec.his").decode().split("\r\n") == [
        k.file, k.desk.path("mod", "chain-b.gas"), k.desk.path("mod", "chain-c.gas")]
