#include "ProbeDown.h"

#include "ProbeToolText.h"

#include "common/Text.h"

using namespace probe;

namespace {

const char Rule[] = "vcs-down-systems";

// The last column of a row, if the columns before it are so many.
std::string ValueIn(const Texts& words, size_t columns) {
    return words.size() == columns + 1 && words.front()[0] != '#' ? words.back() : std::string();
}

// One that leaves may still have its groups.
Names DownSystems(const Texts& lines) {
    Names systems;
    for (const std::string& line : lines) {
        const Texts words = WordsOf(line);
        const std::string state = ValueIn(words, 2);
        if (state == "FAULTED" || state == "EXITED") {
            systems.insert(words.front());
        }
    }
    return systems;
}

enum class Seen {
    Nothing, // of a group on such a system
    Offline,
    Online
};

struct Look {
    Seen seen = Seen::Nothing;
    std::string group;
};

Look LookOnce(const AskTool& ask) {
    const Names down = DownSystems(AnswerOf(ask(L"hasys", L"-state")));
    Look look;
    if (down.empty()) {
        return look;
    }
    for (const std::string& line : AnswerOf(ask(L"hagrp", L"-state"))) {
        const Texts words = WordsOf(line);
        const std::string state = ValueIn(words, 3);
        if (state.empty() || down.count(words[2]) == 0) {
            continue;
        }
        const bool isOnline = state.find("ONLINE") != std::string::npos || state.find("PARTIAL") != std::string::npos;
        if (isOnline || look.seen == Seen::Nothing) {
            look = {isOnline ? Seen::Online : Seen::Offline, words.front()};
        }
    }
    return look;
}

} // namespace

// Between the two questions a system may have been lost: what is seen once only may be that.
void LookAtDownSystems(const AskTool& ask, ProbeAnswers& answers) {
    Look look = LookOnce(ask);
    look = look.seen == Seen::Online ? LookOnce(ask) : look;
    if (look.seen != Seen::Nothing) {
        answers.Saw(Rule, look.seen == Seen::Offline, look.seen == Seen::Offline ? "none there" : "a group there",
                    common::ToUtf16(look.group));
    }
}
