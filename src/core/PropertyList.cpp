#include "core/PropertyList.h"

#include "core/ValueList.h"

namespace clus {

namespace {

const std::size_t CharacterSize = 2; // UTF-16 on the wire, whatever wchar_t is
const std::size_t CountSize = 4;
const std::size_t EndMarkSize = 4;
const std::size_t DwordSize = 4;

// Writes one list front to back; gaps stay the zeros they were.
class Writer {
public:
    explicit Writer(unsigned char* block) : m_next(block) {
    }

    void Dword(std::uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8) {
            *m_next++ = static_cast<unsigned char>(value >> shift);
        }
    }

    void TextEntry(std::uint32_t syntax, const wchar_t* text, std::size_t cch) {
        const std::size_t cb = (cch + 1) * CharacterSize;
        Dword(syntax);
        Dword(static_cast<std::uint32_t>(cb));
        for (std::size_t i = 0; i < cch; ++i) {
            m_next[i * CharacterSize] = static_cast<unsigned char>(text[i]);
            m_next[i * CharacterSize + 1] = static_cast<unsigned char>(text[i] >> 8);
        }
        m_next += PaddedLength(cb);
    }

private:
    unsigned char* m_next;
};

std::size_t TextEntrySize(std::size_t cch) {
    return EntryHeaderSize + PaddedLength((cch + 1) * CharacterSize);
}

} // namespace

std::size_t DwordPropertyListSize(std::size_t cchName) {
    return CountSize + TextEntrySize(cchName) + EntryHeaderSize + DwordSize + EndMarkSize;
}

void WriteDwordPropertyList(unsigned char* block, const wchar_t* name, std::size_t cchName, std::uint32_t value) {
    Writer writer(block);
    writer.Dword(1); // one property
    writer.TextEntry(SyntaxName, name, cchName);
    writer.Dword(SyntaxListValueDword);
    writer.Dword(DwordSize);
    writer.Dword(value);
    writer.Dword(SyntaxEndMark);
}

std::size_t TextPropertyListSize(std::size_t cchName, std::size_t cchValue) {
    return CountSize + TextEntrySize(cchName) + TextEntrySize(cchValue) + EndMarkSize;
}

void WriteTextPropertyList(unsigned char* block, const wchar_t* name, std::size_t cchName, const wchar_t* value,
                           std::size_t cchValue) {
    Writer writer(block);
    writer.Dword(1); // one property
    writer.TextEntry(SyntaxName, name, cchName);
    writer.TextEntry(SyntaxListValueSz, value, cchValue);
    writer.Dword(SyntaxEndMark);
}

} // namespace clus
