// Reads texts as files of resource types of the VCS simulator.
#include "FuzzInput.h"

#include "CfLexer.h"
#include "TypeTable.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = AsText(data, size);
    vcssim::TypeTable types;
    std::vector<std::string> words;
    try {
        types.Read(text);
        for (const vcssim::CfToken& token : vcssim::SplitCf(text)) {
            FUZZ_CHECK(token.span.begin <= token.span.end && token.span.end <= text.size());
            words.push_back(token.text);
        }
    } catch (const vcssim::CfError& error) {
        FUZZ_CHECK(error.Line() >= 1 && error.what()[0] != '\0');
    }
    // What was read of a broken file does not keep the table from answering.
    for (std::size_t i = 0; i + 1 < words.size() && i < 64; ++i) {
        const vcssim::ResourceType* const type = types.Find(words[i]);
        const vcssim::AttributeType* const attribute = types.Find(words[i], words[i + 1]);
        FUZZ_CHECK(type != nullptr || attribute == nullptr || types.Find("IP", words[i + 1]) != nullptr);
    }
    const vcssim::AttributeType* const common = types.Find("GenericService", "Critical");
    FUZZ_CHECK(common != nullptr);
    return 0;
}
