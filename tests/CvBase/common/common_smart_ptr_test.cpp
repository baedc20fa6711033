#include "CvBase/common/common_smart_ptr.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <type_traits>
#include <vector>

#include "CvBase/common/common_types.h"

namespace {

/// Counts its instances.
struct Counted {
    static inline std::atomic<int> alive = 0;
    int value;
    explicit Counted(int v = 0) : value(v) { ++alive; }
    ~Counted() { --alive; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
};

class SmartPtr : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(Counted::alive, 0); }
};

TEST_F(SmartPtr, HandlesCountThemselves) {
    shared_ptr<Counted> a(new Counted(7));
    EXPECT_EQ(a.use_count(), 1U);
    {
        const shared_ptr<Counted> b(a);
        shared_ptr<Counted> c;
        EXPECT_EQ(c.get(), nullptr);
        EXPECT_EQ(c.use_count(), 1U);
        c = b;
        EXPECT_EQ(c->value, 7);
        EXPECT_EQ(c.count(), a.count());
        EXPECT_EQ(a.use_count(), 3U);
    }
    EXPECT_EQ(a.use_count(), 1U);
    const shared_ptr<Counted>& same = a;
    a = same;
    EXPECT_EQ(a.use_count(), 1U);
    EXPECT_EQ(Counted::alive, 1);
}

TEST_F(SmartPtr, ShareTakesTheNewShareFirst) {
    shared_ptr<Counted> a(new Counted(1));
    a.share(a.get(), a.count());
    EXPECT_EQ(a.use_count(), 1U);

    // The count decides, not the pointer: two empty handles have the same pointer and each its own count.
    shared_ptr<Counted> empty, otherEmpty;
    empty.share(otherEmpty.get(), otherEmpty.count());
    EXPECT_EQ(otherEmpty.use_count(), 2U);

    shared_ptr<Counted> b(new Counted(2));
    a.share(b.get(), b.count());
    EXPECT_EQ(Counted::alive, 1);
    EXPECT_EQ(a->value, 2);
}

TEST_F(SmartPtr, DisposeGivesTheShareUpOnce) {
    shared_ptr<Counted> a(new Counted(1));
    shared_ptr<Counted> b(a);
    b.dispose();
    EXPECT_EQ(a.use_count(), 1U);
    b.dispose();
    EXPECT_EQ(a.use_count(), 1U);
    b.share(a.get(), a.count());
    EXPECT_EQ(a.use_count(), 2U);
    a.dispose();
    Counted* const pointer = b.get();
    b.dispose();
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ(b.count(), nullptr);
    EXPECT_EQ(b.get(), pointer);
}

TEST_F(SmartPtr, ReplaceLeavesTheOtherHolders) {
    shared_ptr<Counted> a(new Counted(1));
    unsigned int volatile* const count = a.count();
    a.replace(new Counted(2));
    EXPECT_EQ(a.count(), count);
    EXPECT_EQ(Counted::alive, 1);

    const shared_ptr<Counted> b(a);
    a.replace(new Counted(3));
    EXPECT_EQ(a->value, 3);
    EXPECT_EQ(b->value, 2);
    EXPECT_NE(a.count(), b.count());
    EXPECT_EQ(a.use_count() + b.use_count(), 2U);
}

TEST_F(SmartPtr, ArraysCountTheSameWay) {
    Counted* const array = new Counted[3];
    shared_array<Counted> a(array);
    a[2].value = 5;
    {
        shared_array<Counted> b(a);
        shared_array<Counted> c;
        EXPECT_EQ(c.get(), nullptr);
        EXPECT_EQ(c.use_count(), 1U);
        c = b;
        c.share(c.get(), c.count());
        EXPECT_EQ(c[2].value, 5);
        EXPECT_EQ(a.use_count(), 3U);
        c.dispose();
        EXPECT_EQ(a.use_count(), 2U);
    }
    EXPECT_EQ(a.use_count(), 1U);
    a.dispose();
    EXPECT_EQ(Counted::alive, 0);
    checked_delete<Counted>(nullptr);
}

TEST_F(SmartPtr, CopiesMayLiveOnSeveralThreads) {
    for (int round = 0; round < 200; ++round) {
        std::vector<std::thread> threads;
        {
            const shared_ptr<Counted> original(new Counted(round));
            for (int i = 0; i < 4; ++i) {
                threads.emplace_back([round, mine = original] {
                    for (int step = 0; step < 200; ++step) {
                        shared_ptr<Counted> copy(mine);
                        const shared_ptr<Counted> another(copy);
                        EXPECT_EQ(another->value, round);
                        if (step % 50 == 0) {
                            copy.replace(new Counted(step));
                        }
                    }
                });
            }
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
}

class Resource : noncopyable {};
static_assert(!std::is_copy_constructible_v<Resource> && !std::is_copy_assignable_v<Resource>);
static_assert(std::is_default_constructible_v<Resource> && std::is_empty_v<Resource>);
static_assert(sizeof(shared_ptr<int>) == 2 * sizeof(void*) && sizeof(shared_array<int>) == 2 * sizeof(void*));

}  // namespace
