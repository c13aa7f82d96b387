#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "services/filesystem.h"
#include "support/tempfolder.h"

namespace kestrel::test {

// Plays the lines of a file but for comments: each, and what `answer` gives behind it, is a part
// of the file of the same name in the folder "golden". KESTREL_WRITE=1 writes that.
inline void playStories(const std::filesystem::path& file,
                        const std::function<std::string(const std::string& line)>& answer) {
    std::ifstream lines(file, std::ios::binary);
    std::string told;
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with('#')) told.append(line).append(answer(line));
    }
    const std::filesystem::path name = file.parent_path() / "golden" / file.filename();
    if (std::getenv("KESTREL_WRITE") != nullptr) std::ofstream(name, std::ios::binary) << told;
    std::ifstream golden(name, std::ios::binary);
    std::string expected(std::istreambuf_iterator<char>(golden), {});
    // Windows writes other separators.
    for (std::string* text : {&told, &expected}) {
        std::ranges::replace(*text, static_cast<char>(filesystem::separator()), '/');
    }
    EXPECT_EQ(expected, told);
}

}  // namespace kestrel::test
