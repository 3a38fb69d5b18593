// A fresh temporary folder as the current directory: the former one comes back with the object's end, and the folder
// goes with all it holds.
#ifndef HARNESS_PRIVATEFOLDER_H
#define HARNESS_PRIVATEFOLDER_H

#include "common/TemporaryFolder.h"

#include <string>

namespace harness {

class PrivateFolder : public common::TemporaryFolder {
public:
    PrivateFolder();
    ~PrivateFolder();

private:
    std::wstring m_formerDirectory;
};

} // namespace harness

#endif
