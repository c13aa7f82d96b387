#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "support/shown.h"
#include "support/tempfolder.h"
#include "tank/launcher.h"

namespace kestrel::test {

// A launcher of the stand-in for the builder, which plays the part that it is told.
class Launching : public testing::Test {
  protected:
    std::wstring line(const std::wstring& part) const {
        return builder + L" -source S -out " + target + L" -title \"" + part + L'"';
    }

    Launcher::Result start(const std::wstring& part) {
        text.clear();
        return launcher->start(line(part), builder);
    }

    // Takes output until `holds`, for some seconds at most.
    void pollUntil(const std::function<bool(const ProgramOutput&)>& holds) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        do {
            ASSERT_LT(std::chrono::steady_clock::now(), limit)
                << "after " << shown(text.substr(0, 1000));
            last = launcher->poll();
            text += last.text;
            if (last.text.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        } while (!holds(last));
    }

    void pollToEnd() {
        pollUntil([](const ProgramOutput& output) { return output.ended; });
    }

    // All that the builder writes as `part`.
    std::string play(const std::wstring& part) {
        EXPECT_EQ(start(part), Launcher::kStarted) << shown(launcher->errorText());
        pollToEnd();
        return shown(text);
    }

    const std::wstring builder = L"" KESTREL_STUB_BUILDER;
    TempFolder folder;
    std::wstring target = folder.path(L"archive.dsres");
    std::unique_ptr<Launcher> launcher = makeLauncher();
    std::wstring text;
    ProgramOutput last;
};

}  // namespace kestrel::test
