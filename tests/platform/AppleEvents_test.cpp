#include <Carbon/Carbon.h>
#include <dlfcn.h>

#include <chrono>

#include "tests/support/CFSupport.h"
#include "tests/support/Surroundings.h"
#include "tests/support/Test.h"

namespace {

using namespace test;

std::atomic<bool> g_trashIsStuck{false};

}  // namespace

/// Stands before GIO's own for the Trash's module, to play a volume that does not answer.
extern "C" __attribute__((visibility("default"))) int g_file_trash(void* file, void* cancellable, void** error) {
    while (g_trashIsStuck) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    using Function = int (*)(void*, void*, void**);
    void* const gio = dlopen("libgio-2.0.so.0", RTLD_LAZY);
    return reinterpret_cast<Function>(dlsym(gio, "g_file_trash"))(file, cancellable, error);
}

namespace {

constexpr OSType FINDER = CV_FOUR_CHAR_CODE('M', 'A', 'C', 'S');
constexpr OSType OTHER = CV_FOUR_CHAR_CODE('x', 'x', 'x', 'x');

/// What goes into the event, each part to be spoilt by a test.
struct MoveEvent {
    OSType target = FINDER;
    AEEventID eventID = kAEMove;
    AEKeyword itemKey = keyDirectObject;
    Size itemSize = sizeof(FSRef);
    AEKeyword locationKey = keyAEInsertHere;
    DescType keyData = kTrashFolderType;
    DescType container = typeNull;
    AESendMode mode = kAEWaitReply;
    SInt32 timeout = kAEDefaultTimeout;

    OSErr send(const FSRef& item) const {
        AEDesc address, key, specifier, from;
        AppleEvent event, reply;
        EXPECT_EQ(AECreateDesc(typeApplSignature, &target, sizeof target, &address), noErr);
        EXPECT_EQ(AECreateAppleEvent(kAECoreSuite, eventID, &address, kAutoGenerateReturnID, kAnyTransactionID, &event),
                  noErr);
        EXPECT_EQ(AEPutParamPtr(&event, itemKey, typeFSRef, &item, itemSize), noErr);
        EXPECT_EQ(AECreateDesc(container, nullptr, 0, &from), noErr);
        EXPECT_EQ(AECreateDesc(typeType, &keyData, sizeof keyData, &key), noErr);
        EXPECT_EQ(CreateObjSpecifier(cObject, &from, formPropertyID, &key, true, &specifier), noErr);
        EXPECT_EQ(key.dataHandle, nullptr);
        EXPECT_EQ(AEPutParamDesc(&event, locationKey, &specifier), noErr);

        const OSErr result = AESend(&event, &reply, mode, kAENormalPriority, timeout, nullptr, nullptr);
        EXPECT_EQ(reply.descriptorType, result == noErr ? DescType{typeAppleEvent} : DescType{typeNull});
        for (AEDesc* desc : {&address, &specifier, &event, &reply, &reply}) {
            EXPECT_EQ(AEDisposeDesc(desc), noErr);
        }
        return result;
    }
};

FSRef refTo(const std::string& path) {
    FSRef ref{};
    EXPECT_TRUE(CFURLGetFSRef(test::url(path).get(), &ref)) << path;
    return ref;
}

/// GIO asks for the home folder once in a process, so all cases share one.
class Trash : public testing::Test {
protected:
    Trash() {
        setHome(home().path());
        unsetenv("XDG_DATA_HOME");
        fs::remove_all(trash_);
        fs::remove_all(home() / "work");
    }

    static const TempDir& home() {
        static const TempDir folder;
        return folder;
    }

    static std::string newFile(const std::string& name, const std::string& text) {
        std::string path = home() / ("work/" + name);
        writeFile(path, text);
        return path;
    }

    const std::string trash_ = home() / ".local/share/Trash";
};

TEST_F(Trash, RefusesAMalformedEvent) {
    // clang-format off
    const struct { const char* what; void (*spoil)(MoveEvent&); OSErr error; } rows[] = {
        {"another application", [](MoveEvent& e) { e.target = OTHER; }, procNotFound},
        {"another identifier", [](MoveEvent& e) { e.eventID = OTHER; }, errAEEventNotHandled},
        {"no item", [](MoveEvent& e) { e.itemKey = OTHER; }, errAEDescNotFound},
        {"no location", [](MoveEvent& e) { e.locationKey = OTHER; }, errAEDescNotFound},
        {"half a reference", [](MoveEvent& e) { e.itemSize = 80; }, errAECoercionFail},
        {"another property", [](MoveEvent& e) { e.keyData = OTHER; }, errAECoercionFail},
        {"another container", [](MoveEvent& e) { e.container = OTHER; }, errAECoercionFail},
        {"no wait for a reply", [](MoveEvent& e) { e.mode = kAENoReply; }, paramErr},
        {"a meaningless time-out", [](MoveEvent& e) { e.timeout = -3; }, paramErr},
    };
    // clang-format on
    const std::string path = newFile("item", "kept");
    for (const auto& row : rows) {
        MoveEvent event;
        row.spoil(event);
        EXPECT_EQ(event.send(refTo(path)), row.error) << row.what;
    }
    EXPECT_EQ(readFile(path), "kept");
    EXPECT_FALSE(fs::exists(trash_));
}

TEST_F(Trash, LeavesTheItemWhereItCannotGo) {
    const std::string path = newFile("item", "kept");
    for (const std::optional<std::string>& noHome : {std::optional<std::string>("relative"), {}}) {
        setHome(noHome);
        EXPECT_EQ(MoveEvent().send(refTo(path)), dirNFErr);
    }
    setHome(home().path());
    EXPECT_EQ(MoveEvent().send(refTo("/proc/version")), errFSUnknownCall);
    EXPECT_EQ(readFile(path), "kept");
}

TEST_F(Trash, NeverTakesWhatWasPutInPlaceOfTheItem) {
    const std::string path = newFile("item", "first");
    const FSRef ref = refTo(path);
    fs::rename(newFile("other", "second"), path);
    EXPECT_EQ(MoveEvent().send(ref), errFSBadFSRef);
    EXPECT_EQ(readFile(path), "second");
    fs::remove(path);
    EXPECT_EQ(MoveEvent().send(ref), errFSBadFSRef);
}

TEST_F(Trash, WaitsNoLongerThanTheTimeOut) {
    const FSRef ref = refTo(newFile("item", "late"));
    MoveEvent event;
    event.timeout = 12;  // a fifth of a second
    g_trashIsStuck = true;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(event.send(ref), errAETimeout);
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, std::chrono::milliseconds(200));
    EXPECT_LT(waited, std::chrono::seconds(5));

    g_trashIsStuck = false;
    event.timeout = kNoTimeOut;
    EXPECT_EQ(event.send(ref), noErr) << "the move that was given up is not made later";
    EXPECT_EQ(readFile(trash_ + "/files/item"), "late");
}

/// One of the cases above, in a copy of this program whose port has no module beside it.
TEST_F(Trash, SaysThatItsModuleIsMissing) {
    const TempDir folder;
    Dl_info port{};
    ASSERT_NE(dladdr(reinterpret_cast<const void*>(&AESend), &port), 0);
    fs::copy_file(port.dli_fname, folder / "libCvPlatform.so.1");
    const auto result = run({fs::read_symlink("/proc/self/exe"), "--gtest_filter=Trash.WaitsNoLonger*"},
                            {"", "", {{"LD_LIBRARY_PATH", folder.path()}}, {}, 0});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_THAT(result.err, HasSubstr("AESend: the Trash cannot be used: " + folder.path() + "/CvPlatform/CvTrash.so"));
    EXPECT_THAT(result.out, HasSubstr("Which is: " + std::to_string(errFSUnknownCall)));
}

TEST(AppleEvents, RefuseOtherDescriptorsAndInvalidData) {
    AEDesc desc;
    AppleEvent reply;
    ASSERT_EQ(AECreateDesc(typeAppleEvent, "abcd", 4, &desc), noErr);
    AEDesc* const none = nullptr;
    AEDesc spoilt{typeType, nullptr};
    const std::pair<const char*, OSErr> rows[] = {
        {"bytes from nowhere", AECreateDesc(typeType, nullptr, 4, &spoilt)},
        {"less than no bytes", AECreateDesc(typeType, "abcd", -1, &spoilt)},
        {"no place for the descriptor", AECreateDesc(typeType, "abcd", 4, none)},
        {"no descriptor", AEDisposeDesc(none)},
        {"no place for the event", AECreateAppleEvent(kAECoreSuite, kAEMove, &desc, 0, 0, none)},
        {"no target", AECreateAppleEvent(kAECoreSuite, kAEMove, none, 0, 0, &spoilt)},
        {"a parameter for no event", AEPutParamPtr(none, keyDirectObject, typeType, "abcd", 4)},
        {"a parameter from nowhere", AEPutParamPtr(&desc, keyDirectObject, typeType, nullptr, 4)},
        {"a descriptor for no event", AEPutParamDesc(none, keyDirectObject, &desc)},
        {"no descriptor for an event", AEPutParamDesc(&desc, keyDirectObject, none)},
        {"no container", CreateObjSpecifier(cObject, none, formPropertyID, &desc, false, &spoilt)},
        {"no event to send", AESend(none, &reply, kAEWaitReply, kAENormalPriority, 0, nullptr, nullptr)},
        {"no place for the reply", AESend(&desc, none, kAEWaitReply, kAENormalPriority, 0, nullptr, nullptr)},
    };
    for (const auto& [what, error] : rows) {
        EXPECT_EQ(error, paramErr) << what;
    }
    EXPECT_EQ(spoilt.descriptorType, DescType{typeNull});
    EXPECT_EQ(AEPutParamPtr(&desc, keyDirectObject, typeType, "abcd", 4), errAENotAppleEvent);
    EXPECT_EQ(AEPutParamDesc(&desc, keyDirectObject, &desc), errAENotAppleEvent);
    EXPECT_EQ(AESend(&desc, &reply, kAEWaitReply, kAENormalPriority, 0, nullptr, nullptr), errAENotAppleEvent);
    AEDisposeDesc(&desc);
}

}  // namespace
