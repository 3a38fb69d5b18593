#include "Tree.h"

#include <algorithm>
#include <set>
#include <utility>

namespace picture {

namespace {

class Drawing {
public:
    Drawing(const PictureIndex& index, Direction direction) : m_index(index), m_direction(direction) {
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
        const Resource* const resource = m_index.ResourceNamed(name);
        const std::vector<std::string>& below = Below(name, resource);
        const bool isFirst = m_drawn.insert(name).second;
        m_lines.push_back({branches, name, resource, !below.empty() && !isFirst});
        if (!below.empty() && isFirst) {
            open.push_back({&below, 0, margin});
        }
    }

    const std::vector<std::string>& Below(const std::string& name, const Resource* resource) const {
        static const std::vector<std::string> none;
        return m_direction == Direction::NeededBy ? m_index.Dependants(name)
               : resource == nullptr              ? none
                                                  : resource->dependsOn;
    }

    const PictureIndex& m_index;
    const Direction m_direction;
    std::set<std::string> m_drawn;
    std::vector<TreeLine> m_lines;
};

} // namespace

std::vector<TreeLine> TreeOf(const PictureIndex& index, const std::vector<std::string>& roots, Direction direction) {
    Drawing drawing(index, direction);
    for (const std::string& root : roots) {
        drawing.AddRoot(root);
    }
    return drawing.Lines();
}

std::vector<std::string> RootsOf(const PictureIndex& index, const std::string& group) {
    const std::vector<const Resource*>& members = index.MembersOf(group);
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
        const std::set<std::string> base = index.BaseOf(member);
        reached.insert(base.begin(), base.end());
    };
    for (const Resource* const member : members) {
        if (needed.count(member->name) == 0) {
            take(*member);
        }
    }
    const auto placeOf = [&index](const std::string& name) {
        const Resource& resource = *index.ResourceNamed(name);
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
