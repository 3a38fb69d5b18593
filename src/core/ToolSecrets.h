// Secrets in the command lines and outputs of VCS tools. No copy of a secret is left in memory.
#ifndef CLUS_CORE_TOOLSECRETS_H
#define CLUS_CORE_TOOLSECRETS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace clus {

// What stands for a secret.
const wchar_t SecretMask[] = L"***";

// What stands for the result of a tool that gives a secret when it is more than the one word that it has to be.
const wchar_t SecretMaskOfWords[] = L"*** ***";

// Whether an attribute of this name holds a secret: its name ends in "password", "secret", "token" or "key", in any
// letter case. "Keys", of what a RegRep resource replicates, is none.
bool IsSecretAttribute(std::wstring_view name);

// Where the secret of a command line begins: what it sets a secret attribute to ("hares -modify RES Password x"), or
// asks for ("hares -list Password=x"). It reaches to the end of the line. npos when there is none.
std::size_t FindSecret(std::wstring_view commandLine);

// Where a line of a tool's output shows the value of a secret attribute, which may be an empty one: in the row of
// that attribute (resource, attribute, system, value). It reaches to the end of the line. npos when there is none.
std::size_t FindShownSecret(std::wstring_view line);

// The text without the quotes and blanks around it.
std::wstring_view WithoutQuotesAround(std::wstring_view text);

// A secret as it stands on a command line, and the forms in which a tool may repeat it: with and without the quotes
// around it, as the tool gets it (\" undone), and each word of these.
class ToolSecret {
public:
    // None, or one whose text must outlive this object.
    ToolSecret() = default;
    explicit ToolSecret(std::wstring_view argument);
    // Erases what was copied.
    ~ToolSecret();
    ToolSecret(const ToolSecret&) = delete;
    ToolSecret& operator=(const ToolSecret&) = delete;

    // How many characters of `text` from `at` on repeat the secret, or overlapping forms of it; 0 when none do.
    std::size_t LengthAt(std::wstring_view text, std::size_t at) const;

    // False when it has characters that a tool's output, one character per byte, shows differently.
    bool CanBeFound() const;

private:
    std::size_t LongestFormAt(std::wstring_view text, std::size_t at) const;

    std::wstring m_plain;
    std::vector<std::wstring_view> m_forms;
};

// A tool's output with the mask in place of the values in the rows of secret attributes and of the secret wherever
// it is repeated.
std::wstring WithoutSecrets(const std::wstring& output, const ToolSecret& secret);

// What may be shown of the output of a tool that takes and gives a secret. Of messages of VCS, when it begins with one,
// the leading words with the number ("VCS ERROR V-16-1-10600"), and the rest without the secret; the mask for one word,
// and that of words for all else.
std::wstring MessagesWithoutSecrets(const std::wstring& output, const ToolSecret& secret);

} // namespace clus

#endif
