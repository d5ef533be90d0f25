// One target under libFuzzer; FUZZ_TARGET names its entry.
#include "FuzzTarget.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerInitialize(int* /* argc */, char*** /* argv */) {
    fuzz::Prepare();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::FUZZ_TARGET(data, size);
    return 0;
}
