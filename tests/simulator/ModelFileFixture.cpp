#include "ModelFileFixture.h"

#include "common/Files.h"

#include <gmock/gmock.h>

#include <fstream>

void ModelFile::TearDown() {
    SetEnvironmentVariableW(L"CLUSSIM_FILE", nullptr);
    SetEnvironmentVariableW(L"CLUSSIM_JOURNAL", nullptr);
    SetEnvironmentVariableW(L"CLUSSIM_FAULTS", nullptr);
    SimulatorTest::TearDown();
    SetFileAttributesW(m_path.c_str(), FILE_ATTRIBUTE_NORMAL);
    RemoveDirectoryW((m_path + L".new").c_str());
    for (const std::wstring& file : {m_path, m_path + L".new", m_journal}) {
        DeleteFileW(file.c_str());
    }
    EXPECT_THAT(m_folder.Entries(), testing::IsEmpty()) << "left beside the model file";
    EXPECT_TRUE(m_folder.Remove()) << "error " << GetLastError();
}

void ModelFile::Write(const std::string& text) {
    std::ofstream(std::string(m_path.begin(), m_path.end()), std::ios::binary) << text;
}

std::string ModelFile::Read() const {
    return common::ReadWholeFile(m_path);
}

void ModelFile::UseFile(const std::string& text) {
    Write(text);
    SetEnvironmentVariableW(L"CLUSSIM_FILE", m_path.c_str());
    m_cluster = ClusterOwner(OpenCluster(nullptr));
    ASSERT_NE(static_cast<HCLUSTER>(m_cluster), nullptr);
}
