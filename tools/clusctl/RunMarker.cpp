#include "RunMarker.h"

#include "Json.h"
#include "Text.h"

#include "common/Environment.h"
#include "common/Files.h"
#include "common/Text.h"
#include "common/UtcTime.h"

#include <algorithm>
#include <cstdint>
#include <tuple>

namespace {

const wchar_t Extension[] = L".run";
const char ModelMember[] = "model";        // null of the cluster of this computer
const std::string OpeningOption = " --rw"; // the last word of a command that opens the configuration

// With its separator; empty when the system names no place for it.
std::wstring Folder() {
    const std::wstring data = common::EnvironmentVariable(L"ProgramData");
    return data.empty() ? std::wstring() : data + L"\\clusctl\\";
}

// The names in a folder that match.
std::vector<std::wstring> NamesIn(const std::wstring& folder, const std::wstring& pattern) {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((folder + pattern).c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            names.emplace_back(found.cFileName);
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    return names;
}

std::wstring TemporaryFolder() {
    wchar_t folder[MAX_PATH + 1] = {};
    return GetTempPathW(MAX_PATH + 1, folder) == 0 ? std::wstring() : folder;
}

// Whether no process has it open for writing, as its owner has. Shares everything: several runs may ask at once.
bool IsLeft(const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    CloseHandle(file);
    return true;
}

// The system's time in units of 100 ns: runs that begin in the same second have an order, too.
std::uint64_t Now() {
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    return static_cast<std::uint64_t>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
}

// A mark whose run is gone.
struct Left {
    std::string begun;     // "2026-11-22 16:45:03 UTC"
    std::uint64_t begunAt; // 0 when the mark does not tell
    std::wstring path;
    std::string sentence;
};

bool BeganBefore(const Left& one, const Left& other) {
    return std::tie(one.begun, one.begunAt, one.path) < std::tie(other.begun, other.begunAt, other.path);
}

// The simulated cluster that the run changed; empty of the one of this computer, and when the mark does not tell.
std::wstring ModelOf(const Json& mark) {
    const Json model = mark.value(ModelMember, Json());
    return model.is_string() ? common::ToUtf16(model.get<std::string>()) : std::wstring();
}

std::string SentenceOf(const Json& mark) {
    const std::string command = mark.at("command").get<std::string>();
    const std::string process = std::to_string(mark.at("process").get<unsigned long>());
    const std::wstring model = ModelOf(mark);
    std::string text = "an earlier run" +
                       (model.empty() ? std::string() : " on the simulated cluster " + QuotedPath(model)) +
                       " was ended before it was done: " + Quoted(command) + ", process " + process + ", begun " +
                       mark.at("begun").get<std::string>() + "; it may be half done";
    if (command.size() > OpeningOption.size() &&
        command.compare(command.size() - OpeningOption.size(), std::string::npos, OpeningOption) == 0) {
        text += "; the configuration may be open for writing still: 'clusctl vcs mode ro' closes it";
    }
    for (const std::wstring& name : NamesIn(TemporaryFolder(), L"clusctl-" + common::ToUtf16(process) + L"-*")) {
        text += "; the copy of a rehearsal is left: " + Quoted(TemporaryFolder() + name);
    }
    return text;
}

// Not so on a drive or a share that is not there for the moment.
bool IsGone(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES && GetLastError() == ERROR_FILE_NOT_FOUND;
}

} // namespace

RunMarker::RunMarker(const std::string& command, const std::wstring& model) : m_file(INVALID_HANDLE_VALUE) {
    const std::wstring folder = Folder();
    if (folder.empty()) {
        return;
    }
    CreateDirectoryW(folder.c_str(), nullptr); // there already, as a rule
    m_path = folder + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(GetTickCount()) + Extension;
    m_file = CreateFileW(m_path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (m_file != INVALID_HANDLE_VALUE) {
        const std::string text = common::DumpJson({{"command", command},
                                                   {ModelMember, TextOrNull(model)},
                                                   {"process", GetCurrentProcessId()},
                                                   {"begun", common::ShownUtcNow()},
                                                   {"begunAt", Now()}});
        DWORD written = 0;
        WriteFile(m_file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    }
}

RunMarker::~RunMarker() {
    if (m_file != INVALID_HANDLE_VALUE) {
        CloseHandle(m_file);
        DeleteFileW(m_path.c_str());
    }
}

KilledRuns::KilledRuns() : KilledRuns(nullptr) {
}

KilledRuns::KilledRuns(const std::wstring& model) : KilledRuns(&model) {
}

KilledRuns::KilledRuns(const std::wstring* model) {
    const std::wstring folder = Folder();
    if (folder.empty()) {
        return;
    }
    std::vector<Left> left;
    for (const std::wstring& name : NamesIn(folder, std::wstring(L"*") + Extension)) {
        if (!IsLeft(folder + name)) {
            continue;
        }
        try {
            const Json mark = Json::parse(common::ReadWholeFile(folder + name));
            const std::wstring changed = ModelOf(mark);
            if (model != nullptr && mark.contains(ModelMember) && !common::IsSameName(changed, *model)) {
                continue;
            }
            if (!changed.empty() && IsGone(changed)) {
                DeleteFileW((folder + name).c_str()); // nothing is left of what it changed
                continue;
            }
            left.push_back({mark.at("begun").get<std::string>(), mark.value("begunAt", std::uint64_t(0)), folder + name,
                            SentenceOf(mark)});
        } catch (const common::FileError&) {
            // another run is forgetting it
        } catch (const std::exception&) {
            DeleteFileW((folder + name).c_str()); // nothing can be told of it
        }
    }
    std::sort(left.begin(), left.end(), &BeganBefore);
    for (const Left& run : left) {
        m_sentences.push_back(run.sentence);
        m_paths.push_back(run.path);
    }
}

const std::vector<std::string>& KilledRuns::Sentences() const {
    return m_sentences;
}

void KilledRuns::Forget() const {
    for (const std::wstring& path : m_paths) {
        DeleteFileW(path.c_str());
    }
}
