#include "HelpCommands.h"

#include "CommandLine.h"
#include "CommandTree.h"
#include "Completion.h"
#include "Manual.h"
#include "Markdown.h"
#include "Suggestion.h"
#include "Text.h"

#include "common/Text.h"

#include <algorithm>
#include <memory>

namespace {

// Of the words that name a command ("resource", "create") or, if there is one, a topic ("exit-status").
std::string Help(const CLI::App& root, const std::vector<std::string>& words) {
    std::string subject;
    for (const std::string& word : words) {
        subject += (subject.empty() ? "" : " ") + word;
    }
    if (subject.empty()) {
        return root.get_formatter()->make_help(&root, std::string(), CLI::AppFormatMode::Normal); // not of "help"
    }
    const CLI::App* const command = FindCommand(root, subject);
    if (command != nullptr) {
        return command->help();
    }
    const ManualSection* const topic = FindTopic(subject);
    if (topic != nullptr) {
        return topic->title + "\n\n" + PlainText(TopicText(root, *topic));
    }
    std::vector<std::string> known = FullNamesOf(root);
    const std::vector<std::string> topics = TopicNames();
    known.insert(known.end(), topics.begin(), topics.end());
    throw WrongUsage("there is no command or topic " + Quoted(subject) + DidYouMean(subject, known));
}

std::string Completion(const CLI::App& root, const std::wstring& shell) {
    return shell == L"bash" ? BashCompletion(root) : PowerShellCompletion(root);
}

std::string Manual(const CLI::App& root, const std::wstring& form) {
    return form == L"markdown" ? ManualAsMarkdown(root) : ManualAsRoff(root);
}

} // namespace

void AddHelpCommands(CommandLine& commandLine) {
    const CLI::App& root = commandLine.Root();
    const auto words = std::make_shared<std::vector<std::string>>();
    CLI::App& help =
        commandLine.AddTelling(headings::ThisProgram, "help", "Show the help text of a command, or explain a topic",
                               [&root, words]() { return Help(root, *words); });
    help.add_option("WORDS", *words, "The words of a command, or a topic; without them, what there is")
        ->type_name("COMMAND|TOPIC");

    const auto shell = std::make_shared<std::wstring>();
    CLI::App& completion = commandLine.AddTelling(headings::ThisProgram, "completion",
                                                  "Print a script that completes command lines in a shell",
                                                  [&root, shell]() { return Completion(root, *shell); });
    CommandLine::AddChoice(completion, "SHELL", *shell, {"bash", "powershell"}, "The shell").required();

    const auto form = std::make_shared<std::wstring>();
    CLI::App& manual = commandLine.AddTelling(headings::ThisProgram, "manual", "Print the whole manual",
                                              [&root, form]() { return Manual(root, *form); });
    CommandLine::AddChoice(manual, "FORM", *form, {"man", "markdown"}, "A page for man, or Markdown").required();
}
