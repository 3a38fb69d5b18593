// Objects of a cluster as a recording tells of them, which may call one by several names.
#ifndef CLUSCTL_RECORDEDOBJECTS_H
#define CLUSCTL_RECORDEDOBJECTS_H

#include "Json.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

// Something that was asked of an object.
struct RecordedPart {
    Json value;             // null: not told
    std::uint32_t code = 0; // with which the cluster refused to tell it, unless it told it another time
    bool isCut = false;     // a list that was not read to its end
};

enum class RecordedKind {
    Node,
    Group,
    Resource,
    Network,
    Interface
};
const std::size_t RecordedKinds = 5;

const std::size_t NotListed = static_cast<std::size_t>(-1); // comes behind those that were

struct RecordedObject {
    std::string name;              // as the cluster spells it, if that was heard
    bool isThere = false;          // it was listed, opened or named by the cluster
    std::size_t place = NotListed; // in the cluster's list
    std::map<std::string, RecordedPart> parts;

    const RecordedPart& Part(const std::string& part) const;
    std::string Text(const std::string& part) const; // empty when it is not told
};

// All objects of one kind. An index stays good when two that were opened by different names turn out to be one.
class RecordedObjects {
public:
    // The one of this name, in any letter case.
    std::size_t Named(const std::string& name);

    // One of which no name is known yet.
    std::size_t Unnamed();

    // The cluster itself says what it is called.
    std::size_t Spell(std::size_t index, const std::string& name);

    void List(const std::string& name);

    RecordedObject& At(std::size_t index);

    // What was opened by its ID is the one that has it.
    void JoinByIds();

    std::vector<RecordedObject> Take();

private:
    std::size_t Resolved(std::size_t index) const;

    std::vector<RecordedObject> m_objects;
    std::vector<std::size_t> m_forward;
    std::map<std::string, std::size_t> m_byKey;
    std::size_t m_listed = 0;
};

#endif
