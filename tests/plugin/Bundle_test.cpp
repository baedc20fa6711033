// The bundle as a host meets it: loaded through CFPlugIn, called through its table.

#include "plugin/Factory.h"
#include "plugin/InstallerInterface.h"
#include "tests/support/CFSupport.h"
#include "tests/support/Test.h"

namespace {

using namespace test;

CFPlugInRef plugIn() {
    static const CFReference loaded(CFPlugInCreate(kCFAllocatorDefault, test::url(BUNDLE_PATH).get()));
    return loaded.get();
}

XCodInstance* makeInstance() {
    const CFReference factories(CFPlugInFindFactoriesForPlugInTypeInPlugIn(XCodPlugInTypeID(), plugIn()));
    const auto* const factory = static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(factories.get(), 0));
    return static_cast<XCodInstance*>(CFPlugInInstanceCreate(kCFAllocatorDefault, factory, XCodPlugInTypeID()));
}

TEST(Factory, MakesNothingForAnotherType) {
    const auto factory = reinterpret_cast<void* (*)(CFAllocatorRef, CFUUIDRef)>(
        CFBundleGetFunctionPointerForName(CFPlugInGetBundle(plugIn()), CFSTR("MyFactory")));
    ASSERT_NE(factory, nullptr);
    for (const CFUUIDRef type : {XCodInterfaceID(), IUnknownUUID, CFUUIDRef{nullptr}}) {
        EXPECT_EQ(factory(kCFAllocatorDefault, type), nullptr);
    }
}

// That the reference is counted is for the host's check to see; here, that it is added through the instance's own
// table.
TEST(Instance, AnswersTwoInterfaces) {
    static int calls;
    for (const auto& [interfaceID, result] :
         {std::pair{XCodInterfaceID(), 0U}, {IUnknownUUID, 0U}, {XCodPlugInTypeID(), 0x80000004U}}) {
        calls = 0;
        XCodInstance* const instance = makeInstance();
        ASSERT_NE(instance, nullptr);
        XCodFunctionBlock table = *instance->functionBlock;
        EXPECT_EQ(table._reserved, nullptr);
        table.AddRef = [](void*) { return static_cast<ULONG>(++calls); };
        instance->functionBlock = &table;
        void* out = &out;
        const HRESULT answer = table.QueryInterface(instance, CFUUIDGetUUIDBytes(interfaceID), &out);
        EXPECT_EQ(static_cast<std::uint32_t>(answer), result);
        EXPECT_EQ(out, result == 0 ? instance : nullptr);
        EXPECT_EQ(calls, result == 0 ? 1 : 0);
        EXPECT_EQ(table.Release(instance), 0U);
    }
}

TEST(Instance, IsCountedOffWhereItsFactoryCountsIt) {
    const CFReference factories(CFPlugInFindFactoriesForPlugInTypeInPlugIn(XCodPlugInTypeID(), plugIn()));
    const auto* const factory = static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(factories.get(), 0));
    const CFIndex references = CFGetRetainCount(factory);
    XCodInstance* const instance = makeInstance();
    instance->factoryID = static_cast<CFUUIDRef>(CFRetain(factory));
    CFPlugInAddInstanceForFactory(factory);
    EXPECT_EQ(errorsOf([&] { instance->functionBlock->Release(instance); }), "");
    EXPECT_EQ(CFGetRetainCount(factory), references);
    EXPECT_THAT(errorsOf([&] { CFPlugInRemoveInstanceForFactory(factory); }), HasSubstr("no instance left"));
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
    // clang-format off
    const struct { const char* what; std::uint16_t version, selector; std::uint32_t before, after; } cases[] = {
        {"an old version", 999, 2, 0xFFFFFFFE, 0xFFFFFFFF},    {"a new version", 1001, 3, 0, 1},
        {"failed already", 999, 2, 0x80000001, 0x80000001},    {"a selector below", 1000, 1, 0x12345678, 0x12345678},
        {"a selector above", 1000, 4, 0x12345679, 0x12345679}, {"an unknown product", 1000, 2, 0xFFFFFFFE, 0xFFFFFFFE}};
    // clang-format on
    XCodInstance* const instance = makeInstance();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        // A host's block: longer than the plug-in's view of it, at an address that is not a multiple of 4, full of
        // bytes.
        std::vector<unsigned char> host(4096, 0xA5);
        XCodParamBlock& block = *reinterpret_cast<XCodParamBlock*>(host.data() + 2);
        block.version = c.version;
        block.selector = c.selector;
        block.productCode = 1;
        block.resultFlags = c.after;
        const std::vector<unsigned char> expected = host;
        block.resultFlags = c.before;
        EXPECT_EQ(errorsOf([&] { instance->functionBlock->XCodMain(&block); }), "") << "no alert comes from here";
        EXPECT_EQ(host, expected);
    }
    instance->functionBlock->Release(instance);
}

}  // namespace
