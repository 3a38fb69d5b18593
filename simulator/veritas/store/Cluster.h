// The cluster that the tools talk to: the running configuration and the states.
#ifndef VCSSIM_CLUSTER_H
#define VCSSIM_CLUSTER_H

#include "CfDocument.h"
#include "State.h"
#include "TypeTable.h"

#include <string>
#include <vector>

namespace vcssim {

// The value of an attribute on a system, or on all of them.
struct AttributeRow {
    std::string system; // "global"
    std::vector<std::string> parts;
};

class Cluster {
public:
    CfDocument configuration;
    TypeTable types;
    State state;

    std::vector<std::string> Systems() const;
    std::vector<std::string> SystemsOf(const CfGroup& group) const; // of its SystemList
    bool HasSystem(const std::string& system) const;
    bool IsParallel(const CfGroup& group) const;
    bool IsFrozen(const CfGroup& group) const; // persistently or not
    bool IsFrozen(const CfBlock& system) const;

    // No row: there is no such attribute.
    std::vector<AttributeRow> SystemAttribute(const CfBlock& system, const std::string& attribute) const;
    std::vector<AttributeRow> GroupAttribute(const CfGroup& group, const std::string& attribute) const;
    std::vector<AttributeRow> ResourceAttribute(const CfGroup& group, const CfBlock& resource,
                                                const std::string& attribute) const;
    // All there are, in the order in which they are displayed.
    std::vector<std::string> SystemAttributes(const CfBlock& system) const;
    std::vector<std::string> GroupAttributes(const CfGroup& group) const;
    std::vector<std::string> ResourceAttributes(const CfBlock& resource) const;

    // What is known of an attribute; of those of incomplete types this is what the configuration shows.
    bool FindAttributeType(const CfBlock& resource, const std::string& attribute, AttributeType& type) const;

    bool IsPersistent(const CfBlock& resource) const;
    bool IsFlagSet(const CfGroup& group, const CfBlock& resource, const char* attribute,
                   const std::string& system) const;
    std::string ResourceState(const CfBlock& resource, const std::string& system) const;
    std::string GroupState(const CfGroup& group, const std::string& system) const; // "PARTIAL|FAULTED"

private:
    std::vector<std::string> Value(const CfBlock& block, const std::string& attribute, const std::string& system,
                                   const std::vector<std::string>& standard) const;
    std::vector<AttributeRow> Rows(const CfBlock& block, const std::string& attribute,
                                   const std::vector<std::string>& systems,
                                   const std::vector<std::string>& standard) const;
};

} // namespace vcssim

#endif
