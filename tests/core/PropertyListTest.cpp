// The bytes of property lists as they go to the cluster.
#include "core/PropertyList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

typedef std::vector<unsigned char> Bytes;

// Appends pieces the way the format describes them.
class Expected {
public:
    Expected& Dword(unsigned value) {
        for (int i = 0; i < 4; ++i) {
            m_bytes.push_back(static_cast<unsigned char>(value & 0xFF));
            value >>= 8;
        }
        return *this;
    }
    Expected& Text(const std::wstring& text) {
        for (const wchar_t c : text + L'\0') {
            m_bytes.push_back(static_cast<unsigned char>(c & 0xFF));
            m_bytes.push_back(static_cast<unsigned char>(c >> 8));
        }
        while (m_bytes.size() % 4 != 0) {
            m_bytes.push_back(0);
        }
        return *this;
    }
    operator Bytes() const {
        return m_bytes;
    }

private:
    Bytes m_bytes;
};

unsigned TextBytes(const std::wstring& text) {
    return static_cast<unsigned>(2 * (text.size() + 1));
}

const unsigned char Guard = 0xa5;

Bytes DwordList(const std::wstring& name, unsigned value) {
    const std::size_t size = clus::DwordPropertyListSize(name.size());
    Bytes block(size + 16, 0);
    std::fill(block.begin() + static_cast<std::ptrdiff_t>(size), block.end(), Guard);
    clus::WriteDwordPropertyList(block.data(), name.c_str(), name.size(), value);
    EXPECT_EQ(Bytes(block.begin() + static_cast<std::ptrdiff_t>(size), block.end()), Bytes(16, Guard));
    block.resize(size);
    return block;
}

Bytes TextList(const std::wstring& name, const std::wstring& value) {
    const std::size_t size = clus::TextPropertyListSize(name.size(), value.size());
    Bytes block(size + 16, 0);
    std::fill(block.begin() + static_cast<std::ptrdiff_t>(size), block.end(), Guard);
    clus::WriteTextPropertyList(block.data(), name.c_str(), name.size(), value.c_str(), value.size());
    EXPECT_EQ(Bytes(block.begin() + static_cast<std::ptrdiff_t>(size), block.end()), Bytes(16, Guard));
    block.resize(size);
    return block;
}

TEST(PropertyList, RestartActionTakes56Bytes) {
    EXPECT_EQ(clus::DwordPropertyListSize(13), 56u);
    EXPECT_EQ(DwordList(L"RestartAction", 2), Bytes({
                                                  1,   0, 0,   0,                 // one property
                                                  3,   0, 4,   0, 28,  0, 0,   0, // name
                                                  'R', 0, 'e', 0, 's', 0, 't', 0, 'a', 0, 'r', 0, 't', 0, 'A', 0, //
                                                  'c', 0, 't', 0, 'i', 0, 'o', 0, 'n', 0, 0,   0,                 //
                                                  2,   0, 1,   0, 4,   0, 0,   0, 2,   0, 0,   0, // value
                                                  0,   0, 0,   0                                  // end mark
                                              }));
}

TEST(PropertyList, DwordListHasNameValueAndEndMark) {
    for (std::size_t length = 0; length < 40; ++length) {
        const std::wstring name(length, L'\u1234');
        EXPECT_EQ(DwordList(name, 0x89abcdef), Bytes(Expected()
                                                         .Dword(1)
                                                         .Dword(0x00040003)
                                                         .Dword(TextBytes(name))
                                                         .Text(name)
                                                         .Dword(0x00010002)
                                                         .Dword(4)
                                                         .Dword(0x89abcdef)
                                                         .Dword(0)));
    }
}

TEST(PropertyList, TextListHasNameValueAndEndMark) {
    for (std::size_t nameLength = 0; nameLength < 12; ++nameLength) {
        for (std::size_t valueLength = 0; valueLength < 12; ++valueLength) {
            const std::wstring name(nameLength, L'N');
            const std::wstring value(valueLength, L'\uabcd');
            EXPECT_EQ(TextList(name, value), Bytes(Expected()
                                                       .Dword(1)
                                                       .Dword(0x00040003)
                                                       .Dword(TextBytes(name))
                                                       .Text(name)
                                                       .Dword(0x00010003)
                                                       .Dword(TextBytes(value))
                                                       .Text(value)
                                                       .Dword(0)));
        }
    }
}

TEST(PropertyList, TheEndMarkIsWrittenWhateverStoodInItsPlace) {
    const Bytes endMark(4, 0);
    for (const std::size_t nameLength : {0u, 1u, 2u}) {
        const std::wstring name(nameLength, L'N');
        Bytes dwordList(clus::DwordPropertyListSize(nameLength), 0);
        std::fill(dwordList.end() - 4, dwordList.end(), Guard);
        clus::WriteDwordPropertyList(dwordList.data(), name.c_str(), nameLength, 1);
        EXPECT_EQ(Bytes(dwordList.end() - 4, dwordList.end()), endMark);
        Bytes textList(clus::TextPropertyListSize(nameLength, 1), 0);
        std::fill(textList.end() - 4, textList.end(), Guard);
        clus::WriteTextPropertyList(textList.data(), name.c_str(), nameLength, L"x", 1);
        EXPECT_EQ(Bytes(textList.end() - 4, textList.end()), endMark);
    }
}

TEST(PropertyList, EvenNameLengthIsPadded) {
    EXPECT_EQ(TextList(L"AB", L"x"), Bytes({
                                         1, 0, 0, 0,                                         //
                                         3, 0, 4, 0, 6, 0, 0, 0, 'A', 0, 'B', 0, 0, 0, 0, 0, // padded by two
                                         3, 0, 1, 0, 4, 0, 0, 0, 'x', 0, 0,   0,             //
                                         0, 0, 0, 0                                          //
                                     }));
}

} // namespace
