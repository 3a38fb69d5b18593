// Every public operation on VCS on 16 threads at once, each thread with a group of its own: each gets what it gets
// alone. The tools are answered for within this process, from their command lines alone.
#include "AtOnce.h"
#include "ImportPatch.h"
#include "PrivateFolder.h"
#include "ProductNames.h"
#include "Text.h"
#include "ThreadedRegistry.h"

#include "CommonUtil.h"
#include "clus_VeritasCluster.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace harness;

namespace {

typedef std::vector<std::wstring> Names;

const int Threads = 16;

std::string WordBehind(const std::string& text, const std::string& mark) {
    const std::size_t found = text.find(mark);
    if (found == std::string::npos) {
        return std::string();
    }
    const std::size_t begin = found + mark.size();
    return text.substr(begin, text.find(' ', begin) - begin);
}

// What a tool prints: resources are called like their group and type, and all are online on SYS1.
std::string Answer(const std::string& command) {
    const auto begins = [&command](const char* text) { return command.rfind(text, 0) == 0; };
    if (begins("hasys -list")) {
        return "SYS1\r\nSYS2\r\n";
    }
    if (begins("hagrp -list")) {
        return "EVS1 SYS1\r\nEVS1 SYS2\r\nEVS2 SYS1\r\n";
    }
    if (begins("hares -list")) {
        const std::string group = WordBehind(command, "Group=") + WordBehind(command, "VirtualName=");
        return group + "-" + WordBehind(command, "Type=") + WordBehind(command, "ServiceName=") + " SYS1\r\n";
    }
    if (begins("hares -display ")) {
        const std::string resource = WordBehind(command, "-display ");
        const std::string attribute = WordBehind(command, "-attribute ");
        const std::string value = attribute == "Keys" ? "HKLM\\SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion"
                                                      : resource.substr(0, resource.find('-'));
        return "#Resource Attribute System Value\r\n" + resource + " " + attribute + " global " + value + "\r\n";
    }
    if (begins("hagrp -state ")) {
        return "#Group Attribute System Value\r\n" + WordBehind(command, "-state ") + " State SYS1 |ONLINE|\r\n";
    }
    if (begins("hares -dep ")) {
        const std::string resource = WordBehind(command, "-dep ");
        const std::string group = resource.substr(0, resource.find('-'));
        return "#Group Parent Child\r\n" + group + " " + resource + " " + group + "-MountV\r\n";
    }
    if (begins("vcsencrypt -agent ")) {
        return "of-" + WordBehind(command, "-agent ") + "\r\n";
    }
    return std::string();
}

// Processes that have ended when they start, and services that run.
class EndedTools {
private:
    static HANDLE Ended() {
        return CreateEventW(nullptr, TRUE, TRUE, nullptr);
    }

    ImportPatch<decltype(CreateProcessW), struct EndedToolTag> m_create{
        FindImports(LibraryModule(), "kernel32.dll", "CreateProcessW"),
        [](LPCWSTR, LPWSTR commandLine, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID, LPCWSTR,
           LPSTARTUPINFOW startup, LPPROCESS_INFORMATION process) -> BOOL {
            const std::string text = Answer(Utf8(commandLine));
            DWORD written = 0;
            WriteFile(startup->hStdOutput, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
            process->hProcess = Ended();
            process->hThread = Ended();
            return TRUE;
        }};
    ImportPatch<BOOL(HANDLE, LPDWORD), struct EndedToolExitTag> m_exitCode{
        FindImports(LibraryModule(), "kernel32.dll", "GetExitCodeProcess"), [](HANDLE, LPDWORD code) -> BOOL {
            *code = 0;
            return TRUE;
        }};
    ImportPatch<void(DWORD), struct EndedToolSleepTag> m_sleep{FindImports(LibraryModule(), "kernel32.dll", "Sleep"),
                                                               [](DWORD) { ::Sleep(0); }};
    static std::vector<void**> Service(const char* itanium, const char* microsoft) {
        return FindImports(LibraryModule(), "CommonUtil.dll", Decorated(itanium, microsoft));
    }
    ImportPatch<void*(void*, const wchar_t*, const wchar_t*), struct RunningServiceTag> m_open{
        Service("_ZN15CServiceManagerC1EPKwS1_", "??0CServiceManager@@QEAA@PEB_W0@Z"),
        [](void* self, const wchar_t*, const wchar_t*) { return self; }};
    ImportPatch<void(void*), struct RunningServiceEndTag> m_close{
        Service("_ZN15CServiceManagerD1Ev", "??1CServiceManager@@QEAA@XZ"), [](void*) {}};
    ImportPatch<DWORD(void*), struct RunningServiceQueryTag> m_query{
        Service("_ZN15CServiceManager18QueryServiceStatusEv", "?QueryServiceStatus@CServiceManager@@QEAAKXZ"),
        [](void*) -> DWORD { return SERVICE_RUNNING; }};
};

class Results {
public:
    void Add(bool result) {
        m_text += result ? "+" : "!";
    }
    void Add(const std::wstring& text) {
        m_text += Utf8(text) + ",";
    }
    void Add(const Names& names) {
        for (const std::wstring& name : names) {
            Add(name);
        }
    }
    void Add(const CVeritasVirtualServerInfo& info) {
        Add(Names{info.sGroupName, info.sExchangeResName, info.sLanmanResName, info.sHostServiceResName,
                  info.sOnlineNode});
        Add(info.bGroupOnline);
    }
    const std::string& Text() const {
        return m_text;
    }

private:
    std::string m_text;
};

void Ask(const CVeritasCluster& cluster, const std::wstring& group, Results& results) {
    const NameValuePairList filter = {{L"Group", group}, {L"Type", L"MountV"}};
    Names names;
    Names others;
    std::wstring text;
    bool isOnline = false;
    results.Add(cluster.EnumSystemNames(names));
    results.Add(names);
    results.Add(cluster.EnumGroupNames(others));
    results.Add(cluster.EnumResourceNamesW(others, &filter));
    results.Add(others);
    results.Add(cluster.EnumResDependencies((group + L"-RegRep").c_str(), names, others));
    results.Add(others);
    results.Add(cluster.GetResourceAttribute((group + L"-Lanman").c_str(), L"Group", text));
    results.Add(text);
    results.Add(cluster.GetGroupOnlineNode(group.c_str(), isOnline, text, true));
    results.Add(isOnline);
    results.Add(text);
    results.Add(cluster.FindGroupNameByVirtualServerName(group.c_str(), text));
    results.Add(text);
    results.Add(cluster.GetGenericServiceResNameByServiceName(group.c_str(), L"Service", text));
    results.Add(text);
    results.Add(cluster.GetThirdPartyClusterType() == THIRD_PARTY_CLUSTER_TYPE_NONE);
    results.Add(cluster.EncryptVeritasPassword(group.c_str(), text));
    results.Add(text);
}

void FindServers(const CVeritasCluster& cluster, const std::wstring& group, Results& results) {
    CVeritasVirtualServerInfo info;
    CVeritasVirtualServerInfo named;
    named.SetGroupAndKOVAResourceName(group.c_str());
    named.bGroupOnline = true;
    info = named;
    results.Add(info);
    std::vector<CVeritasVirtualServerInfo> infos;
    Names names;
    std::wstring text;
    results.Add(cluster.CollectEVSInfo(group.c_str(), info));
    results.Add(info);
    results.Add(cluster.CollectExchangeEVSInfo(infos));
    results.Add(infos.size() == 2);
    results.Add(cluster.CollectExchangeEVSInfo(L"EVS2", info));
    results.Add(info);
    results.Add(cluster.FindMostParentMountVResourceNameInGroup(group.c_str(), names));
    results.Add(names);
    results.Add(cluster.GetKOVAShareDiskResNameByRegRepName(group.c_str(), (group + L"-RegRep").c_str(), text));
    results.Add(text);
    results.Add(cluster.FindExistingKOVARegRepResName(group.c_str(), text));
    results.Add(text);
    names.clear();
    results.Add(cluster.CollectKOVAResNames(names));
    results.Add(cluster.CollectKOVAResNames(group.c_str(), names));
    results.Add(names);
}

void Change(const CVeritasCluster& cluster, const std::wstring& group, Results& results) {
    const wchar_t* const name = group.c_str();
    CVeritasVirtualServerInfo info(L"Exchange", name);
    info.bGroupOnline = true;
    info.sOnlineNode = L"SYS1";
    info.sDataPath = L"F:\\data\\";
    results.Add(cluster.SwitchToReadWriteMode());
    results.Add(cluster.CreateResource(name, L"GenericService", name, name, {{L"ServiceName", group}}));
    results.Add(cluster.LinkResource(name, name));
    results.Add(cluster.TurnOnOrOffResource(name, L"SYS1", true));
    results.Add(cluster.CheckIfGenericServiceResourceExistsAndTurnItOn(name, L"Service", L"SYS1", 1000));
    results.Add(cluster.CreateKOVAResources(info, true, true, L"DOMAIN", L"user", name));
    results.Add(CVeritasCluster::KOVAResourcesInSwitchOnOrder(info, true, true));
    results.Add(cluster.CreateQAVResourceAndTurnItOn(name, 1000));
    results.Add(cluster.CreateRemoteConfigResourceAndTurnItOn(name, L"DOMAIN", L"user", L"password", 1000));
    results.Add(cluster.DeleteResource(name));
    results.Add(cluster.SwitchToReadOnlyMode());
}

// Which tools were run, and what was read of them.
void NoteRun(const CVeritasToolRun& run, void* context) {
    if (run.started && run.output) {
        ++*static_cast<std::atomic<int>*>(context);
    }
}

std::string EveryOperation(const CVeritasCluster& cluster, int number) {
    const std::wstring group = L"EVS" + std::to_wstring(100 + number);
    Results results;
    CVeritasCluster own;
    own = cluster;
    results.Add(own.GetThirdPartyClusterType() == THIRD_PARTY_CLUSTER_TYPE_NONE);
    Ask(cluster, group, results);
    FindServers(cluster, group, results);
    Change(cluster, group, results);
    return results.Text();
}

TEST(VeritasEveryOperationAtOnce, GivesWhatItGivesAlone) {
    const PrivateFolder folder;
    ThreadedRegistry registry;
    registry.SetText(ProductKey, L"DataRootPath", L"F:\\Data");
    const EndedTools tools;
    const LogCounter log;
    const CVeritasCluster cluster;
    std::vector<std::string> alone;
    std::atomic<int> runs(0);
    SetVeritasToolRunCallback(&NoteRun, &runs);
    for (int number = 0; number < Threads; ++number) {
        alone.push_back(EveryOperation(cluster, number));
    }
    EXPECT_EQ(alone.front().find('!'), std::string::npos) << "failed: " << alone.front();
    const int runsAlone = runs.exchange(0);
    const int linesAlone = log.Count();
    EXPECT_GT(runsAlone, 50 * Threads);

    std::vector<std::string> together(Threads);
    std::vector<std::function<void()>> callers;
    for (int number = 0; number < Threads; ++number) {
        callers.emplace_back(
            [&, number] { together[static_cast<std::size_t>(number)] = EveryOperation(cluster, number); });
    }
    RunAtOnce(callers);
    SetVeritasToolRunCallback(nullptr, nullptr);
    EXPECT_EQ(together, alone);
    EXPECT_EQ(runs, runsAlone);
    EXPECT_EQ(log.Count(), 2 * linesAlone);
    EXPECT_EQ(folder.Entries(), Names());
}

} // namespace
