#pragma once

#include <gtest/gtest.h>

#include "support/recordinghost.h"
#include "support/tempfolder.h"
#include "tank/library.h"
#include "tank/reports.h"
#include "tank/wrappers.h"

namespace kestrel::test {

// Archives that the stand-in library reads, in its process.
class Archives : public testing::Test {
  protected:
    void use(std::vector<std::wstring> folders) {
        library = makeTankLibrary(std::move(folders), L"" KESTREL_TANK_HOST);
        gProgram().host.tank = library.get();
    }

    // Puts the library of that kind into a folder of this test.
    void place(std::wstring_view folder, const std::string& kind = "") const {
        const fs::path name = dynamic::tankFileName();
        fs::create_directories(files.native(folder));
        fs::copy_file(stubs / ("kestrel_stub_tank" + kind) / name, files.native(folder) / name);
    }

    // Opens and closes an archive; false when it does not open.
    bool opens() const {
        TankHandle tank = gOpenTank(files.put(L"a.dsres", "tank\n"));
        return tank != 0 && glngCloseTank(tank) == 7;
    }

    static std::string replaced(std::string text,
                                const std::vector<std::pair<std::string, std::string>>& names) {
        for (const auto& [from, to] : names) text = test::replaced(std::move(text), from, to);
        return text;
    }

    // `text` with names in the place of what differs from run to run.
    std::string told(std::wstring_view text) const {
        return replaced(shown(text), {{shown(files.path(L"a.dsres")), "ARCHIVE"},
                                      {shown(files.path()), "FOLDER"},
                                      {shown(dynamic::tankFileName()), "LIBRARY"},
                                      {shown(filesystem::executableFolder()), "PROGRAM"},
                                      {"invalid ELF header", "no library"},
                                      {"it is no library for a 32-bit program", "no library"}});
    }

    // The error reports since the last time, without the box around them.
    Lines errors() {
        Lines errors = host.logged("ask: ");
        host.log.clear();
        for (std::string& line : errors) {
            line = replaced(told(fromUtf8(line)),
                            {{"ask: ", ""}, {" | Kestrel | exclamation | ok", ""}});
        }
        return errors;
    }

    const fs::path stubs = fs::absolute(KESTREL_TANK_STUBS);
    RecordingHost host;
    TempFolder files;
    std::unique_ptr<TankLibrary> library;
};

}  // namespace kestrel::test
