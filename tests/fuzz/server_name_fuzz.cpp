// Compares arbitrary texts as server names with the rules acted out letter by letter.
#include "FuzzInput.h"

#include "core/ServerName.h"

#include <cctype>
#include <cwctype>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::wstring text;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        text += static_cast<wchar_t>(data[i] | data[i + 1] << 8);
    }
    text = text.c_str();

    std::wstring upper;
    std::wstring label;
    bool isInLabel = true;
    for (const wchar_t c : text) {
        upper += static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c)));
        isInLabel = isInLabel && c != L'.';
        if (isInLabel) {
            label += c < 0x100 ? static_cast<wchar_t>(std::toupper(static_cast<int>(c))) : c;
        }
    }
    FUZZ_CHECK(clus::WideUpper(text.c_str()) == upper);
    FUZZ_CHECK(clus::UpperFirstLabel(text.c_str()) == label);
    const wchar_t first = text.empty() ? L'\0' : text.front();
    FUZZ_CHECK(clus::StartsLikeHostName(text.c_str()) ==
               ((first >= L'A' && first <= L'Z') || (first >= L'a' && first <= L'z')));
    return 0;
}
