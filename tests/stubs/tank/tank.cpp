// Stands in for the archive library: the same operations over a text file. It is
// strict about its caller, to the point of ending the process, and lies in its
// answers as the file tells it to.
//
// The file's first line is "tank", then flags: "|noroot", "|harm=CALL|by=KIND", which does
// harm() at that call, and fields of the root. Each further line is an entry of the root: "dir" or
// "file" behind one dot for each directory around it, then fields:
//
//     .file|name=a.gas|path=\art|size=10|comp=8|crc=-5|flags=0|format=1|data=ab\0c
//
// A text without its field is a null pointer; "\0" in data is a zero byte. Lies:
// bytes= and count= are what OpenChild and GetChildCount answer, isdir= what
// IsDirectory does, up=N adds the directory N levels further out (0: itself) to
// its own entries, repeat=N lists the entry N times, nested=N stacks N
// directories of that name in each other.

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Fields = std::map<std::string, std::string, std::less<>>;
using Handles = std::vector<std::int32_t>;
using Bytes = std::unique_ptr<char[]>;

constexpr std::int32_t kFirstTank = -2'000'000'000;  // a handle is any number but 0
constexpr std::int32_t kFirstChild = 4096;

[[noreturn]] void die(std::string_view call, const char* fault) {
    std::cerr << "the stand-in archive library: " << call << ": " << fault << std::endl;
    std::abort();
}

char* volatile taken = nullptr;

// What a library may do to the process that it runs in.
void harm(std::string_view kind) {
    if (kind == "crash") std::raise(SIGSEGV);
    if (kind == "abort") std::abort();
    if (kind == "exit") std::_Exit(3);
    if (kind == "write") std::cout << "1:2" << std::endl;
    while (kind == "hang") std::this_thread::sleep_for(std::chrono::seconds(1));
#if defined(__SANITIZE_ADDRESS__)
    // There the process has no limit.
    if (kind == "memory") throw std::bad_alloc();
#endif
    while (kind == "memory") taken = new char[1 << 20];
}

struct Entry {
    Fields fields;
    Handles children;

    const std::string* text(const char* field) const {
        const auto at = fields.find(field);
        return at == fields.end() ? nullptr : &at->second;
    }
    std::int32_t number(const char* field, std::int32_t otherwise = 0) const {
        const std::string* digits = text(field);
        return digits == nullptr ? otherwise : std::atoi(digits->c_str());
    }
};

Fields fieldsOf(const std::string& line) {
    Fields fields;
    std::istringstream rest(line);
    for (std::string field; std::getline(rest, field, '|');) {
        const std::size_t name = std::min(field.find('='), field.size());
        fields[field.substr(0, name)] = field.substr(std::min(name + 1, field.size()));
    }
    return fields;
}

// Memory of exactly that size, so that reading beyond it can be seen.
Bytes copyOf(std::string_view text) {
    Bytes copy = std::make_unique<char[]>(text.size());
    text.copy(copy.get(), text.size());
    return copy;
}

class Archive {
  public:
    explicit Archive(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        std::string line;
        std::getline(file, line);
        append(fieldsOf(line));
        Handles levels{kFirstChild};
        while (is("tank") && std::getline(file, line)) add(line, levels);
    }

    bool is(const char* flag) const { return entries_[0].text(flag) != nullptr; }

    void hurt(std::string_view call) const {
        const std::string* harmed = entries_[0].text("harm");
        if (harmed != nullptr && *harmed == call) harm(*entries_[0].text("by"));
    }

    // An empty one for a 0: what a caller has after an index with no entry.
    const Entry& find(std::int32_t child, std::string_view call) const {
        static const Entry kNone;
        if (child == 0) return kNone;
        const auto index = static_cast<std::size_t>(child) - kFirstChild;
        if (child < kFirstChild || index >= entries_.size()) die(call, "no such entry");
        return entries_[index];
    }

  private:
    std::int32_t append(Fields fields) {
        entries_.push_back({std::move(fields), {}});
        return kFirstChild + static_cast<std::int32_t>(entries_.size()) - 1;
    }

    Handles& childrenOf(std::int32_t directory) {
        return entries_[static_cast<std::size_t>(directory - kFirstChild)].children;
    }

    void add(const std::string& line, Handles& levels) {
        const std::size_t depth =
            std::min({line.find_first_not_of('.'), levels.size() - 1, line.size()});
        levels.resize(depth + 1);
        std::int32_t child = append(fieldsOf(line.substr(depth)));
        const Entry entry = entries_.back();
        Handles& siblings = childrenOf(levels.back());
        siblings.insert(siblings.end(), static_cast<std::size_t>(entry.number("repeat", 1)), child);
        for (std::int32_t i = 1; i < entry.number("nested", 1); ++i) {
            const std::int32_t inner = append(entry.fields);
            childrenOf(child).push_back(inner);
            child = inner;
        }
        levels.push_back(child);
        const auto out = static_cast<std::size_t>(entry.number("up", -1));
        if (out <= depth + 1) childrenOf(child).push_back(levels[depth + 1 - out]);
    }

    std::vector<Entry> entries_;
};

// All that is open.
struct State {
    std::map<std::int32_t, Archive> archives;
    std::map<const char*, Bytes> opened;
    Bytes text;  // the last text handed out: the next one takes its place
    std::int32_t next = kFirstTank;
} state;

const Archive& archiveOf(std::int32_t tank, std::string_view call) {
    const auto at = state.archives.find(tank);
    if (at == state.archives.end()) die(call, "the archive is not open");
    at->second.hurt(call);
    return at->second;
}

const Entry& entryOf(std::int32_t tank, std::int32_t child, const char* call) {
    return archiveOf(tank, call).find(child, call);
}

const char* handOut(const std::string* text) {
    if (text == nullptr) return nullptr;
    state.text = copyOf({text->c_str(), text->size() + 1});
    return state.text.get();
}

}  // namespace

extern "C" {

std::int32_t KESTREL_TANK_CALL OpenTank(const char* path) {
    Archive archive(path);
    if (!archive.is("tank")) return 0;
    archive.hurt("OpenTank");
    state.archives.emplace(state.next, std::move(archive));
    return state.next++;
}

std::int32_t KESTREL_TANK_CALL CloseTank(std::int32_t tank) {
    archiveOf(tank, "CloseTank");
    if (!state.opened.empty()) die("CloseTank", "data was not closed");
    state.archives.erase(tank);
    return 7;
}

std::int32_t KESTREL_TANK_CALL GetRootDir(std::int32_t tank) {
    return archiveOf(tank, "GetRootDir").is("noroot") ? 0 : kFirstChild;
}

std::int32_t KESTREL_TANK_CALL GetChildCount(std::int32_t tank, std::int32_t directory) {
    const Entry& entry = entryOf(tank, directory, "GetChildCount");
    return entry.number("count", static_cast<std::int32_t>(entry.children.size()));
}

std::int32_t KESTREL_TANK_CALL GetChild(std::int32_t tank, std::int32_t directory,
                                        std::int32_t index, std::int32_t* child) {
    const Archive& archive = archiveOf(tank, "GetChild");
    const Handles& children = archive.find(directory, "GetChild").children;
    if (index < 0) die("GetChild", "a negative index");
    const auto at = static_cast<std::size_t>(index);
    // No entry: what `child` points to stays as it was.
    if (at >= children.size()) return -1;
    *child = children[at];
    return 1;
}

const char* KESTREL_TANK_CALL GetChildName(std::int32_t tank, std::int32_t child) {
    return handOut(entryOf(tank, child, "GetChildName").text("name"));
}

const char* KESTREL_TANK_CALL GetChildPath(std::int32_t tank, std::int32_t child) {
    return handOut(entryOf(tank, child, "GetChildPath").text("path"));
}

std::int32_t KESTREL_TANK_CALL IsDirectory(std::int32_t tank, std::int32_t child) {
    const Entry& entry = entryOf(tank, child, "IsDirectory");
    return entry.number("isdir", entry.text("dir") == nullptr ? 0 : 1);
}

std::int32_t KESTREL_TANK_CALL GetChildSize(std::int32_t tank, std::int32_t child) {
    return entryOf(tank, child, "GetChildSize").number("size");
}

std::int32_t KESTREL_TANK_CALL GetChildCompSize(std::int32_t tank, std::int32_t child) {
    return entryOf(tank, child, "GetChildCompSize").number("comp");
}

std::int32_t KESTREL_TANK_CALL GetChildCRC(std::int32_t tank, std::int32_t child) {
    return entryOf(tank, child, "GetChildCRC").number("crc");
}

std::int16_t KESTREL_TANK_CALL GetChildFlags(std::int32_t tank, std::int32_t child) {
    return static_cast<std::int16_t>(entryOf(tank, child, "GetChildFlags").number("flags"));
}

std::int16_t KESTREL_TANK_CALL GetChildFormat(std::int32_t tank, std::int32_t child) {
    return static_cast<std::int16_t>(entryOf(tank, child, "GetChildFormat").number("format"));
}

std::int32_t KESTREL_TANK_CALL OpenChild(std::int32_t tank, std::int32_t child, const char** data) {
    const Entry& entry = entryOf(tank, child, "OpenChild");
    const std::string* text = entry.text("data");
    // What `data` points to stays as it was.
    if (text == nullptr) return entry.number("bytes");
    std::string bytes = *text;
    for (std::size_t at = 0; (at = bytes.find("\\0", at)) != bytes.npos; ++at) {
        bytes.replace(at, 2, 1, '\0');
    }
    Bytes copy = copyOf(bytes);
    *data = copy.get();
    state.opened[*data] = std::move(copy);
    return entry.number("bytes", static_cast<std::int32_t>(bytes.size()));
}

std::int32_t KESTREL_TANK_CALL CloseChild(const char* data) {
    if (state.opened.erase(data) == 0) die("CloseChild", "the data is not open");
    return 3;
}

}  // extern "C"
