#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "support/shown.h"
#include "support/system.h"
#include "support/tempfolder.h"
#include "tank/build.h"
#include "tank/launcher.h"

namespace kestrel::test {

// A launcher of the stand-in for the builder, which plays the part that it is told. It leaves no
// temporary files behind.
class Launching : public testing::Test {
  protected:
    Launching() { setTemporaryFolder(temporary.native()); }

    void TearDown() override {
        reader.reset();
        launcher.reset();
        setTemporaryFolder({});
        // One may stay until the system has let go of what the program had open.
        waitUntil([this] { return temporary.names().empty(); });
    }

    // Waits until `holds`, for some seconds at most.
    static void waitUntil(const std::function<bool()>& holds) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!holds()) {
            ASSERT_LT(std::chrono::steady_clock::now(), limit);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    Launcher::Result start(const std::wstring& part) {
        text.clear();
        BuildRequest request;
        request.source = L"S";
        request.target = target;
        request.build = build;
        request.title = part;
        return startProgram(zeltorCommandLine(request, builder), builder, zeltorWords(request));
    }

    Launcher::Result startProgram(const std::wstring& line, const std::wstring& program,
                                  const std::vector<std::wstring>& words) {
        const Launcher::Result result = launcher->start(line, program, words);
        if (result == Launcher::kStarted) reader.emplace(launcher->log());
        return result;
    }

    // Waits until the builder has written all.
    void waitForAll() const {
        waitUntil([this] { return folder.bytes(L"archive.dsres.done") == "done"; });
    }

    // Takes the next piece of output; true once there will be none.
    bool poll() {
        const bool more = launcher->poll();
        piece = reader->next().text;
        text += piece;
        return !more && piece.empty() && launcher->log()->end;
    }

    std::string state() const { return shown(launcher->log()->stateText()); }

    // All that the started program writes.
    std::string written() {
        waitUntil([this] { return poll(); });
        return shown(std::exchange(text, {}));
    }

    // All that the builder writes as `part`.
    std::string play(const std::wstring& part) {
        EXPECT_EQ(start(part), Launcher::kStarted) << shown(launcher->errorText());
        return written();
    }

    const std::wstring builder = L"" KESTREL_STUB_BUILDER;
    TempFolder folder;
    TempFolder temporary;
    std::wstring target = folder.path(L"archive.dsres");
    std::unique_ptr<Launcher> launcher = makeLauncher();
    std::wstring build;  // for the stand-in
    std::optional<LogReader> reader;
    std::wstring text;
    std::wstring piece;
};

}  // namespace kestrel::test
