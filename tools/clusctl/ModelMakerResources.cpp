// The resources of a model that is made of a recording.
#include "ClusterApi.h"
#include "ModelMaker.h"
#include "PropertyJson.h"
#include "StateNames.h"
#include "Text.h"

#include "common/Text.h"
#include "core/ResourceTypes.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

const char DiskType[] = "Physical Disk";
const char UnknownType[] = "Unknown"; // of a resource whose type the cluster did not tell

// Types that the simulator knows; the others have to stand in the model.
const wchar_t* const KnownTypes[] = {L"Physical Disk",       clus::IpAddressType,        clus::NetworkNameType,
                                     L"Generic Service",     L"Generic Application",     clus::SystemAttendantType,
                                     clus::SmtpInstanceType, clus::InformationStoreType, clus::SingleCopyType,
                                     clus::CcrType};

} // namespace

// The class of a type is asked of one of its resources.
void ModelMaker::ChooseClasses() {
    for (const auto& type : m_cluster.classes) {
        m_classes.insert(type);
    }
    for (const RecordedObject& resource : m_cluster.Of(RecordedKind::Resource)) {
        if (!resource.Part("class").value.is_null()) {
            const std::string type = resource.Text("type");
            m_classes.emplace(type.empty() ? UnknownType : type, resource.Part("class").value);
        }
    }
}

void ModelMaker::AddType(const RecordedObject& resource, const std::string& type, Json& model) {
    const bool isThere =
        std::any_of(m_types.begin(), m_types.end(), [&type](const Json& known) { return known["name"] == Json(type); });
    const auto known = m_classes.find(type);
    if (known != m_classes.end()) {
        if (!isThere) {
            m_types.push_back({{"name", type}, {"class", known->second[0]}, {"subclass", known->second[1]}});
        }
    } else if (resource.Part("class").code != 0) {
        Refused(resource, "class", "the class", model);
        m_typesWithoutClass.push_back(type);
    } else {
        const std::wstring name = common::ToUtf16(type);
        if (std::find(std::begin(KnownTypes), std::end(KnownTypes), name) == std::end(KnownTypes)) {
            m_typesWithoutClass.push_back(type);
        }
    }
}

// A disk stays one.
void ModelMaker::AddUntoldTypes() {
    std::sort(m_typesWithoutClass.begin(), m_typesWithoutClass.end());
    m_typesWithoutClass.erase(std::unique(m_typesWithoutClass.begin(), m_typesWithoutClass.end()),
                              m_typesWithoutClass.end());
    for (const std::string& type : m_typesWithoutClass) {
        if (m_classes.count(type) == 0) {
            const bool isDisk = type == DiskType;
            const DWORD typeClass = isDisk ? CLUS_RESCLASS_STORAGE : CLUS_RESCLASS_UNKNOWN;
            const DWORD subclass = isDisk ? static_cast<DWORD>(CLUS_RESSUBCLASS_SHARED) : 0;
            m_types.push_back({{"name", type}, {"class", typeClass}, {"subclass", subclass}});
        }
    }
}

void ModelMaker::AddDisk(const RecordedObject& resource, const std::string& type, Json& model, Texts& untold) {
    const auto known = m_classes.find(type);
    const bool isStorage =
        known != m_classes.end() && known->second[0] == Json(static_cast<int>(CLUS_RESCLASS_STORAGE));
    const RecordedPart& disk = resource.Part("disk");
    if (!disk.value.is_null()) {
        model["disk"] = disk.value;
    } else if (disk.code != 0 && (isStorage || disk.code != ERROR_INVALID_FUNCTION)) {
        Refused(resource, "disk", "the disk information", model);
    } else if (disk.code == 0 && (isStorage || type == DiskType)) {
        untold.emplace_back("the disk information");
    }
}

// The simulator takes dependencies within a group only.
void ModelMaker::AddRelated(const RecordedObject& resource, Json& model) {
    const Json& dependencies = resource.Part("dependsOn").value;
    if (!dependencies.is_null()) {
        Json within = Json::array();
        for (const Json& name : dependencies) {
            const RecordedObject* const other = Find(m_cluster.Of(RecordedKind::Resource), name.get<std::string>());
            const std::string group = model["group"].get<std::string>();
            if (other != nullptr && common::IsSameName(other->Text("group"), group)) {
                within.push_back(name);
            } else {
                Miss("the recording does not tell that " + Quoted(name.get<std::string>()) + " is in the group " +
                     Quoted(group) + ": " + Quoted(resource.name) + " does not depend on it");
            }
        }
        model["dependsOn"] = std::move(within);
    }
    const Json& owners = resource.Part("possibleOwners").value;
    if (!owners.is_null() && !owners.empty()) {
        model["possibleOwners"] = owners;
    }
}

void ModelMaker::AddParts(const RecordedObject& resource, Json& model, Texts& untold) {
    const std::pair<const char*, const char*> parts[] = {{"dependsOn", "the dependencies"},
                                                         {"possibleOwners", "the possible owners"},
                                                         {"common", "the common properties"},
                                                         {"private", "the private properties"}};
    AddRelated(resource, model);
    for (const auto& [member, what] : parts) {
        const RecordedPart& part = resource.Part(member);
        if (part.code != 0) {
            Refused(resource, member, what, model);
        } else if (part.value.is_null() || part.isCut) {
            untold.emplace_back(what);
        } else if (part.value.is_object() && !part.value.empty()) {
            model[member] = part.value;
        }
    }
    const auto properties = model.find("private");
    if (properties != model.end()) {
        const std::size_t secrets = MaskSecretProperties(*properties);
        if (secrets != 0) {
            untold.push_back(std::to_string(secrets) + (secrets == 1 ? " secret" : " secrets"));
        }
    }
}

Json ModelMaker::ResourceOf(const RecordedObject& resource, std::size_t number) {
    Json model;
    model["name"] = resource.name;
    const bool isClosed = resource.Part("open").code != 0;
    std::string type = resource.Text("type");
    if (type.empty()) {
        const bool isRefused = isClosed || resource.Part("type").code != 0;
        type = isRefused ? UnknownType : MadeUp("type", resource.name, "Generic Service");
    }
    model["type"] = type;
    std::string id = resource.Text("id");
    if (id.empty() && (isClosed || resource.Part("id").code != 0)) {
        id = "unread-" + std::to_string(++m_idsMadeUp);
    } else if (id.empty() || std::find(m_ids.begin(), m_ids.end(), id) != m_ids.end()) {
        char other[40];
        std::snprintf(other, sizeof(other), "00000000-0000-0000-0000-%012zx", number);
        id = MadeUp("ID", resource.name, other);
    }
    m_ids.push_back(id);
    model["id"] = id;
    model["group"] = resource.Text("group");
    const Json& state = resource.Part("state").value;
    const bool isStateRefused = isClosed || resource.Part("state").code != 0;
    if (state.is_null()) {
        model["state"] = isStateRefused ? "Offline" : MadeUp("state", resource.name, "Offline");
    } else {
        model["state"] = ModelState(static_cast<CLUSTER_RESOURCE_STATE>(state.get<int>()));
    }
    if (isClosed) {
        Refused(resource, "open", "anything", model);
        m_typesWithoutClass.push_back(type);
        return model;
    }
    for (const auto& [part, what] :
         {std::make_pair("state", "the state"), std::make_pair("type", "the type"), std::make_pair("id", "the ID")}) {
        if (resource.Part(part).code != 0) {
            Refused(resource, part, what, model);
        }
    }
    Texts untold;
    AddParts(resource, model, untold);
    AddType(resource, type, model);
    AddDisk(resource, type, model, untold);
    const RecordedPart& flags = resource.Part("flags");
    if (flags.code != 0) {
        Refused(resource, "flags", "the flags", model);
    } else if (flags.value == Json(true)) {
        model[model.contains("disk") ? "quorum" : "core"] = true;
        m_hasCore = true;
    } else if (flags.value.is_null()) {
        untold.emplace_back("the flags");
    }
    m_missing.Untold(untold, resource.name);
    return model;
}

Json ModelMaker::Resources() {
    ChooseClasses();
    Json resources = Json::array();
    for (const RecordedObject& resource : m_cluster.Of(RecordedKind::Resource)) {
        if (resource.Text("group").empty()) {
            Miss("the recording does not tell the group of " + Quoted(resource.name) + ": it is left out");
        } else {
            resources.push_back(ResourceOf(resource, resources.size() + 1));
        }
    }
    AddUntoldTypes();
    m_missing.MissUntold();
    return resources;
}
