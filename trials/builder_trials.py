"""The builder: its dialog, its log, and how both end."""

import os

from app import needs
from desk import wait
from dialog_trials import EXISTS, open_dialog


def request(k, target, **fields):
    """The builder's dialog, with a source, a target and texts by their labels."""
    dialog = open_dialog(k, "Rapid Zeltor")
    for name, text in {"Source Folder": k.desk.path("mod"), **fields,
                       "Destination Tank Filename": target}.items():
        k.fill(name, text)
    return dialog


def state_is(k, state):
    wait(lambda: k.status()[-1] == state, f"the state {state!r}")


def done(target):
    wait(lambda: os.path.exists(target + ".done"), "the builder's own end")


def try_the_builders_log_is_shown_as_it_comes(k):
    target, other = (k.desk.path("mod", name + ".dsres") for name in ("my islands", "other"))
    dialog = request(k, target, Author="Me and You", Priority="1x2")
    k.click("Protected?")
    for title, author, end, state in (
            ("words", "<-author>\n<Me and You>\n",
             "<-flagprotected>\n<-priority>\n<12>\n<-title>\n<words>\n",
             "failed with exit code 7"),
            ("wait", "", "waiting\n", "running")):
        k.fill("Title", title)
        view = k.press("Create", "View Log: " + target)
        wait(lambda: k.pane().text().endswith(end), "the builder's words")
        assert author in k.pane().text() and not k.pane().has("editable")
        state_is(k, state)
        k.close(view)
    k.fill("Destination Tank Filename", other)
    k.click("Create")
    k.answer("Error (*): App is already running! in 'gExecZeltor'", "OK", "Warning")
    # It opens no log; what was written without one is not lost.
    open(target + ".go", "w", encoding="ascii").close()
    done(target)
    k.keys("alt+l", on=dialog)
    view = k.window("View Log: " + target)
    wait(lambda: k.pane().text().startswith("waiting\nlate output"), "what came without a log")
    state_is(k, "finished")
    k.close(view)
    open(target, "w", encoding="ascii").close()
    k.fill("Destination Tank Filename", target)
    k.click("Create")
    k.answer(EXISTS, "No", "Question")
    k.close(dialog)


def try_a_builder_is_stopped_or_goes_on(k):
    """By its log, and when Kestrel closes."""
    target = k.desk.path("mod", "a.dsres")
    dialog = request(k, target, Title="wait")

    def runs():
        return k.desk.run("pgrep", "-f", "--", "-out " + target)
    view = k.press("Create", "View Log: " + target)
    state_is(k, "running")
    k.click("Stop")
    state_is(k, "stopped")
    assert not k.find("Stop").has("sensitive") and not runs()
    k.close(view)
    question = f"The builder is still making this archive: {target} Leave it running*"
    for button in ("Cancel", None, "Stop"):
        if button:
            k.close(k.press("Create", "View Log: " + target))
            k.close(dialog)
        k.keys("Escape", on=k.main)
        k.answer(question, button, "Question")
        if button == "Cancel":
            wait(lambda: k.main.has("active"), "the main window")
            assert runs(), "it was stopped"
            continue
        assert k.ended() == 0
        if button == "Stop":
            assert not runs(), "it goes on"
            return
        open(target + ".go", "w", encoding="ascii").close()
        done(target)
        os.remove(target + ".go")
        k.start(k.file)
        dialog = request(k, target, Title="wait")


def try_fields_of_an_archive_are_remembered(k):
    """And nothing that was typed is replaced."""
    first, second, title = k.desk.path("mod", "1.dsres"), k.desk.path("mod", "2.dsres"), "Title"
    dialog = request(k, first, Title="words", Author="Me", Build="3", Copyright="(c)",
                     Priority="12")
    k.click("Protected?")

    def has(text):
        wait(lambda: k.find(title, "text").text() == text, f"the title {text!r}")

    def build(target):
        k.fill("Destination Tank Filename", target)
        k.close(k.press("Create", "View Log: " + target))
    build(first)
    # What is no number is refused, also where it was pasted and never left.
    k.fill("Title", "nothing")
    k.keys("ctrl+a", "ctrl+c")
    k.click("Priority")
    k.keys("ctrl+a", "ctrl+v", "Return")
    k.answer("Priority must be a number.", "OK", "Warning")
    k.focus_is("Priority")
    k.keys("ctrl+a")
    k.type("4")
    k.click("Protected?")
    build(second)
    k.close(dialog)
    dialog = request(k, first)
    has("words")
    assert [k.find(name, "text").text() for name in ("Author", "Build", "Copyright", "Priority")
            ] == ["Me", "3", "(c)", "12"] and k.find("Protected?").has("checked")
    k.fill("Destination Tank Filename", second)
    has("nothing")
    assert k.find("Priority", "text").text() == "4" and not k.find("Protected?").has("checked")
    k.fill("Build", "5")
    k.fill("Destination Tank Filename", first)
    assert k.find(title, "text").text() == "nothing" and k.find("Build", "text").text() == "5"
    k.close(dialog)


def try_a_long_log_is_cut_and_saved_whole(k):
    target, saved = k.desk.path("mod", "a.dsres"), k.desk.path("mod", "log.txt")
    dialog = request(k, target, Title="flood", Build="70")
    view = k.press("Create", "View Log: " + target)
    state_is(k, "finished, start cut off")
    k.keys("ctrl+s")
    k.choose(saved)
    wait(lambda: os.path.getsize(saved) == 70_000_000 // 64 * 64, "all that was written")
    k.close(view)
    k.close(dialog)


@needs(windows="only")
def try_blanks_are_warned_about_where_the_builder_gets_one_line(k):
    """Once a dialog; there it is a job that is stopped."""
    source = k.desk.path("my mod")
    os.mkdir(source)
    target = k.path_there(k.desk.path("a.dsres"))
    dialog = open_dialog(k, "Rapid Zeltor")
    for text, steps in ((k.path_there(source), 2), (target, 2), ("wait", 0)):
        k.type(text)
        k.keys(*["Tab"] * steps)
    for answer in ("No", "Yes", None):
        k.keys("alt+c", on=dialog)
        if answer:
            k.answer("The builder gets its paths without quotes, and may cut these at blanks: "
                     f"{k.path_there(source)} Start it anyway?", answer, "Warning")
        if answer != "No":
            view = k.window("View Log: " + target)
            state_is(k, "running")
            k.click("Stop")
            state_is(k, "stopped")
            k.close(view)
    k.close(dialog)
