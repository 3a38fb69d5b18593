#include "TypeTable.h"

#include "CfLexer.h"

#include <algorithm>

namespace vcssim {

namespace {

// "Name", "Name=default", "#Name=5" for a number, "[]Name" for a vector, "{}Name" for an association.
struct KnownType {
    const char* name;
    bool persistent;
    bool complete;
    std::vector<const char*> attributes;
};

const std::vector<KnownType>& KnownTypes() {
    static const std::vector<KnownType> types = {
        {"ExchProtocol", false, false, {"Service", "LanmanResName"}},
        {"ExchService",
         false,
         false,
         {"Service", "LanmanResName", "#DetailMonitor=0", "[]DBList", "#FaultOnMountFailure=0"}},
        {"GenericService",
         false,
         true,
         {"ServiceName", "#DelayAfterOnline=10", "#DelayAfterOffline=10", "UserAccount", "Password", "Domain",
          "[]service_arg", "LanmanResName", "#UseVirtualName=0"}},
        {"IP", false, false, {"Address", "SubNetMask", "MACAddress"}},
        {"Lanman",
         false,
         true,
         {"VirtualName", "IPResName", "#MultiNet=0", "#ADUpdateRequired=0", "#ADCriticalForOnline=0", "ADContainer",
          "#DNSUpdateRequired=0", "#DNSRefreshInterval=0", "{}AdditionalDNSServers"}},
        {"MountV",
         false,
         true,
         {"MountPath", "VolumeName", "VMDGResName", "ForceUnmount=READ_ONLY", "#AutoFSClean=1", "#ListApplications=1",
          "#PurgeStaleMountPoints=1", "#CheckFSAccess=0", "#ForFireDrill=0", "#BlockMountPointAccess=0",
          "MountResName"}},
        {"NIC", true, false, {"MACAddress"}},
        {"RegRep",
         false,
         true,
         {"MountResName", "ReplicationDirectory=\\REGREP\\DEFAULT", "{}Keys", "[]ExcludeKeys", "#ForceRestore=0",
          "#ListOpenKeys=1", "#RestoreLocally=0", "#DebugMonitor=1"}},
        {"ServiceMonitor",
         false,
         true,
         {"#MonitorService=1", "ServiceOrScriptName", "#MonitorProgTimeout=30", "UserAccount", "Password", "Domain"}},
        {"VMDg", false, false, {"DiskGroupName", "DGGuid"}},
    };
    return types;
}

// What all resources have beside their type's own attributes.
const char* const Common[] = {"#AutoStart=1", "#Critical=1", "#Enabled=1", "#MonitorOnly=0", "ResourceOwner"};

void AddAttribute(std::map<std::string, AttributeType>& attributes, std::string text) {
    AttributeType attribute;
    if (text[0] == '#') {
        attribute.kind = AttributeType::Number;
        text.erase(0, 1);
    } else if (text[0] == '[' || text[0] == '{') {
        attribute.kind = text[0] == '[' ? AttributeType::List : AttributeType::Association;
        attribute.isVector = text[0] == '[';
        text.erase(0, 2);
    }
    const std::size_t equals = text.find('=');
    if (attribute.kind == AttributeType::Text || attribute.kind == AttributeType::Number) {
        attribute.standard.push_back(equals == std::string::npos ? "" : text.substr(equals + 1));
    }
    attributes[text.substr(0, equals)] = attribute;
}

const std::map<std::string, AttributeType>& CommonAttributes() {
    static const std::map<std::string, AttributeType> common = [] {
        std::map<std::string, AttributeType> attributes;
        for (const char* text : Common) {
            AddAttribute(attributes, text);
        }
        return attributes;
    }();
    return common;
}

class TypesReader {
public:
    TypesReader(const std::string& text, std::map<std::string, ResourceType>& types)
        : m_tokens(SplitCf(text)), m_types(types) {
    }

    void Read() {
        while (Here().kind != CfToken::End) {
            if (!Here().IsWord("type")) {
                Expected("'type'");
            }
            ++m_next;
            const std::string name = Name("the name of the type");
            ResourceType type;
            type.complete = true;
            Need('(');
            while (!Here().IsSymbol(')')) {
                ReadAttribute(type);
            }
            ++m_next;
            m_types[name] = type;
        }
    }

private:
    const CfToken& Here() const {
        return m_tokens[m_next];
    }

    [[noreturn]] void Expected(const std::string& what) const {
        throw CfError(Here().line, "expected " + what + ", found " + Here().Shown());
    }

    std::string Name(const std::string& what) {
        if (!Here().IsName()) {
            Expected(what);
        }
        return m_tokens[m_next++].text;
    }

    void Need(char symbol) {
        if (!Here().IsSymbol(symbol)) {
            Expected(std::string("'") + symbol + "'");
        }
        ++m_next;
    }

    // [static] [temp] KIND NAME[[]|{}] [= VALUE]
    void ReadAttribute(ResourceType& type) {
        AttributeType attribute;
        std::string word = Name("an attribute or ')'");
        const bool isStatic = word == "static";
        while (word == "static" || word == "temp") {
            word = Name("the kind of an attribute");
        }
        if (word == "keylist") {
            attribute.kind = AttributeType::List;
        } else if (word == "int" || word == "boolean") {
            attribute.kind = AttributeType::Number;
        } else if (word != "str" && word != "i18nstr") {
            throw CfError(Here().line, "expected str, i18nstr, int, boolean or keylist, found '" + word + "'");
        }
        std::string name = Name("the name of an attribute");
        if (name.size() > 2 && name.compare(name.size() - 2, 2, "[]") == 0) {
            name.resize(name.size() - 2);
            attribute.kind = AttributeType::List;
            attribute.isVector = true;
        } else if (Here().IsSymbol('{')) {
            ++m_next;
            Need('}');
            attribute.kind = AttributeType::Association;
        }
        if (Here().IsSymbol('=')) {
            ++m_next;
            ReadDefault(attribute);
        } else if (attribute.kind == AttributeType::Text || attribute.kind == AttributeType::Number) {
            attribute.standard.emplace_back(attribute.kind == AttributeType::Number ? "0" : "");
        }
        if (!isStatic) {
            type.attributes[name] = attribute;
        } else if (attribute.standard.size() == 1) {
            type.statics[name] = attribute.standard.front();
            type.persistent = type.persistent || (name == "Operations" && attribute.standard.front() == "None");
        } else {
            type.staticLists.insert(name);
        }
    }

    void ReadDefault(AttributeType& attribute) {
        if (!Here().IsSymbol('{')) {
            attribute.standard.push_back(Name("a default value"));
            return;
        }
        for (++m_next; !Here().IsSymbol('}');) {
            attribute.standard.push_back(Name("a member of the default value or '}'"));
            if (Here().IsSymbol(',') || Here().IsSymbol(';') || Here().IsSymbol('=')) {
                ++m_next;
            }
        }
        ++m_next;
        if (attribute.kind == AttributeType::Text || attribute.kind == AttributeType::Number) {
            attribute.kind = AttributeType::List;
        }
    }

    std::vector<CfToken> m_tokens;
    std::size_t m_next = 0;
    std::map<std::string, ResourceType>& m_types;
};

} // namespace

TypeTable::TypeTable() {
    for (const KnownType& known : KnownTypes()) {
        ResourceType& type = m_types[known.name];
        type.persistent = known.persistent;
        type.complete = known.complete;
        for (const char* attribute : known.attributes) {
            AddAttribute(type.attributes, attribute);
        }
    }
}

void TypeTable::Read(const std::string& text) {
    std::map<std::string, ResourceType> types = m_types;
    TypesReader(text, types).Read();
    m_types.swap(types);
}

void TypeTable::Add(const std::string& type) {
    m_types.emplace(type, ResourceType());
}

const ResourceType* TypeTable::Find(const std::string& type) const {
    const auto found = m_types.find(type);
    return found == m_types.end() ? nullptr : &found->second;
}

const AttributeType* TypeTable::Find(const std::string& type, const std::string& attribute) const {
    const auto common = CommonAttributes().find(attribute);
    if (common != CommonAttributes().end()) {
        return &common->second;
    }
    const ResourceType* const known = Find(type);
    if (!known) {
        return nullptr;
    }
    const auto found = known->attributes.find(attribute);
    return found == known->attributes.end() ? nullptr : &found->second;
}

} // namespace vcssim
