// Names in few blocks: all of them come back, in order, whatever their lengths.
#include "core/NameStore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using clus::NameStore;

typedef std::vector<std::wstring> Names;

Names Kept(const NameStore& store) {
    const Names names(store.begin(), store.end());
    EXPECT_EQ(names.size(), store.size());
    return names;
}

TEST(NameStore, IsEmptyAtFirst) {
    EXPECT_EQ(Kept(NameStore()), Names());
}

TEST(NameStore, KeepsNamesInOrderAndDoubleOnesToo) {
    NameStore store;
    const Names names = {L"", L"b", L"a", L"", L"b", L""};
    for (const std::wstring& name : names) {
        store.emplace_back(name.c_str());
    }
    EXPECT_EQ(Kept(store), names);
}

TEST(NameStore, KeepsNamesOfAnyLength) {
    Names names;
    NameStore store;
    for (const std::size_t length : {1u, 510u, 511u, 512u, 513u, 0u, 32767u, 32768u, 100000u, 3u}) {
        names.push_back(std::wstring(length, L'n'));
        store.emplace_back(names.back().c_str());
    }
    EXPECT_EQ(Kept(store), names);
}

TEST(NameStore, WhatIsKeptStaysInItsPlace) {
    NameStore store;
    store.emplace_back(L"first");
    const wchar_t* const first = *store.begin();
    Names names = {L"first"};
    for (int i = 0; i < 20000; ++i) {
        names.push_back(L"resource " + std::to_wstring(i));
        store.emplace_back(names.back().c_str());
    }
    EXPECT_EQ(*store.begin(), first);
    EXPECT_EQ(Kept(store), names);
}

} // namespace
