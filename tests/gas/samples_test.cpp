// The samples, from their bytes to the bytes of their text.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "gas/modGas.h"
#include "services/bytes.h"
#include "support/recordinghost.h"
#include "text/render.h"

namespace kestrel {
namespace {

namespace fs = std::filesystem;

const fs::path kSamples = KESTREL_SAMPLES;
const fs::path kGolden = KESTREL_GOLDEN;

std::string bytesOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path << " cannot be read";
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<GasTemplate> loadSample(const std::string& name) {
    std::wstring path = fromUtf8((kSamples / (name + ".gas")).string());
    std::vector<GasTemplate> templates;
    EXPECT_TRUE(gblnLoadGas(path, templates, nullptr)) << name;
    return templates;
}

class Sample : public testing::TestWithParam<const char*> {
  protected:
    test::RecordingHost host_;  // its clock stands still
};

TEST_P(Sample, GivesItsGoldenText) {
    const std::string name = GetParam();
    const std::wstring path = L"C:\\mods\\" + fromUtf8(name) + L".gas";
    const std::wstring text = gstrMakeFileText(path, loadSample(name), nullptr, 0, nullptr);
    EXPECT_EQ(narrow(text), bytesOf(kGolden / (name + ".tab")));
}

constexpr const char* kNames[] = {
    "chain-a", "chain-b",  "chain-c",    "comments-first", "harbour", "high-bytes", "info",
    "lf-only", "one-line", "mixed-ends", "party",          "single",  "tides"};

INSTANTIATE_TEST_SUITE_P(All, Sample, testing::ValuesIn(kNames), [](const auto& sample) {
    std::string name = sample.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST(Samples, AllHaveAGoldenText) {
    std::size_t count = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(kSamples)) {
        count += entry.path().extension() == ".gas" ? 1U : 0U;
    }
    EXPECT_EQ(count, std::size(kNames));
}

// A checkout that turned line ends would leave the other tests green.
TEST(Samples, KeepTheLineEndsThatTheyAreFor) {
    EXPECT_EQ(bytesOf(kSamples / "lf-only.gas").find('\r'), std::string::npos);
    EXPECT_NE(bytesOf(kSamples / "harbour.gas").find("{\r\n"), std::string::npos);
    const std::string mixed = bytesOf(kSamples / "mixed-ends.gas");
    EXPECT_NE(mixed.find("{\r\n"), std::string::npos);
    EXPECT_NE(mixed.find("[legend]\n"), std::string::npos);
}

TEST(Samples, ChainLeadsOverThreeFiles) {
    const test::RecordingHost host;
    std::wstring name = L"dinghy_tender";
    for (const char* file : {"chain-a", "chain-b", "chain-c"}) {
        const GasTemplate record = gudtSearchForTemplate(loadSample(file), L"name", name);
        ASSERT_FALSE(record.Name.empty()) << file;
        name = gstrFindPropertyVal(record, L"specializes");
    }
    EXPECT_EQ(name, L"");
    EXPECT_EQ(gstrGetTemplateHistory(loadSample("chain-a"), L"dinghy_tender"),
              L"Tender of the cutter|dinghy_painted");
    EXPECT_EQ(gstrGetTemplateHistory(loadSample("harbour"), L"crate_tea"),
              L"Tea chest|Small crate|Base wooden prop|Base prop|");
}

}  // namespace
}  // namespace kestrel
