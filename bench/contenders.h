#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "corpus.h"
#include "gas/template.h"

namespace kestrel::bench {

using Records = std::vector<GasTemplate>;

// What the contenders of one size work on. All but the files is made on first use.
class Input {
  public:
    // Writes the corpus into a folder of its own, which goes with this.
    explicit Input(std::size_t gasBytes);
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    std::string path(Format format) const { return corpusFile(folder_, format).string(); }
    std::size_t sizeOf(Format format) const { return std::filesystem::file_size(path(format)); }
    const Records& records();        // of the `.gas` file
    const std::wstring& rendered();  // the records' text

  private:
    std::filesystem::path folder_;
    Records records_;
    std::wstring rendered_;
};

// What a run leaves behind; it is freed when the time has been taken.
using Result = std::shared_ptr<void>;

struct Contender {
    std::string name;
    std::function<Result(Input&)> run;
    // The records of a run, for those that give some.
    Records (*records)(Input&) = nullptr;
};

// All of them; "load", "render" and "free" are the program's own.
std::vector<Contender> contenders();

// The records of the `.gas` file at `path`. Ends the program when it does not load.
Records loadOrExit(const std::string& path);

// What the others read (parsers.cpp): into the loader's records, and into their own trees.
Records simdjsonRecords(Input& input);
Records pugixmlRecords(Input& input);
Records rapidjsonRecords(Input& input);
Records libconfigRecords(Input& input);
Result simdjsonTree(Input& input);
Result pugixmlTree(Input& input);
Result rapidjsonTree(Input& input);
Result libconfigTree(Input& input);

}  // namespace kestrel::bench
