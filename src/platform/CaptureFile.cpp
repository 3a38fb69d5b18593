#include "platform/CaptureFile.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <io.h>
#include <share.h>

namespace clus {

TextFileReader::TextFileReader(const wchar_t* fileName)
    : m_file(_wsopen(fileName, _O_RDONLY | _O_TEXT | _O_NOINHERIT, _SH_DENYNO)) {
}

TextFileReader::~TextFileReader() {
    if (m_file >= 0) {
        _close(m_file);
    }
}

std::size_t TextFileReader::Size() const {
    const __int64 size = _filelengthi64(m_file);
    return size > 0 ? static_cast<std::size_t>(size) : 0;
}

bool TextFileReader::Fill() {
    const int count = _read(m_file, m_bytes, sizeof(m_bytes));
    m_position = 0;
    m_size = count > 0 ? static_cast<std::size_t>(count) : 0;
    return m_size > 0;
}

bool TextFileReader::ReadLine(std::wstring& line) {
    line.clear();
    bool any = false;
    while (m_position < m_size || Fill()) {
        any = true;
        const unsigned char* const begin = m_bytes + m_position;
        const unsigned char* const end = m_bytes + m_size;
        const void* const found = std::memchr(begin, '\n', static_cast<std::size_t>(end - begin));
        const unsigned char* const lineEnd = found ? static_cast<const unsigned char*>(found) : end;
        const std::size_t length = line.size();
        line.resize(length + static_cast<std::size_t>(lineEnd - begin));
        std::copy(begin, lineEnd, line.begin() + static_cast<std::ptrdiff_t>(length));
        m_position = static_cast<std::size_t>(lineEnd - m_bytes);
        if (found) {
            ++m_position;
            break;
        }
    }
    return any;
}

} // namespace clus
