// What the bare calls share: replies in buffers on the stack, and names kept while their objects are worked on.
#ifndef BARESUPPORT_H
#define BARESUPPORT_H

#include "platform/ClusterApi.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

typedef std::vector<std::wstring> NameList;

const DWORD ReplyBytes = 128; // the size the library starts with, so that both need a second call for the same replies
const std::size_t LargeReplyBytes = 4096;
const DWORD LongestName = 256; // characters, terminator included; no name of the benchmark's cluster comes near

inline void Require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

// A control call's reply. `cbStart` is the size offered first.
struct Reply {
    alignas(8) unsigned char bytes[LargeReplyBytes];
    DWORD cb = 0;

    Reply(HRESOURCE resource, DWORD code, DWORD cbStart = ReplyBytes) {
        DWORD result =
            ClusterResourceControl(resource, nullptr, code, nullptr, 0, cbStart ? bytes : nullptr, cbStart, &cb);
        if (result == ERROR_MORE_DATA && cb <= LargeReplyBytes) {
            result = ClusterResourceControl(resource, nullptr, code, nullptr, 0, bytes, cb, &cb);
        }
        Require(result == ERROR_SUCCESS, "ClusterResourceControl");
    }
    const wchar_t* Text() const {
        return reinterpret_cast<const wchar_t*>(bytes);
    }
};

// All names that next(index, text, &cch) gives. `cchStart` characters are offered first, and more when a name is
// longer.
template <typename Next> NameList CollectNames(DWORD cchStart, Next next) {
    NameList names;
    wchar_t text[LongestName];
    DWORD capacity = cchStart;
    for (DWORD index = 0;;) {
        DWORD cch = capacity;
        const DWORD code = next(index, text, &cch);
        if (code == ERROR_NO_MORE_ITEMS) {
            return names;
        }
        if (code == ERROR_MORE_DATA && cch < LongestName) {
            capacity = cch + 1;
            continue;
        }
        Require(code == ERROR_SUCCESS, "a name");
        names.emplace_back(text);
        ++index;
    }
}

inline NameList ResourceNames(HCLUSTER cluster) {
    HCLUSENUM hEnum = ClusterOpenEnum(cluster, CLUSTER_ENUM_RESOURCE);
    Require(hEnum != nullptr, "ClusterOpenEnum");
    DWORD type = 0;
    NameList names = CollectNames(LongestName, [&](DWORD index, wchar_t* text, DWORD* cch) {
        return ClusterEnum(hEnum, index, &type, text, cch);
    });
    ClusterCloseEnum(hEnum);
    return names;
}

inline HRESOURCE OpenResource(HCLUSTER cluster, const std::wstring& name) {
    HRESOURCE resource = OpenClusterResource(cluster, name.c_str());
    Require(resource != nullptr, "OpenClusterResource");
    return resource;
}

} // namespace bench

#endif
