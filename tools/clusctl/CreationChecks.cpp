#include "CreationChecks.h"

#include "Interruption.h"
#include "PropertyJson.h"
#include "StateNames.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Files.h"
#include "common/Text.h"
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
        throw FailureOfList("cannot list the possible owners of " + Quoted(attendant), code, Errors::Incomplete);
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

// The platform does not document which last error means that no dependency is a disk: asked again, one by one.
void RequireDependenciesRead(const CCluster& cluster, const std::wstring& attendantName) {
    const std::string cannotTell = "cannot tell on which disk " + Quoted(attendantName) + " depends";
    const ResourceHandle attendant = RequireResource(cluster, attendantName);
    Names dependencies;
    const DWORD code = ListRelated(attendant.get(), CLUSTER_RESOURCE_ENUM_DEPENDS, dependencies);
    if (code != ERROR_SUCCESS) {
        throw FailureOfList(cannotTell, code, Errors::Incomplete).Hint("Name the disk with --disk.");
    }
    for (const std::wstring& name : dependencies) {
        const ResourceHandle dependency = OpenResource(cluster, name);
        DWORD itsClass = CLUS_RESCLASS_UNKNOWN;
        const DWORD failed = dependency ? ReadResourceClass(dependency.get(), itsClass) : GetLastError();
        if (failed != ERROR_SUCCESS) {
            throw Failure::OfCode(cannotTell + ": " + Quoted(name) + " could not be asked", failed, Errors::Incomplete)
                .Hint("Name the disk with --disk.");
        }
        if (itsClass == CLUS_RESCLASS_STORAGE) {
            throw Failure(Errors::Incomplete, cannotTell + ": it was not told, and " + Quoted(name) + " is a disk")
                .Hint("Name the disk with --disk.");
        }
    }
}

std::wstring DiskOf(CCluster& cluster, const std::wstring& attendantName) {
    CClusterResource attendant;
    CClusterResource disk;
    if (!cluster.OpenResourceByName(attendant, attendantName.c_str()) ||
        !attendant.GetResourceStorageDependency(disk)) {
        RequireDependenciesRead(cluster, attendantName);
        throw Failure(Errors::NotPossible, Quoted(attendantName) + " depends on no disk")
            .Hint("Name the disk with --disk.");
    }
    return NameOf(disk.GetResourceHandle());
}

bool IsBelow(const std::wstring& path, const std::wstring& folder) {
    return common::Folded(path + L"\\").compare(0, folder.size(), common::Folded(folder)) == 0;
}

// The longest of the folders that a path is below; empty when there is none.
std::wstring DeepestOf(const std::vector<std::wstring>& folders, const std::wstring& path) {
    std::wstring deepest;
    for (const std::wstring& folder : folders) {
        if (folder.size() > deepest.size() && IsBelow(path, folder)) {
            deepest = folder;
        }
    }
    return deepest;
}

// Of a disk that is online here, which alone tells its paths; empty of any other resource.
std::vector<std::wstring> FoldersHere(const CCluster& cluster, const std::wstring& name) {
    const ResourceHandle resource = OpenResource(cluster, name);
    std::wstring owner;
    std::wstring group;
    std::vector<std::wstring> folders;
    if (resource && ResourceClass(resource.get()) == CLUS_RESCLASS_STORAGE &&
        ReadResourceState(resource.get(), owner, group) == ClusterResourceOnline && IsThisComputer(owner)) {
        GetDiskLettersFromResource(resource.get(), folders);
    }
    return folders;
}

} // namespace

bool RequirePathOnDisk(const CCluster& cluster, const std::wstring& diskName, const Names& mounted,
                       const std::wstring& path) {
    const ResourceHandle disk = OpenResource(cluster, diskName);
    std::vector<unsigned char> answer;
    DWORD code = 0;
    std::vector<std::wstring> folders;
    if (!disk || !QueryResource(disk.get(), CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, answer, code) ||
        !GetDiskLettersFromResource(disk.get(), folders) || folders.size() != DiskJson(answer)["partitions"].size()) {
        return false;
    }
    const std::string notThere = "the data path " + Quoted(path) + " is not on " + Quoted(diskName);
    const std::wstring full = common::FullPath(path); // with backslashes, and without ".."
    const std::wstring deepest = DeepestOf(folders, full);
    if (deepest.empty()) {
        std::string known;
        for (const std::wstring& folder : folders) {
            known += (known.empty() ? "" : ", ") + Printable(folder);
        }
        if (known.empty()) {
            return false;
        }
        throw Failure(Errors::NotPossible, notThere + ", whose paths are " + known);
    }
    for (const std::wstring& other : mounted) {
        if (!common::IsSameName(other, diskName)) {
            const std::wstring below = DeepestOf(FoldersHere(cluster, other), full);
            if (below.size() > deepest.size()) {
                throw Failure(Errors::NotPossible,
                              notThere + ": " + Quoted(other) + " is mounted at " + Printable(below));
            }
        }
    }
    return true;
}

namespace {

void RequireDisk(const CCluster& cluster, const std::wstring& name, const std::wstring& serverGroup,
                 const std::wstring& dataPath, Report& report) {
    const ResourceHandle disk = RequireResource(cluster, name);
    DWORD diskClass = CLUS_RESCLASS_UNKNOWN;
    const DWORD code = ReadResourceClass(disk.get(), diskClass);
    if (code != ERROR_SUCCESS) {
        report.AddWarning("whether " + Quoted(name) + " is a disk could not be checked: " + ErrorText(code));
    } else if (diskClass != CLUS_RESCLASS_STORAGE) {
        throw Failure(Errors::NotPossible, Quoted(name) + " is no disk");
    }
    std::wstring owner;
    std::wstring group;
    const CLUSTER_RESOURCE_STATE state = ReadResourceState(disk.get(), owner, group);
    if (state == ClusterResourceStateUnknown) {
        throw Failure::OfCode("cannot read the state of " + Quoted(name), GetLastError(), Errors::Incomplete);
    }
    if (!common::IsSameName(group, serverGroup)) {
        throw Failure(Errors::NotPossible, "the disk " + Quoted(name) + " is in the group " + Quoted(group) +
                                               ", not in that of the virtual server, " + Quoted(serverGroup));
    }
    if (state != ClusterResourceOnline || !IsThisComputer(owner)) {
        throw Failure(Errors::NotPossible,
                      "the disk " + Quoted(name) + " is " + StateWord(state) + " on the node " + Quoted(owner))
            .Hint("It has to be online on this node.");
    }
    if (!dataPath.empty() &&
        !RequirePathOnDisk(cluster, name, ListNames(cluster, CCluster::CCLUSTER_OBJ_RESOURCE), dataPath)) {
        report.AddWarning("whether the data path " + Quoted(dataPath) + " is on " + Quoted(name) +
                          " could not be checked: the disk does not tell the path of each of its partitions");
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

Parts RequireParts(CCluster& cluster, const CreationRequest& request, Report& report) {
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
        RequireDisk(cluster, parts.disk, place.group, request.dataPath, report);
    }
    return parts;
}

const char CreatingCall[] = "CreateClusterResource";

// What the library's last call was for.
std::string RefusedStep(const LibraryCall& call, const std::vector<std::wstring>& dependencies) {
    if (call.name == CreatingCall) {
        return "the cluster refuses it";
    }
    if (call.name == "AddClusterResourceDependency" && call.inARow <= dependencies.size()) {
        return "the cluster does not let it depend on " + Quoted(dependencies[call.inARow - 1]);
    }
    if (call.name == "ClusterResourceControl") { // after all others
        return "the cluster does not take its data path";
    }
    return call.name + " failed";
}

} // namespace

std::vector<std::wstring> RequireCreatable(CCluster& cluster, const CreationRequest& request, Report& report) {
    const Parts parts = RequireParts(cluster, request, report);
    std::vector<std::wstring> dependencies;
    for (const std::wstring& name : {parts.disk, parts.store, parts.place.networkNameResource}) {
        if (!name.empty()) {
            dependencies.push_back(name);
        }
    }
    return dependencies;
}

void FailToCreate(CCluster& cluster, const CreationRequest& request, const LibraryCall& last,
                  const std::vector<std::wstring>& dependencies) {
    const bool isRefused = last.code != ERROR_SUCCESS;
    std::string what = Interruption::IsPending() ? "interrupted: " : "";
    what += "cannot create the resource " + Quoted(request.name) + " for " + Quoted(request.server);
    std::string hint;
    if (OpenResource(cluster, request.name)) {
        // Another one of that name, which somebody else has made just now, is none of ours.
        if (last.name != CreatingCall) {
            what += ", and it is left half created";
            hint = "'clusctl resource delete " + Printable(request.server) + "' deletes it.";
        }
    } else if (GetLastError() != ERROR_RESOURCE_NOT_FOUND) {
        what += ", and whether it is there cannot be told";
    } else if (!isRefused) {
        if (!Interruption::IsPending()) {
            Report unchecked;
            RequireParts(cluster, request, unchecked); // which tells what stands in the way now
        }
        hint = "Try again.";
    }
    Failure failure =
        isRefused ? Failure::OfCode(what + ": " + UnlessLost(RefusedStep(last, dependencies), last.code), last.code,
                                    Errors::Refused)
                  : Failure(Errors::Refused, what + ": the library gave up, though the cluster refused nothing");
    failure.Hint(hint);
    throw Interruption::IsPending() ? failure.As(Errors::Interrupted) : failure;
}

std::string MissingParts(const CreationRequest& request, const Json& record,
                         const std::vector<std::wstring>& dependencies) {
    std::string missing;
    const auto add = [&missing](const std::string& part) { missing += (missing.empty() ? "" : ", nor ") + part; };
    const Json others = record.value("dependsOn", Json()); // of what cannot be read nothing is known
    for (const std::wstring& name : dependencies) {
        const auto isThisOne = [folded = common::Folded(name)](const Json& other) {
            return common::Folded(common::ToUtf16(other.get<std::string>())) == folded;
        };
        if (others.is_array() && std::none_of(others.begin(), others.end(), isThisOne)) {
            add("its dependency on " + Quoted(name));
        }
    }
    const Json properties = record.value("privateProperties", Json());
    if (properties.is_object() &&
        properties.value(common::ToUtf8(clus::DataPathProperty), Json()) != Json(request.dataPath)) {
        add("its data path " + Quoted(request.dataPath));
    }
    return missing;
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
