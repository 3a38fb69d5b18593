// Settings files with bytes that no editor writes.
#include "SettingsFixture.h"

using namespace harness;

namespace {

const std::string KeyAndTab = "RegKeyProductCurrentVersion\t";

TEST_F(SettingsTest, ControlZEndsTheFile) {
    WriteConfig(std::string("# comment\n\x1a\n") + SettingsEntry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
}

TEST_F(SettingsTest, ControlZEndsTheValueBeforeIt) {
    WriteConfig(KeyAndTab + "SOFTWARE\\Other" + "\x1a" + "lost\n");
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
}

TEST_F(SettingsTest, ANulHidesTheRestOfItsLine) {
    WriteConfig(KeyAndTab + "SOFTWARE\\Other" + '\0' + "lost\n");
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
}

TEST_F(SettingsTest, ANulHidesTheLineFeedToo) {
    WriteConfig(KeyAndTab + "SOFTWARE\\Other" + '\0' + "lost\nKey\n");
    EXPECT_EQ(ProductKey(), "SOFTWARE\\OtherKey");
}

TEST_F(SettingsTest, EachByteOfThePathBecomesOneCharacter) {
    WriteConfig(KeyAndTab + "SOFTWARE\\\xe4\xff\x80\n");
    EXPECT_EQ(ProductKey(), Utf8(L"SOFTWARE\\\u00e4\u00ff\u0080"));
}

TEST_F(SettingsTest, ByteOrderMarkBelongsToTheKey) {
    WriteConfig("\xef\xbb\xbf" + KeyAndTab + "SOFTWARE\\Other\n");
    EXPECT_EQ(ProductKey(), DefaultKeyText);
}

TEST_F(SettingsTest, Utf16FileDefinesNothing) {
    std::string wide("\xff\xfe");
    for (const char c : std::string(SettingsEntry)) {
        wide += c;
        wide += '\0';
    }
    WriteConfig(wide);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
}

TEST_F(SettingsTest, LoneCarriageReturnIsAnOrdinaryCharacter) {
    WriteConfig(KeyAndTab + "SOFTWARE\\A\rB\n");
    EXPECT_EQ(ProductKey(), "SOFTWARE\\A\rB");
}

TEST_F(SettingsTest, CarriageReturnBeforeALineFeedDoesNotCount) {
    const std::string first = "#" + std::string(5000, 'x') + "\n";
    const std::string entry = SettingsEntry;
    const std::size_t left = 10240 - (first.size() + 1) - (entry.size() + 1) - 1;
    WriteConfig("#" + std::string(5000, 'x') + "\r\n#" + std::string(left - 2, 'x') + "\r\n" + KeyAndTab +
                "SOFTWARE\\Other\r\n");
    EXPECT_EQ(ProductKey(), "SOFTWARE\\Other");
}

TEST_F(SettingsTest, QuotedPathKeeps1024Characters) {
    WriteConfig(KeyAndTab + "\"" + std::string(1025, 'p') + "\"\n");
    EXPECT_EQ(ProductKey(), std::string(1024, 'p'));
}

TEST_F(SettingsTest, HugeFileOfOneLineDefinesNothing) {
    WriteConfig(std::string(1 << 20, 'x') + "\n" + SettingsEntry);
    EXPECT_EQ(ProductKey(), DefaultKeyText);
}

} // namespace
