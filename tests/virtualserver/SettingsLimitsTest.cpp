// The limits and names of the settings as clusctl tells them: the library goes by the same.
#include "SettingsLimits.h"

#include "SettingsFiles.h"

using namespace harness;

namespace {

using SettingsLimits = SettingsTest;

// A text that takes so many bytes, the terminator included.
std::wstring TextOf(DWORD bytes) {
    return std::wstring(bytes / sizeof(wchar_t) - 1, L'x');
}

TEST_F(SettingsLimits, ShortTextsAreReadUpToTheLimit) {
    std::wstring home;
    SetText(L"HomeDir", TextOf(settings::ShortText));
    EXPECT_TRUE(UtilAccess::GetHomeDir(home));
    EXPECT_EQ(home, TextOf(settings::ShortText));
    SetText(L"HomeDir", TextOf(settings::ShortText + sizeof(wchar_t)));
    EXPECT_FALSE(UtilAccess::GetHomeDir(home));
}

TEST_F(SettingsLimits, TheDataRootIsReadUpToTheLimit) {
    SetText(L"DataRootPath", TextOf(settings::LongText));
    EXPECT_EQ(CVirtualServerUtil::GetDataRootPath(), TextOf(settings::LongText));
    SetText(L"DataRootPath", TextOf(settings::LongText + sizeof(wchar_t)));
    EXPECT_EQ(CVirtualServerUtil::GetDataRootPath(), L"");
}

TEST_F(SettingsLimits, AddressAndGuidOfAPlainServerAreReadUpToTheLimit) {
    const auto isTaken = [&](const wchar_t* name, DWORD bytes) {
        SetText(L"HomeDir", L"C:\\Gate");
        SetText(name, TextOf(bytes));
        CVirtualServerUtil util;
        CClusterVirtualServerInfo info;
        int count = 1;
        EXPECT_EQ(util.EnumServersOnCurrentNode(&info, &count), CVirtualServerUtil::ENUM_VS_RESULT_SUCCESS);
        return (std::wstring(name) == L"ServerIP" ? info.m_wsServerIP : info.m_wsServerGUID)[0] == L'x';
    };
    for (const wchar_t* name : {L"ServerIP", L"SERVERGUID"}) {
        EXPECT_TRUE(isTaken(name, settings::ShortText));
        EXPECT_FALSE(isTaken(name, settings::ShortText + sizeof(wchar_t)));
    }
}

TEST_F(SettingsLimits, TheFileIsReadByItsName) {
    files.WriteText(files.Folder() + settings::FileName, Utf8(settings::KeyName) + "\tSOFTWARE\\Other\n");
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
}

} // namespace
