#include "ModelFileFixture.h"

#include <fstream>

void ModelFile::SetUp() {
    SimulatorTest::SetUp();
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    m_folder = folder + (L"clussim-" + std::to_wstring(GetCurrentProcessId()));
    ASSERT_TRUE(CreateDirectoryW(m_folder.c_str(), nullptr));
    m_path = m_folder + L"\\model.json";
}

void ModelFile::TearDown() {
    SetEnvironmentVariableW(L"CLUSSIM_FILE", nullptr);
    SetEnvironmentVariableW(L"CLUSSIM_JOURNAL", nullptr);
    SetEnvironmentVariableW(L"CLUSSIM_FAULTS", nullptr);
    SimulatorTest::TearDown();
    SetFileAttributesW(m_path.c_str(), FILE_ATTRIBUTE_NORMAL);
    RemoveDirectoryW((m_path + L".new").c_str());
    for (const std::wstring& file : {m_path, m_path + L".new", m_folder + L"\\journal"}) {
        DeleteFileW(file.c_str());
    }
    EXPECT_TRUE(RemoveDirectoryW(m_folder.c_str())) << "something is left beside the model file";
}

void ModelFile::Write(const std::string& text) {
    std::ofstream(std::string(m_path.begin(), m_path.end()), std::ios::binary) << text;
}

std::string ModelFile::Read() const {
    const HANDLE file =
        CreateFileW(m_path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE) << "error " << GetLastError();
    std::string text(GetFileSize(file, nullptr), '\0');
    DWORD cb = 0;
    EXPECT_TRUE(ReadFile(file, &text[0], static_cast<DWORD>(text.size()), &cb, nullptr));
    EXPECT_EQ(cb, text.size());
    CloseHandle(file);
    return text;
}

void ModelFile::UseFile(const std::string& text) {
    Write(text);
    SetEnvironmentVariableW(L"CLUSSIM_FILE", m_path.c_str());
    m_cluster = ClusterOwner(OpenCluster(nullptr));
    ASSERT_NE(static_cast<HCLUSTER>(m_cluster), nullptr);
}
