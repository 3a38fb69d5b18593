#include "BundleNames.h"

#include "LogNames.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Environment.h"

#include <CfDocument.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <vector>

namespace {

// Members of documents, and columns of a page, whose texts are words of a format.
const char* const FormatMembers[] = {"type", "state", "class",   "code",  "level", "kind",    "worst", "part",
                                     "id",   "mode",  "clusctl", "Level", "Code",  "Setting", "access"};

const char TypesMember[] = "resourceTypes";

// Attributes of VCS, and private properties of resources, that name accounts, computers and domains.
const char* const UserAttributes[] = {
    "UserAccount",    "Domain",         "UserName",   "UserNames", "Administrators", "Operators", "AdministratorGroups",
    "OperatorGroups", "ServiceAccount", "DomainName", "HostName",  "DnsSuffix",      "DnsName",   "DnsDomain"};

// Of accounts that every computer has, and of a main.cf.
const char* const KeptWords[] = {"administrator", "root",      "guest", "include", "types",  "cf",     "requires",
                                 "online",        "offline",   "firm",  "soft",    "hard",   "ro",     "rw",
                                 "groups",        "resources", "nodes", "systems", "remote", "failed", "pending",
                                 "reg",           "dword",     "sz",    "expand",  "multi",  "binary", "qword"};

template <std::size_t Size> bool IsOneOf(const char* const (&words)[Size], const std::string& word) {
    return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

bool IsUserAttribute(const std::string& name) {
    return std::any_of(std::begin(UserAttributes), std::end(UserAttributes),
                       [&name](const char* attribute) { return Lower(attribute) == Lower(name); });
}

std::vector<vcssim::CfBlock> BlocksOf(const vcssim::CfDocument& configuration) {
    std::vector<vcssim::CfBlock> blocks = configuration.Clusters();
    blocks.insert(blocks.end(), configuration.Systems().begin(), configuration.Systems().end());
    for (const vcssim::CfGroup& group : configuration.Groups()) {
        blocks.push_back(group.block);
        blocks.insert(blocks.end(), group.resources.begin(), group.resources.end());
    }
    return blocks;
}

} // namespace

BundleNames::BundleNames() {
    for (const char* const word : KeptWords) {
        m_names.Keep(word);
    }
    LearnIdentity(common::ToUtf8(ComputerName()));
    m_names.Name(common::ToUtf8(common::EnvironmentVariable(L"USERNAME")));
    for (const wchar_t* const variable : {L"USERDOMAIN", L"USERDNSDOMAIN"}) {
        m_names.Identity(common::ToUtf8(common::EnvironmentVariable(variable)));
    }
}

void BundleNames::LearnIdentity(const std::string& name) {
    if (!m_names.Whole(name) && std::find(m_kept.begin(), m_kept.end(), name) == m_kept.end()) {
        m_kept.push_back(name);
    }
}

void BundleNames::SpareWords(const std::string& text) {
    std::string word;
    for (const char c : text + ' ') {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            word += c;
        } else {
            m_names.Spare(word);
            word.clear();
        }
    }
}

void BundleNames::Learn(const picture::ClusterPicture& cluster) {
    for (const picture::Resource& resource : cluster.resources) {
        SpareWords(resource.type);
        SpareWords(resource.service);
    }
    LearnIdentity(cluster.name);
    for (const picture::Node& node : cluster.nodes) {
        LearnIdentity(node.name);
    }
    for (const picture::Group& group : cluster.groups) {
        m_names.Name(group.name);
    }
    for (const picture::Resource& resource : cluster.resources) {
        LearnIdentity(resource.networkName);
        m_names.Name(resource.name);
    }
}

void BundleNames::LearnModel(const Json& model) {
    for (const Json& resource : model.at("resources")) {
        const Json properties = resource.value("private", Json::object());
        for (const auto& property : properties.items()) {
            if (IsUserAttribute(property.key()) && property.value().is_string()) {
                m_names.Identity(property.value().get<std::string>());
            }
        }
    }
    LearnTexts(model);
}

void BundleNames::LearnTexts(const Json& document) {
    if (document.is_string()) {
        LearnLog(document.get<std::string>());
    } else if (document.is_structured()) {
        for (const auto& member : document.items()) {
            if (!(document.is_object() && IsOneOf(FormatMembers, member.key()))) {
                LearnTexts(member.value());
            }
        }
    }
}

void BundleNames::LearnMainCf(const std::string& text) {
    const vcssim::CfDocument configuration(text);
    const std::vector<vcssim::CfBlock> blocks = BlocksOf(configuration);
    for (const vcssim::CfBlock& block : blocks) {
        m_names.Keep(block.keyword);
        for (const vcssim::CfAttribute& attribute : block.attributes) {
            m_names.Keep(attribute.name);
        }
    }
    for (const vcssim::CfBlock& block : blocks) {
        m_names.Name(block.name);
        for (const vcssim::CfAttribute& attribute : block.attributes) {
            for (const std::string& value : attribute.value.Flat()) {
                if (IsUserAttribute(attribute.name)) {
                    m_names.Identity(value);
                }
                LearnLog(value);
            }
        }
    }
}

void BundleNames::LearnLog(const std::string& text) {
    for (const LogName& found : NamesInLog(text)) {
        if (found.isIdentity) {
            m_names.Identity(found.name);
        } else {
            m_names.Name(found.name);
        }
    }
}

std::string BundleNames::Renamed(const std::string& text) {
    return m_names.Text(text);
}

void BundleNames::Rename(Json& document) {
    if (document.is_string()) {
        document = Renamed(document.get<std::string>());
    } else if (document.is_array()) {
        for (Json& element : document) {
            Rename(element);
        }
    } else if (document.is_object()) {
        for (auto member = document.begin(); member != document.end(); ++member) {
            if (member.key() == TypesMember && member.value().is_array()) {
                RenameTypes(member.value());
            } else if (!(member.value().is_string() && IsOneOf(FormatMembers, member.key()))) {
                Rename(member.value());
            }
        }
    }
}

// A model's: their own names are what the resources have as "type".
void BundleNames::RenameTypes(Json& types) {
    for (Json& type : types) {
        const Json name = type.is_object() ? type.value("name", Json()) : Json();
        Rename(type);
        if (name.is_string()) {
            type["name"] = name;
        }
    }
}

void BundleNames::RenameKeys(Json& document) {
    if (!document.is_object()) {
        Rename(document);
        return;
    }
    Json renamed = Json::object();
    for (const auto& member : document.items()) {
        Json value = member.value();
        if (!(value.is_string() && IsOneOf(FormatMembers, member.key()))) {
            RenameKeys(value);
        }
        renamed[Renamed(member.key())] = std::move(value);
    }
    document = std::move(renamed);
}

void BundleNames::Rename(picture::ClusterPicture& cluster) {
    const auto rename = [this](std::string& text) { text = Renamed(text); };
    const auto renameStates = [&rename](std::vector<picture::StateOnNode>& states) {
        for (picture::StateOnNode& state : states) {
            rename(state.node);
        }
    };
    rename(cluster.name);
    for (picture::Node& node : cluster.nodes) {
        rename(node.name);
    }
    for (picture::Group& group : cluster.groups) {
        rename(group.name);
        rename(group.node);
        std::for_each(group.disabledOn.begin(), group.disabledOn.end(), rename);
        renameStates(group.states);
    }
    for (picture::Resource& resource : cluster.resources) {
        rename(resource.name);
        rename(resource.group);
        rename(resource.node);
        rename(resource.networkName);
        renameStates(resource.states);
        std::for_each(resource.dependsOn.begin(), resource.dependsOn.end(), rename);
    }
    for (picture::LeftOutResource& resource : cluster.leftOut) {
        rename(resource.name);
        rename(resource.reason);
    }
    rename(cluster.plainNode);
}

void BundleNames::Rename(picture::PageContent& page) {
    page.computer = Renamed(page.computer);
    page.simulated = Renamed(page.simulated);
    for (std::string& warning : page.warnings) {
        warning = Renamed(warning);
    }
    for (picture::PageTable& table : page.tables) {
        for (std::vector<std::string>& row : table.rows) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                row[i] = IsOneOf(FormatMembers, table.columns[i]) ? row[i] : Renamed(row[i]);
            }
        }
    }
}
