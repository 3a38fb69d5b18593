// Sole owner of one platform handle, for as long as a call lasts. Closing keeps the caller's last-error value: cleaning
// up must not hide why something failed. The handles that the public classes keep are theirs: src/cluster/Cluster.cpp,
// Resource.cpp, Group.cpp and Node.cpp close them, and there the copies of a group or node share one.
#ifndef CLUS_PLATFORM_OWNER_H
#define CLUS_PLATFORM_OWNER_H

#include "platform/ClusterApi.h"

namespace clus {

// Keeps the last-error value over a scope.
class LastErrorKeeper {
public:
    LastErrorKeeper() : m_code(GetLastError()) {
    }
    ~LastErrorKeeper() {
        SetLastError(m_code);
    }
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

private:
    DWORD m_code;
};

// Traits give the handle type and its close call; null is the invalid value.
template <typename Traits> class Owner {
public:
    typedef typename Traits::Handle Handle;

    explicit Owner(Handle handle = nullptr) : m_handle(handle) {
    }
    ~Owner() {
        reset();
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    Handle get() const {
        return m_handle;
    }
    explicit operator bool() const {
        return m_handle != nullptr;
    }
    // Closes the handle held and takes another.
    void reset(Handle handle = nullptr) {
        if (m_handle) {
            const LastErrorKeeper keeper;
            Traits::Close(m_handle);
        }
        m_handle = handle;
    }

private:
    Handle m_handle;
};

struct ClusterTraits {
    typedef HCLUSTER Handle;
    static void Close(HCLUSTER handle) {
        CloseCluster(handle);
    }
};
struct ClusterEnumTraits {
    typedef HCLUSENUM Handle;
    static void Close(HCLUSENUM handle) {
        ClusterCloseEnum(handle);
    }
};
struct ResourceTraits {
    typedef HRESOURCE Handle;
    static void Close(HRESOURCE handle) {
        CloseClusterResource(handle);
    }
};
struct ResourceEnumTraits {
    typedef HRESENUM Handle;
    static void Close(HRESENUM handle) {
        ClusterResourceCloseEnum(handle);
    }
};
struct GroupEnumTraits {
    typedef HGROUPENUM Handle;
    static void Close(HGROUPENUM handle) {
        ClusterGroupCloseEnum(handle);
    }
};
struct RegKeyTraits {
    typedef HKEY Handle;
    static void Close(HKEY handle) {
        RegCloseKey(handle);
    }
};
struct LocalMemoryTraits {
    typedef void* Handle;
    static void Close(void* memory) {
        LocalFree(memory);
    }
};
// INVALID_HANDLE_VALUE counts as a handle here and is closed: a capture file that could not be opened still is.
struct HandleTraits {
    typedef HANDLE Handle;
    static void Close(HANDLE handle) {
        CloseHandle(handle);
    }
};
struct ModuleTraits {
    typedef HMODULE Handle;
    static void Close(HMODULE module) {
        FreeLibrary(module);
    }
};

typedef Owner<ClusterTraits> ClusterOwner;
typedef Owner<ClusterEnumTraits> ClusterEnumOwner;
typedef Owner<ResourceTraits> ResourceOwner;
typedef Owner<ResourceEnumTraits> ResourceEnumOwner;
typedef Owner<GroupEnumTraits> GroupEnumOwner;
typedef Owner<RegKeyTraits> RegKeyOwner;
typedef Owner<HandleTraits> HandleOwner;
typedef Owner<LocalMemoryTraits> LocalMemoryOwner;
typedef Owner<ModuleTraits> ModuleOwner;

} // namespace clus

#endif
