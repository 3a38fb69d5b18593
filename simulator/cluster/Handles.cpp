#include "Handles.h"

#include <cstring>

namespace clussim {

namespace {

const char* KindName(HandleKind kind) {
    switch (kind) {
    case HandleKind::Cluster:
        return "cluster";
    case HandleKind::Resource:
        return "resource";
    case HandleKind::Group:
        return "group";
    case HandleKind::Node:
        return "node";
    case HandleKind::Network:
        return "network";
    case HandleKind::NetInterface:
        return "interface";
    case HandleKind::Port:
        return "port";
    default:
        return "enum";
    }
}

} // namespace

void* Handles::Open(HandleEntry entry) {
    m_last += 16;
    m_open.emplace(m_last, std::move(entry));
    return reinterpret_cast<void*>(m_last);
}

const HandleEntry* Handles::Find(const void* handle, HandleKind kind) {
    const auto found = m_open.find(reinterpret_cast<std::uintptr_t>(handle));
    if (found == m_open.end() || found->second.kind != kind) {
        ++m_badCalls;
        return nullptr;
    }
    return found->second.isStale ? nullptr : &found->second;
}

void Handles::Expire(bool areStale) {
    for (auto& entry : m_open) {
        entry.second.isStale = areStale;
    }
}

const HandleEntry* Handles::Peek(const void* handle) const {
    const auto found = m_open.find(reinterpret_cast<std::uintptr_t>(handle));
    return found == m_open.end() ? nullptr : &found->second;
}

bool Handles::Close(const void* handle, HandleKind kind) {
    const HandleEntry* const entry = Peek(handle);
    if (!entry || entry->kind != kind) {
        ++m_badCalls;
        return false;
    }
    m_open.erase(reinterpret_cast<std::uintptr_t>(handle));
    return true;
}

std::size_t Handles::CountOpen(const char* kind) const {
    std::size_t count = 0;
    for (const auto& entry : m_open) {
        if (!kind || std::strcmp(kind, KindName(entry.second.kind)) == 0) {
            ++count;
        }
    }
    return count;
}

} // namespace clussim
