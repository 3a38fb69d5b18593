#include "CommandTree.h"

#include <CLI/CLI.hpp>

std::string FullName(const CLI::App& app) {
    const CLI::App* parent = app.get_parent();
    if (parent == nullptr) {
        return std::string();
    }
    const std::string family = FullName(*parent);
    return family.empty() ? app.get_name() : family + " " + app.get_name();
}

bool IsFamily(const CLI::App& app) {
    return !app.get_subcommands({}).empty();
}

std::vector<const CLI::App*> CommandsOf(const CLI::App& app) {
    std::vector<const CLI::App*> commands;
    for (const CLI::App* member : app.get_subcommands({})) {
        if (IsFamily(*member)) {
            const std::vector<const CLI::App*> below = CommandsOf(*member);
            commands.insert(commands.end(), below.begin(), below.end());
        } else {
            commands.push_back(member);
        }
    }
    return commands;
}

std::vector<std::string> FullNamesOf(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* member : app.get_subcommands({})) {
        names.push_back(FullName(*member));
        const std::vector<std::string> below = FullNamesOf(*member);
        names.insert(names.end(), below.begin(), below.end());
    }
    return names;
}

const CLI::App* FindCommand(const CLI::App& root, const std::string& fullName) {
    for (const CLI::App* member : root.get_subcommands({})) {
        if (FullName(*member) == fullName) {
            return member;
        }
        const CLI::App* const below = FindCommand(*member, fullName);
        if (below != nullptr) {
            return below;
        }
    }
    return nullptr;
}

std::vector<const CLI::Option*> ArgumentsOf(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<const CLI::Option*> OptionsOf(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

bool TakesValue(const CLI::Option& option) {
    return option.get_items_expected_max() > 0;
}

std::vector<std::string> ChoicesOf(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const bool isList = !type.empty() && type.front() >= 'a' && type.front() <= 'z';
    return isList ? CLI::detail::split(type, '|') : std::vector<std::string>();
}

std::string Synopsis(const CLI::App& app) {
    std::string text = "clusctl";
    if (app.get_parent() != nullptr) {
        text += " " + FullName(app);
    }
    for (const CLI::Option* option : OptionsOf(app)) {
        text += option->get_required() ? " " + option->get_name() + " " + option->get_type_name() : "";
    }
    text += " [OPTIONS]";
    if (IsFamily(app)) {
        return text + " SUBCOMMAND";
    }
    for (const CLI::Option* argument : ArgumentsOf(app)) {
        const std::string name = argument->get_type_name() + (argument->get_items_expected_max() > 1 ? " ..." : "");
        text += argument->get_required() ? " " + name : " [" + name + "]";
    }
    return text;
}
