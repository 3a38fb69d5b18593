// Reads the debug log's settings from arbitrary environments and registry values, of odd lengths and types too.
#include "FuzzInput.h"

#include "LogConfig.h"
#include "Process.h"

#include "common/Text.h"

#include <algorithm>
#include <iterator>

namespace {

using platform::ThisProcess;

void SetVariable(const wchar_t* name, const std::string& value) {
    if (!value.empty()) {
        ThisProcess().environment[name] = common::ToUtf16(value).c_str();
    }
}

bool IsMaskOfALevel(unsigned int mask) {
    const unsigned int masks[] = {0, 1, 3, 7, 15};
    return std::find(std::begin(masks), std::end(masks), mask) != std::end(masks);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace DebugLogDetail;
    ThisProcess() = platform::Process();
    std::string text = AsText(data, size);
    const std::string level = TakeLine(text);
    const std::string file = TakeLine(text);
    SetVariable(LevelVariable, level);
    SetVariable(FileVariable, file);
    ThisProcess().environment[L"TEMP"] = std::wstring(300, L't');
    if (!text.empty()) {
        const auto kind = static_cast<unsigned char>(text.front());
        text.erase(0, 1);
        const std::size_t half = kind % 2 == 0 ? text.size() / 2 : 0;
        ThisProcess().registry[L"File"] = {kind / 2 % 4u, text.substr(half)};
        ThisProcess().registry[L"Level"] = {kind / 8 % 4u, text.substr(0, half)};
    }
    const LogConfig config = ReadLogConfig();
    FUZZ_CHECK(IsMaskOfALevel(config.mask) && IsMaskOfALevel(config.maskWithoutFile));
    FUZZ_CHECK(config.file.find(L'\0') == std::wstring::npos);
    FUZZ_CHECK(config.mask == config.maskWithoutFile || (config.mask == MaskAll && !config.file.empty()));
    const std::wstring named = common::ToUtf16(file).c_str();
    FUZZ_CHECK(named.empty() || config.file == named);
    return 0;
}
