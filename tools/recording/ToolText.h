// The command lines and outputs of VCS tools as a recording has them: without secrets, and without names on demand.
#ifndef RECORDING_TOOLTEXT_H
#define RECORDING_TOOLTEXT_H

#include "Recording.h"

#include "common/Anonymiser.h"

#include <string>
#include <vector>

namespace recording {

// Whether the tool only asks: no other one is run by a recording that allows no changes.
bool IsQuestion(const std::wstring& commandLine);

// The command line with the mask in place of what is secret.
std::wstring MaskedCommand(const std::wstring& commandLine);

// What the tool of this true command line printed, with the mask in place of what is secret. One character per byte,
// whole lines.
std::wstring MaskedOutput(const std::wstring& commandLine, const std::wstring& output);

// The same as a replay prints it: an encrypted password has to look like one.
std::string ReplayedOutput(const std::wstring& commandLine, std::string output);

// Names replaced. Options, attributes and the left side of conditions are none.
std::string AnonymousCommand(const std::string& commandLine, common::Anonymiser& anonymiser);

// What one run of a tool prints, with names replaced: all words but those of its titles, of columns that these call
// attributes, of states, and of what VCS says in its messages.
class AnonymousPrint {
public:
    explicit AnonymousPrint(common::Anonymiser& anonymiser) : m_anonymiser(anonymiser) {
    }
    // One piece after the other.
    std::string Of(const Printed& printed);

private:
    std::string Line(const std::string& line, bool isError);

    common::Anonymiser& m_anonymiser;
    std::vector<std::string> m_titles; // of the table that is printed, in lower case
};

// What VCS calls states, attributes' values and the like: they are no names.
void KeepWordsOfVcs(common::Anonymiser& anonymiser);

} // namespace recording

#endif
