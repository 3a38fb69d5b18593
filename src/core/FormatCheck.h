// Checks printf-style formats against their arguments while the library is compiled.
#ifndef CLUS_CORE_FORMATCHECK_H
#define CLUS_CORE_FORMATCHECK_H

#include <cstddef>
#include <type_traits>

namespace clus {

// The types of a format's arguments as they are passed: arrays as pointers.
template <typename... Types> struct FormatArguments {};

// For decltype() only, never defined: the format itself, which comes first, is left out.
template <typename... Types> FormatArguments<Types...> FormatArgumentsOf(const wchar_t* format, Types... arguments);

enum class FormatArgument {
    Text,      // %s: a wide text
    Character, // %c: a wide character
    Number,    // %d %u %x: an integer of at most 32 bits, signed or not, since codes are shown as they come
    None       // nothing that this library's formats take
};

template <typename Type> constexpr FormatArgument FormatArgumentKind() {
    if (std::is_same<Type, const wchar_t*>::value || std::is_same<Type, wchar_t*>::value) {
        return FormatArgument::Text;
    }
    if (std::is_same<Type, wchar_t>::value) {
        return FormatArgument::Character;
    }
    return std::is_integral<Type>::value && sizeof(Type) <= 4 ? FormatArgument::Number : FormatArgument::None;
}

// What the conversion takes that stands at `format`, behind its "%"; goes behind it. A width of digits may stand in
// front of a number.
constexpr FormatArgument TakeConversion(const wchar_t*& format) {
    const bool hasWidth = *format >= L'0' && *format <= L'9';
    while (*format >= L'0' && *format <= L'9') {
        ++format;
    }
    switch (*format) {
    case L'd':
    case L'u':
    case L'x':
        ++format;
        return FormatArgument::Number;
    case L's':
        ++format;
        return hasWidth ? FormatArgument::None : FormatArgument::Text;
    case L'c':
        ++format;
        return hasWidth ? FormatArgument::None : FormatArgument::Character;
    default:
        return FormatArgument::None;
    }
}

// Whether the format takes exactly these arguments, each by a conversion of its kind.
template <typename... Types> constexpr bool FormatTakes(const wchar_t* format, FormatArguments<Types...>) {
    // With an end mark, so that the array is never empty.
    const FormatArgument kinds[] = {FormatArgumentKind<Types>()..., FormatArgument::None};
    std::size_t taken = 0;
    while (*format != L'\0') {
        if (*format++ != L'%') {
            continue;
        }
        if (*format == L'%') {
            ++format;
            continue;
        }
        const FormatArgument wanted = TakeConversion(format);
        if (wanted == FormatArgument::None || wanted != kinds[taken]) {
            return false;
        }
        ++taken;
    }
    return taken == sizeof...(Types);
}

} // namespace clus

#define CLUS_EXPAND(text) text // for compilers that hand __VA_ARGS__ on as one argument
#define CLUS_FIRST_OF(first, ...) first
#define CLUS_FIRST(...) CLUS_EXPAND(CLUS_FIRST_OF(__VA_ARGS__, 0))

// The format, a literal, comes first, then its arguments; none of them is evaluated.
#define CLUS_CHECK_FORMAT(...)                                                                                      \
    static_assert(clus::FormatTakes(L"" CLUS_FIRST(__VA_ARGS__), decltype(clus::FormatArgumentsOf(__VA_ARGS__))()), \
                  "the arguments do not fit the format")

#endif
