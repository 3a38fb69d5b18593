#include "CoreGroup.h"
#include "FailoverRules.h"

#include "common/Text.h"

#include <algorithm>

namespace clussim {

namespace {

const wchar_t GroupName[] = L"Cluster Group";
const wchar_t NameName[] = L"Cluster Name";
const wchar_t AddressName[] = L"Cluster IP Address";

// The same in every model, so that the same steps give the same bytes.
const wchar_t NameId[] = L"c0000001-0000-4000-8000-000000000001";
const wchar_t AddressId[] = L"c0000001-0000-4000-8000-000000000002";
const wchar_t QuorumId[] = L"c0000001-0000-4000-8000-000000000003";

const wchar_t UsualAddress[] = L"192.0.2.1";
const wchar_t UsualMask[] = L"255.255.255.0";
const std::uint32_t UsualSignature = 0x51554F52;

const wchar_t UsualShare[] = L"\\\\WITNESS\\Quorum";

struct QuorumKind {
    const wchar_t* name; // null: the nodes alone hold it
    const wchar_t* type;
    bool isDisk;
    const wchar_t* share; // the private property that names the witness; null: there is none
};

QuorumKind QuorumOf(const Model& model) {
    const bool is2008 = model.behaviour.protocol >= 2008;
    const bool isShare = model.witness == Witness::Share;
    if (model.quorum == Quorum::Shared || model.witness == Witness::Disk) {
        return {is2008 ? L"Cluster Disk 1" : L"Disk Q:", L"Physical Disk", true, nullptr};
    }
    if (!is2008) {
        return {MajorityNodeSet, MajorityNodeSet, false, isShare ? L"MNSFileShare" : nullptr};
    }
    return isShare ? QuorumKind{FileShareWitness, FileShareWitness, false, L"SharePath"}
                   : QuorumKind{nullptr, nullptr, false, nullptr};
}

bool TakesPart(const Node& node) {
    return IsUp(node) || node.status == Node::Status::Paused;
}

// Where it is: the first node that is up, else one that is paused, else the first.
Node& FirstOwner(Model& model) {
    for (const auto& serves : {IsUp, TakesPart}) {
        const auto found = std::find_if(model.nodes.begin(), model.nodes.end(), serves);
        if (found != model.nodes.end()) {
            return *found;
        }
    }
    return model.nodes.front();
}

std::unique_ptr<Disk> QuorumDisk(const Model& model) {
    auto disk = std::make_unique<Disk>();
    disk->signature = UsualSignature;
    disk->number = 1;
    for (const Resource& resource : model.resources) { // not that of another disk
        if (resource.disk && resource.disk->number >= disk->number) {
            disk->number = resource.disk->number + 1;
        }
    }
    disk->partitions.push_back({L"Q:", L"Quorum"});
    return disk;
}

bool IsListed(const Model& model, const wchar_t* nameOrId) {
    return nameOrId && model.ResourceNamed(nameOrId);
}

} // namespace

bool LacksCoreGroup(const Model& model) {
    const bool hasCore = std::any_of(model.resources.begin(), model.resources.end(),
                                     [](const Resource& resource) { return resource.isCore || resource.isQuorum; });
    const wchar_t* const taken[] = {NameName, AddressName, QuorumOf(model).name, NameId, AddressId, QuorumId};
    return !hasCore && !model.FindGroup(GroupName) &&
           std::none_of(std::begin(taken), std::end(taken),
                        [&model](const wchar_t* nameOrId) { return IsListed(model, nameOrId); });
}

void AddCoreGroup(Model& model) {
    const QuorumKind quorum = QuorumOf(model);
    Group group;
    group.name = GroupName;
    group.owner = &FirstOwner(model);
    const bool isOnline = model.running && TakesPart(*group.owner);
    model.AddGroup(group);
    const auto add = [&model, isOnline](const wchar_t* name, const wchar_t* id, const wchar_t* type) -> Resource& {
        Resource& resource = *model.AddResource(name, id, model.FindType(type), &model.groups.back());
        for (Node& node : model.nodes) {
            resource.possibleOwners.push_back(&node);
        }
        resource.isCore = true;
        resource.isWanted = true;
        model.SetState(resource, isOnline ? StateOnline : StateOffline);
        return resource;
    };
    Resource& address = add(AddressName, AddressId, L"IP Address");
    address.privateProperties.Set(L"Address", PropertyValue::OfText(UsualAddress));
    address.privateProperties.Set(L"SubnetMask", PropertyValue::OfText(UsualMask));
    Resource& name = add(NameName, NameId, L"Network Name");
    name.privateProperties.Set(L"Name", PropertyValue::OfText(model.name));
    Model::Link(name, address);
    if (quorum.name) {
        Resource& holder = add(quorum.name, QuorumId, quorum.type);
        holder.isQuorum = true;
        if (quorum.isDisk) {
            holder.disk = QuorumDisk(model);
        }
        if (quorum.share) {
            holder.privateProperties.Set(quorum.share, PropertyValue::OfText(UsualShare));
        }
    }
}

} // namespace clussim
