#include <CoreFoundation/CoreFoundation.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>

#include "tests/support/CFSupport.h"
#include "tests/support/StandardError.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using cv::CFReference;
using testing::HasSubstr;

constexpr const char* TYPE_OF_ALL = "7B0E6E55-30C6-4B2E-8C4E-9A5B1C2D3E01";
constexpr const char* TYPE_OF_ONE = "7B0E6E55-30C6-4B2E-8C4E-9A5B1C2D3E02";
constexpr const char* SAMPLE = "0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6A01";
constexpr const char* MISSING_FUNCTION = "0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6A02";

CFReference<CFURLRef> urlOf(const std::string& path) {
    return CFReference(CFURLCreateFromFileSystemRepresentation(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), true));
}

CFReference<CFUUIDRef> uuid(const char* text) {
    return CFReference(CFUUIDCreateFromString(kCFAllocatorDefault, test::string(text).get()));
}

CFReference<CFBundleRef> createBundle(const std::string& path) {
    return CFReference(CFBundleCreate(kCFAllocatorDefault, urlOf(path).get()));
}

CFReference<CFPlugInRef> createPlugIn(const std::string& path) {
    return CFReference(CFPlugInCreate(kCFAllocatorDefault, urlOf(path).get()));
}

/// Writes X.bundle with these entries of its Info.plist to `folder` and returns its path.
std::string makeBundle(const test::TempDir& folder, const std::string& entries) {
    test::writeFile(folder / "X.bundle/Contents/Info.plist", "<plist><dict>" + entries + "</dict></plist>");
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
    fs::create_directory_symlink("X.bundle", folder / "link");
    for (const std::string name : {"a.b", "c.d"}) {
        const CFReference bundle =
            createBundle(makeBundle(folder, "<key>CFBundleIdentifier</key><string>" + name + "</string>"));
        ASSERT_TRUE(bundle);
        EXPECT_EQ(createBundle(folder / "link").get(), bundle.get());
        EXPECT_EQ(test::text(CFBundleGetIdentifier(bundle.get())), name);
    }
}

TEST(CFBundle, WhatIsNoBundleGivesNullAndOneLine) {
    const test::TempDir folder;
    test::writeFile(folder / "text.bundle/Contents/Info.plist", "text");
    test::writeFile(folder / "array.bundle/Contents/Info.plist", "<plist><array/></plist>");
    fs::create_directories(folder / "folder.bundle/Contents/Info.plist");
    for (const std::string name : {"none", "text", "array", "folder"}) {
        const std::string path = folder / (name + ".bundle");
        expectOneLine("", path, [&] { EXPECT_FALSE(createBundle(path)); });
    }
    expectOneLine("", "", [] { EXPECT_EQ(CFBundleCreate(kCFAllocatorDefault, nullptr), nullptr); });
}

TEST(CFBundle, CodeThatCannotBeLoadedIsExplained) {
    const test::TempDir folder;
    test::writeFile(folder / "X.bundle/Contents/Linux/notCode", "text");
    for (const auto& [value, text] : {std::pair{"<integer>1</integer>", "does not name a file"},
                                      {"<string/>", "does not name a file"},
                                      {"<string>../../../bin/sh</string>", "does not name a file"},
                                      {"<string>..</string>", "there is no such file"},
                                      {"<string>absent</string>", "/Contents/Linux/absent: there is no such file"},
                                      {"<string>notCode</string>", "notCode"}}) {
        const CFReference bundle =
            createBundle(makeBundle(folder, "<key>CFBundleExecutable</key>" + std::string(value)));
        ASSERT_TRUE(bundle);
        expectOneLine(text, folder.path(), [&] { EXPECT_FALSE(CFBundleLoadExecutable(bundle.get())); });
    }
}

TEST(CFBundle, OnlyWhatItsOwnCodeExportsIsFound) {
    const CFReference bundle = createBundle(SAMPLE_PLUGIN);
    ASSERT_TRUE(bundle);
    EXPECT_NE(CFBundleGetFunctionPointerForName(bundle.get(), CFSTR("SampleFactory")), nullptr);
    EXPECT_NE(CFBundleGetDataPointerForName(bundle.get(), CFSTR("sampleCalls")), nullptr);
    EXPECT_EQ(CFBundleGetFunctionPointerForName(bundle.get(), CFSTR("malloc")), nullptr);
    EXPECT_EQ(CFBundleGetFunctionPointerForName(bundle.get(), CFSTR("CFRetain")), nullptr);
}

TEST(CFPlugIn, TheCodeOutlivesTheHostsReferenceToThePlugIn) {
    void* instance = createPlugIn(SAMPLE_PLUGIN) ? newInstance(SAMPLE, TYPE_OF_ONE) : nullptr;
    EXPECT_GT(*static_cast<int*>(instance), 0);
    EXPECT_NE(newInstance(SAMPLE, TYPE_OF_ONE), nullptr) << "registered still";
}

TEST(CFPlugIn, RefusedInstancesAreExplained) {
    const CFReference plugIn = createPlugIn(SAMPLE_PLUGIN);
    const struct {
        const char* factory;
        const char* type;
        const char* text;
    } cases[] = {
        {TYPE_OF_ALL, TYPE_OF_ALL, "is not registered"},
        {MISSING_FUNCTION, TYPE_OF_ONE, "is not registered for the type 7B0E6E55-30C6-4B2E-8C4E-9A5B1C2D3E02"},
        {MISSING_FUNCTION, TYPE_OF_ALL, "exports no function NoSuchFunction"},
    };
    for (const auto& c : cases) {
        expectOneLine(c.text, "", [&] { EXPECT_EQ(newInstance(c.factory, c.type), nullptr); });
    }
    expectOneLine("", "", [] { EXPECT_EQ(CFPlugInInstanceCreate(nullptr, nullptr, nullptr), nullptr); });
}

TEST(CFPlugIn, MalformedRegistrationIsRefusedAndExplained) {
    const std::string id = "0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6AFF";
    const auto entry = [](const std::string& key, const std::string& value) {
        return "<key>" + key + "</key>" + value;
    };
    const auto factories = [&](const std::string& entries) {
        return entry("CFPlugInFactories", "<dict>" + entries + "</dict>");
    };
    const auto types = [&](const std::string& makers) {
        return entry("CFPlugInTypes", "<dict>" + entry(TYPE_OF_ALL, makers) + "</dict>");
    };
    const auto dynamic = [&](const std::string& value) { return entry("CFPlugInDynamicRegistration", value); };
    const std::string someFactories = factories(entry(id, "<string>F</string>"));
    const std::string someTypes = types("<array><string>" + id + "</string></array>");
    const std::pair<const char*, std::string> cases[] = {
        {"registers no factory", someTypes},
        {"registers no factory", entry("CFPlugInFactories", "<array/>") + someTypes},
        {"\"0D1F7AB2\" in CFPlugInFactories of Info.plist is no identifier",
         factories(entry("0D1F7AB2", "<string>F</string>")) + someTypes},
        {"names no function", factories(entry(id, "<string/>")) + someTypes},
        {"registers no type", someFactories},
        {"\"x\" in CFPlugInTypes of Info.plist is no",
         someFactories + entry("CFPlugInTypes", "<dict>" + entry("x", "<array/>") + "</dict>")},
        {"no array of factories", someFactories + types("<string>x</string>")},
        {"CFPlugInFactories lacks", someFactories + types("<array><string>x</string></array>")},
        {"CFPlugInFactories lacks", someFactories + types("<array><integer>1</integer></array>")},
        {"must be the string NO", dynamic("<string>YES</string>") + someFactories + someTypes},
        {"must be the string NO", dynamic("<true/>") + someFactories + someTypes},
    };
    const test::TempDir folder;
    for (const auto& [text, info] : cases) {
        const std::string path = makeBundle(folder, info);
        expectOneLine(text, path, [&, &info = info] { EXPECT_FALSE(createPlugIn(path)) << info; });
    }
    EXPECT_TRUE(createPlugIn(makeBundle(folder, dynamic("<false/>") + someFactories + someTypes)))
        << "nothing of the refused ones was registered";
}

TEST(CFPlugIn, ASecondPlugInWithTheSameFactoryIsRefused) {
    const CFReference plugIn = createPlugIn(SAMPLE_PLUGIN);
    const test::TempDir folder;
    fs::copy(SAMPLE_PLUGIN, folder / "Copy.bundle", fs::copy_options::recursive);
    expectOneLine("already registered by", "", [&] { EXPECT_FALSE(createPlugIn(folder / "Copy.bundle")); });
}

}  // namespace
