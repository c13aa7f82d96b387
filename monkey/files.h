#pragma once

#include <string>
#include <vector>

#include "monkey/random.h"
#include "support/tempfolder.h"

namespace kestrel::test {

// What a monkey opens: copies of the samples and files that nobody should write,
// in a folder of its own.
class MonkeyFiles {
  public:
    MonkeyFiles();

    std::wstring source(Random& random) const { return random.of(sources_); }
    std::wstring archive(Random& random) const { return random.of(archives_); }
    // A path to write to, which may exist.
    std::wstring target(Random& random) const;
    // Something to type: a path, a word, nothing, characters that hurt.
    std::wstring text(Random& random) const;
    std::wstring folder() const { return root_.path(L"files"); }
    std::wstring profile() const { return root_.path(L"profile"); }

  private:
    void copySamples();
    void addHostile();
    void addArchives();
    void add(std::wstring_view name, std::string_view bytes);

    TempFolder root_;
    std::vector<std::wstring> sources_;
    std::vector<std::wstring> archives_;
};

}  // namespace kestrel::test
