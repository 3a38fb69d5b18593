#include "Tree.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace picture {

namespace {

class Drawing {
public:
    Drawing(const ClusterPicture& cluster, Direction direction) {
        for (const Resource& resource : cluster.resources) {
            m_resources.emplace(resource.name, &resource);
            for (const std::string& name : resource.dependsOn) {
                const bool isDown = direction == Direction::DependsOn;
                m_below[isDown ? resource.name : name].push_back(isDown ? name : resource.name);
            }
        }
    }

    void AddRoot(const std::string& name) {
        Add(name, std::string(), std::string());
    }

    std::vector<TreeLine> Lines() {
        return std::move(m_lines);
    }

private:
    // A name whose children have still to be drawn, with what leads to them.
    struct Open {
        const std::vector<std::string>* children;
        std::size_t next;
        std::string margin;
    };

    // Not by recursion: a model may be a chain of any length.
    void Add(const std::string& root, const std::string& branches, const std::string& margin) {
        std::vector<Open> open;
        Begin(root, branches, margin, open);
        while (!open.empty()) {
            Open& top = open.back();
            if (top.next == top.children->size()) {
                open.pop_back();
                continue;
            }
            const std::string name = (*top.children)[top.next++];
            const bool isLast = top.next == top.children->size();
            const std::string outer = top.margin;
            Begin(name, outer + (isLast ? "└── " : "├── "), outer + (isLast ? "    " : "│   "), open);
        }
    }

    void Begin(const std::string& name, const std::string& branches, const std::string& margin,
               std::vector<Open>& open) {
        const auto resource = m_resources.find(name);
        const auto below = m_below.find(name);
        const bool hasBelow = below != m_below.end();
        const bool isFirst = m_drawn.insert(name).second;
        m_lines.push_back(
            {branches, name, resource == m_resources.end() ? nullptr : resource->second, hasBelow && !isFirst});
        if (hasBelow && isFirst) {
            open.push_back({&below->second, 0, margin});
        }
    }

    std::map<std::string, const Resource*> m_resources;
    std::map<std::string, std::vector<std::string>> m_below;
    std::set<std::string> m_drawn;
    std::vector<TreeLine> m_lines;
};

} // namespace

std::vector<TreeLine> TreeOf(const ClusterPicture& cluster, const std::vector<std::string>& roots,
                             Direction direction) {
    Drawing drawing(cluster, direction);
    for (const std::string& root : roots) {
        drawing.AddRoot(root);
    }
    return drawing.Lines();
}

std::vector<std::string> RootsOf(const ClusterPicture& cluster, const std::string& group) {
    const std::vector<const Resource*> members = MembersOf(cluster, group);
    std::set<std::string> needed;
    for (const Resource* const member : members) {
        for (const std::string& name : member->dependsOn) {
            if (name != member->name) {
                needed.insert(name);
            }
        }
    }
    std::vector<std::string> roots;
    std::set<std::string> reached;
    const auto take = [&](const Resource& member) {
        roots.push_back(member.name);
        reached.insert(member.name);
        const std::set<std::string> base = BaseOf(cluster, member);
        reached.insert(base.begin(), base.end());
    };
    for (const Resource* const member : members) {
        if (needed.count(member->name) == 0) {
            take(*member);
        }
    }
    const auto placeOf = [&cluster](const std::string& name) {
        const Resource& resource = *ResourceNamed(cluster, name);
        return resource.role == Role::Product ? 0 : resource.dependsOn.empty() ? 2 : 1;
    };
    std::stable_sort(roots.begin(), roots.end(), [&placeOf](const std::string& one, const std::string& other) {
        return placeOf(one) < placeOf(other);
    });
    for (const Resource* const member : members) { // what is left needs itself
        if (reached.count(member->name) == 0) {
            take(*member);
        }
    }
    return roots;
}

} // namespace picture
