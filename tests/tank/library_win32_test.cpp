#include <windows.h>

#include <filesystem>

#include "services/process.h"
#include "tank/archives.h"

namespace kestrel {
namespace {

namespace fs = std::filesystem;
using test::Lines;

class WindowsLibrary : public test::Archives {
  protected:
    WindowsLibrary() {
        fs::create_directory(files.native(L"own"));
        fs::create_directory(files.native(L"current"));
    }
    ~WindowsLibrary() override { fs::current_path(before_); }

    void use(const char* file) {
        library.reset();
        fs::copy_file(file, files.native(L"own\\tank.dll"), fs::copy_options::overwrite_existing);
        library = makeTankLibrary({files.path(L"own")});
        gProgram().host.tank = library.get();
    }

    // Opens and closes an archive; false when it does not open.
    bool opens() const {
        TankHandle tank = gOpenTank(archive);
        return tank != 0 && glngCloseTank(tank) == 7;
    }

    const std::wstring archive = put("tank\n.file|name=a.gas|size=10|comp=8|crc=-5|format=1\n");

  private:
    const fs::path before_ = fs::current_path();
};

TEST_F(WindowsLibrary, OperationsMayBearDecoratedNames) {
    use(KESTREL_DECORATED_TANK);
    EXPECT_EQ(sizeof(void*) == 4,
              ::GetProcAddress(::LoadLibraryW(files.path(L"own\\tank.dll").c_str()), "OpenTank") ==
                  nullptr);
    EXPECT_TRUE(opens());
    EXPECT_EQ(errors(), Lines{});
}

TEST_F(WindowsLibrary, OneForOtherProgramsIsRefusedInClearWords) {
    use(KESTREL_OTHER_TANK);
    EXPECT_FALSE(opens());
    const std::string bits = sizeof(void*) == 4 ? "32" : "64";
    EXPECT_EQ(errors(),
              Lines{"Error (48): Cannot load '" + test::shown(files.path(L"own\\tank.dll")) +
                    "': it is no library for a " + bits + "-bit program in 'gOpenTank'"});
}

TEST_F(WindowsLibrary, WhatItNeedsComesFromItsOwnFolder) {
    use(KESTREL_NEEDING_TANK);
    const fs::path helper = fs::absolute(KESTREL_HELPER);
    fs::copy_file(helper, files.native(L"current\\helper.dll"));
    fs::current_path(files.native(L"current"));
    EXPECT_FALSE(opens()) << "the current folder was searched";
    EXPECT_EQ(errors().size(), 1U);
    fs::copy_file(helper, files.native(L"own\\helper.dll"));
    EXPECT_TRUE(opens());
}

TEST_F(WindowsLibrary, ASettledProcessTakesNoneFromTheCurrentFolder) {
    fs::copy_file(KESTREL_HELPER, files.native(L"current\\planted.dll"));
    fs::current_path(files.native(L"current"));
    const HMODULE planted = ::LoadLibraryW(L"planted.dll");
    ASSERT_NE(planted, nullptr) << "it is not there to be found";
    ::FreeLibrary(planted);
    settleProcess();
    EXPECT_EQ(::LoadLibraryW(L"planted.dll"), nullptr);
    EXPECT_NE(::LoadLibraryW(L"version.dll"), nullptr);
}

}  // namespace
}  // namespace kestrel
