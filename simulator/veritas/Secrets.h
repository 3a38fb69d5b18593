// What the journal must not show: the texts given to vcsencrypt, and the passwords that hares sets, is asked for or
// shows. What is one is told by the rule that the library itself goes by.
#ifndef VCSSIM_SECRETS_H
#define VCSSIM_SECRETS_H

#include <string>
#include <vector>

namespace vcssim {

// The arguments with *** in place of each secret.
std::vector<std::string> WithoutSecrets(const std::string& tool, const std::vector<std::string>& arguments);

// The output of a run with these arguments, with *** wherever one of its secrets occurs and for the values of password
// attributes.
std::string WithoutSecrets(const std::string& tool, const std::vector<std::string>& arguments, std::string output);

} // namespace vcssim

#endif
