// The command line: options that every sub-command shares, and the sub-commands, which the command families add.
#ifndef CLUSCTL_COMMANDLINE_H
#define CLUSCTL_COMMANDLINE_H

#include "Report.h"
#include "Simulation.h"

#include <CLI/App.hpp>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

struct SharedOptions {
    bool json = false;
    bool verbose = false;
    std::wstring logFile;
    std::wstring model;
    bool showsTools = false;
    bool allowsWritableTools = false;
};

class LogCapture;

// Under which the help text lists the sub-commands.
namespace headings {
constexpr char ServersHere[] = "The servers of this node";
constexpr char TheCluster[] = "The cluster";
constexpr char ProductResource[] = "The product's resource";
constexpr char ThisComputer[] = "This computer";
constexpr char Rehearsal[] = "Rehearsal";
constexpr char ThisProgram[] = "This program";
} // namespace headings

// Does a sub-command's work. Throws Failure, or WrongUsage before anything is done. The log tells apart a plain "no"
// from a question that could not be answered.
typedef std::function<Report(const LogCapture& log)> Action;

// The command line is wrong; what() says why. Thrown also when a command runs, of options that do not go together.
class WrongUsage : public Failure {
public:
    explicit WrongUsage(const std::string& what) : Failure(Errors::WrongUsage, what) {
    }
};

// Names with values, in the order given.
typedef std::vector<std::pair<std::wstring, std::wstring>> TextPairs;

class CommandLine {
public:
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    // Adds a sub-command under a heading of the help text. The options and arguments of its own go to the result.
    CLI::App& Add(const char* heading, const char* name, const char* description, const Action& action);

    // Adds a sub-command that only has sub-commands ("resource create"), which AddTo adds, or families of its own.
    CLI::App& AddFamily(const char* heading, const char* name, const char* description);
    static CLI::App& AddFamilyTo(CLI::App& family, const char* name, const char* description);
    CLI::App& AddTo(CLI::App& family, const char* name, const char* description, const Action& action);

    // Adds a sub-command that asks no cluster and only prints a text.
    CLI::App& AddTelling(const char* heading, const char* name, const char* description,
                         const std::function<std::string()>& tell);

    // Adds an option ("--type") or an argument ("name") that takes a text, which must not be empty. Types whose
    // names end in FILE or PATH are completed as such.
    static CLI::Option& AddText(CLI::App& command, const char* name, std::wstring& value, const char* typeName,
                                const char* description);

    // The same for the name of an object of VCS. It becomes a word of a tool's command line, so what would not stay one
    // word, or would be taken for an option, is refused.
    static CLI::Option& AddVcsName(CLI::App& command, const char* name, std::wstring& value, const char* typeName,
                                   const char* description);

    // The same for one of some words, in small letters.
    static CLI::Option& AddChoice(CLI::App& command, const char* name, std::wstring& value,
                                  const std::vector<std::string>& choices, const char* description);

    // Adds an option that may be given more than once, each time with one "NAME=VALUE"; the name is one of VCS.
    static CLI::Option& AddPairs(CLI::App& command, const char* name, TextPairs& pairs, const char* description);

    // Adds what stands behind "--": the words of a command line of their own.
    void AddTail(CLI::App& command, std::vector<std::wstring>& words, const char* description);

    // Whom this command asks is only known when it is chosen.
    void AsksBy(const CLI::App& command, const std::function<Answering()>& asked);

    // Adds --dry-run to every command that changes something: then `rehearse` is done instead, with the words of the
    // command line.
    typedef std::function<Report(const LogCapture& log, const std::vector<std::wstring>& words)> Rehearse;
    void AddDryRuns(const Rehearse& rehearse);

    // Takes the program's arguments, without its name. The text that --help, --version or a telling sub-command asks
    // for; empty when there is an action to be run. Throws WrongUsage; whether JSON is wanted is known even then.
    std::string Parse(const std::vector<std::string>& arguments);

    // What to print of wrong usage, of the whole or of the sub-command that was chosen.
    std::string UsageText(const std::string& reason) const;

    const CLI::App& Root() const;
    // As Parse took them.
    const std::vector<std::string>& Arguments() const {
        return m_arguments;
    }
    const SharedOptions& Shared() const;
    // Those of another command line that stand for this one too, where it does not say otherwise.
    void Inherit(const SharedOptions& shared);
    const Action& Chosen() const;
    // "vcs product create", and whether the option --rw was given to it.
    std::string ChosenName() const;
    bool OpensConfiguration() const;
    // Whether it changes something; a dry run does not.
    bool Changes() const;
    // Whether it only works on a copy of the cluster.
    bool IsRehearsal() const;
    bool IsDryRun() const;
    // Whether the step in progress is finished when the user interrupts it. The others end at once.
    bool FinishesStep() const;
    // Whether it tells itself what is wrong with the files of the VCS tools.
    bool LooksAtTools() const;
    // Whom the chosen command asks; one that asks either kind of cluster, whom it was told to.
    Answering Asked() const;
    void Ask(Answering chosen);

private:
    const CLI::App& Deepest() const;
    std::vector<std::string> CutTail(const std::vector<std::string>& arguments);
    std::string ReasonAgainst(const CLI::ParseError& error) const;

    CLI::App m_app;
    SharedOptions m_shared;
    Action m_chosen;
    Answering m_either = Answering::Either;
    std::function<std::string()> m_told;
    const CLI::App* m_tailed = nullptr; // the command with a tail
    std::vector<std::wstring>* m_tail = nullptr;
    std::map<const CLI::App*, std::function<Answering()>> m_asksBy;
    Rehearse m_rehearse;
    bool m_isDryRun = false;
    std::vector<std::string> m_arguments;
};

#endif
