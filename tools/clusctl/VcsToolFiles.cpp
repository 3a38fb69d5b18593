#include "VcsToolFiles.h"

#include "Failure.h"
#include "Text.h"

#include "common/Environment.h"
#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <iterator>
#include <set>

namespace {

const wchar_t* const VcsTools[] = {L"haconf", L"hasys", L"hagrp", L"hares", L"vcsencrypt", L"haclus"};
const wchar_t TrustedInstaller[] = L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464";
const size_t LongestPath = 32768;
const BYTE AllowCallbackAce = 9; // ACCESS_ALLOWED_CALLBACK_ACE_TYPE: the same, under a condition

const ACCESS_MASK Control = DELETE | WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;
const ACCESS_MASK FileChange = Control | FILE_WRITE_DATA | FILE_APPEND_DATA;
const ACCESS_MASK FolderChange = Control | FILE_ADD_FILE | FILE_DELETE_CHILD;

std::wstring SystemFolder(UINT(WINAPI* get)(LPWSTR, UINT)) {
    wchar_t folder[MAX_PATH] = {};
    const UINT length = get(folder, MAX_PATH);
    return length > 0 && length < MAX_PATH ? folder : L"";
}

bool IsAbsolute(const std::wstring& path) {
    return path.rfind(L"\\\\", 0) == 0 || (path.size() > 2 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/'));
}

// The folders in which the system looks for a program, but for the current one; in its order.
std::vector<std::wstring> SearchedFolders() {
    std::wstring program(LongestPath, L'\0');
    program.resize(GetModuleFileNameW(nullptr, &program[0], static_cast<DWORD>(program.size())));
    const std::wstring windows = SystemFolder(&GetWindowsDirectoryW);
    std::vector<std::wstring> folders = {program.substr(0, program.rfind(L'\\')), SystemFolder(&GetSystemDirectoryW),
                                         windows + L"\\System", windows};
    const std::wstring path = common::EnvironmentVariable(L"PATH");
    for (size_t begin = 0; begin < path.size();) {
        const size_t end = path.find(L';', begin);
        const std::wstring folder = path.substr(begin, end == std::wstring::npos ? end : end - begin);
        if (IsAbsolute(folder)) {
            folders.push_back(folder);
        }
        begin = end == std::wstring::npos ? path.size() : end + 1;
    }
    return folders;
}

// Owner of memory that LocalFree frees.
class LocalMemory {
public:
    explicit LocalMemory(void* memory) : m_memory(memory) {
    }
    ~LocalMemory() {
        LocalFree(m_memory);
    }
    LocalMemory(const LocalMemory&) = delete;
    LocalMemory& operator=(const LocalMemory&) = delete;

private:
    void* m_memory;
};

// This account's SID, as bytes; empty when it cannot be told.
std::vector<BYTE> ReadAccount() {
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
        return {};
    }
    std::vector<BYTE> user(sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE);
    DWORD size = static_cast<DWORD>(user.size());
    const bool isRead = GetTokenInformation(token, TokenUser, user.data(), size, &size) != FALSE;
    CloseHandle(token);
    if (!isRead) {
        return {};
    }
    const auto* sid = static_cast<const BYTE*>(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid);
    return std::vector<BYTE>(sid, sid + GetLengthSid(const_cast<BYTE*>(sid)));
}

std::vector<BYTE>& Account() {
    static std::vector<BYTE> account = ReadAccount();
    return account;
}

bool IsTrusted(PSID sid) {
    std::vector<BYTE>& account = Account();
    if (!account.empty() && EqualSid(sid, account.data())) {
        return true;
    }
    for (const WELL_KNOWN_SID_TYPE type :
         {WinLocalSystemSid, WinBuiltinAdministratorsSid, WinAccountDomainAdminsSid, WinAccountEnterpriseAdminsSid}) {
        if (IsWellKnownSid(sid, type)) {
            return true;
        }
    }
    PSID installer = nullptr;
    if (!ConvertStringSidToSidW(TrustedInstaller, &installer)) {
        return false;
    }
    const LocalMemory owner(installer);
    return EqualSid(sid, installer) != FALSE;
}

std::string NameOf(PSID sid) {
    wchar_t name[256] = {};
    wchar_t domain[256] = {};
    DWORD cchName = 256;
    DWORD cchDomain = 256;
    SID_NAME_USE use;
    return LookupAccountSidW(nullptr, sid, name, &cchName, domain, &cchDomain, &use) ? Quoted(std::wstring(name))
                                                                                     : "an unknown account";
}

// Who else may change a file or folder in one of these ways, or own it; empty when nobody may.
std::string WhoMayChange(const std::wstring& path, ACCESS_MASK change) {
    PSID owner = nullptr;
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    std::wstring name = path; // the parameter is not const
    const DWORD code =
        GetNamedSecurityInfoW(&name[0], SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner,
                              nullptr, &list, nullptr, &descriptor);
    if (code != ERROR_SUCCESS) {
        throw Failure::OfCode("cannot tell who may change " + QuotedPath(path), code);
    }
    const LocalMemory memory(descriptor);
    if (owner != nullptr && !IsTrusted(owner)) {
        return NameOf(owner);
    }
    if (list == nullptr) {
        return "everybody"; // without a list nothing is forbidden
    }
    for (WORD i = 0; i < list->AceCount; ++i) {
        void* entry = nullptr;
        if (!GetAce(list, i, &entry)) {
            continue;
        }
        auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
        const bool isAllowance =
            allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE || allowed->Header.AceType == AllowCallbackAce;
        if (isAllowance && (allowed->Header.AceFlags & INHERIT_ONLY_ACE) == 0 && (allowed->Mask & change) != 0 &&
            !IsTrusted(&allowed->SidStart)) {
            return NameOf(&allowed->SidStart);
        }
    }
    return std::string();
}

std::wstring FolderOf(const std::wstring& path) {
    const std::wstring folder = path.substr(0, path.rfind(L'\\'));
    return folder.back() == L':' ? folder + L"\\" : folder;
}

bool IsSameFolder(const std::wstring& one, const std::wstring& other) {
    const auto bare = [](const std::wstring& path) { return path.substr(0, path.find_last_not_of(L"\\/") + 1); };
    return common::IsSameName(bare(one), bare(other));
}

bool IsFolder(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Judges of each file and folder once: the tools are mostly found in the same places.
class TrustCheck {
public:
    void RequireTrusted(const VcsToolFile& tool) {
        for (const std::wstring& folder : m_searched) {
            if (IsSameFolder(folder, FolderOf(tool.path))) {
                break;
            }
            if (IsFolder(folder)) {
                Require(tool, folder, FolderChange, ", which is searched before its folder");
            }
        }
        Require(tool, FolderOf(tool.path), FolderChange, "");
        Require(tool, tool.path, FileChange, "");
    }

private:
    void Require(const VcsToolFile& tool, const std::wstring& path, ACCESS_MASK change, const std::string& why) {
        if (!m_trusted.insert(path).second) {
            return;
        }
        const std::string who = WhoMayChange(path, change);
        if (!who.empty()) {
            throw Failure(Errors::UnsafeTool, "the VCS tool " + Quoted(tool.tool) + " is not run: " + who +
                                                  " may change " + QuotedPath(path) + why)
                .Hint("Leave that right to administrators, or give --allow-writable-tools.");
        }
    }

    const std::vector<std::wstring> m_searched = SearchedFolders();
    std::set<std::wstring> m_trusted;
};

} // namespace

std::wstring FindVcsTool(const std::wstring& tool) {
    std::wstring folders;
    for (const std::wstring& folder : SearchedFolders()) {
        folders += (folders.empty() ? L"" : L";") + folder;
    }
    std::wstring path(LongestPath, L'\0');
    path.resize(
        SearchPathW(folders.c_str(), tool.c_str(), L".exe", static_cast<DWORD>(path.size()), &path[0], nullptr));
    return path;
}

std::vector<VcsToolFile> FindVcsTools() {
    std::vector<VcsToolFile> tools;
    for (const wchar_t* const tool : VcsTools) {
        tools.push_back({tool, FindVcsTool(tool)});
    }
    return tools;
}

void RequireTrustedTools(const std::vector<VcsToolFile>& tools) {
    TrustCheck check;
    for (const VcsToolFile& tool : tools) {
        if (!tool.path.empty()) {
            check.RequireTrusted(tool);
        }
    }
}

std::wstring ThisAccount() {
    wchar_t* text = nullptr;
    if (Account().empty() || !ConvertSidToStringSidW(Account().data(), &text)) {
        return std::wstring();
    }
    const LocalMemory memory(text);
    return text;
}

bool HasTrustedOwner(const std::wstring& path) {
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    std::wstring name = path;
    if (GetNamedSecurityInfoW(&name[0], SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr, nullptr, nullptr,
                              &descriptor) != ERROR_SUCCESS) {
        return false;
    }
    const LocalMemory memory(descriptor);
    return owner != nullptr && IsTrusted(owner);
}
