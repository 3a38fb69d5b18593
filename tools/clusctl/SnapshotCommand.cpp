#include "SnapshotCommand.h"

#include "ClusterModel.h"
#include "CommandLine.h"
#include "Text.h"

#include <winsock2.h>
#include <windows.h>

#include <memory>

namespace {

const char Heading[] = "Rehearsal";

// Puts a file in another one's place. Another process that is doing the same holds it for a moment.
DWORD MoveOver(const std::wstring& from, const std::wstring& to) {
    for (int attempts = 40;; --attempts) {
        if (MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
            return ERROR_SUCCESS;
        }
        const DWORD code = GetLastError();
        if ((code != ERROR_SHARING_VIOLATION && code != ERROR_ACCESS_DENIED) || attempts == 0) {
            return code;
        }
        Sleep(25);
    }
}

// The file appears complete or not at all.
void WriteFileWhole(const std::wstring& path, const std::string& text) {
    // A name of this process's own: several may write at once, and the last one's file stays.
    const std::wstring temporary = path + L"." + std::to_wstring(GetCurrentProcessId()) + L".new";
    const HANDLE handle =
        CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        throw Failure("cannot create " + Quoted(path) + ": " + ErrorText(GetLastError()));
    }
    DWORD written = 0;
    DWORD code = ERROR_SUCCESS;
    if (!WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) ||
        !FlushFileBuffers(handle)) {
        code = GetLastError();
    } else if (written != text.size()) {
        code = ERROR_HANDLE_DISK_FULL;
    }
    CloseHandle(handle);
    if (code == ERROR_SUCCESS) {
        code = MoveOver(temporary, path);
    }
    if (code != ERROR_SUCCESS) {
        DeleteFileW(temporary.c_str());
        throw Failure("cannot write " + Quoted(path) + ": " + ErrorText(code));
    }
}

std::string Counted(size_t count, const char* word) {
    return std::to_string(count) + " " + word + (count == 1 ? "" : "s");
}

Report Snapshot(const std::wstring& file) {
    const Json model = ReadClusterModel();
    if (file.empty()) {
        return Report::Verbatim(model);
    }
    WriteFileWhole(file, DumpJson(model));
    const size_t nodes = model["nodes"].size();
    const size_t groups = model["groups"].size();
    const size_t resources = model["resources"].size();
    Report report;
    report.AddSentence("snapshot", {{"file", file}, {"nodes", nodes}, {"groups", groups}, {"resources", resources}},
                       "Wrote " + Printable(file) + ": " + Counted(nodes, "node") + ", " + Counted(groups, "group") +
                           ", " + Counted(resources, "resource") + ".");
    return report;
}

} // namespace

void AddSnapshotCommand(CommandLine& commandLine) {
    const auto file = std::make_shared<std::wstring>();
    CLI::App& command =
        commandLine.Add(Heading, "snapshot", "Write the cluster as a model file of the cluster simulator",
                        [file](const LogCapture&) { return Snapshot(*file); });
    CommandLine::AddText(command, "FILE", *file, "FILE", "The file to write; standard output without it");
}
