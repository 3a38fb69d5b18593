#include "LastLines.h"

#include "Secrets.h"

#include "common/Files.h"
#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <algorithm>
#include <vector>

namespace {

const LONGLONG MostBytes = LONGLONG{4} * 1024 * 1024;

// The end of the file, which begins with a whole line.
std::string ReadEnd(const std::wstring& file) {
    const common::Handle handle = common::OpenForReading(file);
    LARGE_INTEGER size = {};
    LARGE_INTEGER begin = {};
    if (!GetFileSizeEx(handle.get(), &size)) {
        throw common::FileError(file, "read", GetLastError());
    }
    begin.QuadPart = std::max<LONGLONG>(0, size.QuadPart - MostBytes);
    if (!SetFilePointerEx(handle.get(), begin, nullptr, FILE_BEGIN)) {
        throw common::FileError(file, "read", GetLastError());
    }
    const std::string text = common::ReadToEnd(handle, file);
    return begin.QuadPart == 0 ? text : text.substr(std::min(text.find('\n'), text.size() - 1) + 1);
}

} // namespace

std::string LastLines(const std::wstring& file, std::size_t most) {
    const std::string text = ReadEnd(file);
    LogSecrets secrets; // one that was told once is found again in later lines: all are looked at
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::size_t length = end - at - (end > at && text[end - 1] == '\r' ? 1 : 0);
        lines.push_back(common::ToUtf8(secrets.Masked(common::ToUtf16(text.substr(at, length)))));
        at = end + 1;
    }
    std::string last;
    for (std::size_t i = lines.size() - std::min(most, lines.size()); i < lines.size(); ++i) {
        last.append(lines[i]).append("\n");
    }
    return last;
}
