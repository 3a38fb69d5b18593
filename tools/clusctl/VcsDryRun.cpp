#include "VcsDryRun.h"

#include "Report.h"
#include "Secrets.h"
#include "Text.h"
#include "TextDifference.h"

#include "common/Text.h"
#include "common/Environment.h"

#include <winsock2.h>
#include <windows.h>

namespace {

const wchar_t FileVariable[] = L"VCSSIM_MAIN_CF";
const wchar_t JournalVariable[] = L"VCSSIM_JOURNAL";
const int MostAttempts = 100; // while others use a file
const DWORD Pause = 20;       // milliseconds

bool FileExists(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring FolderOf(const std::wstring& path) {
    return path.substr(0, path.find_last_of(L"\\/:") + 1);
}

// Whether somebody may just be looking at a file, or deleting it.
bool IsPassing(DWORD code) {
    return code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION || code == ERROR_ACCESS_DENIED;
}

[[noreturn]] void ThrowCannot(const char* verb, const std::wstring& file, DWORD code) {
    throw Failure(std::string("cannot ") + verb + " " + Quoted(file) + ": " + ErrorText(code));
}

void Copy(const std::wstring& from, const std::wstring& to) {
    for (int attempt = 1; !CopyFileW(from.c_str(), to.c_str(), TRUE); ++attempt) {
        const DWORD code = GetLastError();
        if (attempt == MostAttempts || !IsPassing(code)) {
            ThrowCannot("copy", from, code);
        }
        Sleep(Pause);
    }
    // The copy of a read-only file, too, has to change.
    if (!SetFileAttributesW(to.c_str(), FILE_ATTRIBUTE_NORMAL)) {
        ThrowCannot("make writable", to, GetLastError());
    }
}

void SetVariable(const wchar_t* name, const std::wstring& value) {
    if (!SetEnvironmentVariableW(name, value.c_str())) {
        throw Failure("cannot set the variable " + common::ToUtf8(name) + ": " + ErrorText(GetLastError()));
    }
}

std::string ReadText(const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        ThrowCannot("read", path, GetLastError());
    }
    std::string text;
    char piece[4096];
    DWORD count = 0;
    BOOL isRead = FALSE;
    while ((isRead = ReadFile(file, piece, sizeof(piece), &count, nullptr)) && count != 0) {
        text.append(piece, count);
    }
    const DWORD code = GetLastError();
    CloseHandle(file);
    if (!isRead) {
        ThrowCannot("read", path, code);
    }
    return text;
}

// The configuration that the cluster runs with: that of the file, or another one until it is written there.
std::string RunningConfiguration(const std::wstring& mainCf) {
    const std::wstring live = mainCf + L".live";
    return ReadText(FileExists(live) ? live : mainCf);
}

// Keeps the simulator's tools from changing the files while they are copied.
class ToolLock {
public:
    explicit ToolLock(const std::wstring& mainCf) {
        const std::wstring path = mainCf + L".lock";
        for (int attempt = 1;; ++attempt) {
            m_file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                 FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
            const DWORD code = GetLastError();
            if (m_file != INVALID_HANDLE_VALUE) {
                return;
            }
            if (attempt < MostAttempts && IsPassing(code)) {
                Sleep(Pause);
            } else if (code == ERROR_SHARING_VIOLATION) {
                ThrowCannot("lock", mainCf, code);
            } else {
                return; // a folder that cannot be written: nobody changes the files there
            }
        }
    }
    ~ToolLock() {
        if (m_file != INVALID_HANDLE_VALUE) {
            CloseHandle(m_file);
        }
    }
    ToolLock(const ToolLock&) = delete;
    ToolLock& operator=(const ToolLock&) = delete;

private:
    HANDLE m_file = INVALID_HANDLE_VALUE;
};

std::wstring CreateFolder() {
    wchar_t temporary[MAX_PATH + 1] = {};
    if (GetTempPathW(MAX_PATH + 1, temporary) == 0) {
        throw Failure("there is no folder for temporary files: " + ErrorText(GetLastError()));
    }
    for (int number = 1;; ++number) {
        const std::wstring folder = std::wstring(temporary) + L"clusctl-" + std::to_wstring(GetCurrentProcessId()) +
                                    L"-" + std::to_wstring(number);
        if (CreateDirectoryW(folder.c_str(), nullptr)) {
            return folder + L"\\";
        }
        if (GetLastError() != ERROR_ALREADY_EXISTS) {
            throw Failure("cannot create the folder " + Quoted(folder) + ": " + ErrorText(GetLastError()));
        }
    }
}

} // namespace

VcsDryRun::VcsDryRun() {
    const std::wstring mainCf = common::EnvironmentVariable(FileVariable);
    if (mainCf.empty()) {
        throw Failure("a dry run needs the VCS simulator: VCSSIM_MAIN_CF does not name a main.cf");
    }
    if (!FileExists(mainCf)) {
        throw Failure("there is no file " + Quoted(mainCf) + ", which VCSSIM_MAIN_CF names");
    }
    m_name = mainCf.substr(FolderOf(mainCf).size());
    m_folder = CreateFolder();
    try {
        const ToolLock lock(mainCf);
        CopyBeside(mainCf, L"");
        CopyBeside(mainCf, L".state.json");
        CopyBeside(mainCf, L".live");
        CopyIncludes(mainCf);
        m_before = RunningConfiguration(m_folder + m_name);
        SetVariable(FileVariable, m_folder + m_name);
        SetVariable(JournalVariable, m_folder + L"journal");
    } catch (const std::exception&) {
        DeleteCopy();
        throw;
    }
}

VcsDryRun::~VcsDryRun() {
    DeleteCopy();
}

void VcsDryRun::CopyBeside(const std::wstring& file, const wchar_t* suffix) const {
    if (FileExists(file + suffix)) {
        Copy(file + suffix, m_folder + m_name + suffix);
    }
}

// The files of types that lie beside: `include "types.cf"`.
void VcsDryRun::CopyIncludes(const std::wstring& file) const {
    for (const std::string& line : SplitLines(ReadText(file))) {
        const size_t open = line.find('"');
        const size_t close = open == std::string::npos ? open : line.find('"', open + 1);
        if (line.compare(0, 7, "include") != 0 || close == std::string::npos) {
            continue;
        }
        const std::wstring name = common::ToUtf16(line.substr(open + 1, close - open - 1));
        const bool isPlain = !name.empty() && name.find_first_of(L"\\/:") == std::wstring::npos;
        if (isPlain && FileExists(FolderOf(file) + name) && !FileExists(m_folder + name)) {
            Copy(FolderOf(file) + name, m_folder + name);
        }
    }
}

void VcsDryRun::DeleteCopy() const {
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((m_folder + L"*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            DeleteFileW((m_folder + found.cFileName).c_str());
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    RemoveDirectoryW(m_folder.c_str());
}

void VcsDryRun::RequireSimulator() const {
    if (!FileExists(m_folder + L"journal")) {
        throw Failure("the VCS tools on the search path are not the simulator's: they would change the real cluster");
    }
}

std::vector<std::string> VcsDryRun::Difference() const {
    std::vector<std::string> lines =
        UnifiedDifference(MaskedConfiguration(SplitLines(m_before)),
                          MaskedConfiguration(SplitLines(RunningConfiguration(m_folder + m_name))));
    if (!lines.empty()) {
        const std::string name = common::ToUtf8(m_name);
        lines.insert(lines.begin(), {"--- " + name, "+++ " + name + " (after)"});
    }
    return lines;
}
