#include "Completion.h"

#include "CommandTree.h"
#include "Embedded.h"
#include "Manual.h"

#include <utility>
#include <vector>

namespace {

const char HelpName[] = "help"; // its arguments are the words of commands, and topics

// Keys with what belongs to each, in their order.
typedef std::vector<std::pair<std::string, std::string>> Table;

// What both scripts are made of; their heads tell what each part means.
struct CompletionTables {
    Table words;
    Table options;
    Table values;
    Table about;
    std::string shared;
};

std::string SubCommands(const CLI::App& app) {
    std::string names;
    for (const CLI::App* member : app.get_subcommands({})) {
        names += (names.empty() ? "" : " ") + member->get_name();
    }
    return names;
}

std::string LongNames(const CLI::App& app) {
    std::string names;
    for (const CLI::Option* option : OptionsOf(app)) {
        if (option != app.get_help_ptr() || app.get_parent() == nullptr) {
            names += (names.empty() ? "--" : " --") + option->get_lnames().front();
        }
    }
    return names;
}

bool EndsIn(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::string ValueOf(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    std::string words;
    for (const std::string& choice : ChoicesOf(option)) {
        words += " " + choice;
    }
    return !words.empty() ? "words" + words : EndsIn(type, "FILE") ? "file" : EndsIn(type, "PATH") ? "folder" : "text";
}

void AddValues(const CLI::App& app, Table& values) {
    const std::string command = FullName(app) + " ";
    size_t number = 0;
    for (const CLI::Option* argument : ArgumentsOf(app)) {
        values.emplace_back(command + std::to_string(++number), ValueOf(*argument));
    }
    for (const CLI::Option* option : OptionsOf(app)) {
        if (TakesValue(*option)) {
            values.emplace_back(command + option->get_name(), ValueOf(*option));
        }
    }
}

void AddBelow(const CLI::App& app, CompletionTables& tables) {
    for (const CLI::App* member : app.get_subcommands({})) {
        const std::string name = FullName(*member);
        tables.about.emplace_back(name, member->get_description());
        if (IsFamily(*member)) {
            tables.words.emplace_back(name, SubCommands(*member));
            tables.words.emplace_back(HelpName + (" " + name), SubCommands(*member));
            AddBelow(*member, tables);
        } else if (name != HelpName) {
            const std::string options = LongNames(*member);
            if (!options.empty()) {
                tables.options.emplace_back(name, options);
            }
            AddValues(*member, tables.values);
        }
    }
}

CompletionTables TablesOf(const CLI::App& root) {
    CompletionTables tables;
    tables.shared = LongNames(root);
    tables.words.emplace_back("", SubCommands(root));
    std::string topics;
    for (const std::string& topic : TopicNames()) {
        topics += " " + topic;
    }
    tables.words.emplace_back(HelpName, SubCommands(root) + topics);
    AddBelow(root, tables);
    AddValues(root, tables.values);
    return tables;
}

// The text in single quotes, with `escaped` for each that it holds.
std::string InQuotes(const std::string& text, const char* escaped) {
    std::string result;
    for (const char c : text) {
        result += c == '\'' ? escaped : std::string(1, c);
    }
    return "'" + result + "'";
}

// The branches of a "case".
std::string BashBranches(const Table& table) {
    std::string lines;
    for (const auto& [key, value] : table) {
        const bool isShared = key.rfind(" -", 0) == 0; // of every command
        lines += (lines.empty() ? "        " : "\n        ") + std::string(isShared ? "*" : "") +
                 InQuotes(key, "'\\''") + ") echo " + InQuotes(value, "'\\''") + " ;;";
    }
    return lines;
}

std::string PowerShellEntries(const Table& table) {
    std::string lines;
    for (const auto& [key, value] : table) {
        lines += (lines.empty() ? "        " : "\n        ") + InQuotes(key, "''") + " = " + InQuotes(value, "''");
    }
    return lines;
}

void Replace(std::string& text, const std::string& mark, const std::string& replacement) {
    text.replace(text.find(mark), mark.size(), replacement);
}

} // namespace

std::string BashCompletion(const CLI::App& root) {
    const CompletionTables tables = TablesOf(root);
    std::string script = EmbeddedText(L"COMPLETION_BASH");
    Replace(script, "@WORDS@", BashBranches(tables.words));
    Replace(script, "@OPTIONS@", BashBranches(tables.options));
    Replace(script, "@SHARED@", tables.shared);
    Replace(script, "@VALUES@", BashBranches(tables.values));
    return script;
}

std::string PowerShellCompletion(const CLI::App& root) {
    const CompletionTables tables = TablesOf(root);
    std::string script = EmbeddedText(L"COMPLETION_POWERSHELL");
    Replace(script, "@WORDS@", PowerShellEntries(tables.words));
    Replace(script, "@OPTIONS@", PowerShellEntries(tables.options));
    Replace(script, "@SHARED@", tables.shared);
    Replace(script, "@VALUES@", PowerShellEntries(tables.values));
    Replace(script, "@ABOUT@", PowerShellEntries(tables.about));
    return script;
}
