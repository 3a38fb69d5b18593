#include "OpenDispatch.h"

#include "ImportPatch.h"

#include <cerrno>

namespace harness {

namespace {

typedef int OpenFunction(const wchar_t*, int, int, int);
typedef int DispatchFunction(const wchar_t*, int, int, int, int* file, int isSecure);

void* s_open = nullptr;     // an OpenFunction
void* s_dispatch = nullptr; // the runtime's DispatchFunction

int Open(const wchar_t* name, int mode, int share, int permission) {
    int file = -1;
    return reinterpret_cast<DispatchFunction*>(s_dispatch)(name, mode, share, permission, &file, 0) == 0 ? file : -1;
}

int Dispatch(const wchar_t* name, int mode, int share, int permission, int* file, int) {
    *file = reinterpret_cast<OpenFunction*>(s_open)(name, mode, share, permission);
    return *file != -1 ? 0 : errno != 0 ? errno : EINVAL;
}

} // namespace

std::vector<void**> OpensThroughDispatch(const std::vector<void**>& dispatchEntries) {
    void* const ours = reinterpret_cast<void*>(&Dispatch);
    for (void** entry : dispatchEntries) {
        if (*entry != ours) {
            s_dispatch = *entry;
            s_open = s_open ? s_open : reinterpret_cast<void*>(&Open);
            WriteImport(entry, ours);
        }
    }
    return dispatchEntries.empty() ? std::vector<void**>() : std::vector<void**>{&s_open};
}

} // namespace harness
