#include "PictureCommands.h"

#include "CommandLine.h"
#include "Deployment.h"
#include "PictureJson.h"
#include "ReadPicture.h"
#include "Text.h"

#include "picture/GraphText.h"
#include "picture/Svg.h"
#include "picture/TextWidth.h"
#include "picture/Tree.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>
#include <vector>

using namespace picture;

namespace {

// Lines of three columns, as wide as the widest cell of each; longer names push the rest of their line.
class TreeText {
public:
    explicit TreeText(const PictureIndex& index) : m_index(index) {
    }

    void AddHeading(const std::string& heading) {
        m_lines.push_back({heading, std::string(), std::string(), std::string()});
    }

    void AddTree(const std::vector<std::string>& roots, Direction direction) {
        for (const TreeLine& line : TreeOf(m_index, roots, direction)) {
            const std::string name = Printable(line.name) + (line.isRepeated ? " (see above)" : "");
            m_lines.push_back(line.resource == nullptr
                                  ? Line{line.branches + name, "-", "unknown", std::string()}
                                  : Line{line.branches + name,
                                         line.resource->type.empty() ? "-" : Printable(line.resource->type),
                                         StateOf(*line.resource), MarkOf(*line.resource)});
        }
    }

    std::string Text() const {
        std::vector<size_t> widths(2, 0);
        for (const Line& line : m_lines) {
            if (!line.type.empty()) {
                widths[0] = std::max(widths[0], std::min(CellsOf(line.name), WidestColumn));
                widths[1] = std::max(widths[1], std::min(CellsOf(line.type), WidestColumn));
            }
        }
        std::string text;
        for (const Line& line : m_lines) {
            text += text.empty() ? "" : "\n";
            text += line.type.empty()
                        ? line.name
                        : PaddedToCells(line.name, widths[0]) + "  " + PaddedToCells(line.type, widths[1]) + "  " +
                              line.state + (line.mark.empty() ? "" : "  " + line.mark);
        }
        return text;
    }

private:
    static constexpr size_t WidestColumn = 80;

    struct Line {
        std::string name;
        std::string type; // empty: a line of its own, without columns
        std::string state;
        std::string mark;
    };

    std::string StateOf(const Resource& resource) const {
        const Group* const group = m_index.GroupNamed(resource.group);
        const bool isElsewhere = group != nullptr && !resource.node.empty() && resource.node != group->node;
        return resource.state + (isElsewhere ? " on " + Printable(resource.node) : "");
    }

    std::string MarkOf(const Resource& resource) const {
        return resource.role == Role::Product                      ? "<== product"
               : m_index.BaseOfProduct().count(resource.name) != 0 ? "<-- product's base"
                                                                   : "";
    }

    const PictureIndex& m_index;
    std::vector<Line> m_lines;
};

// Of a group that cannot be read nobody knows whether it is empty.
std::string GroupHeading(const Group& group, bool isEmpty) {
    return "Group " + Printable(group.name) + ": " + group.state +
           (group.node.empty() ? "" : " on " + Printable(group.node)) +
           (isEmpty && group.condition != Condition::Unknown ? ", without resources" : "");
}

std::vector<const Group*> AllGroups(const ClusterPicture& cluster) {
    std::vector<const Group*> groups;
    for (const Group& group : cluster.groups) {
        groups.push_back(&group);
    }
    return groups;
}

// The resources whose group cannot be read.
void AddHomeless(const PictureIndex& index, TreeText& text, std::vector<const Resource*>& shown) {
    const std::vector<const Resource*>& homeless = index.MembersOf(std::string());
    if (!homeless.empty()) {
        text.AddHeading(std::string());
        text.AddHeading("Group not known:");
        text.AddTree(RootsOf(index, std::string()), Direction::DependsOn);
        shown.insert(shown.end(), homeless.begin(), homeless.end());
    }
}

void AddGroups(const PictureIndex& index, const std::vector<const Group*>& groups, Report& report) {
    const ClusterPicture& cluster = index.Cluster();
    TreeText text(index);
    Json groupRecords = Json::array();
    std::vector<const Resource*> shown;
    for (const Group* const group : groups) {
        const std::vector<const Resource*>& members = index.MembersOf(group->name);
        if (!groupRecords.empty()) {
            text.AddHeading(std::string());
        }
        text.AddHeading(GroupHeading(*group, members.empty()));
        text.AddTree(RootsOf(index, group->name), Direction::DependsOn);
        groupRecords.push_back(GroupRecord(*group));
        shown.insert(shown.end(), members.begin(), members.end());
    }
    if (groups.size() == cluster.groups.size()) {
        AddHomeless(index, text, shown);
    }
    report.AddMember("groups", std::move(groupRecords));
    report.AddSentence("resources", ResourceRecords(cluster, shown),
                       groups.empty() && shown.empty() ? "The cluster has no group." : text.Text());
}

void AddResource(const PictureIndex& index, const std::string& name, Report& report) {
    const ClusterPicture& cluster = index.Cluster();
    const std::vector<TreeLine> above = TreeOf(index, {name}, Direction::NeededBy);
    TreeText text(index);
    text.AddTree({name}, Direction::DependsOn);
    if (above.size() > 1) {
        text.AddHeading(std::string());
        text.AddHeading("Needed by:");
        text.AddTree({name}, Direction::NeededBy);
    }
    std::set<std::string> names = {name};
    for (const std::vector<TreeLine>& lines : {above, TreeOf(index, {name}, Direction::DependsOn)}) {
        for (const TreeLine& line : lines) {
            names.insert(line.name);
        }
    }
    std::vector<const Resource*> shown;
    for (const Resource& resource : cluster.resources) {
        if (names.count(resource.name) != 0) {
            shown.push_back(&resource);
        }
    }
    const Group* const group = index.GroupNamed(index.ResourceNamed(name)->group);
    report.AddMember("groups", group == nullptr ? Json::array() : Json::array({GroupRecord(*group)}));
    report.AddSentence("resources", ResourceRecords(cluster, shown), text.Text());
}

Report Tree(const LogCapture& log, const std::wstring& wanted) {
    Report report;
    const ClusterPicture cluster = ReadPicture(log, report);
    report.AddMember("cluster", ClusterJson(cluster));
    if (wanted.empty()) {
        AddTrees(cluster, report);
        return report;
    }
    const PictureIndex index(cluster);
    const std::string group = StoredGroup(cluster, wanted);
    const std::string resource = StoredResource(cluster, wanted);
    if (!group.empty()) {
        AddGroups(index, {index.GroupNamed(group)}, report);
    } else if (!resource.empty()) {
        AddResource(index, resource, report);
    } else {
        throw Failure(Errors::NotFound, "there is no group and no resource " + Quoted(wanted));
    }
    return report;
}

struct GraphOptions {
    std::wstring group;
    std::wstring format = L"svg";
};

Report Graph(const LogCapture& log, const GraphOptions& options) {
    Report report;
    const ClusterPicture cluster = ReadPicture(log, report);
    const std::string group = StoredGroup(cluster, options.group);
    if (group.empty() && !options.group.empty()) {
        throw Failure(Errors::GroupNotFound, "there is no group " + Quoted(options.group));
    }
    const PictureIndex index(cluster);
    const std::vector<GroupDrawing> drawings =
        group.empty() ? DrawCluster(index) : DrawGroups(index, {index.GroupNamed(group)});
    std::string text = options.format == L"dot"       ? DotText(drawings)
                       : options.format == L"mermaid" ? MermaidText(drawings)
                                                      : SvgPicture(drawings, SvgForm::File);
    text.pop_back(); // the line end, which follows
    report.AddMember("cluster", ClusterJson(cluster));
    report.AddSentence("graph", {{"format", options.format}, {"text", text}}, text);
    return report;
}

} // namespace

void AddTrees(const ClusterPicture& cluster, Report& report) {
    AddGroups(PictureIndex(cluster), AllGroups(cluster), report);
}

void AddPictureCommands(CommandLine& commandLine) {
    const auto wanted = std::make_shared<std::wstring>();
    CLI::App& tree = commandLine.Add(headings::TheCluster, "tree", "Show what depends on what, with states",
                                     [wanted](const LogCapture& log) { return Tree(log, *wanted); });
    CommandLine::AddText(tree, "GROUP|RESOURCE", *wanted, "GROUP|RESOURCE",
                         "Only the resources of this group, or this resource: what it depends on, and what needs it");
    AddExplain(tree);

    const auto options = std::make_shared<GraphOptions>();
    CLI::App& graph = commandLine.Add(headings::TheCluster, "graph", "Draw what depends on what",
                                      [options](const LogCapture& log) { return Graph(log, *options); });
    CommandLine::AddText(graph, "GROUP", options->group, "GROUP", "Only this group");
    CommandLine::AddChoice(graph, "--format", options->format, {"svg", "dot", "mermaid"},
                           "A picture, which is what it is without this option, or text for Graphviz or Mermaid");
    AddExplain(graph);
}
