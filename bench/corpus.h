#pragma once

#include <cstddef>
#include <filesystem>
#include <string_view>

// The generated information: templates of a size as modders write them, as
// `.gas` and as three formats that other parsers read. The same size always
// gives the same bytes.
namespace kestrel::bench {

enum class Format { gas, json, xml, libconfig };

inline constexpr std::string_view kCorpusFiles[] = {"corpus.gas", "corpus.json", "corpus.xml",
                                                    "corpus.cfg"};

std::filesystem::path corpusFile(const std::filesystem::path& folder, Format format);

// Writes the information in all formats into `folder`, until the `.gas` file
// has `gasBytes` at least. Comments stand in the `.gas` file alone: JSON has
// none.
void writeCorpus(const std::filesystem::path& folder, std::size_t gasBytes);

}  // namespace kestrel::bench
