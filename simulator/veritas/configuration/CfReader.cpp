// Reads a main.cf into a CfDocument.
#include "CfDocument.h"

#include <algorithm>
#include <set>
#include <utility>

namespace vcssim {

namespace {

// Statements that end the section of a group. Everything else in it is a resource of that type.
const char* const Sections[] = {"clus",          "cluster", "group",  "heartbeat", "include",
                                "remotecluster", "site",    "system", "type"};

const char* const RelationshipWords[] = {"online", "offline", "local", "global", "remote",
                                         "site",   "firm",    "soft",  "hard"};

template <std::size_t N> bool IsOneOf(const std::string& word, const char* const (&words)[N]) {
    return std::any_of(std::begin(words), std::end(words), [&](const char* other) { return word == other; });
}

} // namespace

class CfReader {
public:
    explicit CfReader(CfDocument& document) : m_document(document), m_tokens(SplitCf(document.m_text)) {
    }

    void Read() {
        while (Here().kind != CfToken::End) {
            ReadStatement();
        }
        CheckLinks();
    }

private:
    const CfToken& Here() const {
        return m_tokens[m_next];
    }
    const CfToken& Ahead() const {
        return m_tokens[std::min(m_next + 1, m_tokens.size() - 1)];
    }
    const CfToken& Behind() const {
        return m_tokens[m_next - 1];
    }

    CfPlace PlaceHere() const {
        return PlaceInCf(m_document.m_text, Here().span.begin);
    }

    [[noreturn]] void Expected(const std::string& what) const {
        throw CfError(PlaceHere(), "expected " + what + ", found " + Here().Shown());
    }

    void Need(char symbol, const std::string& where) {
        if (!Here().IsSymbol(symbol)) {
            Expected(std::string("'") + symbol + "' " + where);
        }
        ++m_next;
    }

    std::string Name(const std::string& what) {
        if (!Here().IsName()) {
            Expected(what);
        }
        if (Here().text.empty()) {
            throw CfError(PlaceHere(), "expected " + what + ", found an empty text");
        }
        return m_tokens[m_next++].text;
    }

    void ReadStatement() {
        const CfToken& first = Here();
        if (first.IsWord("include")) {
            ++m_next;
            m_document.m_includes.push_back(Name("the name of the included file"));
        } else if (first.IsWord("cluster")) {
            m_document.m_clusters.push_back(ReadBlock("cluster", true, nullptr));
        } else if (first.IsWord("system")) {
            m_document.m_systems.push_back(ReadBlock("system", false, nullptr));
            if (!m_systems.insert(m_document.m_systems.back().name).second) {
                Twice("system", m_document.m_systems.back());
            }
        } else if (first.IsWord("group")) {
            ReadGroup();
        } else if (m_document.m_groups.empty() || !m_inGroup ||
                   (first.kind == CfToken::Word && IsOneOf(first.text, Sections))) {
            m_inGroup = false;
            SkipBlock();
            return;
        } else {
            ReadMember(m_document.m_groups.back());
            return;
        }
        m_inGroup = !m_document.m_groups.empty() && first.IsWord("group");
    }

    [[noreturn]] void Twice(const std::string& what, const CfBlock& block) const {
        throw CfError(PlaceInCf(m_document.m_text, block.span.begin),
                      "there is a second " + what + " '" + block.name + "'");
    }

    void ReadGroup() {
        CfGroup group;
        group.block = ReadBlock("group", true, &group);
        if (!m_document.m_groupIndex.emplace(group.block.name, m_document.m_groups.size()).second) {
            Twice("group", group.block);
        }
        m_document.m_groups.push_back(std::move(group));
    }

    // A resource, or a dependency.
    void ReadMember(CfGroup& group) {
        if (Here().IsWord("requires") && Ahead().IsWord("group")) {
            ReadGroupLink(group);
            return;
        }
        if (Here().IsWord("requires") && Ahead().kind == CfToken::Word && Ahead().line == Here().line) {
            KeepLine();
            return;
        }
        if (Here().IsName() && Ahead().IsWord("requires")) {
            if (IsMoreThanALink()) {
                KeepLine();
                return;
            }
            CfLink link;
            link.span.begin = Here().span.begin;
            link.parent = Name("a resource");
            ++m_next;
            link.child = Name("the resource that '" + link.parent + "' requires");
            link.span.end = Behind().span.end;
            group.links.push_back(link);
            return;
        }
        if (!Here().IsName() || !Ahead().IsName()) {
            if (Here().IsName()) {
                ++m_next;
                Expected("a name or 'requires' after '" + Behind().text + "'");
            }
            Expected("a resource, a dependency or a section");
        }
        const std::string type = Here().text;
        CfBlock block = ReadBlock(type, true, nullptr);
        const std::pair<std::size_t, std::size_t> place(m_document.m_groups.size() - 1, group.resources.size());
        if (!m_document.m_resourceIndex.emplace(block.name, place).second) {
            Twice("resource", block);
        }
        group.resources.push_back(std::move(block));
    }

    void ReadGroupLink(CfGroup& group) {
        CfLink link;
        link.span.begin = Here().span.begin;
        m_next += 2;
        link.parent = group.block.name;
        link.child = Name("the required group");
        std::string relationship;
        while (Here().kind == CfToken::Word &&
               (IsOneOf(Here().text, RelationshipWords) || (Here().line == Behind().line && HasOnlyWords()))) {
            relationship += (relationship.empty() ? "" : " ") + m_tokens[m_next++].text;
        }
        link.span.end = Behind().span.end;
        group.requires_.push_back(link);
        group.relationships.push_back(relationship);
    }

    // Whether the rest of the line is words.
    bool HasOnlyWords() const {
        std::size_t next = m_next;
        while (m_tokens[next].kind == CfToken::Word && m_tokens[next].line == Here().line) {
            ++next;
        }
        return m_tokens[next].line != Here().line || m_tokens[next].kind == CfToken::End;
    }

    // Whether more than a child stands behind "A requires" in its line, and not another statement.
    bool IsMoreThanALink() const {
        std::size_t next = std::min(m_next + 3, m_tokens.size() - 1);
        const std::size_t first = next;
        while (m_tokens[next].kind != CfToken::End && m_tokens[next].line == Ahead().line) {
            if (m_tokens[next].IsSymbol('(') || m_tokens[next].IsWord("requires")) {
                return false;
            }
            ++next;
        }
        return next != first;
    }

    // A clause that this reader does not understand, such as "A requires atleast 2 from B, C, D": passed over up to the
    // end of its line, and of those that a comma continues.
    void KeepLine() {
        CfSpan span = Here().span;
        do {
            span.end = Here().span.end;
            ++m_next;
        } while (Here().kind != CfToken::End && !Here().IsSymbol(')') &&
                 (Here().line == Behind().line || Behind().IsSymbol(',')));
        m_document.m_kept.push_back(span);
    }

    CfBlock ReadBlock(const std::string& keyword, bool needsBody, CfGroup* group) {
        CfBlock block;
        block.keyword = keyword;
        block.span.begin = Here().span.begin;
        ++m_next;
        block.name = Name("the name of the " + keyword);
        if (group) {
            group->block.name = block.name;
        }
        if (needsBody || Here().IsSymbol('(')) {
            Need('(', "after '" + block.name + "'");
            ReadBody(block, group);
            block.close = Here().span.begin;
            ++m_next;
        }
        block.span.end = Behind().span.end;
        return block;
    }

    void ReadBody(CfBlock& block, CfGroup* group) {
        std::set<std::pair<std::string, std::string>> seen;
        while (!Here().IsSymbol(')')) {
            if (group && Here().IsWord("requires") && Ahead().IsWord("group")) {
                ReadGroupLink(*group);
                continue;
            }
            if (Here().IsWord("requires") && Ahead().kind == CfToken::Word) {
                KeepLine();
                continue;
            }
            const CfPlace place = PlaceHere();
            if (Here().kind != CfToken::Word) {
                Expected("an attribute or ')' of '" + block.name + "'");
            }
            block.attributes.push_back(ReadAttribute());
            const CfAttribute& attribute = block.attributes.back();
            if (!seen.emplace(attribute.name, attribute.system).second) {
                throw CfError(place, "there is a second attribute '" + attribute.name + "' in '" + block.name + "'");
            }
            while (Here().IsSymbol(';')) {
                ++m_next;
            }
            block.attributes.back().span.end = Behind().span.end;
        }
    }

    CfAttribute ReadAttribute() {
        CfAttribute attribute;
        attribute.span.begin = Here().span.begin;
        attribute.name = Name("an attribute");
        if (Here().IsSymbol('@')) {
            ++m_next;
            attribute.system = Name("a system after '@'");
        }
        Need('=', "after the attribute '" + attribute.name + "'");
        attribute.value = ReadValue("the value of '" + attribute.name + "'", 0);
        attribute.span.end = Behind().span.end;
        return attribute;
    }

    CfValue ReadValue(const std::string& what, int depth) {
        CfValue value;
        value.span.begin = Here().span.begin;
        if (Here().IsSymbol('{')) {
            if (depth == 16) {
                throw CfError(PlaceHere(), "expected no more than 16 braces in each other");
            }
            value.isList = true;
            ++m_next;
            ReadElements(value, what, depth);
        } else if (Here().IsName()) {
            value.text = m_tokens[m_next++].text;
        } else {
            Expected(what);
        }
        value.span.end = Behind().span.end;
        return value;
    }

    void ReadElements(CfValue& value, const std::string& what, int depth) {
        while (!Here().IsSymbol('}')) {
            CfElement element;
            if (Here().IsSymbol('{')) {
                element.hasValue = true;
                element.value = ReadValue(what, depth + 1);
            } else {
                if (!Here().IsName()) {
                    Expected("a member or '}' in " + what);
                }
                element.key = m_tokens[m_next++].text;
                if (Here().IsSymbol('=')) {
                    ++m_next;
                    element.hasValue = true;
                    element.value = ReadValue("the value of '" + element.key + "'", depth + 1);
                }
            }
            value.elements.push_back(std::move(element));
            if (Here().IsSymbol(',') || Here().IsSymbol(';')) {
                ++m_next;
            } else if (!Here().IsSymbol('}')) {
                Expected("',' or '}' in " + what);
            }
        }
        ++m_next;
    }

    // Something this reader knows nothing of: passed over up to its closing bracket.
    void SkipBlock() {
        const std::string keyword = Name("a section");
        const std::string name = Name("the name of the " + keyword);
        Need('(', "after '" + name + "'");
        std::string open = ")";
        while (!open.empty()) {
            const CfToken& token = Here();
            if (token.kind == CfToken::End) {
                Expected(std::string("'") + open.back() + "' of '" + name + "'");
            }
            if (token.IsSymbol('(') || token.IsSymbol('{')) {
                open += token.text[0] == '(' ? ')' : '}';
            } else if (token.IsSymbol(')') || token.IsSymbol('}')) {
                if (token.text[0] != open.back()) {
                    Expected(std::string("'") + open.back() + "' of '" + name + "'");
                }
                open.pop_back();
            }
            ++m_next;
        }
    }

    void CheckLinks() const {
        for (std::size_t i = 0; i < m_document.m_groups.size(); ++i) {
            for (const CfLink& link : m_document.m_groups[i].links) {
                for (const std::string& name : {link.parent, link.child}) {
                    const auto found = m_document.m_resourceIndex.find(name);
                    if (found == m_document.m_resourceIndex.end() || found->second.first != i) {
                        throw CfError(PlaceInCf(m_document.m_text, link.span.begin),
                                      "there is no resource '" + name + "' in group '" +
                                          m_document.m_groups[i].block.name + "'");
                    }
                }
            }
        }
    }

    CfDocument& m_document;
    std::vector<CfToken> m_tokens;
    std::size_t m_next = 0;
    bool m_inGroup = false;
    std::set<std::string> m_systems;
};

CfDocument::CfDocument(std::string text) : m_text(std::move(text)) {
    CfReader(*this).Read();
}

bool IsCfName(const std::string& name) {
    return !name.empty() && QuotedCf(name) == name && name != "requires" && !IsOneOf(name, Sections);
}

} // namespace vcssim
