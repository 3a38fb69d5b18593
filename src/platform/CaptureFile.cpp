#include "platform/CaptureFile.h"

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

bool TextFileReader::ReadLine() {
    m_length = 0;
    bool any = false;
    bool ended = false;
    while (!ended && (m_position < m_size || Fill())) {
        any = true;
        const std::size_t most = m_length + m_size - m_position;
        if (m_line.size() <= most) {
            m_line.resize(most + 1); // with the terminator
        }
        const unsigned char* byte = m_bytes + m_position;
        const unsigned char* const end = m_bytes + m_size;
        wchar_t* character = &m_line[m_length];
        while (byte != end && *byte != '\n') {
            *character++ = *byte++;
        }
        *character = L'\0';
        m_length = static_cast<std::size_t>(character - m_line.data());
        ended = byte != end;
        m_position = static_cast<std::size_t>(byte - m_bytes) + (ended ? 1 : 0);
    }
    return any;
}

} // namespace clus
