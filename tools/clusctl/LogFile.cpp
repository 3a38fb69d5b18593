#include "LogFile.h"

#include "Stream.h"
#include "Text.h"

#include "common/Files.h"
#include "common/Text.h"

#include <LogConfig.h>
#include <LogLine.h>

#include <winsock2.h>
#include <windows.h>

using namespace DebugLogDetail;

namespace {

std::wstring g_path;

} // namespace

LogFile::LogFile(const std::wstring& option) {
    if (!option.empty()) {
        SetEnvironmentVariableW(FileVariable, option.c_str());
    }
    const LogConfig config = ReadLogConfig();
    if (config.file.empty()) {
        // What goes to a debugger instead is not masked either: command lines, which are information, are left out.
        if ((config.mask & ~static_cast<unsigned int>(MaskDefault)) != 0) {
            SetEnvironmentVariableW(LevelVariable, L"warning");
        }
        return;
    }
    g_path = common::FullPath(config.file); // whatever the current folder is when it is written
    m_file = common::AppendFile(g_path);
    m_mask = m_file.Open() == ERROR_SUCCESS ? config.mask : 0;
    // The log library is left a file that keeps nothing.
    SetEnvironmentVariableW(FileVariable, L"NUL");
}

void LogFile::Write(unsigned int level, const char* sourceFile, int line, const std::string& text) {
    if ((MaskOfLevel(level) & m_mask) == 0) {
        return;
    }
    const std::string head = common::ToUtf8(LineHead(level, L"clusutil.dll", sourceFile, line));
    const DWORD code = m_file.Append(head + text + "\r\n");
    if (code != ERROR_SUCCESS && !m_hasWarned) {
        m_hasWarned = true;
        Stream(STD_ERROR_HANDLE).Write("clusctl: warning: the log file is incomplete: " + ErrorText(code) + "\n");
    }
}

const std::wstring& DebugLogPath() {
    return g_path;
}
