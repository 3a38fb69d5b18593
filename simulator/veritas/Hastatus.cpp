// hastatus: the summary of systems and groups, and of what is not as it should be.
#include "Tools.h"

#include <utility>

namespace vcssim {

namespace {

typedef std::vector<std::string> Cells;

// A section: its title, its columns, and its rows behind their letter.
class Section {
public:
    Section(const char* title, char letter, std::vector<std::size_t> widths, const Cells& columns)
        : m_letter(letter), m_widths(std::move(widths)) {
        m_head = std::string("\n-- ") + title + "\n" + (columns.empty() ? "" : "-- " + Line(columns));
    }

    void Add(const Cells& cells) {
        m_rows += m_letter + std::string("  ") + Line(cells);
    }
    // Sections without rows are left out.
    std::string Text() const {
        return m_rows.empty() ? "" : m_head + "\n" + m_rows;
    }

private:
    std::string Line(const Cells& cells) const {
        std::string line;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            line += i + 1 < cells.size() ? Padded(cells[i], m_widths[i]) + " " : cells[i] + "\n";
        }
        return line;
    }

    char m_letter;
    std::vector<std::size_t> m_widths;
    std::string m_head;
    std::string m_rows;
};

std::string Systems(const Cluster& cluster) {
    Section section("SYSTEM STATE", 'A', {20, 20}, {"System", "State", "Frozen"});
    for (const CfBlock& system : cluster.configuration.Systems()) {
        section.Add({system.name, cluster.SystemAttribute(system, "SysState").front().parts.front(),
                     cluster.IsFrozen(system) ? "1" : "0"});
    }
    return section.Text();
}

std::string Groups(const Cluster& cluster) {
    Section section("GROUP STATE", 'B', {15, 20, 10, 15}, {"Group", "System", "Probed", "AutoDisabled", "State"});
    for (const CfGroup& group : cluster.configuration.Groups()) {
        for (const std::string& system : cluster.SystemsOf(group)) {
            section.Add({group.block.name, system, "Y", "N", cluster.GroupState(group, system)});
        }
    }
    return section.Text();
}

std::string Resources(const Cluster& cluster, bool all) {
    const std::vector<std::size_t> widths = {15, 20, 20, 20};
    Section failed("RESOURCES FAILED", 'C', widths, {"Group", "Type", "Resource", "System"});
    Section onlining("RESOURCES ONLINING", 'E', widths, {"Group", "Type", "Resource", "System", "IState"});
    Section offlining("RESOURCES OFFLINING", 'F', widths, {"Group", "Type", "Resource", "System", "IState"});
    Section frozen("GROUPS FROZEN", 'G', {}, {});
    for (const CfGroup& group : cluster.configuration.Groups()) {
        if (cluster.IsFrozen(group)) {
            frozen.Add({group.block.name});
        }
        for (const CfBlock& resource : group.resources) {
            for (const std::string& system : cluster.SystemsOf(group)) {
                const Cells cells = {group.block.name, resource.keyword, resource.name, system};
                const auto transition = cluster.state.progress.TransitionOf(resource.name, system);
                if (cluster.ResourceState(resource, system).compare(0, 7, "FAULTED") == 0) {
                    failed.Add(cells);
                }
                if (GoesUp(transition)) {
                    onlining.Add({cells[0], cells[1], cells[2], cells[3], "W_ONLINE"});
                }
                if (GoesDown(transition)) {
                    offlining.Add({cells[0], cells[1], cells[2], cells[3], "W_OFFLINE"});
                }
            }
        }
    }
    return failed.Text() + (all ? onlining.Text() + offlining.Text() + frozen.Text() : "");
}

} // namespace

void RunHastatus(Context& context, Arguments arguments) {
    const std::string command = arguments.Next();
    if (command != "-sum" && command != "-summary") {
        throw UsageError();
    }
    arguments.TakeFlag("-localclus");
    arguments.NeedEnd();
    context.output.Print(Systems(context.cluster) + Groups(context.cluster) +
                         Resources(context.cluster, !context.output.Switches().shortSummary));
}

} // namespace vcssim
