#include "GraphText.h"

#include <cstddef>

namespace picture {

namespace {

// Inside double quotes a backslash begins an escape, and an ampersand an entity.
std::string DotQuoted(const std::string& text) {
    std::string quoted;
    for (const char c : text) {
        quoted += c == '"' ? "\\\"" : c == '\\' ? "\\\\" : c == '&' ? "&amp;" : std::string(1, c);
    }
    return quoted;
}

// What may mean something to Mermaid, or to the HTML that it makes, is written as its code.
std::string MermaidQuoted(const std::string& text) {
    static const std::string meant = "\"#&<>`;\\*_";
    std::string quoted;
    for (const char c : text) {
        quoted +=
            meant.find(c) == std::string::npos ? std::string(1, c) : "#" + std::to_string(static_cast<int>(c)) + ";";
    }
    return quoted;
}

std::string SecondLine(const Box& box) {
    return (box.type.empty() ? "" : box.type + ", ") + box.state;
}

std::string Vertex(std::size_t group, std::size_t box) {
    return "g" + std::to_string(group) + "r" + std::to_string(box);
}

const char* DotColour(const Box& box) {
    switch (box.condition) {
    case Condition::Failed:
        return "#b3261e";
    case Condition::Pending:
        return "#9a6700";
    case Condition::Offline:
    case Condition::Unknown:
        return "#5f6368";
    default:
        return "#1a7f37";
    }
}

std::string DotAttributes(const Box& box) {
    const char* const style = box.look == Look::Product   ? ", style=\"filled,bold\", fillcolor=\"#cfe3ff\", penwidth=3"
                              : box.look == Look::Base    ? ", style=filled, fillcolor=\"#eaf2ff\""
                              : box.look == Look::Foreign ? ", style=dashed"
                                                          : "";
    return "label=\"" + DotQuoted(box.name) + "\\n" + DotQuoted(SecondLine(box)) + "\", color=\"" + DotColour(box) +
           "\"" + style;
}

const char* MermaidClass(const Box& box) {
    return box.look == Look::Product   ? "product"
           : box.look == Look::Base    ? "base"
           : box.look == Look::Foreign ? "foreign"
                                       : "plain";
}

} // namespace

std::string DotText(const std::vector<GroupDrawing>& drawings) {
    std::string text = "digraph cluster {\n    rankdir=LR;\n    node [shape=box, fontname=\"sans-serif\"];\n";
    for (std::size_t group = 0; group < drawings.size(); ++group) {
        const GroupDrawing& drawing = drawings[group];
        text += "    subgraph cluster_" + std::to_string(group) + " {\n        label=\"" + DotQuoted(drawing.title) +
                "\";\n";
        for (std::size_t box = 0; box < drawing.boxes.size(); ++box) {
            text += "        " + Vertex(group, box) + " [" + DotAttributes(drawing.boxes[box]) + "];\n";
        }
        for (const Line& line : drawing.lines) {
            text += "        " + Vertex(group, line.from) + " -> " + Vertex(group, line.to) + ";\n";
        }
        text += "    }\n";
    }
    return text + "}\n";
}

std::string MermaidText(const std::vector<GroupDrawing>& drawings) {
    std::string text = "flowchart LR\n";
    for (std::size_t group = 0; group < drawings.size(); ++group) {
        const GroupDrawing& drawing = drawings[group];
        text += "    subgraph g" + std::to_string(group) + "[\"" + MermaidQuoted(drawing.title) + "\"]\n";
        for (std::size_t box = 0; box < drawing.boxes.size(); ++box) {
            const Box& each = drawing.boxes[box];
            text += "        " + Vertex(group, box) + "[\"" + MermaidQuoted(each.name) + "<br/>" +
                    MermaidQuoted(SecondLine(each)) + "\"]:::" + MermaidClass(each) + "\n";
        }
        text += "    end\n";
        for (const Line& line : drawing.lines) {
            text += "    " + Vertex(group, line.from) + " --> " + Vertex(group, line.to) + "\n";
        }
    }
    return text + "    classDef plain fill:#ffffff,stroke:#5f6368,color:#1f2328\n"
                  "    classDef product fill:#cfe3ff,stroke:#0b57d0,stroke-width:3px,color:#1f2328\n"
                  "    classDef base fill:#eaf2ff,stroke:#0b57d0,color:#1f2328\n"
                  "    classDef foreign fill:#ffffff,stroke:#5f6368,stroke-dasharray:4,color:#1f2328\n";
}

} // namespace picture
