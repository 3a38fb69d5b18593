#include "ChildProgram.h"

#include "ChildMain.h"
#include "ExportedApi.h"

#include <cwchar>

#include <gmock/gmock.h>

namespace {

// Whatever of the simulator's variables is not given is removed.
Variables WithoutOthers(Variables variables) {
    for (const wchar_t* name : {L"CLUSSIM_FILE", L"CLUSSIM_FAULTS", L"CLUSSIM_JOURNAL"}) {
        variables.insert({name, L""});
    }
    return variables;
}

int Create(HCLUSTER cluster, const std::wstring& prefix, int count) {
    const HGROUP group = OpenClusterGroup(cluster, L"EVS1");
    for (int i = 0; count == 0 || i < count; ++i) {
        const HRESOURCE made =
            CreateClusterResource(group, (prefix + std::to_wstring(i)).c_str(), L"Generic Service", 0);
        if (!made) {
            return static_cast<int>(GetLastError());
        }
        CloseClusterResource(made);
    }
    CloseClusterGroup(group);
    return 0;
}

int RunChild(int argc, wchar_t** argv) {
    const std::wstring command(argv[0]);
    const HCLUSTER cluster = OpenCluster(nullptr);
    if (!cluster) {
        return static_cast<int>(GetLastError());
    }
    int result = 0;
    if (command == L"create" && argc == 3) {
        result = Create(cluster, argv[1], _wtoi(argv[2]));
    } else if (argc == 2) {
        const HRESOURCE resource = OpenClusterResource(cluster, argv[1]);
        result = command == L"online"
                     ? static_cast<int>(OnlineClusterResource(resource))
                     : 1000 + static_cast<int>(GetClusterResourceState(resource, nullptr, nullptr, nullptr, nullptr));
        CloseClusterResource(resource);
    }
    CloseCluster(cluster);
    return result;
}

} // namespace

Child::Child(const std::wstring& arguments, const Variables& variables) {
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    EXPECT_TRUE(CreatePipe(&reading, &writing, &inheritable, 0)) << "error " << GetLastError();
    m_errors = common::Handle(reading);
    const common::Handle writingEnd(writing);
    SetHandleInformation(reading, HANDLE_FLAG_INHERIT, 0);
    m_process =
        std::make_unique<harness::ChildProcess>(L"\"" + harness::ProgramPath() + L"\" --child " + arguments,
                                                WithoutOthers(variables), harness::ChildStreams{nullptr, writing});
}

std::string Child::Errors() {
    std::string text;
    char block[512];
    DWORD cb = 0;
    while (ReadFile(m_errors.get(), block, sizeof(block), &cb, nullptr) && cb > 0) {
        text.append(block, cb);
    }
    return text;
}

int main(int argc, char** argv) {
    return harness::RunChildOrTests(argc, argv, &RunChild);
}
