// Tests that need a folder of their own.
#ifndef FOLDERTEST_H
#define FOLDERTEST_H

#include <gmock/gmock.h>

#include <string>

class FolderTest : public testing::Test {
protected:
    FolderTest();
    ~FolderTest() override; // with what is in it

    std::wstring Path(const std::wstring& name) const {
        return m_folder + L"\\" + name;
    }

    std::wstring m_folder;
};

#endif
