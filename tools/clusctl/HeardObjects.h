// Objects of a VCS cluster, as one answer of its tools after the other tells of them.
#ifndef CLUSCTL_HEARDOBJECTS_H
#define CLUSCTL_HEARDOBJECTS_H

#include "ShownValues.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

extern const char AllSystems[]; // in the column of systems

struct HeardAttribute {
    std::string name;
    std::size_t answer = 0; // the last one that told it
    bool isAlone = false;   // its values were asked for one by one, and may be one of all systems
    std::vector<ShownValue> rows;
};

struct HeardObject {
    std::string name;
    std::size_t answer = 0;
    bool isShown = false;                   // with all its attributes
    bool areLinksTold = false;              // what it depends on
    std::vector<std::string> systems;       // that it was listed with
    std::vector<HeardAttribute> attributes; // in the order in which they were shown first
    std::vector<ShownValue> conditions;     // under which it was listed

    const HeardAttribute* Find(const std::string& attribute) const;
    HeardAttribute& There(const std::string& attribute);
    // On all systems, or the first one shown. Empty when it is not told.
    std::string Value(const std::string& attribute) const;
    // The systems of the rows of an attribute.
    std::vector<std::string> SystemsOf(const std::string& attribute) const;
    // For all systems, in place of what was told before.
    void Tell(const std::string& attribute, const std::string& value);
};

// How much of an object an answer tells.
enum class Told {
    Row,       // of an attribute
    Attribute, // with all its rows
    Object     // with all its attributes
};

class HeardObjects {
public:
    // The object of this name, which is there from now on.
    HeardObject& There(const std::string& name);
    HeardObject* Find(const std::string& name);
    void Remove(const std::string& name);

    // What is told later takes the place of what was told before. `answer` counts from 1 on.
    void Tell(const ShownValue& row, std::size_t answer, Told told);

    // The answer to -value, which shows no system: of one that was not asked for, all of them or the first.
    void TellValue(const ShownValue& value);

    // All that there are, in the cluster's order. Others are gone, unless `listsOnlySome` those of which no
    // system is known: they are in no such list.
    void ListAll(const std::vector<std::string>& names, bool listsOnlySome);

    bool IsListed() const {
        return m_isListed;
    }
    const std::vector<HeardObject>& All() const {
        return m_objects;
    }
    std::vector<HeardObject>& All() {
        return m_objects;
    }
    std::vector<ShownValue> Rows() const;

private:
    void Index();

    std::vector<HeardObject> m_objects;
    std::unordered_map<std::string, std::size_t> m_places;
    bool m_isListed = false;
};

void AddOnce(std::vector<std::string>& names, const std::string& name);

#endif
