// The archive reports over a library that answers at random.
#include <array>
#include <limits>
#include <vector>

#include "fuzz/fuzz.h"
#include "tank/modTank.h"

namespace kestrel::fuzz {
namespace {

constexpr std::size_t kMostLongNames = 2;
constexpr std::size_t kMostSteps = 400;

// Every answer is taken from the input. A handful of handles makes directories
// meet themselves again.
class RandomLibrary final : public TankLibrary {
  public:
    RandomLibrary(Input& input, bool endless) : input_(input), endless_(endless) {}
    ~RandomLibrary() override { require(open_ == 0 && openData_ == 0); }

    TankHandle OpenTank(const char* path) override {
        require(*path != '\0');
        const TankHandle tank = handle();
        open_ += tank != 0 ? 1 : 0;
        return tank;
    }
    std::int32_t CloseTank(TankHandle tank) override {
        require(tank != 0 && open_-- > 0);
        return number();
    }
    ChildHandle GetRootDir(TankHandle tank) override {
        require(tank != 0 && open_ > 0);
        return handle();
    }
    std::int32_t GetChildCount(TankHandle, ChildHandle) override {
        const std::int32_t count = number();
        return endless_ ? count : std::min(count, kMostChildren);
    }
    std::int32_t GetChild(TankHandle, ChildHandle, std::int32_t index,
                          ChildHandle* child) override {
        require(index >= 0);
        const std::uint8_t choice = input_.byte();
        if (choice % 8 != 7) *child = choice % 16 - 4;
        return choice;
    }
    const char* GetChildName(TankHandle, ChildHandle) override { return text(); }
    const char* GetChildPath(TankHandle, ChildHandle) override { return text(); }
    std::int32_t IsDirectory(TankHandle, ChildHandle) override { return input_.byte() % 3 - 1; }
    std::int32_t GetChildSize(TankHandle, ChildHandle) override { return number(); }
    std::int32_t GetChildCompSize(TankHandle, ChildHandle) override { return number(); }
    std::int32_t GetChildCRC(TankHandle, ChildHandle) override { return number(); }
    std::int16_t GetChildFlags(TankHandle, ChildHandle) override { return half(); }
    std::int16_t GetChildFormat(TankHandle, ChildHandle) override { return half(); }

    // The data ends where the library says, or in a zero byte before.
    std::int32_t OpenChild(TankHandle, ChildHandle, const char** data) override {
        const std::uint8_t choice = input_.byte();
        if (choice % 4 == 0) return number();
        data_ = input_.line();
        *data = data_.c_str();
        ++openData_;
        const auto size = static_cast<std::int32_t>(data_.size());
        if (choice % 4 == 1) return size;
        // Half a billion is real text to the core, and too much for a fuzzer.
        const std::int32_t said = number();
        return said > kMostData && said < kTooMuch ? kMostData : said;
    }
    std::int32_t CloseChild(const char* data) override {
        require(data == data_.c_str() && openData_-- > 0);
        data_.clear();
        return number();
    }

  private:
    static constexpr std::int32_t kMostChildren = 40;
    static constexpr std::int32_t kMostData = 1 << 20;
    static constexpr std::int32_t kTooMuch = 1 << 30;

    TankHandle handle() { return input_.byte() % 8; }
    std::int16_t half() { return static_cast<std::int16_t>(number()); }

    std::int32_t number() {
        constexpr std::array<std::int32_t, 8> kOdd{std::numeric_limits<std::int32_t>::max(),
                                                   std::numeric_limits<std::int32_t>::min(),
                                                   -1,
                                                   0x7FFF,
                                                   0x8000,
                                                   0x10000,
                                                   4'000'001,
                                                   (1 << 27) + 1};
        const std::uint8_t choice = input_.byte();
        if (choice < 0xF0) return choice % 12;
        return kOdd[choice % kOdd.size()];
    }

    const char* text() {
        const std::uint8_t choice = input_.byte();
        if (choice == 0) return nullptr;
        if (choice == 0xFF && longNames_ < kMostLongNames) {
            ++longNames_;
            text_.assign(100'000, static_cast<char>(input_.byte() | 1));
        } else {
            text_ = input_.line();
        }
        return text_.c_str();
    }

    Input& input_;
    bool endless_;  // counts may be as large as they get: somebody cancels
    int open_ = 0;
    int openData_ = 0;
    std::size_t longNames_ = 0;
    std::string text_;
    std::string data_;
};

// Another dialog for each report, cancelled after a while.
void report(Input& input, QuietHost& host) {
    const std::uint8_t choice = input.byte();
    host.patience = input.byte() * std::size_t{256} % kMostSteps + 1;
    std::wstring text = L"before";
    const std::wstring path = choice % 16 == 15 ? L"" : L"/a.dsres";
    switch (choice % 4) {
        case 0:
            gblnListTank(path, text, nullptr, kNameList);
            break;
        case 1:
            gblnListTank(path, text, nullptr, kFullList);
            break;
        case 2: {
            const std::wstring searched = input.text();
            const bool found = gblnFindChild(path, searched, 0, text, nullptr);
            require(!found || text.find(L"IsDirectory: \t") != text.npos);
            break;
        }
        default: {
            RandomLibrary modest(input, false);
            gProgram().host.tank = &modest;
            gblnTestTank(path);
        }
    }
    require(!gProgram().progressShowing);
    require(text == L"before" || path == L"/a.dsres");
}

}  // namespace

void run(Input input) {
    QuietHost host;
    for (int i = 0; i < 4 && !input.empty(); ++i) {
        RandomLibrary library(input, true);
        gProgram().host.tank = &library;
        report(input, host);
    }
}

}  // namespace kestrel::fuzz
