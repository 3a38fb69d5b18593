// Which names and addresses denote a server.
#include "HostFixture.h"

#include <cstring>
#include <cwchar>
#include <memory>

using namespace harness;

namespace {

const std::string Enter = "> CVirtualServerUtil::IsTheSameVirtualServer()";
const std::string Leave = "< CVirtualServerUtil::IsTheSameVirtualServer()";

class MatchTest : public HostTest {
protected:
    MatchTest() {
        SetServer(L"EVS1", L"10.1.2.3");
        Forget();
    }
    void TearDown() override {
        util.reset();
        HostTest::TearDown();
    }

    void SetServer(const wchar_t* name, const wchar_t* ip) {
        wcscpy(info.m_wsServerName, name);
        wcscpy(info.m_wsServerIP, ip);
    }

    // Asks, and checks the first log line; the lines between it and the leaving stay for `middle`.
    bool Matches(const wchar_t* nameOrIp) {
        Forget();
        const bool matches = util->IsTheSameVirtualServer(nameOrIp, info);
        std::string log = TakeLog();
        const std::string head = Lines({Enter, "I Finding " + Utf8(nameOrIp)});
        const std::string tail = Lines({Leave});
        EXPECT_EQ(log.substr(0, head.size()), head);
        EXPECT_GE(log.size(), head.size() + tail.size());
        EXPECT_EQ(log.substr(log.size() - tail.size()), tail);
        middle = log.substr(head.size(), log.size() - head.size() - tail.size());
        return matches;
    }
    // A match, or none, that logs nothing of its own.
    bool MatchesQuietly(const wchar_t* nameOrIp) {
        const bool matches = Matches(nameOrIp);
        EXPECT_EQ(middle, "") << Utf8(nameOrIp);
        return matches;
    }

    std::unique_ptr<CVirtualServerUtil> util = std::make_unique<CVirtualServerUtil>();
    CClusterVirtualServerInfo info;
    std::string middle;
};

// The record's own address

TEST_F(MatchTest, OwnAddressMatchesAndIsLogged) {
    EXPECT_TRUE(Matches(L"10.1.2.3"));
    EXPECT_EQ(middle, Lines({"I lpwsNameOrIP == info.m_wsServerIP, return true)"}));
}

TEST_F(MatchTest, OwnAddressIsComparedAsText) {
    SetServer(L"EVS1", L"fe80::aB");
    EXPECT_TRUE(Matches(L"fe80::aB"));
    EXPECT_FALSE(MatchesQuietly(L"fe80::AB")) << "a letter first: a host name";
}

TEST_F(MatchTest, EmptyTextMatchesAnEmptyAddress) {
    SetServer(L"EVS1", L"");
    EXPECT_TRUE(Matches(L""));
    EXPECT_EQ(middle, Lines({"I lpwsNameOrIP == info.m_wsServerIP, return true)"}));
}

TEST_F(MatchTest, AddressComesBeforeTheName) {
    SetServer(L"SAME", L"SAME");
    EXPECT_TRUE(Matches(L"SAME"));
    EXPECT_EQ(middle, Lines({"I lpwsNameOrIP == info.m_wsServerIP, return true)"}));
}

// The record's name

TEST_F(MatchTest, NameMatchesInAnyLetterCase) {
    for (const wchar_t* name : {L"EVS1", L"evs1", L"Evs1", L"eVs1"}) {
        EXPECT_TRUE(MatchesQuietly(name)) << Utf8(name);
    }
    SetServer(L"evs1", L"10.1.2.3");
    EXPECT_TRUE(MatchesQuietly(L"EVS1"));
    EXPECT_TRUE(MatchesQuietly(L"evs1.example.com"));
}

TEST_F(MatchTest, OtherNamesDoNotMatch) {
    for (const wchar_t* name : {L"EVS", L"EVS11", L"EVS2", L"EVS1 ", L"EVS 1", L"xEVS1", L"NODE-A"}) {
        EXPECT_FALSE(MatchesQuietly(name)) << Utf8(name);
    }
}

TEST_F(MatchTest, NameThatStartsWithADigitMatchesAsAWhole) {
    SetServer(L"1EVS", L"10.1.2.3");
    EXPECT_TRUE(MatchesQuietly(L"1evs"));
}

TEST_F(MatchTest, NameWithLettersBeyondAsciiMatchesByTheWideMapping) {
    // Letters that the C runtime maps in its initial locale or leaves alone: both sides are mapped alike.
    SetServer(L"S\u00e9rveur", L"10.1.2.3");
    EXPECT_TRUE(MatchesQuietly(L"s\u00e9RVEUR"));
    SetServer(L"\u0441\u0435\u0440\u0432\u0435\u0440", L"10.1.2.3");
    EXPECT_TRUE(MatchesQuietly(L"\u0441\u0435\u0440\u0432\u0435\u0440"));
}

// Host names with a domain

TEST_F(MatchTest, FirstLabelOfAHostNameMatches) {
    EXPECT_TRUE(MatchesQuietly(L"evs1.example.com"));
    EXPECT_TRUE(MatchesQuietly(L"EVS1.local"));
    EXPECT_TRUE(MatchesQuietly(L"evs1.")) << "a bare dot";
    EXPECT_TRUE(MatchesQuietly(L"evs1..x"));
}

TEST_F(MatchTest, OtherLabelsDoNotMatch) {
    EXPECT_FALSE(MatchesQuietly(L"www.evs1.com"));
    EXPECT_FALSE(MatchesQuietly(L"evs1x.example.com"));
    EXPECT_FALSE(MatchesQuietly(L"evs.1"));
}

TEST_F(MatchTest, RecordNameIsNotCutAtItsDot) {
    SetServer(L"evs1.example.com", L"10.1.2.3");
    EXPECT_TRUE(MatchesQuietly(L"EVS1.EXAMPLE.COM")) << "as a whole";
    EXPECT_FALSE(MatchesQuietly(L"evs1"));
    EXPECT_FALSE(MatchesQuietly(L"evs1.example.com.")) << "its first label is not the record's name";
}

// localhost

TEST_F(MatchTest, LocalhostIsThisComputerInAnyLetterCase) {
    SetServer(L"node-a", L"10.1.2.3");
    for (const wchar_t* name : {L"localhost", L"LOCALHOST", L"LocalHost"}) {
        EXPECT_TRUE(MatchesQuietly(name)) << Utf8(name);
    }
}

TEST_F(MatchTest, LocalhostIsNoOtherServer) {
    EXPECT_FALSE(MatchesQuietly(L"localhost"));
}

TEST_F(MatchTest, LocalhostComparesTheComputerNameExactly) {
    SetComputerName(L"node-a");
    SetServer(L"node-a", L"10.1.2.3");
    EXPECT_FALSE(MatchesQuietly(L"localhost")) << "only the record's side is upper-cased";
}

TEST_F(MatchTest, LocalhostWithADomainIsAnOrdinaryName) {
    SetServer(L"NODE-A", L"10.1.2.3");
    EXPECT_FALSE(MatchesQuietly(L"localhost.localdomain"));
    SetServer(L"LOCALHOST", L"10.1.2.3");
    EXPECT_TRUE(MatchesQuietly(L"localhost.localdomain"));
}

TEST_F(MatchTest, ServerNamedLocalhostMatchesByItsName) {
    SetServer(L"Localhost", L"10.1.2.3");
    Platform().FailCall("GetComputerNameW", ERROR_GEN_FAILURE);
    EXPECT_TRUE(MatchesQuietly(L"localhost")) << "the computer name is not asked";
}

TEST_F(MatchTest, LocalhostFailsWhenTheComputerNameCannotBeRead) {
    SetServer(L"NODE-A", L"10.1.2.3");
    SetComputerName(L"A-NODE-NAMED-016");
    EXPECT_FALSE(MatchesQuietly(L"localhost"));
}

TEST_F(MatchTest, NullMatchesNothing) {
    EXPECT_FALSE(util->IsTheSameVirtualServer(nullptr, info));
}

TEST_F(MatchTest, LongestNameAndAddressAreComparedWhole) {
    SetServer(std::wstring(511, L'n').c_str(), std::wstring(510, L'1').c_str());
    EXPECT_TRUE(MatchesQuietly(std::wstring(511, L'N').c_str()));
    EXPECT_FALSE(MatchesQuietly(std::wstring(510, L'N').c_str()));
    EXPECT_TRUE(Matches(std::wstring(510, L'1').c_str()));
}

// Addresses

class AddressTest : public MatchTest {
protected:
    std::string hostName = "EVS1";
    bool hostKnown = true;
    bool hostNamed = true;
    int resolveError = 0;
    std::vector<std::string> resolved;

private:
    unsigned long m_address = 0;
    hostent m_host = {};
    ImportPatch<unsigned long(const char*), struct InetAddrTag> m_inetAddr{
        FindImports(LibraryModule(), "ws2_32.dll", "inet_addr"), [this](const char* text) {
            resolved.push_back(text);
            m_address = ::inet_addr(text);
            return m_address;
        }};
    ImportPatch<hostent*(const char*, int, int), struct HostTag> m_getHost{
        FindImports(LibraryModule(), "ws2_32.dll", "gethostbyaddr"),
        [this](const char* address, int length, int family) -> hostent* {
            EXPECT_EQ(length, 4);
            EXPECT_EQ(family, AF_INET);
            EXPECT_EQ(std::memcmp(address, &m_address, 4), 0);
            m_host.h_name = hostNamed ? hostName.data() : nullptr;
            return hostKnown ? &m_host : nullptr;
        }};
    ImportPatch<int(), struct ErrorTag> m_lastError{FindImports(LibraryModule(), "ws2_32.dll", "WSAGetLastError"),
                                                    [this]() { return resolveError; }};
};

TEST_F(AddressTest, AddressOfTheServersHostNameDoesNotMatch) {
    for (const char* name : {"EVS1", "evs1", "evs1.example.com", "other"}) {
        hostName = name;
        EXPECT_FALSE(Matches(L"10.9.9.9"));
        EXPECT_EQ(middle, Lines({"E Call wcstombs failed"})) << name;
    }
    EXPECT_EQ(resolved, std::vector<std::string>(4, "10.9.9.9"));
}

TEST_F(AddressTest, EmptyHostNameDoesNotMatch) {
    hostName = "";
    SetServer(L"", L"10.1.2.3");
    EXPECT_FALSE(Matches(L"10.9.9.9"));
    EXPECT_EQ(middle, Lines({"E Call wcstombs failed"}));
}

TEST_F(AddressTest, AddressThatCannotBeResolvedDoesNotMatch) {
    hostKnown = false;
    resolveError = WSAHOST_NOT_FOUND;
    EXPECT_FALSE(MatchesQuietly(L"10.9.9.9"));
    EXPECT_EQ(resolved.size(), 1u);
}

TEST_F(AddressTest, ReportedErrorCountsMoreThanTheHost) {
    resolveError = WSATRY_AGAIN;
    EXPECT_FALSE(MatchesQuietly(L"10.9.9.9"));
}

TEST_F(AddressTest, MissingHostWithoutAnErrorDoesNotMatch) {
    hostKnown = false;
    EXPECT_FALSE(MatchesQuietly(L"10.9.9.9"));
}

TEST_F(AddressTest, HostWithoutANameDoesNotMatch) {
    hostNamed = false;
    EXPECT_FALSE(MatchesQuietly(L"10.9.9.9"));
}

TEST_F(AddressTest, HostNameWithBytesBeyondAsciiDoesNotMatch) {
    hostName = "\xe4\xff\x80";
    EXPECT_FALSE(Matches(L"10.9.9.9"));
    EXPECT_EQ(middle, Lines({"E Call wcstombs failed"}));
}

TEST_F(AddressTest, LongHostNameDoesNotMatch) {
    hostName = std::string(5000, 'h');
    EXPECT_FALSE(Matches(L"10.9.9.9"));
    EXPECT_EQ(middle, Lines({"E Call wcstombs failed"}));
}

TEST_F(AddressTest, LongTextThatIsNoAddressIsHandedOnWhole) {
    EXPECT_FALSE(Matches(std::wstring(5000, L'9').c_str()));
    EXPECT_EQ(resolved, std::vector<std::string>{std::string(5000, '9')});
}

TEST_F(AddressTest, AnythingThatStartsWithNoLetterIsAnAddress) {
    for (const wchar_t* text : {L"1EVS.example.com", L"-evs1", L".evs1", L" EVS1", L"_", L""}) {
        resolved.clear();
        EXPECT_FALSE(Matches(text)) << Utf8(text);
        EXPECT_EQ(resolved, std::vector<std::string>{Utf8(text)});
    }
}

TEST_F(AddressTest, NameThatStartsWithADigitAndHasADomainDoesNotMatch) {
    SetServer(L"1EVS", L"10.1.2.3");
    hostName = "1EVS";
    EXPECT_FALSE(Matches(L"1evs.example.com"));
}

TEST_F(AddressTest, TextThatHasNoMultibyteFormIsNotResolved) {
    EXPECT_FALSE(Matches(L"1\u4e2d"));
    EXPECT_EQ(middle, Lines({"E Call wcstombs failed"}));
    EXPECT_FALSE(Matches(L"\u4e2dEVS1")) << "no letter to the narrow classification";
    EXPECT_EQ(middle, Lines({"E Call wcstombs failed"}));
    EXPECT_TRUE(resolved.empty());
}

TEST_F(AddressTest, NamesAreNotResolved) {
    EXPECT_TRUE(MatchesQuietly(L"evs1"));
    EXPECT_FALSE(MatchesQuietly(L"evs2"));
    EXPECT_FALSE(MatchesQuietly(L"localhost"));
    EXPECT_TRUE(Matches(L"10.1.2.3"));
    EXPECT_TRUE(resolved.empty());
}

} // namespace
