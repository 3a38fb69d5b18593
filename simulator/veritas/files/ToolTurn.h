// A tool's turn at the cluster.
#ifndef VCSSIM_TOOLTURN_H
#define VCSSIM_TOOLTURN_H

#include "ClusterFiles.h"

#include "common/FileLock.h"
#include "common/Handle.h"

namespace vcssim {

// Held while the object lives; a tool that dies gives it up. The lock keeps the tools apart. The file of that name is
// its sign for people, and proves before anything is done that files can be made here.
class ToolTurn {
public:
    // Waits as long as another tool has it. Throws common::FileError when there is no turn to be had.
    explicit ToolTurn(const ClusterFiles& files);

private:
    common::FileLock m_lock;
    common::FileLock::Turn m_turn;
    common::Handle m_sign;
};

} // namespace vcssim

#endif
