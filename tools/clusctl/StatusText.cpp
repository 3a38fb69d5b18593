#include "StatusText.h"

#include "Stream.h"
#include "Text.h"

#include "picture/SystemsUnder.h"
#include "picture/TextWidth.h"

#include "common/Environment.h"

#include <algorithm>
#include <utility>

using namespace picture;

namespace {

const size_t WidestColumn = 60; // a longer cell pushes the rest of its line

const char* StyleOf(Level level) {
    switch (level) {
    case Level::Critical:
        return Styles::Red;
    case Level::Warning:
    case Level::Unknown:
        return Styles::Yellow;
    default:
        return "";
    }
}

std::string OrDash(const std::string& text) {
    return text.empty() ? "-" : Printable(text);
}

std::string Place(const ClusterPicture& cluster, const std::string& node) {
    return OrDash(node) + (RunningUnder(cluster, node) == NotRunning ? std::string(" (") + NotRunning + ")" : "");
}

class Table {
public:
    void Add(std::vector<std::string> cells, const char* style) {
        m_rows.emplace_back(std::move(cells), style);
    }

    void AppendTo(std::vector<StyledLine>& lines) const {
        std::vector<size_t> widths(m_rows.front().first.size(), 0);
        for (const auto& row : m_rows) {
            for (size_t i = 0; i < widths.size(); ++i) {
                widths[i] = std::max(widths[i], std::min(CellsOf(row.first[i]), WidestColumn));
            }
        }
        for (const auto& row : m_rows) {
            std::string text;
            for (size_t i = 0; i + 1 < widths.size(); ++i) {
                text += PaddedToCells(row.first[i], widths[i]) + "  ";
            }
            lines.push_back({text + row.first.back(), row.second});
        }
    }

private:
    std::vector<std::pair<std::vector<std::string>, const char*>> m_rows;
};

std::string Headline(const ClusterPicture& cluster, const Health& health) {
    const std::string kind = cluster.kind == Kind::Vcs ? "VCS cluster" : "Failover cluster";
    return kind + (cluster.name.empty() ? "" : " " + Printable(cluster.name)) + ": " + NameOf(health.level) + ", " +
           std::to_string(health.serversProtected) + " of " + std::to_string(health.servers.size()) +
           " virtual servers protected";
}

void AddProblems(const Health& health, std::vector<StyledLine>& lines) {
    if (health.problems.empty()) {
        return;
    }
    Table table;
    for (const Problem& problem : health.problems) {
        table.Add({NameOf(problem.level), OrDash(problem.object), problem.text}, StyleOf(problem.level));
    }
    lines.push_back({});
    table.AppendTo(lines);
}

void AddServers(const ClusterPicture& cluster, const Health& health, std::vector<StyledLine>& lines) {
    lines.push_back({});
    if (health.servers.empty()) {
        lines.push_back({"There is no Exchange virtual server.", ""});
        return;
    }
    Table table;
    table.Add({"VIRTUAL SERVER", "GROUP", "STATE", "NODE", "PRODUCT"}, Styles::Bold);
    for (const VirtualServer& server : health.servers) {
        table.Add({Printable(server.name), Printable(server.group), server.state, Place(cluster, server.node),
                   server.product + (server.isInOrder ? "" : ", not in order")},
                  StyleOf(server.level));
    }
    table.AppendTo(lines);
}

void AddNodes(const ClusterPicture& cluster, std::vector<StyledLine>& lines) {
    Table table;
    table.Add({"NODE", "STATE"}, Styles::Bold);
    for (const Node& node : cluster.nodes) {
        table.Add({Printable(node.name), node.state}, node.isUp ? "" : Styles::Yellow);
    }
    lines.push_back({});
    table.AppendTo(lines);
}

void AddOtherGroups(const ClusterPicture& cluster, const Health& health, std::vector<StyledLine>& lines) {
    Table table;
    table.Add({"OTHER GROUP", "STATE", "NODE"}, Styles::Bold);
    bool hasOne = false;
    for (const Group& group : cluster.groups) {
        const bool isServer = std::any_of(health.servers.begin(), health.servers.end(),
                                          [&group](const VirtualServer& server) { return server.group == group.name; });
        if (!isServer) {
            hasOne = true;
            table.Add({Printable(group.name), group.state, Place(cluster, group.node)},
                      group.condition == Condition::Failed ? Styles::Red : "");
        }
    }
    if (hasOne) {
        lines.push_back({});
        table.AppendTo(lines);
    }
}

} // namespace

std::vector<StyledLine> StatusPage(const ClusterPicture& cluster, const Health& health) {
    if (cluster.kind == Kind::None) {
        return {{"This computer is in no cluster, and the product is configured for none.", ""}};
    }
    std::vector<StyledLine> lines;
    lines.push_back({Headline(cluster, health), health.level == Level::Ok ? Styles::Green : StyleOf(health.level)});
    AddProblems(health, lines);
    AddServers(cluster, health, lines);
    AddNodes(cluster, lines);
    AddOtherGroups(cluster, health, lines);
    return lines;
}

bool WantsColour() {
    return Stream(STD_OUTPUT_HANDLE).IsConsole() && common::EnvironmentVariable(L"NO_COLOR").empty();
}
