#include "fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrel::test::RecordingHost host;
    kestrel::gProgram().folder = kestrel::fuzz::workFolder().path();
    kestrel::fuzz::run({data, size}, host);
    return 0;
}
