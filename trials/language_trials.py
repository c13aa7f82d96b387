"""Every language, every name: the same day's work in each, and all of it is there afterwards."""

import os
import re
import shutil
import subprocess
import urllib.parse

from app import needs
from dialog_trials import ARCHIVE, convert, open_archive
from desk import wait
from save_trials import in_place
from tools_trials import said, tool

MARK = b"\xef\xbb\xbf"
ENGLISH = "[A-Z][a-z]+, [A-Z][a-z]+ [0-9]+, 20[0-9]+"
# The locale and the code page of its language, a word, a folder, a file, and how its dates look.
ROWS = (
    ("C", 1252, "café", os.fsdecode(b"no \xff\xfe text"), "bl ank  .gas", ENGLISH),
    ("en_US", 1252, "“smart”", "\"two\" 'quotes'", "a\nb.gas", ENGLISH),
    ("de_DE", 1252, "Größe", "Übung", "Straße.gas", "[A-Z][a-z]+, [0-9]+\\. [A-Z][a-zä]+ 20[0-9]+"),
    ("pl_PL", 1250, "łąka", "łukasz", "źdźbło.gas", "[a-złś]+, [0-9]+ [a-zźś]+ 20[0-9]+"),
    ("ru_RU", 1251, "Лодка", "Мои файлы", "гавань.gas", "[а-я]+, [0-9]+ [а-я]+ 20[0-9]+ г\\."),
    ("tr_TR", 1254, "Ağ İplik ışık", "Çağrı", "İstanbul.gas", "[0-9]+ \\w+ 20[0-9]+ \\w+"),
    ("el_GR", 1253, "Βάρκα", "Έγγραφα", "λιμάνι.gas", "[Α-Ω]\\w+,? [0-9]+ [Α-Ω]\\w+ 20[0-9]+"),
    ("ar_EG", 1256, "قارب", "مستندات", "ميناء.gas", "\\w+، [0-9٠-٩]+ \\w+ [0-9٠-٩]+"),
    ("ja_JP", 1252, "naïve", "日本語", "港" * 83 + "ab.gas", "20[0-9]+年[0-9]+月[0-9]+日.曜日"),
)
TEXT = ('[t:template,n:boat]\r\n{{\r\n\tdoc = "boat";\r\n\tscreen_name = "{0}";\r\n}}\r\n'
        '\r\n[t:template,n:other]\r\n{{\r\n\tdoc = "{0}";\r\n}}\r\n')


def locale_of(k, name):
    """What a program's environment needs for the locale, which is made for the trial."""
    if name == "C":
        return {"LC_ALL": "C"}
    subprocess.run(["localedef", "-i", name, "-f", "UTF-8", "--no-archive",
                    k.desk.path(name + ".UTF-8")], check=True)
    # The toolkit's own words stay English: the trial reads them.
    return {"LOCPATH": k.desk.path(), "LC_ALL": name + ".UTF-8", "LANGUAGE": "en"}


def address(path):
    return "file://" + urllib.parse.quote(os.fsencode(path))


def own_text(k, *path):
    """A file of the program's own, or a text that it made, in bytes of UTF-8."""
    data = k.read(*path)
    return data[3:] if data.startswith(MARK) else data.decode(k.page).encode()


def list_archive(k, archive, word):
    k.write(archive, ARCHIVE.replace("A.GAS", word).encode(k.page))
    dialog = open_archive(k, address(archive))
    k.click("Generate a list (Name or Full)")
    k.answer("Which list do you want?*", "Yes", "Question")
    view = k.window("Tank List: *")
    assert word in k.pane().text()
    k.close(view)
    k.close(dialog)


def edit(k, word):
    """Doubles the line of the word, so that it is pasted as well."""
    view = k.press("Source", "Edit Source: boat")
    text = k.pane()
    k.click(text.place(text.text().index("screen_name")))
    k.keys("Home", "shift+End", "ctrl+c", "End", "ctrl+v")
    wait(lambda: text.text().count(word) == 2, "the pasted word")
    in_place(k, view)
    k.close(view)


def work(k, locale, page, word, folder, file, date):
    k.page = f"cp{page}"
    env = locale_of(k, locale)
    # The program stands in such a folder, too, and so do its settings.
    os.rename(k.folder, k.desk.path(folder))
    k.folder = k.desk.path(folder)
    k.program = os.path.join(k.folder, "kestrel")
    shutil.copy(k.stub(k.tank), k.folder)
    mod = k.desk.path("mod", folder)
    path = k.write(os.path.join(mod, file), TEXT.format(word).encode(k.page))
    program = tool(k, "run", os.path.join("tools", folder))
    settings = MARK + os.fsencode(f"tool1=Run|{program}\r\n")
    k.write(os.path.join(k.folder, "settings.set"), settings)

    k.start(path, env=env)
    k.loaded(2)
    assert word in k.find("Properties").rows()[-1], k.find("Properties").rows()
    edit(k, word)
    line = f'screen_name = "{word}";'
    assert k.read(path) == TEXT.format(word).replace("\t" + line, "    " + line * 2).encode(k.page)
    assert [one for one in os.listdir(mod) if one.endswith(".bak")]
    dialog = convert(k, address(mod))
    done = "File conversion complete. Files processed: 1 Files converted: 1 Output *"
    k.answer(done, "OK", "Information")
    k.click("Single output file?")
    k.click("Convert")
    k.answer(done, "OK", "Information")
    k.close(dialog)
    for name in (file.replace(".gas", ".tab"), "Converted.tab"):
        text = own_text(k, mod, name)
        assert word.encode() in text and os.fsencode(path) in text, text
        assert re.search(f"\nDate:{date}\r", os.fsdecode(text)), text
    list_archive(k, os.path.join(mod, "a.dsres"), word)
    k.menu("Tools", "Run")
    assert said(k, program) == "<>"
    k.finish()
    assert own_text(k, k.folder, "settings.set") == settings[3:]
    assert own_text(k, k.folder, "info.his") == os.fsencode(path) + b"\r\n"

    k.start(env=env)
    k.focus_is("Path of the .gas file")
    k.keys("Down", "Return")
    k.loaded(2)
    k.finish()
    assert own_text(k, k.folder, "info.his") == os.fsencode(path) + b"\r\n"


def trial_of(row):
    return needs(opened=False)(lambda k: work(k, *row))


for each in ROWS:
    globals()["try_a_day_in_" + each[0]] = trial_of(each)


def try_another_encoding_is_chosen_for_a_file(k):
    path, word = k.sample("party.gas"), "Лодка"
    k.load(k.write(path, TEXT.format(word).encode("cp1251")))
    k.loaded(2)

    def chosen():
        k.menu("View", "Text Encoding")
        found = wait(lambda: [one.name for one in k.main.all() if one.role == "radio menu item"
                              and one.has("checked")], "a dot")
        k.keys("Escape")
        wait(lambda: k.main.has("active"), "a closed menu")
        return found
    assert chosen() == ["Western European (1252)"] and k.find("Properties").rows()[-1][1] != word
    k.menu("View", "Text Encoding", "Cyrillic (1251)")
    wait(lambda: k.find("Properties").rows()[-1][1] == word, "the word")
    edit(k, word)
    assert k.read(path).count(word.encode("cp1251")) == 3
    wait(lambda: k.find("Properties").rows()[-1][1] == word, "the word once more")
    assert chosen() == ["Cyrillic (1251)"]
    k.load(address(k.sample()))
    k.loaded(40)
    assert chosen() == ["Western European (1252)"]


@needs(opened=False)
def try_an_unknown_code_page_is_told(k):
    k.start(k.sample(), env={"KESTREL_CODEPAGE": "932"}, ready=False)
    k.answer('KESTREL_CODEPAGE: There is no code page "932"; there are 874, 1250, *', "OK",
             "Warning")
    k.main = k.window("Kestrel Template Browser (*")
    k.loaded(40)


@needs(windows="only", opened=False)
def try_windows_of_every_code_page(k):
    """Windows takes its code page from the locale here; of the last one that is 932."""
    for locale, page, word, folder, file, _ in ROWS[2:]:
        k.page = f"cp{page}"
        env = locale_of(k, locale)
        path = k.write(k.desk.path("mod", folder, file[-20:]), TEXT.format(word).encode(k.page))
        for _ in range(2):
            k.start(path, env=env)
            k.loaded(2)
            wait(lambda: word in k.find("Properties").content, word)
            k.finish()
            assert own_text(k, k.folder, "info.his").decode() == k.path_there(path) + "\r\n"
        os.remove(os.path.join(k.folder, "info.his"))
