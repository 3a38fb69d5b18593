// Who may change the folders in which the system looks for a VCS tool, up to the one in which it is found.
#include "VcsToolFiles.h"

#include "Failure.h"

#include "common/Environment.h"
#include "common/Files.h"
#include "common/TemporaryFolder.h"

#include <winsock2.h>
#include <windows.h>

#include <sddl.h>

#include <gtest/gtest.h>

namespace {

const wchar_t Own[] = L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;WD)(A;OICI;FA;;;";
const wchar_t Everybodys[] = L"D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1301bf;;;WD)(A;OICI;FA;;;";

class ToolFolders : public testing::Test {
protected:
    ToolFolders() {
        for (const std::wstring& folder : {m_first, m_second}) {
            CreateDirectoryW(folder.c_str(), nullptr);
            Protect(folder, Own);
        }
        SetEnvironmentVariableW(L"PATH", (m_first + L";" + m_missing + L";" + m_second).c_str());
    }
    ~ToolFolders() override {
        SetEnvironmentVariableW(L"PATH", m_path.c_str());
        for (const std::wstring& folder : {m_first, m_second}) {
            EXPECT_TRUE(common::RemoveFolder(folder)) << GetLastError();
        }
    }

    static void Protect(const std::wstring& folder, const wchar_t* list) {
        const std::wstring text = list + ThisAccount() + L")";
        PSECURITY_DESCRIPTOR descriptor = nullptr;
        ASSERT_TRUE(
            ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1, &descriptor, nullptr));
        EXPECT_TRUE(SetFileSecurityW(folder.c_str(), DACL_SECURITY_INFORMATION, descriptor)) << GetLastError();
        LocalFree(descriptor);
    }

    // The tool lies in the folder.
    static void Put(const std::wstring& folder) {
        common::WriteWholeFile(folder + L"\\haprobe.exe", "MZ");
    }

    // Empty when the tool may be run.
    static std::string Refusal() {
        try {
            RequireTrustedTools({{L"haprobe", FindVcsTool(L"haprobe")}});
            return std::string();
        } catch (const Failure& failure) {
            return failure.what();
        }
    }

private:
    const std::wstring m_path = common::EnvironmentVariable(L"PATH");
    common::TemporaryFolder m_folder{L"tool folders"};

protected:
    const std::wstring m_first = m_folder.File(L"first");
    const std::wstring m_missing = m_folder.File(L"missing");
    const std::wstring m_second = m_folder.File(L"second");
};

} // namespace

TEST_F(ToolFolders, OfThisAccountAloneAreTrusted) {
    Put(m_second);
    EXPECT_EQ(Refusal(), "");
}

TEST_F(ToolFolders, OneOfEverybodysThatIsSearchedBeforeTheToolsOwnIsNot) {
    Put(m_second);
    Protect(m_first, Everybodys);
    const std::string refusal = Refusal();
    EXPECT_NE(refusal.find("first\""), std::string::npos) << refusal;
    EXPECT_NE(refusal.find("which is searched before its folder"), std::string::npos) << refusal;
}

TEST_F(ToolFolders, OneOfEverybodysThatIsSearchedLaterDoesNotMatter) {
    Put(m_first);
    Protect(m_second, Everybodys);
    EXPECT_EQ(Refusal(), "");
}

TEST_F(ToolFolders, OneOfEverybodysWithTheToolInItIsNotTrusted) {
    Put(m_second);
    Protect(m_second, Everybodys);
    const std::string refusal = Refusal();
    EXPECT_NE(refusal.find("second\""), std::string::npos) << refusal;
}
