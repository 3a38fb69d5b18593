// Names and addresses of an installation, replaced by others of the same length: the same one by the same one always.
// Needs no platform header.
#ifndef COMMON_ANONYMISER_H
#define COMMON_ANONYMISER_H

#include <cstddef>
#include <map>
#include <set>
#include <string>

namespace common {

// Replaces word by word, so that a server's name is found again within the names of its resources, and ignores the
// letter case of ASCII when it compares, but keeps it: EXVS1 and exvs1 become BABAB and babab. What separates words
// stays, as do single characters, plain numbers, and the words of the vocabulary: those that the product, Exchange and
// the clusters give to everybody's objects ("IP Address", "Lanman"). Lengths in UTF-16 stay. What stands for what is
// told by the order in which names come, not by the names. Texts are UTF-8.
class Anonymiser {
public:
    // One name, or a list of names: all of its words. They are known to Text from then on.
    std::string Name(const std::string& name);

    // The same of what only this installation has, such as accounts: its words are replaced also where Spare keeps
    // them.
    void Identity(const std::string& name);
    // The same of a computer or a cluster: when it consists of words of the vocabulary and numbers ("NODE-2") it is
    // replaced as a whole. False when it is a single such word, which stays.
    bool Whole(const std::string& name);

    // Any text: the known words in it, addresses (IPv4, IPv6, MAC), mail addresses, domain names of three labels or
    // more, or of two that end as those of the internet or of private networks do, and the numbers of a domain in a
    // SID. IPv4 addresses of one network stay in one network; masks, loopback and the unspecified address stay.
    std::string Text(const std::string& text);

    // A word that stays whatever it is in.
    void Keep(const std::string& word);
    // A word that stays unless it is one of an identity.
    void Spare(const std::string& word);

private:
    std::string StandIn(const std::string& word);
    std::string Words(const std::string& text, bool areNames);
    bool IsKept(const std::string& lower) const;
    bool IsCommon(const std::string& word) const;
    std::string NextStandIn(std::size_t length);
    bool TakePhrase(const std::string& text, std::size_t& at, std::string& result) const;
    bool TakeAddress(const std::string& text, std::size_t& at, std::string& result);
    bool TakeDomain(const std::string& text, std::size_t& at, std::string& result);
    std::string AddressV4(const std::string& address);
    std::string HexAddress(const std::string& address);
    std::string Sid(const std::string& sid);

    std::map<std::string, std::string> m_words;      // in lower case, to what stands for it
    std::map<std::size_t, std::size_t> m_counts;     // of the stand-ins of each length
    std::set<std::string> m_used;                    // stand-ins
    std::set<std::string> m_kept;                    // in lower case
    std::set<std::string> m_spared;                  // in lower case
    std::set<std::string> m_identities;              // words, in lower case
    std::map<std::string, std::string> m_phrases;    // in lower case, to what stands for it
    std::map<std::string, std::string> m_octets;     // "10.0." and an octet, to the octet that stands for it
    std::map<std::string, std::set<int>> m_siblings; // "10.0.": the octets that stand for others behind it
    std::map<std::string, std::string> m_numbers;    // hexadecimal addresses and parts of SIDs
};

} // namespace common

#endif
