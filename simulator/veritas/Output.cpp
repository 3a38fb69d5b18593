#include "Output.h"

#include <algorithm>

namespace vcssim {

void Output::Add(bool toErrors, const std::string& text) {
    if (m_pieces.empty() || m_pieces.back().toErrors != toErrors) {
        m_pieces.emplace_back();
        m_pieces.back().toErrors = toErrors;
    }
    m_pieces.back().text += text;
}

void Output::Print(const std::string& text) {
    Add(false, text);
}

void Output::Notice(const char* number, const std::string& text) {
    Add(false, std::string("VCS NOTICE V-16-1-") + number + " " + text + "\n");
}

void Output::Warning(const char* number, const std::string& text) {
    Add(true, std::string("VCS WARNING V-16-1-") + number + " " + text + "\n");
    m_exitCode = 1;
}

void Output::Simulated(const char* number, const std::string& text) {
    Warning(number, "(simulated) " + text);
}

void Output::Error(const char* number, const std::string& text) {
    Add(true, std::string("VCS ERROR V-16-1-") + number + " (simulated) " + text + "\n");
    m_exitCode = 1;
}

void Output::EngineDown() {
    Add(false, "VCS ERROR V-16-1-10600 Cannot connect to VCS engine\n");
    m_exitCode = 1;
}

void Output::Failure(const std::string& text) {
    m_pieces.clear();
    Add(true, "VCS ERROR V-16-1-99001 (simulated) " + text + "\n");
    m_exitCode = 1;
}

void Output::Usage(const std::string& text) {
    m_pieces.clear();
    Add(true, "usage: " + text + "\n");
    m_exitCode = 2;
}

std::vector<OutputPiece> Output::Pieces() const {
    std::vector<OutputPiece> pieces = m_pieces;
    if (m_options.lineEnd == "\n") {
        return pieces;
    }
    for (OutputPiece& piece : pieces) {
        std::string text;
        for (const char c : piece.text) {
            if (c == '\n') {
                text += m_options.lineEnd;
            } else {
                text += c;
            }
        }
        piece.text.swap(text);
    }
    return pieces;
}

std::string Output::Joined() const {
    std::string text;
    for (const OutputPiece& piece : Pieces()) {
        text += piece.text;
    }
    return text;
}

std::string JoinedParts(const std::vector<std::string>& parts) {
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        text += (i == 0 ? "" : "\t") + parts[i];
    }
    return text;
}

std::string Padded(const std::string& text, std::size_t width) {
    return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}

void PrintList(Output& output, const std::vector<ListRow>& rows) {
    std::size_t width = 0;
    for (const ListRow& row : rows) {
        width = std::max(width, row.name.size());
    }
    const char* const separator = output.Switches().blanksInLists ? "  " : "\t\t";
    for (const ListRow& row : rows) {
        output.Print(Padded(row.name, width) + separator + row.system + "\n");
    }
}

void PrintDisplay(Output& output, const std::string& kind, const std::vector<DisplayRow>& rows) {
    const bool ofSystems = kind == "System";
    std::size_t name = ofSystems ? 10 : 12;
    std::size_t attribute = 21;
    std::size_t system = 10;
    for (const DisplayRow& row : rows) {
        name = std::max(name, row.name.size());
        attribute = std::max(attribute, row.attribute.size());
        system = std::max(system, row.system.size());
    }
    const auto line = [&](const DisplayRow& row) {
        std::string text = Padded(row.name, name) + " " + Padded(row.attribute, attribute) + " ";
        if (!ofSystems) {
            text += Padded(row.system, system) + " ";
        }
        text += JoinedParts(row.parts);
        if (output.Switches().bareEmptyValues) {
            text.erase(text.find_last_not_of(" \t") + 1);
        }
        output.Print(text + "\n");
    };
    line({"#" + kind, "Attribute", "System", {"Value"}});
    for (const DisplayRow& row : rows) {
        line(row);
    }
}

} // namespace vcssim
