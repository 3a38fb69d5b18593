#include "ClusterTwists.h"

#include "ImportPatch.h"

#include <clusapi.h>
#if defined(__MINGW32__)
typedef struct CLUSPROP_FILETIME* PCLUSPROP_FILETIME; // named by mingw-w64's resapi.h without a declaration
#endif
#include <resapi.h>

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace {

#define Patch(dll, function, ...) PatchImportOf(GetModuleHandleW(nullptr), dll, function, __VA_ARGS__)

// The function itself: this program's import of it leads to its replacement.
template <typename Function> Function Original(Function, const char* dll, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA(dll), name)));
}
#define Real(dll, function) Original(&::function, #dll ".dll", #function)

typedef std::vector<unsigned char> Bytes;

// A model with one text in place of another.
Twist InModel(const char* rule, const char* from, const char* to) {
    return {rule, [from, to](const RunProbe& run, std::string model) {
                const std::size_t place = model.find(from);
                if (place == std::string::npos) {
                    throw std::logic_error(std::string("the model has no ") + from);
                }
                return run(model.replace(place, std::strlen(from), to));
            }};
}

// ClusterEnum, with what it answered and the room it was given.
Twist OfItems(const char* rule,
              const std::function<void(DWORD index, DWORD& code, wchar_t* name, DWORD& count)>& twist) {
    return {rule, [twist](const RunProbe& run, const std::string& model) {
                const auto patch =
                    Patch(clusapi, ClusterEnum,
                          [&](HCLUSENUM list, DWORD index, DWORD* kind, wchar_t* name, DWORD* count) -> DWORD {
                              DWORD code = Real(clusapi, ClusterEnum)(list, index, kind, name, count);
                              twist(index, code, name, *count);
                              return code;
                          });
                return run(model);
            }};
}

// An answer of ClusterResourceControl, whole where there is a buffer, and of the size told where there is none.
Twist OfControl(const char* rule, DWORD control, bool ofSize,
                const std::function<void(DWORD& code, Bytes& answer)>& twist) {
    return {rule, [=](const RunProbe& run, const std::string& model) {
                const auto patch =
                    Patch(clusapi, ClusterResourceControl,
                          [&](HRESOURCE resource, HNODE node, DWORD asked, void* in, DWORD cbIn, void* out, DWORD cbOut,
                              DWORD* size) -> DWORD {
                              if (asked != control || (out == nullptr) != ofSize) {
                                  return Real(clusapi, ClusterResourceControl)(resource, node, asked, in, cbIn, out,
                                                                               cbOut, size);
                              }
                              Bytes answer(8192);
                              DWORD code = Real(clusapi, ClusterResourceControl)(
                                  resource, node, asked, in, cbIn, ofSize ? nullptr : answer.data(),
                                  ofSize ? 0 : static_cast<DWORD>(answer.size()), size);
                              answer.resize(*size);
                              twist(code, answer);
                              *size = static_cast<DWORD>(answer.size());
                              if (!ofSize && code == ERROR_SUCCESS) {
                                  std::memcpy(out, answer.data(), std::min<std::size_t>(answer.size(), cbOut));
                                  code = answer.size() > cbOut ? ERROR_MORE_DATA : ERROR_SUCCESS;
                              }
                              return code;
                          });
                return run(model);
            }};
}

// Objects are not opened by the names that are hit.
typedef std::function<bool(const std::wstring& name)> Hits;

Twist OfOpenGroup(const char* rule, DWORD code, const Hits& hits) {
    return {rule, [=](const RunProbe& run, const std::string& model) {
                const auto patch =
                    Patch(clusapi, OpenClusterGroup, [&](HCLUSTER cluster, const wchar_t* name) -> HGROUP {
                        if (!hits(name)) {
                            return Real(clusapi, OpenClusterGroup)(cluster, name);
                        }
                        SetLastError(code);
                        return nullptr;
                    });
                return run(model);
            }};
}

Twist OfOpenResource(const char* rule, DWORD code, const Hits& hits) {
    return {rule, [=](const RunProbe& run, const std::string& model) {
                const auto patch =
                    Patch(clusapi, OpenClusterResource, [&](HCLUSTER cluster, const wchar_t* name) -> HRESOURCE {
                        if (!hits(name)) {
                            return Real(clusapi, OpenClusterResource)(cluster, name);
                        }
                        SetLastError(code);
                        return nullptr;
                    });
                return run(model);
            }};
}

Twist OfOpenCluster(const char* rule, const wchar_t* refused) {
    return {rule, [refused](const RunProbe& run, const std::string& model) {
                const auto patch = Patch(clusapi, OpenCluster, [&](const wchar_t* name) -> HCLUSTER {
                    if (name != nullptr && std::wcscmp(name, refused) == 0) {
                        SetLastError(ERROR_INVALID_PARAMETER);
                        return nullptr;
                    }
                    return Real(clusapi, OpenCluster)(name);
                });
                return run(model);
            }};
}

// The states of resources, with what they answered.
Twist OfState(const char* rule,
              const std::function<void(const wchar_t* node, DWORD* count, CLUSTER_RESOURCE_STATE& state)>& twist) {
    return {rule, [twist](const RunProbe& run, const std::string& model) {
                const auto patch = Patch(clusapi, GetClusterResourceState,
                                         [&](HRESOURCE resource, wchar_t* node, DWORD* count, wchar_t* group,
                                             DWORD* groupCount) -> CLUSTER_RESOURCE_STATE {
                                             CLUSTER_RESOURCE_STATE state = Real(clusapi, GetClusterResourceState)(
                                                 resource, node, count, group, groupCount);
                                             twist(node, count, state);
                                             return state;
                                         });
                return run(model);
            }};
}

void EndMarkTwice(DWORD& code, Bytes& answer) {
    if (code == ERROR_SUCCESS && answer.size() > 4) {
        answer.resize(answer.size() + 4);
    }
}

void FirstLetterInOtherCase(DWORD& code, Bytes& answer) {
    if (code == ERROR_SUCCESS) {
        answer.at(0) ^= 0x20U;
    }
}

void Replace(Bytes& bytes, const Bytes& from, const Bytes& to) {
    const auto found = std::search(bytes.begin(), bytes.end(), from.begin(), from.end());
    if (found != bytes.end()) {
        std::copy(to.begin(), to.end(), found);
    }
}

ProbeAnswers WithListsReversed(const RunProbe& run, const std::string& model) {
    const auto patch = Patch(
        clusapi, ClusterEnum, [&](HCLUSENUM list, DWORD index, DWORD* kind, wchar_t* name, DWORD* count) -> DWORD {
            DWORD items = 0;
            for (DWORD ignored = 0;
                 Real(clusapi, ClusterEnum)(list, items, &ignored, nullptr, &ignored) != ERROR_NO_MORE_ITEMS;) {
                ++items;
            }
            return Real(clusapi, ClusterEnum)(list, index < items ? items - 1 - index : index, kind, name, count);
        });
    return run(model);
}

ProbeAnswers WithOtherNameWhenAskedAgain(const RunProbe& run, const std::string& model) {
    bool isEnded = false;
    return OfItems("",
                   [&](DWORD index, DWORD& code, wchar_t* name, DWORD&) {
                       isEnded = isEnded || code == ERROR_NO_MORE_ITEMS;
                       if (isEnded && index == 0 && code == ERROR_SUCCESS) {
                           name[0] = L'?';
                       }
                   })
        .run(run, model);
}

ProbeAnswers WithListOfUnknownKind(const RunProbe& run, const std::string& model) {
    const auto patch = Patch(clusapi, ClusterOpenEnum, [&](HCLUSTER cluster, DWORD mask) -> HCLUSENUM {
        return Real(clusapi, ClusterOpenEnum)(cluster, mask == 0x40 ? DWORD(CLUSTER_ENUM_NODE) : mask);
    });
    return run(model);
}

ProbeAnswers WithLongerCountInGroups(const RunProbe& run, const std::string& model) {
    const auto patch = Patch(clusapi, ClusterGroupEnum,
                             [&](HGROUPENUM list, DWORD index, DWORD* kind, wchar_t* name, DWORD* count) -> DWORD {
                                 const DWORD code = Real(clusapi, ClusterGroupEnum)(list, index, kind, name, count);
                                 *count += code == ERROR_SUCCESS ? 1 : 0;
                                 return code;
                             });
    return run(model);
}

ProbeAnswers WithGroupMaskRefused(const RunProbe& run, const std::string& model) {
    const auto patch = Patch(clusapi, ClusterGroupOpenEnum, [&](HGROUP group, DWORD mask) -> HGROUPENUM {
        if (mask != CLUSTER_GROUP_ENUM_CONTAINS) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return nullptr;
        }
        return Real(clusapi, ClusterGroupOpenEnum)(group, mask);
    });
    return run(model);
}

// The lists of resources, with what they answered.
Twist OfResourceItems(const char* rule, const std::function<DWORD(DWORD code, wchar_t* name, DWORD* count)>& twist) {
    return {rule, [twist](const RunProbe& run, const std::string& model) {
                const auto patch = Patch(
                    clusapi, ClusterResourceEnum,
                    [&](HRESENUM list, DWORD index, DWORD* kind, wchar_t* name, DWORD* count) -> DWORD {
                        return twist(Real(clusapi, ClusterResourceEnum)(list, index, kind, name, count), name, count);
                    });
                return run(model);
            }};
}

ProbeAnswers WithResourceMaskTaken(const RunProbe& run, const std::string& model) {
    const auto patch = Patch(clusapi, ClusterResourceOpenEnum, [&](HRESOURCE resource, DWORD mask) -> HRESENUM {
        return Real(clusapi, ClusterResourceOpenEnum)(resource,
                                                      mask == 0 ? DWORD(CLUSTER_RESOURCE_ENUM_DEPENDS) : mask);
    });
    return run(model);
}

Twist OfInformation(const char* rule,
                    const std::function<DWORD(DWORD code, DWORD* count, CLUSTERVERSIONINFO* info)>& twist) {
    return {rule, [twist](const RunProbe& run, const std::string& model) {
                const auto patch = Patch(
                    clusapi, GetClusterInformation,
                    [&](HCLUSTER cluster, wchar_t* name, DWORD* count, CLUSTERVERSIONINFO* info) -> DWORD {
                        return twist(Real(clusapi, GetClusterInformation)(cluster, name, count, info), count, info);
                    });
                return run(model);
            }};
}

ProbeAnswers WithNodeOpenedByDnsName(const RunProbe& run, const std::string& model) {
    const auto patch = Patch(clusapi, OpenClusterNode, [&](HCLUSTER cluster, const wchar_t* name) -> HNODE {
        return Real(clusapi, OpenClusterNode)(cluster, std::wcschr(name, L'.') == nullptr ? name : L"NODE1");
    });
    return run(model);
}

ProbeAnswers WithHandlesEndingWithTheirCluster(const RunProbe& run, const std::string& model) {
    bool isClosed = false;
    const auto patch = Patch(clusapi, CloseCluster, [&](HCLUSTER cluster) -> BOOL {
        isClosed = true;
        return Real(clusapi, CloseCluster)(cluster);
    });
    return OfState("",
                   [&](const wchar_t*, DWORD*, CLUSTER_RESOURCE_STATE& state) {
                       if (isClosed) {
                           SetLastError(ERROR_INVALID_HANDLE);
                           state = ClusterResourceStateUnknown;
                       }
                   })
        .run(run, model);
}

ProbeAnswers WithExactPropertyNames(const RunProbe& run, const std::string& model) {
    const auto patch =
        Patch(resutils, ResUtilFindSzProperty, [&](void* list, DWORD cb, const wchar_t* name, wchar_t** text) -> DWORD {
            return std::wcscmp(name, L"aDDRESS") == 0 ? ERROR_FILE_NOT_FOUND
                                                      : Real(resutils, ResUtilFindSzProperty)(list, cb, name, text);
        });
    return run(model);
}

ProbeAnswers WithMissingPropertiesMalformed(const RunProbe& run, const std::string& model) {
    const auto patch =
        Patch(resutils, ResUtilFindSzProperty, [&](void* list, DWORD cb, const wchar_t* name, wchar_t** text) -> DWORD {
            const DWORD code = Real(resutils, ResUtilFindSzProperty)(list, cb, name, text);
            return code == ERROR_FILE_NOT_FOUND ? static_cast<DWORD>(ERROR_INVALID_DATA) : code;
        });
    return run(model);
}

ProbeAnswers WithOtherKindsMissing(const RunProbe& run, const std::string& model) {
    const auto patch = Patch(resutils, ResUtilFindDwordProperty,
                             [&](void* list, DWORD cb, const wchar_t* name, DWORD* number) -> DWORD {
                                 const DWORD code = Real(resutils, ResUtilFindDwordProperty)(list, cb, name, number);
                                 return code == ERROR_INVALID_DATA ? static_cast<DWORD>(ERROR_FILE_NOT_FOUND) : code;
                             });
    return run(model);
}

ProbeAnswers WithExactTypes(const RunProbe& run, const std::string& model) {
    const auto patch = Patch(resutils, ResUtilResourceTypesEqual, [&](const wchar_t* type, HRESOURCE resource) -> BOOL {
        return type[0] == L'I' && Real(resutils, ResUtilResourceTypesEqual)(type, resource);
    });
    return run(model);
}

ProbeAnswers WithOtherCodeOfMissingDependency(const RunProbe& run, const std::string& model) {
    const auto patch = Patch(resutils, ResUtilGetResourceDependency, [&](HANDLE, const wchar_t*) -> HRESOURCE {
        SetLastError(ERROR_NOT_FOUND);
        return nullptr;
    });
    return run(model);
}

} // namespace

const std::vector<Twist>& ClusterTwists() {
    static const std::vector<Twist> twists = {
        OfItems("enum-count",
                [](DWORD, DWORD& code, wchar_t*, DWORD& count) { count += code == ERROR_SUCCESS ? 1 : 0; }),
        OfItems("enum-short-room",
                [](DWORD, DWORD& code, wchar_t*, DWORD& count) { count += code == ERROR_MORE_DATA ? 1 : 0; }),
        OfItems("enum-end",
                [](DWORD, DWORD& code, wchar_t*, DWORD&) {
                    code = code == ERROR_NO_MORE_ITEMS ? static_cast<DWORD>(ERROR_INVALID_PARAMETER) : code;
                }),
        {"enum-again", WithOtherNameWhenAskedAgain},
        {"enum-order", WithListsReversed},
        InModel("enum-mask-zero", "\"behaviour\": {", "\"behaviour\": {\"enumMaskZero\": \"empty\", "),
        {"enum-mask-unknown", WithListOfUnknownKind},
        {"group-enum", WithLongerCountInGroups},
        {"group-enum-mask", WithGroupMaskRefused},
        OfResourceItems("resource-enum",
                        [](DWORD code, wchar_t* name, DWORD* count) {
                            *count += code == ERROR_MORE_DATA && name != nullptr ? 1 : 0;
                            return code;
                        }),
        {"resource-enum-mask", WithResourceMaskTaken},
        OfResourceItems("resource-enum-length",
                        [](DWORD code, wchar_t* name, DWORD*) {
                            return name == nullptr ? static_cast<DWORD>(ERROR_MORE_DATA) : code;
                        }),
        OfResourceItems("possible-owners",
                        [](DWORD, wchar_t*, DWORD*) { return static_cast<DWORD>(ERROR_NO_MORE_ITEMS); }),
        OfItems("last-error-kept",
                [](DWORD, DWORD& code, wchar_t*, DWORD&) {
                    if (code == ERROR_NO_MORE_ITEMS) {
                        SetLastError(code);
                    }
                }),
        OfInformation("cluster-name",
                      [](DWORD code, DWORD* count, CLUSTERVERSIONINFO*) {
                          *count += code == ERROR_MORE_DATA ? 1 : 0;
                          return code;
                      }),
        OfInformation("version-short",
                      [](DWORD code, DWORD*, CLUSTERVERSIONINFO* info) {
                          return info == nullptr ? code : static_cast<DWORD>(ERROR_INVALID_PARAMETER);
                      }),
        OfOpenCluster("open-by-name", L"NODE1"),
        OfOpenCluster("open-by-dns-name", L"NODE1.corp.example"),
        OfOpenCluster("open-by-address", L"192.0.2.1"),
        {"open-node-by-dns-name", WithNodeOpenedByDnsName},
        OfOpenGroup("open-ignores-case", ERROR_GROUP_NOT_FOUND,
                    [](const std::wstring& name) { return name == L"evs1"; }),
        OfOpenResource("open-by-id", ERROR_RESOURCE_NOT_FOUND,
                       [](const std::wstring& name) { return name.size() == 36; }),
        OfOpenGroup("open-unknown", ERROR_RESOURCE_NOT_FOUND,
                    [](const std::wstring& name) { return name.compare(0, 3, L"no ") == 0; }),
        OfOpenResource("open-empty", ERROR_INVALID_NAME, [](const std::wstring& name) { return name.empty(); }),
        {"handle-outlives-cluster", WithHandlesEndingWithTheirCluster},
        OfState("state-without-room",
                [](const wchar_t* node, DWORD*, CLUSTER_RESOURCE_STATE& state) {
                    if (node == nullptr) {
                        SetLastError(ERROR_INVALID_PARAMETER);
                        state = ClusterResourceStateUnknown;
                    }
                }),
        OfState("state-short-room",
                [](const wchar_t*, DWORD* count, CLUSTER_RESOURCE_STATE& state) {
                    if (count != nullptr && state == ClusterResourceStateUnknown) {
                        ++*count;
                    }
                }),
        InModel("owner-letter-case", "\"owner\": \"NODE1\"", "\"owner\": \"node1\""),
        {"down-owners",
         [](const RunProbe& run, const std::string& model) {
             const Twist owned =
                 InModel("", "\"groups\": [", "\"groups\": [{\"name\": \"Left\", \"owner\": \"NODE-LOST\"}, ");
             return InModel("", "\"protocol\": 2003", "\"downOwners\": \"accepted\"")
                 .run([&](const std::string& accepting) { return owned.run(run, accepting); }, model);
         }},
        OfControl("name-as-listed", CLUSCTL_RESOURCE_GET_NAME, false, FirstLetterInOtherCase),
        OfControl("id-form", CLUSCTL_RESOURCE_GET_ID, false,
                  [](DWORD&, Bytes& answer) {
                      for (unsigned char& c : answer) {
                          c = c >= 'a' && c <= 'f' ? static_cast<unsigned char>(c - 0x20) : c;
                      }
                  }),
        OfControl("control-size", CLUSCTL_RESOURCE_GET_NAME, true,
                  [](DWORD&, Bytes& answer) { answer.resize(answer.size() - 2); }),
        OfControl("control-unsupported", CLUSCTL_RESOURCE_GET_NETWORK_NAME, false,
                  [](DWORD& code, Bytes&) {
                      code = code == ERROR_INVALID_FUNCTION ? static_cast<DWORD>(ERROR_NOT_SUPPORTED) : code;
                  }),
        InModel("class-info", "\"protocol\": 2003", "\"protocol\": 2008"),
        OfControl("flags-size", CLUSCTL_RESOURCE_GET_CHARACTERISTICS, false,
                  [](DWORD&, Bytes& answer) { answer.resize(8); }),
        InModel("core-flag", "\"coreGroup\": \"standard\"", "\"coreGroup\": \"none\""),
        OfControl("property-list", CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, false, EndMarkTwice),
        OfControl("property-list-empty", CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, false,
                  [](DWORD&, Bytes& answer) { answer.resize(std::max<std::size_t>(answer.size(), 8)); }),
        OfControl("expand-text", CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, false,
                  [](DWORD&, Bytes& answer) {
                      Replace(answer, {8, 0, 1, 0}, {3, 0, 1, 0});
                  }),
        {"find-ignores-case", WithExactPropertyNames},
        {"find-missing", WithMissingPropertiesMalformed},
        {"find-other-kind", WithOtherKindsMissing},
        {"type-ignores-case", WithExactTypes},
        {"dependency-missing", WithOtherCodeOfMissingDependency},
        OfControl("disk-list", CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, false, EndMarkTwice),
        OfControl("disk-partition", CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, false,
                  [](DWORD&, Bytes& answer) {
                      Replace(answer, {'F', 0, ':', 0, 0, 0}, {'F', 0, ':', 0, '\\', 0});
                  }),
        OfControl("network-name", CLUSCTL_RESOURCE_GET_NETWORK_NAME, false, FirstLetterInOtherCase),
    };
    return twists;
}
