// Objects: references to them, equality, and the messages that they understand.

#include <CoreFoundation/CFPlugInCOM.h>

#include "CvBase/Mac/AutoreleasePool.h"
#include "CvBase/Mac/MessageSend.h"
#include "platform/CoreFoundation/Object.h"
#include "tests/support/CFSupport.h"
#include "tests/support/Test.h"

namespace {

using namespace test;

TEST(CFBase, StringsAreEqualWhenTheirUnitsAreAndNullEqualsNothing) {
    EXPECT_TRUE(CFEqual(makeString(u"Lang\u00E9").get(), CFSTR("Lang\xC3\xA9")));
    EXPECT_FALSE(CFEqual(makeString(u"\u4E00\u00E9").get(), makeString(u"\u4E00e\u0301").get()));
    EXPECT_FALSE(CFEqual(makeString(u"\uFEFFa").get(), CFSTR("a")));
    EXPECT_FALSE(CFEqual(makeString({u"a\0b", 3}).get(), makeString({u"a\0c", 3}).get()));
    EXPECT_FALSE(CFEqual(nullptr, nullptr)) << "on a Mac a null operand traps";
    EXPECT_FALSE(CFEqual(CFSTR("a"), nullptr));
    EXPECT_FALSE(CFEqual(nullptr, CFSTR("a")));
}

TEST(CFBase, ConstantsOutliveEveryReleaseAndAreNotWrittenTo) {
    const CFTypeRef constants[] = {CFSTR("constant"), kCFPreferencesAnyUser, kCFBooleanFalse, kCFAllocatorNull,
                                   IUnknownUUID};
    for (const CFTypeRef constant : constants) {
        const std::string before(static_cast<const char*>(constant), sizeof(objc_object));
        onThreads(8, [constant](int) {
            for (int i = 0; i < 1000; ++i) {
                CFRelease(constant);
            }
        });
        EXPECT_EQ(std::string(static_cast<const char*>(constant), sizeof(objc_object)), before);
    }
    EXPECT_TRUE(CFEqual(constants[0], test::string("constant").get()));
}

struct Probe;
extern const objc_class PROBE_CLASS;

/// An object with nearly as many references as can be counted.
struct Probe : objc_object {
    Probe() : objc_object(PROBE_CLASS, IMMORTAL - 2) {}
    ~Probe() { ADD_FAILURE() << "an immortal object was destroyed"; }
};

const objc_class PROBE_CLASS("Probe", PROBE_CLASS, nullptr, nullptr, cv::identityOf<Probe>());

TEST(CFBase, AnObjectWhoseCountWouldOverflowBecomesImmortal) {
    auto* const probe = new Probe;
    CFRetain(probe);
    CFRelease(probe);
    onThreads(8, [probe](int) { CFRetain(probe); });
    EXPECT_EQ(CFGetRetainCount(probe), std::numeric_limits<CFIndex>::max());
    onThreads(8, [probe](int) {
        for (int i = 0; i < 1000; ++i) {
            CFRelease(probe);
        }
    });
    EXPECT_EQ(CFGetRetainCount(probe), std::numeric_limits<CFIndex>::max());
    ::operator delete(probe);
}

id objectOf(CFTypeRef reference) {
    return static_cast<id>(const_cast<void*>(reference));
}

id autoreleased(CFTypeRef reference) {
    return cv::send<id>(cv::send<id>(objectOf(reference), "retain"), "autorelease");
}

TEST(MessageSend, NullAnswersWithZeroAndAnUnknownClassIsNull) {
    EXPECT_EQ(cv::send<cv::Integer>(nullptr, "runModal"), 0);
    EXPECT_EQ(cv::send<id>(nullptr, "retain"), nullptr);
    EXPECT_EQ(cv::classNamed("NSNobody"), nullptr);
    EXPECT_EQ(object_getClass(nullptr), nullptr);
    EXPECT_EQ(class_getMethodImplementation(nullptr, sel_registerName("retain")), nullptr);
}

TEST(ObjectsDeathTest, NullAndAnUnknownMethodEndTheProcessWithTheName) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(CFRetain(nullptr), "CFRetain.*NULL");
    EXPECT_DEATH(CFRelease(nullptr), "CFRelease.*NULL");
    const auto send = [](id receiver) { cv::send<void>(receiver, "fly:to:", 1, 2); };
    EXPECT_DEATH(send(objectOf(CFSTR("text"))), "-\\[NSString fly:to:\\]: unrecognized selector");
    EXPECT_DEATH(send(cv::classNamed("NSAlert")), "\\+\\[NSAlert fly:to:\\]: unrecognized selector");
}

TEST(AutoreleasePool, ReleasesAtItsEndWhatItsOwnScopeLeft) {
    const auto outer = makeString(u"outer"), inner = makeString(u"inner");
    {
        const cv::AutoreleasePool outerPool;
        autoreleased(outer.get());
        {
            const cv::AutoreleasePool innerPool;
            EXPECT_EQ(autoreleased(inner.get()), objectOf(inner.get()));
            autoreleased(inner.get());
            EXPECT_EQ(CFGetRetainCount(inner.get()), 3);
        }
        EXPECT_EQ(CFGetRetainCount(inner.get()), 1);
        EXPECT_EQ(CFGetRetainCount(outer.get()), 2);
        // A pool whose end was forgotten ends with the one around it.
        cv::send<id>(cv::send<id>(cv::classNamed("NSAutoreleasePool"), "alloc"), "init");
        autoreleased(inner.get());
    }
    EXPECT_EQ(CFGetRetainCount(outer.get()), 1);
    EXPECT_EQ(CFGetRetainCount(inner.get()), 1);
    EXPECT_THAT(errorsOf([&] { autoreleased(inner.get()); }),
                HasSubstr("NSString: autoreleased with no pool in place"));
    EXPECT_EQ(CFGetRetainCount(inner.get()), 2);
    CFRelease(inner.get());
}

}  // namespace
