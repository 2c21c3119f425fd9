// The peach builder against the SDK double: the cached wrapper and its
// retries, the guard before the first handle and after an unload, every
// function's Java method, overload and arguments, string lists and string
// results at their boundaries.
#include <string>
#include <thread>
#include <vector>

#include "peach_calls.hpp"

using Journal = std::vector<std::string>;

namespace {

const std::string kGetWrapper = "getPeachWrapper()Lvelmora/user/PeachWrapper;";
const std::string kGet = "get()I";

// Every row fails with `status` before Java is called; string results
// write neither buffer nor length.
void expectAllFail(int status, const char *when) {
    SCOPED_TRACE(when);
    for (const peach::Call &c : peach::all()) EXPECT_EQ(c.call(peach::kHandle), status) << c.function;
    for (auto get : {velmora_peach_nextFile, velmora_peach_getLastErrorMessage}) {
        Buffer b(64);
        EXPECT_EQ(get(peach::kHandle, b.bytes, &b.len), status);
        EXPECT_TRUE(b.untouched());
        EXPECT_EQ(b.len, 64u);
    }
}

}  // namespace

TEST(PeachGuard, RefusedBeforeTheFirstHandleAndAfterAnUnload) {
    EXPECT_EQ(velmora_peach_handle(), -11);
    expectAllFail(-11, "before start-up");

    ASSERT_EQ(velmora_init(), 0);
    sdk::reset();
    expectAllFail(-11, "initialised, no handle yet");
    EXPECT_EQ(sdk::journal(), Journal{});

    sdk::script("get", {"5"});
    ASSERT_EQ(velmora_peach_handle(), 5);
    EXPECT_EQ(sdk::journal(), (Journal{kGetWrapper, kGet}));
    EXPECT_EQ(velmora_peach_setName(5, "x"), 0);
    sdk::journal();

    ASSERT_EQ(velmora_unload(0), 0);
    EXPECT_EQ(pwobj, nullptr);
    EXPECT_EQ(pwcls, nullptr);
    expectAllFail(-11, "after unload");
    EXPECT_EQ(sdk::journal(), Journal{"unload(Z)I false"});

    // The wrapper is fetched anew.
    EXPECT_EQ(velmora_peach_handle(), 5);
    EXPECT_EQ(sdk::journal(), (Journal{kGetWrapper, kGet}));
    EXPECT_EQ(velmora_peach_done(5), 0);
}

class PeachWrapperCache : public Bridge {};

TEST_F(PeachWrapperCache, FetchedOnceKeptGloballyAndRetriedAfterFailures) {
    // A throwing getPeachWrapper: -13, nothing usable kept, get never called.
    sdk::script("getPeachWrapper", {"throw"});
    sdk::script("get", {"5", "-7"});
    EXPECT_EQ(velmora_peach_handle(), -13);
    EXPECT_EQ(pwobj, nullptr);
    EXPECT_EQ(sdk::journal(), Journal{kGetWrapper});
    EXPECT_EQ(velmora_peach_setName(5, "x"), -11);

    // A null wrapper without an exception: -16, again nothing kept.
    sdk::script("getPeachWrapper", {"null"});
    EXPECT_EQ(velmora_peach_handle(), -16);
    EXPECT_EQ(pwobj, nullptr);
    EXPECT_EQ(sdk::journal(), Journal{kGetWrapper});
    EXPECT_EQ(velmora_peach_setName(5, "x"), -11);

    // The retry succeeds; later calls ask only for a handle, whatever it is.
    sdk::script("getPeachWrapper", {});
    EXPECT_EQ(velmora_peach_handle(), 5);
    EXPECT_EQ(sdk::journal(), (Journal{kGetWrapper, kGet}));
    EXPECT_EQ(velmora_peach_handle(), -7);
    EXPECT_EQ(sdk::journal(), Journal{kGet});

    // A failing get leaves the wrapper in place.
    sdk::script("get", {"throw", "6"});
    EXPECT_EQ(velmora_peach_handle(), -13);
    EXPECT_EQ(velmora_peach_handle(), 6);
    EXPECT_EQ(sdk::journal(), (Journal{kGet, kGet}));
    {
        peach::ForeignWrapperClass noMethods;
        EXPECT_EQ(velmora_peach_handle(), -12);
    }
    EXPECT_EQ(velmora_peach_handle(), 6);
    EXPECT_EQ(sdk::journal(), Journal{kGet});

    // Both references outlive the thread that fetched them.
    EXPECT_EQ(peach::jni()->GetObjectRefType(static_cast<jobject>(pwobj)), JNIGlobalRefType);
    EXPECT_EQ(peach::jni()->GetObjectRefType(static_cast<jobject>(pwcls)), JNIGlobalRefType);
    int fromOtherThread = 1;
    std::thread([&] { fromOtherThread = velmora_peach_setJobs(6, 2); }).join();
    EXPECT_EQ(fromOtherThread, 0);
    EXPECT_EQ(sdk::lastCall(), "setJobs(II)V 6, 2");
}

class PeachCalls : public PeachBridge {};

TEST_F(PeachCalls, EveryFunctionReachesItsOwnJavaMethod) {
    ASSERT_EQ(handle, peach::kHandle);
    for (const peach::Call &c : peach::all()) {
        SCOPED_TRACE(c.function);
        if (c.outcome) sdk::script(peach::method(c), {c.outcome});
        EXPECT_EQ(c.call(handle), c.result);
        EXPECT_EQ(sdk::lastCall(), c.journal);
    }
    // A handle the SDK never issued is passed through as it is.
    EXPECT_EQ(velmora_peach_setJobs(-1, 0), 0);
    EXPECT_EQ(sdk::lastCall(), "setJobs(II)V -1, 0");
}

TEST_F(PeachCalls, MissingMethodsAndExceptionsLeaveNothingPending) {
    {
        peach::ForeignWrapperClass noMethods;
        expectAllFail(-12, "no method found");
        EXPECT_FALSE(peach::jni()->ExceptionCheck());
    }
    EXPECT_EQ(sdk::journal(), Journal{});

    // Each method throwing: -13 after the call reached it, nothing pending.
    for (const peach::Call &c : peach::all()) {
        SCOPED_TRACE(c.function);
        sdk::script(peach::method(c), {"throw"});
        EXPECT_EQ(c.call(handle), -13);
        EXPECT_EQ(sdk::lastCall(), c.journal);
        EXPECT_FALSE(peach::jni()->ExceptionCheck());
    }
    sdk::reset();
    EXPECT_EQ(velmora_peach_setName(handle, "after"), 0);
}

TEST_F(PeachCalls, StringListsInBothFormsAndDirectoryBeforeTheArray) {
    const char *files[] = {"a.in", "b.in", "c.in"};
    const char *emptyText[] = {""};
    const std::string names = "setJobFileNames(I[Ljava/lang/String;)V 5, ";
    const std::string add = "addJobFile(I[Ljava/lang/String;)V 5, ";
    const std::string withDir = "addJobFileWithDir(ILjava/lang/String;[Ljava/lang/String;)V 5, ";
    struct Case {
        const char *what;
        int result;
        std::string journal;  // empty: Java is not called
    };
    const Case cases[] = {
        {"variadic, none", velmora_peach_setJobFileNames(handle, 0), names + "[]"},
        {"array, none, no array", velmora_peach_setJobFileNames3(handle, 0, nullptr), names + "[]"},
        {"array, fewer than given", velmora_peach_setJobFileNames3(handle, 2, files), names + "[\"a.in\", \"b.in\"]"},
        {"array, empty text", velmora_peach_addJobFile3(handle, 1, emptyText), add + "[\"\"]"},
        {"dir, variadic, none", velmora_peach_addJobFileWithDir(handle, "/d", 0), withDir + "\"/d\", []"},
        {"dir, variadic", velmora_peach_addJobFileWithDir(handle, "/d", 2, "x", "y"),
         withDir + "\"/d\", [\"x\", \"y\"]"},
        // lists that cannot be read never reach Java
        {"variadic, negative", velmora_peach_setJobFileNames(handle, -1), ""},
        {"array, negative", velmora_peach_addJobFile3(handle, -2, files), ""},
        {"array, positive, no array", velmora_peach_addJobFile3(handle, 1, nullptr), ""},
        {"dir, array, negative", velmora_peach_addJobFileWithDir3(handle, "/d", -1, files), ""},
    };
    // The calls above ran in order; the journal holds what reached Java.
    Journal reached = sdk::journal();
    Journal expected;
    for (const Case &c : cases) {
        EXPECT_EQ(c.result, c.journal.empty() ? -13 : 0) << c.what;
        if (!c.journal.empty()) expected.push_back(c.journal);
    }
    EXPECT_EQ(reached, expected);
}

TEST_F(PeachCalls, StringResultsAtTheirBoundaries) {
    for (auto get : {velmora_peach_nextFile, velmora_peach_getLastErrorMessage}) {
        const char *method = get == velmora_peach_nextFile ? "nextFile" : "getLastErrorMessage";
        struct Case {
            const char *outcome;
            std::size_t capacity;
            int result;
            std::size_t len;   // on return
            const char *text;  // in the buffer, or nullptr: untouched
        };
        const Case cases[] = {
            {"abcdefghij", 10, -23, 11, nullptr},
            {"abcdefghij", 11, 0, 11, "abcdefghij"},
            {"abcdefghij", 0, -23, 11, nullptr},
            {"Grüße", 7, -23, 8, nullptr},  // counted in bytes
            {"Grüße", 8, 0, 8, "Grüße"},
            {"", 0, -23, 1, nullptr},
            {"", 1, 0, 1, ""},
            {"null", 64, 0, 0, nullptr},
            {"null", 0, 0, 0, nullptr},
            {"throw", 64, -13, 64, nullptr},
        };
        for (const Case &c : cases) {
            SCOPED_TRACE(std::string(c.outcome) + " into " + std::to_string(c.capacity));
            sdk::script(method, {c.outcome});
            Buffer b(c.capacity);
            EXPECT_EQ(get(handle, b.bytes, &b.len), c.result);
            EXPECT_EQ(b.len, c.len);
            if (c.text) {
                EXPECT_EQ(b.text(), c.text);
            } else {
                EXPECT_TRUE(b.untouched());
            }
        }
        // A null buffer holds nothing but still learns the size.
        std::size_t len = 64;
        sdk::script(method, {"abc"});
        EXPECT_EQ(get(handle, nullptr, &len), -23);
        EXPECT_EQ(len, 4u);
    }
}
