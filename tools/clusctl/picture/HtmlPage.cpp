#include "HtmlPage.h"

#include "Drawing.h"
#include "Svg.h"
#include "Xml.h"

#include <algorithm>
#include <cstddef>

namespace picture {

namespace {

const char Style[] =
    ":root{color-scheme:light dark;--text:#1f2328;--dim:#57606a;--back:#ffffff;--soft:#f6f8fa;--line:#d0d7de;"
    "--good:#1a7f37;--fair:#9a6700;--bad:#b3261e}"
    "@media screen and (prefers-color-scheme:dark){:root{--text:#e6edf3;--dim:#9da7b1;--back:#0d1117;--soft:#161b22;"
    "--line:#30363d;--good:#3fb950;--fair:#d29922;--bad:#ff7b72}}"
    "*{box-sizing:border-box}body{margin:0;background:var(--back);color:var(--text);"
    "font:15px/1.5 'Segoe UI',Roboto,'DejaVu Sans',Arial,sans-serif}"
    "main,header,footer{max-width:1500px;margin:0 auto;padding:0 20px}header{padding-top:24px}"
    "h1{font-size:26px;margin:0}h2{font-size:19px;margin:32px 0 8px;border-bottom:1px solid var(--line)}"
    "h1,h2,p,li,figcaption{overflow-wrap:anywhere}td,th{overflow-wrap:break-word}.dim,footer,figcaption{color:var(--"
    "dim)}footer{padding:24px "
    "20px}"
    ".badge{display:inline-block;padding:1px 10px;border-radius:12px;border:1px solid currentColor;font-weight:600}"
    ".good{color:var(--good)}.fair{color:var(--fair)}.bad{color:var(--bad)}"
    ".frame{overflow-x:auto;margin:12px 0}.frame svg{display:block;max-width:100%;height:auto}"
    ".wide{overflow-x:auto}table{border-collapse:collapse;width:100%;font-size:14px}"
    "th,td{text-align:left;vertical-align:top;padding:5px 10px;border-bottom:1px solid var(--line);min-width:5em}"
    "th{background:var(--soft)}tr[hidden]{display:none}"
    "input{font:inherit;color:inherit;background:var(--soft);border:1px solid var(--line);border-radius:6px;"
    "padding:5px 10px;margin:4px 0 10px;width:100%;max-width:420px}.search{display:none}"
    "@page{size:landscape;margin:12mm}"
    "@media print{body{font-size:11px}main,header,footer{max-width:none;padding:0}.search{display:none!important}"
    "tr[hidden]{display:table-row}.frame "
    "svg{min-width:0!important}tr,.frame{break-inside:avoid}h2{break-after:avoid}.frame,.wide{overflow:visible}"
    "table{font-size:11px}th,td{min-width:7em;overflow-wrap:anywhere}}";

// Hides the rows that lack one of the words; says how many are left.
const char Script[] = "document.querySelectorAll('.search').forEach(function(box){"
                      "var input=box.querySelector('input'),count=box.querySelector('span'),"
                      "rows=Array.prototype.slice.call(box.nextElementSibling.querySelectorAll('tbody tr'));"
                      "function show(){var words=input.value.toLowerCase().split(/\\s+/),left=0;"
                      "rows.forEach(function(row){var text=row.textContent.toLowerCase();"
                      "row.hidden=!words.every(function(word){return text.indexOf(word)>=0});if(!row.hidden)left++});"
                      "count.textContent=left+' of '+rows.length}"
                      "input.addEventListener('input',show);show();box.style.display='block'});";

const char* ClassOf(const std::string& word) {
    static const char* const bad[] = {"critical", "error", "failed", "faulted", "missing", "unable to go offline"};
    static const char* const fair[] = {"warning",        "unknown",         "pending",
                                       "online pending", "offline pending", "partly online",
                                       "incomplete",     "initializing",    "paused"};
    static const char* const good[] = {"ok", "online", "up", "running"};
    const auto isIn = [&word](const auto& list) {
        return std::find(std::begin(list), std::end(list), word) != std::end(list);
    };
    return isIn(bad) ? "bad" : isIn(fair) ? "fair" : isIn(good) ? "good" : "";
}

std::string Cell(const std::string& text) {
    const std::string look = ClassOf(text);
    return (look.empty() ? "<td>" : "<td class=\"" + look + "\">") + (text.empty() ? "–" : EscapedXml(text)) + "</td>";
}

std::string TableElement(const PageTable& table) {
    if (table.rows.empty()) {
        return "<p>" + EscapedXml(table.whenEmpty) + "</p>\n";
    }
    std::string text = "<div class=\"wide\"><table><thead><tr>";
    for (const std::string& column : table.columns) {
        text += "<th scope=\"col\">" + EscapedXml(column) + "</th>";
    }
    text += "</tr></thead><tbody>\n";
    for (const std::vector<std::string>& row : table.rows) {
        text += "<tr>";
        for (const std::string& cell : row) {
            text += Cell(cell);
        }
        text += "</tr>\n";
    }
    return text + "</tbody></table></div>\n";
}

std::string Section(const PageTable& table) {
    return "<h2>" + EscapedXml(table.title) + "</h2>\n" + TableElement(table);
}

std::string SearchableSection(const PageTable& table) {
    return "<h2>" + EscapedXml(table.title) +
           "</h2>\n<div class=\"search\"><input type=\"search\" aria-label=\"Search " + EscapedXml(table.title) +
           "\" placeholder=\"Search\"> <span class=\"dim\"></span></div>" + TableElement(table);
}

PageTable ProblemTable(const Health& health) {
    PageTable table = {"What is not as it should be", "Nothing.", {"Level", "Object", "Problem"}, {}};
    for (const Problem& problem : health.problems) {
        table.rows.push_back({NameOf(problem.level), problem.object, problem.text});
    }
    return table;
}

PageTable ServerTable(const Health& health) {
    PageTable table = {"Exchange virtual servers",
                       "There is none.",
                       {"Server", "Group", "State", "Node", "Product", "In order", "Product's resources"},
                       {}};
    for (const VirtualServer& server : health.servers) {
        std::string parts;
        for (const ProductPart& part : server.parts) {
            if (!part.name.empty()) {
                parts += (parts.empty() ? "" : ", ") + part.name + " (" + part.state + ")";
            }
        }
        table.rows.push_back({server.name, server.group, server.state, server.node, server.product,
                              server.isInOrder ? "yes" : "no", parts});
    }
    return table;
}

PageTable NodeTable(const ClusterPicture& cluster) {
    PageTable table = {"Nodes and what they own", "The cluster has no node.", {"Node", "State", "Groups"}, {}};
    const auto groupsOn = [&cluster](const std::string& node) {
        std::string names;
        for (const Group& group : cluster.groups) {
            names += group.node == node ? (names.empty() ? "" : ", ") + group.name + " (" + group.state + ")" : "";
        }
        return names;
    };
    for (const Node& node : cluster.nodes) {
        table.rows.push_back({node.name, node.state, groupsOn(node.name)});
    }
    const std::string nowhere = groupsOn(std::string());
    if (!nowhere.empty()) {
        table.rows.push_back({"(nowhere)", std::string(), nowhere});
    }
    return table;
}

std::string JoinedStates(const std::vector<StateOnNode>& states, const std::string& otherwise) {
    std::string text;
    for (const StateOnNode& each : states) {
        text += (text.empty() ? "" : ", ") + each.node + ": " + each.state;
    }
    return text.empty() ? otherwise : text;
}

PageTable GroupTable(const ClusterPicture& cluster) {
    PageTable table = {"All groups", "The cluster has no group.", {"Group", "State", "Node"}, {}};
    for (const Group& group : cluster.groups) {
        table.rows.push_back({group.name, group.state, JoinedStates(group.states, group.node)});
    }
    return table;
}

PageTable ResourceTable(const PictureIndex& index) {
    PageTable table = {"All resources",
                       "The cluster has no resource.",
                       {"Resource", "Type", "Group", "State", "Node", "Part", "Depends on"},
                       {}};
    const std::set<std::string>& base = index.BaseOfProduct();
    for (const Resource& resource : index.Cluster().resources) {
        std::string names = resource.hasDependenciesRead ? "" : "cannot be read";
        for (const std::string& name : resource.dependsOn) {
            names += (names.empty() ? "" : ", ") + name;
        }
        table.rows.push_back({resource.name, resource.type, resource.group, resource.state, resource.node,
                              resource.role == Role::Product   ? "product"
                              : base.count(resource.name) != 0 ? "product's base"
                                                               : "",
                              names});
    }
    return table;
}

std::string Pictures(const PageContent& content, const PictureIndex& index) {
    std::string text =
        "<h2>What the virtual servers depend on</h2>\n<p class=\"dim\">Boxes stand to the left of those that "
        "they depend on. The product's have a bold frame; what it rests on is tinted.</p>\n";
    for (const VirtualServer& server : content.health.servers) {
        const Group* const group = index.GroupNamed(server.group);
        text += "<figure class=\"frame\" tabindex=\"0\">" + SvgPicture(DrawGroups(index, {group}), SvgForm::Inline) +
                "<figcaption>" + EscapedXml(server.name) + "</figcaption></figure>\n";
    }
    return content.health.servers.empty() ? std::string() : text;
}

std::string Head(const PageContent& content) {
    const ClusterPicture& cluster = content.cluster;
    const std::string kind = cluster.kind == Kind::Vcs        ? "VCS cluster"
                             : cluster.kind == Kind::Failover ? "Failover cluster"
                                                              : "No cluster";
    const std::string title = EscapedXml(kind + (cluster.name.empty() ? "" : " " + cluster.name));
    const std::string level = NameOf(content.health.level);
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
           // Nothing is fetched, whatever a name may hold.
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
           "script-src 'unsafe-inline'; img-src data:\">\n<link rel=\"icon\" href=\"data:,\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           title + "</title>\n<style>" + Style + SvgStyle() + "</style></head>\n<body><header><h1>" + title +
           "</h1>\n<p><span class=\"badge " + ClassOf(level) + "\">" + level + "</span> " +
           std::to_string(content.health.serversProtected) + " of " + std::to_string(content.health.servers.size()) +
           " virtual servers protected, " + std::to_string(content.health.nodesUp) + " of " +
           std::to_string(cluster.nodes.size()) + " nodes up</p>\n<p class=\"dim\">As seen from " +
           EscapedXml(content.computer) + ", " + EscapedXml(content.madeAt) +
           (content.simulated.empty() ? "" : "; simulated: the answers come from " + EscapedXml(content.simulated)) +
           "</p></header>\n<main>\n";
}

} // namespace

std::string HtmlPage(const PageContent& content) {
    const PictureIndex index(content.cluster);
    std::string text = Head(content);
    if (!content.warnings.empty()) {
        text += "<h2>What could not be read</h2>\n<ul>\n";
        for (const std::string& warning : content.warnings) {
            text += "<li>" + EscapedXml(warning) + "</li>\n";
        }
        text += "</ul>\n";
    }
    if (content.cluster.kind != Kind::None) {
        text += Section(ProblemTable(content.health)) + Section(ServerTable(content.health)) +
                Pictures(content, index) + Section(NodeTable(content.cluster));
    }
    for (const PageTable& table : content.tables) {
        text += Section(table);
    }
    if (content.cluster.kind != Kind::None) {
        text += SearchableSection(GroupTable(content.cluster)) + SearchableSection(ResourceTable(index));
    }
    return text + "</main>\n<footer>Made by " + EscapedXml(content.madeBy) + "</footer>\n<script>" + Script +
           "</script></body></html>\n";
}

} // namespace picture
