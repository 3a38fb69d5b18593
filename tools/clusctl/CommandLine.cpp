#include "CommandLine.h"

#include "Text.h"

#include "common/Text.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <sstream>

namespace {

const char Description[] = "Shows which servers this node serves, and works with the product's cluster resources.";

const char VcsFamily[] = "vcs";

const char Footer[] =
    "Options may stand before or after the sub-command. 'clusctl SUBCOMMAND --help' shows its own.\n"
    "Exit code: 0 done; 2 wrong usage; others tell why it failed, and the reason is on standard error:\n"
    "1 failed, 3 not found, 4 not possible in this state, 5 refused by the cluster, 6 timed out,\n"
    "7 the cluster does not answer, 8 incomplete answer, 9 access denied, 10 interrupted.\n"
    "\n"
    "Example: rehearse a change on a copy of your cluster\n"
    "\n"
    "  1. On a cluster node, write the live cluster to a file:\n"
    "       clusctl snapshot C:\\rehearsal\\model.json\n"
    "  2. Copy clusctl.exe and the DLLs beside it to a folder of its own, and the simulator's\n"
    "     clusapi.dll and resutils.dll into that folder. Tell them the file:\n"
    "       set CLUSSIM_FILE=C:\\rehearsal\\model.json\n"
    "  3. Make the change:\n"
    "       clusctl resource offline EXVS-MAIL1 --wait\n"
    "  4. Look at the result, and compare it with the real cluster:\n"
    "       clusctl servers\n"
    "       clusctl resources --detail\n"
    "  The real cluster is not touched. Delete the file, and nothing is left.";

bool IsFamily(const CLI::App& app) {
    return !app.get_subcommands({}).empty();
}

// "resource create", "vcs resource add"
std::string FullName(const CLI::App& app) {
    const CLI::App* parent = app.get_parent();
    return parent->get_parent() == nullptr ? app.get_name() : FullName(*parent) + " " + app.get_name();
}

// "Usage: clusctl query [OPTIONS] NAME|ADDRESS"
std::string UsageLine(const CLI::App& app) {
    std::string usage = "Usage: clusctl";
    if (app.get_parent() != nullptr) {
        usage += " " + FullName(app);
    }
    usage += " [OPTIONS]";
    if (IsFamily(app)) {
        return usage + " SUBCOMMAND\n";
    }
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_positional()) {
            const std::string name = option->get_type_name();
            usage += option->get_required() ? " " + name : " [" + name + "]";
        }
    }
    return usage + "\n";
}

// Help texts as this tool words them: no notes on which option excludes which, one blank line between groups.
class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter() {
        column_width(34);
        label("Positionals", "Arguments");
    }

    std::string make_help(const CLI::App* app, std::string, CLI::AppFormatMode mode) const override {
        std::string text = app->get_description() + "\n\n" + UsageLine(*app) + make_positionals(app);
        for (const std::string& group : app->get_groups()) {
            const auto options = app->get_options([&group](const CLI::Option* option) {
                return option->get_group() == group && option->nonpositional();
            });
            if (!options.empty()) {
                text += make_group(group, false, options);
            }
        }
        return text + make_subcommands(app, mode) + "\n" + app->get_footer() + "\n";
    }

    // A family is listed as its members, under their full names.
    std::string make_subcommand(const CLI::App* app) const override {
        std::string text;
        for (const CLI::App* member : app->get_subcommands({})) {
            text += make_subcommand(member);
        }
        if (text.empty()) {
            std::ostringstream line;
            CLI::detail::format_help(line, FullName(*app), app->get_description(), get_column_width());
            text = line.str();
        }
        return text;
    }

    std::string make_option_name(const CLI::Option* option, bool isPositional) const override {
        return isPositional ? option->get_type_name() : CLI::Formatter::make_option_name(option, isPositional);
    }

    std::string make_option_opts(const CLI::Option* option) const override {
        return option->get_type_size() == 0 || option->get_positional() ? std::string() : " " + option->get_type_name();
    }
};

const CLI::Validator
    NotEmpty([](std::string& text) { return text.empty() ? std::string("must not be empty") : std::string(); }, "");

// Why a text is no name of VCS; empty when it is one.
std::string ReasonAgainstName(const std::string& text) {
    if (text.empty()) {
        return "must not be empty";
    }
    if (text.front() == '-') {
        return "a name of VCS must not begin with a dash: " + Quoted(text);
    }
    return text.find_first_of(" \t\r\n\"") == std::string::npos
               ? std::string()
               : "a name of VCS must not hold a blank, a tab or a double quote: " + Quoted(text);
}

const CLI::Validator IsVcsName([](std::string& text) { return ReasonAgainstName(text); }, "");

const CLI::Validator IsPair(
    [](std::string& text) {
        const size_t equals = text.find('=');
        return equals == std::string::npos || equals == 0 ? std::string("must be NAME=VALUE")
                                                          : ReasonAgainstName(text.substr(0, equals));
    },
    "");

CLI::Option& AddChecked(CLI::App& command, const char* name, std::wstring& value, const char* typeName,
                        const char* description, const CLI::Validator& isAllowed) {
    const auto take = [&value](const std::string& text) { value = common::ToUtf16(text); };
    return *command.add_option_function<std::string>(name, take, description)->type_name(typeName)->check(isAllowed);
}

} // namespace

CommandLine::CommandLine() : m_app(Description, "clusctl") {
    m_app.allow_windows_style_options(false);
    m_app.require_subcommand(1);
    m_app.formatter(std::make_shared<HelpFormatter>());
    m_app.set_help_flag("-h,--help", "Show this text, or that of a sub-command")->group("Help");
    m_app.set_version_flag("--version", "clusctl " CLUSCTL_VERSION, "Show the version")->group("Help");
    m_app.add_flag("--json", m_shared.json, "Print JSON, for scripts")->group("Output");
    m_app.add_flag("--verbose", m_shared.verbose, "Show the debug log on standard error")->group("Diagnostics");
    AddText(m_app, "--log", m_shared.logFile, "FILE", "Append the debug log to a file").group("Diagnostics");
    m_app.footer(Footer);
}

CLI::App& CommandLine::AddFamily(const char* heading, const char* name, const char* description) {
    CLI::App* command = m_app.add_subcommand(name, description);
    command->group(heading);
    command->fallthrough();
    command->footer("The options of 'clusctl --help' hold here too.");
    return *command;
}

CLI::App& CommandLine::Add(const char* heading, const char* name, const char* description, const Action& action) {
    CLI::App& command = AddFamily(heading, name, description);
    command.callback([this, action]() { m_chosen = action; });
    return command;
}

CLI::App& CommandLine::AddFamilyTo(CLI::App& family, const char* name, const char* description) {
    family.require_subcommand(1);
    CLI::App* command = family.add_subcommand(name, description);
    command->group("Sub-commands");
    return *command;
}

CLI::App& CommandLine::AddTo(CLI::App& family, const char* name, const char* description, const Action& action) {
    CLI::App& command = AddFamilyTo(family, name, description);
    command.callback([this, action]() { m_chosen = action; });
    return command;
}

std::string CommandLine::Parse(const std::vector<std::string>& arguments) {
    try {
        m_app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend())); // it wants them last first
        return std::string();
    } catch (const CLI::CallForHelp&) {
        return m_app.help();
    } catch (const CLI::CallForVersion& version) {
        return std::string(version.what()) + "\n";
    } catch (const CLI::ParseError& error) {
        std::string reason = error.what();
        if (IsFamily(Deepest()) && error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError)) {
            const std::vector<std::string> unknown = m_app.remaining(true);
            reason = unknown.empty() ? "a sub-command is missing"
                                     : "there is no sub-command or option " + Quoted(unknown.front());
        }
        throw WrongUsage(reason);
    }
}

const SharedOptions& CommandLine::Shared() const {
    return m_shared;
}

const Action& CommandLine::Chosen() const {
    return m_chosen;
}

Answering CommandLine::Asked() const {
    return m_app.got_subcommand(VcsFamily) ? Answering::Vcs : Answering::FailoverCluster;
}

CLI::Option& CommandLine::AddText(CLI::App& command, const char* name, std::wstring& value, const char* typeName,
                                  const char* description) {
    return AddChecked(command, name, value, typeName, description, NotEmpty);
}

CLI::Option& CommandLine::AddVcsName(CLI::App& command, const char* name, std::wstring& value, const char* typeName,
                                     const char* description) {
    return AddChecked(command, name, value, typeName, description, IsVcsName);
}

CLI::Option& CommandLine::AddPairs(CLI::App& command, const char* name, TextPairs& pairs, const char* description) {
    const auto take = [&pairs](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
            const std::wstring pair = common::ToUtf16(text);
            const size_t equals = pair.find(L'=');
            pairs.emplace_back(pair.substr(0, equals), pair.substr(equals + 1));
        }
    };
    return *command.add_option_function<std::vector<std::string>>(name, take, description)
                ->type_name("NAME=VALUE")
                ->check(IsPair)
                ->allow_extra_args(false);
}

std::string CommandLine::UsageText(const std::string& reason) const {
    return "clusctl: " + Printable(reason) + "\n" + UsageLine(Deepest()) + "Try 'clusctl --help'.\n";
}

const CLI::App& CommandLine::Deepest() const {
    const CLI::App* app = &m_app;
    for (auto chosen = app->get_subcommands(); !chosen.empty(); chosen = app->get_subcommands()) {
        app = chosen.back();
    }
    return *app;
}
