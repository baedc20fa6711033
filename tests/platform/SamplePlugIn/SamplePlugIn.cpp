// A plug-in to load: its factory returns what the tests can recognise.

#include <CoreFoundation/CoreFoundation.h>

#include <atomic>

extern "C" {

__attribute__((visibility("default"))) std::atomic<int> sampleCalls{0};

__attribute__((visibility("default"))) void* SampleFactory(CFAllocatorRef, CFUUIDRef type) {
    CFRelease(CFRetain(type));  // what it depends on has names that are not its own
    ++sampleCalls;
    return &sampleCalls;
}
}
