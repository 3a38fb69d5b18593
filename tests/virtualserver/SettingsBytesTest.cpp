// Settings files with bytes that no editor writes.
#include "SettingsFiles.h"

using namespace harness;

namespace {

const std::string KeyAndTab = "RegKeyProductCurrentVersion\t";

using ProductKeyFile = SettingsTest;

TEST_F(ProductKeyFile, ControlZEndsTheFile) {
    files.WriteConfig(std::string("# comment\n\x1a\n") + SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
}

TEST_F(ProductKeyFile, ControlZEndsTheValueBeforeIt) {
    files.WriteConfig(KeyAndTab + "SOFTWARE\\Other" + "\x1a" + "lost\n");
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
}

TEST_F(ProductKeyFile, ANulHidesTheRestOfItsLine) {
    files.WriteConfig(KeyAndTab + "SOFTWARE\\Other" + '\0' + "lost\n");
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
}

TEST_F(ProductKeyFile, ANulHidesTheLineFeedToo) {
    files.WriteConfig(KeyAndTab + "SOFTWARE\\Other" + '\0' + "lost\nKey\n");
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\OtherKey");
}

TEST_F(ProductKeyFile, EachByteOfThePathBecomesOneCharacter) {
    files.WriteConfig(KeyAndTab + "SOFTWARE\\\xe4\xff\x80\n");
    EXPECT_EQ(files.KeyInUse(), Utf8(L"SOFTWARE\\\u00e4\u00ff\u0080"));
}

TEST_F(ProductKeyFile, ByteOrderMarkBelongsToTheKey) {
    files.WriteConfig("\xef\xbb\xbf" + KeyAndTab + "SOFTWARE\\Other\n");
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
}

TEST_F(ProductKeyFile, Utf16FileDefinesNothing) {
    std::string wide("\xff\xfe");
    for (const char c : std::string(SettingsEntry)) {
        wide += c;
        wide += '\0';
    }
    files.WriteConfig(wide);
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
}

TEST_F(ProductKeyFile, LoneCarriageReturnIsAnOrdinaryCharacter) {
    files.WriteConfig(KeyAndTab + "SOFTWARE\\A\rB\n");
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\A\rB");
}

TEST_F(ProductKeyFile, CarriageReturnBeforeALineFeedDoesNotCount) {
    const std::string first = "#" + std::string(5000, 'x') + "\n";
    const std::string entry = SettingsEntry;
    const std::size_t left = 10240 - (first.size() + 1) - (entry.size() + 1) - 1;
    files.WriteConfig("#" + std::string(5000, 'x') + "\r\n#" + std::string(left - 2, 'x') + "\r\n" + KeyAndTab +
                      "SOFTWARE\\Other\r\n");
    EXPECT_EQ(files.KeyInUse(), "SOFTWARE\\Other");
}

TEST_F(ProductKeyFile, QuotedPathKeeps1024Characters) {
    files.WriteConfig(KeyAndTab + "\"" + std::string(1025, 'p') + "\"\n");
    EXPECT_EQ(files.KeyInUse(), std::string(1024, 'p'));
}

TEST_F(ProductKeyFile, HugeFileOfOneLineDefinesNothing) {
    files.WriteConfig(std::string(1 << 20, 'x') + "\n" + SettingsEntry);
    EXPECT_EQ(files.KeyInUse(), ProductKeyText);
}

} // namespace
