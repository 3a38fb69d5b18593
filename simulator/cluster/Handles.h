// Handles of the simulated cluster API. A value is never used twice in a process, so that a double close and a use
// after close show. An object is named by what outlives a re-read of the model: a resource by its ID, groups and nodes
// by name.
#ifndef CLUSSIM_HANDLES_H
#define CLUSSIM_HANDLES_H

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace clussim {

class NotificationPort;

enum class HandleKind {
    Cluster,
    Resource,
    Group,
    Node,
    Network,
    NetInterface,
    ClusterEnum,
    GroupEnum,
    ResourceEnum,
    Port
};

struct HandleEntry {
    explicit HandleEntry(HandleKind itsKind, const std::wstring& itsObject = std::wstring())
        : kind(itsKind), object(itsObject) {
    }

    HandleKind kind;
    std::wstring object;                                       // ID or name; of an enumeration, of what was enumerated
    std::vector<std::pair<unsigned long, std::wstring>> items; // of an enumeration: type and name
    std::shared_ptr<NotificationPort> port;
    bool isStale = false; // of no use but to be closed
};

class Handles {
public:
    void* Open(HandleEntry entry);

    // Null, and counted as a bad call, unless the handle is open and of this kind. Null as well when it is stale.
    const HandleEntry* Find(const void* handle, HandleKind kind);
    const HandleEntry* Peek(const void* handle) const; // null when it is not open; never counted
    bool Close(const void* handle, HandleKind kind);

    // Makes all handles that are open now stale, or good again.
    void Expire(bool areStale);

    std::size_t CountOpen(const char* kind) const; // "enum" is any enumeration; null: all
    std::size_t BadCalls() const {
        return m_badCalls;
    }
    void ForgetBadCalls() {
        m_badCalls = 0;
    }

private:
    std::unordered_map<std::uintptr_t, HandleEntry> m_open;
    std::uintptr_t m_last = 0x10000;
    std::size_t m_badCalls = 0;
};

} // namespace clussim

#endif
