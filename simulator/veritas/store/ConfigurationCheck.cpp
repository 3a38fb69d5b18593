#include "ConfigurationCheck.h"

#include <algorithm>
#include <map>

namespace vcssim {

namespace {

typedef std::map<std::string, std::vector<std::string>> Links; // parent -> children

// A thing that requires itself; empty when there is none.
std::string FindLoop(const Links& links) {
    for (const auto& entry : links) {
        std::vector<std::string> seen;
        std::vector<std::string> open = entry.second;
        while (!open.empty()) {
            std::string next = open.back();
            open.pop_back();
            if (next == entry.first) {
                return next;
            }
            const auto further = links.find(next);
            if (further != links.end() && std::find(seen.begin(), seen.end(), next) == seen.end()) {
                seen.push_back(next);
                open.insert(open.end(), further->second.begin(), further->second.end());
            }
        }
    }
    return "";
}

std::size_t PlaceOfLink(const std::vector<CfLink>& links, const std::string& parent) {
    const auto found =
        std::find_if(links.begin(), links.end(), [&parent](const CfLink& link) { return link.parent == parent; });
    return found == links.end() ? 0 : found->span.begin;
}

void CheckList(const Cluster& cluster, const CfGroup& group, const char* attribute, std::vector<Problem>& problems) {
    const CfAttribute* const list = group.block.Find(attribute, "");
    const std::vector<std::string> places = cluster.SystemsOf(group);
    for (std::size_t i = 0; list && i < list->value.elements.size(); ++i) {
        const std::string& system = list->value.elements[i].key;
        if (!cluster.HasSystem(system)) {
            problems.push_back(
                {"system '" + system + "' in the " + attribute + " of group '" + group.block.name + "' does not exist",
                 list->span.begin, false});
        } else if (std::find(places.begin(), places.end(), system) == places.end()) {
            problems.push_back({"system '" + system + "' in the " + attribute + " of group '" + group.block.name +
                                    "' is not in its SystemList",
                                list->span.begin, false});
        }
    }
}

void CheckResources(const Cluster& cluster, const CfGroup& group, std::vector<Problem>& problems) {
    for (const CfBlock& resource : group.resources) {
        for (const CfAttribute& attribute : resource.attributes) {
            const ResourceType* const known = cluster.types.Find(resource.keyword);
            if (known && known->complete && known->statics.count(attribute.name) == 0 &&
                !cluster.types.Find(resource.keyword, attribute.name)) {
                problems.push_back({"type '" + resource.keyword + "' of resource '" + resource.name +
                                        "' has no attribute '" + attribute.name + "'",
                                    attribute.span.begin, true});
            }
        }
    }
    Links links;
    for (const CfLink& link : group.links) {
        links[link.parent].push_back(link.child);
    }
    const std::string loop = FindLoop(links);
    if (!loop.empty()) {
        problems.push_back({"resource '" + loop + "' requires itself", PlaceOfLink(group.links, loop), false});
    }
}

std::string OnOneLine(const std::string& text) {
    std::string line;
    for (const char c : text) {
        const bool isBlank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (!isBlank) {
            line += c;
        } else if (!line.empty() && line.back() != ' ') {
            line += ' ';
        }
    }
    return line;
}

} // namespace

std::vector<Problem> ProblemsOf(const Cluster& cluster) {
    std::vector<Problem> problems;
    Links links;
    for (const CfGroup& group : cluster.configuration.Groups()) {
        CheckList(cluster, group, "SystemList", problems);
        CheckList(cluster, group, "AutoStartList", problems);
        CheckResources(cluster, group, problems);
        for (const CfLink& link : group.requires_) {
            links[link.parent].push_back(link.child);
            if (!cluster.configuration.GroupNamed(link.child)) {
                problems.push_back(
                    {"group '" + link.child + "', which group '" + link.parent + "' requires, does not exist",
                     link.span.begin, false});
            }
        }
    }
    const std::string loop = FindLoop(links);
    if (!loop.empty()) {
        problems.push_back({"group '" + loop + "' requires itself",
                            PlaceOfLink(cluster.configuration.GroupNamed(loop)->requires_, loop), false});
    }
    return problems;
}

std::vector<Problem> NotesOn(const Cluster& cluster) {
    std::vector<Problem> notes;
    const std::string& text = cluster.configuration.Text();
    for (const CfSpan& span : cluster.configuration.Kept()) {
        notes.push_back(
            {"'" + OnOneLine(text.substr(span.begin, span.end - span.begin)) + "' is kept as it is, and has no effect",
             span.begin, false});
    }
    return notes;
}

} // namespace vcssim
