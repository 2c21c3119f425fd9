// The bridge's state over its life (the host's signal handlers: the Python
// suite's Ctrl-C test; the peach wrapper, fetched again after failures and
// unloads: the forwarding passes): a forked child, initialisers replacing the
// management object, plug-ins, the result callback, threads that end.
#include <sys/wait.h>
#include <unistd.h>

#include <set>
#include <thread>

#include "support/fixture.hpp"

namespace {

// A forked child never touches the copied machine: whatever would reach Java
// is -11 at once (a large list would otherwise wait for ever on the first
// collection), whichever way it enters (forwarding, start-up, the peach
// wrapper, system properties); the parent goes on.
TEST_F(PeachBridge, AForkedChildGets11AtOnce) {
    std::vector<const char *> many(20000, "job");
    const pid_t child = fork();
    if (child == 0) {
        alarm(1);  // a call that hangs ends the child
        char text[64];
        std::size_t len = sizeof text;
        const int results[] = {velmora_createJob3(1, 20000, many.data()), velmora_init(), velmora_peach_handle(),
                               velmora_getJavaSystemProperty("java.version", text, &len)};
        const std::set<int> outcomes(std::begin(results), std::end(results));
        _exit(outcomes == std::set<int>{VELMORA_STATUS_JAVA_NOT_INITIALIZED} ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_EQ(velmora_open(), 0);
}

// Each initialiser makes a new management object and calls its overload on
// it; the result is passed through, and the new object is current whatever
// the initialiser returned. A management object that cannot be made leaves
// none: the previous one is no longer reachable.
TEST_F(Bridge, InitialisersReachTheirOverloadsAndReplaceTheObject) {
    const std::pair<int (*)(), std::string> initialisers[] = {
        {[] { return velmora_initFile("a.conf"); }, "initFile(" S ")I \"a.conf\""},
        {[] { return velmora_initFileWithPassword("b.conf", "secret"); }, "initFile(" S S ")I \"b.conf\", \"secret\""},
        {[] { return velmora_initWithoutFile("h", "u", "p", "d", 5, "x", "y", 8, 9, "j", "k"); },
         "init(" S S S S "I" S S "II" S S ")I \"h\", \"u\", \"p\", \"d\", 5, \"x\", \"y\", 8, 9, \"j\", \"k\""},
        {velmora_init, "initFile()I"},
    };
    for (const auto &[initialise, line] : initialisers) {
        for (const char *outcome : {"-7", "throw"}) {
            sdk::script(line.substr(0, line.find(' ')), {outcome});
            EXPECT_EQ(initialise(), *outcome == '-' ? -7 : VELMORA_STATUS_JAVA_EXCEPTION) << line;
            EXPECT_EQ(velmora_open(), 0);
            EXPECT_EQ(sdk::journal(), (Journal{"<init>()V", line, "open()I"}));
        }
    }
    sdk::script("<init>", {"throw"});
    EXPECT_EQ(velmora_initFile("x"), VELMORA_STATUS_INIT_FAILED);
    EXPECT_FALSE(threadEnv()->ExceptionCheck());
    EXPECT_EQ(velmora_open(), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
    EXPECT_EQ(sdk::journal(), Journal{"<init>()V"});
}

// Plug-ins and their class, handed to the host as local references (getPlugin
// has a row in the forwarding table). A throwing getPlugin leaves no plug-in.
TEST_F(Bridge, Plugins) {
    jobject plugin = nullptr;
    EXPECT_EQ(velmora_getPlugin("p1", &plugin), 0);
    EXPECT_TRUE(threadEnv()->IsInstanceOf(plugin, velmora_getPluginClass("p2")));
    EXPECT_EQ(sdk::journal().back(), "getPluginClass(" S ")Ljava/lang/Class; \"p2\"");
    sdk::script("getPlugin", {"throw"});
    EXPECT_EQ(velmora_getPlugin("p", &plugin), VELMORA_STATUS_JAVA_EXCEPTION);
    EXPECT_EQ(plugin, nullptr);
}

// Intermediate results reach the host's callback through the native method
// bound at each registration (delivery from Java threads while the host re-registers is
// tested through the C++ interface); null callbacks and null texts drop them;
// an unload keeps the callback (a refused registration keeps it too, which the
// forwarding passes check).

// What each host callback received.
Texts inboxes[2];
template <int N> void receive(const char *text) { inboxes[N].emplace_back(text); }
Texts take(int n) { return std::exchange(inboxes[n], {}); }
const velmora_intermediate_callback kCallbacks[] = {receive<0>, receive<1>};

class PeachResults : public PeachBridge {};

TEST_F(PeachResults, NullCallbacksAndNullTextsAreDroppedAndAnUnloadKeepsTheCallback) {
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[0]), 0);
    sdk::fire("one");
    sdk::fire(nullptr);  // a null Java string is skipped, never read
    sdk::fire("");
    EXPECT_EQ(take(0), (Texts{"one", ""}));
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle, nullptr), 0);
    sdk::fire("dropped");
    EXPECT_EQ(take(0), Texts{});
    // Each registration binds the native method anew, so a class whose binding
    // went (as when the SDK loads it again) delivers again. One pointer for the
    // whole process: any description's handler delivers to the callback
    // registered last.
    { const sdk::Frame f; f.env->UnregisterNatives(f.env->FindClass("velmora/user/NativeFunctionCaller")); }
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle + 1, kCallbacks[1]), 0);
    sdk::fire("Grüße\nzwei");
    EXPECT_EQ(take(1), Texts{"Grüße\nzwei"});
    // An unload forgets the wrapper but not the callback.
    ASSERT_EQ(velmora_unload(0), 0);
    EXPECT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[0]), -11);
    sdk::fire("after unload");
    EXPECT_EQ(take(1), Texts{"after unload"});
    EXPECT_EQ(take(0), Texts{});
}

// Threads that end: every thread the library attached is detached when it
// ends, whichever call attached it (forwarding, start-up and initialisers on
// a running machine; the thread that created the machine: the start-up
// scenarios, which destroy the machine after it ended), so short-lived host
// threads leave no Java thread behind.
TEST(ThreadExit, EveryThreadTheLibraryAttachedIsDetachedWhenItEnds) {
    ASSERT_EQ(velmora_init(), 0);
    const int before = sdk::javaThreads();
    for (int (*call)() : {+[] { return velmora_ready(1); }, velmora_initJava, velmora_init}) {
        for (int i = 0; i < 100; ++i) {
            int status = -1;
            std::thread([&] { status = call(); }).join();
            ASSERT_EQ(status, 0);
        }
    }
    EXPECT_LE(sdk::javaThreads(), before);
}

}  // namespace
