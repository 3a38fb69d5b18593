// Wiping secrets out of memory.
#ifndef CLUS_CORE_TEXTERASER_H
#define CLUS_CORE_TEXTERASER_H

#include <cstddef>

namespace clus {

// Leaves no secret in an array of characters, whatever happens: overwrites it at the end of its scope. The array must
// outlive it.
class TextEraser {
public:
    TextEraser(wchar_t* text, std::size_t characters) : m_text(text), m_characters(characters) {
    }
    ~TextEraser() {
        Erase(m_text, m_characters);
    }
    TextEraser(const TextEraser&) = delete;
    TextEraser& operator=(const TextEraser&) = delete;

    // Through a volatile pointer: no compiler may leave it out because nobody reads the text again.
    static void Erase(wchar_t* text, std::size_t characters) {
        volatile wchar_t* const erased = text;
        for (std::size_t i = 0; i < characters; ++i) {
            erased[i] = L'\0';
        }
    }

private:
    wchar_t* m_text;
    std::size_t m_characters;
};

} // namespace clus

#endif
