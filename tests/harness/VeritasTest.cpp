#include "VeritasTest.h"

namespace harness {

VeritasTest::VeritasTest() : tools(Platform()) {
}

VeritasTest::~VeritasTest() = default;

void VeritasTest::Audit() {
    LibraryTest::Audit();
    EXPECT_EQ(m_folder.Entries(), std::vector<std::wstring>()) << "files left in the current directory";
    EXPECT_EQ(Platform().LiveChildren(), 0u) << "child processes that still run";
    EXPECT_EQ(tools.Unscripted(), CommandList()) << "command lines without an answer";
}

} // namespace harness
