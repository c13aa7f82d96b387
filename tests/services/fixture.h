#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "support/recordinghost.h"
#include "support/stories.h"
#include "support/system.h"

// What the tests of the services share.
namespace kestrel::test {

using Texts = std::vector<std::wstring>;

// A fresh program whose files stand in a temporary folder.
class Services : public testing::Test {
  protected:
    Services() { gProgram().folder = folder.path(); }
    ~Services() override { setTemporaryFolder({}); }

    RecordingHost host;
    TempFolder folder;
};

// What the user is told and asked, but for what the test takes, stands in golden/TEST.txt.
class ToldServices : public Services {
  protected:
    void TearDown() override {
        const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
        std::string all;
        const std::string here = shown(folder.path());
        for (const std::string& line : host.log) all += replaced(line, here, "FOLDER") + "\n";
        expectGolden(KESTREL_SOURCES "/tests/services/golden/" + test + ".txt", all);
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
