#include "ModelSettings.h"

#include "ClusterInUse.h"
#include "Failure.h"
#include "ModelInUse.h"
#include "Replay.h"
#include "Simulation.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Environment.h"
#include "common/Files.h"
#include "common/Text.h"

#include <ClusterFiles.h>
#include <State.h>
#include <clus_VirtualServerUtil.h>

#include <sddl.h>

#include <cstdint>
#include <cwchar>
#include <utility>
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

const std::uint64_t MostOddBytes = 65536; // of a value that is no text or number

// Rights of everybody to the key of a bundle; it is deleted in the end.
const wchar_t ReadAndDelete[] = L"D:P(A;;KRSD;;;WD)";
const wchar_t OnlyDelete[] = L"D:P(A;;SD;;;WD)";

bool IsInForce = false;

struct RegistryValue {
    bool isThere = false;
    DWORD type = 0;
    DWORD size = 0;
    std::vector<wchar_t> data; // terminated, whatever is stored
};

RegistryValue ReadAnyValue(const std::wstring& path, const wchar_t* name) {
    RegistryValue value;
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return value;
    }
    LSTATUS code = RegQueryValueExW(key, name, nullptr, &value.type, nullptr, &value.size);
    if (code == ERROR_SUCCESS) {
        value.data.resize(value.size / sizeof(wchar_t) + 2);
        code =
            RegQueryValueExW(key, name, nullptr, &value.type, reinterpret_cast<BYTE*>(value.data.data()), &value.size);
    }
    RegCloseKey(key);
    value.isThere = code == ERROR_SUCCESS;
    return value;
}

const struct {
    DWORD type;
    const char* name;
} TypeNames[] = {{REG_NONE, "REG_NONE"},           {REG_SZ, "REG_SZ"},
                 {REG_EXPAND_SZ, "REG_EXPAND_SZ"}, {REG_BINARY, "REG_BINARY"},
                 {REG_DWORD, "REG_DWORD"},         {REG_DWORD_BIG_ENDIAN, "REG_DWORD_BIG_ENDIAN"},
                 {REG_MULTI_SZ, "REG_MULTI_SZ"},   {REG_QWORD, "REG_QWORD"}};

std::string NameOfType(DWORD type) {
    for (const auto& known : TypeNames) {
        if (known.type == type) {
            return known.name;
        }
    }
    return "type " + std::to_string(type);
}

bool IsText(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ;
}

Json JsonOf(const RegistryValue& value) {
    return IsText(value.type) ? Json(std::wstring(value.data.data()))
                              : Json(*reinterpret_cast<const DWORD*>(value.data.data()));
}

// Does something with each value that the library reads, and the type in which it does.
template <typename Look> void LookAtEach(const Look& look) {
    const std::wstring path = CVirtualServerUtil::GetProductRegistryKey();
    for (const wchar_t* name : NumberNames) {
        look(name, ReadAnyValue(path, name), REG_DWORD);
    }
    for (const wchar_t* name : TextNames) {
        look(name, ReadAnyValue(path, name), REG_SZ);
    }
    look(DataRootName, ReadAnyValue(CompiledInProductKey, DataRootName), REG_SZ);
    look(ThirdPartyName, ReadAnyValue(CompiledInProductKey, ThirdPartyName), REG_DWORD);
}

// Of the simulated VCS cluster; null when there is none, or it has no settings. Of states that are not in order the
// tools tell what is wrong.
Json ReadFromVcs() {
    const std::wstring mainCf = common::EnvironmentVariable(VcsVariable);
    const std::wstring states = vcssim::ClusterFiles(mainCf).State();
    if (mainCf.empty() || !common::FileExists(states)) {
        return Json();
    }
    try {
        const std::string settings = vcssim::ReadState(common::ReadWholeFile(states)).settings;
        return settings.empty() ? Json() : common::ParseJson(settings);
    } catch (const std::exception&) {
        return Json();
    }
}

// Of the simulated failover cluster; null when there is no simulator, no model file or no settings.
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

LSTATUS WriteText(HKEY key, const std::wstring& name, DWORD type, const Json& value) {
    const std::wstring text = common::ToUtf16(value.get<std::string>());
    return RegSetValueExW(key, name.c_str(), 0, type, reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

LSTATUS WriteNumber(HKEY key, const std::wstring& name, const Json& value) {
    const auto number = value.get<DWORD>();
    return RegSetValueExW(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof(number));
}

// As ReadOddSettings has it. What only its size is known of is zeros.
LSTATUS WriteOdd(HKEY key, const std::wstring& name, const Json& value) {
    const Json text = value.value("text", Json());
    const Json number = value.value("number", Json());
    const Json size = value.value("size", Json());
    for (const auto& known : TypeNames) {
        if (value.value("type", Json()) != Json(known.name)) {
            continue;
        }
        if (IsText(known.type) && text.is_string()) {
            return WriteText(key, name, known.type, text);
        }
        if (known.type == REG_DWORD && number.is_number_unsigned()) {
            return WriteNumber(key, name, number);
        }
        if (size.is_number_unsigned() && size.get<std::uint64_t>() <= MostOddBytes) {
            const std::vector<BYTE> zeros(size.get<std::size_t>() + 1);
            return RegSetValueExW(key, name.c_str(), 0, known.type, zeros.data(), static_cast<DWORD>(zeros.size() - 1));
        }
    }
    return ERROR_INVALID_DATA;
}

LSTATUS Write(HKEY key, const std::wstring& name, const Json& value) {
    return value.is_object()   ? WriteOdd(key, name, value)
           : value.is_number() ? WriteNumber(key, name, value)
                               : WriteText(key, name, REG_SZ, value);
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
    if (RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS) {
        for (const std::wstring& child : ChildrenOf(key)) {
            DeleteTree(key, child);
        }
        RegCloseKey(key);
    }
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

std::wstring ProductKey() {
    const BundledComputer* const bundled = BundledComputerInUse();
    return bundled == nullptr || bundled->productKey.empty() ? CVirtualServerUtil::GetProductRegistryKey()
                                                             : bundled->productKey;
}

const char* ProductKeyAccess() {
    const std::wstring path = CVirtualServerUtil::GetProductRegistryKey();
    HKEY key = nullptr;
    const char* access = BundleFiles::AccessFull;
    LSTATUS code = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS, &key);
    if (code != ERROR_SUCCESS) {
        access = BundleFiles::AccessRead;
        code = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key);
    }
    if (code != ERROR_SUCCESS) {
        return code == ERROR_FILE_NOT_FOUND ? BundleFiles::AccessMissing : BundleFiles::AccessNone;
    }
    RegCloseKey(key);
    return access;
}

Json ReadProductSettings() {
    Json settings = Json::object();
    LookAtEach([&settings](const wchar_t* name, const RegistryValue& value, DWORD wanted) {
        if (value.isThere && value.type == wanted) {
            settings[common::ToUtf8(name)] = JsonOf(value);
        }
    });
    return settings;
}

Json ReadProductSettingTypes() {
    Json types = Json::object();
    LookAtEach([&types](const wchar_t* name, const RegistryValue& value, DWORD /*wanted*/) {
        if (value.isThere) {
            types[common::ToUtf8(name)] = NameOfType(value.type);
        }
    });
    return types;
}

Json ReadOddSettings() {
    Json settings = Json::object();
    LookAtEach([&settings](const wchar_t* name, const RegistryValue& value, DWORD wanted) {
        if (value.isThere && value.type != wanted) {
            Json odd = {{"type", NameOfType(value.type)}};
            const bool isNumber = value.type == REG_DWORD && value.size == sizeof(DWORD);
            odd[IsText(value.type) ? "text"
                : isNumber         ? "number"
                                   : "size"] = IsText(value.type) || isNumber ? JsonOf(value) : Json(value.size);
            settings[common::ToUtf8(name)] = std::move(odd);
        }
    });
    return settings;
}

ModelSettings::ModelSettings() {
    const DWORD lastError = GetLastError(); // which the library logs where no call has set another
    DeleteLeftKeys();
    const BundledComputer* const bundled = BundledComputerInUse();
    const bool isWholeComputer = IsReplaying() || bundled != nullptr; // which tells also that the product is not there
    const Json settings = IsReplaying()                      ? ReplayedSettings()
                          : bundled != nullptr               ? bundled->settings
                          : ClusterInUse() == Answering::Vcs ? ReadFromVcs()
                                                             : ReadFromSimulator();
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
    const BundledComputer* const bundled = BundledComputerInUse();
    LSTATUS code = ERROR_SUCCESS;
    if (!settings.is_null() || (bundled != nullptr && bundled->hasProductKey)) {
        code = WriteProduct(settings);
    }
    if (code == ERROR_SUCCESS && bundled != nullptr && bundled->hasProductKey && !bundled->isKeyWritable) {
        code = WriteAccess(bundled->isKeyReadable ? ReadAndDelete : OnlyDelete);
    }
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

// The library asks for all rights to the product's key, and takes what it does not get for missing.
LSTATUS ModelSettings::WriteAccess(const wchar_t* rights) const {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(rights, SDDL_REVISION_1, &descriptor, nullptr)) {
        return static_cast<LSTATUS>(GetLastError());
    }
    const HKEY product = CreateVolatile(m_machine, CVirtualServerUtil::GetProductRegistryKey());
    const LSTATUS code = RegSetKeySecurity(product, DACL_SECURITY_INFORMATION, descriptor);
    RegCloseKey(product);
    LocalFree(descriptor);
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
