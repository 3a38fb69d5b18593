// Passwords, in the encrypted form in which the cluster's tools show them, kept out of everything that is printed.
#ifndef CLUSCTL_SECRETS_H
#define CLUSCTL_SECRETS_H

#include <string>
#include <vector>

// What stands for a secret that is not shown.
extern const char MaskedSecret[];

// Whether an attribute of this name holds a password.
bool IsSecretAttribute(const std::string& name);

// Replaces secrets in log lines. A secret that was seen once is found again wherever it occurs later.
class SecretMask {
public:
    std::string Masked(const std::string& line);

private:
    void Learn(const std::string& value);
    std::string WithoutKnown(const std::string& line) const;

    std::vector<std::string> m_known;
};

// The lines of a main.cf with the values of the password attributes replaced.
std::vector<std::string> MaskedConfiguration(const std::vector<std::string>& lines);

#endif
