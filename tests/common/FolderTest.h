// Tests that need a folder of their own.
#ifndef FOLDERTEST_H
#define FOLDERTEST_H

#include "common/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <string>

class FolderTest : public testing::Test {
protected:
    ~FolderTest() override; // with what is in it

    std::wstring Path(const std::wstring& name) const {
        return m_temporary.File(name);
    }

private:
    const common::TemporaryFolder m_temporary{L"common test folder"};

protected:
    const std::wstring& m_folder = m_temporary.Path();
};

#endif
