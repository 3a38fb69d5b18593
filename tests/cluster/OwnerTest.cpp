// The owners of platform handles: they close what they hold once, and keep the last-error value.
#include "ClusterTest.h"

#include "platform/Owner.h"

using namespace harness;

namespace {

struct CountingTraits {
    typedef void* Handle;
    static int closed;
    static void Close(void*) {
        ++closed;
        SetLastError(1);
    }
};
int CountingTraits::closed = 0;

TEST(Owner, ClosesOnceAndKeepsTheLastError) {
    CountingTraits::closed = 0;
    {
        int thing = 0;
        const clus::Owner<CountingTraits> owner(&thing);
        EXPECT_TRUE(owner);
        EXPECT_EQ(owner.get(), &thing);
        SetLastError(ImpossibleCode);
    }
    EXPECT_EQ(GetLastError(), ImpossibleCode);
    EXPECT_EQ(CountingTraits::closed, 1);
}

TEST(Owner, NullIsNotClosed) {
    CountingTraits::closed = 0;
    {
        const clus::Owner<CountingTraits> owner;
        EXPECT_FALSE(owner);
        EXPECT_EQ(owner.get(), nullptr);
    }
    EXPECT_EQ(CountingTraits::closed, 0);
}

TEST(Owner, ResetClosesWhatWasHeld) {
    CountingTraits::closed = 0;
    {
        int first = 0;
        int second = 0;
        clus::Owner<CountingTraits> owner(&first);
        owner.reset(&second);
        EXPECT_EQ(owner.get(), &second);
        EXPECT_EQ(CountingTraits::closed, 1);
        owner.reset();
        EXPECT_FALSE(owner);
        EXPECT_EQ(CountingTraits::closed, 2);
    }
    EXPECT_EQ(CountingTraits::closed, 2);
}

TEST(LastErrorKeeper, PutsTheValueBack) {
    SetLastError(ImpossibleCode);
    {
        const clus::LastErrorKeeper keeper;
        SetLastError(5);
    }
    EXPECT_EQ(GetLastError(), ImpossibleCode);
}

} // namespace
