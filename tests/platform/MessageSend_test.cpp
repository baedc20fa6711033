#include "CvBase/Mac/MessageSend.h"

#include <CoreFoundation/CoreFoundation.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "CvBase/Mac/AutoreleasePool.h"
#include "tests/support/CFSupport.h"
#include "tests/support/StandardError.h"

namespace {

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

TEST(MessageSendDeathTest, AnUnknownMethodEndsTheProcessWithItsName) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto send = [](id receiver) { cv::send<void>(receiver, "fly:to:", 1, 2); };
    EXPECT_DEATH(send(objectOf(CFSTR("text"))), "-\\[NSString fly:to:\\]: unrecognized selector");
    EXPECT_DEATH(send(cv::classNamed("NSAlert")), "\\+\\[NSAlert fly:to:\\]: unrecognized selector");
}

TEST(AutoreleasePool, ReleasesAtItsEndWhatItsOwnScopeLeft) {
    const auto outer = test::makeString(u"outer"), inner = test::makeString(u"inner");
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
    EXPECT_THAT(test::errorsOf([&] { autoreleased(inner.get()); }),
                testing::HasSubstr("NSString: autoreleased with no pool in place"));
    EXPECT_EQ(CFGetRetainCount(inner.get()), 2);
    CFRelease(inner.get());
}

}  // namespace
