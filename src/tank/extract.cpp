#include "tank/extract.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>

#include "base/error.h"
#include "base/paths.h"
#include "base/text.h"
#include "services/files.h"
#include "services/program.h"
#include "services/progress.h"
#include "system/filesystem.h"
#include "system/letters.h"

namespace kestrel {
namespace {

using filesystem::Standing;
using Numbers = TankContents::Numbers;

constexpr std::size_t kMostTold = 1000;
constexpr std::size_t kMostFailures = 100;  // in a row: the archive or the disk has gone
constexpr std::size_t kLongestPath = 30'000;
constexpr std::size_t kLongestName = 200;  // of 255: a number and ".bak" have to fit behind it

// Names that mean a device in any folder on Windows, whatever the extension.
bool isDevice(std::wstring_view name) {
    const std::wstring stem = lowerCase(trim(name.substr(0, name.find(L'.'))));
    constexpr std::array<std::wstring_view, 6> kDevices{L"con", L"prn",    L"aux",
                                                        L"nul", L"conin$", L"conout$"};
    if (std::ranges::find(kDevices, stem) != kDevices.end()) return true;
    constexpr std::wstring_view kPorts = L"0123456789\u00B9\u00B2\u00B3";
    return stem.size() == 4 && (stem.starts_with(L"com") || stem.starts_with(L"lpt")) &&
           kPorts.find(stem[3]) != kPorts.npos;
}

std::pair<std::wstring_view, std::wstring_view> parts(std::wstring_view name) {
    const std::size_t dot = std::min(name.rfind(L'.'), name.size());
    return {name.substr(0, dot), name.substr(dot)};
}

// Where the entries go: for each folder its path, and what stands or will stand there.
class Targets {
  public:
    Targets(const TankContents& contents, const Extraction& wanted, ExtractOutcome& outcome)
        : contents_(contents), keepsPaths_(wanted.keepsPaths), outcome_(outcome) {
        folders_.push_back({wanted.folder, {}, {}, Standing::folder});
    }

    struct Place {
        std::size_t folder;
        std::wstring name;
    };

    Place place(std::uint32_t number) {
        const std::size_t folder = keepsPaths_ ? folderOf(contents_.items()[number].parent) : 0;
        Place place{folder, freeName(folder, safeName(contents_.name(number)))};
        folders_[folder].names.emplace(lowerCase(place.name), kFile);
        tellRenamed(number, place.name);
        return place;
    }

    void addFolder(std::uint32_t number) {
        if (keepsPaths_) folderOf(number);
    }

    std::wstring path(const Place& place) const {
        return joinPath(folders_[place.folder].path, place.name);
    }
    // Why nothing can be written in the place's folder; empty when it can.
    const std::wstring& problem(const Place& place) const { return folders_[place.folder].problem; }
    Standing standing(const Place& place) const {
        if (folders_[place.folder].standing == Standing::nothing) return Standing::nothing;
        return filesystem::whatStands(path(place));
    }
    void makeFolder(const Place& place) { make(folders_[place.folder]); }
    void makeFolders() {
        for (Folder& folder : folders_) {
            if (folder.problem.empty()) make(folder);
        }
    }

    // The path to keep what stands at the place at.
    std::wstring backup(const Place& place) {
        constexpr std::size_t kMostBackups = 10'000;
        for (std::size_t i = 1; i < kMostBackups; ++i) {
            const std::wstring name = numbered(place.name + L".bak", i);
            std::wstring path = joinPath(folders_[place.folder].path, name);
            if (filesystem::whatStands(path) == Standing::nothing &&
                folders_[place.folder].names.emplace(lowerCase(name), kFile).second) {
                return path;
            }
        }
        throw RunTimeError(kPathError, L"No name is left for a backup");
    }

    void tell(std::wstring line) {
        if (outcome_.told.size() < kMostTold) {
            outcome_.told.push_back(std::move(line));
        } else {
            ++outcome_.untold;
        }
    }

  private:
    static constexpr std::size_t kFile = static_cast<std::size_t>(-1);

    struct Folder {
        std::wstring path;
        std::unordered_map<std::wstring, std::size_t> names;  // in small letters
        std::wstring problem;
        Standing standing;
    };

    static std::wstring numbered(const std::wstring& name, std::size_t number) {
        if (number == 1) return name;
        const auto [stem, extension] = parts(name);
        return std::wstring(stem) + L" (" + std::to_wstring(number) + L")" +
               std::wstring(extension);
    }

    std::wstring freeName(std::size_t folder, const std::wstring& name) {
        const auto& names = folders_[folder].names;
        if (!names.contains(lowerCase(name))) return name;
        // From the number on that is likely to be free: many files may have one name.
        std::size_t& last = lastNumbers_[{folder, lowerCase(name)}];
        std::wstring free;
        do {
            free = numbered(name, ++last + 1);
        } while (names.contains(lowerCase(free)));
        return free;
    }

    std::size_t folderOf(std::uint32_t number) {
        std::vector<std::uint32_t> way;
        auto known = known_.find(number);
        for (; number != 0 && known == known_.end(); known = known_.find(number)) {
            way.push_back(number);
            number = contents_.items()[number].parent;
        }
        std::size_t folder = number == 0 ? 0 : known->second;
        for (; !way.empty(); way.pop_back()) {
            folder = enter(folder, way.back());
            known_.emplace(way.back(), folder);
        }
        return folder;
    }

    std::size_t enter(std::size_t around, std::uint32_t number) {
        std::wstring name = safeName(contents_.name(number));
        const auto twin = folders_[around].names.find(lowerCase(name));
        if (twin != folders_[around].names.end()) {
            if (twin->second != kFile) {
                tellRenamed(number, fileName(folders_[twin->second].path));
                return twin->second;
            }
            name = freeName(around, name);
        }
        folders_[around].names.emplace(lowerCase(name), folders_.size());
        tellRenamed(number, name);
        Folder folder{joinPath(folders_[around].path, name),
                      {},
                      folders_[around].problem,
                      folders_[around].standing};
        look(folder);
        folders_.push_back(std::move(folder));
        return folders_.size() - 1;
    }

    static void look(Folder& folder) {
        if (!folder.problem.empty()) {
            folder.path.clear();  // of many in each other they would fill the memory
        } else if (folder.path.size() > kLongestPath) {
            folder.problem = L"its path is too long";
        } else if (folder.standing == Standing::folder) {
            folder.standing = filesystem::whatStands(folder.path);
            if (folder.standing == Standing::file) folder.problem = L"a file stands at '";
            if (folder.standing == Standing::other) folder.problem = L"a link stands at '";
            if (!folder.problem.empty()) folder.problem += folder.path + L"'";
        }
    }

    static void make(Folder& folder) {
        if (std::exchange(folder.standing, Standing::folder) == Standing::nothing) {
            filesystem::makeFolder(folder.path);
        }
    }

    void tellRenamed(std::uint32_t number, std::wstring_view name) {
        if (name == contents_.name(number)) return;
        tell(L"renamed: " + contents_.shownPath(number) + L" is now " + std::wstring(name));
    }

    struct PairHash {
        std::size_t operator()(const std::pair<std::size_t, std::wstring>& pair) const noexcept {
            return std::hash<std::wstring>()(pair.second) ^ pair.first * 0x9E3779B9U;
        }
    };

    const TankContents& contents_;
    bool keepsPaths_;
    ExtractOutcome& outcome_;
    std::vector<Folder> folders_;
    std::unordered_map<std::uint32_t, std::size_t> known_;
    std::unordered_map<std::pair<std::size_t, std::wstring>, std::size_t, PairHash> lastNumbers_;
};

class Extractor {
  public:
    Extractor(TankContents& contents, const Extraction& wanted, Owner* owner)
        : contents_(contents),
          targets_(contents, wanted, outcome_),
          scope_(nullptr, owner, L"Extracting: " + std::wstring(fileName(contents.path()))) {
        std::vector<bool> taken(contents.items().size());
        for (const std::uint32_t number : wanted.numbers) {
            const std::uint32_t end = std::max(contents.items()[number].end, number + 1);
            for (std::uint32_t i = number; i < end && !taken[i]; ++i) taken[i] = true;
        }
        for (std::uint32_t i = 1; i < taken.size(); ++i) {
            if (taken[i]) numbers_.push_back(i);
        }
    }

    ExtractOutcome run(const std::function<Existing(std::size_t)>& ask) {
        if (!plan()) return finished();
        const auto existing =
            static_cast<std::size_t>(std::ranges::count(files_, true, &File::exists));
        const Existing answer = existing == 0 ? Existing::skip : ask(existing);
        if (answer == Existing::stop) outcome_.stopped = true;
        for (std::size_t i = 0; i < files_.size() && goesOn(i, files_.size()); ++i) {
            if (files_[i].exists && answer == Existing::skip) {
                ++outcome_.skipped;
            } else {
                write(files_[i]);
            }
        }
        if (!outcome_.stopped) makeFolders();
        return finished();
    }

  private:
    struct File {
        std::uint32_t number;
        Targets::Place place;
        bool exists;
    };

    struct Waiting {
        std::uint32_t number = 0;
        std::size_t bytes = 0;
    };

    bool goesOn(std::size_t index, std::size_t count) {
        if (outcome_.stopped) return false;
        scope_.show(percentage(index, count + 1),
                    L"File: " + std::to_wstring(index + 1) + L" of " + std::to_wstring(count));
        if (!scope_.goesOn()) outcome_.stopped = true;
        return !outcome_.stopped;
    }

    // What will go where. False after a cancel.
    bool plan() {
        for (std::size_t i = 0; i < numbers_.size(); ++i) {
            if (i % 16 == 0 && !scope_.goesOn()) {
                outcome_.stopped = true;
                return false;
            }
            if (contents_.items()[numbers_[i]].isFolder) {
                targets_.addFolder(numbers_[i]);
            } else {
                plan(numbers_[i]);
            }
        }
        return true;
    }

    void plan(std::uint32_t number) {
        const Targets::Place place = targets_.place(number);
        const std::wstring& problem = targets_.problem(place);
        if (!problem.empty()) return fail(number, problem);
        switch (targets_.standing(place)) {
            case Standing::folder:
                return fail(number, L"a folder stands at '" + targets_.path(place) + L"'");
            case Standing::other:
                return fail(number,
                            L"a link or a device stands at '" + targets_.path(place) + L"'");
            case Standing::file:
                return files_.push_back({number, place, true});
            case Standing::nothing:
                return files_.push_back({number, place, false});
        }
    }

    void write(const File& file) {
        try {
            const std::string bytes = contents_.read(file.number);
            targets_.makeFolder(file.place);
            const std::wstring path = targets_.path(file.place);
            if (file.exists) {
                // What is the same already needs nothing kept.
                if (filesystem::read(path) != bytes) {
                    filesystem::replace(path, bytes, targets_.backup(file.place));
                    ++outcome_.replaced;
                }
            } else {
                waiting_[path] = {file.number, bytes.size()};
                batch_.add(path, bytes);
            }
            ++outcome_.written;
            outcome_.bytes += bytes.size();
            inARow_ = 0;
            if (batch_.isDue()) settle();
        } catch (const RunTimeError& error) {
            if (scope_.didCancel()) {
                outcome_.stopped = true;
            } else {
                fail(file.number, error.description());
                stopAfter(error);
            }
        }
    }

    // The files that wait for the disk.
    void settle() {
        for (const filesystem::Failure& failure : batch_.commit()) {
            const Waiting& file = waiting_[failure.path];
            --outcome_.written;
            outcome_.bytes -= file.bytes;
            fail(file.number, failure.error.description());
        }
        waiting_.clear();
    }

    void makeFolders() {
        try {
            targets_.makeFolders();
        } catch (const RunTimeError& error) {
            targets_.tell(error.description());
        }
    }

    void fail(std::uint32_t number, std::wstring_view why) {
        ++outcome_.failed;
        targets_.tell(L"not written: " + contents_.shownPath(number) + L" (" + std::wstring(why) +
                      L")");
    }

    void stopAfter(const RunTimeError& error) {
        const bool full = error.number() == kDiskFull;
        if (!full && ++inARow_ < kMostFailures) return;
        outcome_.stopped = true;
        outcome_.told.emplace_back(full ? L"stopped: the disk is full"
                                        : L"stopped: too many files in a row failed");
    }

    ExtractOutcome finished() {
        settle();
        return std::move(outcome_);
    }

    TankContents& contents_;
    ExtractOutcome outcome_;
    Targets targets_;
    ProgressScope scope_;
    Numbers numbers_;
    std::vector<File> files_;
    filesystem::Batch batch_;
    std::unordered_map<std::wstring, Waiting> waiting_;
    std::size_t inARow_ = 0;
};

}  // namespace

std::wstring safeName(std::wstring_view name) {
    constexpr std::wstring_view kForbidden = L"<>:\"/\\|?*";
    // A library's names may be longer than anything.
    const std::size_t most = 2 * kLongestName;
    std::wstring safe(name.substr(0, most));
    if (name.size() > most) safe += name.substr(std::max(most, name.size() - kLongestName));
    for (wchar_t& c : safe) {
        if (!isDrawable(c) || kForbidden.find(c) != kForbidden.npos) c = L'_';
    }
    // Windows does not see blanks and dots at the end of a name.
    for (std::size_t i = safe.size(); i > 0 && (safe[i - 1] == L' ' || safe[i - 1] == L'.'); --i) {
        safe[i - 1] = L'_';
    }
    if (safe.empty() || isDevice(safe)) safe.insert(0, 1, L'_');
    if (filesystem::sizeOfName(safe) <= kLongestName) return safe;
    auto [stem, extension] = parts(safe);
    std::wstring end(filesystem::sizeOfName(extension) > kLongestName / 2 ? L"" : extension);
    std::wstring begin(end.empty() ? std::wstring_view(safe) : stem);
    while (filesystem::sizeOfName(begin) + filesystem::sizeOfName(end) > kLongestName) {
        begin.pop_back();
    }
    return safeName(begin + end);
}

ExtractOutcome extract(TankContents& contents, const Extraction& wanted,
                       const std::function<Existing(std::size_t count)>& ask, Owner* owner) {
    return Extractor(contents, wanted, owner).run(ask);
}

std::wstring temporaryCopy(TankContents& contents, std::uint32_t number) {
    const std::string bytes = contents.read(number);
    const std::wstring made = gstrTempFile();
    if (made.empty()) return {};
    std::wstring path = made + L"-" + safeName(contents.name(number));
    filesystem::replace(path, bytes, {});
    filesystem::remove(made);
    filesystem::protect(path);
    gProgram().origins[filesystem::absolutePath(path)] = filesystem::absolutePath(contents.path());
    return path;
}

std::wstring summaryOf(const ExtractOutcome& outcome, std::wstring_view folder) {
    std::wstring text = counted(outcome.written, L" file (", L" files (") +
                        std::to_wstring(outcome.bytes) + L" bytes) written into '" +
                        std::wstring(folder) + L"'.";
    const auto add = [&](std::size_t count, std::wstring_view one, std::wstring_view many) {
        if (count > 0) text += L"\r\n" + counted(count, one, many);
    };
    add(outcome.replaced, L" file that was there is kept as .bak.",
        L" files that were there are kept as .bak.");
    add(outcome.skipped, L" file that was there was left alone.",
        L" files that were there were left alone.");
    add(outcome.failed, L" file could not be written.", L" files could not be written.");
    if (outcome.stopped) text += L"\r\nExtracting was stopped: the rest is not written.";
    for (const std::wstring& line : outcome.told) text += L"\r\n" + line;
    add(outcome.untold, L" more.", L" more.");
    return text;
}

}  // namespace kestrel
