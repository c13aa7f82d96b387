#include "tank/wrappers.h"

#include <functional>

#include "tank/archives.h"

namespace kestrel {
namespace {

using test::Lines;
using test::shown;

class Wrappers : public test::Archives {
  protected:
    // Opens the archive of `lines`; `child` is then its first entry.
    void open(std::string_view lines) {
        close();
        tank = gOpenTank(put(lines));
        ASSERT_NE(tank, 0);
        root = library->GetRootDir(tank);
        glngGetChild(tank, root, 0, child);
    }

    void close() { glngCloseTank(tank); }
    void TearDown() override { close(); }

    std::wstring dataOf(std::string_view fields) {
        open("tank\nfile|" + std::string(fields));
        return gstrGetChildDataRAW(tank, child, count);
    }

    TankHandle tank = 0;
    ChildHandle root = 0;
    ChildHandle child = 0;
    std::int32_t count = -77;
};

// Each wrapper, called with a handle; what it gives as text.
struct Row {
    const char* routine;
    std::function<std::wstring(TankHandle)> call;
};

std::wstring textOf(const std::wstring& text) {
    return L"'" + text + L"'";
}
std::wstring textOf(std::int32_t number) {
    return std::to_wstring(number);
}

std::vector<Row> everyWrapper() {
    static ChildHandle child;
    static const char* data;
    static std::int32_t count;
    const auto row = [](const char* name, auto call) {
        return Row{name, [call](TankHandle tank) { return textOf(call(tank)); }};
    };
    return {
        row("glngCloseTank", [](TankHandle tank) { return glngCloseTank(tank); }),
        row("glngGetChildCount", [](TankHandle tank) { return glngGetChildCount(tank, 1); }),
        row("glngGetChild", [](TankHandle tank) { return glngGetChild(tank, 1, 0, child); }),
        row("gstrGetChildName", [](TankHandle tank) { return gstrGetChildName(tank, 1); }),
        row("gstrGetChildPath", [](TankHandle tank) { return gstrGetChildPath(tank, 1); }),
        row("gblnIsDirectory", [](TankHandle tank) { return int{gblnIsDirectory(tank, 1)}; }),
        row("glngGetChildSize", [](TankHandle tank) { return glngGetChildSize(tank, 1); }),
        row("glngGetChildCompSize", [](TankHandle tank) { return glngGetChildCompSize(tank, 1); }),
        row("glngGetChildCRC", [](TankHandle tank) { return glngGetChildCRC(tank, 1); }),
        row("gintGetChildFlags", [](TankHandle tank) { return int{gintGetChildFlags(tank, 1)}; }),
        row("gintGetChildFormat", [](TankHandle tank) { return int{gintGetChildFormat(tank, 1)}; }),
        row("glngOpenChild", [](TankHandle tank) { return glngOpenChild(tank, 1, data); }),
        row("glngCloseChild",
            [](TankHandle tank) { return glngCloseChild(tank == 0 ? nullptr : "data"); }),
        row("gstrGetChildDataRAW",
            [](TankHandle tank) { return gstrGetChildDataRAW(tank, 1, count); }),
        row("gOpenTank", [](TankHandle tank) { return gOpenTank(tank == 0 ? L"" : L"a.dsres"); }),
    };
}

// A library that cannot be loaded fails at each call; without a handle there is none.
TEST_F(Wrappers, AFailureIsReportedOnceUnderTheRoutinesName) {
    const auto missing = makeTankLibrary({files.path(L"none")});
    for (const Row& row : everyWrapper()) {
        host.log.clear();
        gProgram().host.tank = missing.get();
        const std::wstring result = row.call(0);
        EXPECT_TRUE(result == L"0" || result == L"''") << row.routine;
        gProgram().host.tank = nullptr;
        EXPECT_EQ(row.call(-5), result) << row.routine;
        EXPECT_EQ(host.log, Lines{});
        gProgram().host.tank = missing.get();
        EXPECT_EQ(row.call(-5), result) << row.routine;
        const bool inner = row.routine == std::string("gstrGetChildDataRAW");
        const std::string routine = inner ? "glngOpenChild" : row.routine;
        ASSERT_EQ(errors().size(), 1U) << row.routine;
        EXPECT_TRUE(errors()[0].ends_with(" in '" + routine + "'")) << errors()[0];
    }
}

TEST_F(Wrappers, NumbersComeBackAsTheyAre) {
    open(
        "tank\n"
        "dir|name=a|size=2147483647|comp=-1|crc=-2147483648|flags=-32768|format=32767|isdir=-4\n"
        ".file|name=b\n"
        ".file|name=c|isdir=256\n");
    EXPECT_EQ(glngGetChildSize(tank, child), 2147483647);
    EXPECT_EQ(glngGetChildCompSize(tank, child), -1);
    EXPECT_EQ(glngGetChildCRC(tank, child), -2147483647 - 1);
    EXPECT_EQ(gintGetChildFlags(tank, child), -32768);
    EXPECT_EQ(gintGetChildFormat(tank, child), 32767);
    EXPECT_TRUE(gblnIsDirectory(tank, child));
    EXPECT_EQ(glngGetChildCount(tank, child), 2);
    ChildHandle inner = 0;
    EXPECT_EQ(glngGetChild(tank, child, 0, inner), 1);
    EXPECT_FALSE(gblnIsDirectory(tank, inner));
    glngGetChild(tank, child, 1, inner);
    EXPECT_TRUE(gblnIsDirectory(tank, inner));
    EXPECT_EQ(toUtf8(gstrGetChildName(tank, inner)), "c");
    EXPECT_EQ(glngGetChild(tank, child, 2, inner), -1);
    EXPECT_EQ(inner, 0) << "an entry that was not given";
    const char* data = "stale";
    EXPECT_EQ(glngOpenChild(tank, 0, data), 0);
    EXPECT_EQ(data, nullptr);
    EXPECT_LT(tank, 0);
    EXPECT_EQ(glngCloseTank(tank), 7);
    EXPECT_EQ(tank, 0);
    EXPECT_EQ(glngCloseTank(tank), 0);
}

TEST_F(Wrappers, TextsAreWholeAndTheLibrarysOwn) {
    const std::string longName(255, 'n');
    const std::string longerPath = "\\" + std::string(100'000, 'p');
    const struct {
        std::string fields, name, path;
    } kRows[] = {
        {"name=a.gas|path=\\art", "a.gas", "\\art"},
        {"x", "", ""},
        {"name=|path=", "", ""},
        {"name= a |path= \\b ", " a ", " \\b "},
        {"name=" + longName + "|path=" + longerPath, longName, longerPath},
        {"name=" + longName + "x", longName + "x", ""},
        {"name=\xE9\x80\x81|path=\xFF", "\u00E9\u20AC\u0081", "\u00FF"},
        {"name=a\tb\x01", "a\\tb\\x01", ""},
    };
    for (const auto& row : kRows) {
        open("tank\nfile|" + row.fields + "\n");
        EXPECT_EQ(shown(gstrGetChildName(tank, child)), row.name);
        EXPECT_EQ(shown(gstrGetChildPath(tank, child)), row.path);
    }
}

TEST_F(Wrappers, DataIsCutAtItsFirstZeroAndFilledWithSpaces) {
    const std::string hundred = "0123456789\\0" + std::string(89, 'z');
    const std::string kept = "0123456789\\x00" + std::string(89, ' ');
    const struct {
        std::string fields, text;
        std::int32_t count;
    } kRows[] = {
        {"data=" + hundred, kept, 100},
        {"data=abc", "abc", 3},
        {"data=a\\0b\\0", "a\\x00  ", 4},
        {"data=\\0abc", "", 4},
        {"data=  \\0abc", "", 6},
        {"data= a \\0  ", " a \\x00  ", 6},
        {"data=", "", 0},
        {"data=\xE9\x80", "\u00E9\u20AC", 2},
        {"name=none", "", 0},
        // Counts that lie.
        {"data=abcdef|bytes=3", "abc", 3},
        {"data=abc\\0|bytes=9", "abc\\x00     ", 9},
        {"data=abc|bytes=-1", "", -1},
        {"data=abc|bytes=-2147483648", "", -2147483647 - 1},
        {"bytes=2147483647", "", 2147483647},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(shown(dataOf(row.fields)), row.text) << row.fields;
        EXPECT_EQ(count, row.count) << row.fields;
    }
    EXPECT_EQ(errors(), Lines{});
    EXPECT_EQ(dataOf("data=abc\\0|bytes=134217729"), L"") << "128 MB and a byte";
    EXPECT_EQ(count, 134217729);
    EXPECT_EQ(errors(), Lines{"Error (7): Out of memory in 'gstrGetChildDataRAW'"});
}

TEST_F(Wrappers, FormatsHaveNames) {
    const std::pair<std::int32_t, const char*> kRows[] = {
        {0, "RAW"}, {1, "ZLib"}, {2, "LZO"}, {3, "Unkown(Type: 3)"}, {-1, "Unkown(Type: -1)"}};
    for (const auto& [format, name] : kRows) EXPECT_EQ(toUtf8(gstrFormatName(format)), name);
}

}  // namespace
}  // namespace kestrel
