#include <CoreFoundation/CoreFoundation.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/CFSupport.h"
#include "tests/support/StandardError.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using test::Owned;
using testing::HasSubstr;

constexpr const char* TYPE_OF_ALL = "7B0E6E55-30C6-4B2E-8C4E-9A5B1C2D3E01";
constexpr const char* TYPE_OF_ONE = "7B0E6E55-30C6-4B2E-8C4E-9A5B1C2D3E02";
constexpr const char* SAMPLE = "0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6A01";
constexpr const char* THROWING = "0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6A02";
constexpr const char* MISSING_FUNCTION = "0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6A03";
constexpr const char* FUNCTION_OF_A_LIBRARY = "0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6A04";

Owned<CFURLRef> urlOf(const std::string& path) {
    return Owned(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), true));
}

Owned<CFUUIDRef> uuid(const char* text) {
    return Owned(CFUUIDCreateFromString(kCFAllocatorDefault, test::string(text).get()));
}

Owned<CFBundleRef> createBundle(const std::string& path) {
    return Owned(CFBundleCreate(kCFAllocatorDefault, urlOf(path).get()));
}

Owned<CFPlugInRef> createPlugIn(const std::string& path) {
    return Owned(CFPlugInCreate(kCFAllocatorDefault, urlOf(path).get()));
}

std::string plist(const std::string& entries) {
    return "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>" + entries + "</dict></plist>";
}

/// Writes X.bundle with these entries of its Info.plist to `folder` and returns its path.
std::string makeBundle(const test::TempDir& folder, const std::string& entries) {
    test::writeFile(folder / "X.bundle/Contents/Info.plist", plist(entries));
    return folder / "X.bundle";
}

void* newInstance(const char* factory, const char* type) {
    return CFPlugInInstanceCreate(kCFAllocatorDefault, uuid(factory).get(), uuid(type).get());
}

/// Runs `body` and expects of it one line on standard error that holds both texts.
template <typename Body>
void expectOneLine(const std::string& text, const std::string& path, Body body) {
    const std::string errors = test::errorsOf(body);
    EXPECT_THAT(errors, testing::AllOf(HasSubstr(text), HasSubstr(path)));
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
}

TEST(CFBundle, OnePathIsOneObjectUntilItIsReleased) {
    const test::TempDir folder;
    for (const char* name : {"a.b", "c.d"}) {
        const Owned identifier = test::string(name);
        const std::string path =
            makeBundle(folder, "<key>CFBundleIdentifier</key><string>" + std::string(name) + "</string>");
        fs::create_symlink(path, folder / (std::string("link to ") + name));
        const Owned bundle = createBundle(path);
        ASSERT_TRUE(bundle);
        EXPECT_EQ(createBundle(folder / (std::string("link to ") + name)).get(), bundle.get());
        EXPECT_TRUE(CFEqual(CFBundleGetIdentifier(bundle.get()), identifier.get()));
        EXPECT_TRUE(CFEqual(CFDictionaryGetValue(CFBundleGetInfoDictionary(bundle.get()), CFSTR("CFBundleIdentifier")),
                            identifier.get()));
        EXPECT_EQ(CFGetTypeID(bundle.get()), CFBundleGetTypeID());
    }
}

TEST(CFBundle, WhatIsNoBundleGivesNullAndOneLine) {
    const test::TempDir folder;
    fs::create_directory(folder / "empty.bundle");
    test::writeFile(folder / "file.bundle", "text");
    test::writeFile(folder / "text.bundle/Contents/Info.plist", "text");
    test::writeFile(folder / "array.bundle/Contents/Info.plist", "<plist><array/></plist>");
    fs::create_directories(folder / "folder.bundle/Contents/Info.plist");
    for (const char* name : {"none", "empty", "file", "text", "array", "folder"}) {
        const std::string path = folder / (name + std::string(".bundle"));
        expectOneLine("", path, [&] { EXPECT_FALSE(createBundle(path)); });
    }
    expectOneLine("", "", [] { EXPECT_EQ(CFBundleCreate(kCFAllocatorDefault, nullptr), nullptr); });
}

TEST(CFBundle, CodeThatCannotBeLoadedIsExplained) {
    const struct {
        const char* value;
        const char* text;
    } cases[] = {
        {"<integer>1</integer>", "does not name a file"},
        {"<string/>", "does not name a file"},
        {"<string>../../../bin/sh</string>", "does not name a file"},
        {"<string>absent</string>", "/Contents/Linux/absent: there is no such file"},
        {"<string>..</string>", "there is no such file"},
        {"<string>notCode</string>", "notCode"},
    };
    for (const auto& c : cases) {
        const test::TempDir folder;
        test::writeFile(folder / "X.bundle/Contents/Linux/notCode", "text");
        const Owned bundle = createBundle(makeBundle(folder, "<key>CFBundleExecutable</key>" + std::string(c.value)));
        ASSERT_TRUE(bundle);
        expectOneLine(c.text, folder.path(), [&] { EXPECT_FALSE(CFBundleLoadExecutable(bundle.get())); });
    }
}

TEST(CFBundle, OnlyWhatItsOwnCodeExportsIsFound) {
    const Owned bundle = createBundle(SAMPLE_PLUGIN);
    ASSERT_TRUE(bundle);
    EXPECT_NE(CFBundleGetFunctionPointerForName(bundle.get(), CFSTR("SampleFactory")), nullptr);
    EXPECT_NE(CFBundleGetDataPointerForName(bundle.get(), CFSTR("sampleCalls")), nullptr);
    EXPECT_EQ(CFBundleGetFunctionPointerForName(bundle.get(), CFSTR("malloc")), nullptr);
    EXPECT_EQ(CFBundleGetFunctionPointerForName(bundle.get(), CFSTR("CFRetain")), nullptr);
    const Owned code(CFBundleCopyExecutableURL(bundle.get()));
    char path[PATH_MAX];
    ASSERT_TRUE(CFURLGetFileSystemRepresentation(code.get(), true, reinterpret_cast<UInt8*>(path), sizeof path));
    EXPECT_EQ(path, fs::canonical(SAMPLE_PLUGIN).string() + "/Contents/Linux/SamplePlugIn");
}

TEST(CFPlugIn, AHostFindsTheFactoriesOfATypeAndMakesInstances) {
    const Owned plugIn = createPlugIn(SAMPLE_PLUGIN);
    ASSERT_TRUE(plugIn);
    const Owned type = uuid(TYPE_OF_ONE);
    const Owned all(CFPlugInFindFactoriesForPlugInType(uuid(TYPE_OF_ALL).get()));
    EXPECT_EQ(CFArrayGetCount(all.get()), 4);
    const Owned one(CFPlugInFindFactoriesForPlugInTypeInPlugIn(type.get(), plugIn.get()));
    ASSERT_EQ(CFArrayGetCount(one.get()), 1);
    const auto factory = static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(one.get(), 0));
    EXPECT_TRUE(CFEqual(factory, uuid(SAMPLE).get()));
    const Owned none(CFPlugInFindFactoriesForPlugInType(uuid(SAMPLE).get()));
    EXPECT_EQ(CFArrayGetCount(none.get()), 0);

    auto* calls = static_cast<int*>(CFBundleGetDataPointerForName(plugIn.get(), CFSTR("sampleCalls")));
    const auto* seenType = static_cast<CFUUIDRef*>(CFBundleGetDataPointerForName(plugIn.get(), CFSTR("sampleType")));
    *calls = 0;
    EXPECT_EQ(CFPlugInInstanceCreate(kCFAllocatorDefault, factory, type.get()), calls);
    EXPECT_EQ(*calls, 1);
    EXPECT_EQ(*seenType, type.get());
}

TEST(CFPlugIn, TheCodeOutlivesTheHostsReferenceToThePlugIn) {
    void* instance = createPlugIn(SAMPLE_PLUGIN) ? newInstance(SAMPLE, TYPE_OF_ONE) : nullptr;
    EXPECT_GT(*static_cast<int*>(instance), 0);
    EXPECT_NE(newInstance(SAMPLE, TYPE_OF_ONE), nullptr) << "registered still";
}

TEST(CFPlugIn, RefusedInstancesAreExplained) {
    const Owned plugIn = createPlugIn(SAMPLE_PLUGIN);
    const struct {
        const char* factory;
        const char* type;
        const char* text;
    } cases[] = {
        {TYPE_OF_ALL, TYPE_OF_ALL, "is not registered"},
        {THROWING, TYPE_OF_ONE, "is not registered for the type 7B0E6E55-30C6-4B2E-8C4E-9A5B1C2D3E02"},
        {MISSING_FUNCTION, TYPE_OF_ALL, "exports no function NoSuchFunction"},
        {FUNCTION_OF_A_LIBRARY, TYPE_OF_ALL, "exports no function malloc"},
    };
    for (const auto& c : cases) {
        expectOneLine(c.text, "", [&] { EXPECT_EQ(newInstance(c.factory, c.type), nullptr); });
    }
    EXPECT_EQ(CFPlugInFindFactoriesForPlugInType(nullptr), nullptr);
    expectOneLine("", "", [] { EXPECT_EQ(CFPlugInInstanceCreate(nullptr, nullptr, nullptr), nullptr); });
}

TEST(CFPlugIn, InstancesAreCounted) {
    const Owned plugIn = createPlugIn(SAMPLE_PLUGIN);
    const Owned factory = uuid(SAMPLE);
    CFPlugInAddInstanceForFactory(factory.get());
    CFPlugInRemoveInstanceForFactory(factory.get());
    expectOneLine("", "", [&] { CFPlugInRemoveInstanceForFactory(factory.get()); });
    expectOneLine("", "", [] { CFPlugInAddInstanceForFactory(uuid(TYPE_OF_ONE).get()); });
}

TEST(CFPlugIn, MalformedRegistrationIsRefusedAndExplained) {
    const std::string id = "0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6AFF";
    const std::string type = "<key>7B0E6E55-30C6-4B2E-8C4E-9A5B1C2D3E01</key>";
    const auto factories = [](const std::string& value) { return "<key>CFPlugInFactories</key>" + value; };
    const auto types = [](const std::string& value) { return "<key>CFPlugInTypes</key>" + value; };
    const auto dynamic = [](const std::string& value) { return "<key>CFPlugInDynamicRegistration</key>" + value; };
    const std::string goodFactories = factories("<dict><key>" + id + "</key><string>F</string></dict>");
    const std::string goodTypes = types("<dict>" + type + "<array><string>" + id + "</string></array></dict>");
    const std::string good = goodFactories + goodTypes;
    const struct {
        const char* text;
        std::vector<std::string> infos;
    } cases[] = {
        {"registers no factory", {goodTypes, factories("<dict/>") + goodTypes, factories("<array/>") + goodTypes}},
        {"\"0D1F7AB2\" in CFPlugInFactories of Info.plist is no identifier",
         {factories("<dict><key>0D1F7AB2</key><string>F</string></dict>") + goodTypes}},
        {"names no function",
         {factories("<dict><key>" + id + "</key><string/></dict>") + goodTypes,
          factories("<dict><key>" + id + "</key><true/></dict>") + goodTypes}},
        {"registers no type", {goodFactories, goodFactories + types("<string>x</string>")}},
        {"\"x\" in CFPlugInTypes of Info.plist is no", {goodFactories + types("<dict><key>x</key><array/></dict>")}},
        {"no array of factories", {goodFactories + types("<dict>" + type + "<string>x</string></dict>")}},
        {"CFPlugInFactories lacks",
         {goodFactories + types("<dict>" + type + "<array><string>x</string></array></dict>"),
          goodFactories + types("<dict>" + type + "<array><integer>1</integer></array></dict>")}},
        {"must be the string NO",
         {dynamic("<string>YES</string>") + good, dynamic("<true/>") + good, dynamic("<array/>") + good}},
    };
    const test::TempDir folder;
    for (const auto& c : cases) {
        for (const std::string& info : c.infos) {
            const std::string path = makeBundle(folder, info);
            expectOneLine(c.text, path, [&] { EXPECT_FALSE(createPlugIn(path)) << info; });
        }
    }
    EXPECT_TRUE(createPlugIn(makeBundle(folder, dynamic("<false/>") + good)))
        << "nothing of the refused ones was registered";
}

TEST(CFPlugIn, ASecondPlugInWithTheSameFactoryIsRefused) {
    const Owned plugIn = createPlugIn(SAMPLE_PLUGIN);
    const test::TempDir folder;
    fs::copy(SAMPLE_PLUGIN, folder / "Copy.bundle", fs::copy_options::recursive);
    expectOneLine("already registered by", "", [&] { EXPECT_FALSE(createPlugIn(folder / "Copy.bundle")); });
}

}  // namespace
