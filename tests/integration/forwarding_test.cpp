// The passes over the table of every forwarding function: each reaches its
// Java overload with its arguments and delivers the result, with an exception
// of the host's pending; a throwing method is -13 with no output and its
// exception described on standard error; with the methods missing everything
// is -12; before start-up everything is -11. No pass leaves an exception
// pending, and since every pass runs under the JVM's JNI checking, none may
// hold more local references than it frees. Then the methods resolved once
// per class reference.
#include <atomic>
#include <set>
#include <thread>

#include "support/fixture.hpp"

namespace {

// Every row (but those whose name starts with `skip`), with an exception of
// the host's pending before the call: it is discarded, not blamed on the
// call, so the method runs once and its result comes back (a retry would
// repeat it). With `status` 0 a row reaches Java as the table says; with -13
// (every overload scripted to throw) it reaches its first overload only; with
// -12 none. A call that fails writes nothing and keeps the callback. An unload
// forgets the peach wrapper whatever Java did and keeps the management object
// (no "<init>" in its journal), which hands out the wrapper again for the
// next row.
void pass(int status, const std::string &skip = "") {
    JNIEnv *e = threadEnv();
    const jclass hostException = e->FindClass("java/lang/IllegalStateException");
    for (const table::Row &row : table::forwarders()) {
        const std::string function = row.function;
        if (!skip.empty() && function.rfind(skip, 0) == 0) continue;
        // The wrapper again after an unload: a throwing or null getPeachWrapper
        // keeps none (and get is not called), so each handle asks again.
        if (!pwobj && status != VELMORA_STATUS_METHOD_NOT_FOUND) {
            sdk::script("getPeachWrapper", {"throw", "null", "x"});
            sdk::script("get()I", {"5"});
            for (int handle : {-13, -16, 5}) ASSERT_EQ(velmora_peach_handle(), handle) << "after " << function;
            EXPECT_EQ(sdk::journal(), (Journal{kGetWrapper, kGetWrapper, kGetWrapper, "get()I"})) << function;
        }
        std::vector<std::string> lines;
        for (const table::Reached &r : row.reached) {
            sdk::script(r.key(), {status ? "throw" : r.outcome});
            if (!status || (status == VELMORA_STATUS_JAVA_EXCEPTION && lines.empty())) lines.push_back(r.line);
        }
        Buffer b(64);
        const velmora_intermediate_callback callback = velmora_peach_intermediate_callback_fun;
        e->ThrowNew(hostException, "the host's");
        EXPECT_EQ(row.call(b), status ? status : row.result) << function;
        EXPECT_FALSE(e->ExceptionCheck()) << function;
        EXPECT_EQ(sdk::journal(), lines) << function;
        // The thread's account of the failure names the exception or the missing method.
        const std::string key = row.reached[0].key(), name = key.substr(0, key.find('('));
        const std::string named = status == VELMORA_STATUS_JAVA_EXCEPTION ? "scripted failure in " + name
                                                                            : "." + name + " " + key.substr(name.size());
        EXPECT_TRUE(!status || lastFailure().find(named) != std::string::npos) << function << ": " << lastFailure();
        EXPECT_TRUE(!status || velmora_peach_intermediate_callback_fun == callback) << function;
        if (function.rfind("unload", 0) == 0) { EXPECT_TRUE(!pwobj && !pwcls) << function; }
        const std::string expected = row.text && !status ? row.text : std::string(sizeof b.bytes, '#');
        EXPECT_EQ(b.text(), expected) << function;
        EXPECT_EQ(b.len, row.text && !status ? expected.size() + 1 : 64) << function;
    }
    e->DeleteLocalRef(hostException);
}

class Forwarding : public PeachBridge {};

TEST_F(Forwarding, EveryFunctionReachesItsOverloadAndDeliversItsResult) { pass(0); }

// The exception is described on standard error, then cleared.
TEST_F(Forwarding, AThrowingMethodIs13WithNoOutputAndNothingPending) {
    testing::internal::CaptureStderr();
    pass(VELMORA_STATUS_JAVA_EXCEPTION);
    const std::string described = testing::internal::GetCapturedStderr();
    for (std::string method : {"open", "setIntermediateResultHandler"})
        EXPECT_NE(described.find("RuntimeException: scripted failure in " + method), std::string::npos) << method;
    // The thread's account of its last failure (the exception, then its stack)
    // outlives a later success; another thread has an account of its own.
    sdk::reset();
    EXPECT_EQ(velmora_open(), 0);
    EXPECT_EQ(lastFailure().rfind("java.lang.RuntimeException: scripted failure in unload3\n\tat velmora.", 0), 0u);
    std::thread([] { EXPECT_EQ(lastFailure(), ""); }).join();
}

// With the class references pointing at a class without the methods (as with
// an SDK that lacks them), every function is -12 and leaves no
// NoSuchMethodError pending. Pointed back at the classes, under new
// references, every call reaches its method again: none uses a method
// resolved for the class a reference named before.
TEST_F(Forwarding, AMissingMethodIs12AndEachCallUsesTheClassNamedNow) {
    pass(0, "unload");  // every method resolved (an unload would forget them)
    const jobject object = globalClass("java/lang/Object");
    point(cls, object);
    point(pwcls, globalClass("java/lang/Object"));  // the unloads delete it with the wrapper
    pass(VELMORA_STATUS_METHOD_NOT_FOUND);
    point(cls, globalClass("velmora/user/ManagementImpl"));
    threadEnv()->DeleteGlobalRef(object);
    pass(0);
}

// No start-up: -11 everywhere and nothing written, but by two functions that
// explain why in 52 characters and two NULs when there is room for all; no
// Java runtime started. The built-in status texts (velmora.h's) need no Java;
// other codes are Java's to describe.
TEST(ForwardingBeforeStartup, EveryFunctionIs11) {
    const std::set<std::string> explaining = {"getLastErrorMessage", "getPluginConf"};
    const std::string explained("No Error Message available; Java is not initialized.\0\0#", 55);
    for (const table::Row &row : table::forwarders()) {
        const bool explains = explaining.count(row.function) != 0;
        for (std::size_t capacity : {53, 54}) {
            Buffer b(capacity);
            EXPECT_EQ(row.call(b), int64_t{VELMORA_STATUS_JAVA_NOT_INITIALIZED}) << row.function;
            EXPECT_EQ(b.len, explains ? 54 : capacity) << row.function;
            EXPECT_EQ(std::string(b.bytes, 55), explains && capacity == 54 ? explained : std::string(55, '#'))
                << row.function;
        }
    }
    EXPECT_EQ(velmora_getPluginClass("p"), nullptr);
    EXPECT_STREQ(velmora_libraryVersion(), VELMORA_VERSION_STRING);
    Buffer builtIn(64), unknown(64);
    EXPECT_EQ(velmora_describeStatusCode(-24, builtIn.bytes, &builtIn.len), 0);
    EXPECT_EQ(velmora_describeStatusCode(-26, unknown.bytes, &unknown.len), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
    EXPECT_TRUE(unknown.untouched());
}

// Methods are resolved once per class reference (the missing-method pass
// above points the references at another class and back): nothing resolved
// survives the references the library lets go, and calls racing a change of
// reference reach the method or find it missing.

// An unload deletes the wrapper's references; a reference made afterwards may
// reuse the deleted one's value for another class (as HotSpot's next global
// reference does), and must not meet a method resolved for the old one.
TEST_F(PeachBridge, NothingResolvedOutlivesAnUnload) {
    EXPECT_EQ(velmora_peach_setJobs(handle, 1), 0);
    ASSERT_EQ(velmora_unload(0), 0);
    const jobject object = globalClass("java/lang/Object");
    point(pwcls, object);
    point(pwobj, object);
    EXPECT_EQ(velmora_peach_setJobs(handle, 1), VELMORA_STATUS_METHOD_NOT_FOUND);
}

// Host threads call while the test points the class reference back and forth
// between the class (under two references) and one without the method: every
// call reaches the method or finds it missing. Each host calls 50 times, and
// on until both outcomes have happened.
TEST_F(Bridge, ConcurrencyCallsRacingAClassChange) {
    sdk::script("ready", {"7"});
    void *const targets[] = {globalClass("java/lang/Object"), globalClass("velmora/user/ManagementImpl"), cls};
    std::atomic<int> reached{0}, missing{0}, unexpected{0}, done{0};
    std::vector<std::thread> hosts;
    for (int t = 0; t < 4; ++t) {
        hosts.emplace_back([&] {
            for (int i = 0; i < 50 || ((!reached || !missing) && i < 1000000); ++i) {
                const int result = velmora_ready(1);
                reached += result == 7;
                missing += result == VELMORA_STATUS_METHOD_NOT_FOUND;
                unexpected += result != 7 && result != VELMORA_STATUS_METHOD_NOT_FOUND;
            }
            ++done;
        });
    }
    for (int i = 0; done < 4; ++i, std::this_thread::yield()) point(cls, targets[i % 3]);
    point(cls, targets[2]);
    for (std::thread &host : hosts) host.join();
    EXPECT_EQ(unexpected, 0);
    EXPECT_TRUE(reached > 0 && missing > 0) << reached << " reached, " << missing << " missing";
}

}  // namespace
