// What a line of the log looks like.
#ifndef LOGLINE_H
#define LOGLINE_H

#include <string>

namespace DebugLogDetail {

// The one bit of LogConfig::mask that lets the level pass.
unsigned int MaskOfLevel(unsigned int level);

// "ERROR", "WARNING", "INFO", "ENTER", "LEAVE" or "TRACE".
const wchar_t* WordOfLevel(unsigned int level);

// What stands before a line's text: local time, process, thread, level, file name of the module, and place. `module`
// and `sourceFile` may have a folder; a null `sourceFile` is survived.
std::wstring LineHead(unsigned int level, const std::wstring& module, const char* sourceFile, int line);

// Appends `text` with everything that could end or garble a line replaced by a visible escape; line ends at its end are
// dropped.
void AppendPrintable(std::wstring& line, const std::wstring& text);

} // namespace DebugLogDetail

#endif
