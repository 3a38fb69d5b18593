#include "VcsDryRun.h"

#include "Report.h"
#include "Secrets.h"
#include "Text.h"
#include "TextDifference.h"

#include "common/Environment.h"
#include "common/FileLock.h"
#include "common/Files.h"
#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

namespace {

const wchar_t FileVariable[] = L"VCSSIM_MAIN_CF";
const wchar_t JournalVariable[] = L"VCSSIM_JOURNAL";
const wchar_t JournalName[] = L"journal";
const DWORD LongestTurn = 2000; // milliseconds; no tool of the simulator works that long

Failure Cannot(const char* verb, const common::FileError& error) {
    return Failure(std::string("cannot ") + verb + " " + Quoted(error.Path()) + ": " + ErrorText(error.Code()));
}

void SetVariable(const wchar_t* name, const std::wstring& value) {
    if (!SetEnvironmentVariableW(name, value.c_str())) {
        throw Failure::OfCode("cannot set the variable " + common::ToUtf8(name), GetLastError());
    }
}

std::string RunningConfiguration(const vcssim::ClusterFiles& files) {
    try {
        return common::ReadWholeFile(files.Running());
    } catch (const common::FileError& error) {
        throw Cannot("read", error);
    }
}

std::unique_ptr<common::TemporaryFolder> CreateFolder() {
    try {
        return std::make_unique<common::TemporaryFolder>(L"clusctl");
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot create the folder " + Quoted(error.Path()), error.Code());
    }
}

} // namespace

VcsDryRun::VcsDryRun() : m_copy(std::wstring()) {
    const std::wstring mainCf = common::EnvironmentVariable(FileVariable);
    if (mainCf.empty()) {
        throw Failure(Errors::NoSimulator, "a dry run needs the VCS simulator: VCSSIM_MAIN_CF does not name a main.cf");
    }
    m_folder = CreateFolder();
    try {
        Copy(vcssim::ClusterFiles(mainCf));
        m_before = RunningConfiguration(m_copy);
        SetVariable(FileVariable, m_copy.MainCf());
        SetVariable(JournalVariable, m_folder->File(JournalName));
    } catch (const common::FileError& error) {
        throw Cannot("copy", error);
    }
}

void VcsDryRun::Copy(const vcssim::ClusterFiles& original) {
    const std::wstring folder = original.Folder();
    m_copy = vcssim::ClusterFiles(m_folder->File(original.MainCf().substr(folder.size())));
    // Keeps the tools from changing the files meanwhile.
    common::FileLock lock(original.Lock());
    const common::FileLock::Turn turn(lock, LongestTurn);
    if (!turn) {
        throw Failure("cannot lock " + Quoted(original.MainCf()) + ": " + ErrorText(turn.Code()));
    }
    for (const std::wstring& name : original.Names()) {
        // An included file of another folder has no place in this one; the tools know most types without it.
        if (name.find_first_of(L"\\/:") == std::wstring::npos) {
            common::WriteWholeFile(m_folder->File(name), common::ReadWholeFile(folder + name));
        }
    }
}

void VcsDryRun::RequireSimulator() const {
    if (!common::FileExists(m_folder->File(JournalName))) {
        throw Failure(Errors::NoSimulator,
                      "the VCS tools on the search path are not the simulator's: they would change the real cluster");
    }
}

std::vector<std::string> VcsDryRun::Difference() const {
    std::vector<std::string> lines = UnifiedDifference(MaskedConfiguration(SplitLines(m_before)),
                                                       MaskedConfiguration(SplitLines(RunningConfiguration(m_copy))));
    if (!lines.empty()) {
        const std::string name = common::ToUtf8(m_copy.MainCf().substr(m_copy.Folder().size()));
        lines.insert(lines.begin(), {"--- " + name, "+++ " + name + " (after)"});
    }
    return lines;
}
