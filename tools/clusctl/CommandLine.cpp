#include "CommandLine.h"

#include "CommandTree.h"
#include "HelpFormatter.h"
#include "Manual.h"
#include "Markdown.h"
#include "PlainWords.h"
#include "Suggestion.h"
#include "Text.h"

#include "common/Text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <memory>

namespace {

const char Description[] = "Shows which servers this node serves, and works with the product's cluster resources.";

const char VcsFamily[] = "vcs";
const char RehearseCommand[] = "rehearse";
const char DryRunOption[] = "--dry-run";

const char* const ChangingCommands[] = {
    "resource create",        "resource online",
    "resource offline",       "resource delete",
    "smtp restart",           "vcs mode",
    "vcs resource add",       "vcs resource link",
    "vcs resource delete",    "vcs resource online",
    "vcs resource offline",   "vcs product create",
    "vcs product delete",     "vcs product add-quarantine",
    "vcs product switch-on",  "vcs product add-remote-config",
    "vcs product switch-off",
};

const CLI::Validator
    NotEmpty([](std::string& text) { return text.empty() ? std::string("must not be empty") : std::string(); }, "");

std::string Joined(const std::vector<std::string>& words, const std::string& between) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : between) + word;
    }
    return text;
}

// Where the whole program is described and what else it can explain.
std::string Footer() {
    const std::string hint =
        "Options may stand before or after the sub-command. `clusctl help SUBCOMMAND` shows what a "
        "sub-command takes, `clusctl help TOPIC` explains a topic:";
    return PlainText(hint) + "  " + Wrapped(Joined(TopicNames(), ", "), TerminalWidth, 2, 2);
}

// The full name of the first command or family below `app` whose own name is `name`; empty when there is none.
std::string FullNameOf(const CLI::App& app, const std::string& name) {
    for (const CLI::App* member : app.get_subcommands({})) {
        std::string found = member->get_name() == name ? FullName(*member) : FullNameOf(*member, name);
        if (!found.empty()) {
            return found;
        }
    }
    return std::string();
}

// Of a word that is no sub-command of `family`: one of them, or what has that name elsewhere.
std::string DidYouMeanCommand(const CLI::App& root, const CLI::App& family, const std::string& word) {
    std::vector<std::string> names;
    for (const CLI::App* member : family.get_subcommands({})) {
        names.push_back(member->get_name());
    }
    const std::string elsewhere = FullNameOf(root, Lower(word));
    const std::string sentence = DidYouMean(word, names);
    return sentence.empty() && !elsewhere.empty() ? DidYouMean(elsewhere, {elsewhere}) : sentence;
}

std::vector<std::string> OptionNames(const CLI::App& root, const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::App* app : {&command, &root}) {
        for (const CLI::Option* option : OptionsOf(*app)) {
            names.push_back(option->get_name());
        }
    }
    return names;
}

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

// --dry-run of those that change something.
void AddDryRunsBelow(CLI::App& app, bool& isDryRun) {
    const bool changes = std::find(std::begin(ChangingCommands), std::end(ChangingCommands), FullName(app)) !=
                         std::end(ChangingCommands);
    if (changes) {
        app.add_flag(DryRunOption, isDryRun,
                     "Do it on a copy of the cluster, and show the calls or runs of tools and what changes");
    }
    for (CLI::App* member : app.get_subcommands({})) {
        AddDryRunsBelow(*member, isDryRun);
    }
}

// What is left to be done on the copy: the options of the program itself are those of the dry run.
std::vector<std::wstring> WithoutDryRun(const CLI::App& root, const std::vector<std::string>& arguments) {
    std::vector<std::wstring> words;
    for (auto word = arguments.begin(); word != arguments.end(); ++word) {
        if (*word == TailMark) {
            std::transform(word, arguments.end(), std::back_inserter(words), &common::ToUtf16);
            break;
        }
        const std::string name = StartsWith(*word, "--") ? word->substr(0, word->find('=')) : std::string();
        const CLI::Option* const option = name.empty() ? nullptr : root.get_option_no_throw(name);
        if (option != nullptr) {
            word += TakesValue(*option) && word->size() == name.size() && word + 1 != arguments.end() ? 1 : 0;
        } else if (*word != DryRunOption) {
            words.push_back(common::ToUtf16(*word));
        }
    }
    return words;
}

} // namespace

CommandLine::CommandLine() : m_app(Description, "clusctl") {
    m_app.allow_windows_style_options(false);
    m_app.require_subcommand(1);
    m_app.formatter(std::make_shared<HelpFormatter>());
    m_app.set_help_flag("-h,--help", "Show the help text, or that of a sub-command")->group("Help");
    m_app.set_version_flag("--version", "clusctl " CLUSCTL_VERSION, "Show the version")->group("Help");
    m_app.add_flag("--json", m_shared.json, "Print JSON, for scripts; see [JSON](#json)")->group("Output");
    m_app
        .add_flag("--verbose", m_shared.verbose,
                  "Show the library's debug log on standard error, one line each: the level, then the text")
        ->group("Diagnostics");
    AddText(m_app, "--log", m_shared.logFile, "FILE",
            "Append the debug log to a file, with time, process and place; see [logs](#logs)")
        .group("Diagnostics");
    AddText(m_app, "--model", m_shared.model, "PATH",
            "Ask the simulated cluster of a model instead of the one of this computer; see [models](#models)")
        .group("Simulation");
    m_app
        .add_flag("--show-tools", m_shared.showsTools,
                  "Name the files of the VCS tools that the `vcs` commands run; see [VCS tools](#vcs-tools)")
        ->group("VCS tools");
    m_app
        .add_flag("--allow-writable-tools", m_shared.allowsWritableTools,
                  "Run VCS tools also from folders that ordinary users may write")
        ->group("VCS tools");
    m_app.footer(Footer());
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

CLI::App& CommandLine::AddTelling(const char* heading, const char* name, const char* description,
                                  const std::function<std::string()>& tell) {
    CLI::App& command = AddFamily(heading, name, description);
    command.callback([this, tell]() { m_told = tell; });
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

void CommandLine::AddTail(CLI::App& command, std::vector<std::wstring>& words, const char* description) {
    m_tailed = &command;
    m_tail = &words;
    command.add_option("COMMAND", words, description)->type_name("-- COMMAND"); // for the help text
}

void CommandLine::AsksBy(const CLI::App& command, const std::function<Answering()>& asked) {
    m_asksBy[&command] = asked;
}

void CommandLine::AddDryRuns(const Rehearse& rehearse) {
    m_rehearse = rehearse;
    AddDryRunsBelow(m_app, m_isDryRun);
}

// The words behind "--" are no matter of the parser, which would take them for more of what stands before.
std::vector<std::string> CommandLine::CutTail(const std::vector<std::string>& arguments) {
    const auto mark = std::find(arguments.begin(), arguments.end(), TailMark);
    if (m_tailed == nullptr || mark == arguments.end()) {
        return arguments;
    }
    auto word = arguments.begin();
    while (word != mark && StartsWith(*word, "-")) {
        const CLI::Option* const option = m_app.get_option_no_throw(*word);
        word += option != nullptr && TakesValue(*option) && word + 1 != mark ? 2 : 1;
    }
    if (word == mark || *word != m_tailed->get_name()) {
        return arguments;
    }
    std::transform(mark + 1, arguments.end(), std::back_inserter(*m_tail), &common::ToUtf16);
    return std::vector<std::string>(arguments.begin(), mark);
}

std::string CommandLine::Parse(const std::vector<std::string>& arguments) {
    m_arguments = arguments;
    try {
        const std::vector<std::string> own = WithPlainWords(CutTail(arguments));
        TakePlainWords(m_app);
        m_app.parse(std::vector<std::string>(own.rbegin(), own.rend())); // it wants them last first
        if (m_isDryRun) {
            const std::vector<std::wstring> words = WithoutDryRun(m_app, arguments);
            m_chosen = [this, words](const LogCapture& log) { return m_rehearse(log, words); };
        }
        return m_told ? m_told() : std::string();
    } catch (const CLI::CallForHelp&) {
        return m_app.help();
    } catch (const CLI::CallForVersion& version) {
        return std::string(version.what()) + "\n";
    } catch (const CLI::ParseError& error) {
        // Which options stand in a command line that is wrong is not certain; who wants JSON gets it all the same.
        const auto end = std::find(arguments.begin(), arguments.end(), TailMark);
        m_shared.json = m_shared.json || std::find(arguments.begin(), end, "--json") != end;
        throw WrongUsage(ReasonAgainst(error));
    }
}

// A word that nothing takes is the likelier mistake than what is missing besides.
std::string CommandLine::ReasonAgainst(const CLI::ParseError& error) const {
    const CLI::App& deepest = Deepest();
    const auto code = static_cast<CLI::ExitCodes>(error.get_exit_code());
    const bool mayBeMisspelt = code == CLI::ExitCodes::RequiredError || code == CLI::ExitCodes::RequiresError ||
                               code == CLI::ExitCodes::ExtrasError;
    const std::vector<std::string> unknown = mayBeMisspelt ? m_app.remaining(true) : std::vector<std::string>();
    if (code == CLI::ExitCodes::ArgumentMismatch) {
        const std::string what = error.what();
        const auto tooMany = what.find(": At Most 1 required");
        return tooMany == std::string::npos ? what : what.substr(0, tooMany) + " may be given only once";
    }
    if (unknown.empty()) {
        return IsFamily(deepest) && code == CLI::ExitCodes::RequiredError ? "a sub-command is missing" : error.what();
    }
    const std::string word = WithoutMark(unknown.front());
    if (IsPlain(unknown.front())) {
        return IsFamily(deepest) ? "a sub-command is missing before \"--\""
                                 : "the argument " + Quoted(word) + " is one too many" +
                                       (StartsWith(word, "-") ? ": options stand before \"--\"" : "");
    }
    if (StartsWith(word, "-")) {
        return "there is no option " + Quoted(word) + DidYouMean(word, OptionNames(m_app, deepest));
    }
    if (IsFamily(deepest)) {
        return "there is no sub-command " + Quoted(word) + DidYouMeanCommand(m_app, deepest, word);
    }
    // Who is used to the system's own tools writes "/json".
    const std::string option = StartsWith(word, "/") ? "--" + word.substr(1) : std::string();
    return "the argument " + Quoted(word) + " is one too many" + DidYouMean(option, OptionNames(m_app, deepest));
}

const CLI::App& CommandLine::Root() const {
    return m_app;
}

const SharedOptions& CommandLine::Shared() const {
    return m_shared;
}

void CommandLine::Inherit(const SharedOptions& shared) {
    m_shared.json = m_shared.json || shared.json;
    m_shared.verbose = m_shared.verbose || shared.verbose;
    m_shared.logFile = m_shared.logFile.empty() ? shared.logFile : m_shared.logFile;
    m_shared.model = m_shared.model.empty() ? shared.model : m_shared.model;
    m_shared.showsTools = m_shared.showsTools || shared.showsTools;
    m_shared.allowsWritableTools = m_shared.allowsWritableTools || shared.allowsWritableTools;
}

const Action& CommandLine::Chosen() const {
    return m_chosen;
}

std::string CommandLine::ChosenName() const {
    return FullName(Deepest());
}

bool CommandLine::OpensConfiguration() const {
    const CLI::Option* const option = Deepest().get_option_no_throw("--rw");
    return option != nullptr && option->count() > 0;
}

bool CommandLine::Changes() const {
    return !m_isDryRun && std::find(std::begin(ChangingCommands), std::end(ChangingCommands), ChosenName()) !=
                              std::end(ChangingCommands);
}

bool CommandLine::IsRehearsal() const {
    return m_isDryRun || ChosenName() == RehearseCommand;
}

bool CommandLine::IsDryRun() const {
    return m_isDryRun;
}

bool CommandLine::FinishesStep() const {
    const CLI::Option* const watch = Deepest().get_option_no_throw("--watch");
    return Asked() == Answering::Vcs || Changes() || IsRehearsal() || (watch != nullptr && watch->count() > 0);
}

Answering CommandLine::Asked() const {
    static const char* const askingEither[] = {
        "doctor", "graph", "probe", "report", "status", "support-bundle", "tree", RehearseCommand,
    };
    if (std::find(std::begin(askingEither), std::end(askingEither), ChosenName()) != std::end(askingEither)) {
        const auto asksBy = m_asksBy.find(&Deepest());
        const Answering asked = asksBy == m_asksBy.end() ? Answering::Either : asksBy->second();
        return asked == Answering::Either ? m_either : asked;
    }
    return m_app.got_subcommand(VcsFamily) ? Answering::Vcs : Answering::FailoverCluster;
}

bool CommandLine::LooksAtTools() const {
    return ChosenName() == "doctor";
}

void CommandLine::Ask(Answering chosen) {
    m_either = chosen;
}

CLI::Option& CommandLine::AddText(CLI::App& command, const char* name, std::wstring& value, const char* typeName,
                                  const char* description) {
    return AddChecked(command, name, value, typeName, description, NotEmpty);
}

CLI::Option& CommandLine::AddVcsName(CLI::App& command, const char* name, std::wstring& value, const char* typeName,
                                     const char* description) {
    return AddChecked(command, name, value, typeName, description, IsVcsName);
}

CLI::Option& CommandLine::AddChoice(CLI::App& command, const char* name, std::wstring& value,
                                    const std::vector<std::string>& choices, const char* description) {
    const CLI::Validator isChoice(
        [choices](std::string& text) {
            const bool isOne = std::find(choices.begin(), choices.end(), text) != choices.end();
            return isOne
                       ? std::string()
                       : "there is no " + Quoted(text) + ", only " + Joined(choices, ", ") + DidYouMean(text, choices);
        },
        "");
    return AddChecked(command, name, value, Joined(choices, "|").c_str(), description, isChoice);
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
    const std::string name = FullName(Deepest());
    return "clusctl: " + Printable(reason) + "\nUsage: " + Synopsis(Deepest()) + "\nTry 'clusctl" +
           (name.empty() ? "" : " " + name) + " --help'.\n";
}

const CLI::App& CommandLine::Deepest() const {
    const CLI::App* app = &m_app;
    for (auto chosen = app->get_subcommands(); !chosen.empty(); chosen = app->get_subcommands()) {
        app = chosen.back();
    }
    return *app;
}
