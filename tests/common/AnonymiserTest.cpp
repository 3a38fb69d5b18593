// Names replaced by others: consistently, of the same length, and none of the installation's left.
#include "common/Anonymiser.h"

#include "common/Text.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

using common::Anonymiser;
using common::ToUtf16;

TEST(Anonymiser, GivesTheSameNameTheSameStandInWithinOthers) {
    Anonymiser anonymiser;
    EXPECT_EQ(anonymiser.Name("EXVS1"), "BABAB");
    EXPECT_EQ(anonymiser.Name("Exchange IP Address (EXVS1)"), "Exchange IP Address (BABAB)");
    EXPECT_EQ(anonymiser.Name("EXVS2-Lanman"), "BABAC-Lanman");
    EXPECT_EQ(anonymiser.Name("EXVS1"), "BABAB");
}

TEST(Anonymiser, KeepsTheLetterCaseAndIgnoresIt) {
    Anonymiser anonymiser;
    EXPECT_EQ(anonymiser.Name("Mailnode"), "Babababa");
    EXPECT_EQ(anonymiser.Name("MAILNODE"), "BABABABA");
    EXPECT_EQ(anonymiser.Name("mailnode"), "babababa");
}

TEST(Anonymiser, KeepsNumbersSingleCharactersAndTheVocabulary) {
    Anonymiser anonymiser;
    for (const char* name : {".", "F:", "SMTP Virtual Server Instance 100", "Microsoft Exchange System Attendant",
                             "HKLM\\SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion", ""}) {
        EXPECT_EQ(anonymiser.Name(name), name);
    }
    EXPECT_EQ(anonymiser.Text("VCS WARNING V-16-1-10133 Group does not exist"),
              "VCS WARNING V-16-1-10133 Group does not exist");
    anonymiser.Keep("Contoso");
    EXPECT_EQ(anonymiser.Name("CONTOSO"), "CONTOSO");
}

TEST(Anonymiser, KeepsLengthsInUtf16) {
    Anonymiser anonymiser;
    const std::string name = "M\xC3\xBCller \xF0\x9F\x98\x80 \xE4\xB8\xAD\xE6\x96\x87";
    const std::string standIn = anonymiser.Name(name);
    EXPECT_EQ(ToUtf16(standIn).size(), ToUtf16(name).size());
    EXPECT_EQ(standIn, "BAbaba BA BE");
}

TEST(Anonymiser, GivesEachNameOneOfItsOwn) {
    Anonymiser anonymiser;
    std::set<std::string> standIns;
    for (char first = 'A'; first <= 'Z'; ++first) {
        for (char second = 'A'; second <= 'Z'; ++second) {
            standIns.insert(anonymiser.Name({first, second}));
        }
    }
    EXPECT_EQ(standIns.size(), 26u * 26u); // more than there are of that length: some are longer
}

TEST(Anonymiser, ReplacesInTextsWhatIsKnown) {
    Anonymiser anonymiser;
    anonymiser.Name("EXVS1");
    EXPECT_EQ(anonymiser.Text("Open resource failed:EXVS1 Name, err=5007"),
              "Open resource failed:BABAB Name, err=5007");
    EXPECT_EQ(anonymiser.Text("EXVS10 is another word"), "EXVS10 is another word");
}

TEST(Anonymiser, KeepsTheNetworksOfAddresses) {
    Anonymiser anonymiser;
    EXPECT_EQ(anonymiser.Text("192.0.2.21 and 192.0.2.22, 10.1.2.3."), "100.0.0.10 and 100.0.0.11, 10.0.0.0.");
    EXPECT_EQ(anonymiser.Name("192.0.2.21"), "100.0.0.10");
    EXPECT_EQ(anonymiser.Text("255.255.255.0 127.0.0.1 0.0.0.0 6.0.6001"), "255.255.255.0 127.0.0.1 0.0.0.0 6.0.6001");
}

TEST(Anonymiser, ReplacesHardwareAddressesAndThoseOfVersionSix) {
    Anonymiser anonymiser;
    EXPECT_EQ(anonymiser.Text("MACAddress 00-11-22-AA-44-01"), "MACAddress 00-00-00-00-00-01");
    EXPECT_EQ(anonymiser.Text("fe80::1ff:fe23"), "0000::000:0002");
    EXPECT_EQ(anonymiser.Text("00-11-22-aa-44-01"), "00-00-00-00-00-01");
    EXPECT_EQ(anonymiser.Text("at 12:30:45 in namespace std::string"), "at 12:30:45 in namespace std::string");
}

TEST(Anonymiser, ReplacesDomainsMailAddressesAndDomainsInSids) {
    Anonymiser anonymiser;
    EXPECT_EQ(anonymiser.Text("to jane.roe@example.com, see mail.example.org"),
              "to baba.bab@bababab.com, see mail.bababab.bac");
    EXPECT_EQ(anonymiser.Text("main.cf hares.exe clusctl 1.0.0"), "main.cf hares.exe clusctl 1.0.0");
    EXPECT_EQ(anonymiser.Text("S-1-5-21-1004336348-1177238915-682003330-512 S-1-5-18"),
              "S-1-5-21-1000000001-1000000002-100000003-512 S-1-5-18");
}

TEST(Anonymiser, ReplacesDomainsOfTwoLabelsByTheirEnd) {
    Anonymiser anonymiser;
    EXPECT_EQ(anonymiser.Text("DnsSuffix contoso.com, corp.local"), "DnsSuffix bababab.com, baba.local");
    EXPECT_EQ(anonymiser.Text("contoso.net"), "bababab.net");
    EXPECT_EQ(anonymiser.Text("net start clussvc; clusapi.dll types.cf"), "net start clussvc; clusapi.dll types.cf");
}

TEST(Anonymiser, ReplacesTheDomainBehindAComputerOfCommonWords) {
    Anonymiser anonymiser;
    ASSERT_TRUE(anonymiser.Whole("NODE-2"));
    const std::string text = anonymiser.Text("NODE-2.contoso.com answers");
    EXPECT_EQ(text.find("NODE-2"), std::string::npos);
    EXPECT_EQ(text.find("contoso"), std::string::npos) << text;
}

TEST(Anonymiser, SparesWordsUnlessTheyAreOfAnIdentity) {
    Anonymiser anonymiser;
    anonymiser.Spare("Contoso");
    anonymiser.Spare("Archive");
    EXPECT_EQ(anonymiser.Name("Contoso Archive"), "Contoso Archive");
    EXPECT_TRUE(anonymiser.Whole("CONTOSO"));
    EXPECT_EQ(anonymiser.Text("CONTOSO\\svc, Contoso Archive"), "BABABAB\\svc, Bababab Archive");
    anonymiser.Keep("Wingtip"); // whatever it is in
    EXPECT_FALSE(anonymiser.Whole("WINGTIP"));
    EXPECT_EQ(anonymiser.Text("WINGTIP"), "WINGTIP");
}

TEST(Anonymiser, ReplacesIdentitiesOfCommonWordsAsAWhole) {
    Anonymiser anonymiser;
    EXPECT_TRUE(anonymiser.Whole("MAIL-01"));
    EXPECT_TRUE(anonymiser.Whole("NODE-2"));
    EXPECT_EQ(anonymiser.Text("Mail-01 and node-2, MAIL-012, XMAIL-01, mail, node 2"),
              "Baba-01 and babe-2, MAIL-012, XMAIL-01, mail, node 2");
    anonymiser.Identity("NT AUTHORITY\\LocalSystem"); // an account that all have
    EXPECT_EQ(anonymiser.Text("NT AUTHORITY\\LocalSystem"), "NT AUTHORITY\\LocalSystem");
    EXPECT_FALSE(anonymiser.Whole("EXCHANGE"));
    EXPECT_EQ(anonymiser.Text("Microsoft Exchange"), "Microsoft Exchange");
}
