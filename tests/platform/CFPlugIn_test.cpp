#include "tests/support/CFSupport.h"
#include "tests/support/Test.h"

namespace {

using namespace test;

constexpr const char* TYPE_OF_ALL = "7B0E6E55-30C6-4B2E-8C4E-9A5B1C2D3E01";
constexpr const char* TYPE_OF_ONE = "7B0E6E55-30C6-4B2E-8C4E-9A5B1C2D3E02";
constexpr const char* SAMPLE = "0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6A01";
constexpr const char* MISSING_FUNCTION = "0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6A02";

CFReference<CFBundleRef> createBundle(const std::string& path) {
    return CFReference(CFBundleCreate(kCFAllocatorDefault, test::url(path).get()));
}

CFReference<CFPlugInRef> createPlugIn(const std::string& path) {
    return CFReference(CFPlugInCreate(kCFAllocatorDefault, test::url(path).get()));
}

std::string string(const std::string& text) {
    return "<string>" + text + "</string>";
}

std::string entry(const std::string& key, const std::string& value) {
    return "<key>" + key + "</key>" + value;
}

/// Writes X.bundle with these entries of its Info.plist to `folder` and returns its path.
std::string makeBundle(const TempDir& folder, const std::string& entries) {
    writeFile(folder / "X.bundle/Contents/Info.plist", "<plist><dict>" + entries + "</dict></plist>");
    return folder / "X.bundle";
}

void* newInstance(const char* factory, const char* type) {
    return CFPlugInInstanceCreate(kCFAllocatorDefault, test::uuid(factory).get(), test::uuid(type).get());
}

/// Runs `body` and expects of it one line on standard error that holds both texts.
void expectOneLine(const std::string& text, const std::string& path, const std::function<void()>& body) {
    const std::string errors = errorsOf(body);
    EXPECT_THAT(errors, testing::AllOf(HasSubstr(text), HasSubstr(path)));
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
}

TEST(CFBundle, OnePathIsOneObjectUntilItIsReleased) {
    const TempDir folder;
    fs::create_directory_symlink("X.bundle", folder / "link");
    for (const std::string name : {"a.b", "c.d"}) {
        const auto bundle = createBundle(makeBundle(folder, entry("CFBundleIdentifier", string(name))));
        ASSERT_TRUE(bundle);
        EXPECT_EQ(createBundle(folder / "link").get(), bundle.get());
        EXPECT_EQ(test::text(CFBundleGetIdentifier(bundle.get())), name);
    }
}

TEST(CFBundle, APathWithoutABundleGivesNullAndOneLine) {
    const TempDir folder;
    writeFile(folder / "text.bundle/Contents/Info.plist", "text");
    writeFile(folder / "array.bundle/Contents/Info.plist", "<plist><array/></plist>");
    fs::create_directories(folder / "folder.bundle/Contents/Info.plist");
    for (const std::string name : {"none", "text", "array", "folder"}) {
        const std::string path = folder / (name + ".bundle");
        expectOneLine("", path, [&] { EXPECT_FALSE(createBundle(path)); });
    }
    expectOneLine("", "", [] { EXPECT_EQ(CFBundleCreate(kCFAllocatorDefault, nullptr), nullptr); });
}

TEST(CFBundle, CodeThatCannotBeLoadedIsExplained) {
    const TempDir folder;
    writeFile(folder / "X.bundle/Contents/Linux/notCode", "text");
    for (const auto& [value, text] :
         {std::pair<std::string, const char*>{"<integer>1</integer>", "does not name a file"},
          {string(""), "does not name a file"},
          {string("../../../bin/sh"), "does not name a file"},
          {string(".."), "it is not a file"},
          {string("absent"), "/Contents/Linux/absent: No such file or directory"},
          {string("notCode"), "notCode"}}) {
        const auto bundle = createBundle(makeBundle(folder, entry("CFBundleExecutable", value)));
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

TEST(CFPlugIn, RefusalsAreExplained) {
    const CFReference plugIn = createPlugIn(SAMPLE_PLUGIN);
    for (const auto& [factory, type, text] :
         {std::tuple{TYPE_OF_ALL, TYPE_OF_ALL, "is not registered"},
          {MISSING_FUNCTION, TYPE_OF_ONE, "is not registered for the type 7B0E6E55-30C6-4B2E-8C4E-9A5B1C2D3E02"},
          {MISSING_FUNCTION, TYPE_OF_ALL, "exports no function NoSuchFunction"}}) {
        expectOneLine(text, "", [&, f = factory, t = type] { EXPECT_EQ(newInstance(f, t), nullptr); });
    }
    expectOneLine("", "", [] { EXPECT_EQ(CFPlugInInstanceCreate(nullptr, nullptr, nullptr), nullptr); });
    expectOneLine("not registered", "", [] { CFPlugInAddInstanceForFactory(test::uuid(TYPE_OF_ALL).get()); });
    CFPlugInAddInstanceForFactory(test::uuid(SAMPLE).get());
    CFPlugInRemoveInstanceForFactory(test::uuid(SAMPLE).get());
    expectOneLine("no instance left", "", [] { CFPlugInRemoveInstanceForFactory(test::uuid(SAMPLE).get()); });
    const TempDir folder;
    fs::copy(SAMPLE_PLUGIN, folder / "Copy.bundle", fs::copy_options::recursive);
    expectOneLine("already registered by", "", [&] { EXPECT_FALSE(createPlugIn(folder / "Copy.bundle")); });
}

TEST(CFPlugIn, MalformedRegistrationIsRefusedAndExplained) {
    const std::string id = "0D1F7AB2-6C2E-4D0B-9E44-3C1F4B0B6AFF";
    const auto factories = [&](const std::string& entries) {
        return entry("CFPlugInFactories", "<dict>" + entries + "</dict>");
    };
    const auto types = [&](const std::string& type, const std::string& makers) {
        return entry("CFPlugInTypes", "<dict>" + entry(type, makers) + "</dict>");
    };
    const std::string dynamic = "CFPlugInDynamicRegistration", someFactories = factories(entry(id, string("F")));
    const std::string someTypes = types(TYPE_OF_ALL, "<array>" + string(id) + "</array>"),
                      some = someFactories + someTypes;
    const std::pair<const char*, std::string> rows[] = {
        {"registers no factory", someTypes},
        {"registers no factory", entry("CFPlugInFactories", "<array/>") + someTypes},
        {"\"0D1F7AB2\" in CFPlugInFactories of Info.plist is not a UUID",
         factories(entry("0D1F7AB2", string("F"))) + someTypes},
        {"names no function", factories(entry(id, "<string/>")) + someTypes},
        {"registers no type", someFactories},
        {"\"x\" in CFPlugInTypes of Info.plist is not", someFactories + types("x", "<array/>")},
        {"no array of factories", someFactories + types(TYPE_OF_ALL, string("x"))},
        {"CFPlugInFactories lacks", someFactories + types(TYPE_OF_ALL, "<array>" + string("x") + "</array>")},
        {"CFPlugInFactories lacks", someFactories + types(TYPE_OF_ALL, "<array><integer>1</integer></array>")},
        {"must be the string NO", entry(dynamic, string("YES")) + some},
        {"must be the string NO", entry(dynamic, "<true/>") + some},
    };
    const TempDir folder;
    for (const auto& [text, info] : rows) {
        const std::string path = makeBundle(folder, info);
        expectOneLine(text, path, [&, &info = info] { EXPECT_FALSE(createPlugIn(path)) << info; });
    }
    EXPECT_TRUE(createPlugIn(makeBundle(folder, entry(dynamic, "<false/>") + some)))
        << "nothing of the refused ones was registered";
}

}  // namespace
