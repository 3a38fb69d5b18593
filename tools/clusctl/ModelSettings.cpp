#include "ModelSettings.h"

#include "Failure.h"
#include "ModelInUse.h"
#include "Replay.h"
#include "Simulation.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Text.h"

#include <clus_VirtualServerUtil.h>

#include <cwchar>
#include <vector>

const wchar_t CompiledInProductKey[] = L"SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion";

namespace {

// The library looks for these two in the compiled-in key, whatever the settings file names.
const wchar_t DataRootName[] = L"DataRootPath";
const wchar_t ThirdPartyName[] = L"ThirdPartyClusterType";

// Where some systems look for the computer's name in the middle of a process.
const wchar_t ComputerNameKey[] = L"System\\CurrentControlSet\\Control\\ComputerName\\ActiveComputerName";

const wchar_t* const NumberNames[] = {L"IsCluster", L"ClusterQuorumMode"};
const wchar_t* const TextNames[] = {L"HomeDir", L"ServerIP", L"SERVERGUID"};

// Of the keys that take HKEY_LOCAL_MACHINE's place, one for each process.
const wchar_t ParentKey[] = L"Software";
const wchar_t KeyPrefix[] = L"clusctl-"; // then the process's number

std::wstring KeyOf(const std::wstring& name) {
    return std::wstring(ParentKey) + L"\\" + name;
}

bool IsInForce = false;

// Null when the value is missing or of another type.
Json ReadValue(const std::wstring& path, const wchar_t* name, DWORD wantedType) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return Json();
    }
    DWORD type = 0;
    DWORD size = 0;
    std::vector<wchar_t> value;
    LSTATUS code = RegQueryValueExW(key, name, nullptr, &type, nullptr, &size);
    if (code == ERROR_SUCCESS) {
        value.resize(size / sizeof(wchar_t) + 2); // terminated, whatever is stored
        code = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(value.data()), &size);
    }
    RegCloseKey(key);
    if (code != ERROR_SUCCESS || type != wantedType) {
        return Json();
    }
    return type == REG_SZ ? Json(std::wstring(value.data())) : Json(*reinterpret_cast<const DWORD*>(value.data()));
}

void AddValue(Json& settings, const std::wstring& path, const wchar_t* name, DWORD type) {
    const Json value = ReadValue(path, name, type);
    if (!value.is_null()) {
        settings[common::ToUtf8(name)] = value;
    }
}

// The model's settings; null when there is no simulator, no model file or no settings.
Json ReadFromSimulator() {
    typedef size_t (*ReadFunction)(char* buffer, size_t cb);
    const HMODULE api = GetModuleHandleW(L"clusapi.dll");
    const auto read =
        api == nullptr
            ? nullptr
            : reinterpret_cast<ReadFunction>(reinterpret_cast<void*>(GetProcAddress(api, "ClusSimReadSettings")));
    const std::wstring file = Simulation(Answering::FailoverCluster).File();
    if (read == nullptr || file.empty() || GetFileAttributesW(file.c_str()) == INVALID_FILE_ATTRIBUTES) {
        return Json();
    }
    std::vector<char> text(read(nullptr, 0));
    if (text.empty() || read(text.data(), text.size()) > text.size()) {
        throw Failure(Errors::NoCluster, "the simulator cannot read the model " + Quoted(file))
            .Hint("'clusctl model check " + Quoted(file) + "' tells what is wrong with it.");
    }
    return text[0] == '\0' ? Json() : common::ParseJson(text.data());
}

void Require(LSTATUS code) {
    if (code != ERROR_SUCCESS) {
        throw Failure::OfCode("cannot put the settings of the model in force", static_cast<unsigned long>(code));
    }
}

HKEY CreateVolatile(HKEY parent, const std::wstring& path) {
    HKEY key = nullptr;
    Require(
        RegCreateKeyExW(parent, path.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &key, nullptr));
    return key;
}

LSTATUS Write(HKEY key, const std::wstring& name, const Json& value) {
    if (value.is_number()) {
        const auto number = value.get<DWORD>();
        return RegSetValueExW(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof(number));
    }
    const std::wstring text = common::ToUtf16(value.get<std::string>());
    return RegSetValueExW(key, name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

std::vector<std::wstring> ChildrenOf(HKEY key) {
    std::vector<std::wstring> names;
    wchar_t name[256];
    for (DWORD length = 256, index = 0;
         RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         length = 256, ++index) {
        names.emplace_back(name);
    }
    return names;
}

void DeleteTree(HKEY parent, const std::wstring& name) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(parent, name.c_str(), 0, KEY_ALL_ACCESS, &key) != ERROR_SUCCESS) {
        return;
    }
    for (const std::wstring& child : ChildrenOf(key)) {
        DeleteTree(key, child);
    }
    RegCloseKey(key);
    RegDeleteKeyW(parent, name.c_str());
}

// Whether a process of this number runs; also when that cannot be told.
bool IsRunning(DWORD process) {
    const HANDLE handle = OpenProcess(SYNCHRONIZE, FALSE, process);
    if (handle == nullptr) {
        return GetLastError() != ERROR_INVALID_PARAMETER; // which says that there is none
    }
    const bool isRunning = WaitForSingleObject(handle, 0) == WAIT_TIMEOUT;
    CloseHandle(handle);
    return isRunning;
}

// Those of this tool's processes that were ended by force.
void DeleteLeftKeys() {
    HKEY parent = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, ParentKey, 0, KEY_READ, &parent) != ERROR_SUCCESS) {
        return;
    }
    const std::size_t prefix = std::wcslen(KeyPrefix);
    for (const std::wstring& name : ChildrenOf(parent)) {
        const DWORD process = name.size() > prefix ? std::wcstoul(name.c_str() + prefix, nullptr, 10) : 0;
        const bool isOfProcess = name == KeyPrefix + std::to_wstring(process);
        // What bears this process's number is of another that had it before.
        if (isOfProcess && (process == GetCurrentProcessId() || !IsRunning(process))) {
            DeleteTree(HKEY_CURRENT_USER, KeyOf(name));
        }
    }
    RegCloseKey(parent);
}

} // namespace

Json ReadProductSettings() {
    const std::wstring path = CVirtualServerUtil::GetProductRegistryKey();
    Json settings = Json::object();
    for (const wchar_t* name : NumberNames) {
        AddValue(settings, path, name, REG_DWORD);
    }
    for (const wchar_t* name : TextNames) {
        AddValue(settings, path, name, REG_SZ);
    }
    AddValue(settings, CompiledInProductKey, DataRootName, REG_SZ);
    AddValue(settings, CompiledInProductKey, ThirdPartyName, REG_DWORD);
    return settings;
}

ModelSettings::ModelSettings() {
    const DWORD lastError = GetLastError(); // which the library logs where no call has set another
    DeleteLeftKeys();
    const bool isWholeComputer = IsReplaying() || IsBundleInUse(); // which tells also that the product is not there
    const Json settings = IsReplaying() ? ReplayedSettings() : IsBundleInUse() ? BundleSettings() : ReadFromSimulator();
    SetLastError(lastError);
    if (settings.is_null() && !isWholeComputer) {
        return;
    }
    m_name = KeyOf(KeyPrefix + std::to_wstring(GetCurrentProcessId()));
    // Windows Sockets reads the true HKEY_LOCAL_MACHINE when it starts; the library's own start only counts then.
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    try {
        Apply(settings);
    } catch (...) {
        Undo();
        throw;
    }
    IsInForce = true;
    SetLastError(lastError);
}

ModelSettings::~ModelSettings() {
    if (IsInForce) {
        Undo();
        IsInForce = false;
    }
}

bool ModelSettings::AreInForce() {
    return IsInForce;
}

void ModelSettings::Apply(const Json& settings) {
    m_machine = CreateVolatile(HKEY_CURRENT_USER, m_name);
    const LSTATUS code = settings.is_null() ? ERROR_SUCCESS : WriteProduct(settings);
    const HKEY computer = CreateVolatile(m_machine, ComputerNameKey);
    const LSTATUS named = Write(computer, L"ComputerName", Json(ComputerName()));
    RegCloseKey(computer);
    Require(code);
    Require(named);
    Require(RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_machine));
}

LSTATUS ModelSettings::WriteProduct(const Json& settings) const {
    const HKEY product = CreateVolatile(m_machine, CVirtualServerUtil::GetProductRegistryKey());
    const HKEY compiledIn = CreateVolatile(m_machine, CompiledInProductKey);
    LSTATUS code = ERROR_SUCCESS;
    for (const auto& member : settings.items()) {
        const std::wstring name = common::ToUtf16(member.key());
        const LSTATUS written =
            Write(name == DataRootName || name == ThirdPartyName ? compiledIn : product, name, member.value());
        code = code == ERROR_SUCCESS ? written : code;
    }
    RegCloseKey(compiledIn);
    RegCloseKey(product);
    return code;
}

void ModelSettings::Undo() {
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    if (m_machine != nullptr) {
        RegCloseKey(m_machine);
        DeleteTree(HKEY_CURRENT_USER, m_name);
    }
    WSACleanup();
}
