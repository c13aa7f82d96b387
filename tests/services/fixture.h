#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "services/files.h"
#include "services/filesystem.h"
#include "support/recordinghost.h"
#include "support/system.h"
#include "support/tempfolder.h"

// What the tests of the services share.
namespace kestrel::test {

using Lines = std::vector<std::string>;
using Texts = std::vector<std::wstring>;

// A fresh program whose files stand in a temporary folder.
class Services : public testing::Test {
  protected:
    Services() { gProgram().folder = folder.path(); }

    RecordingHost host;
    TempFolder folder;
};

// What the user is told and asked, but for what the test takes, stands in golden/TEST.txt, which
// KESTREL_WRITE=1 writes.
class ToldServices : public Services {
  protected:
    void TearDown() override {
        const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
        const std::filesystem::path file = KESTREL_TOLD + test + ".txt";
        std::string all;
        const std::string here = shown(folder.path());
        for (std::string line : host.log) {
            const std::size_t at = line.find(here);
            all += (at == line.npos ? line : line.replace(at, here.size(), "FOLDER")) + "\n";
        }
        const bool writes = std::getenv("KESTREL_WRITE") != nullptr && !all.empty();
        if (writes) std::ofstream(file, std::ios::binary) << all;
        std::ifstream golden(file, std::ios::binary);
        EXPECT_EQ(all, std::string(std::istreambuf_iterator<char>(golden), {}));
    }
    Lines told() { return std::exchange(host.log, {}); }
};

// The error of `body` as "number: description"; empty when there is none.
inline std::string errorOf(const std::function<void()>& body) {
    try {
        body();
        return {};
    } catch (const RunTimeError& error) {
        return std::to_string(error.number()) + ": " + shown(error.description());
    }
}

}  // namespace kestrel::test
