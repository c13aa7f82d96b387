#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "base/paths.h"
#include "support/tempfolder.h"

namespace kestrel::test {

// Expects `told` to be what the file `golden` holds, or nothing where there is none.
// KESTREL_WRITE=1 writes it.
inline void expectGolden(const std::filesystem::path& golden, std::string told) {
    const bool writes = std::getenv("KESTREL_WRITE") != nullptr && !told.empty();
    if (writes) std::ofstream(golden, std::ios::binary) << told;
    std::ifstream file(golden, std::ios::binary);
    std::string expected(std::istreambuf_iterator<char>(file), {});
    // Windows writes other separators.
    for (std::string* text : {&told, &expected}) {
        std::ranges::replace(*text, static_cast<char>(kSeparator), '/');
    }
    EXPECT_EQ(expected, told);
}

// Plays the lines of a file but for comments: each, and what `answer` gives behind it, is a part
// of the file of the same name in the folder "golden".
inline void playStories(const std::filesystem::path& file,
                        const std::function<std::string(const std::string& line)>& answer) {
    std::ifstream lines(file, std::ios::binary);
    std::string told;
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with('#')) told.append(line).append(answer(line));
    }
    expectGolden(file.parent_path() / "golden" / file.filename(), told);
}

}  // namespace kestrel::test
