#include "Manual.h"

#include "CommandTree.h"
#include "Embedded.h"
#include "Failure.h"
#include "Markdown.h"
#include "Text.h"

#include <algorithm>
#include <sstream>

namespace {

const size_t ReferenceWidth = 121; // lines of documents have up to 120 characters
const char Origin[] =
    "<!-- Written by `./dev docs --update` from tools/clusctl: Manual.md.in and the table of commands. -->";
const char CommandsTitle[] = "Sub-commands";
const char OptionsTitle[] = "Options";

// Sections begin with "# ", "## " or "### "; the blank lines around their texts are left out.
std::vector<ManualSection> ReadSections() {
    std::vector<ManualSection> sections;
    std::istringstream lines(EmbeddedText(L"MANUAL"));
    for (std::string line; std::getline(lines, line);) {
        const size_t level = line.find_first_not_of('#');
        if (level != std::string::npos && level > 0 && line[level] == ' ') {
            sections.push_back({level, line.substr(level + 1), std::string()});
        } else if (!sections.empty() && !(line.empty() && sections.back().text.empty())) {
            sections.back().text += line + "\n";
        }
    }
    for (ManualSection& section : sections) {
        section.text.erase(section.text.find_last_not_of('\n') + 1);
        section.text += section.text.empty() ? "" : "\n";
    }
    return sections;
}

// Not what the help texts show anyway.
bool IsTopic(const ManualSection& section) {
    return section.level == 2 && section.title != CommandsTitle && section.title != "Synopsis";
}

void RequireAllDescribed(const CLI::App& root) {
    for (const CLI::App* command : CommandsOf(root)) {
        if (ManualOfCommand(FullName(*command)).empty()) {
            throw Failure("the manual says nothing about the command " + Quoted(FullName(*command)));
        }
    }
    for (const ManualSection& section : ManualSections()) {
        const CLI::App* const command = section.level == 3 ? FindCommand(root, section.title) : nullptr;
        if (section.level == 3 && (command == nullptr || IsFamily(*command))) {
            throw Failure("the manual describes a command that is none: " + Quoted(section.title));
        }
    }
}

// "--name NAME", "-h,--help", "NAME|ADDRESS"
std::string Head(const CLI::Option& option) {
    if (option.get_positional()) {
        return option.get_type_name();
    }
    return option.get_name(false, true) + (TakesValue(option) ? " " + option.get_type_name() : "");
}

std::string Sentence(const CLI::Option& option) {
    const std::string& text = option.get_description();
    return text.empty() || text.back() == '.' ? text : text + ".";
}

// Arguments, then options; without --help, which every command has.
std::vector<const CLI::Option*> Described(const CLI::App& app) {
    std::vector<const CLI::Option*> all = ArgumentsOf(app);
    for (const CLI::Option* option : OptionsOf(app)) {
        if (option != app.get_help_ptr() || app.get_parent() == nullptr) {
            all.push_back(option);
        }
    }
    return all;
}

std::string MarkdownList(const CLI::App& app) {
    std::string text;
    for (const CLI::Option* option : Described(app)) {
        const bool isMarked = option->get_required() && !option->get_positional();
        const std::string item = "`" + Head(*option) + "`" + (isMarked ? " (required)" : "") + ": " + Sentence(*option);
        text += "- " + Wrapped(item, ReferenceWidth, 2, 2) + "\n";
    }
    return text;
}

std::string RoffList(const CLI::App& app) {
    std::string text;
    for (const CLI::Option* option : Described(app)) {
        const bool isMarked = option->get_required() && !option->get_positional();
        text += ".TP\n" + RoffLine("`" + Head(*option) + "`") + (isMarked ? " (required)" : "") + "\n";
        text += Wrapped(RoffLine(Sentence(*option)), TerminalWidth - 2, 0, 0) + "\n";
    }
    return text;
}

// Without the program's name, which stands at the head of everything.
std::string ShortSynopsis(const CLI::App& command) {
    std::string text = Synopsis(command).substr(std::string("clusctl ").size());
    const std::string rest = " [OPTIONS]";
    return text.erase(text.find(rest), rest.size());
}

std::string Upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return text;
}

} // namespace

std::string ManualSection::TopicName() const {
    std::string name = Lower(title);
    std::replace(name.begin(), name.end(), ' ', '-');
    return name;
}

const std::vector<ManualSection>& ManualSections() {
    static const std::vector<ManualSection> sections = ReadSections();
    return sections;
}

std::vector<std::string> TopicNames() {
    std::vector<std::string> names;
    for (const ManualSection& section : ManualSections()) {
        if (IsTopic(section)) {
            names.push_back(section.TopicName());
        }
    }
    return names;
}

const ManualSection* FindTopic(const std::string& name) {
    for (const ManualSection& section : ManualSections()) {
        if (IsTopic(section) && section.TopicName() == Lower(name)) {
            return &section;
        }
    }
    return nullptr;
}

std::string ManualOfCommand(const std::string& fullName) {
    for (const ManualSection& section : ManualSections()) {
        if (section.level == 3 && section.title == fullName) {
            return section.text;
        }
    }
    return std::string();
}

std::string TopicText(const CLI::App& root, const ManualSection& topic) {
    return topic.text + (topic.title == OptionsTitle ? "\n" + MarkdownList(root) : "");
}

std::string ManualAsMarkdown(const CLI::App& root) {
    RequireAllDescribed(root);
    std::string text;
    for (const ManualSection& section : ManualSections()) {
        if (section.level == 1) {
            text += "# " + section.title + "\n\n" + Origin + "\n\n" + section.text;
        } else if (section.title == CommandsTitle) {
            text += "\n## " + section.title + "\n" + (section.text.empty() ? "" : "\n" + section.text);
            for (const CLI::App* command : CommandsOf(root)) {
                const std::string list = MarkdownList(*command);
                text += "\n### `" + ShortSynopsis(*command) + "`\n\n" + ManualOfCommand(FullName(*command)) +
                        (list.empty() ? "" : "\n" + list);
            }
        } else if (section.level == 2) {
            text += "\n## " + section.title + "\n\n" + TopicText(root, section);
        }
    }
    return text;
}

std::string ManualAsRoff(const CLI::App& root) {
    RequireAllDescribed(root);
    std::string text =
        ".\\\" Written by `./dev docs --update` from tools/clusctl: Manual.md.in and the table of commands.\n"
        ".TH CLUSCTL 1 \"\" clusutil \"User Commands\"\n"
        ".SH NAME\n"
        "clusctl \\- " +
        RoffLine(root.get_description()) + "\n";
    for (const ManualSection& section : ManualSections()) {
        if (section.title == CommandsTitle) {
            text += ".SH COMMANDS\n" + RoffText(section.text);
            for (const CLI::App* command : CommandsOf(root)) {
                text += ".SS " + RoffLine("`" + ShortSynopsis(*command) + "`") + "\n" +
                        RoffText(ManualOfCommand(FullName(*command))) + RoffList(*command);
            }
        } else if (section.level == 2) {
            text += ".SH " + Upper(section.title) + "\n" + RoffText(section.text) +
                    (section.title == OptionsTitle ? RoffList(root) : "");
        }
    }
    return text;
}
