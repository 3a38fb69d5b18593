#include "WebServerUtil.h"

#include "common/Files.h"

#include <string>

#include <gtest/gtest.h>

namespace {

const char Host[] = "<configuration><system.applicationHost><sites><site id=\"12\"><application path=\"/\">"
                    "<virtualDirectory path=\"/\" physicalPath=\"D:\\Product\" /></application></site></sites>"
                    "</system.applicationHost></configuration>";
const char Meta[] =
    "<configuration><MBProperty><IIsWebVirtualDir Location=\"/LM/W3SVC/34/ROOT\" Path=\"D:\\Product\" />"
    "</MBProperty></configuration>";

// Owns the configuration files in the system folder. Only for Wine's, where no real IIS can be hurt.
class WebServer : public testing::Test {
protected:
    WebServer() {
        wchar_t system[MAX_PATH];
        GetSystemDirectoryW(system, MAX_PATH);
        m_folder = std::wstring(system) + L"\\inetsrv";
    }

    void SetUp() override {
        if (GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr) {
            GTEST_SKIP() << "would overwrite this computer's IIS configuration";
        }
        // One test process at a time.
        m_turn = CreateMutexW(nullptr, FALSE, L"Global\\clusutil.tests.inetsrv");
        const DWORD turn = WaitForSingleObject(m_turn, 60000);
        ASSERT_TRUE(turn == WAIT_OBJECT_0 || turn == WAIT_ABANDONED);
        Clear();
        CreateDirectoryW(m_folder.c_str(), nullptr);
        CreateDirectoryW((m_folder + L"\\config").c_str(), nullptr);
    }

    void TearDown() override {
        if (m_turn != nullptr) {
            Clear();
            ReleaseMutex(m_turn);
            CloseHandle(m_turn);
        }
    }

    void Clear() {
        DeleteFileW(HostFile().c_str());
        DeleteFileW(MetaFile().c_str());
        RemoveDirectoryW((m_folder + L"\\config").c_str());
        RemoveDirectoryW(m_folder.c_str());
    }

    std::wstring HostFile() const {
        return m_folder + L"\\config\\applicationHost.config";
    }
    std::wstring MetaFile() const {
        return m_folder + L"\\MetaBase.xml";
    }

    static void Write(const std::wstring& path, const std::string& bytes) {
        common::WriteWholeFile(path, bytes);
    }

    static void ExpectSite(int site, const wchar_t* homeDir) {
        CWebServer server(homeDir);
        EXPECT_EQ(site, server.GetIISSiteID());
        EXPECT_EQ(site != -1, server.GetServerType() == 0);
    }

private:
    std::wstring m_folder;
    HANDLE m_turn = nullptr;
};

} // namespace

TEST_F(WebServer, IsAnotherOneWithoutIIS) {
    ExpectSite(-1, L"D:\\Product");
}

TEST_F(WebServer, ReadsTheConfigurationOfLaterVersions) {
    Write(HostFile(), Host);
    ExpectSite(12, L"D:\\Product\\Home");
    ExpectSite(-1, L"D:\\Other");
}

TEST_F(WebServer, ReadsTheMetaBase) {
    Write(MetaFile(), Meta);
    ExpectSite(34, L"D:\\Product\\Home");
    ExpectSite(-1, L"D:\\Other");
}

TEST_F(WebServer, PrefersTheConfigurationOfLaterVersions) {
    Write(HostFile(), Host);
    Write(MetaFile(), Meta);
    ExpectSite(12, L"D:\\Product");
}

TEST_F(WebServer, TakesNothingFromABrokenOrUnreadableFile) {
    Write(HostFile(), std::string(Host).substr(0, sizeof(Host) - 5));
    ExpectSite(-1, L"D:\\Product");
    Write(HostFile(), "");
    ExpectSite(-1, L"D:\\Product");
    Write(HostFile(), Host);
    const HANDLE exclusive = CreateFileW(HostFile().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, exclusive);
    ExpectSite(-1, L"D:\\Product");
    CloseHandle(exclusive);
    ExpectSite(12, L"D:\\Product");
}

TEST_F(WebServer, SurvivesANullOrEmptyHomeDirectory) {
    Write(HostFile(), Host);
    ExpectSite(-1, nullptr);
    ExpectSite(-1, L"");
}

TEST_F(WebServer, SeesAChangeWithTheNextObject) {
    Write(HostFile(), Host);
    CWebServer before(L"D:\\Product");
    Write(HostFile(), "<configuration />");
    CWebServer after(L"D:\\Product");
    EXPECT_EQ(12, before.GetIISSiteID());
    EXPECT_EQ(-1, after.GetIISSiteID());
}
