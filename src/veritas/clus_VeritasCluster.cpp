#include "clus_VeritasCluster.h"

#define CLUS_SOURCE_TAG ".\\clus_VeritasCluster.cpp"
#include "clus_CaptureFile.h"
#include "clus_Character.h"
#include "clus_Log.h"
#include "clus_Owner.h"
#include "clus_ProductRegistry.h"
#include "clus_ToolOutput.h"
#include "clus_ToolProcess.h"
#include "clus_UniqueNames.h"
#include "clus_VeritasNames.h"
#include "clus_VirtualServerUtil.h"

#include "CommonUtil.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>

using clus::DefaultProductRegistryKey;
using clus::EqualNoCase;
using clus::FileDeleter;
using clus::LastErrorKeeper;
using clus::RegistryKey;
using clus::RunTool;
using clus::TextFileReader;
using clus::UniqueNames;
using namespace clus::veritas;

namespace {

const size_t CommandLineCharacters = 16384; // terminator included; what is longer is cut

// Columns of the tools' tables.
const size_t ListColumns = 2; // name, system
const size_t DependencyColumns = 3;
const size_t StateColumns = 4;

// Time that a service is given to complete its own start, and between two looks at it, in milliseconds.
const DWORD ServiceSettleTime = 10000;
const DWORD ServicePollInterval = 1000;

std::wstring Text(const wchar_t* text) {
    return text ? text : L"";
}

std::wstring Quoted(const std::wstring& text) {
    return L"\"" + text + L"\"";
}

bool Contains(const std::vector<std::wstring>& names, const std::wstring& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// For the few names of one resource; long lists take UniqueNames.
void AppendNew(std::vector<std::wstring>& names, const std::wstring& name) {
    if (!Contains(names, name)) {
        names.push_back(name);
    }
}

// Leaves no secret of a command line on the stack, whatever happens.
class TextEraser {
public:
    TextEraser(wchar_t* text, size_t characters) : m_text(text), m_bytes(characters * sizeof(wchar_t)) {
    }
    ~TextEraser() {
        SecureZeroMemory(m_text, m_bytes);
    }
    TextEraser(const TextEraser&) = delete;
    TextEraser& operator=(const TextEraser&) = delete;

private:
    wchar_t* m_text;
    size_t m_bytes;
};

// No less than 0 and no more than an int holds.
int MillisecondsFromSeconds(int seconds) {
    return static_cast<int>(std::min<long long>(1000LL * std::max(seconds, 0), std::numeric_limits<int>::max()));
}

} // namespace

struct CVeritasCluster::Steps_ {
    // The name column of a list, each name once.
    static bool EnumFirstColumn(const CVeritasCluster& cluster, const wchar_t* command,
                                std::vector<std::wstring>& names, const NameValuePairList* filter);
    // Creates a service's resource, brings it online on the virtual server's system and waits for the service.
    static bool CreateServiceAndTurnItOn(const CVeritasCluster& cluster, const CVeritasVirtualServerInfo& info,
                                         const wchar_t* resName, const wchar_t* serviceName,
                                         const wchar_t* childResName, const NameValuePairList& params, int timeout);
};

// Virtual server record -----------------------------------------------------------------------------------------

CVeritasVirtualServerInfo::CVeritasVirtualServerInfo()
    : nDelayAfterOnline(600), nDelayAfterOffline(600), bGroupOnline(false) {
}

CVeritasVirtualServerInfo::CVeritasVirtualServerInfo(const wchar_t* exchangeResName, const wchar_t* groupName)
    : CVeritasVirtualServerInfo() {
    sExchangeResName = Text(exchangeResName);
    SetGroupAndKOVAResourceName(groupName);
}

CVeritasVirtualServerInfo::CVeritasVirtualServerInfo(const CVeritasVirtualServerInfo& other) = default;
CVeritasVirtualServerInfo& CVeritasVirtualServerInfo::operator=(const CVeritasVirtualServerInfo& other) = default;
CVeritasVirtualServerInfo::~CVeritasVirtualServerInfo() = default;

void CVeritasVirtualServerInfo::SetGroupAndKOVAResourceName(const wchar_t* groupName) {
    // A copy, since callers pass the text of sGroupName itself.
    const std::wstring group = Text(groupName);
    const std::wstring prefix = group + L"-";
    sGroupName = group;
    sHostServiceResName = prefix + HostService;
    sRemoteConfigResName = prefix + RemoteConfigService;
    sSAServiceResName = prefix + SAService;
    sQAVMonitorResName = prefix + QAVMonitorService;
}

CVeritasCluster& CVeritasCluster::operator=(const CVeritasCluster&) {
    return *this;
}

// Command runner ------------------------------------------------------------------------------------------------

bool CVeritasCluster::ExecuteVeritasCommand_(const wchar_t* command, const wchar_t* arguments, std::wstring& text,
                                             bool logDetails) const {
    LOG_ENTER(L"CVeritasCluster::ExecuteVeritasCommand_");
    wchar_t fileName[MAX_PATH] = {};
    if (GetTempFileNameW(L".", L"ha-", 0, fileName) == 0) {
        return false; // without a leaving line
    }
    LOG_LEAVE_AT_END(L"CVeritasCluster::ExecuteVeritasCommand_");
    const FileDeleter deleter(fileName);

    wchar_t commandLine[CommandLineCharacters] = {};
    const TextEraser eraser(commandLine, CommandLineCharacters);
    _snwprintf_s(commandLine, CommandLineCharacters, _TRUNCATE, L"%s %s", command, arguments);
    commandLine[CommandLineCharacters - 1] = L'\0';

    LOG_INFO(L"temp file name: %s", fileName);
    if (logDetails) {
        LOG_INFO(L"Command line: %s", commandLine);
    } else {
        LOG_INFO(L"Command line is ***");
    }
    // The tool's exit code is no matter: callers judge by what it printed.
    const bool started = RunTool(commandLine, fileName);
    const LastErrorKeeper keeper; // the only word on why it could not be started
    const bool succeeded = started && Read_(fileName, text);
    if (logDetails) {
        DumpResult_(fileName);
    } else {
        LOG_INFO(L"Result: ***");
    }
    return succeeded;
}

bool CVeritasCluster::ExecuteVeritasCommand_(const wchar_t* command, const wchar_t* arguments,
                                             std::vector<std::wstring>* tokens, bool logDetails) const {
    std::wstring text;
    if (!ExecuteVeritasCommand_(command, arguments, text, logDetails)) {
        return false;
    }
    return !tokens || Parse_(text, *tokens);
}

bool CVeritasCluster::ExecuteVeritasCommand_(const wchar_t* command, bool logDetails) const {
    return ExecuteVeritasCommand_(command, L"", nullptr, logDetails);
}

bool CVeritasCluster::Read_(const wchar_t* fileName, std::wstring& text) const {
    TextFileReader file(fileName);
    if (!file) {
        return false;
    }
    std::wstring line;
    while (file.ReadLine(line)) {
        text += line;
        text += L'\n';
    }
    return true;
}

bool CVeritasCluster::Parse_(const std::wstring& text, std::vector<std::wstring>& tokens) const {
    clus::SplitOutput(text, tokens);
    return true;
}

void CVeritasCluster::DumpResult_(const wchar_t* fileName) const {
    TextFileReader file(fileName);
    if (!file) {
        return;
    }
    std::wstring line;
    while (file.ReadLine(line)) {
        LOG_INFO(L"Result: %s", line.c_str());
    }
}

bool CVeritasCluster::IsResultError(const wchar_t* text) const {
    return clus::IsErrorText(text);
}

bool CVeritasCluster::IsResultError(const std::vector<std::wstring>& tokens) const {
    return clus::IsErrorList(tokens);
}

std::wstring CVeritasCluster::ConcatNameValuePair_(const NameValuePairList& pairs) const {
    return clus::Conditions(pairs);
}

bool CVeritasCluster::SwitchToReadWriteMode() const {
    return ExecuteVeritasCommand_(L"haconf -makerw", true);
}

bool CVeritasCluster::SwitchToReadOnlyMode() const {
    return ExecuteVeritasCommand_(L"haconf -dump -makero", true);
}

// Queries -------------------------------------------------------------------------------------------------------

bool CVeritasCluster::EnumSystemNames(std::vector<std::wstring>& systems, const NameValuePairList* filter) const {
    const std::wstring conditions = filter ? ConcatNameValuePair_(*filter) : L"";
    std::vector<std::wstring> tokens;
    if (!ExecuteVeritasCommand_(L"hasys -list", conditions.c_str(), &tokens, true) || IsResultError(tokens)) {
        return false;
    }
    systems.swap(tokens);
    return true;
}

bool CVeritasCluster::EnumGroupNames(std::vector<std::wstring>& groups, const NameValuePairList* filter) const {
    return Steps_::EnumFirstColumn(*this, L"hagrp -list", groups, filter);
}

bool CVeritasCluster::EnumResourceNamesW(std::vector<std::wstring>& resources, const NameValuePairList* filter) const {
    return Steps_::EnumFirstColumn(*this, L"hares -list", resources, filter);
}

bool CVeritasCluster::Steps_::EnumFirstColumn(const CVeritasCluster& cluster, const wchar_t* command,
                                              std::vector<std::wstring>& names, const NameValuePairList* filter) {
    const std::wstring conditions = filter ? cluster.ConcatNameValuePair_(*filter) : L"";
    std::vector<std::wstring> tokens;
    if (!cluster.ExecuteVeritasCommand_(command, conditions.c_str(), &tokens, true) || cluster.IsResultError(tokens)) {
        return false;
    }
    UniqueNames unique(names);
    for (size_t row = 0; row < tokens.size(); row += ListColumns) {
        unique.Append(std::move(tokens[row]));
    }
    return true;
}

bool CVeritasCluster::EnumResDependencies(const wchar_t* resource, std::vector<std::wstring>& parents,
                                          std::vector<std::wstring>& children) const {
    const std::wstring name = Text(resource);
    std::vector<std::wstring> tokens;
    if (!ExecuteVeritasCommand_(L"hares -dep", name.c_str(), &tokens, true)) {
        return false;
    }
    for (size_t row = DependencyColumns; row + DependencyColumns <= tokens.size(); row += DependencyColumns) {
        const std::wstring& parent = tokens[row + 1];
        const std::wstring& child = tokens[row + 2];
        if (EqualNoCase(parent, name.c_str())) {
            AppendNew(children, child);
        }
        if (EqualNoCase(child, name.c_str())) {
            AppendNew(parents, parent);
        }
    }
    return true;
}

bool CVeritasCluster::GetResourceAttribute(const wchar_t* resource, const wchar_t* attribute,
                                           std::wstring& value) const {
    const std::wstring command = L"hares -display " + Text(resource) + L" -attribute " + Text(attribute);
    std::wstring text;
    if (!ExecuteVeritasCommand_(command.c_str(), L"", text, true) || IsResultError(text.c_str())) {
        return false;
    }
    return clus::ShownAttributeValue(text, value);
}

bool CVeritasCluster::GetGroupOnlineNode(const wchar_t* group, bool& online, std::wstring& system,
                                         bool acceptPartial) const {
    online = false;
    const std::wstring command = L"hagrp -state " + Text(group);
    std::vector<std::wstring> tokens;
    if (!ExecuteVeritasCommand_(command.c_str(), L"", &tokens, true)) {
        return false;
    }
    // The header is walked like a row: it names no state that matches. A row cut short does not match.
    for (size_t row = 0; row + StateColumns <= tokens.size(); row += StateColumns) {
        const std::wstring& state = tokens[row + 3];
        if ((acceptPartial && EqualNoCase(state, L"|PARTIAL|")) || EqualNoCase(state, L"|ONLINE|")) {
            online = true;
            system = tokens[row + 2];
            break;
        }
    }
    return true;
}

bool CVeritasCluster::FindGroupNameByVirtualServerName(const wchar_t* virtualName, std::wstring& group) const {
    const NameValuePairList filter = {{TypeAttribute, LanmanType}, {VirtualNameAttribute, Text(virtualName)}};
    std::vector<std::wstring> resources;
    if (!EnumResourceNamesW(resources, &filter)) {
        return false;
    }
    for (const std::wstring& resource : resources) {
        if (GetResourceAttribute(resource.c_str(), GroupAttribute, group)) {
            return true;
        }
    }
    return resources.empty(); // no such server is no failure: callers tell by the empty text
}

bool CVeritasCluster::GetGenericServiceResNameByServiceName(const wchar_t* group, const wchar_t* serviceName,
                                                            std::wstring& resource) const {
    LOG_ENTER_AND_LEAVE(L"GetGenericServiceResNameByServiceName");
    const std::wstring groupName = Text(group);
    const NameValuePairList filter = {
        {TypeAttribute, GenericServiceType}, {ServiceNameAttribute, Text(serviceName)}, {GroupAttribute, groupName}};
    std::vector<std::wstring> resources;
    if (!EnumResourceNamesW(resources, &filter)) {
        LOG_WARNING(L"Fail to enumerate resource for Group %s", groupName.c_str());
        return false;
    }
    if (resources.empty()) {
        LOG_WARNING(L"No resource found in Group %s", groupName.c_str());
        return false;
    }
    resource = resources.front();
    return true;
}

THIRD_PARTY_CLUSTER_TYPE CVeritasCluster::GetThirdPartyClusterType() const {
    DWORD type = 0;
    DWORD stored = 0;
    {
        // The compiled-in key, whatever the settings file names.
        const RegistryKey key(DefaultProductRegistryKey, KEY_READ);
        if (!key) {
            LOG_WARNING(L"Cannot open registry %s, Last err:%d", DefaultProductRegistryKey, GetLastError());
        } else if (key.ReadBytes(L"ThirdPartyClusterType", &stored, sizeof(stored))) {
            type = stored;
        } else {
            LOG_WARNING(L"Cannot query registry value %s, Last err:%d", L"ThirdPartyClusterType", GetLastError());
        }
    }
    LOG_INFO(L"GetThirdPartyClusterType: returns: %d", type);
    return static_cast<THIRD_PARTY_CLUSTER_TYPE>(type);
}

// Resource operations -------------------------------------------------------------------------------------------

bool CVeritasCluster::CreateResource(const wchar_t* resName, const wchar_t* resType, const wchar_t* groupName,
                                     const wchar_t* childResName, const NameValuePairList& params) const {
    const std::wstring resource = Text(resName);
    const std::wstring add = L"hares -add " + resource + L" " + Text(resType) + L" " + Text(groupName);
    ExecuteVeritasCommand_(add.c_str(), true);

    const std::wstring prefix = L"hares -modify " + resource + L" ";
    for (const auto& param : params) {
        const std::wstring modify = prefix + L" " + param.first + L" " + param.second;
        ExecuteVeritasCommand_(modify.c_str(), true);
    }
    if (childResName) {
        const std::wstring link = L"hares -link " + resource + L" " + childResName;
        ExecuteVeritasCommand_(link.c_str(), true);
    }
    return true; // callers that must know whether the resource is there ask for it
}

bool CVeritasCluster::LinkResource(const wchar_t* parent, const wchar_t* child) const {
    const std::wstring command = L"hares -link " + Text(parent) + L" " + Text(child);
    return ExecuteVeritasCommand_(command.c_str(), true);
}

bool CVeritasCluster::DeleteResource(const wchar_t* resource) const {
    const std::wstring command = L"hares -delete " + Text(resource);
    ExecuteVeritasCommand_(command.c_str(), true);
    return true;
}

bool CVeritasCluster::TurnOnOrOffResource(const wchar_t* resource, const wchar_t* system, bool online) const {
    ProbeAndClearFaultOnres(resource, system);
    const std::wstring command =
        (online ? L"hares -online " : L"hares -offline ") + Text(resource) + L" -sys " + Text(system);
    return ExecuteVeritasCommand_(command.c_str(), true);
}

// The fault first, on all systems; then the probe.
void CVeritasCluster::ProbeAndClearFaultOnres(const wchar_t* resource, const wchar_t* system) const {
    const std::wstring name = Text(resource);
    ExecuteVeritasCommand_(L"hares -clear ", name.c_str(), nullptr, true);
    if (system) {
        const std::wstring probe = L"hares -probe " + name + L" -sys ";
        ExecuteVeritasCommand_(probe.c_str(), system, nullptr, true);
    }
}

bool CVeritasCluster::WaitForServiceToStart(const wchar_t* serviceName, int timeout) const {
    if (timeout < 1) {
        return true;
    }
    bool started = false;
    try {
        CServiceManager service(serviceName, nullptr);
        for (int remaining = timeout; remaining >= 0; remaining -= static_cast<int>(ServicePollInterval)) {
            if (service.QueryServiceStatus() == SERVICE_RUNNING) {
                LOG_INFO(L"service %s started successfully.", serviceName);
                Sleep(ServiceSettleTime);
                started = true;
                break;
            }
            Sleep(ServicePollInterval);
        }
    } catch (const OS::CException& exception) {
        LOG_ERROR(L"OS::CException caught, Err code: %d", exception.GetErrorCode());
    }
    if (!started) {
        LOG_WARNING(L"unable to start service %s.", serviceName);
    }
    return started;
}

bool CVeritasCluster::EncryptVeritasPassword(const wchar_t* password, std::wstring& encrypted) const {
    std::vector<std::wstring> tokens;
    if (!ExecuteVeritasCommand_(L"vcsencrypt -agent", password ? password : L"", &tokens, false)) {
        return false;
    }
    if (!tokens.empty()) {
        encrypted = tokens.front();
    }
    return true;
}

// Exchange virtual servers --------------------------------------------------------------------------------------

bool CVeritasCluster::CollectEVSInfo(const wchar_t* virtualName, CVeritasVirtualServerInfo& info) const {
    LOG_ENTER_AND_LEAVE(L"CollectEVSInfo");
    const NameValuePairList filter = {{TypeAttribute, LanmanType}, {VirtualNameAttribute, Text(virtualName)}};
    std::vector<std::wstring> lanmans;
    if (!EnumResourceNamesW(lanmans, &filter)) {
        LOG_WARNING(L"EnumResourceNames fail");
        return false;
    }
    if (lanmans.empty()) {
        LOG_WARNING(L"No Lanman resource found.");
        return false;
    }
    info.sLanmanResName = lanmans.front();
    if (!GetResourceAttribute(info.sLanmanResName.c_str(), GroupAttribute, info.sGroupName)) {
        LOG_WARNING(L"Failed to get Group attribute for resource %s", info.sLanmanResName.c_str());
        return false;
    }
    info.SetGroupAndKOVAResourceName(info.sGroupName.c_str());
    if (!GetGroupOnlineNode(info.sGroupName.c_str(), info.bGroupOnline, info.sOnlineNode, true)) {
        LOG_WARNING(L"Failed to get Group online node for resource %s", info.sLanmanResName.c_str());
        return false;
    }
    return true;
}

bool CVeritasCluster::CollectExchangeEVSInfo(std::vector<CVeritasVirtualServerInfo>& infos) const {
    LOG_ENTER_AND_LEAVE(L"CollectExchangeEVSInfo");
    std::vector<std::wstring> groups;
    bool succeeded = EnumGroupNames(groups);

    const size_t first = infos.size();
    NameValuePairList filter = {
        {GroupAttribute, L""}, {TypeAttribute, ExchServiceType}, {ServiceAttribute, InformationStoreService}};
    for (const std::wstring& group : groups) {
        filter[0].second = group;
        std::vector<std::wstring> stores;
        if (!EnumResourceNamesW(stores, &filter)) {
            LOG_WARNING(L"CollectExchangeEVSInfo, EnumResourceNames for exchange resource failed");
            succeeded = false;
        }
        if (!stores.empty()) {
            infos.emplace_back(stores.front().c_str(), group.c_str());
        }
    }

    filter = {{GroupAttribute, L""}, {TypeAttribute, LanmanType}};
    for (size_t i = first; i < infos.size(); ++i) {
        CVeritasVirtualServerInfo& info = infos[i];
        filter[0].second = info.sGroupName;
        std::vector<std::wstring> lanmans;
        if (!EnumResourceNamesW(lanmans, &filter)) {
            LOG_WARNING(L"CollectExchangeEVSInfo, EnumResourceNames for lanman resource failed for group %s",
                        info.sGroupName.c_str());
            succeeded = false;
        }
        if (!GetGroupOnlineNode(info.sGroupName.c_str(), info.bGroupOnline, info.sOnlineNode, true)) {
            LOG_WARNING(L"CollectExchangeEVSInfo, GetGroupOnlineNode for lanman resource failed for group %s",
                        info.sGroupName.c_str());
            succeeded = false;
        }
        if (!lanmans.empty()) {
            info.sLanmanResName = lanmans.front();
        }
    }
    return succeeded; // what was found stays, whatever failed
}

bool CVeritasCluster::CollectExchangeEVSInfo(const wchar_t* groupName, CVeritasVirtualServerInfo& info) const {
    std::vector<CVeritasVirtualServerInfo> infos;
    if (!CollectExchangeEVSInfo(infos)) {
        return false;
    }
    const std::wstring group = Text(groupName);
    const auto found = std::find_if(infos.begin(), infos.end(), [&group](const CVeritasVirtualServerInfo& candidate) {
        return EqualNoCase(candidate.sGroupName, group.c_str());
    });
    if (found == infos.end()) {
        return false;
    }
    info = *found;
    return true;
}

bool CVeritasCluster::FindMostParentMountVResourceNameInGroup(const wchar_t* groupName,
                                                              std::vector<std::wstring>& mountResNames) const {
    LOG_ENTER_AND_LEAVE(L"FindMostParentMountVResourceNameInGroup");
    const std::wstring group = Text(groupName);
    LOG_INFO(L"Finding Exchange SA resource for group %s", group.c_str());
    const NameValuePairList attendantFilter = {
        {TypeAttribute, ExchServiceType}, {ServiceAttribute, SystemAttendantService}, {GroupAttribute, group}};
    std::vector<std::wstring> attendants;
    if (!EnumResourceNamesW(attendants, &attendantFilter)) {
        return false;
    }
    std::vector<std::wstring> dependencies;
    if (!attendants.empty()) {
        LOG_INFO(L"Exchange SA: %s", attendants.front().c_str());
        LOG_INFO(L"Finding the resources that ExchangeSA depends on.");
        std::vector<std::wstring> parents;
        if (!EnumResDependencies(attendants.front().c_str(), parents, dependencies)) {
            return false;
        }
    }
    const NameValuePairList mountFilter = {{TypeAttribute, MountVType}, {GroupAttribute, group}};
    std::vector<std::wstring> mounts;
    if (!EnumResourceNamesW(mounts, &mountFilter)) {
        return false;
    }
    std::vector<std::wstring> candidates;
    std::copy_if(dependencies.begin(), dependencies.end(), std::back_inserter(candidates),
                 [&mounts](const std::wstring& name) { return Contains(mounts, name); });

    std::vector<std::wstring> found;
    for (const std::wstring& candidate : candidates) {
        std::vector<std::wstring> parents;
        std::vector<std::wstring> children;
        if (!EnumResDependencies(candidate.c_str(), parents, children)) {
            continue;
        }
        const bool dependsOnOther =
            std::any_of(children.begin(), children.end(),
                        [&candidates](const std::wstring& name) { return Contains(candidates, name); });
        if (!dependsOnOther) {
            found.push_back(candidate);
        }
    }
    mountResNames.swap(found);
    return true;
}

bool CVeritasCluster::GetKOVAShareDiskResNameByRegRepName(const wchar_t* groupName, const wchar_t* regRepResName,
                                                          std::wstring& mountResName) const {
    const NameValuePairList filter = {{TypeAttribute, MountVType}, {GroupAttribute, Text(groupName)}};
    std::vector<std::wstring> mounts;
    if (!EnumResourceNamesW(mounts, &filter)) {
        return false;
    }
    std::vector<std::wstring> parents;
    std::vector<std::wstring> children;
    const bool succeeded = EnumResDependencies(regRepResName, parents, children);
    const auto found = std::find_if(children.begin(), children.end(),
                                    [&mounts](const std::wstring& name) { return Contains(mounts, name); });
    if (found != children.end()) {
        mountResName = *found;
    }
    return succeeded;
}

bool CVeritasCluster::FindExistingKOVARegRepResName(const wchar_t* groupName, std::wstring& regRepResName) const {
    const std::wstring key = GetDefaultRegRepRegKey();
    const NameValuePairList filter = {{GroupAttribute, Text(groupName)}, {TypeAttribute, RegRepType}};
    std::vector<std::wstring> resources;
    const bool listed = EnumResourceNamesW(resources, &filter);
    for (const std::wstring& resource : resources) {
        std::wstring keys;
        if (GetResourceAttribute(resource.c_str(), KeysAttribute, keys) && EqualNoCase(keys, key.c_str())) {
            regRepResName = resource;
            break;
        }
    }
    return listed; // whether or not one matched: callers tell by the empty text
}

std::wstring CVeritasCluster::GetDefaultRegRepReplicationDirectory(const wchar_t* path) const {
    wchar_t drive[_MAX_DRIVE] = {};
    wchar_t directory[_MAX_DIR] = {};
    wchar_t name[_MAX_FNAME] = {};
    wchar_t extension[_MAX_EXT] = {};
    // A part that is too long leaves all of them empty.
    _wsplitpath_s(path, drive, _MAX_DRIVE, directory, _MAX_DIR, name, _MAX_FNAME, extension, _MAX_EXT);
    if (directory[0] == L'\0') {
        LOG_WARNING(L"Cannot split path %s", path);
        return std::wstring();
    }
    // Without the drive: each system mounts the shared disk where its MountV resource says.
    return NS_StringUtils::concatPath(NS_StringUtils::concatPath(L"\\", directory), L"\\RegRep");
}

std::wstring CVeritasCluster::GetDefaultRegRepRegKey() const {
    return std::wstring(L"HKLM\\") + DefaultProductRegistryKey;
}

// The product's resource set ------------------------------------------------------------------------------------

void CVeritasCluster::MakeDefaultCreateRegRepResoruceParams(NameValuePairList& params) const {
    params.clear();
    params.reserve(RegRepParamCount);
    params.emplace_back(L"MountResName", L"");
    params.emplace_back(ReplicationDirectoryAttribute, L"");
    // An association of the key with an empty option.
    params.emplace_back(KeysAttribute, Quoted(GetDefaultRegRepRegKey()) + L" " + EmptyQuotes);
    params.emplace_back(L"RestoreLocally", L"1");
    params.emplace_back(L"Critical", L"0");
    params.emplace_back(L"Enabled", L"1");
}

void CVeritasCluster::MakeDefaultCreateGenericServiceResoruceParams(NameValuePairList& params) const {
    params.clear();
    params.reserve(ServiceParamCount);
    params.emplace_back(L"DelayAfterOnline", L"600");
    params.emplace_back(L"DelayAfterOffline", L"600");
    params.emplace_back(L"UserAccount", L"LocalSystem");
    params.emplace_back(L"Password", EmptyQuotes);
    params.emplace_back(L"Domain", Quoted(L"NT Authority"));
    params.emplace_back(L"LanmanResName", EmptyQuotes);
    params.emplace_back(L"UseVirtualName", L"1");
    params.emplace_back(ServiceNameAttribute, EmptyQuotes);
    params.emplace_back(L"Critical", L"0");
    params.emplace_back(L"Enabled", L"1");
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers link against the signature by value
bool CVeritasCluster::CreateKOVAResources(CVeritasVirtualServerInfo info, bool bCreateQAV, bool bCreateRemoteConfig,
                                          const wchar_t* szRemoteConfigGroup, const wchar_t* szRemoteConfigUsername,
                                          const wchar_t* szRemoteConfigPassword) const {
    LOG_ENTER_AND_LEAVE(L"CreateKOVAResources");
    const wchar_t* const group = info.sGroupName.c_str();
    const wchar_t* const regRep = info.sRegRepResName.c_str();
    const wchar_t* const host = info.sHostServiceResName.c_str();
    const wchar_t* const attendant = info.sSAServiceResName.c_str();
    const wchar_t* const monitor = info.sQAVMonitorResName.c_str();
    const wchar_t* const remoteConfig = info.sRemoteConfigResName.c_str();

    // The registry replication first, since the services depend on it.
    NameValuePairList params;
    MakeDefaultCreateRegRepResoruceParams(params);
    params[RegRepMountResName].second = info.sMountResName;
    params[RegRepReplicationDirectory].second = GetDefaultRegRepReplicationDirectory(info.sDataPath.c_str());
    if (!CreateResource(regRep, RegRepType, group, info.sMountResName.c_str(), params)) {
        LOG_WARNING(L"Creating veritas res for %s failed.", regRep);
        return false;
    }

    MakeDefaultCreateGenericServiceResoruceParams(params);
    params[ServiceDelayAfterOnline].second = std::to_wstring(info.nDelayAfterOnline);
    params[ServiceDelayAfterOffline].second = std::to_wstring(info.nDelayAfterOffline);
    params[ServiceLanmanResName].second = info.sLanmanResName;
    LOG_INFO(L"Creating %s...", host);
    params[ServiceServiceName].second = HostService;
    if (!CreateResource(host, GenericServiceType, group, info.sExchangeResName.c_str(), params)) {
        LOG_WARNING(L"Creating veritas res for %s failed.", host);
        return false;
    }
    LinkResource(host, regRep);

    LOG_INFO(L"Creating %s...", attendant);
    params[ServiceServiceName].second = SAService;
    if (!CreateResource(attendant, GenericServiceType, group, regRep, params)) {
        LOG_WARNING(L"Creating veritas res for %s failed.", attendant);
        return false;
    }

    if (bCreateQAV) {
        LOG_INFO(L"Creating %s...", monitor);
        params[ServiceServiceName].second = QAVMonitorService;
        if (!CreateResource(monitor, GenericServiceType, group, regRep, params)) {
            LOG_WARNING(L"Creating veritas res for %s failed.", monitor);
            return false;
        }
    }

    if (bCreateRemoteConfig) {
        LOG_INFO(L"Creating %s...", remoteConfig);
        params[ServiceServiceName].second = RemoteConfigService;
        if (szRemoteConfigPassword && szRemoteConfigUsername && szRemoteConfigGroup) {
            std::wstring encrypted;
            params[ServiceUserAccount].second = Quoted(szRemoteConfigUsername);
            EncryptVeritasPassword(szRemoteConfigPassword, encrypted);
            params[ServicePassword].second = Quoted(encrypted);
            params[ServiceDomain].second = Quoted(szRemoteConfigGroup);
        } else {
            LOG_WARNING(L"szRemoteConfigPassword or szRemoteConfigUsername or szRemoteConfigGroup is NULL");
        }
        if (!CreateResource(remoteConfig, GenericServiceType, group, host, params)) {
            LOG_WARNING(L"Creating veritas res for %s failed.", remoteConfig);
            return false;
        }
    }

    if (info.bGroupOnline) {
        // Failing to come online is no failure: the resources are there.
        const wchar_t* const node = info.sOnlineNode.c_str();
        LOG_INFO(L"Turning on %s...", attendant);
        TurnOnOrOffResource(attendant, node, true);
        LOG_INFO(L"Turning on %s...", host);
        if (TurnOnOrOffResource(host, node, true)) {
            LOG_INFO(L"Waiting for service %s to go online", host);
            WaitForServiceToStart(HostService, MillisecondsFromSeconds(info.nDelayAfterOnline));
        }
        if (bCreateQAV) {
            LOG_INFO(L"Turning on %s...", monitor);
            TurnOnOrOffResource(monitor, node, true);
        }
        if (bCreateRemoteConfig) {
            LOG_INFO(L"Turning on %s...", remoteConfig);
            TurnOnOrOffResource(remoteConfig, node, true);
        }
    }
    return true;
}

bool CVeritasCluster::CheckIfGenericServiceResourceExistsAndTurnItOn(const wchar_t* groupName,
                                                                     const wchar_t* serviceName,
                                                                     const wchar_t* nodeName, int timeout) const {
    std::wstring resName;
    if (!GetGenericServiceResNameByServiceName(groupName, serviceName, resName)) {
        LOG_WARNING(L"call to GetGenericServiceResNameByServiceName failed");
        return false;
    }
    if (resName.empty()) {
        return false;
    }
    if (TurnOnOrOffResource(resName.c_str(), nodeName, true)) {
        WaitForServiceToStart(Text(serviceName).c_str(), timeout);
    } else {
        LOG_WARNING(L"failed to turn res: %s online.", resName.c_str());
    }
    return true; // it exists, online or not
}

bool CVeritasCluster::CreateQAVResourceAndTurnItOn(const wchar_t* virtualName, int timeout) const {
    LOG_ENTER_AND_LEAVE(L"CreateQAVResource");
    CVeritasVirtualServerInfo info;
    if (!CollectEVSInfo(virtualName, info)) {
        return true; // no such server: nothing to do, and no failure
    }
    std::wstring regRep;
    if (!FindExistingKOVARegRepResName(info.sGroupName.c_str(), regRep)) {
        return true;
    }
    if (CheckIfGenericServiceResourceExistsAndTurnItOn(info.sGroupName.c_str(), QAVMonitorService,
                                                       info.sOnlineNode.c_str(), timeout)) {
        return true;
    }
    NameValuePairList params;
    MakeDefaultCreateGenericServiceResoruceParams(params);
    const wchar_t* const monitor = info.sQAVMonitorResName.c_str();
    LOG_INFO(L"Creating %s...", monitor);
    params[ServiceServiceName].second = QAVMonitorService;
    params[ServiceLanmanResName].second = info.sLanmanResName;
    return Steps_::CreateServiceAndTurnItOn(*this, info, monitor, QAVMonitorService, regRep.c_str(), params, timeout);
}

bool CVeritasCluster::CreateRemoteConfigResourceAndTurnItOn(const wchar_t* virtualName,
                                                            const wchar_t* szRemoteConfigGroup,
                                                            const wchar_t* szRemoteConfigUsername,
                                                            const wchar_t* szRemoteConfigPassword, int timeout) const {
    LOG_ENTER_AND_LEAVE(L"CreateRemoteConfigResource");
    CVeritasVirtualServerInfo info;
    if (!CollectEVSInfo(virtualName, info)) {
        LOG_WARNING(L"Unable to Collect EVS info");
        return false;
    }
    if (CheckIfGenericServiceResourceExistsAndTurnItOn(info.sGroupName.c_str(), RemoteConfigService,
                                                       info.sOnlineNode.c_str(), timeout)) {
        return true;
    }
    std::wstring host;
    if (!GetGenericServiceResNameByServiceName(info.sGroupName.c_str(), HostService, host)) {
        LOG_WARNING(L"Unable to GetKOVAResoruceNameInGroup");
        return false;
    }
    NameValuePairList params;
    MakeDefaultCreateGenericServiceResoruceParams(params);
    const wchar_t* const remoteConfig = info.sRemoteConfigResName.c_str();
    LOG_INFO(L"Creating %s...", remoteConfig);
    params[ServiceServiceName].second = RemoteConfigService;
    params[ServiceDomain].second = Quoted(Text(szRemoteConfigGroup));
    params[ServiceUserAccount].second = Quoted(Text(szRemoteConfigUsername));
    std::wstring encrypted;
    EncryptVeritasPassword(szRemoteConfigPassword, encrypted);
    params[ServicePassword].second = Quoted(encrypted);
    params[ServiceLanmanResName].second = info.sLanmanResName;
    return Steps_::CreateServiceAndTurnItOn(*this, info, remoteConfig, RemoteConfigService, host.c_str(), params,
                                            timeout);
}

bool CVeritasCluster::Steps_::CreateServiceAndTurnItOn(const CVeritasCluster& cluster,
                                                       const CVeritasVirtualServerInfo& info, const wchar_t* resName,
                                                       const wchar_t* serviceName, const wchar_t* childResName,
                                                       const NameValuePairList& params, int timeout) {
    if (!cluster.CreateResource(resName, GenericServiceType, info.sGroupName.c_str(), childResName, params)) {
        LOG_WARNING(L"Creating veritas res for %s failed.", resName);
        return false;
    }
    if (!cluster.TurnOnOrOffResource(resName, info.sOnlineNode.c_str(), true)) {
        LOG_WARNING(L"failed to turn res: %s online.", resName);
        return false;
    }
    cluster.WaitForServiceToStart(serviceName, timeout);
    return true;
}

bool CVeritasCluster::CollectKOVAResNames(std::vector<std::wstring>& resNames) const {
    return CollectKOVAResNames(NameValuePairList(), resNames);
}

bool CVeritasCluster::CollectKOVAResNames(const wchar_t* groupName, std::vector<std::wstring>& resNames) const {
    const NameValuePairList filter = {{GroupAttribute, Text(groupName)}};
    return CollectKOVAResNames(filter, resNames);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed
bool CVeritasCluster::CollectKOVAResNames(const NameValuePairList filter, std::vector<std::wstring>& resNames) const {
    LOG_ENTER_AND_LEAVE(L"CollectKOVAResNames");
    for (const wchar_t* service : {HostService, RemoteConfigService, SAService, QAVMonitorService}) {
        NameValuePairList conditions(filter);
        conditions.emplace_back(TypeAttribute, GenericServiceType);
        conditions.emplace_back(ServiceNameAttribute, service);
        if (!EnumResourceNamesW(resNames, &conditions)) {
            return false;
        }
    }
    NameValuePairList conditions(filter);
    conditions.emplace_back(TypeAttribute, RegRepType);
    conditions.emplace_back(ReplicationDirectoryAttribute,
                            GetDefaultRegRepReplicationDirectory(CVirtualServerUtil::GetDataRootPath().c_str()));
    return EnumResourceNamesW(resNames, &conditions);
}
