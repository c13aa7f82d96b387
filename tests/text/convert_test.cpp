#include "text/convert.h"

#include <map>
#include <span>

#include "services/fixture.h"

namespace kestrel::test {
namespace {

constexpr const char* kFile = "[t:template,n:tar]\r\n{\r\na = 1;\r\nb = 2;\r\nc = 3;\r\n}\r\n";

std::wstring counts(int processed, int converted) {
    return L"Files processed: " + std::to_wstring(processed) + L"\r\nFiles converted: " +
           std::to_wstring(converted) + L"\r\n";
}

class Convert : public Services {
  protected:
    void convert(std::int16_t options = 0, std::wstring_view output = {},
                 std::wstring_view header = {}) {
        EXPECT_TRUE(
            gblnConvertFolder(source, summary, output, options, header, &host, progress, &outcome));
    }

    const std::wstring here = folder.path() + kSeparator;
    std::wstring source = folder.path();
    std::wstring summary;
    Progress* progress = nullptr;
    ConversionOutcome outcome;
};

TEST_F(Convert, SamplesGiveTheirGoldenTexts) {
    std::map<fs::path, std::string> golden;
    for (const auto& entry : fs::recursive_directory_iterator(KESTREL_SOURCES "/tests/golden")) {
        if (entry.is_directory()) continue;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        // Their folder there has another name.
        golden[entry.path().filename()] = replaced(text, "C:\\mods\\", toUtf8(here));
    }
    EXPECT_EQ(golden.size(), 18U);
    for (const auto& entry : fs::recursive_directory_iterator(KESTREL_SOURCES "/samples")) {
        if (entry.is_directory()) continue;
        fs::copy_file(entry.path(), folder.native() / entry.path().filename());
    }
    std::string together;
    for (const auto& entry : fs::directory_iterator(folder.native())) {
        const auto text = golden.find(entry.path().filename().replace_extension(".tab"));
        if (text != golden.end()) together += text->second;
    }
    const std::wstring ledger = L"\r\nNot converted:\r\nledger.gas: it holds no .gas data\r\n";
    summary = L"Before\r\n";
    convert(7, {}, conversionHeader(L" T ", L"", L"", L""));
    const std::wstring above = L"Before\r\n" + counts(19, 18);
    EXPECT_EQ(folder.bytes(L"Converted.tab"),
              "Title:  T \r\nAuthor: \r\nBuild: \r\nCopyright: \r\n" + toUtf8(above) +
                  std::string(25, '+') + "\r\n" + together)
        << "in the folder's order";
    EXPECT_EQ(summary, above + L"Output filename: " + here + L"Converted.tab\r\n" + ledger);
    const std::size_t before = folder.names().size();

    summary.clear();
    convert(5, {}, L"head\r\n");
    for (const auto& [name, text] : golden) {
        EXPECT_EQ(folder.bytes(fromUtf8(name.string())), "head\r\n" + text) << name;
    }
    EXPECT_EQ(summary, counts(19, 18) + L"Output folder: " + here + L"\r\n" + ledger);
    EXPECT_EQ(folder.names().size(), before + golden.size());
    EXPECT_EQ(host.logged("ask"), Lines{}) << "a file without data is only listed";
}

TEST_F(Convert, OnlyGasFilesCountWhateverTheirCase) {
    for (const wchar_t* name : {L"c.gas.bak", L"cgas", L"gas"}) folder.put(name, kFile);
    fs::create_directory(folder.native(L"e.gas"));
    for (const wchar_t* name : {L"", L"missing", L"cgas"}) {
        source = folder.path(name);
        EXPECT_FALSE(gblnConvertFolder(source, summary, folder.path(L"out.tab"), kSingleFile, {},
                                       &host, progress));
        EXPECT_EQ(source, folder.path(name) + kSeparator);
    }
    EXPECT_EQ(summary, L"");
    EXPECT_EQ(host.log, Lines{});
    for (const wchar_t* name : {L"a.Gas", L"b.GAS", L".gas"}) folder.put(name, kFile);
    source = here;
    convert();
    EXPECT_EQ(source, here) << "no second separator";
    EXPECT_EQ(summary, counts(3, 3) + L"Output folder: " + here + L"\r\n");
    EXPECT_EQ(folder.names(), (Lines{".gas", ".tab", "a.Gas", "a.tab", "b.GAS", "b.tab",
                                     "c.gas.bak", "cgas", "e.gas", "gas"}));
}

TEST_F(Convert, ItsDialogIsShownAndGone) {
    folder.put(L"a.gas", kFile);
    convert();
    EXPECT_EQ(host.log, (Lines{"disable", "Process: Processing: ", "SubProcess: ", "show: owner",
                               "Overall: File 1 of 1", "Process: Processing: a.gas",
                               "Process: Processing: Template0", "unload", "enable", "focus"}));
    EXPECT_EQ(progress, nullptr);
}

// At every step of the work: each output is whole or as it was before.
TEST_F(Convert, ACancelLeavesWholeFiles) {
    constexpr int kFiles = 40;
    for (int i = 0; i < kFiles; ++i) folder.put(std::to_wstring(i) + L".gas", kFile);
    for (int step = 0; step < kFiles * 4; ++step) {  // one a property
        for (int i = 0; i < kFiles; ++i) folder.put(std::to_wstring(i) + L".tab", "old");
        summary.clear();
        host.progressSteps = 0;
        host.cancelAt = static_cast<std::size_t>(step);
        convert();
        EXPECT_EQ(summary, counts(kFiles, step / 4) + L"Output folder: " + here + L"\r\n");
        int kept = 0;
        for (int i = 0; i < kFiles; ++i) {
            const std::string text = folder.bytes(std::to_wstring(i) + L".tab");
            kept += text == "old" ? 1 : 0;
            EXPECT_TRUE(text == "old" || text.ends_with("\r\n" + std::string(50, '*') + "\r\n"));
        }
        EXPECT_EQ(kept, kFiles - step / 4);
    }
}

TEST_F(Convert, ACancelWritesNoSingleFile) {
    folder.put(L"a.gas", kFile);
    folder.put(L"b.gas", kFile);
    folder.put(L"Converted.tab", "old");
    // Between the templates of a file too, whose single property shows no odd percentage.
    for (const bool breathing : {false, true}) {
        summary.clear();
        host.breaths = 0;
        (breathing ? host.cancelAtBreath : host.cancelAt) = breathing ? 2 : 6;
        convert(kSingleFile);
        EXPECT_EQ(closingMessage(outcome, summary),
                  L"File conversion cancelled.\r\n\r\n" + counts(2, 0));
        EXPECT_EQ(folder.bytes(L"Converted.tab"), "old");
        host.cancelAt = static_cast<std::size_t>(-1);
    }
}

TEST_F(Convert, FailuresAreGatheredAndTheRestIsConverted) {
    for (int i = 100; i < 123; ++i) {
        folder.put(std::to_wstring(i) + L".gas", kFile);
        fs::create_directory(folder.native(std::to_wstring(i) + L".tab"));
    }
    folder.put(L"b.gas", kFile);
    convert();
    ASSERT_EQ(host.logged("ask").size(), 1U) << "the first";
    EXPECT_NE(host.logged("ask")[0].find("): Cannot write '" + toUtf8(here)), std::string::npos);
    EXPECT_EQ(folder.names().size(), 48U);
    ASSERT_EQ(outcome.leftOut.size(), 23U);
    std::wstring text = L"File conversion complete.\r\n\r\n" + counts(24, 1) + L"Output folder: " +
                        here + L"\r\n\r\nNot converted:\r\n";
    for (const LeftOut& one : std::span(outcome.leftOut).first(20)) {
        text += one.name + L": " + one.reason + L"\r\n";
        EXPECT_TRUE(one.reason.starts_with(L"Cannot write '" + one.name.substr(0, 3) + L".tab': "));
    }
    EXPECT_EQ(closingMessage(outcome, summary), text + L"and 3 more\r\n");
}

TEST_F(Convert, ASingleFileIsCheckedBeforeTheWork) {
    const struct {
        const wchar_t* given;
        bool writes;
        const wchar_t* told;
    } cases[] = {
        {L"all", true, L"all.tab"},
        {L"x.y", true, L"x.y"},
        {L".all", true, L".all.tab"},
        {L"a.gas", false, L"a.gas: Cannot write 'a.gas': it is a .gas file\r\n"},
        {L"A.GAS", false, L"A.GAS: Cannot write 'A.GAS': it is a .gas file\r\n"},
        {L"kept", false, L"kept.tab: Cannot write 'kept.tab': it is write-protected\r\n"},
        {L"sub", false, L"sub: Cannot "},  // and why, in the system's own words
    };
    for (const wchar_t* name : {L"a.gas", L"A.GAS"}) folder.put(name, kFile);
    const int sources = static_cast<int>(folder.names().size());  // these may be one
    fs::permissions(folder.put(L"kept.tab", "old"), fs::perms::owner_read);
    fs::create_directory(folder.native(L"sub"));
    for (const auto& [given, writes, told] : cases) {
        summary.clear();
        if (writes) folder.put(told, "old");
        convert(kSingleFile, folder.path(given));
        const std::wstring expected =
            writes ? counts(sources, sources) + L"Output filename: " + folder.path(told) + L"\r\n"
                   : counts(sources, 0) + L"\r\nNot converted:\r\n" + told;
        EXPECT_EQ(summary.substr(0, expected.size()), expected);
        if (writes) {
            EXPECT_EQ(folder.bytes(told + std::wstring(L".bak")), "old");
        }
    }
    EXPECT_EQ(folder.bytes(L"a.gas") + folder.bytes(L"kept.tab"), std::string(kFile) + "old");
    fs::permissions(folder.native(L"kept.tab"), fs::perms::owner_all);
}

}  // namespace
}  // namespace kestrel::test
