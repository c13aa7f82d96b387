// The archive reports over a library that answers at random.
#include <limits>

#include "base/error.h"
#include "fuzz/fuzz.h"
#include "services/guard.h"
#include "services/progress.h"
#include "tank/extract.h"
#include "tank/library.h"
#include "tank/reports.h"
#include "tank/wrappers.h"

namespace kestrel::fuzz {
namespace {

constexpr std::int32_t kMostChildren = 40;
constexpr std::int32_t kMostData = 1 << 20;
constexpr std::int32_t kTooMuch = 1 << 30;
constexpr std::size_t kMostLongNames = 2;

// Every answer is taken from the input. A handful of handles makes directories
// meet themselves again.
class RandomLibrary final : public TankLibrary {
  public:
    explicit RandomLibrary(Input& input) : input_(input) {}
    ~RandomLibrary() override { require(open_ == 0 && openData_ == 0); }

    TankHandle OpenTank(std::wstring_view path) override {
        require(!path.empty());
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
    // As large as it gets where somebody can cancel.
    std::int32_t GetChildCount(TankHandle, ChildHandle) override {
        return gProgram().progress != nullptr ? number() : std::min(number(), kMostChildren);
    }
    const TankEntry& GetChild(TankHandle tank, ChildHandle, std::int32_t index) override {
        require(index >= 0);
        const std::uint8_t choice = input_.byte();
        entry(tank, choice % 8 == 7 ? 0 : choice % 16 - 4);
        entry_.status = choice;
        return entry_;
    }
    const TankEntry& entry(TankHandle, ChildHandle child) override {
        entry_ = {0,        child,    text(),   text(), input_.byte() % 3 - 1,
                  number(), number(), number(), half(), half()};
        return entry_;
    }
    bool isLost(TankHandle) const override { return input_.empty(); }

    // The data ends where the library says, or in a zero byte before.
    std::int32_t OpenChild(TankHandle, ChildHandle, const char*& data) override {
        const std::uint8_t choice = input_.byte();
        if (choice % 4 == 0) return number();
        data_ = input_.line();
        data = data_.c_str();
        ++openData_;
        if (choice % 4 == 1) return static_cast<std::int32_t>(data_.size());
        // Half a billion is real text to the core, and too much for a fuzzer.
        const std::int32_t said = number();
        return said > kMostData && said < kTooMuch ? kMostData : said;
    }
    std::int32_t CloseChild(const char* data) override {
        require(data == data_.c_str() && openData_-- > 0);
        data_.clear();
        return number();
    }

    std::size_t bytesThere(const char* data) const override {
        require(data == data_.c_str());
        return data_.size();
    }

  private:
    TankHandle handle() { return input_.byte() % 8; }
    std::int16_t half() { return static_cast<std::int16_t>(number()); }

    std::int32_t number() {
        using Limits = std::numeric_limits<std::int32_t>;
        constexpr std::int32_t kOdd[] = {Limits::max(), Limits::min(), -1,        0x7FFF,
                                         0x8000,        0x10000,       4'000'001, (1 << 27) + 1};
        const std::uint8_t choice = input_.byte();
        return choice < 0xF0 ? choice % 12 : kOdd[choice % std::size(kOdd)];
    }

    std::string text() {
        const std::uint8_t choice = input_.byte();
        const bool isLong = choice == 0xFF && longNames_++ < kMostLongNames;
        return isLong ? std::string(100'000, static_cast<char>(input_.byte() | 1))
                      : std::string(input_.line());
    }

    Input& input_;
    int open_ = 0;
    int openData_ = 0;
    std::size_t longNames_ = 0;
    TankEntry entry_;
    std::string data_;
};

// What a window shows of an archive; what it extracts goes where it may.
void look(Input& input) {
    const ProgressScope scope(nullptr, nullptr, L"");
    TankContents contents(L"/a.dsres", scope.dialog());
    const auto column = static_cast<TankColumn>(input.byte() % 7);
    const auto order = contents.sorted(column, input.byte() % 2 == 0, nullptr);
    require(order.size() == contents.items().size());
    const auto hits = contents.inFolder(0, input.text(), order);
    require(hits.size() < order.size());
    for (std::uint32_t i = 0; i < contents.items().size() && i < 50; ++i) {
        const TankItem& item = contents.items()[i];
        require(item.end > i &&
                (i == 0 || (item.parent < i && item.end <= contents.items()[item.parent].end)));
        const std::wstring name = safeName(contents.name(i));
        require(!name.empty() && name.find_first_of(L"/\\:") == name.npos &&
                name.find_last_not_of(L". ") == name.size() - 1 && safeName(name) == name);
        contents.text(i, column);
        if (item.isFolder) continue;
        try {
            require(contents.read(i).size() == static_cast<std::size_t>(item.size));
        } catch (const RunTimeError&) {
            // What cannot be had is told.
        }
    }
}

// Another dialog for each report, cancelled after a while.
void report(Input& input, test::RecordingHost& host) {
    const std::uint8_t choice = input.byte();
    host.progressSteps = 0;
    host.cancelAt = input.byte() * std::size_t{2};
    std::wstring text = L"before";
    const std::wstring path = choice % 16 == 15 ? L"" : L"/a.dsres";
    if (choice % 4 == 0) gblnListTank(path, text, nullptr, kNameList);
    if (choice % 4 == 1) gblnListTank(path, text, nullptr, kFullList);
    if (choice % 4 == 2 && gblnFindChild(path, input.text(), 0, text, nullptr)) {
        require(text.find(L"IsDirectory: \t") != text.npos);
    }
    if (choice % 4 == 3) gblnTestTank(path);
    if (choice >= 0xC0) guarded(L"look", [&] { look(input); });
    require(gProgram().progress == nullptr);
    require(text == L"before" || path == L"/a.dsres");
}

}  // namespace

void run(Input input, test::RecordingHost& host) {
    for (int i = 0; i < 4 && !input.empty(); ++i) {
        RandomLibrary library(input);
        gProgram().host.tank = &library;
        report(input, host);
    }
}

}  // namespace kestrel::fuzz
