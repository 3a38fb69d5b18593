#include "FolderTest.h"

#include <winsock2.h>
#include <windows.h>

FolderTest::~FolderTest() {
    EXPECT_TRUE(m_temporary.Remove()) << GetLastError();
}
