// The growable buffer itself, compiled into this program: its imports are replaced here, not in clusutil.dll.
#include "ClusterTest.h"

#include "platform/LocalBuffer.h"

using clus::LocalBuffer;
using namespace harness;

namespace {

#define PatchHere(dll, function, ...) PatchImportOf(GetModuleHandleW(nullptr), dll, function, __VA_ARGS__)

TEST(LocalBufferUse, StartsEmpty) {
    const LocalBuffer buffer;
    EXPECT_EQ(buffer.pData, nullptr);
    EXPECT_EQ(buffer.cbSize, 0u);
}

TEST(LocalBufferUse, NothingNeededIsAFailureAndChangesNothing) {
    LocalBuffer buffer;
    EXPECT_FALSE(buffer.Ensure(0));
    EXPECT_EQ(buffer.pData, nullptr);
    ASSERT_TRUE(buffer.Ensure(8));
    void* const block = buffer.pData;
    EXPECT_FALSE(buffer.Ensure(0));
    EXPECT_EQ(buffer.pData, block);
    EXPECT_EQ(buffer.cbSize, 8u);
}

TEST(LocalBufferUse, TheFirstBlockIsFixedAndZeroFilled) {
    UINT flags = 0;
    const auto patch = PatchHere(kernel32, LocalAlloc, [&](UINT wanted, SIZE_T size) {
        flags = wanted;
        return ::HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size);
    });
    LocalBuffer buffer;
    EXPECT_TRUE(buffer.Ensure(64));
    EXPECT_EQ(flags, static_cast<UINT>(LPTR));
    EXPECT_EQ(buffer.cbSize, 64u);
    HeapFree(GetProcessHeap(), 0, buffer.pData);
    buffer.pData = nullptr;
}

TEST(LocalBufferUse, NeverShrinks) {
    LocalBuffer buffer;
    ASSERT_TRUE(buffer.Ensure(64));
    void* const block = buffer.pData;
    EXPECT_TRUE(buffer.Ensure(1));
    EXPECT_TRUE(buffer.Ensure(63));
    EXPECT_TRUE(buffer.Ensure(64));
    EXPECT_EQ(buffer.pData, block);
    EXPECT_EQ(buffer.cbSize, 64u);
}

TEST(LocalBufferUse, GrowsKeepingItsContent) {
    LocalBuffer buffer;
    ASSERT_TRUE(buffer.Ensure(4));
    std::memcpy(buffer.pData, "abc", 4);
    EXPECT_TRUE(buffer.Ensure(5));
    EXPECT_EQ(buffer.cbSize, 5u);
    EXPECT_TRUE(buffer.Ensure(100000));
    EXPECT_EQ(buffer.cbSize, 100000u);
    EXPECT_STREQ(static_cast<const char*>(buffer.pData), "abc");
}

TEST(LocalBufferUse, KeepsItsBlockWhenItCannotGrow) {
    LocalBuffer buffer;
    ASSERT_TRUE(buffer.Ensure(4));
    void* const block = buffer.pData;
    const auto patch = PatchHere(kernel32, LocalReAlloc, [](HLOCAL, SIZE_T, UINT flags) -> HLOCAL {
        EXPECT_EQ(flags, static_cast<UINT>(LMEM_MOVEABLE));
        return nullptr;
    });
    EXPECT_FALSE(buffer.Ensure(5));
    EXPECT_EQ(buffer.pData, block);
    EXPECT_EQ(buffer.cbSize, 4u);
}

TEST(LocalBufferUse, SizesCompareAsSignedNumbers) {
    LocalBuffer buffer;
    ASSERT_TRUE(buffer.Ensure(4));
    EXPECT_TRUE(buffer.Ensure(0x80000000u));
    EXPECT_EQ(buffer.cbSize, 4u);
}

TEST(LocalBufferUse, AFailingFirstAllocationAnswersTrueAndRecordsTheSize) {
    const auto patch = PatchHere(kernel32, LocalAlloc, [](UINT, SIZE_T) -> HLOCAL { return nullptr; });
    LocalBuffer buffer;
    EXPECT_TRUE(buffer.Ensure(32));
    EXPECT_EQ(buffer.pData, nullptr);
    EXPECT_EQ(buffer.cbSize, 32u);
}

TEST(LocalBufferUse, ReleaseEmptiesIt) {
    LocalBuffer buffer;
    ASSERT_TRUE(buffer.Ensure(32));
    buffer.Release();
    EXPECT_EQ(buffer.pData, nullptr);
    EXPECT_EQ(buffer.cbSize, 0u);
    EXPECT_TRUE(buffer.Ensure(16));
    EXPECT_EQ(buffer.cbSize, 16u);
}

TEST(LocalBufferUse, DestructionFreesTheBlockAndKeepsTheLastError) {
    void* freed = nullptr;
    void* block = nullptr;
    {
        const auto patch = PatchHere(kernel32, LocalFree, [&](HLOCAL memory) -> HLOCAL {
            freed = memory;
            SetLastError(1);
            return nullptr;
        });
        {
            LocalBuffer buffer;
            ASSERT_TRUE(buffer.Ensure(32));
            block = buffer.pData;
            SetLastError(ImpossibleCode);
        }
        EXPECT_EQ(GetLastError(), ImpossibleCode);
    }
    EXPECT_EQ(freed, block);
    LocalFree(block);
}

} // namespace
