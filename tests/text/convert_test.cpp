#include "text/convert.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "services/bytes.h"
#include "services/filesystem.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"

namespace kestrel {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

const fs::path kSamples = KESTREL_SAMPLES "/folder";
const fs::path kGolden = KESTREL_GOLDEN "/folder";
constexpr const char* kPlus = "+++++++++++++++++++++++++\r\n";
constexpr const char* kLedger = "\\r\\nNot converted:\\r\\nledger.gas: it holds no .gas data\\r\\n";
constexpr const char* kFile = "[t:template,n:tar]\r\n{\r\na = 1;\r\nb = 2;\r\nc = 3;\r\n}\r\n";

std::string bytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path << " cannot be read";
    return {std::istreambuf_iterator<char>(file), {}};
}

class Convert : public testing::Test {
  protected:
    bool convert(std::int16_t options = 0, std::wstring_view output = {},
                 std::wstring_view header = {}) {
        return gblnConvertFolder(folder, summary, output, options, header, &host, progress,
                                 &outcome);
    }

    void copySamples() const {
        for (const auto& entry : fs::directory_iterator(kSamples)) {
            fs::copy_file(entry.path(), files.native() / entry.path().filename());
        }
    }

    // The golden text of a sample; there the folder is C:\mods.
    std::string golden(const fs::path& name) const {
        const std::string mods = "C:\\mods\\";
        std::string text = bytesOf(kGolden / name);
        return text.replace(text.find(mods), mods.size(), toUtf8(files.path()) + separator);
    }

    std::string here() const { return toUtf8(files.path()) + separator; }
    std::string shownSummary() const { return test::shown(summary); }

    const char separator = static_cast<char>(filesystem::separator());
    test::RecordingHost host;
    test::TempFolder files;
    std::wstring folder = files.path();
    std::wstring summary;
    Progress* progress = nullptr;
    ConversionOutcome outcome;
};

TEST_F(Convert, EachSampleGivesItsGoldenText) {
    copySamples();
    ASSERT_TRUE(convert());
    EXPECT_EQ(files.names(),
              (Lines{"HULLS.GAS", "HULLS.tab", "boats.gas", "boats.tab", "knots.gas", "knots.tab",
                     "ledger.gas", "strays.gas", "strays.tab", "timber.gas", "timber.tab"}));
    for (const auto& entry : fs::directory_iterator(kGolden)) {
        const fs::path name = entry.path().filename();
        EXPECT_EQ(bytesOf(files.native() / name), golden(name)) << name;
    }
    EXPECT_EQ(shownSummary(), "Files processed: 6\\r\\nFiles converted: 5\\r\\nOutput folder: " +
                                  here() + "\\r\\n" + kLedger);
    EXPECT_EQ(host.logged("ask"), Lines{}) << "a file without data is only listed";
}

TEST_F(Convert, SamplesInOneFileStandInTheFoldersOrder) {
    copySamples();
    std::string together;
    for (const auto& entry : fs::directory_iterator(files.native())) {
        if (entry.path().stem() == "ledger") continue;
        together += golden(entry.path().filename().replace_extension(".tab"));
    }
    summary = L"Before\r\n";
    ASSERT_TRUE(convert(kSingleFile, {}, conversionHeader(L" T ", L"", L"", L"")));
    const std::string counts = "Before\r\nFiles processed: 6\r\nFiles converted: 5\r\n";
    EXPECT_EQ(files.bytes(L"Converted.tab"),
              "Title:  T \r\nAuthor: \r\nBuild: \r\nCopyright: \r\n" + counts + kPlus + together);
    EXPECT_EQ(shownSummary(), test::shown(fromUtf8(counts + "Output filename: " + here())) +
                                  "Converted.tab\\r\\n" + kLedger);
    EXPECT_EQ(files.bytes(L"boats.tab"), "(missing)");
}

TEST_F(Convert, OnlyGasFilesCountWhateverTheirCase) {
    for (const wchar_t* name : {L"a.Gas", L"b.GAS", L".gas", L"c.gas.bak", L"cgas", L"d.gasx"}) {
        files.put(name, kFile);
    }
    fs::create_directory(files.native(L"e.gas"));
    folder += filesystem::separator();
    const std::wstring given = folder;
    ASSERT_TRUE(convert());
    EXPECT_EQ(folder, given) << "no second separator";
    EXPECT_EQ(shownSummary(), "Files processed: 3\\r\\nFiles converted: 3\\r\\nOutput folder: " +
                                  here() + "\\r\\n");
    EXPECT_EQ(files.names(), (Lines{".gas", ".tab", "a.Gas", "a.tab", "b.GAS", "b.tab", "c.gas.bak",
                                    "cgas", "d.gasx", "e.gas"}));
}

TEST_F(Convert, AFolderWithoutFilesIsLeftAlone) {
    files.put(L"readme.txt", kFile);
    const std::wstring missing = files.path(L"missing");
    for (const std::wstring& name : {files.path(), missing, files.path(L"readme.txt")}) {
        folder = name;
        EXPECT_FALSE(convert(kSingleFile, files.path(L"out.tab")));
        EXPECT_EQ(folder, name + filesystem::separator());
    }
    EXPECT_EQ(summary, L"");
    EXPECT_EQ(host.log, Lines{});
    EXPECT_EQ(files.names(), Lines{"readme.txt"});
}

TEST_F(Convert, OptionsAreBits) {
    files.put(L"a.gas", kFile);
    const std::wstring output = files.path(L"all.txt");
    ASSERT_TRUE(convert(5, output, L"head\r\n"));
    EXPECT_EQ(files.bytes(L"a.tab").substr(0, 16), "head\r\nFilename: ");
    ASSERT_TRUE(convert(7, output, L"head\r\n"));
    EXPECT_EQ(files.bytes(L"all.txt").substr(0, 23), "head\r\nFiles processed: ");
    EXPECT_EQ(toUtf8(summary).substr(toUtf8(summary).rfind("Output")),
              "Output filename: " + toUtf8(output) + "\r\n");
}

TEST_F(Convert, ABorrowedDialogStaysAndItsOwnIsShownAndGone) {
    files.put(L"a.gas", kFile);
    Lines log{"Overall: File 1 of 1", "Process: Processing: a.gas",
              "Process: Processing: Template0"};
    const auto borrowed = host.makeProgress();
    progress = borrowed.get();
    ASSERT_TRUE(convert());
    EXPECT_EQ(progress, borrowed.get());
    EXPECT_EQ(host.liveDialogs, 1U);
    EXPECT_EQ(host.log, log);
    host.log.clear();
    progress = nullptr;
    ASSERT_TRUE(convert());
    log.insert(log.begin(), {"disable", "Process: Processing: ", "SubProcess: ", "show: owner"});
    log.insert(log.end(), {"unload", "enable", "focus"});
    EXPECT_EQ(host.log, log);
    EXPECT_EQ(progress, nullptr);
    EXPECT_FALSE(gProgram().progressShowing);
}

// At every step of the work: each output is whole or as it was before.
TEST_F(Convert, ACancelLeavesWholeFiles) {
    constexpr std::size_t kFiles = 40;
    constexpr std::size_t kSteps = kFiles * 4;  // one a property
    for (std::size_t i = 0; i < kFiles; ++i) files.put(std::to_wstring(i) + L".gas", kFile);
    for (std::size_t step = 0; step < kSteps; ++step) {
        for (std::size_t i = 0; i < kFiles; ++i) files.put(std::to_wstring(i) + L".tab", "old");
        summary.clear();
        host.progressSteps = 0;
        host.cancelAt = step;
        ASSERT_TRUE(convert());
        std::size_t converted = 0;
        for (std::size_t i = 0; i < kFiles; ++i) {
            const std::string text = files.bytes(std::to_wstring(i) + L".tab");
            if (text == "old") continue;
            ++converted;
            EXPECT_TRUE(text.ends_with("Comments:\r\n" + std::string(50, '*') + "\r\n")) << text;
        }
        EXPECT_EQ(converted, step / 4);
        EXPECT_EQ(shownSummary(),
                  "Files processed: 40\\r\\nFiles converted: " + std::to_string(converted) +
                      "\\r\\nOutput folder: " + here() + "\\r\\n");
    }
}

TEST_F(Convert, ACancelWritesNoSingleFile) {
    files.put(L"a.gas", kFile);
    files.put(L"b.gas", kFile);
    files.put(L"Converted.tab", "old");
    // Between the templates of a file too, whose single property shows no odd percentage.
    for (const bool breathing : {false, true}) {
        summary.clear();
        host.breaths = 0;
        (breathing ? host.cancelAtBreath : host.cancelAt) = breathing ? 2 : 6;
        ASSERT_TRUE(convert(kSingleFile));
        EXPECT_EQ(summary, L"Files processed: 2\r\nFiles converted: 0\r\n");
        EXPECT_EQ(files.bytes(L"Converted.tab"), "old");
        EXPECT_TRUE(outcome.cancelled);
        EXPECT_EQ(closingMessage(outcome, L"x"), L"File conversion cancelled.\r\n\r\nx");
        host.cancelAt = static_cast<std::size_t>(-1);
    }
}

TEST_F(Convert, FailuresAreGatheredAndTheRestIsConverted) {
    constexpr int kFiles = 23;
    for (int i = 100; i < 100 + kFiles; ++i) {
        files.put(std::to_wstring(i) + L".gas", kFile);
        fs::create_directory(files.native(std::to_wstring(i) + L".tab"));
    }
    files.put(L"b.gas", kFile);
    ASSERT_TRUE(convert());
    ASSERT_EQ(host.logged("ask").size(), 1U) << "the first";
    EXPECT_NE(host.logged("ask")[0].find("): Cannot write '" + here()), std::string::npos);
    EXPECT_EQ(files.bytes(L"b.tab").substr(0, 10), "Filename: ");
    EXPECT_EQ(files.names().size(), 2U * kFiles + 2);
    const std::string text = toUtf8(summary);
    EXPECT_TRUE(text.starts_with("Files processed: 24\r\nFiles converted: 1\r\n")) << text;
    EXPECT_TRUE(text.ends_with("\r\nand 3 more\r\n")) << text;
    ASSERT_EQ(outcome.leftOut.size(), std::size_t{kFiles});
    const std::string name = toUtf8(outcome.leftOut[0].name.substr(0, 3));
    EXPECT_EQ(toUtf8(outcome.leftOut[0].reason).substr(0, 24), "Cannot write '" + name + ".tab': ");
    EXPECT_EQ(text.find(here(), text.find("Not converted")), std::string::npos);
}

TEST_F(Convert, ASingleFileIsCheckedBeforeTheWork) {
    const struct {
        const wchar_t* given;
        const char* written;  // or why not
    } cases[] = {
        {L"all", "all.tab"},
        {L"x.y", "x.y"},
        {L".all", ".all.tab"},
        {L"a.gas", "Cannot write 'a.gas': it is a .gas file"},
        {L"A.GAS", "Cannot write 'A.GAS': it is a .gas file"},
        {L"kept", "Cannot write 'kept.tab': it is write-protected"},
        {L"sub", nullptr},  // in the system's own words
    };
    files.put(L"a.gas", kFile);
    fs::permissions(files.put(L"kept.tab", "old"), fs::perms::owner_read);
    fs::create_directory(files.native(L"sub"));
    for (const auto& c : cases) {
        files.put(L"A.GAS", kFile);
        const bool writes =
            c.written != nullptr && std::string_view(c.written).find(' ') == std::string_view::npos;
        if (writes) files.put(fromUtf8(c.written), "old");
        summary.clear();
        ASSERT_TRUE(convert(kSingleFile, files.path(c.given)));
        const bool named = summary.find(L"Output filename: ") != summary.npos;
        EXPECT_EQ(named, writes) << shownSummary();
        ASSERT_EQ(outcome.leftOut.size(), writes ? 0U : 1U);
        if (writes) {
            EXPECT_EQ(files.bytes(fromUtf8(c.written) + L".bak"), "old") << c.written;
        } else if (c.written != nullptr) {
            EXPECT_EQ(toUtf8(outcome.leftOut[0].reason), c.written);
        }
    }
    EXPECT_EQ(files.bytes(L"a.gas") + files.bytes(L"kept.tab"), std::string(kFile) + "old");
    fs::permissions(files.native(L"kept.tab"), fs::perms::owner_all);
}

}  // namespace
}  // namespace kestrel
