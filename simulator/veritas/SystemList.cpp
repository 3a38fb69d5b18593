// hagrp -modify of the SystemList: which systems a group has, in their order and with their numbers.
#include "Modify.h"

#include <algorithm>
#include <cstdlib>

namespace vcssim {

namespace {

struct NumberedSystem {
    std::string system;
    std::string number;
};

typedef std::vector<NumberedSystem> SystemList;

SystemList ListOf(const Cluster& cluster, const CfGroup& group) {
    SystemList list;
    const std::vector<std::string> parts = cluster.GroupAttribute(group, "SystemList").front().parts;
    for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
        list.push_back({parts[i], parts[i + 1]});
    }
    return list;
}

// A number may be left out.
SystemList GivenBy(const std::vector<std::string>& values) {
    SystemList given;
    for (const std::string& value : values) {
        if (!given.empty() && given.back().number.empty() && IsCfNumber(value)) {
            given.back().number = value;
        } else if (!value.empty()) {
            given.push_back({value, ""});
        }
    }
    return given;
}

SystemList::iterator Find(SystemList& list, const std::string& system) {
    return std::find_if(list.begin(), list.end(), [&](const NumberedSystem& entry) { return entry.system == system; });
}

std::string NextNumber(const SystemList& list) {
    return list.empty() ? "0" : std::to_string(std::strtoll(list.back().number.c_str(), nullptr, 10) + 1);
}

std::string Written(const SystemList& list) {
    std::string written;
    for (const NumberedSystem& entry : list) {
        written += written.empty() ? "{ " : ", ";
        written += QuotedCf(entry.system) + " = " + (IsCfNumber(entry.number) ? entry.number : QuotedCf(entry.number));
    }
    return written.empty() ? "{}" : written + " }";
}

class SystemListChange {
public:
    SystemListChange(Context& context, const ModifyRequest& request, const CfGroup& group)
        : m_context(context), m_request(request), m_group(group), m_before(ListOf(context.cluster, group)) {
    }

    void Run() {
        SystemList list;
        if (m_request.action == ModifyRequest::Add || m_request.action == ModifyRequest::Update ||
            m_request.action == ModifyRequest::Delete) {
            list = m_before;
        }
        const bool done = m_request.action == ModifyRequest::Delete ? Remove(list) : Put(list);
        if (done && CheckRemoved(list)) {
            m_context.cluster.configuration.SetGroupAttribute(m_request.resource, "SystemList", Written(list));
        }
    }

private:
    bool Remove(SystemList& list) {
        for (const std::string& system : m_request.values) {
            const auto found = Find(list, system);
            if (found == list.end()) {
                m_context.output.Warning("10566", "Entry not found in attribute keylist.");
                return false;
            }
            list.erase(found);
        }
        return true;
    }

    bool Put(SystemList& list) {
        for (const NumberedSystem& entry : GivenBy(m_request.values)) {
            if (m_request.action == ModifyRequest::Update && entry.number.empty()) {
                m_context.output.Simulated("99045", "Attribute SystemList takes keys with values");
                return false;
            }
            const auto found = Find(list, entry.system);
            if (found == list.end()) {
                if (!CheckNew(entry.system)) {
                    return false;
                }
                const std::string number = entry.number.empty() ? NextNumber(list) : entry.number;
                list.push_back({entry.system, number});
            } else if (m_request.action == ModifyRequest::Update) {
                found->number = entry.number;
            } else {
                m_context.output.Simulated("10563", "Entry already in attribute keylist");
                return false;
            }
        }
        return true;
    }

    bool CheckNew(const std::string& system) {
        const Cluster& cluster = m_context.cluster;
        if (!cluster.HasSystem(system)) {
            NoSuchSystem(m_context.output, "10200", system);
            return false;
        }
        const auto state = cluster.state.systems.find(system);
        if (state != cluster.state.systems.end() && state->second != "RUNNING" &&
            Find(m_before, system) == m_before.end()) {
            m_context.output.Simulated("10180", "System " + system + " is not available");
            return false;
        }
        return true;
    }

    // What is online on a system would be lost from sight with it.
    bool CheckRemoved(SystemList& list) {
        for (const NumberedSystem& entry : m_before) {
            const std::string state = m_context.cluster.GroupState(m_group, entry.system);
            if (Find(list, entry.system) == list.end() && state != "OFFLINE" && state != "OFFLINE|FAULTED") {
                m_context.output.Simulated("99070",
                                           "Group " + m_group.block.name + " is not offline on system " + entry.system);
                return false;
            }
        }
        return true;
    }

    Context& m_context;
    const ModifyRequest& m_request;
    const CfGroup& m_group;
    SystemList m_before;
};

} // namespace

void RunHagrpModify(Context& context, Arguments& arguments) {
    const ModifyRequest request = TakeModifyRequest(arguments);
    if (!request.system.empty()) {
        throw UsageError();
    }
    if (!CheckWritable(context)) {
        return;
    }
    const CfGroup* const group = context.cluster.configuration.GroupNamed(request.resource);
    if (!group) {
        context.output.Simulated("12130", "Group " + request.resource + " does not exist in the local cluster");
    } else if (request.attribute != "SystemList") {
        context.output.Simulated("99061", "Not simulated: hagrp -modify of attribute " + request.attribute);
    } else {
        SystemListChange(context, request, *group).Run();
    }
}

} // namespace vcssim
