#include "ChildProgram.h"

#include "ChildMain.h"

#include "common/AppendFile.h"
#include "common/FileLock.h"
#include "common/Files.h"
#include "common/Text.h"

namespace {

int Append(const wchar_t* path, const wchar_t* text, int count) {
    common::AppendFile file(path);
    std::string line;
    for (int i = 0; i < 400; ++i) {
        line += common::ToUtf8(text);
    }
    for (int i = 0; i < count; ++i) {
        if (file.Append(line + "\n") != ERROR_SUCCESS) {
            return 1;
        }
    }
    return 0;
}

int Hold(const wchar_t* path, const wchar_t* event) {
    common::FileLock lock(path);
    const common::FileLock::Turn turn(lock);
    const common::Handle ready(OpenEventW(EVENT_MODIFY_STATE, FALSE, event));
    if (!turn || !SetEvent(ready.get())) {
        return 1;
    }
    Sleep(60000);
    return 2;
}

int Count(const wchar_t* path, int count) {
    common::FileLock lock(path);
    for (int i = 0; i < count; ++i) {
        const common::FileLock::Turn turn(lock);
        if (!turn) {
            return 1;
        }
        common::WriteWholeFile(path, std::to_string(std::stoi(common::ReadWholeFile(path)) + 1));
    }
    return 0;
}

int Write(const wchar_t* wholePath, const wchar_t* linesPath, const wchar_t* tag) {
    std::string whole;
    while (whole.size() < WholeFileLength) {
        whole += common::ToUtf8(tag) + ":";
    }
    const std::string line = whole.substr(0, AppendedLineLength) + "\n";
    const std::wstring suffix = L"." + std::wstring(tag) + L".new";
    common::AppendFile lines(linesPath);
    for (;;) {
        common::WriteWholeFile(wholePath, whole, suffix);
        if (lines.Append(line) != ERROR_SUCCESS) {
            return 1;
        }
    }
}

int RunChild(int argc, wchar_t** argv) {
    const std::wstring command(argv[0]);
    if (command == L"append" && argc == 4) {
        return Append(argv[1], argv[2], _wtoi(argv[3]));
    }
    if (command == L"hold" && argc == 3) {
        return Hold(argv[1], argv[2]);
    }
    if (command == L"write" && argc == 4) {
        return Write(argv[1], argv[2], argv[3]);
    }
    if (command == L"count" && argc == 3) {
        return Count(argv[1], _wtoi(argv[2]));
    }
    return 100;
}

} // namespace

Child::Child(const std::wstring& arguments)
    : ChildProcess(L"\"" + harness::ProgramPath() + L"\" --child " + arguments) {
}

int main(int argc, char** argv) {
    return harness::RunChildOrTests(argc, argv, &RunChild);
}
