// The doctor's look at the settings: the file that names the registry key, the key, and its values.
#include "DoctorParts.h"

#include "ClusterInUse.h"
#include "Deployment.h"
#include "ModelSettings.h"
#include "SettingsFileLines.h"
#include "SettingsLimits.h"
#include "Text.h"

#include "common/Files.h"
#include "common/Text.h"
#include "core/SettingsFile.h"

#include <clus_VirtualServerUtil.h>

#include <algorithm>
#include <cstdio>

namespace {

using namespace settings;

const DWORD NoLimit = 0;

std::wstring ProgramFolder() {
    std::wstring path(32768, L'\0'); // the longest there is
    path.resize(GetModuleFileNameW(nullptr, &path[0], static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\') + 1);
}

// As the library reads them: as text, a long line in pieces. False when the file cannot be opened.
bool ReadLines(const std::wstring& path, std::vector<std::string>& lines) {
    FILE* const file = _wfopen(path.c_str(), L"r");
    if (file == nullptr) {
        return false;
    }
    std::vector<char> piece(clus::SettingsPieceCharacters + 1);
    while (std::fgets(piece.data(), static_cast<int>(piece.size()), file) != nullptr) {
        lines.emplace_back(piece.data());
    }
    std::fclose(file);
    return true;
}

void DiagnoseEntries(const std::string& file, const std::vector<std::string>& lines, Findings& findings) {
    const std::vector<SettingsFileEntry> entries = SettingsFileEntries(lines);
    const SettingsFileEntry* inForce = nullptr;
    for (const SettingsFileEntry& entry : entries) {
        if (entry.counts && entry.key == KeyName) {
            inForce = &entry;
        }
    }
    if (inForce == nullptr) {
        findings.Add("settings-file-no-entry", file,
                     "No line of it that takes effect names " + Printable(KeyName) + ".",
                     "write the line " + Printable(KeyName) + "<TAB>KEY as the first one of " + file);
    } else {
        findings.Add("settings-file-entry", file,
                     "Line " + std::to_string(inForce->line) + " names the key " + Quoted(inForce->value) + ".");
    }
    const size_t beyond = FirstLineBeyondLimit(lines);
    for (const SettingsFileEntry& entry : entries) {
        if (!entry.counts && (beyond == 0 || entry.line < beyond)) {
            findings.Add("settings-file-line-ignored", file,
                         "Line " + std::to_string(entry.line) + ", " + Quoted(entry.key) +
                             ", takes no effect: an entry stands right before it.",
                         "put a line that begins with # between lines " + std::to_string(entry.line - 1) + " and " +
                             std::to_string(entry.line) + " of " + file);
        }
    }
    if (beyond != 0) {
        findings.Add("settings-file-too-long", file,
                     "Line " + std::to_string(beyond) + " and all behind it are beyond " +
                         std::to_string(clus::SettingsTextCharacters) + " characters.",
                     "remove comments from " + file);
    }
    const size_t foreign = FirstLineBeyondAscii(lines);
    if (foreign != 0) {
        findings.Add("settings-file-not-ascii", file,
                     "Line " + std::to_string(foreign) + " holds bytes that are no ASCII.",
                     "save " + file + " as plain text without such characters and without a byte order mark");
    }
}

void DiagnoseFile(Findings& findings) {
    const std::wstring folder = ProgramFolder();
    const std::wstring first = folder + L"config\\" + FileName;
    const std::wstring second = folder + FileName;
    std::vector<std::string> lines;
    if (ReadLines(first, lines)) {
        DiagnoseEntries(QuotedPath(first), lines, findings);
        if (common::FileExists(second)) {
            findings.Add("settings-file-hidden", QuotedPath(second),
                         "There is one in the folder config, too, which is read in its place.",
                         "del " + QuotedPath(second));
        }
    } else if (ReadLines(second, lines)) {
        DiagnoseEntries(QuotedPath(second), lines, findings);
    } else {
        findings.Add("settings-file-none", Printable(FileName),
                     "There is none beside clusctl.exe, nor in a folder config there: the compiled-in key counts.");
    }
}

struct Value {
    LSTATUS code;
    DWORD type;
    DWORD bytes;
    DWORD number; // of a REG_DWORD
    std::wstring text;

    bool IsThere() const {
        return code == ERROR_SUCCESS;
    }
    bool IsNumber() const {
        return IsThere() && type == REG_DWORD && bytes == sizeof(DWORD);
    }
    bool IsText() const {
        return IsThere() && (type == REG_SZ || type == REG_EXPAND_SZ);
    }
};

Value ReadValue(HKEY key, const wchar_t* name) {
    Value value = {ERROR_SUCCESS, 0, 0, 0, std::wstring()};
    value.code = RegQueryValueExW(key, name, nullptr, &value.type, nullptr, &value.bytes);
    std::vector<wchar_t> data(value.bytes / sizeof(wchar_t) + 2); // terminated, whatever is stored
    if (value.IsThere()) {
        DWORD bytes = value.bytes;
        value.code = RegQueryValueExW(key, name, nullptr, &value.type, reinterpret_cast<BYTE*>(data.data()), &bytes);
    }
    if (value.IsNumber()) {
        value.number = *reinterpret_cast<const DWORD*>(data.data());
    } else if (value.IsText()) {
        value.text = data.data();
    }
    return value;
}

// Empty when there is no such text.
std::wstring ReadFolder(const std::wstring& path, const wchar_t* name) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return std::wstring();
    }
    const Value value = ReadValue(key, name);
    RegCloseKey(key);
    return value.text;
}

std::string RegAdd(const std::wstring& path, const wchar_t* name, const char* type, const char* data) {
    return "reg add " + Quoted(L"HKLM\\" + path) + " /v " + Printable(name) + " /t " + type + " /d " + data;
}

// One registry key, and what is to be said of its values.
class KeyLook {
public:
    KeyLook(HKEY key, const std::wstring& path, Findings& findings) : m_key(key), m_path(path), m_findings(findings) {
    }

    // A value of the wrong type, or too long, is told.
    Value Read(const wchar_t* name, bool isNumber, DWORD limit) const {
        Value value = ReadValue(m_key, name);
        const std::string mend = RegAdd(m_path, name, isNumber ? "REG_DWORD" : "REG_SZ", isNumber ? "NUMBER" : "TEXT");
        if (value.IsThere() && !(isNumber ? value.IsNumber() : value.IsText())) {
            m_findings.Add("value-wrong-type", Printable(name),
                           std::string("It is no ") + (isNumber ? "REG_DWORD." : "REG_SZ."), mend + " /f");
        }
        if (value.IsText() && limit != NoLimit && value.bytes > limit) {
            m_findings.Add("value-too-long", Printable(name),
                           "It takes " + std::to_string(value.bytes) + " bytes, and the library has room for " +
                               std::to_string(limit) + ".",
                           mend + " /f");
        }
        return value;
    }

    void TellMissing(const char* code, const wchar_t* name, const char* type, const char* data) const {
        m_findings.Add(code, Printable(name), "It is not set.", RegAdd(m_path, name, type, data));
    }

private:
    HKEY m_key;
    const std::wstring& m_path;
    Findings& m_findings;
};

void DiagnoseClusterValues(const KeyLook& key, const std::wstring& path, Findings& findings) {
    const Value isCluster = key.Read(L"IsCluster", true, NoLimit);
    if (!isCluster.IsThere()) {
        key.TellMissing("is-cluster-missing", L"IsCluster", "REG_DWORD", "1");
    } else if (isCluster.IsNumber() && isCluster.number > 1) {
        findings.Add("is-cluster-unknown", "IsCluster", "It is " + std::to_string(isCluster.number) + ".",
                     RegAdd(path, L"IsCluster", "REG_DWORD", "1 /f"));
    }
    const Value mode = key.Read(L"ClusterQuorumMode", true, NoLimit);
    if (!CVirtualServerUtil::CheckIsClusterByRegKey()) {
        return;
    }
    if (!mode.IsThere()) {
        key.TellMissing("quorum-mode-missing", L"ClusterQuorumMode", "REG_DWORD", "1");
    } else if (mode.IsNumber() && mode.number != CVirtualServerUtil::CLUSTER_QUORUM_SINGLE_COPY &&
               mode.number != CVirtualServerUtil::CLUSTER_QUORUM_CCR) {
        findings.Add("quorum-mode-unknown", "ClusterQuorumMode", "It is " + std::to_string(mode.number) + ".",
                     RegAdd(path, L"ClusterQuorumMode", "REG_DWORD", "1 /f"));
    }
}

void DiagnosePlainValues(const KeyLook& key, bool isPlainServer) {
    if (!key.Read(L"HomeDir", false, ShortText).IsThere()) {
        key.TellMissing("home-directory-missing", L"HomeDir", "REG_SZ", "FOLDER");
    }
    const Value address = key.Read(L"ServerIP", false, ShortText);
    const Value guid = key.Read(L"SERVERGUID", false, ShortText);
    if (!isPlainServer) {
        return;
    }
    if (!address.IsThere()) {
        key.TellMissing("server-address-missing", L"ServerIP", "REG_SZ", "ADDRESS");
    }
    if (!guid.IsThere()) {
        key.TellMissing("server-guid-missing", L"SERVERGUID", "REG_SZ", "GUID");
    }
}

// The data root stands in the compiled-in key, whatever the settings file names.
void DiagnoseDataRoot(const std::wstring& path, Findings& findings) {
    const std::wstring compiledIn = CompiledInProductKey;
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, compiledIn.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return; // a key that is missing is told elsewhere
    }
    const KeyLook look(key, compiledIn, findings);
    const Value root = look.Read(L"DataRootPath", false, LongText);
    RegCloseKey(key);
    if (root.IsThere() && !common::IsSameName(path, compiledIn)) {
        findings.Add("data-root-other-key", "DataRootPath",
                     "It is read from " + Quoted(L"HKLM\\" + compiledIn) + ", not from the key that the file names.");
    }
    const bool isCcr = CVirtualServerUtil::CheckIsClusterByRegKey() &&
                       CVirtualServerUtil::GetClusterQuorumModeByRegKey() == CVirtualServerUtil::CLUSTER_QUORUM_CCR;
    if (isCcr && !root.IsThere()) {
        look.TellMissing("data-root-missing", L"DataRootPath", "REG_SZ", "FOLDER");
    }
}

void DiagnoseKey(Findings& findings) {
    const std::wstring path = CVirtualServerUtil::GetProductRegistryKey();
    const std::string name = "HKLM\\" + Printable(ProductKey());
    HKEY key = nullptr;
    LSTATUS code = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS, &key);
    if (code == ERROR_SUCCESS) {
        findings.Add("product-key", name, "It opens with full access, as the library opens it.");
    } else if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS) {
        findings.Add("product-key-denied", name,
                     "It can be read, but not opened with full access: " + ErrorText(static_cast<unsigned long>(code)) +
                         ".",
                     "start clusctl, and the product's programs, elevated");
    } else {
        findings.Add("product-key-missing", name,
                     "It cannot be opened: " + ErrorText(static_cast<unsigned long>(code)) + ".",
                     "run the product's set-up, or name the right key in " + Printable(FileName));
        return;
    }
    const std::wstring told = ProductKey();
    const KeyLook look(key, told, findings);
    if (ClusterInUse() == Answering::FailoverCluster) { // VCS goes by none of these
        DiagnoseClusterValues(look, told, findings);
    }
    DiagnosePlainValues(look, code == ERROR_SUCCESS && ClusterInUse() == Answering::FailoverCluster &&
                                  !CVirtualServerUtil::CheckIsClusterByRegKey());
    RegCloseKey(key);
}

} // namespace

std::vector<std::wstring> FoldersOfSettings() {
    if (ModelSettings::AreInForce()) { // those that they name are another computer's
        return {ProgramFolder()};
    }
    return {ProgramFolder(), ReadFolder(CVirtualServerUtil::GetProductRegistryKey(), L"HomeDir"),
            ReadFolder(CompiledInProductKey, L"DataRootPath")};
}

void DiagnoseSettings(Findings& findings) {
    if (!TellRecorded(RecordedPart::SettingsFile, findings)) {
        DiagnoseFile(findings);
    }
    DiagnoseKey(findings);
    DiagnoseDataRoot(ProductKey(), findings);
    const Deployment deployment = ReadDeployment();
    findings.Add("deployment", deployment.kind, "This computer counts as that because " + deployment.reason + ".");
}
