#include "Modify.h"

#include <algorithm>

namespace vcssim {

namespace {

typedef std::vector<std::string> Parts;

// `bareNumbers`: members, or values of keys, that are numbers are written without quotes.
std::string WrittenValue(AttributeType::Kind kind, const Parts& parts, bool bareNumbers) {
    if (kind == AttributeType::Text || kind == AttributeType::Number) {
        const std::string text = parts.empty() ? "" : parts.front();
        return kind == AttributeType::Number && IsCfNumber(text) ? text : QuotedCf(text);
    }
    if (parts.empty()) {
        return "{}";
    }
    std::string written = "{ ";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const bool isValue = kind == AttributeType::Association && i % 2 == 1;
        const bool mayBeBare = bareNumbers && (isValue || kind == AttributeType::List);
        written += i == 0 ? "" : isValue ? " = " : ", ";
        written += mayBeBare && IsCfNumber(parts[i]) ? parts[i] : QuotedCf(parts[i]);
    }
    return written + " }";
}

// The place of a key among the parts, or their number.
std::size_t PlaceOf(const Parts& parts, const std::string& key, std::size_t stride) {
    std::size_t place = 0;
    while (place < parts.size() && parts[place] != key) {
        place += stride;
    }
    return std::min(place, parts.size());
}

class Modification {
public:
    Modification(Context& context, const ModifyRequest& request)
        : m_context(context), m_request(request), m_configuration(context.cluster.configuration),
          m_group(*m_configuration.GroupOf(request.resource)),
          m_resource(*m_configuration.ResourceNamed(request.resource)) {
    }

    void Run() {
        const std::string& attribute = m_request.attribute;
        if (!FindType()) {
            Refuse("99040", "Attribute " + attribute + " does not exist in type " + m_resource.keyword);
            return;
        }
        for (const std::string& value : m_request.values) {
            if (std::any_of(value.begin(), value.end(), [](char c) { return c >= 0 && c < ' ' && c != '\t'; })) {
                Refuse("99041", "A value of attribute " + attribute + " holds a control character");
                return;
            }
        }
        if (!CheckScope()) {
            return;
        }
        if (m_request.action == ModifyRequest::MakeLocal) {
            MakeLocal();
            return;
        }
        // The members of other systems and those beside the changed one are written anew from their parts.
        if ((!SetsAll() || !m_request.system.empty()) && IsNested()) {
            Refuse("99046", "Attribute " + attribute + " holds braces in braces and can only be set as a whole");
            return;
        }
        Parts parts = CurrentParts(m_request.system);
        if (Change(parts)) {
            Write(parts);
        }
    }

private:
    void Refuse(const char* number, const std::string& text) {
        m_context.output.Simulated(number, text);
    }

    // The values of the attribute that resources of this type have, those of this resource first.
    std::vector<const CfValue*> Uses() const {
        std::vector<const CfValue*> uses;
        std::vector<const CfValue*> others;
        for (const CfGroup& group : m_configuration.Groups()) {
            for (const CfBlock& resource : group.resources) {
                for (const CfAttribute& attribute : resource.attributes) {
                    if (resource.keyword == m_resource.keyword && attribute.name == m_request.attribute) {
                        (resource.name == m_resource.name ? uses : others).push_back(&attribute.value);
                    }
                }
            }
        }
        uses.insert(uses.end(), others.begin(), others.end());
        return uses;
    }

    bool IsBareNumber(const CfValue& value) const {
        return !value.isList && IsCfNumber(value.text) && m_configuration.Text()[value.span.begin] != '"';
    }

    // Whether the members of a list, or the values of its keys, that are numbers stand without quotes.
    bool HasBareNumbers(const CfValue& list) const {
        const std::string text = m_configuration.Text().substr(list.span.begin, list.span.end - list.span.begin);
        const bool ofValues = list.IsAssociation();
        bool any = false;
        bool isValue = false;
        for (const CfToken& token : SplitCf(text)) {
            if (isValue == ofValues && token.IsName() && IsCfNumber(token.text)) {
                if (token.kind == CfToken::String) {
                    return false;
                }
                any = true;
            }
            isValue = token.IsSymbol('=');
        }
        return any || ofValues;
    }

    // The kind of an attribute that its type does not define: how it is written tells.
    void LearnFromUses() {
        const std::vector<const CfValue*> uses = Uses();
        const auto telling = std::find_if(uses.begin(), uses.end(),
                                          [](const CfValue* use) { return !use->isList || !use->elements.empty(); });
        if (telling == uses.end()) { // {} may be either
            m_type.kind = m_request.action == ModifyRequest::Update ? AttributeType::Association : AttributeType::List;
            m_bareNumbers = m_type.kind == AttributeType::Association;
        } else if ((*telling)->isList) {
            m_type.kind = (*telling)->IsAssociation() ? AttributeType::Association : AttributeType::List;
            m_bareNumbers = HasBareNumbers(**telling);
        } else {
            m_type.kind =
                std::all_of(uses.begin(), uses.end(), [this](const CfValue* use) { return IsBareNumber(*use); })
                    ? AttributeType::Number
                    : AttributeType::Text;
        }
    }

    bool FindType() {
        const std::string& attribute = m_request.attribute;
        for (const char* fixed : {"Group", "Type", "State", "Probed"}) {
            if (attribute == fixed) {
                return false;
            }
        }
        if (m_context.cluster.FindAttributeType(m_resource, attribute, m_type)) {
            m_bareNumbers = m_type.kind == AttributeType::Association;
            if (!m_context.cluster.types.Find(m_resource.keyword, attribute)) {
                LearnFromUses();
            }
            return true;
        }
        if (m_request.action == ModifyRequest::MakeLocal || m_request.action == ModifyRequest::MakeGlobal) {
            return false;
        }
        const ResourceType* const type = m_context.cluster.types.Find(m_resource.keyword);
        if ((type && type->complete) || !IsCfName(attribute)) {
            return false;
        }
        // Nothing is known of this attribute: the values tell.
        const bool isScalar = m_request.action == ModifyRequest::Set && m_request.values.size() == 1;
        m_type.kind = isScalar                                    ? AttributeType::Text
                      : m_request.action == ModifyRequest::Update ? AttributeType::Association
                                                                  : AttributeType::List;
        m_bareNumbers = m_type.kind == AttributeType::Association;
        return true;
    }

    bool SetsAll() const {
        return m_request.action == ModifyRequest::Set || m_request.action == ModifyRequest::MakeGlobal;
    }

    bool IsLocal() const {
        return std::any_of(m_resource.attributes.begin(), m_resource.attributes.end(),
                           [&](const CfAttribute& existing) {
                               return existing.name == m_request.attribute && !existing.system.empty();
                           });
    }

    // Whether the request goes with an attribute that is local, or is not.
    bool CheckScope() {
        const std::string subject = "Attribute " + m_request.attribute + " is ";
        const bool isLocal = IsLocal();
        if (m_request.action == ModifyRequest::MakeLocal && isLocal) {
            Refuse("99047", subject + "local already");
            return false;
        }
        if (m_request.action == ModifyRequest::MakeGlobal) {
            if (!isLocal) {
                Refuse("99048", subject + "global already");
            }
            return isLocal;
        }
        if (m_request.action != ModifyRequest::MakeLocal && m_context.output.Switches().keepsScope &&
            isLocal == m_request.system.empty()) {
            Refuse(isLocal ? "99047" : "99048",
                   subject + (isLocal ? "local and needs -sys" : "global and takes no -sys"));
            return false;
        }
        return true;
    }

    // Each system gets the value as it is written.
    void MakeLocal() {
        const std::vector<std::string> systems = m_context.cluster.SystemsOf(m_group);
        if (systems.empty()) {
            Refuse("99049", "The SystemList of group " + m_group.block.name + " is empty");
            return;
        }
        const CfAttribute* const existing = m_resource.Find(m_request.attribute, "");
        const std::string written =
            existing ? m_configuration.Text().substr(existing->value.span.begin,
                                                     existing->value.span.end - existing->value.span.begin)
                     : WrittenValue(m_type.kind, m_type.standard, m_bareNumbers);
        m_configuration.RemoveAttribute(m_request.resource, m_request.attribute);
        for (const std::string& system : systems) {
            m_configuration.SetAttribute(m_request.resource, m_request.attribute, system, written);
        }
    }

    bool IsNested() const {
        return std::any_of(m_resource.attributes.begin(), m_resource.attributes.end(),
                           [&](const CfAttribute& existing) {
                               return existing.name == m_request.attribute && existing.value.IsNested();
                           });
    }

    Parts CurrentParts(const std::string& system) const {
        for (const AttributeRow& row : m_context.cluster.ResourceAttribute(m_group, m_resource, m_request.attribute)) {
            if (row.system == "global" || system.empty() || row.system == system) {
                return row.parts;
            }
        }
        return {};
    }

    bool IsScalar() const {
        return m_type.kind == AttributeType::Text || m_type.kind == AttributeType::Number;
    }

    bool Change(Parts& parts) {
        const std::string& attribute = m_request.attribute;
        if (SetsAll() && IsScalar()) {
            if (m_request.values.size() != 1) {
                Refuse("99042", "Attribute " + attribute + " takes one value");
                return false;
            }
            if (m_type.kind == AttributeType::Number && !IsCfNumber(m_request.values.front())) {
                Refuse("99043", "'" + m_request.values.front() + "' is no number for attribute " + attribute);
                return false;
            }
            parts = m_request.values;
            return true;
        }
        if (IsScalar()) {
            Refuse("99044", "Attribute " + attribute + " is a scalar");
            return false;
        }
        const bool isAssociation = m_type.kind == AttributeType::Association;
        const bool takesPairs = isAssociation && m_request.action != ModifyRequest::Delete;
        if ((takesPairs && m_request.values.size() % 2 != 0) ||
            (!isAssociation && m_request.action == ModifyRequest::Update)) {
            Refuse("99045", isAssociation ? "Attribute " + attribute + " takes keys with values"
                                          : "Attribute " + attribute + " is no association");
            return false;
        }
        if (SetsAll() || m_request.action == ModifyRequest::DeleteAll) {
            parts = m_request.values;
            if (parts == Parts{""}) {
                parts.clear();
            }
            return true;
        }
        return ChangeMembers(parts, isAssociation ? 2 : 1);
    }

    bool ChangeMembers(Parts& parts, std::size_t stride) {
        const std::size_t step = m_request.action == ModifyRequest::Delete ? 1 : stride;
        for (std::size_t i = 0; i < m_request.values.size(); i += step) {
            const std::string& key = m_request.values[i];
            const std::size_t place = PlaceOf(parts, key, stride);
            const auto at = parts.begin() + static_cast<std::ptrdiff_t>(place);
            const bool exists = place < parts.size();
            if (m_request.action == ModifyRequest::Delete) {
                if (!exists) {
                    m_context.output.Warning("10566", "Entry not found in attribute keylist.");
                    return false;
                }
                parts.erase(at, at + static_cast<std::ptrdiff_t>(std::min(stride, parts.size() - place)));
            } else if (!exists || (m_type.isVector && m_request.action == ModifyRequest::Add)) {
                parts.insert(parts.end(), m_request.values.begin() + static_cast<std::ptrdiff_t>(i),
                             m_request.values.begin() + static_cast<std::ptrdiff_t>(i + stride));
            } else if (m_request.action == ModifyRequest::Add) {
                Refuse("10563", "Entry already in attribute keylist");
                return false;
            } else if (place + 1 < parts.size()) {
                parts[place + 1] = m_request.values[i + 1];
            }
        }
        return true;
    }

    void Write(const Parts& parts) {
        const std::string& attribute = m_request.attribute;
        const std::string resource = m_request.resource; // the blocks are read anew after each edit
        const std::string written = WrittenValue(m_type.kind, parts, m_bareNumbers);
        const bool isLocal = IsLocal();
        if (m_request.system.empty()) {
            if (isLocal) {
                m_configuration.RemoveAttribute(resource, attribute);
            }
            if (parts == m_type.standard) {
                m_configuration.RemoveAttribute(resource, attribute);
            } else {
                m_configuration.SetAttribute(resource, attribute, "", written);
            }
            return;
        }
        if (!isLocal) {
            const std::string others = WrittenValue(m_type.kind, CurrentParts(m_request.system), m_bareNumbers);
            const std::vector<std::string> systems = m_context.cluster.SystemsOf(m_group);
            m_configuration.RemoveAttribute(resource, attribute);
            for (const std::string& system : systems) {
                m_configuration.SetAttribute(resource, attribute, system, others);
            }
        }
        m_configuration.SetAttribute(resource, attribute, m_request.system, written);
    }

    Context& m_context;
    const ModifyRequest& m_request;
    CfDocument& m_configuration;
    const CfGroup& m_group;
    const CfBlock& m_resource;
    AttributeType m_type;
    bool m_bareNumbers = false;
};

// A leading minus sign of a value is written with a percent sign in front.
std::string Value(const std::string& argument) {
    if (argument.compare(0, 2, "%-") == 0) {
        return argument.substr(1);
    }
    if (argument.compare(0, 1, "-") == 0) {
        throw UsageError();
    }
    return argument;
}

} // namespace

ModifyRequest TakeModifyRequest(Arguments& arguments) {
    ModifyRequest request;
    request.resource = arguments.Next();
    request.attribute = arguments.Next();
    arguments.TakeValue("-sys", request.system);
    if (arguments.TakeFlag("-add")) {
        request.action = ModifyRequest::Add;
    } else if (arguments.TakeFlag("-update")) {
        request.action = ModifyRequest::Update;
    } else if (arguments.TakeFlag("-delete")) {
        request.action = arguments.TakeFlag("-keys") ? ModifyRequest::DeleteAll : ModifyRequest::Delete;
    }
    while (!arguments.IsEmpty()) {
        request.values.push_back(Value(arguments.Next()));
    }
    if (request.values.empty() != (request.action == ModifyRequest::DeleteAll)) {
        throw UsageError();
    }
    return request;
}

ModifyRequest TakeScopeRequest(const std::string& command, Arguments& arguments) {
    ModifyRequest request;
    request.action = command == "-local" ? ModifyRequest::MakeLocal : ModifyRequest::MakeGlobal;
    request.resource = arguments.Next();
    request.attribute = arguments.Next();
    while (request.action == ModifyRequest::MakeGlobal && !arguments.IsEmpty()) {
        request.values.push_back(Value(arguments.Next()));
    }
    arguments.NeedEnd();
    if (request.values.empty() != (request.action == ModifyRequest::MakeLocal)) {
        throw UsageError();
    }
    return request;
}

void Modify(Context& context, const ModifyRequest& request) {
    const CfDocument& configuration = context.cluster.configuration;
    if (!configuration.ResourceNamed(request.resource)) {
        NoSuchResource(context.output, request.resource);
        return;
    }
    if (!request.system.empty()) {
        const std::vector<std::string> systems = context.cluster.SystemsOf(*configuration.GroupOf(request.resource));
        if (std::find(systems.begin(), systems.end(), request.system) == systems.end()) {
            NoSuchSystem(context.output, "10200", request.system);
            return;
        }
    }
    Modification(context, request).Run();
}

} // namespace vcssim
