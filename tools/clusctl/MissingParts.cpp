#include "MissingParts.h"

#include "Text.h"

#include <algorithm>

std::string Joined(const MissingParts::Texts& texts) {
    std::string joined;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        joined += (i == 0 ? "" : i + 1 == texts.size() ? " and " : ", ") + texts[i];
    }
    return joined;
}

void MissingParts::MissWhole(const recording::Recording& recording, bool hasChanged) {
    if (recording.isCut) {
        Miss("the end of the recording is missing: the command that it was made of was ended by force");
    }
    if (recording.header.isAnonymised) {
        Miss("names, addresses and binary values of the recording are not those of the cluster");
    }
    if (hasChanged) {
        Miss("the command changed the cluster: of each object the model has what was read last");
    }
}

void MissingParts::MissLists(const Texts& unlisted) {
    if (!unlisted.empty()) {
        Miss("the recording does not list all " + Joined(unlisted) + ": the model has those that it names");
    }
}

void MissingParts::Untold(const Texts& parts, const std::string& name) {
    if (parts.empty()) {
        return;
    }
    const std::string what = Joined(parts);
    auto known = std::find_if(m_untold.begin(), m_untold.end(),
                              [&what](const std::pair<std::string, Texts>& told) { return told.first == what; });
    known = known == m_untold.end() ? m_untold.insert(known, {what, Texts()}) : known;
    known->second.push_back(Quoted(name));
}

void MissingParts::MissUntold() {
    for (const auto& told : m_untold) {
        Miss("the recording does not tell " + told.first + " of " + Joined(told.second));
    }
    m_untold.clear();
}
