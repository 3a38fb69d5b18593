#include "BenchCluster.h"

#include "ClusSimControl.h"

#include <stdexcept>
#include <string>

namespace bench {

namespace {

const wchar_t ProductKey[] = L"SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion";

} // namespace

ClusteredRegistry::ClusteredRegistry() : m_key(nullptr), m_hadValue(false), m_oldValue(0) {
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, ProductKey, 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &m_key, nullptr) !=
        ERROR_SUCCESS) {
        throw std::runtime_error("cannot open the product's registry key");
    }
    DWORD cb = sizeof(m_oldValue);
    DWORD type = 0;
    m_hadValue = RegQueryValueExW(m_key, L"IsCluster", nullptr, &type, reinterpret_cast<BYTE*>(&m_oldValue), &cb) ==
                     ERROR_SUCCESS &&
                 type == REG_DWORD;
    const DWORD clustered = 1;
    RegSetValueExW(m_key, L"IsCluster", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&clustered), sizeof(clustered));
}

ClusteredRegistry::~ClusteredRegistry() {
    if (m_hadValue) {
        RegSetValueExW(m_key, L"IsCluster", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&m_oldValue), sizeof(m_oldValue));
    } else {
        RegDeleteValueW(m_key, L"IsCluster");
    }
    RegCloseKey(m_key);
}

} // namespace bench
