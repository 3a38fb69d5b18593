#include "RunMarker.h"

#include "Json.h"
#include "Text.h"

#include "common/Environment.h"
#include "common/Files.h"
#include "common/Text.h"
#include "common/UtcTime.h"

namespace {

const wchar_t Extension[] = L".run";

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

std::string SentenceOf(const Json& mark) {
    const std::string command = mark.at("command").get<std::string>();
    const std::string process = std::to_string(mark.at("process").get<unsigned long>());
    std::string text = "an earlier run was ended before it was done: " + Quoted(command) + ", process " + process +
                       ", begun " + mark.at("begun").get<std::string>() + "; it may be half done";
    if (command.find("--rw") != std::string::npos) {
        text += "; the configuration may be open for writing still: 'clusctl vcs mode ro' closes it";
    }
    for (const std::wstring& name : NamesIn(TemporaryFolder(), L"clusctl-" + common::ToUtf16(process) + L"-*")) {
        text += "; the copy of a rehearsal is left: " + Quoted(TemporaryFolder() + name);
    }
    return text;
}

} // namespace

RunMarker::RunMarker(const std::string& command) : m_file(INVALID_HANDLE_VALUE) {
    const std::wstring folder = Folder();
    if (folder.empty()) {
        return;
    }
    CreateDirectoryW(folder.c_str(), nullptr); // there already, as a rule
    m_path = folder + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(GetTickCount()) + Extension;
    m_file = CreateFileW(m_path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (m_file != INVALID_HANDLE_VALUE) {
        const std::string text = common::DumpJson(
            {{"command", command}, {"process", GetCurrentProcessId()}, {"begun", common::ShownUtcNow()}});
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

KilledRuns::KilledRuns() {
    const std::wstring folder = Folder();
    if (folder.empty()) {
        return;
    }
    for (const std::wstring& name : NamesIn(folder, std::wstring(L"*") + Extension)) {
        if (!IsLeft(folder + name)) {
            continue;
        }
        try {
            m_sentences.push_back(SentenceOf(Json::parse(common::ReadWholeFile(folder + name))));
            m_paths.push_back(folder + name);
        } catch (const common::FileError&) {
            // another run is forgetting it
        } catch (const std::exception&) {
            DeleteFileW((folder + name).c_str()); // nothing can be told of it
        }
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
