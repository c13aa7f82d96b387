#include "fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrel::fuzz::run({data, size});
    return 0;
}
