#include "Report.h"

#include "Text.h"

#include <algorithm>
#include <utility>

namespace {

const char Nothing[] = "-";
const char Gap[] = "  ";
const size_t WidestColumn = 60; // a longer cell pushes the rest of its line; the other lines stay readable

// A value as a person reads it.
std::string CellText(const Json& value) {
    if (value.is_null()) {
        return Nothing;
    }
    if (value.is_boolean()) {
        return value.get<bool>() ? "yes" : "no";
    }
    if (value.is_string()) {
        const std::string text = Printable(value.get<std::string>());
        return text.empty() ? Nothing : text;
    }
    if (value.is_array()) {
        std::string text;
        for (const Json& element : value) {
            text += (text.empty() ? "" : ", ") + CellText(element);
        }
        return text.empty() ? Nothing : text;
    }
    return value.dump();
}

// Behind an owner that is down or only joins, or a system that does not run: what is said to be there is what the
// cluster remembers.
std::string MarkOfPlace(const Json& record, const std::string& key) {
    const auto found = key == "owner" || key == "onlineNode" ? record.find(key + "State") : record.end();
    const std::string state = found != record.end() && found->is_string() ? found->get<std::string>() : std::string();
    const bool isAway = state == "down" || state == "joining" || state == "not running";
    return isAway ? " (" + state + ")" : std::string();
}

std::string Cell(const Json& record, const Column& column) {
    const auto found = record.find(column.key);
    if (found == record.end()) {
        return Nothing;
    }
    return CellText(*found) + MarkOfPlace(record, column.key);
}

std::string Padded(const std::string& text, size_t width) {
    const size_t count = CharacterCount(text);
    return count < width ? text + std::string(width - count, ' ') : text;
}

// The members of an object as "name: value" each.
Json MemberLines(const Json& object) {
    Json lines = Json::array();
    for (const auto& member : object.items()) {
        lines.push_back(member.key() + ": " + CellText(member.value()));
    }
    return lines;
}

// The title with the value behind it; a list has one element per line, an object one member.
std::string TitledLines(const std::string& title, const Json& value) {
    if (value.is_object()) {
        return TitledLines(title, MemberLines(value));
    }
    if (!value.is_array() || value.empty()) {
        return title + CellText(value) + "\n";
    }
    std::string text;
    for (const Json& element : value) {
        text += (text.empty() ? title : std::string(CharacterCount(title), ' ')) + CellText(element) + "\n";
    }
    return text;
}

std::string RecordText(const Json& record, const Columns& columns) {
    size_t width = 0;
    for (const Column& column : columns) {
        if (record.contains(column.key)) {
            width = std::max(width, CharacterCount(column.title));
        }
    }
    std::string text;
    for (const Column& column : columns) {
        if (record.contains(column.key)) {
            text += TitledLines(Padded(std::string(column.title) + ":", width + 1) + Gap, record.at(column.key));
        }
    }
    return text;
}

void AppendLine(const std::vector<std::string>& cells, const std::vector<size_t>& widths, std::string& text) {
    for (size_t i = 0; i < cells.size(); ++i) {
        text += cells[i];
        if (i + 1 != cells.size()) {
            const size_t count = CharacterCount(cells[i]);
            text.append(count < widths[i] ? widths[i] - count : 0, ' ');
            text += Gap;
        }
    }
    text += '\n';
}

std::string TableText(const Json& records, const Columns& columns) {
    std::vector<std::vector<std::string>> lines(1);
    for (const Column& column : columns) {
        lines[0].push_back(column.title);
    }
    for (const Json& record : records) {
        std::vector<std::string> line;
        for (const Column& column : columns) {
            line.push_back(Cell(record, column));
        }
        lines.push_back(std::move(line));
    }
    std::vector<size_t> widths(columns.size(), 0);
    for (const auto& line : lines) {
        for (size_t i = 0; i < line.size(); ++i) {
            const size_t count = CharacterCount(line[i]);
            widths[i] = std::max(widths[i], count <= WidestColumn ? count : 0);
        }
    }
    std::string text;
    for (const auto& line : lines) {
        AppendLine(line, widths, text);
    }
    return text;
}

std::string RecordsText(const Json& records, const Columns& columns) {
    std::string text;
    for (const Json& record : records) {
        text += (text.empty() ? "" : "\n") + RecordText(record, columns);
    }
    return text;
}

} // namespace

void Report::Add(Form form, const char* key, Json value, const Columns& columns, const std::string& sentence) {
    m_document[key] = std::move(value);
    m_sections.push_back({form, key, columns, sentence});
}

void Report::AddRecord(const char* key, Json record, const Columns& columns) {
    Add(Form::Record, key, std::move(record), columns, std::string());
}

void Report::AddTable(const char* key, Json records, const Columns& columns, const std::string& whenEmpty) {
    Add(Form::Table, key, std::move(records), columns, whenEmpty);
}

void Report::AddRecords(const char* key, Json records, const Columns& columns, const std::string& whenEmpty) {
    Add(Form::Records, key, std::move(records), columns, whenEmpty);
}

void Report::AddSentence(const char* key, Json value, const std::string& sentence) {
    Add(Form::Sentence, key, std::move(value), Columns(), sentence);
}

void Report::AddMember(const char* key, Json value) {
    m_document[key] = std::move(value);
}

Report Report::Verbatim(Json document, const Report& warned) {
    Report report;
    report.m_warnings = warned.m_warnings;
    report.m_isComplete = warned.m_isComplete;
    report.m_lostCode = warned.m_lostCode;
    report.m_document = std::move(document);
    report.m_isVerbatim = true;
    return report;
}

void Report::AddWarning(const std::string& warning) {
    m_warnings.push_back(warning);
}

void Report::MarkIncomplete(const std::string& warning) {
    AddWarning(warning);
    m_isComplete = false;
}

std::string Report::ToText() const {
    if (m_isVerbatim) {
        return common::DumpJson(m_document);
    }
    std::string text;
    for (const Section& section : m_sections) {
        const Json& value = m_document.at(section.key);
        const bool isEmptyList = section.form == Form::Sentence || (value.is_array() && value.empty());
        text += text.empty() ? "" : "\n";
        if (isEmptyList) {
            text += section.sentence + "\n";
        } else if (section.form == Form::Table) {
            text += TableText(value, section.columns);
        } else if (section.form == Form::Records) {
            text += RecordsText(value, section.columns);
        } else {
            text += RecordText(value, section.columns);
        }
    }
    return text;
}

std::string Report::ToJson(const Json& besides) && {
    const bool isComplete = m_isComplete && !m_document.empty();
    m_document["complete"] = isComplete;
    m_document["warnings"] = m_warnings;
    m_document.update(besides);
    return common::DumpJson(m_document);
}
