// A private copy of the VCS simulator's cluster, to rehearse a change on.
#ifndef CLUSCTL_VCSDRYRUN_H
#define CLUSCTL_VCSDRYRUN_H

#include "common/TemporaryFolder.h"

#include <ClusterFiles.h>

#include <memory>
#include <string>
#include <vector>

// While it lives, the tools that this process starts work on the copy; then the copy is deleted.
class VcsDryRun {
public:
    // Throws Failure when VCSSIM_MAIN_CF names no main.cf, or it cannot be copied.
    VcsDryRun();

    // Throws Failure when the tools that ran so far were not the simulator's: those of a real cluster do not know of
    // the copy.
    void RequireSimulator() const;

    // What changed in the configuration that the cluster runs with, secrets masked, as a unified difference.
    std::vector<std::string> Difference() const;

private:
    void Copy(const vcssim::ClusterFiles& original);

    std::unique_ptr<common::TemporaryFolder> m_folder;
    vcssim::ClusterFiles m_copy;
    std::string m_before; // the configuration, without the change
};

#endif
