// Reads texts as main.cf files. What can be read is kept byte for byte, and a change changes what it says and nothing
// else.
#include "FuzzInput.h"
#include "MainCfChecks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CheckMainCf(AsText(data, size));
    return 0;
}
