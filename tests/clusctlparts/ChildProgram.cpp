#include "ChildProgram.h"

#include "ChildMain.h"
#include "Failure.h"
#include "NewFile.h"

#include "common/Text.h"

#include <CallTable.h>
#include <Recorder.h>

namespace {

const DWORD TurnOfName = 128; // milliseconds

[[noreturn]] void MakeFiles(const std::wstring& folder, const std::string& tag) {
    const std::string text = TaggedText(tag, NewFileLength);
    std::vector<NewFolderFile> files;
    for (const std::wstring& name : NewFolderNames) {
        files.push_back({name, TaggedText(tag, FileInFolderLength)});
    }
    for (;;) {
        const std::wstring path = folder + L"\\" + std::to_wstring(GetTickCount() / TurnOfName);
        try {
            RequireNoFile(path + L".html");
            WriteNewFile(path + L".html", text);
            WriteNewFolder(path, files);
        } catch (const Failure&) {
            Sleep(1); // another one was faster
        }
    }
}

recording::Slot GiveHandle(void*, const recording::Slot*) {
    return 0x1234;
}

[[noreturn]] void Record(const std::wstring& file, const std::string& tag) {
    recording::Header header;
    header.program = "test 1.0";
    header.begun = "2026-01-02T03:04:05Z";
    header.computer = "NODE1";
    recording::Recorder recorder(file, header);
    const recording::Call& call = *recording::FindCall("OpenClusterGroup");
    const std::wstring name = common::ToUtf16(TaggedText(tag, RecordedNameLength));
    const recording::Slot slots[] = {1, reinterpret_cast<recording::Slot>(name.c_str())};
    const common::Handle count(
        CreateFileW((file + L".count").c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW, 0, nullptr));
    for (int calls = 1;; ++calls) {
        recorder.Answer(call, slots, &GiveHandle);
        const std::string text = std::to_string(calls);
        DWORD written = 0;
        SetFilePointer(count.get(), 0, nullptr, FILE_BEGIN);
        WriteFile(count.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        Sleep(calls % 8 == 0 ? 1 : 0); // else reading takes longer than writing
    }
}

int PrintOnBoth(const std::string& text) {
    for (const DWORD stream : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        DWORD written = 0;
        WriteFile(GetStdHandle(stream), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    }
    return 0;
}

int RunChild(int argc, wchar_t** argv) {
    const std::wstring command(argv[0]);
    if (command == L"files" && argc == 3) {
        MakeFiles(argv[1], common::ToUtf8(argv[2]));
    }
    if (command == L"record" && argc == 3) {
        Record(argv[1], common::ToUtf8(argv[2]));
    }
    return command == L"print" && argc == 2 ? PrintOnBoth(common::ToUtf8(argv[1])) : 100;
}

} // namespace

std::string TaggedText(const std::string& tag, std::size_t length) {
    std::string text;
    while (text.size() < length) {
        text += tag + ":";
    }
    return text.substr(0, length);
}

std::wstring ChildCommand(const std::wstring& arguments) {
    return L"\"" + harness::ProgramPath() + L"\" --child " + arguments;
}

int main(int argc, char** argv) {
    return harness::RunChildOrTests(argc, argv, &RunChild);
}
