// Which attributes the resources of a type have, and their defaults.
#ifndef VCSSIM_TYPETABLE_H
#define VCSSIM_TYPETABLE_H

#include <map>
#include <set>
#include <string>
#include <vector>

namespace vcssim {

struct AttributeType {
    enum Kind {
        Text,
        Number,
        List, // vector or keylist
        Association
    };

    Kind kind = Text;
    bool isVector = false;             // a list that may hold the same member more than once
    std::vector<std::string> standard; // the parts of the default value; a scalar has one
};

struct ResourceType {
    std::map<std::string, AttributeType> attributes;
    std::map<std::string, std::string> statics; // attributes of the type itself that hold one value
    std::set<std::string> staticLists;          // those that hold several
    bool persistent = false;                    // never brought online or offline: always there, like a network card
    bool complete = false;                      // has no other attributes than these
};

class TypeTable {
public:
    TypeTable(); // the types known without a file

    // Adds the types of a types.cf; throws CfError.
    void Read(const std::string& text);
    // A type that is only known from its use.
    void Add(const std::string& type);

    const ResourceType* Find(const std::string& type) const;
    // The attribute of resources of this type, or null. Attributes that all resources have are included.
    const AttributeType* Find(const std::string& type, const std::string& attribute) const;

private:
    std::map<std::string, ResourceType> m_types;
};

} // namespace vcssim

#endif
