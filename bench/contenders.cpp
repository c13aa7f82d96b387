#include "contenders.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "base/bytes.h"
#include "gas/load.h"
#include "services/files.h"
#include "text/render.h"

namespace kestrel::bench {

Input::Input(std::size_t gasBytes)
    : folder_(std::filesystem::temp_directory_path() /
              ("kestrel-bench-" + std::to_string(getpid()) + "-" + std::to_string(gasBytes))) {
    std::filesystem::create_directories(folder_);
    writeCorpus(folder_, gasBytes);
}

Input::~Input() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

const Records& Input::records() {
    if (records_.empty()) records_ = loadOrExit(path(Format::gas));
    return records_;
}

const std::wstring& Input::rendered() {
    if (rendered_.empty()) rendered_ = gstrMakeFileText(L"a.gas", records(), nullptr, 0, nullptr);
    return rendered_;
}

Records loadOrExit(const std::string& path) {
    std::wstring widePath = fromUtf8(path);
    Records records;
    if (gblnLoadGas(widePath, records, nullptr)) return records;
    std::fprintf(stderr, "%s does not load\n", path.c_str());
    std::exit(1);
}

std::vector<Contender> contenders() {
    const auto filling = [](const char* name, Records (*fill)(Input&)) {
        return Contender{name, [fill](Input& in) { return std::make_shared<Records>(fill(in)); },
                         fill};
    };
    return {
        filling("load", [](Input& input) { return loadOrExit(input.path(Format::gas)); }),
        filling("simdjson into records", simdjsonRecords),
        filling("pugixml into records", pugixmlRecords),
        filling("RapidJSON into records", rapidjsonRecords),
        filling("libconfig++ into records", libconfigRecords),
        {"simdjson's own tree", simdjsonTree},
        {"pugixml's own tree", pugixmlTree},
        {"RapidJSON's own tree", rapidjsonTree},
        {"libconfig++'s own tree", libconfigTree},
        {"reading the file",
         [](Input& input) {
             return std::make_shared<std::string>(readFileBytes(fromUtf8(input.path(Format::gas))));
         }},
        {"render",
         [](Input& input) {
             ProgressScope none(nullptr, nullptr, {});
             return std::make_shared<std::string>(templateTexts(input.records(), none));
         }},
        {"copying the wide text",
         [](Input& input) { return std::make_shared<std::wstring>(input.rendered()); }},
    };
}

}  // namespace kestrel::bench
