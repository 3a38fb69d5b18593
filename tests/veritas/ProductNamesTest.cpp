// Listing the product's resources.
#include "ProductNames.h"
#include "Story.h"
#include "ToolTables.h"

using namespace harness;

namespace {

class VeritasProductNames : public VeritasTest {
protected:
    VeritasProductNames() {
        Registry().SetText(ProductKey, L"DataRootPath", L"F:\\Data\\Store");
    }

    // The answers to the five queries, in order.
    void Answer(const std::vector<Texts>& found) {
        for (const Texts& resources : found) {
            tools.AnswerNext(Listed(resources));
        }
    }

    static Texts Queries(const std::string& conditions) {
        return {"$ hares -list " + conditions + " Type=GenericService  ServiceName=OXAHostService ",
                "$ hares -list " + conditions + " Type=GenericService  ServiceName=OXA_RemoteConfig ",
                "$ hares -list " + conditions + " Type=GenericService  ServiceName=OXASAService ",
                "$ hares -list " + conditions + " Type=GenericService  ServiceName=QAV_Monitor ",
                "I GetVeritasDiskPath: returns: F:\\Data\\Store",
                "$ hares -list " + conditions + " Type=RegRep  ReplicationDirectory=\\Data\\RegRep "};
    }
    static std::string Expected(const std::string& conditions) {
        return Lines(Texts{"> CollectKOVAResNames"} + Queries(conditions) + Texts{"< CollectKOVAResNames"});
    }

    Names names;
};

TEST_F(VeritasProductNames, OfEveryGroupAreAskedForByServiceAndByReplicationDirectory) {
    Answer({{"h1", "h2"}, {"c"}, {"s"}, {"q"}, {"r1", "r2"}});
    EXPECT_TRUE(cluster.CollectKOVAResNames(names));
    EXPECT_EQ(names, (Names{L"h1", L"h2", L"c", L"s", L"q", L"r1", L"r2"}));
    EXPECT_EQ(Told(*this), Expected(""));
}

TEST_F(VeritasProductNames, OfOneGroupAreAskedForWithTheGroupFirst) {
    Answer({{"h"}, {"c"}, {"s"}, {"q"}, {"r"}});
    EXPECT_TRUE(cluster.CollectKOVAResNames(L"EVS1", names));
    EXPECT_EQ(names, (Names{L"h", L"c", L"s", L"q", L"r"}));
    EXPECT_EQ(Told(*this), Expected(" Group=EVS1 "));
}

TEST_F(VeritasProductNames, OfANullGroupAreThoseOfAnEmptyOne) {
    Answer({{}, {}, {}, {}, {}});
    EXPECT_TRUE(cluster.CollectKOVAResNames(nullptr, names));
    EXPECT_EQ(Told(*this), Expected(" Group= "));
}

TEST_F(VeritasProductNames, AreAppendedEachOnce) {
    names = {L"q", L"other", L"q"};
    Answer({{"h", "h"}, {"H"}, {"h", "s"}, {"q"}, {"s", "r"}});
    EXPECT_TRUE(cluster.CollectKOVAResNames(names));
    EXPECT_EQ(names, (Names{L"q", L"other", L"q", L"h", L"H", L"s", L"r"}));
}

TEST_F(VeritasProductNames, AreNoneAndNoFailureWhereNothingIsInstalled) {
    Answer({{}, {}, {}, {}, {}});
    EXPECT_TRUE(cluster.CollectKOVAResNames(L"EVS1", names));
    EXPECT_EQ(names, Names());
}

TEST_F(VeritasProductNames, FoundBeforeAFailureStayAndNoFurtherQueryRuns) {
    const Texts queries = Queries("");
    for (unsigned failing = 1; failing <= 5; ++failing) {
        Names found = {L"before"};
        Names expected = found;
        Texts told = {"> CollectKOVAResNames"};
        for (unsigned i = 1; i < failing; ++i) {
            tools.AnswerNext(Listed({"r" + std::to_string(i)}));
            expected.push_back(L"r" + std::to_wstring(i));
            told.push_back(queries[i - 1]);
        }
        if (failing == 5) {
            told.push_back(queries[4]);
        }
        tools.AnswerNext("r ERROR refused\r\n");
        told.push_back(queries[failing == 5 ? 5 : failing - 1]);
        EXPECT_FALSE(cluster.CollectKOVAResNames(found));
        EXPECT_EQ(found, expected);
        EXPECT_EQ(Told(*this), Lines(told + Texts{"< CollectKOVAResNames"})) << failing;
    }
}

TEST_F(VeritasProductNames, ReadTheDataRootFromTheCompiledInKey) {
    Answer({{}, {}, {}, {}, {}});
    EXPECT_TRUE(cluster.CollectKOVAResNames(names));
    Texts registry;
    for (const std::string& line : Split(TakeJournal())) {
        if (line.rfind("Reg", 0) == 0) {
            registry.push_back(line);
        }
    }
    EXPECT_EQ(registry,
              (Texts{"RegOpenKeyExW(" + ProductKeyText + ")", "RegQueryValueExW(DataRootPath)", "RegCloseKey()"}));
}

TEST_F(VeritasProductNames, AreAskedForWithAnEmptyDirectoryWhenTheDataRootCannotBeRead) {
    Platform().FailCall("RegOpenKeyExW", ERROR_ACCESS_DENIED);
    Answer({{}, {}, {}, {}, {"any"}});
    EXPECT_TRUE(cluster.CollectKOVAResNames(names));
    EXPECT_EQ(names, Names{L"any"});
    const std::string told = Told(*this);
    EXPECT_THAT(told, ::testing::HasSubstr("I GetVeritasDiskPath: returns: \nW Cannot split path \n"
                                           "$ hares -list  Type=RegRep  ReplicationDirectory= \n"));
}

} // namespace
