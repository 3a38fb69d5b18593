#include "ClusterNetworks.h"

#include "PropertyJson.h"
#include "Text.h"

#include "common/AnswerRoom.h"
#include "common/Text.h"

#include "simulator/cluster/ModelStates.h"

#include <iterator>

namespace {

struct NetworkCloser {
    void operator()(HNETWORK handle) const {
        CloseClusterNetwork(handle);
    }
    void operator()(HNETINTERFACE handle) const {
        CloseClusterNetInterface(handle);
    }
};

typedef std::unique_ptr<std::remove_pointer<HNETWORK>::type, NetworkCloser> NetworkHandle;
typedef std::unique_ptr<std::remove_pointer<HNETINTERFACE>::type, NetworkCloser> InterfaceHandle;

// Since Windows Server 2008 the cluster tells the kind of its quorum in the place of a size.
enum QuorumNumber : DWORD {
    NodeMajority = 0,
    MajorityWithWitness = 1024,
    DiskOnly = 4194304
};

const char MajorityNodeSet[] = "Majority Node Set";
const char WitnessOfNodeSet[] = "MNSFileShare";

template <std::size_t count>
void AddState(Json& object, const clussim::ModelState (&states)[count], int state, const std::wstring& name) {
    const char* const word = clussim::NameOf(states, state, nullptr);
    if (word == nullptr) {
        throw Failure::OfReading("the state", name, GetLastError());
    }
    if (std::string(word) != "up") {
        object["state"] = word;
    }
}

Json ReadNetwork(const CCluster& cluster, const std::wstring& name) {
    const NetworkHandle network(OpenClusterNetwork(cluster.GetHandle(), name.c_str()));
    if (!network) {
        throw Failure::OfCode("cannot open the network " + Quoted(name), GetLastError());
    }
    Json object = {{"name", name}};
    AddState(object, clussim::NetworkStates, GetClusterNetworkState(network.get()), name);
    return object;
}

std::wstring TextOf(const Json& properties, const char* member) {
    const auto found = properties.find(member);
    return found != properties.end() && found->is_string() ? common::ToUtf16(found->get<std::string>())
                                                           : std::wstring();
}

Json ReadInterface(const CCluster& cluster, const std::wstring& name) {
    const InterfaceHandle card(OpenClusterNetInterface(cluster.GetHandle(), name.c_str()));
    if (!card) {
        throw Failure::OfCode("cannot open the network interface " + Quoted(name), GetLastError());
    }
    std::vector<unsigned char> list;
    DWORD code = 0;
    if (!QueryInterface(card.get(), CLUSCTL_NETINTERFACE_GET_RO_COMMON_PROPERTIES, list, code)) {
        throw Failure::OfReading("the common properties", name, code);
    }
    const Json properties = PropertiesJson(list);
    Json object = {{"name", name}, {"node", TextOf(properties, "Node")}, {"network", TextOf(properties, "Network")}};
    const std::wstring address = TextOf(properties, "Address");
    if (!address.empty()) {
        object["address"] = address;
    }
    AddState(object, clussim::InterfaceStates, GetClusterNetInterfaceState(card.get()), name);
    return object;
}

// A part of the cluster that the simulator refuses as well. One without a code was told, and makes no sense.
void MarkPart(Json& model, const char* part, DWORD code) {
    model["cluster"]["unread"][part] = code == ERROR_SUCCESS ? static_cast<DWORD>(ERROR_INVALID_DATA) : code;
}

struct QuorumAnswer {
    std::wstring resource;
    DWORD number = 0;
};

// The Win32 code.
DWORD ReadQuorum(const CCluster& cluster, QuorumAnswer& answer) {
    std::vector<wchar_t> name(64);
    std::vector<wchar_t> device(MAX_PATH);
    for (;;) {
        auto nameLength = static_cast<DWORD>(name.size());
        auto deviceLength = static_cast<DWORD>(device.size());
        const DWORD code = GetClusterQuorumResource(cluster.GetHandle(), name.data(), &nameLength, device.data(),
                                                    &deviceLength, &answer.number);
        if (code == ERROR_SUCCESS) {
            answer.resource = common::NameIn(name);
            return code;
        }
        const bool hasRoom = nameLength < name.size() && deviceLength < device.size();
        if (code != ERROR_MORE_DATA || hasRoom ||
            (nameLength >= name.size() && !common::GrowForName(name, nameLength)) ||
            (deviceLength >= device.size() && !common::GrowForName(device, deviceLength))) {
            return code;
        }
    }
}

Json* FindResource(Json& resources, const std::wstring& name) {
    const std::wstring key = common::Folded(name);
    for (Json& resource : resources) {
        if (common::Folded(common::ToUtf16(resource.at("name").get<std::string>())) == key) {
            return &resource;
        }
    }
    return nullptr;
}

// "share", "disk", or nothing.
std::string WitnessOf(bool is2008, DWORD number, const Json& holder) {
    if (is2008) {
        return number == NodeMajority ? "" : holder.contains("disk") ? "disk" : "share";
    }
    const Json properties = holder.value("private", Json::object());
    return TextOf(properties, WitnessOfNodeSet).empty() ? "" : "share";
}

} // namespace

void AddNetworks(const CCluster& cluster, Json& model, Report& report) {
    Json networks = Json::array();
    Json interfaces = Json::array();
    try {
        for (const std::wstring& name : ListObjects(cluster, CLUSTER_ENUM_NETWORK, "networks")) {
            networks.push_back(ReadNetwork(cluster, name));
        }
        if (networks.empty()) {
            return;
        }
        for (const std::wstring& name : ListObjects(cluster, CLUSTER_ENUM_NETINTERFACE, "network interfaces")) {
            interfaces.push_back(ReadInterface(cluster, name));
        }
    } catch (const Failure& failure) {
        if (IsOfLostCluster(failure)) {
            throw;
        }
        report.MarkIncomplete(std::string("the networks are left out: ") + failure.what());
        MarkPart(model, "networks", failure.Win32());
        return;
    }
    model["networks"] = std::move(networks);
    model["networkInterfaces"] = std::move(interfaces);
}

void AddQuorum(const CCluster& cluster, Json& model, Json& resources, Report& report) {
    if (resources.empty()) {
        return; // nothing holds it, and not every stand-in for the cluster's API has the call
    }
    QuorumAnswer answer;
    const DWORD code = ReadQuorum(cluster, answer);
    if (code != ERROR_SUCCESS) {
        const Failure failure = Failure::OfCode("cannot read what holds the quorum", code);
        if (IsOfLostCluster(failure)) {
            throw failure;
        }
        report.MarkIncomplete(failure.what() + std::string("; a disk of the cluster's own counts as it"));
        MarkPart(model, "quorum", code);
        for (Json& resource : resources) {
            if (resource.contains("core") && resource.contains("disk")) {
                resource.erase("core");
                resource["quorum"] = true;
            }
        }
        return;
    }
    Json* const holder = answer.resource.empty() ? nullptr : FindResource(resources, answer.resource);
    if (holder != nullptr) {
        holder->erase("core");
        (*holder)["quorum"] = true;
    }
    const bool is2008 =
        model["cluster"].contains("behaviour") && model["cluster"]["behaviour"].value("protocol", 2003) >= 2008;
    const bool isNodeSet = holder != nullptr && holder->at("type") == MajorityNodeSet;
    const bool isMajority = is2008 ? answer.number == NodeMajority || answer.number == MajorityWithWitness : isNodeSet;
    if (is2008 && !isMajority && answer.number != DiskOnly) {
        report.MarkIncomplete("the cluster's quorum is of a kind that is not known (" + std::to_string(answer.number) +
                              "): it counts as held by a disk alone");
        MarkPart(model, "quorum", ERROR_INVALID_DATA);
    }
    if (!isMajority) {
        return;
    }
    model["cluster"]["quorum"] = "majority";
    const std::string witness = WitnessOf(is2008, answer.number, holder == nullptr ? Json::object() : *holder);
    if (!witness.empty()) {
        model["cluster"]["witness"] = witness;
    }
}
