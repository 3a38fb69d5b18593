// Names that logs show, also of what the cluster has no more.
#include "LogNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

typedef std::vector<std::string> Texts;

} // namespace

TEST(LogNames, StandInCapitalsBehindAWordThatTellsWhatTheyAre) {
    EXPECT_EQ(NamesInLog("2026 Node OLDNODE7 has left; system (EX-SYS2), host=MAIL01, User: JDOE"),
              (Texts{"OLDNODE7", "EX-SYS2", "MAIL01", "JDOE"}));
    EXPECT_EQ(NamesInLog("the node is down, server Cannot start, group g1, node\nNEXTLINE"), Texts());
    EXPECT_EQ(NamesInLog("system RUNNING, resource FAULTED, group IP"), Texts());
}

TEST(LogNames, StandInQuotationMarksWhateverTheyHold) {
    EXPECT_EQ(NamesInLog("cannot open the resource \"Old Gate (evs9)\" of group 'evs9'"),
              (Texts{"Old Gate (evs9)", "evs9"}));
    EXPECT_EQ(NamesInLog("group \"without an end\nnext\""), Texts());
}

TEST(LogNames, AreAccountsWithTheirDomains) {
    EXPECT_EQ(NamesInLog("as CONTOSO\\j.doe by FIRM\\admin7, and"), (Texts{"FIRM", "admin7"}));
    EXPECT_EQ(NamesInLog("HKLM\\Software C:\\DATA\\x SOFTWARE\\Plinthcore F:DATA\\x"), Texts());
}

TEST(LogNames, AreComputersOfSharedFolders) {
    EXPECT_EQ(NamesInLog("copied to \\\\fileserver\\share\\a.txt"), Texts{"fileserver"});
    EXPECT_EQ(NamesInLog("x\\\\\\three"), Texts());
}
