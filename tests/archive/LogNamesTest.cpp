// Names that logs show, also of what the cluster has no more.
#include "LogNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

typedef std::vector<std::string> Texts;

// Behind those of identities an asterisk.
Texts NamesIn(const std::string& text) {
    Texts names;
    for (const LogName& found : NamesInLog(text)) {
        names.push_back(found.name + (found.isIdentity ? "*" : ""));
    }
    return names;
}

} // namespace

TEST(LogNames, StandInCapitalsBehindAWordThatTellsWhatTheyAre) {
    EXPECT_EQ(NamesIn("2026 Node OLDNODE7 has left; system (EX-SYS2), host=MAIL01, User: JDOE"),
              (Texts{"OLDNODE7", "EX-SYS2", "MAIL01", "JDOE"}));
    EXPECT_EQ(NamesIn("the node is down, server Cannot start, group g1, node\nNEXTLINE"), Texts());
    EXPECT_EQ(NamesIn("system RUNNING, resource FAULTED, group IP"), Texts());
}

TEST(LogNames, StandInQuotationMarksWhateverTheyHold) {
    EXPECT_EQ(NamesIn("cannot open the resource \"Old Gate (evs9)\" of group 'evs9'"),
              (Texts{"Old Gate (evs9)", "evs9"}));
    EXPECT_EQ(NamesIn("group \"without an end\nnext\""), Texts());
}

TEST(LogNames, AreAccountsWithTheirDomains) {
    EXPECT_EQ(NamesIn("as CONTOSO\\j.doe by FIRM\\admin7, and"), (Texts{"CONTOSO*", "j.doe*", "FIRM*", "admin7*"}));
    EXPECT_EQ(NamesIn("by CONTOSO\\j.doe."), (Texts{"CONTOSO*", "j.doe*"}));
    EXPECT_EQ(NamesIn("wrote SETUP\\clusutil.2026.Log, DATA\\x.ini, DATA\\.x"), Texts());
    EXPECT_EQ(NamesIn("HKLM\\Software C:\\DATA\\x SOFTWARE\\Plinthcore F:DATA\\x"), Texts());
}

TEST(LogNames, AreComputersOfSharedFolders) {
    EXPECT_EQ(NamesIn("copied to \\\\fileserver\\share\\a.txt"), Texts{"fileserver*"});
    EXPECT_EQ(NamesIn("x\\\\\\three"), Texts());
    EXPECT_EQ(NamesIn("in \"C:\\\\data\\\\mail\""), Texts());
}
