#include "tankhost/server.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>
#include <vector>

namespace kestrel::tankhost {
namespace {

std::string textOf(const char* bytes) {
    return bytes == nullptr ? std::string() : std::string(bytes, strnlen(bytes, kMostText));
}

void add(PackedWriter& answer, const Entry& entry) {
    eachField(
        entry, [&](const std::string& text) { answer.add(std::string_view(text)); },
        [&](auto number) { answer.addNumber(number); });
}

}  // namespace

std::string Server::answer(std::string_view question) {
    PackedWriter answer;
    try {
        PackedReader reader(question);
        const auto ask = static_cast<Ask>(reader.nextNumber<int>());
        if (ask != Ask::load && library_ == nullptr)
            throw RunTimeError(kInvalidCall, L"No library");
        answer.addNumber(0);
        this->answer(ask, reader, answer);
        if (!reader.isWhole()) throw RunTimeError(kInvalidCall, L"No question");
    } catch (const RunTimeError& error) {
        // What else is thrown is the library's, and ends this process.
        answer = {};
        answer.addNumber(error.number());
        answer.add(error.description());
    }
    return answer.bytes();
}

void Server::answer(Ask ask, PackedReader& question, PackedWriter& answer) {
    const auto number = [&] { return question.nextNumber<std::int32_t>(); };
    switch (ask) {
        case Ask::load:
            return load(question, answer);
        case Ask::open:
            return answer.addNumber(library_->OpenTank(libraryText(question.next()).c_str()));
        case Ask::close:
            return answer.addNumber(library_->CloseTank(number()));
        case Ask::root:
            return answer.addNumber(library_->GetRootDir(number()));
        case Ask::children:
            return children(question, answer);
        case Ask::entry: {
            const TankHandle tank = number();
            return add(answer, entry(tank, number()));
        }
        case Ask::openChild:
            return openChild(question, answer);
        case Ask::readChild:
            return readChild(question, answer);
        case Ask::closeChild: {
            const auto data = opened_.extract(number());
            return answer.addNumber(data.empty() ? 0 : library_->CloseChild(data.mapped()));
        }
    }
}

void Server::load(PackedReader& question, PackedWriter& answer) {
    if (question.nextBytes() != kVersion) {
        throw RunTimeError(kInvalidCall,
                           L"kestrel-tank is of another version: install all of "
                           L"Kestrel again");
    }
    library_ = std::make_unique<const Operations>(question.next());
    answer.add(kVersion);
}

Entry Server::entry(TankHandle tank, ChildHandle child) const {
    Entry entry;
    entry.handle = child;
    if (child == 0) return entry;
    entry.name = textOf(library_->GetChildName(tank, child));
    entry.path = textOf(library_->GetChildPath(tank, child));
    entry.isDirectory = library_->IsDirectory(tank, child);
    entry.size = library_->GetChildSize(tank, child);
    entry.compSize = library_->GetChildCompSize(tank, child);
    entry.crc = library_->GetChildCRC(tank, child);
    entry.flags = library_->GetChildFlags(tank, child);
    entry.format = library_->GetChildFormat(tank, child);
    return entry;
}

void Server::children(PackedReader& question, PackedWriter& answer) {
    const auto tank = question.nextNumber<TankHandle>();
    std::vector<ChildHandle> directories{question.nextNumber<ChildHandle>()};
    auto first = question.nextNumber<std::int32_t>();
    auto left = question.nextNumber<std::int32_t>();
    std::unordered_set<ChildHandle> told;
    // Those inside follow as a walk meets them, as long as there is room.
    while (!directories.empty() && left > 0 && answer.size() < kMostBatch) {
        const ChildHandle directory = directories.back();
        directories.pop_back();
        if (!told.insert(directory).second) continue;
        const std::size_t below = directories.size();
        const std::int32_t count = library_->GetChildCount(tank, directory);
        // An index beyond the number is for the library to refuse.
        const std::int64_t end =
            std::min(std::max<std::int64_t>(count, told.size() == 1 ? std::int64_t{first} + 1 : 0),
                     std::int64_t{first} + left);
        PackedWriter entries;
        for (std::int64_t index = first; index < end && entries.size() < kMostBatch; ++index) {
            ChildHandle child = 0;
            const std::int32_t status =
                library_->GetChild(tank, directory, static_cast<std::int32_t>(index), &child);
            Entry found = entry(tank, child);
            found.status = status;
            add(entries, found);
            if (found.isDirectory != 0) directories.push_back(child);
            --left;
        }
        answer.addNumber(directory);
        answer.addNumber(count);
        answer.add(std::string_view(entries.bytes()));
        std::reverse(directories.begin() + static_cast<std::ptrdiff_t>(below), directories.end());
        first = 0;
        --left;
    }
}

void Server::openChild(PackedReader& question, PackedWriter& answer) {
    const auto tank = question.nextNumber<TankHandle>();
    const auto child = question.nextNumber<ChildHandle>();
    const char* data = nullptr;
    answer.addNumber(library_->OpenChild(tank, child, &data));
    if (data != nullptr) opened_[++lastData_] = data;
    answer.addNumber(data == nullptr ? 0 : lastData_);
}

void Server::readChild(PackedReader& question, PackedWriter& answer) {
    const auto data = opened_.find(question.nextNumber<std::int32_t>());
    const auto place = question.nextNumber<std::uint32_t>();
    const auto most = std::min(question.nextNumber<std::size_t>(), kMostPiece);
    // The library may say that there are more bytes than there are.
    std::string bytes(data == opened_.end() ? 0 : most, '\0');
    if (!bytes.empty()) bytes.resize(readMemory(data->second + place, bytes.data(), most));
    answer.add(std::string_view(bytes));
}

}  // namespace kestrel::tankhost
