#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <functional>

#include "gas/chain.h"
#include "gas/load.h"
#include "services/bytes.h"
#include "services/files.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"
#include "tank/modTank.h"
#include "text/convert.h"
#include "text/render.h"

// Much more than anybody has. The times are told; the bounds only catch what takes
// far too long.
namespace kestrel::test {
namespace {

namespace fs = std::filesystem;

class Load : public testing::Test {
  protected:
    static double milliseconds(const std::function<void()>& work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> time =
            std::chrono::steady_clock::now() - start;
        EXPECT_LT(time, std::chrono::minutes(1));
        return time.count();
    }

    std::wstring put(const std::string& text) const { return folder.put(L"big.gas", text); }

    // Loads the file and makes its text.
    std::wstring loadAndRender(std::wstring path, std::size_t templateCount) {
        std::vector<GasTemplate> templates;
        std::wstring text;
        const double load =
            milliseconds([&] { EXPECT_TRUE(gblnLoadGas(path, templates, nullptr)); });
        const double render =
            milliseconds([&] { text = gstrMakeFileText(path, templates, nullptr, 0, nullptr); });
        EXPECT_EQ(templates.size(), templateCount);
        std::printf("loaded in %.0f ms, rendered in %.0f ms\n", load, render);
        return text;
    }

    RecordingHost host;
    TempFolder folder;
};

TEST_F(Load, HundredThousandTemplates) {
    std::string text;
    for (int i = 0; i < 100'000; ++i) {
        text += "[t:template,n:t" + std::to_string(i) + "]\r\n{\r\nx = " + std::to_string(i) +
                ";\r\n}\r\n";
    }
    const std::wstring rendered = loadAndRender(put(text), 100'000);
    EXPECT_NE(rendered.find(L"99999"), rendered.npos);
}

TEST_F(Load, ATemplateOfAMillionProperties) {
    std::string text = "[t:template,n:big]\r\n{\r\n";
    for (int i = 0; i < 1'000'000; ++i) text.append("x").append(std::to_string(i)) += " = 1;\r\n";
    const std::wstring rendered = loadAndRender(put(text + "}\r\n"), 1);
    EXPECT_NE(rendered.find(L"x999999"), rendered.npos);
}

TEST_F(Load, TenThousandFilesOfAFolder) {
    for (int i = 0; i < 10'000; ++i) {
        folder.put(std::to_wstring(i) + L".gas", "[t:template,n:a]\r\n{\r\nx = 1;\r\n}\r\n");
    }
    for (const std::int16_t options : {std::int16_t{0}, kSingleFile}) {
        std::wstring path = folder.path();
        std::wstring summary;
        Progress* progress = nullptr;
        const double time = milliseconds([&] {
            EXPECT_TRUE(gblnConvertFolder(path, summary, L"", options, L"", &host, progress));
        });
        EXPECT_NE(summary.find(L"Files converted: 10000"), summary.npos);
        std::printf("10,000 files converted in %.0f ms\n", time);
    }
    EXPECT_EQ(folder.names().size(), 20'001U);
    EXPECT_EQ(host.logged("ask"), std::vector<std::string>{});
}

// Each click walks one level up; the last ones come back to a name.
TEST_F(Load, ALongChainAndALoop) {
    std::string text;
    for (int i = 0; i < 10'000; ++i) {
        text += "[t:template,n:t" + std::to_string(i) + "]\r\n{\r\nname = \"t" + std::to_string(i) +
                "\";\r\nspecializes = \"t" + std::to_string((i + 1) % 10'000) + "\";\r\n}\r\n";
    }
    const std::wstring path = put(text);
    SpecializesChain chain;
    const double time = milliseconds([&] { chain.open(L"t0", path); });
    EXPECT_GE(chain.nodes().size(), 10'000U);
    std::printf("a loop of 10,000 shown in %.0f ms\n", time);
}

TEST_F(Load, ArchivesAreClosedAsOftenAsOpened) {
    const auto library = makeTankLibrary({std::wstring(folderOf(fromUtf8(KESTREL_TANK)))});
    gProgram().host.tank = library.get();
    const std::wstring path = folder.put(
        L"a.dsres", "tank\nfile|name=a.gas|data=abc\ndir|name=b\nfile|name=c.gas|bytes=9\n");
    const double time = milliseconds([&] {
        for (int i = 0; i < 10'000; ++i) {
            std::wstring report;
            EXPECT_TRUE(gblnFindChild(path, i % 2 == 0 ? L"a" : L"c", 0, report, nullptr));
        }
    });
    // The stand-in library ends the process when anything was left open.
    gProgram().host.tank = nullptr;
    std::printf("10,000 archives searched in %.0f ms\n", time);
}

}  // namespace
}  // namespace kestrel::test
