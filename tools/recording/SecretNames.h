// Which properties of a cluster's objects hold secrets, as far as their names say so. Needs no platform header.
#ifndef RECORDING_SECRETNAMES_H
#define RECORDING_SECRETNAMES_H

#include <string>

namespace recording {

// Whether the name says password, secret, key or token, in any letter case of ASCII.
bool IsSecretPropertyName(const std::string& name);

} // namespace recording

#endif
