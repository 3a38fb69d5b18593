#include "CfDocument.h"

#include <algorithm>
#include <utility>

namespace vcssim {

namespace {

void AddFlat(const CfValue& value, std::vector<std::string>& parts) {
    if (!value.isList) {
        parts.push_back(value.text);
        return;
    }
    for (const CfElement& element : value.elements) {
        if (!element.hasValue || !element.key.empty()) {
            parts.push_back(element.key);
        }
        if (element.hasValue) {
            AddFlat(element.value, parts);
        }
    }
}

// A name that reads like the beginning of something else goes in quotes.
std::string WrittenName(const std::string& name) {
    return IsCfName(name) ? name : AlwaysQuotedCf(name);
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

} // namespace

std::vector<std::string> CfValue::Flat() const {
    std::vector<std::string> parts;
    AddFlat(*this, parts);
    return parts;
}

bool CfValue::IsAssociation() const {
    return std::any_of(elements.begin(), elements.end(), [](const CfElement& element) { return element.hasValue; });
}

bool CfValue::IsNested() const {
    return std::any_of(elements.begin(), elements.end(),
                       [](const CfElement& element) { return element.hasValue && element.value.isList; });
}

const CfAttribute* CfBlock::Find(const std::string& attribute, const std::string& system) const {
    for (const CfAttribute& candidate : attributes) {
        if (candidate.name == attribute && candidate.system == system) {
            return &candidate;
        }
    }
    return nullptr;
}

bool CfBlock::Has(const std::string& attribute) const {
    return std::any_of(attributes.begin(), attributes.end(),
                       [&](const CfAttribute& candidate) { return candidate.name == attribute; });
}

const CfGroup* CfDocument::GroupNamed(const std::string& name) const {
    const auto found = m_groupIndex.find(name);
    return found == m_groupIndex.end() ? nullptr : &m_groups[found->second];
}

const CfBlock* CfDocument::ResourceNamed(const std::string& name) const {
    const auto found = m_resourceIndex.find(name);
    return found == m_resourceIndex.end() ? nullptr : &m_groups[found->second.first].resources[found->second.second];
}

const CfGroup* CfDocument::GroupOf(const std::string& resource) const {
    const auto found = m_resourceIndex.find(resource);
    return found == m_resourceIndex.end() ? nullptr : &m_groups[found->second.first];
}

std::string CfDocument::LineEnd() const {
    const std::size_t end = m_text.find('\n');
    return end != std::string::npos && end != 0 && m_text[end - 1] == '\r' ? "\r\n" : "\n";
}

bool CfDocument::BeginsItsLine(std::size_t position) const {
    while (position != 0 && IsBlank(m_text[position - 1])) {
        --position;
    }
    return position == 0 || m_text[position - 1] == '\n';
}

std::string CfDocument::IndentAt(std::size_t position) const {
    const std::size_t begin = position == 0 ? 0 : m_text.rfind('\n', position - 1) + 1; // npos + 1 is 0
    std::size_t end = begin;
    while (end < m_text.size() && IsBlank(m_text[end])) {
        ++end;
    }
    return m_text.substr(begin, end - begin);
}

// Nothing but blanks, or a comment, follows.
bool CfDocument::EndsItsLine(std::size_t position) const {
    while (position < m_text.size() && (IsBlank(m_text[position]) || m_text[position] == '\r')) {
        ++position;
    }
    return position == m_text.size() || m_text[position] == '\n' || m_text.compare(position, 2, "//") == 0;
}

std::size_t CfDocument::NextLine(std::size_t position) const {
    const std::size_t end = m_text.find('\n', position);
    return end == std::string::npos ? m_text.size() : end + 1;
}

void CfDocument::Take(std::string text) {
    *this = CfDocument(std::move(text));
}

void CfDocument::Replace(CfSpan span, const std::string& text) {
    // Words must not grow together.
    const std::string apart = EndsItsLine(span.end) || IsBlank(m_text[span.end]) ? "" : " ";
    Take(m_text.substr(0, span.begin) + text + apart + m_text.substr(span.end));
}

// Writes a line (or several) behind the statement that ends at `end`.
void CfDocument::InsertBehind(std::size_t end, bool withBlankLine, const std::string& line) {
    const std::string lineEnd = LineEnd();
    std::string inserted = (withBlankLine ? lineEnd : "") + line + lineEnd;
    std::size_t position = end;
    if (EndsItsLine(end)) {
        position = NextLine(end);
        if (position == m_text.size() && m_text[position - 1] != '\n') {
            inserted = lineEnd + inserted;
        }
    } else {
        inserted = lineEnd + inserted;
    }
    Take(m_text.substr(0, position) + inserted + m_text.substr(position));
}

// Takes a statement out of `text`, which is the document's up to the end of the statement at least.
void CfDocument::Erase(CfSpan span, std::string& text) const {
    std::size_t end = span.end;
    while (end < m_text.size() && (IsBlank(m_text[end]) || m_text[end] == '\r')) {
        ++end;
    }
    const bool alone = BeginsItsLine(span.begin) && (end == m_text.size() || m_text[end] == '\n');
    if (!alone) {
        text.replace(span.begin, span.end - span.begin, " ");
        return;
    }
    const std::size_t first = span.begin == 0 ? 0 : m_text.rfind('\n', span.begin - 1) + 1;
    std::size_t next = NextLine(end);
    // What stood between two empty lines leaves one of them.
    const auto isEmptyLine = [this](std::size_t position) {
        return position < m_text.size() && (m_text[position] == '\n' || m_text.compare(position, 2, "\r\n") == 0);
    };
    const std::size_t before = first < 2 ? std::string::npos : m_text.rfind('\n', first - 2) + 1;
    if (before != std::string::npos && isEmptyLine(before) && isEmptyLine(next)) {
        next = NextLine(next);
    }
    text.erase(first, next - first);
}

void CfDocument::AddResource(const std::string& group, const std::string& type, const std::string& name) {
    const CfGroup& owner = *GroupNamed(group);
    const CfBlock& last = owner.resources.empty() ? owner.block : owner.resources.back();
    const std::string indent = IndentAt(owner.block.span.begin) + "\t";
    const std::string lineEnd = LineEnd();
    InsertBehind(last.span.end, true, indent + type + " " + name + " (" + lineEnd + indent + "\t)");
}

void CfDocument::RemoveResource(const std::string& name) {
    const CfGroup& group = *GroupOf(name);
    std::vector<CfSpan> spans = {ResourceNamed(name)->span};
    for (const CfLink& link : group.links) {
        if (link.parent == name || link.child == name) {
            spans.push_back(link.span);
        }
    }
    std::sort(spans.begin(), spans.end(), [](const CfSpan& a, const CfSpan& b) { return a.begin > b.begin; });
    std::string text = m_text;
    for (const CfSpan& span : spans) {
        Erase(span, text);
    }
    Take(std::move(text));
}

void CfDocument::AddLink(const std::string& parent, const std::string& child) {
    const CfGroup& group = *GroupOf(parent);
    const std::string line =
        IndentAt(group.block.span.begin) + "\t" + WrittenName(parent) + " requires " + WrittenName(child);
    if (!group.links.empty()) {
        InsertBehind(group.links.back().span.end, false, line);
    } else {
        InsertBehind(group.resources.back().span.end, true, line);
    }
}

void CfDocument::RemoveLink(const std::string& parent, const std::string& child) {
    for (const CfLink& link : GroupOf(parent)->links) {
        if (link.parent == parent && link.child == child) {
            std::string text = m_text;
            Erase(link.span, text);
            Take(std::move(text));
            return;
        }
    }
}

void CfDocument::AddGroup(const std::string& name) {
    const std::string lineEnd = LineEnd();
    const bool isEnded = m_text.empty() || m_text.back() == '\n';
    Take(m_text + (isEnded ? "" : lineEnd) + lineEnd + "group " + name + " (" + lineEnd + "\t)" + lineEnd);
}

void CfDocument::RemoveGroup(const std::string& name) {
    const CfGroup& group = *GroupNamed(name);
    std::vector<CfSpan> spans = {group.block.span};
    for (const CfLink& link : group.requires_) {
        spans.push_back(link.span);
    }
    // What is not understood stands in the group that it follows.
    const auto next = std::find_if(m_groups.begin(), m_groups.end(), [&](const CfGroup& other) {
        return other.block.span.begin > group.block.span.begin;
    });
    for (const CfSpan& kept : m_kept) {
        if (kept.begin > group.block.span.end && (next == m_groups.end() || kept.begin < next->block.span.begin)) {
            spans.push_back(kept);
        }
    }
    std::sort(spans.begin(), spans.end(), [](const CfSpan& a, const CfSpan& b) { return a.begin > b.begin; });
    std::string text = m_text;
    for (const CfSpan& span : spans) {
        Erase(span, text);
    }
    Take(std::move(text));
}

void CfDocument::AddGroupLink(const std::string& parent, const std::string& child, const std::string& relationship) {
    const CfGroup& group = *GroupNamed(parent);
    const std::string line =
        IndentAt(group.block.span.begin) + "\trequires group " + WrittenName(child) + " " + relationship;
    if (!group.requires_.empty()) {
        InsertBehind(group.requires_.back().span.end, false, line);
    } else {
        InsertBehind((group.resources.empty() ? group.block : group.resources.back()).span.end, true, line);
    }
}

void CfDocument::RemoveGroupLink(const std::string& parent, const std::string& child) {
    for (const CfLink& link : GroupNamed(parent)->requires_) {
        if (link.child == child) {
            std::string text = m_text;
            Erase(link.span, text);
            Take(std::move(text));
            return;
        }
    }
}

void CfDocument::SetAttribute(const std::string& resource, const std::string& attribute, const std::string& system,
                              const std::string& written) {
    SetIn(*ResourceNamed(resource), attribute, system, written);
}

void CfDocument::SetGroupAttribute(const std::string& group, const std::string& attribute, const std::string& written) {
    SetIn(GroupNamed(group)->block, attribute, "", written);
}

void CfDocument::SetSystemAttribute(const std::string& system, const std::string& attribute,
                                    const std::string& written) {
    const auto found = std::find_if(m_systems.begin(), m_systems.end(),
                                    [&](const CfBlock& candidate) { return candidate.name == system; });
    SetIn(*found, attribute, "", written);
}

void CfDocument::SetIn(const CfBlock& block, const std::string& attribute, const std::string& system,
                       const std::string& written) {
    if (const CfAttribute* existing = block.Find(attribute, system)) {
        Replace(existing->value.span, written);
        return;
    }
    const std::string line = attribute + (system.empty() ? "" : " @" + QuotedCf(system)) + " = " + written;
    const std::string indent = IndentAt(block.span.begin) + "\t";
    for (std::size_t i = block.attributes.size(); i > 0; --i) {
        const CfAttribute& sibling = block.attributes[i - 1];
        if (sibling.name == attribute) {
            InsertBehind(sibling.span.end, false, indent + line);
            return;
        }
    }
    const std::string lineEnd = LineEnd();
    if (block.close == 0) { // a system without a body
        const std::size_t end = block.span.end;
        Take(m_text.substr(0, end) + " (" + lineEnd + indent + line + lineEnd + indent + ")" + m_text.substr(end));
        return;
    }
    if (!BeginsItsLine(block.close)) {
        Take(m_text.substr(0, block.close) + lineEnd + indent + line + lineEnd + indent + m_text.substr(block.close));
        return;
    }
    const std::size_t lineBegin = m_text.rfind('\n', block.close) + 1;
    const bool hasOwnLine = !block.attributes.empty() && BeginsItsLine(block.attributes.back().span.begin);
    const std::string asOthers = hasOwnLine ? IndentAt(block.attributes.back().span.begin) : indent;
    Take(m_text.substr(0, lineBegin) + asOthers + line + lineEnd + m_text.substr(lineBegin));
}

void CfDocument::RemoveAttribute(const std::string& resource, const std::string& attribute) {
    const CfBlock& block = *ResourceNamed(resource);
    std::string text = m_text;
    for (std::size_t i = block.attributes.size(); i > 0; --i) {
        if (block.attributes[i - 1].name == attribute) {
            Erase(block.attributes[i - 1].span, text);
        }
    }
    Take(std::move(text));
}

} // namespace vcssim
