// What a recording does not tell of a cluster, as sentences.
#ifndef CLUSCTL_MISSINGPARTS_H
#define CLUSCTL_MISSINGPARTS_H

#include <Recording.h>

#include <string>
#include <utility>
#include <vector>

class MissingParts {
public:
    typedef std::vector<std::string> Texts;

    void Miss(const std::string& sentence) {
        m_sentences.push_back(sentence);
    }

    // What holds of all that a recording tells. `hasChanged`: the cluster, by what was recorded.
    void MissWhole(const recording::Recording& recording, bool hasChanged);

    // Kinds of objects, of which there may be more: "groups".
    void MissLists(const Texts& unlisted);

    // Parts of an object, told together with the others that lack the same, by MissUntold.
    void Untold(const Texts& parts, const std::string& name);
    void MissUntold();

    Texts Take() {
        return std::move(m_sentences);
    }

private:
    Texts m_sentences;
    std::vector<std::pair<std::string, Texts>> m_untold; // parts, and the names of the objects
};

// "A, B and C".
std::string Joined(const MissingParts::Texts& texts);

#endif
