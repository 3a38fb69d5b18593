// How two models differ, object by object.
#include "Failure.h"
#include "ModelFindings.h"
#include "ModelInUse.h"
#include "Secrets.h"
#include "Text.h"

#include "common/Files.h"
#include "core/ToolSecrets.h"

#include <CfDocument.h>
#include <ClusterFiles.h>

#include <map>
#include <set>
#include <utility>

namespace {

typedef std::vector<std::pair<std::string, Json>> Properties; // in their order

struct Object {
    std::string title; // "resource EVS1 IP"
    Properties properties;
};

typedef std::vector<Object> Objects;

// Objects within objects become dotted names; lists are one value.
void AddFlat(const std::string& name, const Json& value, Properties& properties) {
    if (!value.is_object()) {
        properties.emplace_back(name, value);
        return;
    }
    for (const auto& member : value.items()) {
        AddFlat(name.empty() ? member.key() : name + "." + member.key(), member.value(), properties);
    }
}

Objects ObjectsOfFailoverModel(const Json& model) {
    static const std::map<std::string, std::string> kinds = {
        {"resourceTypes", "type"}, {"nodes", "node"}, {"groups", "group"}, {"resources", "resource"}};
    Objects objects;
    for (const auto& member : model.items()) {
        const auto kind = kinds.find(member.key());
        if (kind == kinds.end() || !member.value().is_array()) {
            objects.push_back({member.key(), {}});
            AddFlat(member.value().is_object() ? "" : member.key(), member.value(), objects.back().properties);
            continue;
        }
        for (const Json& item : member.value()) {
            const bool isNamed = item.is_object() && item.contains("name") && item["name"].is_string();
            objects.push_back({kind->second + " " + (isNamed ? item["name"].get<std::string>() : "?"), {}});
            Json others = item;
            if (isNamed) {
                others.erase("name"); // the title has it
            }
            AddFlat("", others, objects.back().properties);
        }
    }
    return objects;
}

Json ValueJson(const vcssim::CfValue& value) {
    if (!value.isList) {
        return value.text;
    }
    Json list = Json::array();
    for (const vcssim::CfElement& element : value.elements) {
        list.push_back(element.hasValue ? element.key + " = " + element.value.text : element.key);
    }
    return list;
}

Object ObjectOf(const std::string& title, const vcssim::CfBlock& block) {
    Object object = {title, {}};
    for (const vcssim::CfAttribute& attribute : block.attributes) {
        object.properties.emplace_back(attribute.name + (attribute.system.empty() ? "" : " @" + attribute.system),
                                       ValueJson(attribute.value));
    }
    return object;
}

Objects ObjectsOfVcsModel(const vcssim::ClusterFiles& files) {
    Objects objects;
    const vcssim::CfDocument document(ReadModelText(files.Running()));
    for (const vcssim::CfBlock& cluster : document.Clusters()) {
        objects.push_back(ObjectOf("cluster " + cluster.name, cluster));
    }
    for (const vcssim::CfBlock& system : document.Systems()) {
        objects.push_back(ObjectOf("system " + system.name, system));
    }
    for (const vcssim::CfGroup& group : document.Groups()) {
        Object object = ObjectOf("group " + group.block.name, group.block);
        for (std::size_t i = 0; i < group.requires_.size(); ++i) {
            object.properties.emplace_back("requires group " + group.requires_[i].child, group.relationships[i]);
        }
        objects.push_back(std::move(object));
        for (const vcssim::CfBlock& resource : group.resources) {
            Object member = ObjectOf("resource " + resource.name, resource);
            member.properties.emplace_back("type", resource.keyword);
            member.properties.emplace_back("group", group.block.name);
            for (const vcssim::CfLink& link : group.links) {
                if (link.parent == resource.name) {
                    member.properties.emplace_back("requires " + link.child, true);
                }
            }
            objects.push_back(std::move(member));
        }
    }
    if (common::FileExists(files.State())) {
        Json states = common::ParseJson(ReadModelText(files.State()));
        if (states.is_object() && states.contains("settings")) { // titled as those of a failover cluster
            objects.push_back({"settings", {}});
            AddFlat("", states["settings"], objects.back().properties);
            states.erase("settings");
        }
        objects.push_back({"states", {}});
        AddFlat("", states, objects.back().properties);
    }
    return objects;
}

Objects Load(const std::wstring& model, bool isVcs) {
    try {
        return isVcs ? ObjectsOfVcsModel(vcssim::ClusterFiles(ModelFile(model)))
                     : ObjectsOfFailoverModel(common::ParseJson(ReadModelText(ModelFile(model))));
    } catch (const common::JsonError& error) {
        throw Failure("cannot read the model " + Quoted(model) + ": " + error.what());
    } catch (const vcssim::CfError& error) {
        throw Failure("cannot read the model " + Quoted(model) + ": line " + std::to_string(error.Line()) + ": " +
                      error.what());
    }
}

bool IsSecretMember(const std::string& property) {
    const std::string name = property.substr(0, property.find(" @"));
    const bool isPrivate = name.compare(0, 8, "private.") == 0;
    return isPrivate ? IsSecretProperty(name.substr(8))
                     : clus::IsSecretAttribute(common::ToUtf16(name)) || name == "UserNames";
}

class Comparison {
public:
    std::vector<ModelDifference> Compare(const Objects& before, const Objects& after) {
        const std::map<std::string, const Object*> left = ByTitle(before);
        const std::map<std::string, const Object*> right = ByTitle(after);
        for (const Object& object : before) {
            const auto other = right.find(object.title);
            if (other == right.end()) {
                Add("removed", object.title, "", Json(), Json());
            } else {
                Compare(object, *other->second);
            }
        }
        for (const Object& object : after) {
            if (left.count(object.title) == 0) {
                Add("added", object.title, "", Json(), Json());
                for (const auto& property : object.properties) {
                    Add("added", object.title, property.first, Json(), property.second);
                }
            }
        }
        return std::move(m_differences);
    }

private:
    static std::map<std::string, const Object*> ByTitle(const Objects& objects) {
        std::map<std::string, const Object*> result;
        for (const Object& object : objects) {
            result.emplace(object.title, &object);
        }
        return result;
    }

    void Compare(const Object& before, const Object& after) {
        const std::map<std::string, Json> others(after.properties.begin(), after.properties.end());
        std::set<std::string> known;
        for (const auto& [name, value] : before.properties) {
            known.insert(name);
            const auto other = others.find(name);
            if (other == others.end()) {
                Add("removed", before.title, name, value, Json());
            } else if (other->second != value) {
                Add("changed", before.title, name, value, other->second);
            }
        }
        for (const auto& [name, value] : after.properties) {
            if (known.count(name) == 0) {
                Add("added", before.title, name, Json(), value);
            }
        }
    }

    void Add(const char* change, const std::string& object, const std::string& property, Json before, Json after) {
        if (IsSecretMember(property)) {
            for (Json* value : {&before, &after}) {
                *value = value->is_null() ? Json() : Json(clus::SecretMask);
            }
        }
        m_differences.push_back({change, object, property, std::move(before), std::move(after)});
    }

    std::vector<ModelDifference> m_differences;
};

} // namespace

std::vector<ModelDifference> CompareModels(const std::wstring& before, const std::wstring& after) {
    RequireModel(before);
    RequireModel(after);
    const bool isVcs = IsModelOfVcs(before);
    if (IsModelOfVcs(after) != isVcs) {
        throw Failure(Quoted(before) + " and " + Quoted(after) + " are models of different kinds of clusters");
    }
    return Comparison().Compare(Load(before, isVcs), Load(after, isVcs));
}
