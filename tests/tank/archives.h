#pragma once

#include <gtest/gtest.h>

#include "services/bytes.h"
#include "services/files.h"
#include "services/filesystem.h"
#include "support/recordinghost.h"
#include "support/tempfolder.h"
#include "tank/modTank.h"

namespace kestrel::test {

using Lines = std::vector<std::string>;

// Archives that the stand-in library reads, through the library as a file. It
// ends the process when one of them is left open.
class Archives : public testing::Test {
  protected:
    Archives() { gProgram().host.tank = library.get(); }

    // Writes an archive file; tests/stubs/tank tells what its lines mean.
    std::wstring put(std::string_view lines) const { return files.put(L"a.dsres", lines); }

    // The library's calls for that file, where it says "log".
    std::string calls() const { return files.bytes(L"a.dsres.log"); }

    // The error reports so far, without the box around them.
    Lines errors() const {
        const std::string start = "ask: ";
        const std::string end = " | Kestrel | exclamation | ok";
        Lines lines;
        for (const std::string& line : host.logged(start)) {
            EXPECT_TRUE(line.ends_with(end)) << line;
            lines.push_back(line.substr(start.size(), line.size() - start.size() - end.size()));
        }
        return lines;
    }

    RecordingHost host;
    TempFolder files;
    std::unique_ptr<TankLibrary> library =
        makeTankLibrary({filesystem::absolutePath(folderOf(fromUtf8(KESTREL_TANK)))});
};

}  // namespace kestrel::test
