#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "tests/support/CFSupport.h"
#include "tests/support/StandardError.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using test::errorsOf;
using test::Owned;

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
    const Owned string(CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8));
    return Owned(CFUUIDCreateFromString(kCFAllocatorDefault, string.get()));
}

Owned<CFPlugInRef> createPlugIn(const std::string& path) {
    return Owned(CFPlugInCreate(kCFAllocatorDefault, urlOf(path).get()));
}

/// Writes X.bundle with this Info.plist to `folder` and returns its path.
std::string makeBundle(const test::TempDir& folder, const std::string& infoPlist) {
    test::writeFile(folder / "X.bundle/Contents/Info.plist", infoPlist);
    return folder / "X.bundle";
}

std::string plist(const std::string& entries) {
    return "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>" + entries + "</dict></plist>";
}

void* newInstance(const char* factory, const char* type) {
    return CFPlugInInstanceCreate(kCFAllocatorDefault, uuid(factory).get(), uuid(type).get());
}

TEST(CFBundle, OnePathIsOneObjectAndItsDictionaryCanBeAsked) {
    const test::TempDir folder;
    const std::string path = makeBundle(folder, plist("<key>CFBundleIdentifier</key><string>a.b</string>"));
    fs::create_symlink(path, folder / "link");
    const Owned bundle(CFBundleCreate(kCFAllocatorDefault, urlOf(path).get()));
    ASSERT_TRUE(bundle);
    EXPECT_EQ(CFGetTypeID(bundle.get()), CFBundleGetTypeID());
    EXPECT_TRUE(CFEqual(CFBundleGetIdentifier(bundle.get()), CFSTR("a.b")));
    EXPECT_TRUE(CFEqual(CFDictionaryGetValue(CFBundleGetInfoDictionary(bundle.get()), CFSTR("CFBundleIdentifier")),
                        CFSTR("a.b")));
    const Owned again(CFBundleCreate(kCFAllocatorDefault, urlOf(folder / "link").get()));
    EXPECT_EQ(bundle.get(), again.get());
}

TEST(CFBundle, AReleasedBundleIsReadAfresh) {
    const test::TempDir folder;
    for (const char* name : {"a.b", "c.d"}) {
        const std::string entry = "<key>CFBundleIdentifier</key><string>" + std::string(name) + "</string>";
        const Owned bundle(CFBundleCreate(kCFAllocatorDefault, urlOf(makeBundle(folder, plist(entry))).get()));
        const Owned expected(CFStringCreateWithCString(kCFAllocatorDefault, name, kCFStringEncodingUTF8));
        EXPECT_TRUE(CFEqual(CFBundleGetIdentifier(bundle.get()), expected.get()));
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
        const std::string errors =
            errorsOf([&] { EXPECT_EQ(CFBundleCreate(kCFAllocatorDefault, urlOf(path).get()), nullptr) << name; });
        EXPECT_NE(errors.find(path), std::string::npos) << errors;
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
    }
    errorsOf([] { EXPECT_EQ(CFBundleCreate(kCFAllocatorDefault, nullptr), nullptr); });
}

TEST(CFBundle, CodeThatCannotBeLoadedIsExplained) {
    const struct {
        const char* info;
        const char* text;
    } cases[] = {
        {"", "does not name a file"},
        {"<key>CFBundleExecutable</key><integer>1</integer>", "does not name a file"},
        {"<key>CFBundleExecutable</key><string/>", "does not name a file"},
        {"<key>CFBundleExecutable</key><string>../../../bin/sh</string>", "does not name a file"},
        {"<key>CFBundleExecutable</key><string>absent</string>", "/Contents/Linux/absent: there is no such file"},
        {"<key>CFBundleExecutable</key><string>..</string>", "there is no such file"},
        {"<key>CFBundleExecutable</key><string>notCode</string>", "notCode"},
    };
    for (const auto& c : cases) {
        const test::TempDir folder;
        test::writeFile(folder / "X.bundle/Contents/Linux/notCode", "text");
        const Owned bundle(CFBundleCreate(kCFAllocatorDefault, urlOf(makeBundle(folder, plist(c.info))).get()));
        ASSERT_TRUE(bundle);
        const std::string errors = errorsOf([&] { EXPECT_FALSE(CFBundleLoadExecutable(bundle.get())) << c.info; });
        EXPECT_NE(errors.find(c.text), std::string::npos) << errors;
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
    }
}

TEST(CFBundle, OnlyWhatItsOwnCodeExportsIsFound) {
    const Owned bundle(CFBundleCreate(kCFAllocatorDefault, urlOf(SAMPLE_PLUGIN).get()));
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

    const auto* calls = static_cast<int*>(CFBundleGetDataPointerForName(plugIn.get(), CFSTR("sampleCalls")));
    const auto* seenType = static_cast<CFUUIDRef*>(CFBundleGetDataPointerForName(plugIn.get(), CFSTR("sampleType")));
    const int before = *calls;
    EXPECT_EQ(CFPlugInInstanceCreate(kCFAllocatorDefault, factory, type.get()), calls);
    EXPECT_EQ(*calls, before + 1);
    EXPECT_EQ(*seenType, type.get());
}

TEST(CFPlugIn, AnInstanceOutlivesTheHostsReferenceToThePlugIn) {
    void* instance = nullptr;
    {
        const Owned plugIn = createPlugIn(SAMPLE_PLUGIN);
        instance = newInstance(SAMPLE, TYPE_OF_ONE);
    }
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
        const std::string errors = errorsOf([&] { EXPECT_EQ(newInstance(c.factory, c.type), nullptr); });
        EXPECT_NE(errors.find(c.text), std::string::npos) << errors;
    }
    EXPECT_EQ(CFPlugInFindFactoriesForPlugInType(nullptr), nullptr);
    errorsOf([] { EXPECT_EQ(CFPlugInInstanceCreate(nullptr, nullptr, nullptr), nullptr); });
}

TEST(CFPlugIn, AnExceptionOfTheFactoryReachesTheHost) {
    const Owned plugIn = createPlugIn(SAMPLE_PLUGIN);
    EXPECT_THROW(newInstance(THROWING, TYPE_OF_ALL), std::runtime_error);
    EXPECT_NE(newInstance(SAMPLE, TYPE_OF_ALL), nullptr);
}

TEST(CFPlugIn, InstancesAreCounted) {
    const Owned plugIn = createPlugIn(SAMPLE_PLUGIN);
    const Owned factory = uuid(SAMPLE);
    EXPECT_EQ(errorsOf([&] {
                  CFPlugInAddInstanceForFactory(factory.get());
                  CFPlugInRemoveInstanceForFactory(factory.get());
              }),
              "");
    EXPECT_NE(errorsOf([&] { CFPlugInRemoveInstanceForFactory(factory.get()); }), "");
    EXPECT_NE(errorsOf([&] { CFPlugInAddInstanceForFactory(uuid(TYPE_OF_ONE).get()); }), "");
}

TEST(CFPlugIn, MalformedRegistrationIsRefusedAndExplained) {
    const std::string factories =
        "<key>CFPlugInFactories</key><dict><key>0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6AFF</key><string>F</string></dict>";
    const auto types = [](const std::string& value) { return "<key>CFPlugInTypes</key>" + value; };
    const std::string type = "<key>7B0E6E55-30C6-4B2E-8C4E-9A5B1C2D3E01</key>";
    const std::string good =
        types("<dict>" + type + "<array><string>0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6AFF</string></array></dict>");
    const struct {
        std::string info;
        const char* text;
    } cases[] = {
        {good, "registers no factory"},
        {"<key>CFPlugInFactories</key><dict/>" + good, "registers no factory"},
        {"<key>CFPlugInFactories</key><array/>" + good, "registers no factory"},
        {"<key>CFPlugInFactories</key><dict><key>0D1F7AB2</key><string>F</string></dict>" + good,
         "\"0D1F7AB2\" in CFPlugInFactories of Info.plist is no identifier"},
        {"<key>CFPlugInFactories</key><dict><key>0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6AFF</key><string/></dict>" + good,
         "names no function"},
        {"<key>CFPlugInFactories</key><dict><key>0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6AFF</key><true/></dict>" + good,
         "names no function"},
        {factories, "registers no type"},
        {factories + types("<string>x</string>"), "registers no type"},
        {factories + types("<dict><key>x</key><array/></dict>"), "\"x\" in CFPlugInTypes of Info.plist is no"},
        {factories + types("<dict>" + type + "<string>x</string></dict>"), "no array of factories"},
        {factories + types("<dict>" + type + "<array><string>x</string></array></dict>"), "CFPlugInFactories lacks"},
        {factories + types("<dict>" + type + "<array><integer>1</integer></array></dict>"), "CFPlugInFactories lacks"},
        {"<key>CFPlugInDynamicRegistration</key><string>YES</string>" + factories + good, "must be the string NO"},
        {"<key>CFPlugInDynamicRegistration</key><true/>" + factories + good, "must be the string NO"},
        {"<key>CFPlugInDynamicRegistration</key><array/>" + factories + good, "must be the string NO"},
    };
    for (const auto& c : cases) {
        const test::TempDir folder;
        const std::string path = makeBundle(folder, plist(c.info));
        const std::string errors = errorsOf([&] { EXPECT_FALSE(createPlugIn(path)) << c.info; });
        EXPECT_NE(errors.find(c.text), std::string::npos) << errors;
        EXPECT_NE(errors.find(path), std::string::npos) << errors;
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
    }
    const test::TempDir folder;
    const std::string path =
        makeBundle(folder, plist("<key>CFPlugInDynamicRegistration</key><false/>" + factories + good));
    EXPECT_TRUE(createPlugIn(path)) << "nothing of the refused ones was registered";
}

TEST(CFPlugIn, ASecondPlugInWithTheSameFactoryIsRefused) {
    const Owned plugIn = createPlugIn(SAMPLE_PLUGIN);
    const test::TempDir folder;
    fs::copy(SAMPLE_PLUGIN, folder / "Copy.bundle", fs::copy_options::recursive);
    const std::string errors = errorsOf([&] { EXPECT_FALSE(createPlugIn(folder / "Copy.bundle")); });
    EXPECT_NE(errors.find("already registered by"), std::string::npos) << errors;
}

}  // namespace
