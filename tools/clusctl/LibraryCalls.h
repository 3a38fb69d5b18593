// Which of the library's calls of the cluster failed, and with which code: its members tell only that one did.
#ifndef CLUSCTL_LIBRARYCALLS_H
#define CLUSCTL_LIBRARYCALLS_H

#include <Interception.h>

#include <string>

struct LibraryCall {
    std::string name;           // of the function; empty when there was none
    unsigned inARow = 0;        // from 1: which it is of calls of this function with no other between them
    DWORD code = ERROR_SUCCESS; // why it failed
};

// Watches the calls of this thread while it lives, which are the library's as long as only the library works. Who
// answers them otherwise still does.
class LibraryCalls : private recording::Interceptor {
public:
    LibraryCalls();

    // The last call, but for what closes or deletes something: when it failed, the library gave up for it.
    const LibraryCall& Last() const {
        return m_last;
    }
    // The code of the last change that failed, a deletion too; ERROR_SUCCESS when none did.
    DWORD RefusedChange() const {
        return m_refusedChange;
    }

private:
    // Called behind each call, before the library goes on. `code`: what it failed with, or ERROR_SUCCESS.
    virtual void Done(const recording::Call& call, const recording::Slot* slots, DWORD code);

    recording::Slot Answer(const recording::Call& call, const recording::Slot* slots,
                           recording::Invocation invoke) override;
    BOOL StartProcess(const wchar_t* program, wchar_t* commandLine, DWORD flags, STARTUPINFOW* startup,
                      PROCESS_INFORMATION* information) override;
    BOOL ExitCodeOf(HANDLE process, DWORD* exitCode) override;
    std::wstring ComputerName() const override;
    void Note(const recording::Call& call, const recording::Slot* slots, DWORD code);

    const DWORD m_thread;
    recording::Interceptor* const m_former;
    LibraryCall m_last;
    DWORD m_refusedChange = ERROR_SUCCESS;
    recording::Interception m_interception; // the last one: from here on calls come
};

#endif
