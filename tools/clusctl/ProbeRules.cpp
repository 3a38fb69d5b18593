// The rules of a probe, and the answers to them.
#include "Probe.h"

#include <winsock2.h>
#include <windows.h>

#include <algorithm>

namespace {

const DWORD LastCodeOfRpc = 1933; // they begin with 1700

} // namespace

const std::vector<ProbeRule>& FailoverRules() {
    static const std::vector<ProbeRule> rules = {
        {"enum-count", "the count behind a name is its length without the terminator"},
        {"enum-short-room", "room without place for the terminator is too small: 234, with the length"},
        {"enum-end", "behind the last item comes 259"},
        {"enum-again", "an index can be asked again, and gives the same"},
        {"enum-order", "several kinds in one enumeration come kind by kind, by rising bits"},
        {"enum-mask-zero", "no kind at all is refused: 87"},
        {"enum-mask-unknown", "an unknown kind is refused: 87"},
        {"group-enum", "the list of a group has lengths, small rooms and an end as that of the cluster"},
        {"group-enum-mask", "kinds that a group's list does not know are passed over"},
        {"resource-enum", "a list of a resource has lengths, small rooms and an end as that of the cluster"},
        {"resource-enum-mask", "of a resource's lists no kind, or an unknown one, is refused: 87"},
        {"resource-enum-length", "a resource's list tells a length to a caller without a buffer: 0"},
        {"possible-owners", "a resource has a possible owner"},
        {"last-error-kept", "a function that returns its code leaves the last-error value alone"},
        {"cluster-name", "the cluster's name is told with its length, and 234 where the room is too small"},
        {"version-short", "a version record of 268 bytes is filled as one of 284"},
        {"open-by-name", "a cluster is opened by its own name and by that of a node"},
        {"open-by-dns-name", "a cluster is opened by the DNS name of a node"},
        {"open-by-address", "a cluster is opened by its IP address"},
        {"open-node-by-dns-name", "a node is not opened by its DNS name: 5042"},
        {"open-ignores-case", "objects are opened by their names in any letter case"},
        {"open-by-id", "a resource is opened by its ID"},
        {"open-unknown", "what is not there: 5007 for a resource, 5013 for a group, 5042 for a node"},
        {"open-empty", "a resource without a name is not there: 5007"},
        {"handle-outlives-cluster", "the handle of a resource is good when that of the cluster is closed"},
        {"state-without-room", "a state is told to a caller who wants no names"},
        {"state-short-room", "room too small for the owner's name: -1, 234, with the length"},
        {"owner-letter-case", "owners are named in the letter case in which the nodes are listed"},
        {"name-as-listed", "GET_NAME gives the name in the letter case of the list"},
        {"id-form", "an ID is 36 characters in small letters without braces"},
        {"control-size", "without room a control answers 234 and the size, with the terminator of a text"},
        {"control-unsupported", "a control that a type does not know answers 1"},
        {"class-info", "the sizes of class, flags and characteristics are refused as other sizes are (234), and an IP "
                       "Address has class 0"},
        {"flags-size", "flags and characteristics have 4 bytes each"},
        {"core-flag", "resources of the cluster itself are marked as core"},
        {"property-list", "a property list is a count, and each property with an end mark of its own"},
        {"property-list-empty", "a list without properties is a count of 0 alone"},
        {"expand-text", "behind a text with variables stands the same text expanded"},
        {"find-ignores-case", "ResUtilFindSzProperty and ResUtilFindDwordProperty take a name in any letter case"},
        {"find-missing", "they answer 2 for a property that is not there"},
        {"find-other-kind", "they answer 13 for a property of another kind"},
        {"type-ignores-case", "ResUtilResourceTypesEqual compares types without letter case"},
        {"dependency-missing", "ResUtilGetResourceDependency has 5007 as last error when there is none of the type"},
        {"disk-list", "disk information begins with signature or GUID, and ends with one end mark"},
        {"disk-partition", "the record of a partition has 1120 bytes, and a device without a backslash"},
        {"network-name", "the network name is the private property Name, letter for letter"},
        {"delete-online", "a resource that is online is not deleted: 5019"},
        {"offline-failed", "a failed resource is not taken offline: 5038"},
        {"down-owners", "no group stays with a node that is down, or joins"},
        {"failures", "what becomes of a resource that fails"},
        {"failovers-used-up", "what becomes of a group that may not fail over again"},
        {"required-dependencies", "a resource comes online only with what its type requires"},
        {"lost-code", "calls on open handles give 1722 while the service does not run"},
        {"lost-handles", "open handles are good again when the service has started again"},
    };
    return rules;
}

const std::vector<ProbeRule>& VcsRules() {
    static const std::vector<ProbeRule> rules = {
        {"vcs-list-header", "a list has no header line"},
        {"vcs-list-separator", "two tabs stand between the columns of a list"},
        {"vcs-system-list", "the list of the systems is one name a line"},
        {"vcs-condition", "a list with Attribute=Value holds those with this value"},
        {"vcs-condition-unequal", "a list with Attribute!=Value holds all others"},
        {"vcs-condition-prefix", "a list with Attribute=~Text holds those whose value begins with the text"},
        {"vcs-no-match", "a list in which nothing matches prints nothing, exit code 0"},
        {"vcs-line-end", "lines end with CR LF"},
        {"vcs-display-header", "a display has one header line: Resource, Attribute, System and Value behind a #"},
        {"vcs-display-widths", "columns are as wide as the longest name, 21 and 10, and a blank"},
        {"vcs-group-display", "the header of a display of groups names Group, Attribute, System and Value"},
        {"vcs-system-display", "the header of a display of systems names System, Attribute and Value"},
        {"vcs-global", "attributes that are the same on all systems show \"global\" as the system"},
        {"vcs-local", "attributes that are not show one row for each system, in the order of the list"},
        {"vcs-parts", "keys and values of an association are separated by tabs"},
        {"vcs-empty-value", "the row of an empty value has blanks at its end"},
        {"vcs-group-states", "states of groups stand between bars"},
        {"vcs-one-state", "-state of a group on one system prints the state alone"},
        {"vcs-resource-states", "states of resources stand without bars"},
        {"vcs-value", "-value prints the value alone"},
        {"vcs-group-value", "so it does for groups"},
        {"vcs-system-value", "so it does for systems"},
        {"vcs-dependencies",
         "-dep prints a header of Group, Parent and Child behind a #, or message V-16-1-50034 without any"},
        {"vcs-dependency-order", "-dep of a resource has first the rows in which it is the parent"},
        {"vcs-group-dependencies",
         "-dep of groups prints a header of Parent, Child and Relationship behind a #, or message V-16-1-50035"},
        {"vcs-unknown-group", "a group that is not there: message V-16-1-40131, exit code 1"},
        {"vcs-unknown-group-display", "the same of a display: message V-16-1-10133"},
        {"vcs-unknown-resource", "a resource that is not there: message V-16-1-40130, exit code 1"},
        {"vcs-unknown-parent", "the same of its dependencies: message V-16-1-10260"},
        {"vcs-unknown-system", "a system that is not there: message V-16-1-10357, exit code 1"},
        {"vcs-message-stream", "messages come on standard error"},
        {"vcs-cluster-state", "haclus -state prints a table"},
        {"vcs-read-only", "haclus -value ReadOnly prints 1, or 0 while the configuration is open"},
        {"vcs-usage", "haconf -help prints its usage, exit code 0"},
        {"vcs-down-systems", "no group is online on a system that does not run"},
        {"vcs-summary", "hastatus -sum has sections behind those of systems and groups"},
        {"vcs-encrypt", "what vcsencrypt prints"},
        {"vcs-unfreeze", "whether faults of a frozen group are acted on when it is unfrozen"},
        {"vcs-slow-offline", "what becomes of a resource that does not go offline in time"},
        {"vcs-scope", "whether hares -modify makes an attribute local or global"},
        {"vcs-registration", "whether hares -add ends in message 10806"},
        {"vcs-node-state", "what is refused while the node leaves, or waits for its configuration"},
        {"vcs-engine", "what the tools print while the engine does not run, or starts"},
    };
    return rules;
}

bool IsRefusal(unsigned long code) {
    switch (code) {
    case ERROR_ACCESS_DENIED:
    case ERROR_INVALID_HANDLE: // of the cluster's service: it was started anew
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
    case ERROR_NOT_READY:
    case ERROR_SHARING_PAUSED:
    case ERROR_BUSY:
    case ERROR_LOGON_FAILURE:
    case ERROR_SERVICE_NOT_ACTIVE:
    case ERROR_SERVICE_DOES_NOT_EXIST:
    case ERROR_TIMEOUT:
    case WAIT_TIMEOUT:
    case ERROR_RESOURCE_NOT_ONLINE:
    case ERROR_RESOURCE_NOT_AVAILABLE:
    case ERROR_GROUP_NOT_AVAILABLE:
    case ERROR_CLUSTER_NODE_DOWN:
    case ERROR_CLUSTER_NODE_NOT_MEMBER:
    case ERROR_CLUSTER_NODE_PAUSED:
        return true;
    default:
        return code >= RPC_S_INVALID_STRING_BINDING && code <= LastCodeOfRpc;
    }
}

std::string CodeText(unsigned long code) {
    return "code " + std::to_string(code);
}

void ProbeAnswers::SawCode(const char* rule, unsigned long code, unsigned long expected, const std::wstring& object) {
    if (code == expected || !IsRefusal(code)) {
        Saw(rule, code == expected, CodeText(code), object);
    }
}

void ProbeAnswers::Saw(const char* rule, bool isAsSimulated, const std::string& seen, const std::wstring& object) {
    const auto known = m_answers.find(rule);
    if (known == m_answers.end() || (known->second.isAsSimulated && !isAsSimulated)) {
        m_answers[rule] = {isAsSimulated, seen, object};
    }
}

Json ProbeAnswers::Records(bool showsNames) const {
    Json records = Json::array();
    for (const ProbeRule& rule : m_rules) {
        const auto found = m_answers.find(rule.id);
        Json record;
        record["rule"] = rule.id;
        record["says"] = rule.says;
        record["answer"] = AnswerTo(rule.id);
        record["seen"] = found == m_answers.end() ? Json() : Json(found->second.seen);
        if (showsNames) {
            record["object"] = found == m_answers.end() ? Json() : TextOrNull(found->second.object);
        }
        records.push_back(std::move(record));
    }
    return records;
}

const char* ProbeAnswers::AnswerTo(const std::string& rule) const {
    const auto found = m_answers.find(rule);
    return found == m_answers.end() ? "not answerable here" : found->second.isAsSimulated ? "as simulated" : "differs";
}

size_t ProbeAnswers::CountDiffering() const {
    return static_cast<size_t>(std::count_if(m_answers.begin(), m_answers.end(),
                                             [](const auto& answer) { return !answer.second.isAsSimulated; }));
}

size_t ProbeAnswers::CountAnswered() const {
    return m_answers.size();
}
