// A file that several processes append lines to: logs, journals.
#ifndef COMMON_APPENDFILE_H
#define COMMON_APPENDFILE_H

#include "common/FileLock.h"
#include "common/Handle.h"

#include <string>

namespace common {

class AppendFile {
public:
    // No file: everything fails.
    AppendFile() = default;
    explicit AppendFile(const std::wstring& path);

    // Makes the file when there is none. It may be renamed or deleted while it is open; what is appended then goes to
    // the renamed file, or nowhere. The Win32 code.
    DWORD Open();
    void Close();
    bool IsOpen() const {
        return static_cast<bool>(m_file);
    }

    // Appends whole lines, with their line ends, in one piece; opens the file first when it is not. A process that
    // does not get its turn within two seconds goes on without, for good: a stopped one must not stop the others. The
    // Win32 code.
    DWORD Append(const std::string& lines);

private:
    std::wstring m_path;
    Handle m_file;
    FileLock m_lock;
    bool m_takesTurns = true;
};

} // namespace common

#endif
