#include "tank/contents.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "base/bytes.h"
#include "base/error.h"
#include "base/text.h"
#include "services/program.h"
#include "system/letters.h"
#include "tank/wrappers.h"

namespace kestrel {
namespace {

constexpr std::size_t kLongPath = 1000;  // more than a list can show

// Data that is given back to the library at the end of its life.
class OpenedData {
  public:
    OpenedData(TankLibrary& library, const char* data) : library_(library), data_(data) {}
    ~OpenedData() {
        try {
            library_.CloseChild(data_);
        } catch (...) {
            // The data is there; the next call tells that the library has stopped.
        }
    }
    OpenedData(const OpenedData&) = delete;
    OpenedData& operator=(const OpenedData&) = delete;

  private:
    TankLibrary& library_;
    const char* data_;
};

// Sorts in steps that are short enough for a window.
template <class Row, class Less>
void sortInSteps(std::vector<Row>& rows, Less less, const std::function<void()>& breathe) {
    constexpr std::size_t kBlock = std::size_t{1} << 15;
    const auto at = [](auto& of, std::size_t place) {
        return of.begin() + static_cast<std::ptrdiff_t>(std::min(place, of.size()));
    };
    const auto rest = [&] {
        if (breathe) breathe();
    };
    for (std::size_t i = 0; i < rows.size(); i += kBlock, rest()) {
        std::sort(at(rows, i), at(rows, i + kBlock), less);
    }
    std::vector<Row> merged(rows.size());
    for (std::size_t width = kBlock; width < rows.size(); width *= 2, std::swap(rows, merged)) {
        for (std::size_t i = 0; i < rows.size(); i += 2 * width, rest()) {
            std::merge(at(rows, i), at(rows, i + width), at(rows, i + width),
                       at(rows, i + 2 * width), at(merged, i), less);
        }
    }
}

// Of sizes below 2^57.
std::wstring ratioText(std::int64_t packed, std::int64_t size) {
    return size <= 0 ? L"" : std::to_wstring((packed * 100 + size / 2) / size) + L" %";
}

}  // namespace

std::wstring counted(std::uint64_t count, std::wstring_view one, std::wstring_view many) {
    return std::to_wstring(count) + std::wstring(count == 1 ? one : many);
}

std::wstring textOf(const TankTotals& totals) {
    std::wstring text;
    if (totals.folders > 0) text = counted(totals.folders, L" folder, ", L" folders, ");
    text +=
        counted(totals.files, L" file, ", L" files, ") + counted(totals.size, L" byte", L" bytes");
    if (totals.size == 0) return text;
    return text + L", " + std::to_wstring(totals.packed) + L" packed (" +
           ratioText(static_cast<std::int64_t>(totals.packed),
                     static_cast<std::int64_t>(totals.size)) +
           L")";
}

TankContents::TankContents(std::wstring path, Progress* progress) : path_(std::move(path)) {
    open();
    items_.push_back({.isFolder = true});
    addName({});
    std::vector<std::uint32_t> open{0};
    Walk(archive_->handle(), progress).find(archive_->root(), [&](const WalkedEntry& entry) {
        add(entry, open);
        return false;
    });
    while (!open.empty()) {
        items_[open.back()].end = static_cast<std::uint32_t>(items_.size());
        open.pop_back();
    }
    whole_ = !archive_->isLost() && (progress == nullptr || !progress->DidCancel());
}

void TankContents::open() {
    TankLibrary* library = gProgram().host.tank;
    const bool named = !path_.empty() && path_.find(L'\0') == path_.npos;
    const TankHandle tank = library == nullptr || !named ? 0 : library->OpenTank(path_);
    if (tank == 0) {
        throw RunTimeError(kPathError, L"The archive library cannot open '" + path_ + L"'");
    }
    archive_ = std::make_unique<OpenArchive>(tank);
}

void TankContents::add(const WalkedEntry& entry, std::vector<std::uint32_t>& open) {
    const auto number = static_cast<std::uint32_t>(items_.size());
    while (open.size() > entry.level + 1) {
        items_[open.back()].end = number;
        open.pop_back();
    }
    const TankHandle tank = archive_->handle();
    const TankEntry& told = gProgram().host.tank->entry(tank, entry.handle);
    items_.push_back({open.back(), number + 1, entry.index, entry.isDirectory, told.format,
                      told.size, told.compSize, told.crc});
    addName(entry.name);
    // A folder in itself holds nothing: whatever comes next is no deeper.
    if (entry.isDirectory) open.push_back(number);
}

void TankContents::addName(std::wstring_view name) {
    names_.append(toUtf8(name)).push_back('\0');
    folded_.append(toUtf8(lowerCase(name))).push_back('\0');
    ends_.push_back(names_.size());
    foldedEnds_.push_back(folded_.size());
}

std::string_view TankContents::bytes(const std::string& names, std::uint32_t number) const {
    const std::vector<std::size_t>& ends = &names == &names_ ? ends_ : foldedEnds_;
    const std::size_t begin = number == 0 ? 0 : ends[number - 1];
    return std::string_view(names).substr(begin, ends[number] - begin - 1);
}

std::wstring TankContents::name(std::uint32_t number) const {
    return fromUtf8(bytes(names_, number));
}

std::wstring TankContents::pathOf(std::uint32_t number, std::size_t most) const {
    std::vector<std::uint32_t> way;
    std::size_t size = 0;
    for (; number != 0 && size <= most; number = items_[number].parent) {
        way.push_back(number);
        size += bytes(names_, number).size() + 1;
    }
    std::wstring path = number == 0 ? L"" : L"...\\";
    for (; !way.empty(); way.pop_back()) path.append(name(way.back())).push_back(L'\\');
    if (!path.empty()) path.pop_back();
    return path;
}

std::wstring TankContents::pathOf(std::uint32_t number) const {
    return pathOf(number, std::wstring::npos);
}

std::wstring TankContents::shownPath(std::uint32_t number) const {
    return pathOf(number, kLongPath);
}

TankContents::Numbers TankContents::at(std::wstring_view path) const {
    std::wstring wanted(path);
    std::ranges::replace(wanted, L'/', L'\\');
    Numbers found{0};
    for (const std::wstring_view name : split(wanted, L"\\")) {
        if (name.empty()) continue;
        Numbers below;
        for (const std::uint32_t folder : found) {
            for (std::uint32_t i = folder + 1; i < items_[folder].end;
                 i = std::max(items_[i].end, i + 1)) {
                if (compareWithoutCase(this->name(i), name) == 0) below.push_back(i);
            }
        }
        found = std::move(below);
    }
    return found;
}

std::wstring TankContents::text(std::uint32_t number, TankColumn column) const {
    const TankItem& item = items_[number];
    if (column == TankColumn::name) return name(number);
    if (column == TankColumn::folder) return number == 0 ? L"" : shownPath(item.parent);
    if (item.isFolder) return {};
    switch (column) {
        case TankColumn::size:
            return std::to_wstring(item.size);
        case TankColumn::packed:
            return std::to_wstring(item.packed);
        case TankColumn::ratio:
            return ratioText(item.packed, item.size);
        case TankColumn::format:
            return gstrFormatName(item.format);
        default:
            return std::to_wstring(item.crc);
    }
}

// A number in the order of the column, as far as one can tell it.
std::uint64_t TankContents::sortKey(std::uint32_t number, TankColumn column) const {
    const TankItem& item = items_[number];
    const auto ordered = [](std::int64_t value) {
        return static_cast<std::uint64_t>(value) ^ (std::uint64_t{1} << 63);
    };
    switch (column) {
        case TankColumn::name: {
            std::uint64_t key = 0;
            const std::string_view folded = bytes(folded_, number);
            for (std::size_t i = 0; i < sizeof key; ++i) {
                key = key << 8 | (i < folded.size() ? static_cast<unsigned char>(folded[i]) : 0);
            }
            return key;
        }
        case TankColumn::folder:
            return item.parent;
        case TankColumn::size:
            return ordered(item.isFolder ? -1 : item.size);
        case TankColumn::packed:
            return ordered(item.isFolder ? -1 : item.packed);
        case TankColumn::ratio:
            return ordered(item.isFolder || item.size <= 0
                               ? -1
                               : std::int64_t{item.packed} * 100'000 / item.size);
        case TankColumn::format:
            return ordered(item.isFolder ? -1 : item.format);
        default:
            return ordered(item.crc);
    }
}

TankContents::Numbers TankContents::sorted(TankColumn column, bool descending,
                                           const std::function<void()>& breathe) const {
    struct Row {
        std::uint64_t key;
        std::uint32_t number;
    };
    std::vector<Row> rows;
    rows.reserve(items_.size());
    for (std::uint32_t i = 0; i < items_.size(); ++i) rows.push_back({sortKey(i, column), i});
    const auto before = [&](const Row& a, const Row& b) {
        if (a.key != b.key) return (a.key < b.key) != descending;
        const int order = column == TankColumn::name
                              ? bytes(folded_, a.number).compare(bytes(folded_, b.number))
                              : 0;
        return order != 0 ? (order < 0) != descending : a.number < b.number;
    };
    sortInSteps(rows, before, breathe);
    Numbers numbers;
    numbers.reserve(rows.size());
    for (const Row& row : rows) numbers.push_back(row.number);
    return numbers;
}

TankContents::Numbers TankContents::inFolder(std::uint32_t folder, std::wstring_view filter,
                                             const Numbers& order) const {
    Numbers found;
    if (filter.empty()) {
        std::ranges::copy_if(order, std::back_inserter(found), [&](std::uint32_t number) {
            return number != 0 && items_[number].parent == folder;
        });
        return found;
    }
    std::vector<bool> hits(items_.size());
    const std::string wanted = toUtf8(lowerCase(filter));
    const std::string_view names =
        std::string_view(folded_).substr(0, foldedEnds_[items_[folder].end - 1]);
    std::size_t at = foldedEnds_[folder];
    for (std::size_t number = folder; (at = names.find(wanted, at)) != names.npos;) {
        while (foldedEnds_[number] <= at) ++number;
        hits[number] = true;
        at = foldedEnds_[number];
    }
    std::ranges::copy_if(order, std::back_inserter(found),
                         [&](std::uint32_t number) { return hits[number]; });
    return found;
}

void TankContents::count(std::uint32_t number, TankTotals& totals) const {
    const TankItem& item = items_[number];
    if (item.isFolder) {
        ++totals.folders;
        return;
    }
    ++totals.files;
    totals.size += static_cast<std::uint64_t>(std::max(item.size, 0));
    totals.packed += static_cast<std::uint64_t>(std::max(item.packed, 0));
}

TankTotals TankContents::totals(const Numbers& numbers) const {
    TankTotals totals;
    for (const std::uint32_t number : numbers) count(number, totals);
    return totals;
}

TankTotals TankContents::totals(std::uint32_t folder) const {
    TankTotals totals;
    for (std::uint32_t i = folder + 1; i < items_[folder].end; ++i) count(i, totals);
    return totals;
}

ChildHandle TankContents::step(ChildHandle folder, std::uint32_t number) const {
    TankLibrary& library = *gProgram().host.tank;
    const TankEntry& entry = library.GetChild(archive_->handle(), folder, items_[number].index);
    const ChildHandle found = entry.handle;
    if (archive_->isLost() ||
        (found != 0 && gstrGetChildName(archive_->handle(), found) == name(number))) {
        return found;
    }
    throw RunTimeError(kFileNotFound, L"It is in the archive no more");
}

ChildHandle TankContents::locate(std::uint32_t number) {
    if (!isOpen()) open();
    std::vector<std::uint32_t> way;
    for (; number != 0; number = items_[number].parent) way.push_back(number);
    ChildHandle found = archive_->root();
    while (!way.empty() && !archive_->isLost()) {
        found = step(found, way.back());
        way.pop_back();
    }
    return found;
}

std::string TankContents::read(std::uint32_t number) {
    TankLibrary& library = *gProgram().host.tank;
    const ChildHandle child = locate(number);
    const char* data = nullptr;
    const std::int32_t count =
        archive_->isLost() ? 0 : library.OpenChild(archive_->handle(), child, data);
    if (archive_->isLost()) {
        throw RunTimeError(kDeviceError, L"The archive library did not answer");
    }
    const std::int32_t size = items_[number].size;
    std::string bytes;
    std::size_t there = 0;
    if (data != nullptr) {
        const OpenedData opened(library, data);
        there = library.bytesThere(data);
        bytes.assign(data, there);
    }
    if (count == size && there == static_cast<std::size_t>(std::max(size, 0))) return bytes;
    if (data == nullptr) throw RunTimeError(kDeviceError, L"The archive library gives no data");
    throw RunTimeError(kDeviceError, L"The archive tells " + std::to_wstring(size) +
                                         L" bytes, and " + std::to_wstring(there) + L" are there");
}

}  // namespace kestrel
