// Every call of the cluster API that the modules of this process make, led to somebody who answers it.
#ifndef RECORDING_INTERCEPTION_H
#define RECORDING_INTERCEPTION_H

#include <winsock2.h>
#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace recording {

// An argument or a result as it is handed over: a number, or an address.
typedef std::uint64_t Slot;

enum class Kind {
    Handle,
    Text,         // a name that goes in
    PropertyName, // the same for a property's
    Number,
    Control,    // the number that says what the bytes are
    NameOut,    // two arguments: room for a text, and how much there is
    NumberOut,  // where a number of 32 bits goes
    KeyOut,     // where one of the size of an address goes
    Version,    // a CLUSTERVERSIONINFO
    Class,      // a CLUS_RESOURCE_CLASS_INFO
    BytesIn,    // two arguments: bytes and their count
    BytesOut,   // three arguments: room for bytes, how much there is, where their count goes
    Properties, // two arguments: a property list, and the room that it lies in
    TextCopy    // where the address of a text goes that the caller frees
};

struct Argument {
    Kind kind;
    const char* name; // in recordings
};

enum class Result {
    Handle,
    Code,
    Truth,
    State
};
enum class Effect {
    Asks,
    Closes,
    Changes,
    ByControl
};

// A function of the cluster API.
struct Call {
    const char* library; // "clusapi.dll"
    const char* name;
    Result result;
    Effect effect;
    std::vector<Argument> arguments;
    void* entry;              // the function that takes its place
    void* original = nullptr; // null when the DLL does not have it
};

// Calls the original with these arguments.
typedef Slot (*Invocation)(void* original, const Slot* slots);

// Who answers. May throw what the callers of the cluster API let pass.
class Interceptor {
public:
    virtual ~Interceptor() = default;
    virtual Slot Answer(const Call& call, const Slot* slots, Invocation invoke) = 0;

    // The same for the VCS tools that are started, and for what is asked of them. `program` may be null.
    virtual BOOL StartProcess(const wchar_t* program, wchar_t* commandLine, DWORD flags, STARTUPINFOW* startup,
                              PROCESS_INFORMATION* information) = 0;
    virtual BOOL ExitCodeOf(HANDLE process, DWORD* exitCode) = 0;

    // The name of this computer; empty for what the system says.
    virtual std::wstring ComputerName() const {
        return std::wstring();
    }

    // Whether it answers functions that change the cluster, too, of which only the names are known. They come without
    // arguments, and refuse when they are invoked; else they pass by.
    virtual bool TakesChangesByName() const {
        return false;
    }
};

// The function that the call is made of; null when the DLL does not have it, or cannot be loaded.
void* OriginalOf(const Call& call);

// Start a VCS tool and tell its exit code, for a program that starts one itself: as CreateProcessW and
// GetExitCodeProcess, through the interceptor. All handles that can be inherited are.
BOOL StartTool(const wchar_t* program, wchar_t* commandLine, DWORD flags, STARTUPINFOW* startup,
               PROCESS_INFORMATION* information);
BOOL ExitCodeOfTool(HANDLE process, DWORD* exitCode);

// An import of a module that leads to another function.
struct Patch {
    void** entry;
    void* replacement;
    void* original;
    HMODULE module;
};

// While it lives, the calls of the modules go to the interceptor, and so do those that went to another one before: that
// one is asked by the new one, or not at all.
class Interception {
public:
    // Whom the calls go to at present; null when they go to the cluster.
    static Interceptor* Current();

    // `modules`: null stands for the program itself. Of a DLL that is not loaded, calls are found by `Replacement`.
    Interception(Interceptor& interceptor, const std::vector<HMODULE>& modules);
    // Puts everything back, but in modules that are gone. Others may still be in calls.
    ~Interception();
    Interception(const Interception&) = delete;
    Interception& operator=(const Interception&) = delete;

    // Waits until nobody is in a call that was intercepted.
    static void AwaitCalls();

    // The function that takes the place of this one, which it calls as long as nobody intercepts; null when it is none
    // of the cluster API. For functions that a module looks up by their name.
    static FARPROC Replacement(const char* library, const char* name);

    // Functions of the cluster's DLLs that the modules import, and whose calls pass by an interceptor that takes
    // changes by their names, or does not. In order, each once.
    static std::vector<std::string> UnknownOf(const std::vector<HMODULE>& modules, bool takesChangesByName);

private:
    void PatchModule(HMODULE module);

    Interceptor* m_former;
    std::vector<Patch> m_patches;
};

// While it lives, GetComputerNameW tells the modules this name, unless an interceptor has another.
class GivenComputerName {
public:
    GivenComputerName(const std::wstring& name, const std::vector<HMODULE>& modules);
    ~GivenComputerName();
    GivenComputerName(const GivenComputerName&) = delete;
    GivenComputerName& operator=(const GivenComputerName&) = delete;

private:
    std::vector<Patch> m_patches;
};

} // namespace recording

#endif
