// The resource that runs a Windows service in a group.
#include "Runs.h"

using namespace harness;

namespace {

const std::wstring ListServices = L"hares -list  Type=GenericService  ServiceName=Svc  Group=G1 ";

class VeritasGenericService : public VeritasTest {
protected:
    bool Find() {
        return cluster.GetGenericServiceResNameByServiceName(L"G1", L"Svc", resource);
    }
    // The log of the whole query: the run, then `line` if there is one.
    static std::string QueryLog(const Texts& run, const std::string& line = "") {
        return Lines({"> GetGenericServiceResNameByServiceName"}) + RunLog(Utf8(ListServices), run) +
               (line.empty() ? "" : Lines({line})) + Lines({"< GetGenericServiceResNameByServiceName"});
    }

    std::wstring resource = L"OLD";
};

TEST_F(VeritasGenericService, TheFirstResourceFoundIsTold) {
    tools.Answer(ListServices, "R2\t\tNODE1\r\nR1\t\tNODE1\r\n");
    EXPECT_TRUE(Find());
    EXPECT_EQ(resource, L"R2");
    EXPECT_EQ(tools.TakeCommandLines(), CommandList{ListServices});
    EXPECT_EQ(TakeLog(), QueryLog({"I Process exit code: 0", "I Result: R2\t\tNODE1", "I Result: R1\t\tNODE1"}));
}

TEST_F(VeritasGenericService, AGroupWithoutTheServiceIsAFailureWithAWarning) {
    tools.Answer(ListServices, "");
    EXPECT_FALSE(Find());
    EXPECT_EQ(resource, L"OLD");
    EXPECT_EQ(TakeLog(), QueryLog({"I Process exit code: 0"}, "W No resource found in Group G1"));
}

TEST_F(VeritasGenericService, AnErrorInTheListIsAFailureWithAWarning) {
    tools.Answer(ListServices, "R1 ERROR\n", 1);
    EXPECT_FALSE(Find());
    EXPECT_EQ(resource, L"OLD");
    EXPECT_EQ(TakeLog(),
              QueryLog({"I Process exit code: 1", "I Result: R1 ERROR"}, "W Fail to enumerate resource for Group G1"));
}

TEST_F(VeritasGenericService, AToolThatCannotBeRunIsAFailureWithAWarning) {
    tools.FailStart(1, ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(Find());
    EXPECT_EQ(resource, L"OLD");
    EXPECT_EQ(TakeLog(), QueryLog({}, "W Fail to enumerate resource for Group G1"));
}

TEST_F(VeritasGenericService, WithoutATemporaryNameTheEntryOfTheRunIsLoggedAndTheWarning) {
    Platform().FailCall("GetTempFileNameW", ERROR_ACCESS_DENIED);
    EXPECT_FALSE(Find());
    EXPECT_EQ(TakeLog(),
              Lines({"> GetGenericServiceResNameByServiceName", RunEnter, "W Fail to enumerate resource for Group G1",
                     "< GetGenericServiceResNameByServiceName"}));
}

TEST_F(VeritasGenericService, AMessageOfVcsIsTakenForAResource) {
    tools.Answer(ListServices, "VCS WARNING V-16-1-50 text\r\n", 1);
    EXPECT_TRUE(Find());
    EXPECT_EQ(resource, L"VCS");
}

TEST_F(VeritasGenericService, NullCountsAsAnEmptyName) {
    tools.Answer(L"hares -list  Type=GenericService  ServiceName=  Group= ", "R1 NODE1\n");
    EXPECT_TRUE(cluster.GetGenericServiceResNameByServiceName(nullptr, nullptr, resource));
    EXPECT_EQ(resource, L"R1");
    for (const char* output : {"", "R1 ERROR\n"}) {
        tools.AnswerNext(output);
        EXPECT_FALSE(cluster.GetGenericServiceResNameByServiceName(nullptr, nullptr, resource));
    }
    const std::string log = TakeLog();
    EXPECT_THAT(log, ::testing::HasSubstr("W No resource found in Group \n"));
    EXPECT_THAT(log, ::testing::HasSubstr("W Fail to enumerate resource for Group \n"));
}

} // namespace
