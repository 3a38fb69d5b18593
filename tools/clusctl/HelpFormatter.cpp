#include "HelpFormatter.h"

#include "CommandTree.h"
#include "Manual.h"
#include "Markdown.h"

#include <CLI/CLI.hpp>

#include <sstream>

namespace {

const size_t OptionColumn = 28;
const size_t CommandColumn = 34;

} // namespace

HelpFormatter::HelpFormatter() {
    column_width(OptionColumn);
    label("Positionals", "Arguments");
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string, CLI::AppFormatMode mode) const {
    const std::string manual = PlainText(ManualOfCommand(FullName(*app)));
    std::string text = "Usage: " + Synopsis(*app) + "\n\n" +
                       (manual.empty() ? Wrapped(app->get_description(), TerminalWidth, 0, 0) + "\n" : manual) +
                       make_positionals(app);
    for (const std::string& group : app->get_groups()) {
        const auto options = app->get_options(
            [&group](const CLI::Option* option) { return option->get_group() == group && option->nonpositional(); });
        if (!options.empty()) {
            text += make_group(group, false, options);
        }
    }
    return text + make_subcommands(app, mode) + "\n" + app->get_footer() + "\n";
}

std::string HelpFormatter::make_subcommand(const CLI::App* app) const {
    std::string text;
    for (const CLI::App* member : app->get_subcommands({})) {
        text += make_subcommand(member);
    }
    if (text.empty()) {
        std::ostringstream line;
        CLI::detail::format_help(line, FullName(*app),
                                 Wrapped(app->get_description(), TerminalWidth - CommandColumn, 0, 0), CommandColumn);
        text = line.str();
    }
    return text;
}

std::string HelpFormatter::make_option_name(const CLI::Option* option, bool isPositional) const {
    return isPositional ? option->get_type_name() : CLI::Formatter::make_option_name(option, isPositional);
}

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
    return !TakesValue(*option) || option->get_positional() ? std::string() : " " + option->get_type_name();
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
    const bool isMarked = option->get_required() && !option->get_positional();
    return Wrapped(PlainLine(option->get_description()) + (isMarked ? " (required)" : ""), TerminalWidth - OptionColumn,
                   0, 0);
}
