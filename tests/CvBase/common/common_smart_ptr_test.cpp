#include "CvBase/common/common_smart_ptr.h"

#include "CvBase/common/common_types.h"
#include "tests/support/Test.h"

namespace {

using namespace test;

/// Counts its instances.
struct Counted {
    static inline std::atomic<int> alive = 0;
    int value;
    explicit Counted(int v = 0) : value(v) { ++alive; }
    ~Counted() { --alive; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
};

/// Handles of single objects and of arrays.
template <typename Handle>
class SmartPtr : public testing::Test {
protected:
    static constexpr bool IS_ARRAY = std::is_same_v<Handle, shared_array<Counted>>;
    static constexpr int EACH = IS_ARRAY ? 3 : 1;  ///< instances in what one handle owns

    static Counted* make() { return IS_ARRAY ? new Counted[3] : new Counted; }
    void TearDown() override { EXPECT_EQ(Counted::alive, 0); }
};

using Handles = testing::Types<shared_ptr<Counted>, shared_array<Counted>>;
TYPED_TEST_SUITE(SmartPtr, Handles, );

TYPED_TEST(SmartPtr, HandlesCountThemselves) {
    TypeParam a(this->make());
    {
        const TypeParam b(a);
        TypeParam c;
        EXPECT_EQ(c.get(), nullptr);
        EXPECT_EQ(c.use_count(), 1U);
        c = b;
        EXPECT_EQ(c.count(), a.count());
        EXPECT_EQ(c.get(), a.get());
        EXPECT_EQ(a.use_count(), 3U);
    }
    const TypeParam& same = a;
    a = same;
    EXPECT_EQ(a.use_count(), 1U);
    EXPECT_EQ(Counted::alive, this->EACH);
}

TYPED_TEST(SmartPtr, ShareTakesTheNewShareFirst) {
    TypeParam a(this->make());
    a.share(a.get(), a.count());
    EXPECT_EQ(a.use_count(), 1U);

    // The count decides, not the pointer: two empty handles have the same pointer and each its own count.
    TypeParam empty, otherEmpty;
    empty.share(otherEmpty.get(), otherEmpty.count());
    EXPECT_EQ(otherEmpty.use_count(), 2U);

    TypeParam b(this->make());
    a.share(b.get(), b.count());
    EXPECT_EQ(Counted::alive, this->EACH);
    EXPECT_EQ(a.get(), b.get());
}

TYPED_TEST(SmartPtr, DisposeGivesTheShareUpOnce) {
    TypeParam a(this->make());
    TypeParam b(a);
    b.dispose();
    b.dispose();
    EXPECT_EQ(a.use_count(), 1U);
    b.share(a.get(), a.count());
    a.dispose();
    Counted* const pointer = b.get();
    b.dispose();
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ(b.count(), nullptr);
    EXPECT_EQ(b.get(), pointer);
}

/// A list that only its first handle keeps alive.
struct Node {
    shared_ptr<Node> next;
};

TEST(SharedPtr, GoesOnToTheRestOfAListThatItHoldsAlone) {
    shared_ptr<Node> list(new Node);
    list->next = shared_ptr<Node>(new Node);
    Node* const rest = list->next.get();
    list = list->next;
    EXPECT_EQ(list.get(), rest);
    EXPECT_EQ(list.use_count(), 1U);
}

TEST(SharedPtr, ReplaceLeavesTheOtherHolders) {
    shared_ptr<Counted> a(new Counted(1));
    volatile unsigned int* const count = a.count();
    a.replace(new Counted(2));
    EXPECT_EQ(a.count(), count);
    EXPECT_EQ(Counted::alive, 1);

    const shared_ptr<Counted> b(a);
    a.replace(new Counted(3));
    EXPECT_EQ(a->value, 3);
    EXPECT_EQ(b->value, 2);
    EXPECT_EQ(a.use_count() + b.use_count(), 2U);
}

TEST(SharedPtr, CopiesMayLiveOnSeveralThreads) {
    for (int round = 0; round < 20; ++round) {
        std::vector<shared_ptr<Counted>> shares(4, shared_ptr<Counted>(new Counted(round)));
        onThreads(4, [&](int number) {
            shared_ptr<Counted>& mine = shares[static_cast<std::size_t>(number)];
            for (int step = 0; step < 5000; ++step) {
                shared_ptr<Counted> copy(mine);
                const shared_ptr<Counted> another(copy);
                EXPECT_EQ(another->value, round);
                if (step % 50 == 0) {
                    copy.replace(new Counted(step));
                }
            }
            mine.dispose();
        });
        EXPECT_EQ(Counted::alive, 0);
    }
}

class Resource : noncopyable {};
static_assert(!std::is_copy_constructible_v<Resource> && !std::is_copy_assignable_v<Resource>);

}  // namespace
