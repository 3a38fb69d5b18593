// Which names and addresses denote a server.
#include "HostFixture.h"

#include <clocale>
#include <cstring>
#include <cwchar>
#include <memory>

using namespace harness;

namespace {

const std::string MatchEnter = "> CVirtualServerUtil::IsTheSameVirtualServer()";
const std::string MatchLeave = "< CVirtualServerUtil::IsTheSameVirtualServer()";

// A server of which is asked what denotes it.
class AskedServer {
public:
    explicit AskedServer(HostTest& test) : m_test(test) {
        test.AtEnd([this] { util.reset(); });
        Set(L"EVS1", L"10.1.2.3");
        test.Forget();
    }

    void Set(const wchar_t* name, const wchar_t* ip) {
        wcscpy(info.m_wsServerName, name);
        wcscpy(info.m_wsServerIP, ip);
    }

    // Asks, and checks the first log line; the lines between it and the leaving stay for `middle`.
    bool Matches(const wchar_t* nameOrIp) {
        m_test.Forget();
        const bool matches = util->IsTheSameVirtualServer(nameOrIp, info);
        std::string log = m_test.TakeLog();
        const std::string head = Lines({MatchEnter, "I Finding " + Utf8(nameOrIp)});
        const std::string tail = Lines({MatchLeave});
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

private:
    HostTest& m_test;
};

class ServerMatch : public HostTest {
protected:
    AskedServer server{*this};
};

// The record's own address

TEST_F(ServerMatch, OwnAddressMatchesAndIsLogged) {
    EXPECT_TRUE(server.Matches(L"10.1.2.3"));
    EXPECT_EQ(server.middle, Lines({"I lpwsNameOrIP == info.m_wsServerIP, return true)"}));
}

TEST_F(ServerMatch, OwnAddressIsComparedAsText) {
    server.Set(L"EVS1", L"fe80::aB");
    EXPECT_TRUE(server.Matches(L"fe80::aB"));
    EXPECT_FALSE(server.MatchesQuietly(L"fe80::AB")) << "a letter first: a host name";
}

TEST_F(ServerMatch, EmptyTextMatchesAnEmptyAddress) {
    server.Set(L"EVS1", L"");
    EXPECT_TRUE(server.Matches(L""));
    EXPECT_EQ(server.middle, Lines({"I lpwsNameOrIP == info.m_wsServerIP, return true)"}));
}

TEST_F(ServerMatch, AddressComesBeforeTheName) {
    server.Set(L"SAME", L"SAME");
    EXPECT_TRUE(server.Matches(L"SAME"));
    EXPECT_EQ(server.middle, Lines({"I lpwsNameOrIP == info.m_wsServerIP, return true)"}));
}

// The record's name

TEST_F(ServerMatch, NameMatchesInAnyLetterCase) {
    for (const wchar_t* name : {L"EVS1", L"evs1", L"Evs1", L"eVs1"}) {
        EXPECT_TRUE(server.MatchesQuietly(name)) << Utf8(name);
    }
    server.Set(L"evs1", L"10.1.2.3");
    EXPECT_TRUE(server.MatchesQuietly(L"EVS1"));
    EXPECT_TRUE(server.MatchesQuietly(L"evs1.example.com"));
}

TEST_F(ServerMatch, OtherNamesDoNotMatch) {
    for (const wchar_t* name : {L"EVS", L"EVS11", L"EVS2", L"EVS1 ", L"EVS 1", L"xEVS1", L"NODE-A"}) {
        EXPECT_FALSE(server.MatchesQuietly(name)) << Utf8(name);
    }
}

TEST_F(ServerMatch, NameThatStartsWithADigitMatchesAsAWhole) {
    server.Set(L"1EVS", L"10.1.2.3");
    EXPECT_TRUE(server.MatchesQuietly(L"1evs"));
}

TEST_F(ServerMatch, NameWithLettersBeyondAsciiMatchesByTheWideMapping) {
    // Letters that the C runtime maps in its initial locale or leaves alone: both sides are mapped alike.
    server.Set(L"S\u00e9rveur", L"10.1.2.3");
    EXPECT_TRUE(server.MatchesQuietly(L"s\u00e9RVEUR"));
    server.Set(L"\u0441\u0435\u0440\u0432\u0435\u0440", L"10.1.2.3");
    EXPECT_TRUE(server.MatchesQuietly(L"\u0441\u0435\u0440\u0432\u0435\u0440"));
}

// Host names with a domain

TEST_F(ServerMatch, FirstLabelOfAHostNameMatches) {
    EXPECT_TRUE(server.MatchesQuietly(L"evs1.example.com"));
    EXPECT_TRUE(server.MatchesQuietly(L"EVS1.local"));
    EXPECT_TRUE(server.MatchesQuietly(L"evs1.")) << "a bare dot";
    EXPECT_TRUE(server.MatchesQuietly(L"evs1..x"));
}

TEST_F(ServerMatch, OtherLabelsDoNotMatch) {
    EXPECT_FALSE(server.MatchesQuietly(L"www.evs1.com"));
    EXPECT_FALSE(server.MatchesQuietly(L"evs1x.example.com"));
    EXPECT_FALSE(server.MatchesQuietly(L"evs.1"));
}

TEST_F(ServerMatch, RecordNameIsNotCutAtItsDot) {
    server.Set(L"evs1.example.com", L"10.1.2.3");
    EXPECT_TRUE(server.MatchesQuietly(L"EVS1.EXAMPLE.COM")) << "as a whole";
    EXPECT_FALSE(server.MatchesQuietly(L"evs1"));
    EXPECT_FALSE(server.MatchesQuietly(L"evs1.example.com.")) << "its first label is not the record's name";
}

// localhost

TEST_F(ServerMatch, LocalhostIsThisComputerInAnyLetterCase) {
    server.Set(L"node-a", L"10.1.2.3");
    for (const wchar_t* name : {L"localhost", L"LOCALHOST", L"LocalHost"}) {
        EXPECT_TRUE(server.MatchesQuietly(name)) << Utf8(name);
    }
}

TEST_F(ServerMatch, LocalhostIsNoOtherServer) {
    EXPECT_FALSE(server.MatchesQuietly(L"localhost"));
}

TEST_F(ServerMatch, LocalhostComparesTheComputerNameExactly) {
    SetComputerName(L"node-a");
    server.Set(L"node-a", L"10.1.2.3");
    EXPECT_FALSE(server.MatchesQuietly(L"localhost")) << "only the record's side is upper-cased";
}

TEST_F(ServerMatch, LocalhostWithADomainIsAnOrdinaryName) {
    server.Set(L"NODE-A", L"10.1.2.3");
    EXPECT_FALSE(server.MatchesQuietly(L"localhost.localdomain"));
    server.Set(L"LOCALHOST", L"10.1.2.3");
    EXPECT_TRUE(server.MatchesQuietly(L"localhost.localdomain"));
}

TEST_F(ServerMatch, ServerNamedLocalhostMatchesByItsName) {
    server.Set(L"Localhost", L"10.1.2.3");
    Platform().FailCall("GetComputerNameW", ERROR_GEN_FAILURE);
    EXPECT_TRUE(server.MatchesQuietly(L"localhost")) << "the computer name is not asked";
}

TEST_F(ServerMatch, LocalhostFailsWhenTheComputerNameCannotBeRead) {
    server.Set(L"NODE-A", L"10.1.2.3");
    SetComputerName(L"A-NODE-NAMED-016");
    EXPECT_FALSE(server.MatchesQuietly(L"localhost"));
}

TEST_F(ServerMatch, NullMatchesNothing) {
    EXPECT_FALSE(server.util->IsTheSameVirtualServer(nullptr, server.info));
}

TEST_F(ServerMatch, LongestNameAndAddressAreComparedWhole) {
    server.Set(std::wstring(511, L'n').c_str(), std::wstring(510, L'1').c_str());
    EXPECT_TRUE(server.MatchesQuietly(std::wstring(511, L'N').c_str()));
    EXPECT_FALSE(server.MatchesQuietly(std::wstring(510, L'N').c_str()));
    EXPECT_TRUE(server.Matches(std::wstring(510, L'1').c_str()));
}

// Addresses

class AddressMatch : public HostTest {
protected:
    AskedServer server{*this};
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

TEST_F(AddressMatch, AddressOfTheServersHostNameDoesNotMatch) {
    for (const char* name : {"EVS1", "evs1", "evs1.example.com", "other"}) {
        hostName = name;
        EXPECT_FALSE(server.Matches(L"10.9.9.9"));
        EXPECT_EQ(server.middle, Lines({"E Call wcstombs failed"})) << name;
    }
    EXPECT_EQ(resolved, std::vector<std::string>(4, "10.9.9.9"));
}

TEST_F(AddressMatch, EmptyHostNameDoesNotMatch) {
    hostName = "";
    server.Set(L"", L"10.1.2.3");
    EXPECT_FALSE(server.Matches(L"10.9.9.9"));
    EXPECT_EQ(server.middle, Lines({"E Call wcstombs failed"}));
}

TEST_F(AddressMatch, AddressThatCannotBeResolvedDoesNotMatch) {
    hostKnown = false;
    resolveError = WSAHOST_NOT_FOUND;
    EXPECT_FALSE(server.MatchesQuietly(L"10.9.9.9"));
    EXPECT_EQ(resolved.size(), 1u);
}

TEST_F(AddressMatch, ReportedErrorCountsMoreThanTheHost) {
    resolveError = WSATRY_AGAIN;
    EXPECT_FALSE(server.MatchesQuietly(L"10.9.9.9"));
}

TEST_F(AddressMatch, MissingHostWithoutAnErrorDoesNotMatch) {
    hostKnown = false;
    EXPECT_FALSE(server.MatchesQuietly(L"10.9.9.9"));
}

TEST_F(AddressMatch, HostWithoutANameDoesNotMatch) {
    hostNamed = false;
    EXPECT_FALSE(server.MatchesQuietly(L"10.9.9.9"));
}

TEST_F(AddressMatch, HostNameWithBytesBeyondAsciiDoesNotMatch) {
    hostName = "\xe4\xff\x80";
    EXPECT_FALSE(server.Matches(L"10.9.9.9"));
    EXPECT_EQ(server.middle, Lines({"E Call wcstombs failed"}));
}

// The one length at which the converted count equals that of the bytes: only the message is missing then.
TEST_F(AddressMatch, HostNameOfOneDoubleByteCharacterDoesNotMatchQuietly) {
    ASSERT_NE(std::setlocale(LC_CTYPE, ".932"), nullptr);
    hostName = "\x93\xfa";
    server.Set(L"\u65e5", L"10.1.2.3");
    EXPECT_FALSE(server.MatchesQuietly(L"10.9.9.9"));
    std::setlocale(LC_CTYPE, "C");
}

TEST_F(AddressMatch, LongHostNameDoesNotMatch) {
    hostName = std::string(5000, 'h');
    EXPECT_FALSE(server.Matches(L"10.9.9.9"));
    EXPECT_EQ(server.middle, Lines({"E Call wcstombs failed"}));
}

TEST_F(AddressMatch, LongTextThatIsNoAddressIsHandedOnWhole) {
    EXPECT_FALSE(server.Matches(std::wstring(5000, L'9').c_str()));
    EXPECT_EQ(resolved, std::vector<std::string>{std::string(5000, '9')});
}

TEST_F(AddressMatch, AnythingThatStartsWithNoLetterIsAnAddress) {
    for (const wchar_t* text : {L"1EVS.example.com", L"-evs1", L".evs1", L" EVS1", L"_", L""}) {
        resolved.clear();
        EXPECT_FALSE(server.Matches(text)) << Utf8(text);
        EXPECT_EQ(resolved, std::vector<std::string>{Utf8(text)});
    }
}

TEST_F(AddressMatch, NameThatStartsWithADigitAndHasADomainDoesNotMatch) {
    server.Set(L"1EVS", L"10.1.2.3");
    hostName = "1EVS";
    EXPECT_FALSE(server.Matches(L"1evs.example.com"));
}

TEST_F(AddressMatch, TextThatHasNoMultibyteFormIsNotResolved) {
    EXPECT_FALSE(server.Matches(L"1\u4e2d"));
    EXPECT_EQ(server.middle, Lines({"E Call wcstombs failed"}));
    EXPECT_FALSE(server.Matches(L"\u4e2dEVS1")) << "no letter to the narrow classification";
    EXPECT_EQ(server.middle, Lines({"E Call wcstombs failed"}));
    EXPECT_TRUE(resolved.empty());
}

TEST_F(AddressMatch, NamesAreNotResolved) {
    EXPECT_TRUE(server.MatchesQuietly(L"evs1"));
    EXPECT_FALSE(server.MatchesQuietly(L"evs2"));
    EXPECT_FALSE(server.MatchesQuietly(L"localhost"));
    EXPECT_TRUE(server.Matches(L"10.1.2.3"));
    EXPECT_TRUE(resolved.empty());
}

} // namespace
