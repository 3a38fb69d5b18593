// The manual that the program carries (Manual.md.in): a text for each command and topic. The reference and the manual
// page are made of it and of the table of commands.
#ifndef CLUSCTL_MANUAL_H
#define CLUSCTL_MANUAL_H

#include <CLI/App.hpp>

#include <string>
#include <vector>

struct ManualSection {
    size_t level = 0; // 1: the whole, 2: a topic, 3: a command
    std::string title;
    std::string text; // Markdown

    // "exit-status" of "Exit status": what it is called in `clusctl help`, and as an anchor of the reference.
    std::string TopicName() const;
};

// In their order. Empty when the program was built without it.
const std::vector<ManualSection>& ManualSections();

// The names of all topics, and the one of a name, in any letter case; null when there is none.
std::vector<std::string> TopicNames();
const ManualSection* FindTopic(const std::string& name);

// What the manual says about a command; empty when it says nothing.
std::string ManualOfCommand(const std::string& fullName);

// docs/clusctl.md and docs/clusctl.1. Throws Failure when a command has no text, or a text no command.
std::string ManualAsMarkdown(const CLI::App& root);
std::string ManualAsRoff(const CLI::App& root);

// A topic with its options, if it is the one of the options that all commands share; as Markdown.
std::string TopicText(const CLI::App& root, const ManualSection& topic);

#endif
