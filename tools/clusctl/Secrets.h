// Secrets, kept out of everything that is printed. What is one on VCS is told by the rule that the library itself goes
// by; that for a failover cluster's resources is here.
#ifndef CLUSCTL_SECRETS_H
#define CLUSCTL_SECRETS_H

#include <string>
#include <vector>

// Whether a private property of this name holds a secret, as far as its name says so.
bool IsSecretProperty(const std::string& name);

// Replaces secrets in log lines. A secret that was seen once is found again wherever it occurs later.
class LogSecrets {
public:
    std::wstring Masked(const std::wstring& line);

private:
    void Learn(const std::wstring& secret);

    std::vector<std::wstring> m_known;
};

// The lines of a main.cf with the values of the secret attributes replaced.
std::vector<std::string> MaskedConfiguration(const std::vector<std::string>& lines);

// The words of a command line of clusctl, with the mask in place of what secret attributes and options are given:
// "--set Password=x", "--where=Password=x".
std::vector<std::string> MaskedWords(const std::vector<std::string>& words);

#endif
