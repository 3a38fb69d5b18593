#include "MainCfText.h"

#include "common/Text.h"
#include "core/ToolSecrets.h"

#include <CfDocument.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace {

using vcssim::AttributeType;

struct Known {
    const char* name;
    AttributeType::Kind kind;
    const char* standard;
};

// What belongs to the configuration of a cluster, a system and a group; the other attributes are states.
const Known ClusterAttributes[] = {
    {"AdministratorGroups", AttributeType::List, ""},
    {"Administrators", AttributeType::List, ""},
    {"ClusterAddress", AttributeType::Text, ""},
    {"ClusterLocation", AttributeType::Text, ""},
    {"ClusterOwner", AttributeType::Text, ""},
    {"CounterInterval", AttributeType::Number, "5"},
    {"Guests", AttributeType::List, ""},
    {"OperatorGroups", AttributeType::List, ""},
    {"Operators", AttributeType::List, ""},
    {"SecureClus", AttributeType::Number, "0"},
    {"UseFence", AttributeType::Text, "NONE"},
    {"UserNames", AttributeType::Association, ""},
};

const Known SystemAttributes[] = {
    {"Capacity", AttributeType::Number, "100"}, {"Frozen", AttributeType::Number, "0"},
    {"Limits", AttributeType::Association, ""}, {"SystemLocation", AttributeType::Text, ""},
    {"SystemOwner", AttributeType::Text, ""},
};

const Known GroupAttributes[] = {
    {"AdministratorGroups", AttributeType::List, ""},
    {"Administrators", AttributeType::List, ""},
    {"Authority", AttributeType::Number, "0"},
    {"AutoFailOver", AttributeType::Number, "1"},
    {"AutoRestart", AttributeType::Number, "1"},
    {"AutoStart", AttributeType::Number, "1"},
    {"AutoStartIfPartial", AttributeType::Number, "1"},
    {"AutoStartList", AttributeType::List, ""},
    {"AutoStartPolicy", AttributeType::Text, "Order"},
    {"ClusterFailOverPolicy", AttributeType::Text, "Manual"},
    {"ClusterList", AttributeType::Association, ""},
    {"Enabled", AttributeType::Number, "1"},
    {"Evacuate", AttributeType::Number, "1"},
    {"FailOverPolicy", AttributeType::Text, "Priority"},
    {"FaultPropagation", AttributeType::Number, "1"},
    {"Frozen", AttributeType::Number, "0"},
    {"GroupOwner", AttributeType::Text, ""},
    {"Guests", AttributeType::List, ""},
    {"Load", AttributeType::Number, "0"},
    {"ManageFaults", AttributeType::Text, "ALL"},
    {"OnlineRetryInterval", AttributeType::Number, "0"},
    {"OnlineRetryLimit", AttributeType::Number, "0"},
    {"OperatorGroups", AttributeType::List, ""},
    {"Operators", AttributeType::List, ""},
    {"Parallel", AttributeType::Number, "0"},
    {"PreOnline", AttributeType::Number, "0"},
    {"PreOnlineTimeout", AttributeType::Number, "300"},
    {"Prerequisites", AttributeType::Association, ""},
    {"PrintTree", AttributeType::Number, "1"},
    {"Priority", AttributeType::Number, "0"},
    {"SystemList", AttributeType::Association, ""},
    {"SystemZones", AttributeType::Association, ""},
};

// What hares -display shows of a resource besides its configuration.
const char* const ResourceStates[] = {
    "ArgListValues", "ConfidenceLevel", "ConfidenceMsg", "ContainerInfo", "Flags", "Group",
    "IState",        "LastOnline",      "MonitorMethod", "Name",          "Path",  "Probed",
    "ResourceInfo",  "Signaled",        "Start",         "State",         "Type"};

const char UserNames[] = "UserNames";

bool IsSecret(const std::string& attribute) {
    return clus::IsSecretAttribute(common::ToUtf16(attribute));
}

std::string WrittenScalar(const std::string& text) {
    return vcssim::IsCfNumber(text) ? text : vcssim::QuotedCf(text);
}

std::string WrittenList(const std::vector<std::string>& parts, bool isAssociation) {
    if (parts.empty()) {
        return "{}";
    }
    std::string written = "{ ";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const bool isValue = isAssociation && i % 2 == 1;
        written += (i == 0 ? "" : isValue ? " = " : ", ");
        written += isValue ? WrittenScalar(parts[i]) : vcssim::QuotedCf(parts[i]);
    }
    if (isAssociation && parts.size() % 2 == 1) {
        written += " = \"\""; // an empty value at the end of a row is not shown
    }
    return written + " }";
}

typedef std::vector<const ShownValue*> Rows;

// The rows of each object.
std::unordered_map<std::string, Rows> ByObject(const std::vector<ShownValue>& rows) {
    std::unordered_map<std::string, Rows> objects;
    for (const ShownValue& row : rows) {
        objects[row.object].push_back(&row);
    }
    return objects;
}

std::string ValueIn(const Rows& rows, const std::string& attribute) {
    const auto found =
        std::find_if(rows.begin(), rows.end(), [&](const ShownValue* row) { return row->attribute == attribute; });
    return found == rows.end() ? std::string() : (*found)->value;
}

class Writer {
public:
    Writer(const ShownConfiguration& shown, const vcssim::TypeTable& types)
        : m_shown(shown), m_types(types), m_resources(ByObject(shown.resources)) {
        for (const std::string& resource : ObjectsIn(shown.resources)) {
            m_members[ValueIn(m_resources.at(resource), "Group")].push_back(resource);
        }
    }

    MainCf Write() {
        WriteCluster();
        for (const std::string& system : ObjectsIn(m_shown.systems)) {
            m_result.text += "\nsystem " + vcssim::QuotedCf(system) + " (\n";
            WriteKnown(m_shown.systems, system, SystemAttributes);
            m_result.text += "\t)\n";
        }
        for (const std::string& group : ObjectsIn(m_shown.groups)) {
            WriteGroup(group);
        }
        for (const std::string& type : m_unknownTypes) {
            m_result.doubts.push_back("the type " + type +
                                      " is not known here: its own attributes, such as time limits, are missing");
        }
        return std::move(m_result);
    }

private:
    void WriteCluster() {
        const std::string name = ShownValueOf(m_shown.cluster, "", "ClusterName");
        if (name.empty()) {
            return;
        }
        m_result.text += "cluster " + vcssim::QuotedCf(name) + " (\n";
        WriteKnown(m_shown.cluster, "", ClusterAttributes);
        m_result.text += "\t)\n";
    }

    void WriteGroup(const std::string& group) {
        m_result.text += "\ngroup " + vcssim::QuotedCf(group) + " (\n";
        WriteKnown(m_shown.groups, group, GroupAttributes);
        m_result.text += "\t)\n";
        for (const std::string& resource : m_members[group]) {
            WriteResource(resource);
        }
        std::string links;
        for (auto link = m_shown.resourceLinks.rbegin(); link != m_shown.resourceLinks.rend(); ++link) {
            if ((*link)[0] == group) {
                links += "\t" + vcssim::QuotedCf((*link)[1]) + " requires " + vcssim::QuotedCf((*link)[2]) + "\n";
            }
        }
        for (const std::vector<std::string>& link : m_shown.groupLinks) {
            if (link[0] == group) {
                links += "\trequires group " + vcssim::QuotedCf(link[1]);
                for (std::size_t i = 2; i < link.size(); ++i) {
                    links += " " + link[i];
                }
                links += "\n";
            }
        }
        m_result.text += (links.empty() ? "" : "\n") + links;
    }

    void WriteResource(const std::string& resource) {
        const Rows& rows = m_resources.at(resource);
        const std::string type = ValueIn(rows, "Type");
        if (m_types.Find(type) == nullptr) {
            m_unknownTypes.insert(type);
        }
        m_result.text += "\n\t" + type + " " + vcssim::QuotedCf(resource) + " (\n";
        for (const ShownValue* const row : rows) {
            const bool isState = std::find(std::begin(ResourceStates), std::end(ResourceStates), row->attribute) !=
                                 std::end(ResourceStates);
            if (!isState && vcssim::IsCfName(row->attribute)) {
                WriteOfType(type, *row);
            }
        }
        m_result.text += "\t\t)\n";
    }

    void WriteOfType(const std::string& type, const ShownValue& row) {
        const std::vector<std::string> parts = row.Parts();
        const AttributeType* const known = m_types.Find(type, row.attribute);
        const bool isGlobal = row.system == "global";
        if (known != nullptr) {
            const bool isStandard = parts == known->standard || (parts.empty() && known->standard == OneEmpty());
            if (!isGlobal || !isStandard) {
                Add("\t\t", row, Written(known->kind, row));
            }
            return;
        }
        if (isGlobal && parts.empty()) {
            return;
        }
        if (parts.size() > 1) {
            m_result.doubts.push_back("the attribute " + row.attribute + " of " + row.object +
                                      " has several parts and is written as a list: the tools show keys and values in "
                                      "the same way");
        }
        Add("\t\t", row, Written(parts.size() > 1 ? AttributeType::List : AttributeType::Text, row));
    }

    template <std::size_t Count>
    void WriteKnown(const std::vector<ShownValue>& rows, const std::string& object, const Known (&attributes)[Count]) {
        for (const ShownValue& row : rows) {
            const auto known = std::find_if(std::begin(attributes), std::end(attributes),
                                            [&](const Known& attribute) { return row.attribute == attribute.name; });
            if (row.object != object || known == std::end(attributes)) {
                continue;
            }
            const bool isGlobal = row.system.empty() || row.system == "global";
            if (!isGlobal || row.value != known->standard) {
                // A capacity or load of several kinds, which newer versions have.
                const bool hasKinds = known->kind == AttributeType::Number && row.value.find('\t') != std::string::npos;
                Add("\t", row, Written(hasKinds ? AttributeType::Association : known->kind, row));
            }
        }
    }

    static std::vector<std::string> OneEmpty() {
        return {std::string()};
    }

    static std::string Written(AttributeType::Kind kind, const ShownValue& row) {
        const bool isList = kind == AttributeType::List || kind == AttributeType::Association;
        return isList ? WrittenList(row.Parts(), kind == AttributeType::Association) : WrittenScalar(row.value);
    }

    void Add(const char* indent, const ShownValue& row, const std::string& written) {
        const bool isGlobal = row.system.empty() || row.system == "global";
        m_result.text +=
            indent + row.attribute + (isGlobal ? "" : " @" + vcssim::QuotedCf(row.system)) + " = " + written + "\n";
    }

    const ShownConfiguration& m_shown;
    const vcssim::TypeTable& m_types;
    std::unordered_map<std::string, Rows> m_resources;
    std::unordered_map<std::string, std::vector<std::string>> m_members; // of each group
    std::set<std::string> m_unknownTypes;
    MainCf m_result;
};

void FindSecrets(const vcssim::CfBlock& block, std::vector<vcssim::CfSpan>& secrets) {
    for (const vcssim::CfAttribute& attribute : block.attributes) {
        const bool isEmpty = attribute.value.isList ? attribute.value.elements.empty() : attribute.value.text.empty();
        if (IsSecret(attribute.name) && !isEmpty) {
            secrets.push_back(attribute.value.span);
        } else if (attribute.name == UserNames) {
            for (const vcssim::CfElement& user : attribute.value.elements) {
                if (user.hasValue && !user.value.text.empty()) {
                    secrets.push_back(user.value.span);
                }
            }
        }
    }
}

} // namespace

MainCf MakeMainCf(const ShownConfiguration& shown, const vcssim::TypeTable& types) {
    return Writer(shown, types).Write();
}

std::string ShownValueOf(const std::vector<ShownValue>& rows, const std::string& object, const std::string& attribute) {
    const auto found = std::find_if(rows.begin(), rows.end(), [&](const ShownValue& row) {
        return row.object == object && row.attribute == attribute;
    });
    return found == rows.end() ? std::string() : found->value;
}

std::vector<std::string> ObjectsIn(const std::vector<ShownValue>& rows) {
    std::vector<std::string> names;
    std::unordered_set<std::string> known;
    for (const ShownValue& row : rows) {
        if (known.insert(row.object).second) {
            names.push_back(row.object);
        }
    }
    return names;
}

std::string MaskedMainCf(const std::string& text, std::size_t& count) {
    const vcssim::CfDocument document(text);
    std::vector<vcssim::CfSpan> secrets;
    for (const vcssim::CfBlock& cluster : document.Clusters()) {
        FindSecrets(cluster, secrets);
    }
    for (const vcssim::CfGroup& group : document.Groups()) {
        for (const vcssim::CfBlock& resource : group.resources) {
            FindSecrets(resource, secrets);
        }
    }
    const std::string mask = "\"" + common::ToUtf8(clus::SecretMask) + "\"";
    std::string masked = text;
    for (auto secret = secrets.rbegin(); secret != secrets.rend(); ++secret) {
        masked.replace(secret->begin, secret->end - secret->begin, mask);
    }
    count = secrets.size();
    return masked;
}
