#include "CreationChecks.h"

#include "Interruption.h"
#include "PropertyJson.h"
#include "StateNames.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Text.h"
#include "core/PropertyList.h"
#include "core/ResourceTypes.h"
#include "core/ValueList.h"

#include <algorithm>

namespace {

// What the new resource is built on.
struct Parts {
    ServerPlace place;
    std::wstring attendant;
    std::wstring store;
    std::wstring disk; // single copy only
};

const wchar_t* TypeOf(const CreationRequest& request) {
    return request.isSingleCopy ? clus::SingleCopyType : clus::CcrType;
}

// The library takes the first, too.
std::wstring RequireFirst(const NamesByType& members, const wchar_t* type, const std::wstring& group) {
    const auto found = members.find(type);
    if (found == members.end()) {
        throw Failure(Errors::NotPossible, "the group " + Quoted(group) + " has no resource of the type " +
                                               Quoted(std::wstring(type)) + ", which the new resource depends on");
    }
    return found->second.front();
}

void RequireNoProductResource(const NamesByType& members, const std::wstring& server) {
    for (const wchar_t* type : {clus::SingleCopyType, clus::CcrType}) {
        const auto found = members.find(type);
        if (found != members.end()) {
            throw Failure(Errors::AlreadyExists,
                          "the virtual server " + Quoted(server) +
                              " has the product's resource already: " + Quoted(found->second.front()))
                .Hint("A group holds one product resource at most.");
        }
    }
}

void RequireType(const CCluster& cluster, const wchar_t* type) {
    const Names types = ListResourceTypes(cluster);
    if (std::find(types.begin(), types.end(), type) == types.end()) {
        throw Failure(Errors::NotPossible, "the cluster has no resource type " + Quoted(std::wstring(type)))
            .Hint("The product's setup registers it.");
    }
}

void RequireNameFree(const CCluster& cluster, const std::wstring& name) {
    const ResourceHandle resource = OpenResource(cluster, name);
    if (!resource) {
        const DWORD code = GetLastError();
        if (code == ERROR_RESOURCE_NOT_FOUND) {
            return;
        }
        throw Failure::OfCode("cannot tell whether the name " + Quoted(name) + " is free", code, Errors::Incomplete);
    }
    std::wstring owner;
    std::wstring group;
    std::string where;
    if (ReadResourceState(resource.get(), owner, group) != ClusterResourceStateUnknown) {
        where = " in the group " + Quoted(group);
    }
    throw Failure(Errors::AlreadyExists, "there is a resource " + Quoted(name) + where + " already")
        .Hint("Choose another --name.");
}

Names ListPossibleOwners(const CCluster& cluster, const std::wstring& attendant) {
    const ResourceHandle resource = RequireResource(cluster, attendant);
    Names nodes;
    const DWORD code = ListRelated(resource.get(), CLUSTER_RESOURCE_ENUM_NODES, nodes);
    if (code != ERROR_SUCCESS) {
        throw Failure::OfCode("cannot list the possible owners of " + Quoted(attendant), code, Errors::Incomplete);
    }
    return nodes;
}

void RequirePossibleOwners(const CCluster& cluster, const std::wstring& attendant) {
    bool isHereOne = false;
    for (const std::wstring& name : ListPossibleOwners(cluster, attendant)) {
        isHereOne = isHereOne || IsThisComputer(name);
        if (!OpenNode(cluster, name)) {
            throw Failure::OfCode("cannot open the node " + Quoted(name) + ", a possible owner of " + Quoted(attendant),
                                  GetLastError(), Errors::NodeNotFound);
        }
    }
    if (!isHereOne) {
        throw Failure(Errors::NotPossible, "this node is no possible owner of " + Quoted(attendant) +
                                               ", whose owners the new resource gets");
    }
}

std::wstring NameOf(HRESOURCE resource) {
    std::vector<unsigned char> answer;
    DWORD code = 0;
    if (!QueryResource(resource, CLUSCTL_RESOURCE_GET_NAME, answer, code)) {
        throw Failure::OfCode("cannot read the name of the System Attendant's disk", code, Errors::Incomplete);
    }
    return clus::TextInBuffer(answer.data(), answer.size(), 0);
}

std::wstring DiskOf(CCluster& cluster, const std::wstring& attendantName) {
    CClusterResource attendant;
    CClusterResource disk;
    if (!cluster.OpenResourceByName(attendant, attendantName.c_str()) ||
        !attendant.GetResourceStorageDependency(disk)) {
        throw Failure(Errors::NotPossible, Quoted(attendantName) + " depends on no disk")
            .Hint("Name the disk with --disk.");
    }
    return NameOf(disk.GetResourceHandle());
}

bool IsBelow(const std::wstring& path, const std::wstring& folder) {
    const std::wstring whole = common::Folded(path + L"\\");
    return whole.compare(0, folder.size(), common::Folded(folder)) == 0;
}

} // namespace

void RequirePathOnDisk(HRESOURCE disk, const std::wstring& diskName, const std::wstring& path) {
    std::vector<unsigned char> answer;
    DWORD code = 0;
    std::vector<std::wstring> folders;
    if (!QueryResource(disk, CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, answer, code) ||
        !GetDiskLettersFromResource(disk, folders) || folders.size() != DiskJson(answer)["partitions"].size()) {
        return;
    }
    std::string known;
    for (const std::wstring& folder : folders) {
        if (IsBelow(path, folder)) {
            return;
        }
        known += (known.empty() ? "" : ", ") + Printable(folder);
    }
    if (!known.empty()) {
        throw Failure(Errors::NotPossible, "the data path " + Quoted(path) + " is not on " + Quoted(diskName) +
                                               ", whose paths are " + known);
    }
}

namespace {

void RequireDisk(const CCluster& cluster, const std::wstring& name, const std::wstring& serverGroup,
                 const std::wstring& dataPath) {
    const ResourceHandle disk = RequireResource(cluster, name);
    DWORD diskClass = CLUS_RESCLASS_UNKNOWN;
    if (ReadResourceClass(disk.get(), diskClass) == ERROR_SUCCESS && diskClass != CLUS_RESCLASS_STORAGE) {
        throw Failure(Errors::NotPossible, Quoted(name) + " is no disk");
    }
    std::wstring owner;
    std::wstring group;
    const CLUSTER_RESOURCE_STATE state = ReadResourceState(disk.get(), owner, group);
    if (state == ClusterResourceStateUnknown) {
        throw Failure::OfCode("cannot read the state of " + Quoted(name), GetLastError(), Errors::Incomplete);
    }
    if (common::Folded(group) != common::Folded(serverGroup)) {
        throw Failure(Errors::NotPossible, "the disk " + Quoted(name) + " is in the group " + Quoted(group) +
                                               ", not in that of the virtual server, " + Quoted(serverGroup));
    }
    if (state != ClusterResourceOnline || !IsThisComputer(owner)) {
        throw Failure(Errors::NotPossible,
                      "the disk " + Quoted(name) + " is " + StateWord(state) + " on the node " + Quoted(owner))
            .Hint("It has to be online on this node.");
    }
    if (!dataPath.empty()) {
        RequirePathOnDisk(disk.get(), name, dataPath);
    }
}

Parts FindParts(CCluster& cluster, const CreationRequest& request, const ServerPlace& place,
                const NamesByType& members) {
    Parts parts;
    parts.place = place;
    parts.attendant = RequireFirst(members, clus::SystemAttendantType, place.group);
    parts.store = RequireFirst(members, clus::InformationStoreType, place.group);
    if (request.isSingleCopy) {
        parts.disk = request.disk.empty() ? DiskOf(cluster, parts.attendant) : request.disk;
    }
    return parts;
}

Parts RequireParts(CCluster& cluster, const CreationRequest& request) {
    const ServerPlace place = FindServer(cluster, request.server);
    RequireOwnedHere(place, request.server);
    if (place.state != ClusterResourceOnline) {
        throw Failure(Errors::NotPossible, "the virtual server " + Quoted(request.server) + " is not online: " +
                                               Quoted(place.networkNameResource) + " is " + StateWord(place.state))
            .Hint("Bring the group " + Quoted(place.group) + " online first.");
    }
    RequireNodeStarts(cluster, place.owner);
    const NamesByType members = ReadMembers(cluster, place.group);
    RequireNoProductResource(members, request.server);
    RequireNameFree(cluster, request.name);
    RequireType(cluster, TypeOf(request));
    Parts parts = FindParts(cluster, request, place, members);
    RequirePossibleOwners(cluster, parts.attendant);
    if (request.isSingleCopy) {
        RequireDisk(cluster, parts.disk, place.group, request.dataPath);
    }
    return parts;
}

// Takes the library's steps with a new resource. The first that the cluster refuses and its code, or no text.
std::string FirstRefusedStep(const CCluster& cluster, const CreationRequest& request, const Parts& parts,
                             HRESOURCE created, DWORD& code) {
    for (const std::wstring& name : {parts.disk, parts.store, parts.place.networkNameResource}) {
        if (name.empty()) {
            continue;
        }
        const ResourceHandle provider = RequireResource(cluster, name);
        code = AddClusterResourceDependency(created, provider.get());
        if (code != ERROR_SUCCESS) {
            return "the cluster does not let it depend on " + Quoted(name);
        }
    }
    const std::wstring name = clus::DataPathProperty;
    const std::wstring& value = request.dataPath;
    std::vector<unsigned char> list(clus::TextPropertyListSize(name.size(), value.size()));
    clus::WriteTextPropertyList(list.data(), name.c_str(), name.size(), value.c_str(), value.size());
    code = ClusterResourceControl(created, nullptr, CLUSCTL_RESOURCE_SET_PRIVATE_PROPERTIES, list.data(),
                                  static_cast<DWORD>(list.size()), nullptr, 0, nullptr);
    return code == ERROR_SUCCESS ? std::string() : "the cluster does not take its data path";
}

bool Lacks(const Json& list, const std::wstring& name) {
    return list.is_array() && std::find(list.begin(), list.end(), Json(name)) == list.end();
}

// Of a resource whose creation ended half-way: the first part that it lacks, in the order in which the library adds
// them, or why that cannot be told. Empty when it has all.
std::string FirstMissingPart(CCluster& cluster, const CreationRequest& request) {
    try {
        const ServerPlace place = FindServer(cluster, request.server);
        const Parts parts = FindParts(cluster, request, place, ReadMembers(cluster, place.group));
        Report unread;
        const Json record = ReadResource(cluster, request.name, ResourceParts::Detail, unread);
        for (const std::wstring& name : {parts.disk, parts.store, place.networkNameResource}) {
            if (!name.empty() && Lacks(record["dependsOn"], name)) {
                return "it does not depend on " + Quoted(name);
            }
        }
        for (const std::wstring& node : ListPossibleOwners(cluster, parts.attendant)) {
            if (Lacks(record["possibleOwners"], node)) {
                return "the node " + Quoted(node) + " is no possible owner of it";
            }
        }
        const Json& properties = record["privateProperties"];
        if (properties.is_object() && !properties.contains(common::ToUtf8(clus::DataPathProperty))) {
            return "it has no data path";
        }
        return unread.IsComplete() ? std::string() : unread.Warnings().front();
    } catch (const Failure& unread) {
        return unread.what();
    }
}

// What the library created and could not delete again. It is left to the user: somebody else may have made it just now.
[[noreturn]] void FailHalfway(CCluster& cluster, const CreationRequest& request, const ErrorKind& kind,
                              const std::string& what) {
    const std::string missing = FirstMissingPart(cluster, request);
    throw Failure(kind, what + ", and it is left half created" + (missing.empty() ? "" : ": " + missing))
        .Hint("'clusctl resource delete " + Printable(request.server) + "' deletes it.");
}

// Without taking the steps again: the user wants the command to end.
[[noreturn]] void FailWithoutReason(CCluster& cluster, const CreationRequest& request) {
    const std::string what = "interrupted: the cluster refused to create " + Quoted(request.name) + " or a part of it";
    if (OpenResource(cluster, request.name)) {
        FailHalfway(cluster, request, Errors::Interrupted, what);
    }
    const DWORD code = GetLastError();
    if (code != ERROR_RESOURCE_NOT_FOUND) {
        throw Failure::OfCode(what + "; whether it is there cannot be told", code).As(Errors::Interrupted);
    }
    throw Failure(Errors::Interrupted, what + ", and nothing of it is left").Hint("Try again to learn the reason.");
}

} // namespace

void RequireCreatable(CCluster& cluster, const CreationRequest& request) {
    RequireParts(cluster, request);
}

void FailToCreate(CCluster& cluster, const CreationRequest& request) {
    if (Interruption::IsPending()) {
        FailWithoutReason(cluster, request);
    }
    const std::string what =
        "cannot create the resource " + Quoted(request.name) + " for " + Quoted(request.server) + ": ";
    if (OpenResource(cluster, request.name)) {
        FailHalfway(cluster, request, Errors::Refused, what + "the cluster refused a step");
    }
    const Parts parts = RequireParts(cluster, request); // which tells what stands in the way now
    const GroupHandle group = RequireGroup(cluster, parts.place.group);
    const ResourceHandle created(CreateClusterResource(group.get(), request.name.c_str(), TypeOf(request), 0));
    if (!created) {
        throw Failure::OfCode(what + "the cluster refuses it", GetLastError(), Errors::Refused);
    }
    DWORD code = ERROR_SUCCESS;
    std::string step;
    try {
        step = FirstRefusedStep(cluster, request, parts, created.get(), code);
    } catch (...) {
        DeleteClusterResource(created.get());
        throw;
    }
    const DWORD undone = DeleteClusterResource(created.get());
    if (undone != ERROR_SUCCESS) {
        throw Failure::OfCode(what + "what was created cannot be deleted again", undone, Errors::Refused);
    }
    if (!step.empty()) {
        throw Failure::OfCode(what + step, code, Errors::Refused);
    }
    throw Failure(Errors::Refused, what + "the cluster refused a step, and nothing that was created is left to tell "
                                          "which; it allows each of them now")
        .Hint("Try again.");
}

void WarnOfMissingParts(CCluster& cluster, const CreationRequest& request, const Json& record, Report& report) {
    const ServerPlace place = FindServer(cluster, request.server);
    const NamesByType members = ReadMembers(cluster, place.group);
    const Json owners = record.value("possibleOwners", Json()); // of what cannot be opened nothing is known
    const Json restartAction = record.value("restartAction", Json());
    for (const std::wstring& node :
         ListPossibleOwners(cluster, RequireFirst(members, clus::SystemAttendantType, place.group))) {
        if (owners.is_array() && std::find(owners.begin(), owners.end(), Json(node)) == owners.end()) {
            report.AddWarning("the cluster did not take the node " + Quoted(node) + " as a possible owner of " +
                              Quoted(request.name));
        }
    }
    if (restartAction.is_number() && restartAction != Json(ClusterResourceRestartNoNotify)) {
        report.AddWarning("the cluster did not take the restart action of " + Quoted(request.name));
    }
}

bool IsAbsolutePath(const std::wstring& path) {
    const wchar_t drive = path.empty() ? L'\0' : path[0];
    const bool isLetter = (drive >= L'A' && drive <= L'Z') || (drive >= L'a' && drive <= L'z');
    return isLetter && path.size() > 2 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/');
}
