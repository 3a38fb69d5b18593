// The fixture for what runs VCS tools: a VCS cluster, a private folder as current directory, and scripted tools.
//
// After each test (and each run of a sweep) also checks that the folder is empty, that no child process lives, and that
// every command was scripted.
#ifndef HARNESS_VERITASTEST_H
#define HARNESS_VERITASTEST_H

#include "ClusterTest.h"
#include "PrivateFolder.h"
#include "ToolScript.h"

#include "clus_VeritasCluster.h"

namespace harness {

class VeritasTest : public LibraryTest {
public:
    // As in LibraryTest, with ha-XXXX.tmp for the names of capture files.
    std::string TakeLog() {
        return WithoutTempNames(LibraryTest::TakeLog());
    }

    // From now on the library's calls start processes.
    void UseRealProcesses() {
        Platform().processes = nullptr;
    }

    // The current directory of the test.
    const PrivateFolder& Folder() const {
        return m_folder;
    }

    void Audit() override;

    ToolScript tools;
    const CVeritasCluster cluster;

protected:
    VeritasTest();
    ~VeritasTest() override;

private:
    PrivateFolder m_folder;
};

} // namespace harness

#endif
