#include "ModelFile.h"

#include "ModelJson.h"

#include "common/Files.h"
#include "common/Text.h"

#include <winternl.h>

#include <cstdio>
#include <cstdlib>

namespace clussim {

using common::ToUtf16;
using common::ToUtf8;

namespace {

// In units of a FILETIME. No file system's clock that is finer than seconds takes longer from one time to the next.
const std::int64_t ClockTick = std::int64_t{50} * 10000;

// Within this time of a look at the file it is taken for unchanged. Whoever writes a file needs longer from the moment
// at which it changes until it can tell anybody, and before that no order of the two can be seen.
const std::int64_t LooksPerSecond = 50000;

// What becomes of invalid text.
const char ReplacementCharacter[] = "\xEF\xBF\xBD";

std::int64_t ToNumber(const FILETIME& time) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
}

// FILE_NETWORK_OPEN_INFORMATION, which is in the headers of drivers only.
struct FileInformation {
    LARGE_INTEGER created;
    LARGE_INTEGER read;
    LARGE_INTEGER written;
    LARGE_INTEGER changed;
    LARGE_INTEGER allocated;
    LARGE_INTEGER size;
    ULONG attributes;
};

// What GetFileAttributesExW calls, which works on the path each time: that takes a third as long as the call itself.
bool Query(const std::wstring& systemPath, FileInformation& information) {
    typedef NTSTATUS(NTAPI * QueryFunction)(const OBJECT_ATTRIBUTES*, FileInformation*);
    static const auto query = reinterpret_cast<QueryFunction>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQueryFullAttributesFile")));
    UNICODE_STRING name = {};
    name.Buffer = const_cast<wchar_t*>(systemPath.c_str());
    name.Length = name.MaximumLength = static_cast<USHORT>(systemPath.size() * sizeof(wchar_t));
    OBJECT_ATTRIBUTES object;
    InitializeObjectAttributes(&object, &name, OBJ_CASE_INSENSITIVE, nullptr, nullptr);
    return query(&object, &information) >= 0;
}

// Of a full path: \??\C:\model.json, or \??\UNC\server\share\model.json.
std::wstring SystemPath(const std::wstring& path) {
    const std::wstring root = L"\\??\\";
    if (path.rfind(L"\\\\?\\", 0) == 0) {
        return root + path.substr(root.size());
    }
    return path.rfind(L"\\\\", 0) == 0 ? root + L"UNC" + path.substr(1) : root + path;
}

std::int64_t Now() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    return ToNumber(time);
}

std::int64_t Ticks() {
    LARGE_INTEGER ticks;
    QueryPerformanceCounter(&ticks);
    return ticks.QuadPart;
}

std::int64_t TicksBetweenLooks() {
    LARGE_INTEGER perSecond;
    QueryPerformanceFrequency(&perSecond);
    return perSecond.QuadPart / LooksPerSecond;
}

} // namespace

std::wstring ThisComputer() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = L"";
    DWORD cch = MAX_COMPUTERNAME_LENGTH + 1;
    GetComputerNameW(name, &cch);
    return name;
}

void ModelFile::SetPath(const std::wstring& path) {
    m_path = path.empty() ? path : common::FullPath(path);
    m_givenPath = path;
    m_systemPath = SystemPath(m_path);
    m_lock = common::FileLock(m_path);
    m_told.clear();
    m_isKept = m_isUnwritten = false;
    Forget();
}

void ModelFile::Forget() {
    m_text.reset();
    m_model.reset();
    m_stamp.reset();
}

void ModelFile::Tell(const std::string& message) {
    if (message == m_told) {
        return;
    }
    m_told = message;
    const std::string line = "clussim: " + ToUtf8(m_givenPath) + ": " + message + "\n";
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
    OutputDebugStringW(ToUtf16(line).c_str());
}

Model* ModelFile::Current() {
    if (m_path.empty()) {
        return nullptr;
    }
    const bool isKnown = m_isKept && m_model;
    if (!isKnown && (!m_stamp || HasChanged())) {
        Read();
    }
    return m_model.get();
}

bool ModelFile::HasChanged() {
    static const std::int64_t interval = TicksBetweenLooks();
    const std::int64_t now = Ticks();
    if (now >= m_looked && now - m_looked < interval) {
        return false;
    }
    m_looked = now;
    return !(StampOfFile() == m_stamp);
}

std::optional<ModelFile::Stamp> ModelFile::StampOfFile() const {
    FileInformation information;
    if (!Query(m_systemPath, information)) {
        return std::nullopt;
    }
    Stamp stamp;
    stamp.written = information.written.QuadPart;
    stamp.size = static_cast<std::uint64_t>(information.size.QuadPart);
    return stamp;
}

void ModelFile::Read() {
    // Where there is no turn, the file is whole all the same.
    const common::FileLock::Turn turn(m_lock);
    const char* attempt = "opened";
    try {
        // Taken first: what is written from now on has a later stamp, unless the file was written in this very tick.
        const std::optional<Stamp> stamp = StampOfFile();
        const bool showsChanges = stamp && std::abs(Now() - stamp->written) > ClockTick;
        const common::Handle file = common::OpenForReading(m_path);
        attempt = "read";
        std::string text = common::ReadToEnd(file, m_path);
        if (text != m_text) {
            Forget();
            m_text = std::move(text);
            m_model = clussim::ReadModel(*m_text, ThisComputer());
            m_told.clear();
        }
        m_stamp = showsChanges ? stamp : std::nullopt;
    } catch (const common::FileError& error) {
        Forget();
        Tell(std::string("cannot be ") + attempt + ", error " + std::to_string(error.Code()));
    } catch (const ModelError& error) {
        Tell(error.what());
    }
}

Code ModelFile::Write() {
    if (m_isKept) {
        m_isUnwritten = true;
        return ERROR_SUCCESS;
    }
    return Replace();
}

Code ModelFile::WriteKept() {
    if (!m_isUnwritten || !m_model) {
        return ERROR_SUCCESS;
    }
    m_isUnwritten = false;
    return Replace();
}

Code ModelFile::Replace() {
    std::string text = WriteModel(*m_model);
    try {
        common::WriteWholeFile(m_path, text);
    } catch (const common::FileError& error) {
        Forget();
        return error.Code();
    }
    m_model->isChanged = false;
    const bool isReadDifferently = text.find(ReplacementCharacter) != std::string::npos; // than it stands in the model
    m_text = std::move(text);
    m_stamp.reset();
    if (isReadDifferently) {
        Forget();
    }
    return ERROR_SUCCESS;
}

} // namespace clussim
