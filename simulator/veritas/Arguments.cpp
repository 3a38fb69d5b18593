// The arguments of a tool, taken one after the other.
#include "Tools.h"

#include <algorithm>

namespace vcssim {

std::string Arguments::Next() {
    if (m_arguments.empty()) {
        throw UsageError();
    }
    std::string next = m_arguments.front();
    m_arguments.erase(m_arguments.begin());
    return next;
}

bool Arguments::TakeFlag(const std::string& flag) {
    const auto found = std::find(m_arguments.begin(), m_arguments.end(), flag);
    if (found == m_arguments.end()) {
        return false;
    }
    m_arguments.erase(found);
    return true;
}

bool Arguments::TakeValue(const std::string& option, std::string& value) {
    const auto found = std::find(m_arguments.begin(), m_arguments.end(), option);
    if (found == m_arguments.end()) {
        return false;
    }
    if (found + 1 == m_arguments.end()) {
        throw UsageError();
    }
    value = found[1];
    m_arguments.erase(found, found + 2);
    return true;
}

void Arguments::NeedEnd() const {
    if (!m_arguments.empty()) {
        throw UsageError();
    }
}

void NoSuchResource(Output& output, const std::string& resource) {
    output.Simulated("10260", "Resource " + resource + " does not exist in the local cluster");
}

void NoSuchSystem(Output& output, const char* number, const std::string& system) {
    output.Simulated(number, "System " + system + " does not exist in the local cluster");
}

bool CheckWritable(Context& context) {
    if (!context.cluster.state.writable) {
        context.output.Warning("11309", "Configuration must be ReadWrite : Use haconf -makerw");
        return false;
    }
    return true;
}

const char* UsageOf(const std::string& tool) {
    if (tool == "haconf") {
        return "haconf -makerw | -dump [-makero]";
    }
    if (tool == "hasys") {
        return "hasys -list [CONDITION...] | -state [SYSTEM] | -display [SYSTEM...] [-attribute ATTRIBUTE...] "
               "| -value SYSTEM ATTRIBUTE | -freeze [-persistent] [-evacuate] SYSTEM | -unfreeze [-persistent] SYSTEM";
    }
    if (tool == "hagrp") {
        return "hagrp -list [CONDITION...] | -state [GROUP] [-sys SYSTEM] | -display [GROUP...] [-attribute "
               "ATTRIBUTE...] | -value GROUP ATTRIBUTE [SYSTEM] | -dep [GROUP] | -add GROUP | -delete GROUP | -link "
               "PARENT CHILD online|offline local|global|remote [soft|firm|hard] | -unlink PARENT CHILD | -modify "
               "GROUP SystemList "
               "[-add | "
               "-update | -delete] VALUE... | -modify GROUP SystemList -delete -keys | -online GROUP -sys SYSTEM | "
               "-offline GROUP -sys SYSTEM | -switch GROUP "
               "-to SYSTEM | -switch GROUP -any | -clear GROUP [-sys SYSTEM] | -freeze GROUP [-persistent] | -unfreeze "
               "GROUP [-persistent]";
    }
    if (tool == "hares") {
        return "hares -list [CONDITION...] | -display [RESOURCE...] [-attribute ATTRIBUTE...] | -value RESOURCE "
               "ATTRIBUTE [SYSTEM] | -dep [RESOURCE...] | -state [RESOURCE] [-sys SYSTEM] | -add RESOURCE TYPE GROUP "
               "| -modify RESOURCE ATTRIBUTE [-add | -update | -delete] VALUE... [-sys SYSTEM] | -modify RESOURCE "
               "ATTRIBUTE -delete -keys [-sys SYSTEM] | -local RESOURCE ATTRIBUTE | -global RESOURCE ATTRIBUTE "
               "VALUE... | -override RESOURCE ATTRIBUTE | -link PARENT CHILD | -unlink PARENT CHILD | -delete RESOURCE "
               "| -online RESOURCE -sys SYSTEM | -offline [-ignoreparent] RESOURCE -sys SYSTEM | -clear RESOURCE "
               "[-sys SYSTEM] | -probe RESOURCE -sys SYSTEM";
    }
    if (tool == "haclus") {
        return "haclus -display | -state [CLUSTER] | -value ATTRIBUTE | -wait ATTRIBUTE VALUE [-time SECONDS]";
    }
    if (tool == "hastatus") {
        return "hastatus -sum | -summary";
    }
    if (tool == "haagent") {
        return "haagent -display AGENT";
    }
    if (tool == "hacf") {
        return "hacf -verify FOLDER";
    }
    if (tool == "vcssim") {
        return "vcssim system-down SYSTEM | system-exit [-evacuate] SYSTEM | system-up SYSTEM | fault RESOURCE SYSTEM "
               "| recover RESOURCE SYSTEM | move GROUP SYSTEM | vanish RESOURCE | appear GROUP RESOURCE | engine-stop "
               "| engine-start | clock [SECONDS] | wait SECONDS | state | timeline";
    }
    return "vcsencrypt -agent TEXT | -vcs TEXT";
}

} // namespace vcssim
