#include "tank/library.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>

#include "base/bytes.h"
#include "base/error.h"
#include "base/packed.h"
#include "base/paths.h"
#include "services/files.h"
#include "services/program.h"
#include "services/progress.h"
#include "system/filesystem.h"
#include "system/pipedchild.h"

namespace kestrel {
namespace {

using namespace std::chrono_literals;
using tankhost::Ask;
using Time = std::chrono::steady_clock;

constexpr auto kBreath = 20ms;                           // between two looks at the window
constexpr auto kUnnoticed = 500ms;                       // a wait that needs no dialog
constexpr std::int32_t kBatch = 1024;                    // entries
constexpr std::size_t kMostKept = std::size_t{1} << 16;  // entries
constexpr std::size_t kMostQuestion = 60'000;            // bytes
constexpr std::wstring_view kNonsense = L"an answer that makes no sense";

// The wait for one answer. The windows go on meanwhile, in front of them the dialog of the
// operation or one of its own.
class Wait {
  public:
    Wait(std::wstring_view what, std::chrono::milliseconds patience)
        : what_(what), patience_(patience) {}

    // False once the user has cancelled, or waits no longer.
    bool goesOn() {
        if (gProgram().progress == nullptr && Time::now() - start_ > kUnnoticed) {
            own_.emplace(nullptr, nullptr, L"Waiting for the archive library...");
        }
        Progress* const dialog = gProgram().progress;
        if (dialog != nullptr) dialog->breathe();
        if (dialog != nullptr && dialog->DidCancel()) return false;
        if (Time::now() - asked_ < patience_) return true;
        const Answer answer = askUser(L"The archive library does not answer while " + what_ +
                                          L".\r\n\r\nDo you want to wait for it?",
                                      Icon::question, Buttons::yesNo);
        asked_ = Time::now();
        return answer == Answer::yes;
    }

  private:
    std::wstring what_;
    std::chrono::milliseconds patience_;
    Time::time_point start_ = Time::now();
    Time::time_point asked_ = start_;
    std::optional<ProgressScope> own_;
};

// The library in its process.
class HostedLibrary final : public TankLibrary {
  public:
    HostedLibrary(std::vector<std::wstring> folders, std::wstring host,
                  std::chrono::milliseconds patience)
        : folders_(std::move(folders)), host_(std::move(host)), patience_(patience) {}

    TankHandle OpenTank(std::wstring_view path) override {
        const std::wstring what = L"opening '" + std::wstring(path) + L"'";
        if (child_ == nullptr) start(what);
        TankHandle own = 0;
        try {
            const auto take = [&](PackedReader& answer) { own = answer.nextNumber<TankHandle>(); };
            if (child_ != nullptr) ask(what, take, Ask::open, path);
        } catch (...) {
            endIfIdle();
            throw;
        }
        if (own == 0) {
            endIfIdle();
            return 0;
        }
        archives_[++last_] = {own, std::wstring(path), {}, 0};
        return last_;
    }

    std::int32_t CloseTank(TankHandle tank) override {
        std::int32_t status = 0;
        // Forgotten first: what fails from here on must not keep the process.
        const auto closed = archives_.extract(tank);
        current_ = nullptr;
        if (!closed.empty() && closed.mapped().handle != 0) {
            ask(
                L"closing '" + closed.mapped().path + L"'",
                [&](PackedReader& answer) { status = answer.nextNumber<std::int32_t>(); },
                Ask::close, closed.mapped().handle);
        }
        endIfIdle();
        return status;
    }

    ChildHandle GetRootDir(TankHandle tank) override {
        ChildHandle root = 0;
        askAbout(
            tank, L"reading",
            [&](PackedReader& answer) { root = answer.nextNumber<ChildHandle>(); }, Ask::root);
        return root;
    }

    std::int32_t GetChildCount(TankHandle tank, ChildHandle directory) override {
        const Batch* batch = kept(tank, directory);
        if (batch == nullptr) batch = fetch(tank, directory, 0);
        return batch == nullptr ? 0 : batch->count;
    }

    const TankEntry& GetChild(TankHandle tank, ChildHandle directory, std::int32_t index) override {
        const Batch* batch = kept(tank, directory);
        if (batch == nullptr || !batch->has(index)) batch = fetch(tank, directory, index);
        if (batch == nullptr || !batch->has(index)) return none();
        current_ = &batch->entries[static_cast<std::size_t>(index) - batch->first];
        currentTank_ = tank;
        return *current_;
    }

    const TankEntry& entry(TankHandle tank, ChildHandle child) override {
        if (current_ != nullptr && current_->handle == child && currentTank_ == tank) {
            return *current_;
        }
        single_ = {};
        current_ = nullptr;
        const bool told = askAbout(
            tank, L"reading an entry of", [&](PackedReader& answer) { single_ = entryOf(answer); },
            Ask::entry, child);
        if (!told) return none();
        current_ = &single_;
        currentTank_ = tank;
        return single_;
    }

    std::int32_t OpenChild(TankHandle tank, ChildHandle child, const char*& data) override {
        constexpr std::wstring_view kReading = L"reading the data of an entry of";
        data = nullptr;
        std::int32_t count = 0;
        std::int32_t number = 0;
        askAbout(
            tank, kReading,
            [&](PackedReader& answer) {
                count = answer.nextNumber<std::int32_t>();
                number = answer.nextNumber<std::int32_t>();
            },
            Ask::openChild, child);
        if (number == 0) return count;
        Data opened{tank, number, {}, 0};
        const auto size = static_cast<std::size_t>(count > kMostData ? 0 : std::max(count, 0));
        while (opened.bytes.size() < size) {
            const std::size_t place = opened.bytes.size();
            if (!askAbout(
                    tank, kReading,
                    [&](PackedReader& answer) { opened.bytes += answer.nextBytes(); },
                    Ask::readChild, number, place, size - place)) {
                return 0;
            }
            if (opened.bytes.size() == place) break;
        }
        // What is said to be there and is not.
        opened.there = std::min(opened.bytes.size(), size);
        opened.bytes.resize(size);
        auto held = std::make_unique<Data>(std::move(opened));
        data = held->bytes.data();
        opened_[data] = std::move(held);
        return count;
    }

    std::int32_t CloseChild(const char* data) override {
        std::int32_t status = 0;
        const auto opened = opened_.extract(data);
        if (opened.empty()) return 0;
        askAbout(
            opened.mapped()->tank, L"reading",
            [&](PackedReader& answer) { status = answer.nextNumber<std::int32_t>(); },
            Ask::closeChild, opened.mapped()->number);
        return status;
    }

    std::size_t bytesThere(const char* data) const override {
        const auto opened = opened_.find(data);
        return opened == opened_.end() ? 0 : opened->second->there;
    }

    bool isLost(TankHandle tank) const override {
        const auto archive = archives_.find(tank);
        return archive == archives_.end() || archive->second.handle == 0;
    }

  private:
    // Some of the entries of a directory, one after the other.
    struct Batch {
        bool has(std::int32_t index) const {
            return index >= 0 && static_cast<std::size_t>(index) >= first &&
                   static_cast<std::size_t>(index) - first < entries.size();
        }

        std::int32_t count = 0;  // of the directory, as the library tells it
        std::size_t first = 0;
        std::vector<TankEntry> entries;
    };
    struct Archive {
        TankHandle handle = 0;  // the library's own; 0 once it is lost
        std::wstring path;
        std::unordered_map<ChildHandle, Batch> batches;  // by their directories
        std::size_t kept = 0;                            // entries in them, at most
    };
    struct Data {
        TankHandle tank;
        std::int32_t number;
        std::string bytes;
        std::size_t there;
    };

    static const TankEntry& none() {
        static const TankEntry kNone;
        return kNone;
    }

    static TankEntry entryOf(PackedReader& answer) {
        TankEntry entry;
        tankhost::eachField(
            entry, [&](std::string& text) { text = answer.nextBytes(); },
            [&](auto& number) { number = answer.nextNumber<std::decay_t<decltype(number)>>(); });
        return entry;
    }

    const Batch* kept(TankHandle tank, ChildHandle directory) {
        const auto archive = archives_.find(tank);
        if (archive == archives_.end()) return nullptr;
        const auto batch = archive->second.batches.find(directory);
        return batch == archive->second.batches.end() ? nullptr : &batch->second;
    }

    // Asks for the entries of the directory from `first` on, and keeps those that come with
    // them of directories inside.
    const Batch* fetch(TankHandle tank, ChildHandle directory, std::int32_t first) {
        constexpr std::wstring_view kListing = L"listing a folder of";
        std::vector<std::pair<ChildHandle, Batch>> batches;
        bool whole = true;
        const auto take = [&](PackedReader& answer) {
            while (!answer.atEnd()) {
                auto& [of, batch] = batches.emplace_back();
                of = answer.nextNumber<ChildHandle>();
                batch.count = answer.nextNumber<std::int32_t>();
                batch.first =
                    batches.size() == 1 ? static_cast<std::size_t>(std::max(first, 0)) : 0;
                PackedReader entries(answer.nextBytes());
                while (!entries.atEnd()) batch.entries.push_back(entryOf(entries));
                whole = whole && entries.isWhole();
            }
        };
        if (!askAbout(tank, kListing, take, Ask::children, directory, first, kBatch))
            return nullptr;
        Archive& archive = archives_.at(tank);
        if (!whole) refuse(std::wstring(kListing) + L" '" + archive.path + L"'", kNonsense);
        current_ = nullptr;
        if (archive.kept > kMostKept) {
            archive.batches.clear();
            archive.kept = 0;
        }
        for (auto& [of, batch] : batches) {
            archive.kept += batch.entries.size() + 1;
            archive.batches[of] = std::move(batch);
        }
        return kept(tank, directory);
    }

    // Where the library is looked for.
    std::vector<std::wstring> folders() const {
        if (!folders_.empty()) return folders_;
        std::vector<std::wstring> folders{filesystem::executableFolder()};
        if (gProgram().folder != folders.front()) folders.push_back(gProgram().folder);
        return folders;
    }

    void start(const std::wstring& what) {
        const dynamic::HostCommand command = dynamic::hostCommand(
            folders(), host_.empty()
                           ? sharedFile(kWindowsPaths ? L"kestrel-tank.exe" : L"kestrel-tank")
                           : host_);
        if (command.program.empty()) {
            throw RunTimeError(kFileNotFound,
                               L"Cannot find 'kestrel-tank', which reads archives: install all of "
                               L"Kestrel again");
        }
        if (!command.notice.empty() && !std::exchange(noticed_, true)) {
            tellUser(command.notice, Icon::information);
        }
        child_ = std::make_unique<PipedChild>(command.program, command.words);
        stream_.emplace(tankhost::kMostFrame);
        try {
            std::string version;
            ask(
                what, [&](PackedReader& answer) { version = answer.nextBytes(); }, Ask::load,
                tankhost::kVersion, command.library);
            if (child_ != nullptr && version != tankhost::kVersion) refuse(what, kNonsense);
        } catch (...) {
            lose();
            throw;
        }
    }

    template <class Take, class... Fields>
    bool askAbout(TankHandle tank, std::wstring_view doing, Take take, Ask ask,
                  const Fields&... fields) {
        if (isLost(tank)) return false;
        const Archive& archive = archives_.at(tank);
        const std::wstring what = std::wstring(doing) + L" '" + archive.path + L"'";
        if (ask == Ask::readChild || ask == Ask::closeChild) {
            return this->ask(what, take, ask, fields...);
        }
        return this->ask(what, take, ask, archive.handle, fields...);
    }

    // Hands the answer to `take`. False when the user did not wait for it.
    template <class Take, class... Fields>
    bool ask(const std::wstring& what, Take take, Ask ask, const Fields&... fields) {
        PackedWriter question;
        question.addNumber(static_cast<int>(ask));
        (add(question, fields), ...);
        if (question.size() > kMostQuestion) {
            throw RunTimeError(kPathError, L"The name is too long for the archive library");
        }
        PackedWriter frame;
        frame.add(std::string_view(question.bytes()));
        const std::optional<std::string> bytes = exchange(frame.bytes(), what);
        if (!bytes) return false;
        PackedReader answer(*bytes);
        if (const int error = answer.nextNumber<int>()) throw RunTimeError(error, answer.next());
        take(answer);
        if (!answer.isWhole()) refuse(what, kNonsense);
        return true;
    }

    static void add(PackedWriter& question, std::wstring_view text) { question.add(text); }
    static void add(PackedWriter& question, std::string_view bytes) { question.add(bytes); }
    template <class Number>
    requires std::is_integral_v<Number>
    static void add(PackedWriter& question, Number number) { question.addNumber(number); }

    std::optional<std::string> exchange(std::string_view question, const std::wstring& what) {
        if (!child_->send(question)) stop(what);
        Wait wait(what, patience_);
        for (;;) {
            if (std::optional<std::string> answer = stream_->next()) {
                if (!stream_->isEmpty()) refuse(what, kNonsense);
                return answer;
            }
            if (stream_->isWrong()) refuse(what, kNonsense);
            const std::optional<std::string> bytes = child_->receive(kBreath);
            if (!bytes) stop(what);
            stream_->add(*bytes);
            if (!wait.goesOn()) {
                lose();
                return std::nullopt;
            }
        }
    }

    [[noreturn]] void stop(const std::wstring& what) { refuse(what, child_->end()); }

    [[noreturn]] void refuse(const std::wstring& what, std::wstring_view why) {
        lose();
        throw RunTimeError(kDeviceError, L"The archive library stopped working while " + what +
                                             L" (" + std::wstring(why) + L")");
    }

    // Ends the process; what was open is lost.
    void lose() {
        child_.reset();
        current_ = nullptr;
        for (auto& [tank, archive] : archives_) archive = {0, std::move(archive.path), {}, 0};
    }

    void endIfIdle() {
        if (archives_.empty()) lose();
    }

    std::vector<std::wstring> folders_;
    std::wstring host_;
    std::chrono::milliseconds patience_;
    bool noticed_ = false;
    std::unique_ptr<PipedChild> child_;
    std::optional<PackedStream> stream_;
    TankHandle last_ = 0;
    std::map<TankHandle, Archive> archives_;
    std::map<const char*, std::unique_ptr<Data>> opened_;
    const TankEntry* current_ = nullptr;  // that was answered last; null where it may be gone
    TankHandle currentTank_ = 0;
    TankEntry single_;
};

}  // namespace

std::wstring findInFolders(const std::vector<std::wstring>& folders, std::wstring_view name) {
    for (const std::wstring& folder : folders) {
        std::wstring path = joinPath(folder, name);
        if (dynamic::isFullPath(folder) && fileExists(path)) return path;
    }
    return {};
}

void throwNoLibrary(const std::vector<std::wstring>& folders) {
    std::wstring places;
    for (const std::wstring& folder : folders) {
        if (!dynamic::isFullPath(folder)) continue;
        places.append(places.empty() ? L" in '" : L" or '").append(folder).append(L"'");
    }
    throw RunTimeError(kFileNotFound, L"Cannot find the library '" +
                                          std::wstring(dynamic::tankFileName()) + L"'" + places);
}

std::unique_ptr<TankLibrary> makeTankLibrary(std::vector<std::wstring> folders, std::wstring host,
                                             std::chrono::milliseconds patience) {
    return std::make_unique<HostedLibrary>(std::move(folders), std::move(host), patience);
}

}  // namespace kestrel
