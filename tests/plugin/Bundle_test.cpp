// The bundle as a host meets it: loaded through CFPlugIn, called through its table.

#include <CoreFoundation/CoreFoundation.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "plugin/Factory.h"
#include "plugin/InstallerInterface.h"
#include "tests/support/Process.h"

namespace {

CFPlugInRef loadPlugIn() {
    const std::string path = BUNDLE_PATH;
    const CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), true);
    const CFPlugInRef plugIn = CFPlugInCreate(kCFAllocatorDefault, url);
    CFRelease(url);
    return plugIn;
}

void* makeInstance() {
    static const CFPlugInRef plugIn = loadPlugIn();
    const CFArrayRef factories = CFPlugInFindFactoriesForPlugInTypeInPlugIn(XCodPlugInTypeID(), plugIn);
    const auto* const factory = static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(factories, 0));
    void* const instance = CFPlugInInstanceCreate(kCFAllocatorDefault, factory, XCodPlugInTypeID());
    CFRelease(factories);
    return instance;
}

const XCodFunctionBlock& tableOf(void* instance) {
    return **static_cast<const XCodFunctionBlock* const*>(instance);
}

template <typename Function>
Function exported(const char* name) {
    const CFStringRef text = CFStringCreateWithCString(kCFAllocatorDefault, name, kCFStringEncodingUTF8);
    void* const address = CFBundleGetFunctionPointerForName(CFPlugInGetBundle(loadPlugIn()), text);
    CFRelease(text);
    return reinterpret_cast<Function>(address);
}

TEST(Bundle, ExportsItsFourSymbolsAndNoOther) {
    const test::ProcessResult nm = test::run({"nm", "-D", "--defined-only", BUNDLE_CODE});
    ASSERT_EQ(nm.exitStatus, 0) << nm.err;
    std::vector<std::string> symbols;
    std::istringstream lines(nm.out);
    for (std::string address, kind, name; lines >> address >> kind >> name;) {
        symbols.push_back(kind + " " + name);
    }
    EXPECT_THAT(symbols, testing::UnorderedElementsAre("T MyFactory", "T PreInstall", "T PostInstall",
                                                       testing::AnyOf("B g_cvPluginID", "D g_cvPluginID")));
    const auto* const pluginID = exported<const std::int32_t*>("g_cvPluginID");
    ASSERT_NE(pluginID, nullptr);
    EXPECT_EQ(*pluginID, 0);
}

TEST(Factory, MakesNothingForAnotherType) {
    const auto factory = exported<void* (*)(CFAllocatorRef, CFUUIDRef)>("MyFactory");
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(factory(kCFAllocatorDefault, XCodInterfaceID()), nullptr);
    EXPECT_EQ(factory(kCFAllocatorDefault, IUnknownUUID), nullptr);
    EXPECT_EQ(factory(kCFAllocatorDefault, nullptr), nullptr);
}

TEST(Instance, CountsReferencesAndAnswersTwoInterfaces) {
    for (const CFUUIDRef interfaceID : {XCodInterfaceID(), IUnknownUUID}) {
        void* const instance = makeInstance();
        ASSERT_NE(instance, nullptr);
        EXPECT_EQ(tableOf(instance)._reserved, nullptr);
        void* interfacePointer = nullptr;
        EXPECT_EQ(tableOf(instance).QueryInterface(instance, CFUUIDGetUUIDBytes(interfaceID), &interfacePointer), 0);
        EXPECT_EQ(interfacePointer, instance);
        EXPECT_EQ(tableOf(instance).AddRef(instance), 3u);
        EXPECT_EQ(tableOf(instance).Release(instance), 2u);
        EXPECT_EQ(tableOf(instance).Release(instance), 1u);
        EXPECT_EQ(tableOf(instance).Release(instance), 0u);
    }
}

TEST(Instance, RefusesAnotherInterface) {
    void* const instance = makeInstance();
    void* interfacePointer = &interfacePointer;
    const HRESULT result =
        tableOf(instance).QueryInterface(instance, CFUUIDGetUUIDBytes(XCodPlugInTypeID()), &interfacePointer);
    EXPECT_EQ(static_cast<std::uint32_t>(result), 0x80000004u);
    EXPECT_EQ(interfacePointer, nullptr);
    EXPECT_EQ(tableOf(instance).Release(instance), 0u) << "the refusal must not add a reference";
}

TEST(Instance, AddsTheReferenceThroughItsOwnTable) {
    static int calls;
    calls = 0;
    void* const instance = makeInstance();
    auto* const record = static_cast<XCodInstance*>(instance);
    const XCodFunctionBlock* const original = record->functionBlock;
    XCodFunctionBlock replaced = *original;
    replaced.AddRef = [](void*) -> ULONG { return static_cast<ULONG>(++calls); };
    record->functionBlock = &replaced;
    void* out = nullptr;
    EXPECT_EQ(replaced.QueryInterface(instance, CFUUIDGetUUIDBytes(IUnknownUUID), &out), 0);
    record->functionBlock = original;
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(original->Release(instance), 0u);
}

TEST(Instance, CountWrapsWithoutOverflow) {
    void* const instance = makeInstance();
    auto* const record = static_cast<XCodInstance*>(instance);
    record->referenceCount = INT_MAX;
    EXPECT_EQ(tableOf(instance).AddRef(instance), 0x80000000u);
    EXPECT_EQ(tableOf(instance).Release(instance), 0x7FFFFFFFu);
    record->referenceCount = 1;
    EXPECT_EQ(tableOf(instance).Release(instance), 0u);
}

/// A host's block: longer than the plug-in's view of it, at an address that is no multiple of 4, full of the host's
/// bytes.
class HostBlock {
public:
    HostBlock() : bytes_(2 + sizeof(XCodParamBlock) + 4096, 0xA5) {}

    XCodParamBlock& block() { return *reinterpret_cast<XCodParamBlock*>(bytes_.data() + 2); }
    std::vector<unsigned char> bytes() const { return bytes_; }

private:
    std::vector<unsigned char> bytes_;
};

struct DispatchCase {
    const char* what;
    std::uint16_t version, selector;
    std::uint32_t before, after;
};

class Dispatch : public testing::TestWithParam<DispatchCase> {};

// Product 1 is unknown, so that a step that is run by mistake would be seen only by what it does to the block; that no
// preference is written is seen by the host's tests.
TEST_P(Dispatch, ChangesAtMostTheFailureBit) {
    const DispatchCase& c = GetParam();
    HostBlock host;
    host.block().version = c.version;
    host.block().selector = c.selector;
    host.block().productCode = 1;
    host.block().resultFlags = c.before;
    HostBlock expected = host;
    expected.block().resultFlags = c.after;

    void* const instance = makeInstance();
    testing::internal::CaptureStderr();
    tableOf(instance).XCodMain(&host.block());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "no alert comes from this entry";
    EXPECT_EQ(host.bytes(), expected.bytes());
    tableOf(instance).Release(instance);
}

INSTANTIATE_TEST_SUITE_P(Blocks, Dispatch,
                         testing::Values(DispatchCase{"OldVersion", 999, 2, 0xFFFFFFFE, 0xFFFFFFFF},
                                         DispatchCase{"NewVersion", 1001, 3, 0, 1},
                                         DispatchCase{"FailedAlready", 999, 2, 0x80000001, 0x80000001},
                                         DispatchCase{"SelectorBelow", 1000, 1, 0x12345678, 0x12345678},
                                         DispatchCase{"SelectorAbove", 1000, 4, 0x12345679, 0x12345679},
                                         DispatchCase{"PreInstallUnknownProduct", 1000, 2, 0xFFFFFFFE, 0xFFFFFFFE}),
                         [](const auto& parameter) { return parameter.param.what; });

}  // namespace
