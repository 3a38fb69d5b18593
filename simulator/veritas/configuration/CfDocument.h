// A main.cf: its text, and what stands where in it. The text is never rewritten as a whole, so nothing of it is lost.
#ifndef VCSSIM_CFDOCUMENT_H
#define VCSSIM_CFDOCUMENT_H

#include "CfLexer.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace vcssim {

struct CfElement;

// A scalar, or a list: keylist members have only keys, associations also values.
struct CfValue {
    bool isList = false;
    std::string text; // of a scalar
    std::vector<CfElement> elements;
    CfSpan span;

    // The parts in a row, keys and values alike, as the tools print them.
    std::vector<std::string> Flat() const;
    bool IsAssociation() const;
    bool IsNested() const; // a list in a list: its parts in a row do not tell what belongs together
};

struct CfElement {
    std::string key;
    bool hasValue = false;
    CfValue value;
};

struct CfAttribute {
    std::string name;
    std::string system; // empty: the value of all systems
    CfValue value;
    CfSpan span;
};

struct CfBlock {
    std::string keyword; // of a resource: its type
    std::string name;
    std::vector<CfAttribute> attributes;
    CfSpan span;
    std::size_t close = 0; // place of the closing bracket

    const CfAttribute* Find(const std::string& attribute, const std::string& system) const;
    bool Has(const std::string& attribute) const;
};

struct CfLink {
    std::string parent;
    std::string child;
    CfSpan span;
};

struct CfGroup {
    CfBlock block;
    std::vector<CfBlock> resources;
    std::vector<CfLink> links;
    std::vector<CfLink> requires_;          // the group and those it depends on; `parent` is this group
    std::vector<std::string> relationships; // of each of them: "online local firm"
};

class CfDocument {
public:
    CfDocument() = default;

    // Throws CfError when the text is no main.cf.
    explicit CfDocument(std::string text);

    const std::string& Text() const {
        return m_text;
    }
    const std::vector<std::string>& Includes() const {
        return m_includes;
    }
    const std::vector<CfBlock>& Clusters() const {
        return m_clusters;
    }
    const std::vector<CfBlock>& Systems() const {
        return m_systems;
    }
    const std::vector<CfGroup>& Groups() const {
        return m_groups;
    }
    // The clauses that are not understood: they stay as they are written, and have no effect.
    const std::vector<CfSpan>& Kept() const {
        return m_kept;
    }
    // Null when there is none. (FindResource would be a macro of the platform's headers.)
    const CfGroup* GroupNamed(const std::string& name) const;
    const CfBlock* ResourceNamed(const std::string& name) const;
    const CfGroup* GroupOf(const std::string& resource) const;

    // Changes. Each edits the lines it concerns and reads the result; CfError leaves the document as it was.
    // Names must be those of things that exist, except for the new one.
    void AddResource(const std::string& group, const std::string& type, const std::string& name);
    void RemoveResource(const std::string& name); // and its links
    void AddLink(const std::string& parent, const std::string& child);
    void RemoveLink(const std::string& parent, const std::string& child);
    // `written` is the value as it stands in the file.
    void SetAttribute(const std::string& resource, const std::string& attribute, const std::string& system,
                      const std::string& written);
    void RemoveAttribute(const std::string& resource, const std::string& attribute); // of all systems
    void AddGroup(const std::string& name);                                          // without systems
    void RemoveGroup(const std::string& name);                                       // one without resources
    void AddGroupLink(const std::string& parent, const std::string& child, const std::string& relationship);
    void RemoveGroupLink(const std::string& parent, const std::string& child);
    void SetGroupAttribute(const std::string& group, const std::string& attribute, const std::string& written);
    void SetSystemAttribute(const std::string& system, const std::string& attribute, const std::string& written);

private:
    friend class CfReader;

    void SetIn(const CfBlock& block, const std::string& attribute, const std::string& system,
               const std::string& written);
    std::string LineEnd() const;
    std::string IndentAt(std::size_t position) const;
    bool BeginsItsLine(std::size_t position) const;
    bool EndsItsLine(std::size_t position) const;
    std::size_t NextLine(std::size_t position) const;
    void Replace(CfSpan span, const std::string& text);
    void InsertBehind(std::size_t end, bool withBlankLine, const std::string& line);
    void Erase(CfSpan span, std::string& text) const;
    void Take(std::string text);

    std::string m_text;
    std::vector<std::string> m_includes;
    std::vector<CfBlock> m_clusters;
    std::vector<CfBlock> m_systems;
    std::vector<CfGroup> m_groups;
    std::vector<CfSpan> m_kept;
    std::unordered_map<std::string, std::size_t> m_groupIndex;
    std::unordered_map<std::string, std::pair<std::size_t, std::size_t>> m_resourceIndex; // group, resource
};

// Whether a name of a resource, group or attribute can be written.
bool IsCfName(const std::string& name);

} // namespace vcssim

#endif
