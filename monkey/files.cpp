#include "monkey/files.h"

#include <filesystem>

namespace kestrel::test {
namespace {

namespace fs = std::filesystem;

std::string repeated(std::string_view part, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += part;
    return text;
}

std::string templates(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        const std::string id = std::to_string(i);
        text += "[t:template,n:thing_" + id + "]\r\n{\r\n\tspecializes = \"thing_" +
                std::to_string(i / 2) + "\";\r\n\tscreen_name = \"Thing " + id +
                "\";\r\n\t[look]\r\n\t{\r\n\t\tmodel = m_" + id + ";\r\n\t}\r\n}\r\n";
    }
    return text;
}

std::string properties(int count) {
    std::string text = "[t:template,n:wide]\r\n{\r\n";
    for (int i = 0; i < count; ++i) text += "p" + std::to_string(count - i) + " = 1;\r\n";
    return text + "}\r\n";
}

std::string everyByte() {
    std::string bytes;
    for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
    return bytes;
}

}  // namespace

MonkeyFiles::MonkeyFiles() {
    fs::create_directory(root_.native(L"profile"));
    fs::create_directories(root_.native(L"files") / "sub");
    copySamples();
    addHostile();
    addArchives();
    sources_.push_back(root_.path(L"files/missing.gas"));
    sources_.push_back(folder());
}

void MonkeyFiles::copySamples() {
    for (const auto& entry : fs::directory_iterator(KESTREL_SAMPLES)) {
        if (entry.path().extension() != ".gas") continue;
        const fs::path copy = root_.native(L"files") / entry.path().filename();
        fs::copy_file(entry.path(), copy);
        sources_.push_back(copy.wstring());
    }
}

void MonkeyFiles::add(std::wstring_view name, std::string_view bytes) {
    sources_.push_back(root_.put(std::wstring(L"files/").append(name), bytes));
}

void MonkeyFiles::addHostile() {
    add(L"empty.gas", "");
    add(L"nuls.gas", std::string(3000, '\0'));
    add(L"bytes.gas", "[t:template,n:" + everyByte() + "]\r\n{\r\nv = " + everyByte() + "\r\n}");
    add(L"openings.gas", repeated("[", 20'000));
    add(L"closings.gas", "[t:template,n:x]\n{" + repeated("}", 20'000));
    add(L"deep.gas", "[t:template,n:deep]\r\n{\r\n" + repeated("[a]\r\n{\r\n", 300));
    add(L"line.gas", "[t:template,n:l]{v=\"" + std::string(300'000, 'x') + "\";}");
    add(L"many.gas", templates(3'000));
    add(L"wide.gas", properties(8'000));
    add(L"loop.gas",
        "[t:template,n:a]\r\n{\r\nspecializes = b;\r\n}\r\n"
        "[t:template,n:b]\r\n{\r\nspecializes = a;\r\n}\r\n");
    add(L"nameless.gas",
        "[t:template,n:]\r\n{\r\n = ;\r\nspecializes = ;\r\n[]\r\n{\r\n}\r\n}\r\n");
    add(L"right to left \u202E.gas", "[t:template,n:\xE2\x80\xAE]\r\n{\r\na\t=\t1;\r\n}\r\n");
    add(L"sub/party.GAS", "[party]\n{\n[a]\n{\nx=1;\n}\n}\n");
}

void MonkeyFiles::addArchives() {
    const auto put = [this](std::wstring_view name, std::string_view bytes) {
        archives_.push_back(root_.put(std::wstring(L"files/").append(name), bytes));
    };
    put(L"plain.dsres",
        "tank\ndir|name=art|path=\n.file|name=a.gas|path=\\art|size=3|data=x\\0y\n");
    put(L"large.dsres", "tank\nfile|name=thing.gas|path=\\art|size=10|repeat=20000\n");
    put(L"lies.dsres",
        "tank|count=-1\nfile|name=a|bytes=2147483647|data=x\ndir|count=2147483647\n"
        ".dir|name=loop|up=0\nfile|size=5\ndir|name=n|nested=600\n");
    put(L"torn.dsres", "tan");
    archives_.push_back(root_.path(L"files/missing.dsres"));
    archives_.push_back(folder());
}

std::wstring MonkeyFiles::target(Random& random) const {
    static constexpr std::wstring_view kNames[] = {L"out.tab",   L"out.gas",     L"harbour.gas",
                                                   L"new.dsres", L"out",         L"sub",
                                                   L"none/out",  L"chain-a.gas", L"sub/a.tab"};
    return folder() + L"/" + std::wstring(random.of(kNames));
}

std::wstring MonkeyFiles::text(Random& random) const {
    static const std::wstring kWords[] = {L"",
                                          L" ",
                                          L"a",
                                          L"harbour",
                                          L"12",
                                          L"-5",
                                          L"screen_name",
                                          L"words",
                                          L"crash",
                                          L"dribble",
                                          L"streams",
                                          L"input",
                                          L"e\u0301\u00DF\u20AC",
                                          L"\"",
                                          L"a b|c",
                                          L"a&b",
                                          L"\u202E\u200F",
                                          L"\U0001F600",
                                          L"\t",
                                          L"line\r\nline",
                                          L"*.gas",
                                          L"%n%s%d",
                                          std::wstring(5'000, L'w')};
    switch (random.below(6)) {
        case 0:
            return source(random);
        case 1:
            return archive(random);
        case 2:
            return target(random);
        case 3:
            return folder();
        default:
            return random.of(kWords);
    }
}

}  // namespace kestrel::test
