// Reads texts as state files of the VCS simulator. What can be read is written so that it reads the same again.
#include "FuzzInput.h"

#include "State.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vcssim::State state;
    try {
        state = vcssim::ReadState(AsText(data, size));
    } catch (const vcssim::StateError& error) {
        FUZZ_CHECK(error.what()[0] != '\0');
        return 0;
    }
    const std::string written = vcssim::WriteState(state);
    vcssim::State again = vcssim::ReadState(written);
    FUZZ_CHECK(vcssim::WriteState(again) == written);
    FUZZ_CHECK(again.resources == state.resources && again.probed == state.probed && again.failing == state.failing);
    for (const auto& resource : state.resources) {
        again.Forget(resource.first);
    }
    FUZZ_CHECK(again.resources.empty());
    return 0;
}
