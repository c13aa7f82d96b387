// The program's own loader and renderer.
#include "contenders.h"
#include "gas/load.h"
#include "text/render.h"

namespace kestrel::bench {

Records loadFile(Input& input) {
    return loadOrExit(input.path(Format::gas));
}

Records loadText(Input& input) {
    Records records;
    loadGasText(input.text(), records);
    return records;
}

Result renderText(Input& input) {
    return std::make_shared<std::wstring>(
        gstrMakeFileText(L"corpus.gas", input.records(), nullptr, 0, nullptr));
}

}  // namespace kestrel::bench
