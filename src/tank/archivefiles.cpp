#include "tank/archivefiles.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include "services/archives.h"
#include "services/guard.h"
#include "system/letters.h"
#include "tank/contents.h"

namespace kestrel {
namespace {

constexpr std::size_t kMostKnown = 16;         // archives
constexpr std::size_t kMostItems = 1'000'000;  // that they hold, but for the last one

// Runs `call` over an archive; a failure of the library's is not reported but thrown.
template <class Call>
auto reading(Call call) {
    const KeptFailure kept;
    try {
        return call();
    } catch (const RunTimeError& error) {
        throw kept.failure().value_or(error);
    }
}

ArchiveFailure failureOf(const RunTimeError& error) {
    return {error.number(), error.description()};
}

class KnownArchives final : public Archives {
  public:
    bool knows(const std::wstring& archive) const override { return find(archive) != nullptr; }

    std::shared_ptr<const Files> files(const std::wstring& archive) override {
        return know(archive).files;
    }

    std::string read(const std::wstring& path) override {
        const Known& known = know(archiveOf(path));
        const std::uint32_t number = numberOf(known, sourcePath(path));
        try {
            return reading([&] { return known.contents->read(number); });
        } catch (const RunTimeError& error) {
            if (known.contents->isOpen()) throw;
            throw failureOf(error);
        }
    }

    void close() override {
        // What could not be closed is lost, and opened anew.
        const KeptFailure kept;
        for (const auto& known : known_) known->contents->close();
        std::erase_if(known_, [](const auto& known) { return !isSettled(known->stamp); });
    }

  private:
    struct Known {
        std::wstring path;
        FileStamp stamp;
        std::unique_ptr<TankContents> contents;
        std::shared_ptr<const Files> files;
        std::unordered_map<std::wstring_view, std::uint32_t> numbers;  // by their paths
    };

    // An archive stays what it was as long as it is open.
    Known* find(const std::wstring& archive) const {
        const auto known =
            std::ranges::find_if(known_, [&](const auto& one) { return one->path == archive; });
        if (known == known_.end()) return nullptr;
        const bool holds = (*known)->contents->isOpen() || (*known)->stamp == fileStamp(archive);
        return holds ? known->get() : nullptr;
    }

    const Known& know(const std::wstring& archive) {
        if (const Known* known = find(archive)) return *known;
        std::erase_if(known_, [&](const auto& one) { return one->path == archive; });
        known_.push_back(list(archive));
        std::size_t items = 0;
        for (const auto& one : known_) items += one->contents->items().size();
        while (known_.size() > kMostKnown || (known_.size() > 1 && items > kMostItems)) {
            items -= known_.front()->contents->items().size();
            known_.erase(known_.begin());
        }
        return *known_.back();
    }

    static std::unique_ptr<Known> list(const std::wstring& archive) {
        auto known = std::make_unique<Known>();
        known->path = archive;
        known->stamp = fileStamp(archive).value_or(FileStamp());
        try {
            known->contents = reading([&] { return listed(archive); });
        } catch (const RunTimeError& error) {
            throw failureOf(error);
        }
        collect(*known);
        return known;
    }

    static std::unique_ptr<TankContents> listed(const std::wstring& archive) {
        auto contents = std::make_unique<TankContents>(archive, gProgram().progress);
        if (contents->isWhole()) return contents;
        throw RunTimeError(kDeviceError, L"The archive could not be listed");
    }

    static void collect(Known& known) {
        Files files;
        std::vector<std::uint32_t> numbers;
        for (std::uint32_t i = 0; i < known.contents->items().size(); ++i) {
            if (known.contents->items()[i].isFolder) continue;
            if (!endsWithoutCase(known.contents->name(i), L".gas")) continue;
            files.push_back(pathInArchive(known.path, known.contents->pathOf(i)));
            numbers.push_back(i);
        }
        known.files = std::make_shared<const Files>(std::move(files));
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            known.numbers.emplace((*known.files)[i], numbers[i]);
        }
    }

    // As the archive writes the path, or else in other letters.
    static std::uint32_t numberOf(const Known& known, const std::wstring& path) {
        auto number = known.numbers.find(path);
        if (number == known.numbers.end()) {
            number = std::ranges::find_if(known.numbers, [&](const auto& one) {
                return compareWithoutCase(one.first, path) == 0;
            });
        }
        if (number != known.numbers.end()) return number->second;
        throw RunTimeError(kFileNotFound, L"The archive has no such file");
    }

    std::vector<std::unique_ptr<Known>> known_;  // the one that was listed last is the last
};

}  // namespace

std::unique_ptr<Archives> makeArchives() {
    return std::make_unique<KnownArchives>();
}

}  // namespace kestrel
