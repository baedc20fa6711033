// The bundle as a host meets it: loaded through CFPlugIn, called through its table.

#include <CoreFoundation/CoreFoundation.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <string>
#include <vector>

#include "plugin/Factory.h"
#include "plugin/InstallerInterface.h"
#include "tests/support/Process.h"
#include "tests/support/StandardError.h"

namespace {

CFPlugInRef plugIn() {
    static const CFPlugInRef loaded = [] {
        const std::string path = BUNDLE_PATH;
        const CFURLRef url = CFURLCreateFromFileSystemRepresentation(
            kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), true);
        const CFPlugInRef made = CFPlugInCreate(kCFAllocatorDefault, url);
        CFRelease(url);
        return made;
    }();
    return loaded;
}

XCodInstance* makeInstance() {
    const CFArrayRef factories = CFPlugInFindFactoriesForPlugInTypeInPlugIn(XCodPlugInTypeID(), plugIn());
    const auto* const factory = static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(factories, 0));
    void* const instance = CFPlugInInstanceCreate(kCFAllocatorDefault, factory, XCodPlugInTypeID());
    CFRelease(factories);
    return static_cast<XCodInstance*>(instance);
}

TEST(Bundle, ExportsItsFourSymbolsAndNoOther) {
    const test::ProcessResult nm = test::run({"nm", "-D", "--defined-only", BUNDLE_CODE});
    std::vector<std::string> symbols;
    std::istringstream lines(nm.out);
    for (std::string address, kind, name; lines >> address >> kind >> name;) {
        symbols.push_back(kind + " " + name);
    }
    EXPECT_THAT(symbols, testing::UnorderedElementsAre("T MyFactory", "T PreInstall", "T PostInstall",
                                                       testing::AnyOf("B g_cvPluginID", "D g_cvPluginID")))
        << nm.err;
}

TEST(Factory, MakesNothingForAnotherType) {
    const auto factory = reinterpret_cast<void* (*)(CFAllocatorRef, CFUUIDRef)>(
        CFBundleGetFunctionPointerForName(CFPlugInGetBundle(plugIn()), CFSTR("MyFactory")));
    ASSERT_NE(factory, nullptr);
    for (const CFUUIDRef type : {XCodInterfaceID(), IUnknownUUID, CFUUIDRef{nullptr}}) {
        EXPECT_EQ(factory(kCFAllocatorDefault, type), nullptr);
    }
}

TEST(Instance, AnswersTwoInterfacesAndCountsReferences) {
    const struct {
        CFUUIDRef interfaceID;
        std::uint32_t result;
    } cases[] = {{XCodInterfaceID(), 0}, {IUnknownUUID, 0}, {XCodPlugInTypeID(), 0x80000004}};
    for (const auto& [interfaceID, result] : cases) {
        XCodInstance* const instance = makeInstance();
        ASSERT_NE(instance, nullptr);
        const XCodFunctionBlock& table = *instance->functionBlock;
        EXPECT_EQ(table._reserved, nullptr);
        void* out = &out;
        const HRESULT answer = table.QueryInterface(instance, CFUUIDGetUUIDBytes(interfaceID), &out);
        EXPECT_EQ(static_cast<std::uint32_t>(answer), result);
        EXPECT_EQ(out, result == 0 ? instance : nullptr);
        ULONG references = result == 0 ? 2 : 1;
        EXPECT_EQ(table.AddRef(instance), ++references);
        while (references != 0) {
            EXPECT_EQ(table.Release(instance), --references);
        }
    }
}

TEST(Instance, AddsTheReferenceThroughItsOwnTable) {
    static int calls;
    calls = 0;
    XCodInstance* const instance = makeInstance();
    XCodFunctionBlock replaced = *instance->functionBlock;
    replaced.AddRef = [](void*) { return static_cast<ULONG>(++calls); };
    instance->functionBlock = &replaced;
    void* out = nullptr;
    EXPECT_EQ(replaced.QueryInterface(instance, CFUUIDGetUUIDBytes(IUnknownUUID), &out), 0);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(replaced.Release(instance), 0u);
}

TEST(Instance, CountWrapsWithoutOverflow) {
    XCodInstance* const instance = makeInstance();
    instance->referenceCount = INT_MAX;
    EXPECT_EQ(instance->functionBlock->AddRef(instance), 0x80000000u);
    EXPECT_EQ(instance->functionBlock->Release(instance), 0x7FFFFFFFu);
    instance->referenceCount = 1;
    EXPECT_EQ(instance->functionBlock->Release(instance), 0u);
}

// Product 1 is unknown, so that a step that is run by mistake would be seen only by what it does to the block; that no
// preference is written is seen by the host's tests.
TEST(Dispatch, ChangesAtMostTheFailureBit) {
    const struct {
        const char* what;
        std::uint16_t version, selector;
        std::uint32_t before, after;
    } cases[] = {
        {"an old version", 999, 2, 0xFFFFFFFE, 0xFFFFFFFF},    {"a new version", 1001, 3, 0, 1},
        {"failed already", 999, 2, 0x80000001, 0x80000001},    {"a selector below", 1000, 1, 0x12345678, 0x12345678},
        {"a selector above", 1000, 4, 0x12345679, 0x12345679}, {"an unknown product", 1000, 2, 0xFFFFFFFE, 0xFFFFFFFE}};
    XCodInstance* const instance = makeInstance();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        // A host's block: longer than the plug-in's view of it, at an address that is no multiple of 4, full of bytes.
        std::vector<unsigned char> host(4096, 0xA5);
        XCodParamBlock& block = *reinterpret_cast<XCodParamBlock*>(host.data() + 2);
        block.version = c.version;
        block.selector = c.selector;
        block.productCode = 1;
        block.resultFlags = c.after;
        const std::vector<unsigned char> expected = host;
        block.resultFlags = c.before;
        EXPECT_EQ(test::errorsOf([&] { instance->functionBlock->XCodMain(&block); }), "") << "no alert comes from here";
        EXPECT_EQ(host, expected);
    }
    instance->functionBlock->Release(instance);
}

}  // namespace
