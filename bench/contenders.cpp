#include "contenders.h"

#include <algorithm>

namespace kestrel::bench {
namespace {

constexpr Contender kContenders[] = {
    {"load", "**gblnLoadGas**, from the file", keepRecords<loadFile>, nullptr, loadFile},
    {"loadtext", "**loadGasText**, from wide text", keepRecords<loadText>,
     [](Input& input) { input.text(); }, loadText},
    {"simdjson-records", "simdjson, into records", keepRecords<simdjsonRecords>, nullptr,
     simdjsonRecords},
    {"pugixml-records", "pugixml, into records", keepRecords<pugixmlRecords>, nullptr,
     pugixmlRecords},
    {"rapidjson-records", "RapidJSON, into records", keepRecords<rapidjsonRecords>, nullptr,
     rapidjsonRecords},
    {"libconfig-records", "libconfig++, into records", keepRecords<libconfigRecords>, nullptr,
     libconfigRecords},
    {"simdjson", "simdjson, its own tree", simdjsonBare, nullptr, nullptr},
    {"pugixml", "pugixml, its own tree", pugixmlBare, nullptr, nullptr},
    {"rapidjson", "RapidJSON, its own tree", rapidjsonBare, nullptr, nullptr},
    {"libconfig", "libconfig++, its own tree", libconfigBare, nullptr, nullptr},
    {"read", "reading the file", readBytes, nullptr, nullptr},
    {"widen", "widening its bytes", widenBytes, [](Input& input) { input.bytes(); }, nullptr},
    {"fields", "one std::wstring a field", makeFields, [](Input& input) { input.fieldBytes(); },
     nullptr},
    {"render", "**gstrMakeFileText**", renderText, [](Input& input) { input.records(); }, nullptr},
    {"copy", "copying the finished text", copyText, [](Input& input) { input.rendered(); },
     nullptr},
};

}  // namespace

std::span<const Contender> contenders() {
    return kContenders;
}

const Contender* findContender(std::string_view name) {
    const auto found = std::ranges::find(kContenders, name, &Contender::name);
    return found == std::end(kContenders) ? nullptr : found;
}

}  // namespace kestrel::bench
