// Everything that may be used from any thread, from eight at once. Its worth is in the build with the thread sanitizer.

#include "CvBase/Mac/AutoreleasePool.h"
#include "tests/support/CFSupport.h"
#include "tests/support/Test.h"

namespace test {

namespace {

constexpr int THREADS = 8;

/// How many operations each thread does; THREAD_OPERATIONS in the environment may ask for more.
long operations() {
    const char* const wanted = std::getenv("THREAD_OPERATIONS");
    return wanted != nullptr ? std::strtol(wanted, nullptr, 10) : 20000;
}

/// Calls `work` with the number of the thread and of the call.
template <typename Work>
void onAllThreads(long calls, Work work) {
    onThreads(THREADS, [=](int thread) {
        for (long call = 0; call < calls; ++call) {
            work(thread, call);
        }
    });
}

TEST(Threads, ShareStringsAndNumbers) {
    const auto shared = string("shared");
    onAllThreads(operations(), [&shared](int thread, long call) {
        const SInt64 value = thread * 1000000L + call;
        const auto counted = number(value);
        const auto made = string(std::to_string(value));
        const auto copy = cv::retained(shared.get());
        const CFStringRef constant = CFSTR("shared");
        if (!CFEqual(copy.get(), constant) || CFEqual(made.get(), constant) || CFEqual(counted.get(), made.get()) ||
            CFHash(copy.get()) != CFHash(constant)) {
            ADD_FAILURE() << value;
        }
    });
    EXPECT_EQ(CFGetRetainCount(shared.get()), 1);
}

TEST(Threads, MakeInstancesOfAPlugInThatComesAndGoes) {
    const auto place = url(SAMPLE_PLUGIN);
    const auto factory = uuid("0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6A01");
    const auto type = uuid("7B0E6E55-30C6-4B2E-8C4E-9A5B1C2D3E01");
    onAllThreads(operations() / 20, [&](int, long) {
        const CFReference plugIn(CFPlugInCreate(nullptr, place.get()));
        const CFReference found(CFPlugInFindFactoriesForPlugInTypeInPlugIn(type.get(), plugIn.get()));
        for (int instance = 0; instance < 20; ++instance) {
            CFPlugInAddInstanceForFactory(factory.get());
            if (CFPlugInInstanceCreate(nullptr, factory.get(), type.get()) == nullptr ||
                CFArrayGetCount(found.get()) != 2) {
                ADD_FAILURE();
            }
            CFPlugInRemoveInstanceForFactory(factory.get());
        }
    });
}

TEST(Threads, SendMessagesInPoolsOfTheirOwn) {
    const auto shared = string("shared");
    onAllThreads(operations() / 10, [&shared](int, long) {
        const cv::AutoreleasePool pool;
        const auto object = reinterpret_cast<id>(const_cast<__CFString*>(shared.get()));
        cv::send<id>(cv::send<id>(object, "retain"), "autorelease");
        if (cv::send<id>(cv::send<id>(cv::classNamed("NSBundle"), "mainBundle"), "infoDictionary") == nullptr) {
            ADD_FAILURE();
        }
    });
    EXPECT_EQ(CFGetRetainCount(shared.get()), 1);
}

}  // namespace

}  // namespace test
