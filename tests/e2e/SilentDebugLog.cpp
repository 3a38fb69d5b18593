#include <DebugLog.h>

namespace DBG {

void DebugLogEx(HMODULE, unsigned int, const char*, int, const wchar_t*, ...) {
}

} // namespace DBG
