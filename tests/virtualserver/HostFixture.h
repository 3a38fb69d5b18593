// What the tests of the product's settings share: the product's keys, and a host executable wherever a test wants it.
//
// What is read once per process is fresh in each test, because each test runs in a process of its own.
#ifndef HOSTFIXTURE_H
#define HOSTFIXTURE_H

#include "ClusterTest.h"
#include "ProductNames.h"

#include "DebugLog.h"

#include "clus_VirtualServerUtil.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace harness {

// Members that are for the library and its own tools.
struct UtilAccess : CVirtualServerUtil {
    using CVirtualServerUtil::GetHomeDir;
};

// A machine without a settings file, with a registry of its own, in which the product's key is missing at first.
class HostTest : public LibraryTest {
public:
    // What GetModuleFileNameW gives clusutil.dll; empty makes the call fail. No such folder exists.
    void SetHostPath(const std::wstring& path) {
        m_hostPath = path;
    }
    const std::vector<DWORD>& HostPathCalls() const {
        return m_hostPathCalls;
    }

    void SetText(const wchar_t* name, const std::wstring& value) {
        Registry().SetText(ProductKey, name, value);
    }
    void SetNumber(const wchar_t* name, DWORD value) {
        Registry().SetNumber(ProductKey, name, value);
    }
    // Characters as they stand, with a terminator only when `text` has one.
    void SetCharacters(const wchar_t* name, DWORD type, const std::wstring& text) {
        const std::wstring more = text + L'#'; // the platform takes in a terminator that stands right behind
        Registry().SetBytes(ProductKey, name, type, more.data(), static_cast<DWORD>(text.size() * sizeof(wchar_t)));
    }

    // The keys that were opened, with the rights asked for.
    struct OpenedKey {
        std::string path;
        REGSAM access;
    };
    std::vector<OpenedKey> TakeOpenedKeys() {
        return std::exchange(m_openedKeys, {});
    }

protected:
    HostTest() {
        Registry();
    }

private:
    DWORD HostPath(HMODULE module, LPWSTR text, DWORD cch) {
        EXPECT_EQ(module, nullptr);
        m_hostPathCalls.push_back(cch);
        if (m_hostPath.empty()) {
            SetLastError(ERROR_GEN_FAILURE);
            return 0;
        }
        const DWORD length = std::min(cch, static_cast<DWORD>(m_hostPath.size()));
        std::copy_n(m_hostPath.data(), length, text);
        if (length < cch) {
            text[length] = L'\0';
        } else {
            SetLastError(ERROR_INSUFFICIENT_BUFFER); // a path that is cut is not terminated
        }
        return length;
    }

    std::wstring m_hostPath = L"Q:\\no such folder\\host.exe";
    std::vector<DWORD> m_hostPathCalls;
    std::vector<OpenedKey> m_openedKeys;
    ImportPatch<DWORD(HMODULE, LPWSTR, DWORD), struct HostPathTag> m_hostPathPatch{
        FindImports(LibraryModule(), "kernel32.dll", "GetModuleFileNameW"),
        [this](HMODULE module, LPWSTR text, DWORD cch) { return HostPath(module, text, cch); }};
    ImportPatch<LSTATUS(HKEY, LPCWSTR, DWORD, REGSAM, PHKEY), struct HostKeyTag> m_openKeyPatch{
        FindImports(LibraryModule(), "advapi32.dll", "RegOpenKeyExW"),
        [this](HKEY key, LPCWSTR path, DWORD options, REGSAM access, PHKEY result) {
            EXPECT_EQ(key, HKEY_LOCAL_MACHINE);
            EXPECT_EQ(options, 0u);
            m_openedKeys.push_back({Utf8(path), access});
            return m_openKeyPatch.Next(key, path, options, access, result);
        }};
};

} // namespace harness

#endif
