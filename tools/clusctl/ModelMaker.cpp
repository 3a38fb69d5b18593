#include "ModelMaker.h"

#include "ClusterApi.h"
#include "ModelNodes.h"
#include "StateNames.h"
#include "Text.h"

#include "common/Text.h"

#include <algorithm>
#include <utility>

namespace {

// Since Windows Server 2008 clusters follow other rules; `behaviour.protocol` of the model.
const unsigned MajorVersionOf2008 = 6;

} // namespace

const RecordedObject* Find(const std::vector<RecordedObject>& objects, const std::string& name) {
    const auto found = std::find_if(objects.begin(), objects.end(), [&name](const RecordedObject& object) {
        return common::IsSameName(object.name, name);
    });
    return found == objects.end() ? nullptr : &*found;
}

std::string ModelMaker::MadeUp(const std::string& what, const std::string& name, const std::string& otherwise) {
    Miss("the recording does not tell the " + what + " of " + Quoted(name) + ": " + otherwise);
    return otherwise;
}

// The simulator refuses it, too.
void ModelMaker::Refused(const RecordedObject& object, const char* part, const char* what, Json& model) {
    const std::uint32_t code = object.Part(part).code;
    model["unread"][part] = code;
    Miss("the cluster did not tell " + std::string(what) + " of " + Quoted(object.name) + ": " + ErrorText(code));
}

bool ModelMaker::IsDown(const std::string& node) const {
    const RecordedObject* const known = Find(m_cluster.Of(RecordedKind::Node), node);
    const Json state = known == nullptr ? Json() : known->Part("state").value;
    return state == Json(static_cast<int>(ClusterNodeDown)) || state == Json(static_cast<int>(ClusterNodeJoining));
}

void ModelMaker::AddLists() {
    const std::pair<RecordedKind, const char*> lists[] = {
        {RecordedKind::Node, "nodes"}, {RecordedKind::Group, "groups"}, {RecordedKind::Resource, "resources"}};
    Texts unlisted;
    for (const auto& [kind, plural] : lists) {
        if (!m_cluster.isListed[static_cast<std::size_t>(kind)]) {
            unlisted.emplace_back(plural);
        }
    }
    m_missing.MissLists(unlisted);
}

Json ModelMaker::Nodes() {
    Json nodes = Json::array();
    for (const RecordedObject& node : m_cluster.Of(RecordedKind::Node)) {
        Json model = {{"name", node.name}};
        const RecordedPart& state = node.Part("state");
        if (node.Part("open").code != 0) {
            Refused(node, "open", "anything", model);
        } else if (state.code != 0) {
            Refused(node, "state", "the state", model);
        } else if (state.value.is_null()) {
            Miss("the recording does not tell the state of " + Quoted(node.name) + ": up");
        } else if (state.value != Json(static_cast<int>(ClusterNodeUp))) {
            model["state"] = ModelState(static_cast<CLUSTER_NODE_STATE>(state.value.get<int>()));
        }
        nodes.push_back(std::move(model));
    }
    return nodes;
}

Json ModelMaker::Groups() {
    const std::vector<RecordedObject>& nodes = m_cluster.Of(RecordedKind::Node);
    const auto up =
        std::find_if(nodes.begin(), nodes.end(), [this](const RecordedObject& node) { return !IsDown(node.name); });
    const std::string anyNode = (up == nodes.end() ? nodes.front() : *up).name;
    Json groups = Json::array();
    for (const RecordedObject& group : m_cluster.Of(RecordedKind::Group)) {
        std::string owner = group.Text("owner");
        owner = owner.empty() ? group.Text("ownerByResource") : owner;
        const bool isRefused = group.Part("open").code != 0 || group.Part("owner").code != 0;
        if (owner.empty()) {
            owner = isRefused ? anyNode : MadeUp("owner", group.name, anyNode);
        }
        m_downNodeOwns = m_downNodeOwns || IsDown(owner);
        Json model = {{"name", group.name}, {"owner", owner}};
        if (group.Part("open").code != 0) {
            Refused(group, "open", "anything", model);
            groups.push_back(std::move(model));
            continue;
        }
        if (group.Part("owner").code != 0) {
            Refused(group, "owner", "the owner", model);
        }
        Texts untold;
        const RecordedPart& preferred = group.Part("preferredOwners");
        if (preferred.code != 0) {
            Refused(group, "preferredOwners", "the preferred owners", model);
        } else if (preferred.value.is_null() || preferred.isCut) {
            untold.emplace_back("the preferred owners");
        } else if (!preferred.value.empty()) {
            model["preferredOwners"] = preferred.value;
        }
        const RecordedPart& common = group.Part("common");
        if (common.code != 0) {
            Refused(group, "common", "the common properties", model);
        } else if (common.value.is_null()) {
            untold.emplace_back("the common properties");
        } else if (!common.value.empty()) {
            model["common"] = common.value;
        }
        m_missing.Untold(untold, group.name);
        groups.push_back(std::move(model));
    }
    m_missing.MissUntold();
    return groups;
}

void ModelMaker::AddNetworks(Json& model) {
    // The numbers of CLUSTER_NETWORK_STATE and CLUSTER_NETINTERFACE_STATE in the words of a model.
    static const char* const networkStates[] = {"unavailable", "down", "partitioned", "up"};
    static const char* const cardStates[] = {"unavailable", "failed", "unreachable", "up"};
    const auto withState = [this](const RecordedObject& object, const char* const* states, Json item) {
        const Json& state = object.Part("state").value;
        if (!state.is_number_integer() || state < Json(0) || state > Json(3)) {
            Miss("the recording does not tell the state of " + Quoted(object.name) + ": up");
        } else if (state != Json(3)) {
            item["state"] = states[state.get<int>()];
        }
        return item;
    };
    for (const RecordedObject& network : m_cluster.Of(RecordedKind::Network)) {
        model["networks"].push_back(withState(network, networkStates, {{"name", network.name}}));
    }
    for (const RecordedObject& card : m_cluster.Of(RecordedKind::Interface)) {
        const RecordedObject* const node = Find(m_cluster.Of(RecordedKind::Node), card.Text("node"));
        const RecordedObject* const network = Find(m_cluster.Of(RecordedKind::Network), card.Text("network"));
        if (node == nullptr || network == nullptr) {
            Miss("the recording does not tell the node and the network of " + Quoted(card.name) + ": it is left out");
            continue;
        }
        Miss("the recording does not tell the address of " + Quoted(card.name));
        model["networkInterfaces"].push_back(
            withState(card, cardStates, {{"name", card.name}, {"node", node->name}, {"network", network->name}}));
    }
}

Json ModelMaker::Behaviour(Json& cluster) {
    Json behaviour = Json::object();
    if (m_cluster.version.code != 0) {
        cluster["unread"]["version"] = m_cluster.version.code;
        Miss("the cluster did not tell its version: it counts as one of Windows Server 2003: " +
             ErrorText(m_cluster.version.code));
    } else if (m_cluster.version.value.is_null()) {
        Miss("the recording does not tell the version of the cluster: it counts as one of Windows Server 2003");
    } else if (m_cluster.version.value.get<unsigned>() >= MajorVersionOf2008) {
        behaviour["protocol"] = 2008;
    }
    if (m_downNodeOwns) {
        behaviour["downOwners"] = "accepted";
    }
    return behaviour;
}

RecordedModel ModelMaker::Make() {
    std::vector<RecordedObject>& nodes = m_cluster.objects[static_cast<std::size_t>(RecordedKind::Node)];
    m_missing.MissWhole(m_recording, m_cluster.hasChanged);
    if (nodes.empty()) {
        nodes.emplace_back();
        nodes.back().name = m_recording.header.computer;
        Miss("the recording names no node: the computer that it was made on is taken for the only one");
    }
    std::string name = m_cluster.name.value.is_string() ? m_cluster.name.value.get<std::string>() : std::string();
    if (name.empty()) {
        name = "CLUSTER";
        Miss("the recording does not tell the name of the cluster: " + name);
    }
    AddLists();
    Json model;
    model["cluster"] = {{"name", name}};
    if (m_recording.header.settings.is_object()) {
        model["settings"] = m_recording.header.settings;
    }
    Json resources = Resources();
    model["resourceTypes"] = m_types;
    model["nodes"] = Nodes();
    AddNetworks(model);
    model["groups"] = Groups();
    if (!m_hasCore) {
        model["cluster"]["coreGroup"] = "none"; // what was recorded stands in the model
    }
    Json behaviour = Behaviour(model["cluster"]);
    if (!behaviour.empty()) {
        model["cluster"]["behaviour"] = std::move(behaviour);
    }
    model["resources"] = std::move(resources);
    NameThisComputer(model, m_recording.header.computer);
    return {std::move(model), m_missing.Take()};
}
