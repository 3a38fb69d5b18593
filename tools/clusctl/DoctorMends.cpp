#include "DoctorMends.h"

#include "Text.h"
#include "ThisComputer.h"

#include "common/Text.h"
#include "core/VeritasNames.h"

#include <algorithm>
#include <cstring>

using namespace picture;

namespace {

const char AnySystem[] = "SYSTEM";

struct KnownMend {
    const char* code;
    const char* text; // '@' stands for the object, '%' for the system that it is about, or for what it lacks
    const char* ask;
};

const KnownMend FailoverMends[] = {
    {"group-failed", "mend what failed, then cluster group @ /online", "clusctl tree @"},
    {"group-offline", "cluster group @ /online", ""},
    {"group-unread", "", "clusctl groups @"},
    {"network-name-missing", "add one to the group", "clusctl resources --group @"},
    {"node-unread", "", "clusctl nodes"},
    {"product-offline", "cluster res @ /online", ""},
    {"resource-failed", "look why it failed, then cluster res @ /online", ""},
    {"resource-offline", "cluster res @ /online", ""},
    {"resource-pending", "wait", "clusctl status"},
    {"product-pending", "wait", "clusctl status"},
    {"resource-unread", "", "clusctl resources @"},
    {"server-part-offline", "cluster res @ /online", ""},
    {"store-dependency-missing", "cluster res @ /adddep:%", ""},
};

const KnownMend VcsMends[] = {
    {"group-unread", "", "clusctl vcs groups"},
    {"node-unread", "", "clusctl vcs systems"},
    {"resource-pending", "wait", "clusctl status"},
    {"resource-offline", "hares -online @ -sys %", ""},
    {"server-part-offline", "hares -online @ -sys %", ""},
    {"vcs-group-faulted", "mend what failed, then hagrp -clear @", ""},
    {"vcs-group-faulted-elsewhere", "mend what failed, then hagrp -clear @ -sys %", ""},
    {"vcs-group-disabled", "enable it on % again", "hagrp -display @ -attribute Enabled"},
    {"vcs-product-missing", "mend what is told of the group, and ask the doctor again", "clusctl vcs servers @"},
    {"vcs-service-missing", "mend what is told of the group, and ask the doctor again", "clusctl vcs servers @"},
    {"vcs-store-missing", "create the Information Store's resource with Exchange's own set-up",
     "clusctl vcs resources --where Group=@"},
    {"vcs-resource-offline", "clusctl vcs resource online @ %", ""},
    {"vcs-group-offline", "hagrp -online @ -sys %", ""},
    {"vcs-resource-faulted", "mend what failed, then hares -clear @", ""},
    {"vcs-resource-faulted-elsewhere", "mend what failed, then hares -clear @ -sys %", ""},
    {"vcs-resource-not-probed", "hares -probe @ -sys %", ""},
    {"vcs-system-down", "hastart, on @", ""},
};

// The names may hold these signs.
std::string Filled(const std::string& text, const std::string& object, const std::string& other) {
    std::string filled;
    for (const char c : text) {
        filled += c == '@' ? object : c == '%' ? other : std::string(1, c);
    }
    return filled;
}

template <size_t Size>
Mend MendIn(const KnownMend (&mends)[Size], const Problem& problem, const std::string& name, const std::string& other) {
    for (const KnownMend& known : mends) {
        if (std::strcmp(known.code, problem.code) == 0) {
            Mend mend = {known.text, known.ask};
            for (std::string* text : {&mend.text, &mend.ask}) {
                *text = Filled(*text, name, other);
            }
            return mend;
        }
    }
    return {std::string(), "clusctl status"};
}

bool Says(const StateOnNode& state, const char* word) {
    return state.state.find(word) != std::string::npos;
}

// Empty when no state says that word.
std::string SystemThatSays(const std::vector<StateOnNode>& states, const char* word) {
    const auto found =
        std::find_if(states.begin(), states.end(), [word](const StateOnNode& state) { return Says(state, word); });
    return found == states.end() ? std::string() : Printable(found->node);
}

// The system that a problem is about.
std::string SystemOf(const Problem& problem, const PictureIndex& cluster) {
    if (!problem.node.empty()) {
        return Printable(problem.node);
    }
    const Group* const group = cluster.GroupNamed(problem.group);
    if (group == nullptr) {
        return AnySystem;
    }
    const Resource* const resource = problem.isOfGroup ? nullptr : cluster.ResourceNamed(problem.object);
    const std::string unknown = resource == nullptr ? std::string() : SystemThatSays(resource->states, "UNKNOWN");
    return !unknown.empty()      ? unknown
           : group->node.empty() ? SystemToComeOnline(group->states)
                                 : Printable(group->node);
}

// Somebody may have frozen it in both ways.
std::string UnfreezeCommands(const Group* group, const std::string& name) {
    std::vector<std::string> commands;
    if (group == nullptr || group->isFrozenForNow) {
        commands.push_back("hagrp -unfreeze " + name);
    }
    if (group != nullptr && group->isFrozenPersistently) {
        commands.push_back(WhileWritable("hagrp -unfreeze " + name + " -persistent"));
    }
    return InTurn(commands);
}

const Resource* FirstOf(const std::vector<const Resource*>& members, Role role) {
    const auto found =
        std::find_if(members.begin(), members.end(), [role](const Resource* member) { return member->role == role; });
    return found == members.end() ? nullptr : *found;
}

// The product's resources rest on the store, as the library links them, and on the network name, as the store should.
std::string OrderCommands(const PictureIndex& cluster, const std::string& group) {
    const std::vector<const Resource*>& members = cluster.MembersOf(group);
    const auto isHost = [](const Resource& resource) {
        return resource.service == common::ToUtf8(clus::veritas::HostService);
    };
    const Resource* product = FirstOf(members, Role::Product);
    std::set<std::string> base;
    for (const Resource* const member : members) {
        if (member->role == Role::Product) {
            const bool isFirstHost = isHost(*member) && !isHost(*product);
            product = isFirstHost ? member : product;
            base.merge(cluster.BaseOf(*member));
        }
    }
    std::vector<std::string> commands;
    for (const Role role : {Role::Store, Role::NetworkName}) {
        const Resource* const part = FirstOf(members, role);
        if (product != nullptr && part != nullptr && base.count(part->name) == 0) {
            commands.push_back(LinkCommand(Printable(product->name), Printable(part->name)));
            base.insert(part->name);
            base.merge(cluster.BaseOf(*part));
        }
    }
    return InTurn(commands);
}

Mend VcsMendOf(const Problem& problem, const PictureIndex& cluster) {
    const std::string code = problem.code;
    const std::string name = Printable(problem.object);
    if (code == "vcs-group-frozen") {
        return {UnfreezeCommands(cluster.GroupNamed(problem.object), name), std::string()};
    }
    if (code == "vcs-service-order") {
        return {OrderCommands(cluster, problem.object), std::string()};
    }
    if (code == "vcs-lanman-missing") {
        return {LanmanCommand(name), std::string()};
    }
    if (code == "vcs-resource-disabled") {
        return {WhileWritable("hares -modify " + name + " Enabled 1"), std::string()};
    }
    return MendIn(VcsMends, problem, name, SystemOf(problem, cluster));
}

} // namespace

std::string InTurn(const std::vector<std::string>& commands) {
    std::string text;
    for (const std::string& command : commands) {
        text += (text.empty() ? "" : " && ") + command;
    }
    return text;
}

std::string WhileWritable(const std::string& command) {
    return InTurn({"clusctl vcs mode rw", command, "clusctl vcs mode ro"});
}

std::string LinkCommand(const std::string& name, const std::string& child) {
    return "clusctl vcs resource link " + name + " " + child + " --rw";
}

std::string LanmanCommand(const std::string& group) {
    return "clusctl vcs resource add " + group + "-Lanman Lanman " + group +
           " --set VirtualName=NAME --set Enabled=1 --rw";
}

std::string SystemToComeOnline(const std::vector<StateOnNode>& states) {
    const StateOnNode* chosen = nullptr;
    for (const StateOnNode& state : states) {
        const bool isBetter =
            chosen == nullptr || Says(*chosen, "FAULTED") || IsThisComputer(common::ToUtf16(state.node));
        chosen = isBetter && !Says(state, "FAULTED") ? &state : chosen;
    }
    return chosen != nullptr ? Printable(chosen->node) : states.empty() ? AnySystem : Printable(states.front().node);
}

Mend MendOf(const Problem& problem, const PictureIndex& cluster) {
    if (cluster.Cluster().kind == Kind::Vcs) {
        return VcsMendOf(problem, cluster);
    }
    const Resource* const store = FirstOf(cluster.MembersOf(problem.group), Role::Store);
    return MendIn(FailoverMends, problem, Quoted(problem.object),
                  store == nullptr ? "INFORMATION-STORE" : Quoted(store->name));
}
