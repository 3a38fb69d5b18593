// Takes arbitrary bytes for what a cluster gives to clusctl's snapshot and is sent to the cluster simulator: property
// lists and disk information.
#include "FuzzInput.h"

#include "PropertyJson.h"
#include "PropertyLists.h"

#include <algorithm>

namespace {

void CheckAsJson(const std::vector<unsigned char>& bytes) {
    try {
        Json properties = PropertiesJson(bytes);
        const std::size_t masked = MaskSecretProperties(properties);
        FUZZ_CHECK(properties.is_object() && masked <= properties.size());
        FUZZ_CHECK(!common::DumpJson(properties).empty());
    } catch (const Failure& failure) {
        FUZZ_CHECK(failure.what()[0] != '\0');
    }
    try {
        const Json disk = DiskJson(bytes);
        FUZZ_CHECK(disk["partitions"].is_array());
    } catch (const Failure& failure) {
        FUZZ_CHECK(failure.what()[0] != '\0');
    }
}

// What is read as a whole is found by its name, too.
void CheckAsSent(const ExactBlock& block) {
    clussim::PropertySet properties;
    const clussim::Code code = clussim::ParsePropertyList(block.Data(), block.Size(), properties);
    FUZZ_CHECK(code == 0 || code == 13 || code == 122);
    for (const clussim::PropertySet::Item& item : properties.Items()) {
        clussim::PropertyValue value;
        const clussim::Code found = clussim::FindListedProperty(block.Data(), block.Size(), item.name, value);
        FUZZ_CHECK(found == 0);
    }
    clussim::PropertyValue value;
    const clussim::Code missing = clussim::FindListedProperty(block.Data(), block.Size(), L"\x01 no name", value);
    FUZZ_CHECK(missing == 2 || missing == 13 || missing == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CheckAsJson(std::vector<unsigned char>(data, data + size));
    CheckAsSent(ExactBlock(data, size));
    return 0;
}
