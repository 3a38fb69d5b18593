#include "ModelFromRecording.h"

#include "ClusterApi.h"
#include "PropertyJson.h"
#include "StateNames.h"
#include "Text.h"

#include "common/Files.h"
#include "common/Text.h"
#include "core/ValueList.h"

#include <Bytes.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <memory>
#include <utility>

namespace {

typedef std::vector<std::string> Texts;

struct Resource {
    Resource() noexcept(false) {
    } // as its values, whose constructors may throw
    std::string type;
    std::string id;
    std::string group;
    Json state;
    Texts dependsOn;
    Texts possibleOwners;
    Json common;
    Json privates;
    Json disk;
    recording::Bytes flags;
};

struct Group {
    std::string owner;
    Texts preferredOwners;
};

// An open handle: what it is, and of what.
struct Handle {
    std::string call; // that opened it
    std::string name;
};

// A call of a recording, with its texts as documents.
struct HeardCall {
    explicit HeardCall(const recording::RecordedCall& call)
        : name(call.name), in(common::ParseJson(call.in)), out(common::ParseJson(call.out)), result(call.result) {
    }
    const std::string& name;
    const Json in;
    const Json out;
    const std::int64_t result;
};

void AddOnce(Texts& names, const std::string& name) {
    if (!name.empty() && std::find(names.begin(), names.end(), name) == names.end()) {
        names.push_back(name);
    }
}

std::string TextIn(const Json& object, const char* name) {
    const auto member = object.find(name);
    if (member == object.end()) {
        return std::string();
    }
    const Json& text = member->is_array() && !member->empty() ? (*member)[0] : *member;
    return text.is_string() ? text.get<std::string>() : std::string();
}

std::uint64_t NumberIn(const Json& object, const char* name) {
    const auto member = object.find(name);
    return member != object.end() && member->is_number_unsigned() ? member->get<std::uint64_t>() : 0;
}

recording::Bytes BytesIn(const Json& object, const char* name) {
    recording::Bytes bytes;
    recording::FromHex(TextIn(object, name), bytes);
    return bytes;
}

// Goes through the calls, and keeps what they tell.
class Listener {
public:
    explicit Listener(const recording::Recording& recording) : m_recording(recording) {
        for (const recording::RecordedCall& call : recording.calls) {
            if (!call.isRefused) {
                Hear(HeardCall(call));
            }
        }
    }

    RecordedModel Model();

private:
    void Hear(const HeardCall& call);
    void HearItem(const HeardCall& call, const Handle& list);
    void HearControl(const HeardCall& call, const std::string& name);
    std::string ObjectOf(const HeardCall& call, const char* argument) const;
    std::string NodeName(const std::string& name) const;
    Json NodeNames(const Texts& names) const;
    Json Nodes();
    Json Groups();
    Json Resources();
    std::string Told(const std::string& value, const std::string& what, const std::string& name,
                     const std::string& otherwise);

    const recording::Recording& m_recording;
    std::map<std::uint64_t, Handle> m_handles;
    std::string m_cluster;
    Texts m_nodes;
    Texts m_groups;
    Texts m_resources;
    std::map<std::string, std::int64_t> m_nodeStates;
    std::map<std::string, Group> m_groupsByName;
    std::map<std::string, Resource> m_resourcesByName;
    Texts m_missing;
    bool m_hasCore = false;
};

std::string Listener::ObjectOf(const HeardCall& call, const char* argument) const {
    const auto handle = m_handles.find(NumberIn(call.in, argument));
    return handle == m_handles.end() ? std::string() : handle->second.name;
}

void Listener::Hear(const HeardCall& call) {
    const std::string resource = ObjectOf(call, "resource");
    const std::string group = ObjectOf(call, "group");
    if (call.name == "OpenClusterResource" || call.name == "OpenClusterGroup" || call.name == "OpenClusterNode") {
        m_handles[static_cast<std::uint64_t>(call.result)] = {call.name, TextIn(call.in, "name")};
    } else if (call.name == "ClusterOpenEnum" || call.name == "ClusterGroupOpenEnum" ||
               call.name == "ClusterResourceOpenEnum") {
        m_handles[static_cast<std::uint64_t>(call.result)] = {call.name, resource.empty() ? group : resource};
    } else if (call.name == "GetClusterInformation" && call.result == ERROR_SUCCESS) {
        m_cluster = TextIn(call.out, "name");
    } else if (call.name == "GetClusterNodeState") {
        m_nodeStates[ObjectOf(call, "node")] = call.result;
    } else if (call.name == "GetClusterGroupState" && call.result != -1 && !group.empty()) {
        AddOnce(m_groups, group);
        m_groupsByName[group].owner = TextIn(call.out, "node");
    } else if (call.name == "GetClusterResourceState" && call.result != -1 && !resource.empty()) {
        AddOnce(m_resources, resource);
        Resource& known = m_resourcesByName[resource];
        known.state = ModelState(static_cast<CLUSTER_RESOURCE_STATE>(call.result));
        const std::string in = TextIn(call.out, "group");
        const std::string node = TextIn(call.out, "node");
        known.group = in.empty() ? known.group : in;
        AddOnce(m_groups, known.group);
        AddOnce(m_nodes, node);
        if (!known.group.empty() && !node.empty()) {
            m_groupsByName[known.group].owner = node;
        }
    } else if (call.name == "ClusterResourceControl" && call.result == ERROR_SUCCESS && !resource.empty()) {
        HearControl(call, resource);
    } else if (call.result == ERROR_SUCCESS) {
        const auto list = m_handles.find(NumberIn(call.in, "enumeration"));
        if (list != m_handles.end()) {
            HearItem(call, list->second);
        }
    }
}

void Listener::HearItem(const HeardCall& call, const Handle& list) {
    const std::uint64_t type = NumberIn(call.out, "type");
    const std::string name = TextIn(call.out, "name");
    if (list.call == "ClusterOpenEnum") {
        Texts* const lists[] = {&m_nodes, &m_resources, &m_groups};
        const std::uint64_t types[] = {CLUSTER_ENUM_NODE, CLUSTER_ENUM_RESOURCE, CLUSTER_ENUM_GROUP};
        for (std::size_t i = 0; i < std::size(types); ++i) {
            if (type == types[i]) {
                AddOnce(*lists[i], name);
            }
        }
    } else if (list.call == "ClusterGroupOpenEnum" && type == CLUSTER_GROUP_ENUM_CONTAINS) {
        AddOnce(m_resources, name);
        m_resourcesByName[name].group = list.name;
    } else if (list.call == "ClusterGroupOpenEnum" && type == CLUSTER_GROUP_ENUM_NODES) {
        AddOnce(m_groupsByName[list.name].preferredOwners, name);
    } else if (list.call == "ClusterResourceOpenEnum" && type == CLUSTER_RESOURCE_ENUM_DEPENDS) {
        AddOnce(m_resourcesByName[list.name].dependsOn, name);
    } else if (list.call == "ClusterResourceOpenEnum" && type == CLUSTER_RESOURCE_ENUM_NODES) {
        AddOnce(m_resourcesByName[list.name].possibleOwners, name);
    }
}

void Listener::HearControl(const HeardCall& call, const std::string& name) {
    const recording::Bytes bytes = BytesIn(call.out, "output");
    if (bytes.empty()) {
        return; // a size only
    }
    AddOnce(m_resources, name);
    Resource& resource = m_resourcesByName[name];
    const auto text = [&bytes]() { return common::ToUtf8(clus::TextInBuffer(bytes.data(), bytes.size(), 0)); };
    switch (NumberIn(call.in, "control")) {
    case CLUSCTL_RESOURCE_GET_RESOURCE_TYPE:
        resource.type = text();
        break;
    case CLUSCTL_RESOURCE_GET_ID:
        resource.id = text();
        break;
    case CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES:
        resource.privates = PropertiesJson(bytes);
        break;
    case CLUSCTL_RESOURCE_GET_COMMON_PROPERTIES:
        resource.common = PropertiesJson(bytes);
        break;
    case CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO:
        resource.disk = DiskJson(bytes);
        break;
    case CLUSCTL_RESOURCE_GET_FLAGS:
        resource.flags = bytes;
        break;
    default:
        break;
    }
}

std::string Listener::Told(const std::string& value, const std::string& what, const std::string& name,
                           const std::string& otherwise) {
    if (!value.empty()) {
        return value;
    }
    m_missing.push_back("the recording does not tell the " + what + " of " + Quoted(name) + ": " + otherwise);
    return otherwise;
}

std::string Listener::NodeName(const std::string& name) const {
    return name == m_recording.header.computer ? "." : name;
}

Json Listener::NodeNames(const Texts& names) const {
    Json list = Json::array();
    for (const std::string& name : names) {
        list.push_back(NodeName(name));
    }
    return list;
}

Json Listener::Nodes() {
    Json nodes = Json::array();
    for (const std::string& name : m_nodes) {
        Json node = {{"name", NodeName(name)}};
        const auto state = m_nodeStates.find(name);
        if (state == m_nodeStates.end()) {
            m_missing.push_back("the recording does not tell the state of " + Quoted(name) + ": up");
        } else if (state->second != ClusterNodeUp) {
            node["state"] = ModelState(static_cast<CLUSTER_NODE_STATE>(state->second));
        }
        nodes.push_back(std::move(node));
    }
    return nodes;
}

Json Listener::Groups() {
    Json groups = Json::array();
    for (const std::string& name : m_groups) {
        const Group& group = m_groupsByName[name];
        Json model = {{"name", name}, {"owner", NodeName(Told(group.owner, "owner", name, m_nodes.front()))}};
        if (!group.preferredOwners.empty()) {
            model["preferredOwners"] = NodeNames(group.preferredOwners);
        }
        groups.push_back(std::move(model));
    }
    return groups;
}

Json Listener::Resources() {
    Json resources = Json::array();
    unsigned number = 0;
    for (const std::string& name : m_resources) {
        const Resource& known = m_resourcesByName[name];
        char id[40];
        std::snprintf(id, sizeof(id), "00000000-0000-0000-0000-%012x", ++number);
        Json resource;
        resource["name"] = name;
        resource["type"] = Told(known.type, "type", name, "Generic Service");
        resource["id"] = known.id.empty() ? Told("", "ID", name, id) : known.id;
        resource["group"] = Told(known.group, "group", name, m_groups.front());
        resource["state"] = known.state.is_null() ? Json(Told("", "state", name, "Offline")) : known.state;
        if (!known.dependsOn.empty()) {
            resource["dependsOn"] = known.dependsOn;
        }
        if (!known.possibleOwners.empty()) {
            resource["possibleOwners"] = NodeNames(known.possibleOwners);
        }
        const std::pair<const char*, const Json*> properties[] = {{"private", &known.privates}, {"disk", &known.disk}};
        for (const auto& [member, value] : properties) {
            if (!value->is_null() && !value->empty()) {
                resource[member] = *value;
            }
        }
        const auto restart = known.common.is_object() ? known.common.find("RestartAction") : known.common.end();
        if (known.common.is_object() && restart != known.common.end()) {
            resource["common"] = {{"RestartAction", *restart}};
        }
        m_hasCore = MarkCore(resource, known.flags) || m_hasCore;
        if (known.privates.is_null()) {
            m_missing.push_back("the recording does not tell the private properties of " + Quoted(name));
        }
        resources.push_back(std::move(resource));
    }
    return resources;
}

RecordedModel Listener::Model() {
    const std::string computer = m_recording.header.computer;
    if (m_nodes.empty()) {
        AddOnce(m_nodes, computer);
        m_missing.push_back("the recording names no node: the computer that it was made on is taken for the only one");
    }
    for (const auto& group : m_groupsByName) {
        AddOnce(m_nodes, group.second.owner);
    }
    if (m_groups.empty() && !m_resources.empty()) {
        m_groups.emplace_back("Cluster Group");
    }
    Json model;
    if (m_cluster.empty()) {
        m_cluster = "CLUSTER";
        m_missing.push_back("the recording does not tell the name of the cluster: " + m_cluster);
    }
    model["cluster"] = {{"name", m_cluster}};
    if (m_recording.header.settings.is_object()) {
        model["settings"] = m_recording.header.settings;
    }
    model["nodes"] = Nodes();
    model["groups"] = Groups();
    model["resources"] = Resources();
    if (!m_hasCore) {
        model["cluster"]["coreGroup"] = "none"; // what was recorded stands in the model
    }
    return {std::move(model), std::move(m_missing)};
}

recording::Recording ReadFile(const std::wstring& file) {
    try {
        return recording::ReadRecording(common::ReadWholeFile(file));
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot read the recording " + Quoted(file), error.Code());
    } catch (const common::JsonError& error) {
        throw Failure("cannot read the recording " + Quoted(file) + ": " + Printable(error.what()));
    }
}

struct FromRecordingOptions {
    std::wstring file;
    std::wstring model;
};

Report FromRecording(const FromRecordingOptions& options) {
    RecordedModel recorded = ModelFromRecording(ReadFile(options.file));
    Report report;
    for (const std::string& missing : recorded.missing) {
        report.MarkIncomplete(missing);
    }
    if (options.model.empty()) {
        return Report::Verbatim(std::move(recorded.model), report);
    }
    if (common::FileExists(options.model)) {
        throw Failure(Errors::AlreadyExists, "there is a file " + Quoted(options.model) + " already");
    }
    try {
        common::WriteWholeFile(options.model, common::DumpJson(recorded.model));
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot create " + Quoted(options.model), error.Code());
    }
    const size_t missing = recorded.missing.size();
    report.AddSentence("model",
                       {{"file", options.model},
                        {"nodes", recorded.model["nodes"].size()},
                        {"groups", recorded.model["groups"].size()},
                        {"resources", recorded.model["resources"].size()},
                        {"missing", recorded.missing}},
                       "Wrote " + Printable(options.model) + ", in which " + std::to_string(missing) +
                           (missing == 1 ? " thing is" : " things are") + " not as recorded.");
    return report;
}

} // namespace

RecordedModel ModelFromRecording(const recording::Recording& recording) {
    if (recording.calls.empty()) {
        throw Failure(Errors::NotPossible, "the recording holds no call of a failover cluster")
            .Hint("Of VCS, record \"vcs snapshot\", and make the snapshot of the recording.");
    }
    return Listener(recording).Model();
}

void AddModelFromRecordingCommand(CommandLine& commandLine, CLI::App& family) {
    const auto options = std::make_shared<FromRecordingOptions>();
    CLI::App& command =
        commandLine.AddTo(family, "from-recording", "Make a model of what a recording tells of a failover cluster",
                          [options](const LogCapture&) { return FromRecording(*options); });
    CommandLine::AddText(command, "FILE", options->file, "FILE", "The recording").required();
    CommandLine::AddText(command, "MODEL-FILE", options->model, "MODEL-FILE",
                         "The model to write, which must not be there; standard output without it");
}
