// The bridge core against a real JVM and the SDK double: status texts, the
// guard before start-up, result kinds, string results at their boundaries,
// argument kinds, initialisers, runtime access and concurrent host threads.
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "support/fixture.hpp"

namespace {

struct BuiltIn {
    int code;
    const char *text;
};
const BuiltIn kBuiltIns[] = {
    {0, "OK"},
    {-11, "Java is not initialized"},
    {-12, "Java method could not be found"},
    {-13, "Uncaught exception thrown from Java"},
    {-14, "Unable to find the constructor of Management Interface"},
    {-15, "Unable to find the initializer of Management Interface"},
    {-16, "Unable to initialize Management Interface"},
    {-17, "Unknown error"},
    {-18, "Unable to find Java"},
    {-19, "Unable to find Java version"},
    {-20, "Unable to find Java keypath"},
    {-21, "Unable to find Java runtime library location"},
    {-22, "Unable to find Java runtime library"},
    {-23, "String buffer is too small."},
    {-24, "File index is out of bounds."},
    {-25, "VARIANT type is invalid, BSTR expected."},
};

// Before any start-up: nothing reaches Java, and only the functions that
// promise output write any.
TEST(BeforeStartup, EveryCallIsRefused) {
    for (const BuiltIn &b : kBuiltIns) {
        const std::size_t bytes = std::strlen(b.text) + 1;
        Buffer small(bytes - 1);
        EXPECT_EQ(velmora_describeStatusCode(b.code, small.bytes, &small.len), VELMORA_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(small.len, bytes);
        EXPECT_TRUE(small.untouched());
        Buffer exact(bytes);
        EXPECT_EQ(velmora_describeStatusCode(b.code, exact.bytes, &exact.len), 0);
        EXPECT_EQ(exact.text(), b.text);
        EXPECT_EQ(exact.len, bytes);
    }
    for (int code : {-5, -1, 1, -26}) {
        Buffer b(64);
        EXPECT_EQ(velmora_describeStatusCode(code, b.bytes, &b.len), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
        EXPECT_TRUE(b.untouched());
        EXPECT_EQ(b.len, 64u);
    }

    EXPECT_EQ(velmora_open(), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
    EXPECT_EQ(velmora_actionWait(1), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
    EXPECT_EQ(velmora_unload(1), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
    EXPECT_EQ(velmora_getPluginClass("p"), nullptr);
    EXPECT_EQ(velmora_getJNIEnv(), nullptr);
    EXPECT_EQ(velmora_getJavaVM(), nullptr);
    velmora_debug();
    velmora_debug2();

    Buffer login(64);
    EXPECT_EQ(velmora_getUserLogin(login.bytes, &login.len), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
    EXPECT_TRUE(login.untouched());
    Buffer property(64);
    EXPECT_EQ(velmora_getJavaSystemProperty("java.version", property.bytes, &property.len), -11);
    EXPECT_TRUE(property.untouched());

    // The not-initialised text: 52 characters and two NULs, only when 54 bytes fit.
    for (auto call : {+[](char *b, size_t *l) { return velmora_getLastErrorMessage(b, l); },
                      +[](char *b, size_t *l) { return velmora_getPluginConf("p", "k", b, l); }}) {
        Buffer tight(53);
        EXPECT_EQ(call(tight.bytes, &tight.len), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
        EXPECT_EQ(tight.len, 54u);
        EXPECT_TRUE(tight.untouched());
        Buffer room(54);
        EXPECT_EQ(call(room.bytes, &room.len), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
        EXPECT_EQ(room.len, 54u);
        EXPECT_EQ(room.text(), "No Error Message available; Java is not initialized.");
        EXPECT_EQ(room.bytes[52], '\0');
        EXPECT_EQ(room.bytes[53], '\0');
        EXPECT_EQ(room.bytes[54], '#');
    }
}

TEST_F(Bridge, ResultKindsAndExceptions) {
    sdk::script("ready", {"-7", "2147483647"});
    EXPECT_EQ(velmora_ready(1), -7);
    EXPECT_EQ(velmora_ready(1), 2147483647);
    sdk::script("actionWait", {"true", "false"});
    EXPECT_EQ(velmora_actionWait(5), 1);
    EXPECT_EQ(velmora_actionWait(5), 0);
    sdk::journal();

    // A throwing method gives -13 and leaves nothing pending: the next call works.
    sdk::script("open", {"throw", "4"});
    EXPECT_EQ(velmora_open(), VELMORA_STATUS_JAVA_EXCEPTION);
    EXPECT_EQ(velmora_open(), 4);
    Buffer b(64);
    sdk::script("getUserLogin", {"throw"});
    EXPECT_EQ(velmora_getUserLogin(b.bytes, &b.len), VELMORA_STATUS_JAVA_EXCEPTION);
    EXPECT_TRUE(b.untouched());
    EXPECT_EQ(b.len, 64u);
}

TEST_F(Bridge, ArgumentKindsReachJavaAsGiven) {
    struct Case {
        std::function<int()> call;
        const char *journal;
    };
    const Case cases[] = {
        {[] { return velmora_setLogLevel("debug"); }, R"(setLogLevel(Ljava/lang/String;)I "debug")"},
        {[] { return velmora_setLogLevel(nullptr); }, "setLogLevel(Ljava/lang/String;)I null"},
        {[] { return velmora_setLogLevel(""); }, R"(setLogLevel(Ljava/lang/String;)I "")"},
        {[] { return velmora_actionWait(int64_t{1} << 40); }, "actionWait(J)Z 1099511627776"},
        {[] { return velmora_actionWait(-1); }, "actionWait(J)Z -1"},
        {[] { return velmora_unload(0); }, "unload(Z)I false"},
        {[] { return velmora_unload(2); }, "unload(Z)I true"},
        {[] { return velmora_unload2(1, 0); }, "unload(ZZ)I true, false"},
        {[] { return velmora_unload3(0, 255); }, "unload3(ZZ)I false, true"},
        {[] { return velmora_stopWaitingBG(-3); }, "stopWaitingBG(I)I -3"},
        // Plain UTF-8 outside the BMP arrives whole, as a surrogate pair.
        {[] { return velmora_setLogLevel("a\xF0\x9F\x98\x80z"); },
         "setLogLevel(Ljava/lang/String;)I \"a\xED\xA0\xBD\xED\xB8\x80z\""},
    };
    for (const Case &c : cases) {
        EXPECT_GE(c.call(), 0) << c.journal;
        EXPECT_EQ(sdk::lastCall(), c.journal);
    }
}

TEST_F(Bridge, StringResultRules) {
    // A 10-byte text: 10 bytes of room are too few, 11 are enough.
    sdk::script("getTempDir", {"/tmp/abcde"});
    Buffer ten(10);
    EXPECT_EQ(velmora_getTempDir(ten.bytes, &ten.len), VELMORA_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(ten.len, 11u);
    EXPECT_TRUE(ten.untouched());
    Buffer eleven(11);
    EXPECT_EQ(velmora_getTempDir(eleven.bytes, &eleven.len), 0);
    EXPECT_EQ(eleven.text(), "/tmp/abcde");
    EXPECT_EQ(eleven.len, 11u);
    // Asking for the size with no buffer at all.
    size_t need = 0;
    EXPECT_EQ(velmora_getTempDir(nullptr, &need), VELMORA_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(need, 11u);
    EXPECT_EQ(velmora_getTempDir(nullptr, nullptr), VELMORA_STATUS_BUFFER_TOO_SMALL);

    // empty-on-null: "" needs one byte.
    sdk::script("getTempDir", {"null"});
    Buffer none(0);
    EXPECT_EQ(velmora_getTempDir(none.bytes, &none.len), VELMORA_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(none.len, 1u);
    EXPECT_TRUE(none.untouched());
    Buffer one(1);
    EXPECT_EQ(velmora_getTempDir(one.bytes, &one.len), 0);
    EXPECT_EQ(one.len, 1u);
    EXPECT_EQ(one.text(), "");
    sdk::script("getLastErrorMessage", {"null"});
    Buffer message(0);
    EXPECT_EQ(velmora_getLastErrorMessage(message.bytes, &message.len), VELMORA_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(message.len, 1u);

    // zero-on-null: no text at all, buffer untouched.
    Buffer missing(64);
    EXPECT_EQ(velmora_getJavaSystemProperty("no.such.property", missing.bytes, &missing.len), 0);
    EXPECT_EQ(missing.len, 0u);
    EXPECT_TRUE(missing.untouched());
    Buffer empty(64);
    EXPECT_EQ(velmora_getJavaSystemProperty("com.sun.management.jmxremote", empty.bytes, &empty.len), 0);
    EXPECT_EQ(empty.len, 1u);
    EXPECT_EQ(empty.text(), "");
    Buffer version(4);
    EXPECT_EQ(velmora_getJavaSystemProperty("java.class.version", version.bytes, &version.len), -23);
    EXPECT_EQ(version.len, 5u);  // "61.0" (or "69.0") and the NUL
    EXPECT_EQ(velmora_getJavaSystemProperty(nullptr, version.bytes, &version.len), VELMORA_STATUS_JAVA_EXCEPTION);

    // Supplementary characters come back in modified UTF-8 (6 bytes each).
    sdk::script("getUserLogin", {"x\xED\xA0\xBD\xED\xB8\x80"});
    Buffer login(64);
    EXPECT_EQ(velmora_getUserLogin(login.bytes, &login.len), 0);
    EXPECT_EQ(login.len, 8u);

    // Codes without a built-in text are described by Java.
    sdk::journal();
    sdk::script("describeStatusCode", {"remote failure", "null"});
    Buffer described(64);
    EXPECT_EQ(velmora_describeStatusCode(-5, described.bytes, &described.len), 0);
    EXPECT_EQ(described.text(), "remote failure");
    EXPECT_EQ(sdk::journal().front(), "describeStatusCode(I)Ljava/lang/String; -5");
    Buffer nullText(64);
    EXPECT_EQ(velmora_describeStatusCode(7, nullText.bytes, &nullText.len), 0);
    EXPECT_EQ(nullText.len, 1u);
    sdk::journal();
    Buffer builtIn(64);
    EXPECT_EQ(velmora_describeStatusCode(-24, builtIn.bytes, &builtIn.len), 0);
    EXPECT_TRUE(sdk::journal().empty());
}

TEST_F(Bridge, InitialisersReachTheirOverloadsAndReplaceTheObject) {
    EXPECT_EQ(velmora_initFile("a.conf"), 0);
    EXPECT_EQ(velmora_initFileWithPassword("b.conf", "secret"), 0);
    EXPECT_EQ(velmora_initWithoutFile("h", "u", "p", "d", 5, "x", "y", 8, 9, "j", "k"), 0);
    EXPECT_EQ(velmora_init(), 0);
    const std::vector<std::string> expected = {
        R"(initFile(Ljava/lang/String;)I "a.conf")",
        R"(initFile(Ljava/lang/String;Ljava/lang/String;)I "b.conf", "secret")",
        "init(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;ILjava/lang/String;"
        "Ljava/lang/String;IILjava/lang/String;Ljava/lang/String;)I "
        R"("h", "u", "p", "d", 5, "x", "y", 8, 9, "j", "k")",
        "initFile()I",
    };
    EXPECT_EQ(sdk::journal(), expected);
    EXPECT_EQ(sdk::instances(), 4);

    // The Java initialiser's result is passed through, and the new object is
    // current whatever it returned.
    JavaVM *machine = velmora_getJavaVM();
    sdk::script("initFile", {"-7"});
    EXPECT_EQ(velmora_init(), -7);
    sdk::script("initFile", {"throw"});
    EXPECT_EQ(velmora_initFile("x"), VELMORA_STATUS_JAVA_EXCEPTION);
    EXPECT_EQ(velmora_open(), 0);
    EXPECT_EQ(velmora_getJavaVM(), machine);
    EXPECT_EQ(velmora_initJava(), 0);
    EXPECT_EQ(sdk::instances(), 6);
}

TEST_F(Bridge, UnloadKeepsTheManagementObject) {
    EXPECT_EQ(velmora_unload(1), 0);
    Buffer dir(64);
    sdk::script("getTempDir", {"/t"});
    EXPECT_EQ(velmora_getTempDir(dir.bytes, &dir.len), 0);
    EXPECT_EQ(sdk::instances(), 0);
    sdk::script("unload3", {"throw"});
    EXPECT_EQ(velmora_unload3(1, 1), VELMORA_STATUS_JAVA_EXCEPTION);
}

TEST_F(Bridge, Plugins) {
    jobject plugin = nullptr;
    EXPECT_EQ(velmora_getPlugin("p1", &plugin), 0);
    EXPECT_NE(plugin, nullptr);
    JNIEnv *jenv = nullptr;
    velmora_getJavaVM()->GetEnv(reinterpret_cast<void **>(&jenv), JNI_VERSION_1_4);
    jclass pluginClass = velmora_getPluginClass("p2");
    ASSERT_NE(pluginClass, nullptr);
    EXPECT_TRUE(jenv->IsInstanceOf(plugin, pluginClass));
    EXPECT_EQ(velmora_getPlugin(nullptr, nullptr), 0);

    sdk::script("getPlugin", {"null", "throw"});
    jobject other = plugin;
    EXPECT_EQ(velmora_getPlugin("p", &other), 0);
    EXPECT_EQ(other, nullptr);
    other = plugin;
    EXPECT_EQ(velmora_getPlugin("p", &other), VELMORA_STATUS_JAVA_EXCEPTION);
    EXPECT_EQ(other, nullptr);
    sdk::script("getPluginClass", {"throw"});
    EXPECT_EQ(velmora_getPluginClass("p"), nullptr);

    sdk::script("getPluginConf", {"value"});
    Buffer conf(64);
    EXPECT_EQ(velmora_getPluginConf("plugin", "key", conf.bytes, &conf.len), 0);
    EXPECT_EQ(conf.text(), "value");
    EXPECT_EQ(sdk::journal().back(),
              R"(getPluginConf(Ljava/lang/String;Ljava/lang/String;)Ljava/lang/String; "plugin", "key")");
    jenv->DeleteLocalRef(plugin);
    jenv->DeleteLocalRef(pluginClass);
}

// Host threads call at once; each gets its own environment and its own results.
TEST_F(Bridge, ConcurrentHostThreads) {
    sdk::script("getUserLogin", {"someone"});
    constexpr int kThreads = 8;
    constexpr int kCalls = 2000;
    std::vector<int> failures(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, &failures] {
            for (int i = 0; i < kCalls; ++i) {
                char buf[16];
                size_t len = sizeof buf;
                if (velmora_getUserLogin(buf, &len) != 0 || std::string(buf) != "someone") ++failures[t];
                if (velmora_ready(t) != 0) ++failures[t];
            }
        });
    }
    for (auto &th : threads) th.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(failures[t], 0) << "thread " << t;
    EXPECT_EQ(sdk::journal().size(), std::size_t{2 * kThreads * kCalls});
}

}  // namespace
