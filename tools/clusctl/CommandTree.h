// The table of commands, options and arguments, as help, manual and completion scripts read it.
#ifndef CLUSCTL_COMMANDTREE_H
#define CLUSCTL_COMMANDTREE_H

#include <CLI/App.hpp>

#include <string>
#include <vector>

// "resource create", "vcs resource add"; empty for the whole.
std::string FullName(const CLI::App& app);

// Whether it only has sub-commands.
bool IsFamily(const CLI::App& app);

// The commands below `app` that do something, in the order in which they were added.
std::vector<const CLI::App*> CommandsOf(const CLI::App& app);

// The full names of all commands and families.
std::vector<std::string> FullNamesOf(const CLI::App& app);

// The command or family of that full name; null when there is none.
const CLI::App* FindCommand(const CLI::App& root, const std::string& fullName);

std::vector<const CLI::Option*> ArgumentsOf(const CLI::App& app);
std::vector<const CLI::Option*> OptionsOf(const CLI::App& app);

// Whether an option takes a value.
bool TakesValue(const CLI::Option& option);

// The words that a value is one of: a type's name that begins with a small letter lists them ("rw|ro"). Empty when any
// text will do.
std::vector<std::string> ChoicesOf(const CLI::Option& option);

// "clusctl resource create --name NAME [OPTIONS] VIRTUAL-SERVER"
std::string Synopsis(const CLI::App& app);

#endif
