// The rules of a probe, and the answers to them.
#include "Probe.h"

#include <algorithm>

const std::vector<ProbeRule>& FailoverRules() {
    static const std::vector<ProbeRule> rules = {
        {"enum-count", "the count behind a name is its length without the terminator"},
        {"enum-short-room", "room without place for the terminator is too small: 234, with the length"},
        {"enum-end", "behind the last item comes 259"},
        {"enum-again", "an index can be asked again, and gives the same"},
        {"enum-order", "several kinds in one enumeration come kind by kind, by rising bits"},
        {"enum-mask-zero", "no kind at all is refused: 87"},
        {"enum-mask-unknown", "an unknown kind is refused: 87"},
        {"last-error-kept", "a function that returns its code leaves the last-error value alone"},
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
        {"class-info", "the size of the class is refused as other sizes are (234), and an IP Address has class 0"},
        {"property-list", "a property list is a count, and each property with an end mark of its own"},
        {"property-list-empty", "a list without properties is a count of 0 alone"},
        {"disk-list", "disk information begins with signature or GUID, and ends with one end mark"},
        {"disk-partition", "the record of a partition has 1120 bytes, and a device without a backslash"},
        {"network-name", "the network name is the private property Name, letter for letter"},
        {"delete-online", "a resource that is online is not deleted: 5019"},
        {"offline-failed", "a failed resource is not taken offline: 5038"},
        {"down-owners", "no group stays with a node that is down"},
        {"failures", "what becomes of a resource that fails"},
        {"failovers-used-up", "what becomes of a group that may not fail over again"},
        {"required-dependencies", "a resource comes online only with what its type requires"},
    };
    return rules;
}

const std::vector<ProbeRule>& VcsRules() {
    static const std::vector<ProbeRule> rules = {
        {"vcs-list-header", "a list has no header line"},
        {"vcs-list-separator", "two tabs stand between the columns of a list"},
        {"vcs-no-match", "a list in which nothing matches prints nothing, exit code 0"},
        {"vcs-line-end", "lines end with CR LF"},
        {"vcs-display-header", "a display has one header line: Resource, Attribute, System and Value behind a #"},
        {"vcs-display-widths", "columns are as wide as the longest name, 21 and 10, and a blank"},
        {"vcs-global", "attributes that are the same on all systems show \"global\" as the system"},
        {"vcs-empty-value", "the row of an empty value has blanks at its end"},
        {"vcs-group-states", "states of groups stand between bars"},
        {"vcs-resource-states", "states of resources stand without bars"},
        {"vcs-value", "-value prints the value alone"},
        {"vcs-dependencies",
         "-dep prints a header of Group, Parent and Child behind a #, or message V-16-1-50034 without any"},
        {"vcs-unknown-group", "a group that is not there: message V-16-1-40131, exit code 1"},
        {"vcs-unknown-resource", "a resource that is not there: message V-16-1-40130, exit code 1"},
        {"vcs-message-stream", "messages come on standard error"},
        {"vcs-cluster-state", "haclus -state prints a table"},
        {"vcs-summary", "hastatus -sum has sections behind those of systems and groups"},
        {"vcs-encrypt", "what vcsencrypt prints"},
        {"vcs-unfreeze", "whether faults of a frozen group are acted on when it is unfrozen"},
        {"vcs-slow-offline", "what becomes of a resource that does not go offline in time"},
    };
    return rules;
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
        record["answer"] = found == m_answers.end()      ? "not answerable here"
                           : found->second.isAsSimulated ? "as simulated"
                                                         : "differs";
        record["seen"] = found == m_answers.end() ? Json() : Json(found->second.seen);
        if (showsNames) {
            record["object"] = found == m_answers.end() ? Json() : TextOrNull(found->second.object);
        }
        records.push_back(std::move(record));
    }
    return records;
}

size_t ProbeAnswers::CountDiffering() const {
    return static_cast<size_t>(std::count_if(m_answers.begin(), m_answers.end(),
                                             [](const auto& answer) { return !answer.second.isAsSimulated; }));
}

size_t ProbeAnswers::CountAnswered() const {
    return m_answers.size();
}
