// A plug-in to load: its factories return what the tests can recognise.

#include <CoreFoundation/CoreFoundation.h>

#include <stdexcept>

extern "C" {

__attribute__((visibility("default"))) int sampleCalls = 0;
__attribute__((visibility("default"))) CFUUIDRef sampleType = nullptr;

__attribute__((visibility("default"))) void* SampleFactory(CFAllocatorRef, CFUUIDRef typeID) {
    ++sampleCalls;
    sampleType = typeID;
    return &sampleCalls;
}

__attribute__((visibility("default"))) void* ThrowingFactory(CFAllocatorRef, CFUUIDRef) {
    throw std::runtime_error("from the plug-in");
}
}
