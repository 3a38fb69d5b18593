#include "RehearsalEvents.h"

#include "CommandLine.h"
#include "Suggestion.h"
#include "Text.h"

#include "common/Text.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace {

struct KnownEvent {
    const char* word;
    std::vector<const char*> names;
    bool isOfVcs; // too
};

const std::uint64_t LongestWait = 31622400; // seconds: a year

const std::vector<KnownEvent>& Table() {
    static const std::vector<KnownEvent> table = {
        {"node-down", {"NODE"}, true},    {"node-up", {"NODE"}, true},       {"node-pause", {"NODE"}, false},
        {"node-resume", {"NODE"}, false}, {"move", {"GROUP", "NODE"}, true}, {"fail", {"RESOURCE"}, true},
        {"offline", {"NAME"}, true},      {"online", {"NAME"}, true},        {"quorum-loss", {}, false},
        {"service-stop", {}, false},      {"service-start", {}, false},      {"wait", {"SECONDS"}, true},
    };
    return table;
}

std::string Form(const KnownEvent& event) {
    std::string text = event.word;
    for (const char* name : event.names) {
        text += std::string(" ") + name;
    }
    return text;
}

void RequireOfVcs(const KnownEvent& event) {
    if (event.isOfVcs) {
        return;
    }
    std::string others;
    for (const KnownEvent& other : Table()) {
        others += other.isOfVcs ? (others.empty() ? "" : ", ") + Form(other) : "";
    }
    throw WrongUsage("VCS has no event " + Quoted(event.word) + ", only " + others);
}

void RequireSeconds(const std::string& text) {
    const bool isNumber =
        !text.empty() && text.size() <= 8 && text.find_first_not_of("0123456789") == std::string::npos;
    if (!isNumber || std::stoull(text) > LongestWait) {
        throw WrongUsage("wait: " + Quoted(text) + " is no number of seconds from 0 to " + std::to_string(LongestWait));
    }
}

} // namespace

std::string RehearsalEvent::Text() const {
    std::string text = word;
    for (const std::string& name : names) {
        text += " " + (name.find(' ') == std::string::npos ? Printable(name) : Quoted(name));
    }
    return text;
}

std::vector<RehearsalEvent> ParseEvents(const std::vector<std::wstring>& words, Answering asked) {
    std::vector<std::string> known;
    for (const KnownEvent& event : Table()) {
        known.emplace_back(event.word);
    }
    std::vector<RehearsalEvent> events;
    for (auto word = words.begin(); word != words.end();) {
        const std::string text = common::ToUtf8(*word++);
        const auto event = std::find_if(Table().begin(), Table().end(),
                                        [&text](const KnownEvent& candidate) { return text == candidate.word; });
        if (event == Table().end()) {
            throw WrongUsage(
                "there is no event " + Quoted(text) + DidYouMean(text, known) +
                (events.empty() ? "" : "; an event before it has its names: " + Quoted(events.back().Text())));
        }
        if (asked == Answering::Vcs) {
            RequireOfVcs(*event);
        }
        RehearsalEvent given{text, {}};
        for (std::size_t i = 0; i < event->names.size(); ++i) {
            if (word == words.end()) {
                throw WrongUsage("the event is to be " + Quoted(Form(*event)));
            }
            if (word->empty()) {
                throw WrongUsage(text + ": a name must not be empty");
            }
            given.names.push_back(common::ToUtf8(*word++));
        }
        if (text == "wait") {
            RequireSeconds(given.names.front());
        }
        events.push_back(given);
    }
    return events;
}

std::string KnownEvents() {
    std::string text;
    for (const KnownEvent& event : Table()) {
        text += (text.empty() ? "" : ", ") + Form(event);
    }
    return text;
}
