// Start-up and initialisation, one scenario per process: failure codes,
// configuration, the options of a created JVM, joining a running JVM and the
// runtime search for current JDK layouts.
#include <jni.h>
#include <stdlib.h>

#include <string>

#include "scenario.hpp"

namespace {

const std::string kJdkRuntime = VELMORA_TEST_JDK_HOME "/lib/server/libjvm.so";

std::string property(const Scenario &s, const char *name) {
    char buf[4096];
    size_t len = sizeof buf;
    const int status = VELMORA_FN(s, velmora_getJavaSystemProperty)(name, buf, &len);
    if (status != 0) return "<status " + std::to_string(status) + ">";
    return len == 0 ? "<none>" : std::string(buf);
}

TEST(StartupFailure, MissingManagementClassDestroysTheMachine) {
    Scenario s(variantJar("missing-class"));
    EXPECT_EQ(VELMORA_FN(s, velmora_initJava)(), VELMORA_STATUS_METHOD_NOT_FOUND);
    EXPECT_EQ(VELMORA_FN(s, velmora_getJNIEnv)(), nullptr);
    EXPECT_EQ(*s.symbol<void *>("cls"), nullptr);
    EXPECT_EQ(VELMORA_FN(s, velmora_open)(), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
    // A destroyed machine cannot be created again in this process.
    EXPECT_EQ(VELMORA_FN(s, velmora_init)(), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
}

struct InitCase {
    const char *variant;
    int init;
    int open;
    bool runtimeKept;
};

class InitialiserFailure : public ::testing::TestWithParam<InitCase> {};

TEST_P(InitialiserFailure, ReturnsItsCodeAndLeavesTheDefinedState) {
    const InitCase c = GetParam();
    Scenario s(variantJar(c.variant));
    EXPECT_EQ(VELMORA_FN(s, velmora_init)(), c.init);
    EXPECT_EQ(VELMORA_FN(s, velmora_open)(), c.open);
    EXPECT_EQ(VELMORA_FN(s, velmora_getJNIEnv)() != nullptr, c.runtimeKept);
    if (c.runtimeKept) {
        // Every initialiser reports the same way, and no exception is left pending.
        EXPECT_EQ(VELMORA_FN(s, velmora_initFile)("f"), c.init);
        EXPECT_EQ(VELMORA_FN(s, velmora_initWithoutFile)("a", "b", "c", "d", 1, "f", "g", 2, 3, "j", "k"), c.init);
        EXPECT_EQ(property(s, "java.class.path").find(s.dir().string()), 0u);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Variants, InitialiserFailure,
    ::testing::Values(InitCase{"no-constructor", VELMORA_STATUS_NO_CONSTRUCTOR, VELMORA_STATUS_JAVA_NOT_INITIALIZED, false},
                      InitCase{"constructor-throws", VELMORA_STATUS_INIT_FAILED, VELMORA_STATUS_JAVA_NOT_INITIALIZED, true},
                      // The object exists without its initialiser: calls reach it and miss their methods.
                      InitCase{"no-initializer", VELMORA_STATUS_NO_INITIALIZER, VELMORA_STATUS_METHOD_NOT_FOUND, true}),
    [](const auto &info) {
        std::string name = info.param.variant;
        std::erase(name, '-');
        return name;
    });

TEST(StartupFailure, ConfiguredRuntimeThatDoesNotExist) {
    Scenario s(mainJar(), "JVMPATH=/nonexistent/libjvm.so\n");
    testing::internal::CaptureStdout();
    EXPECT_EQ(VELMORA_FN(s, velmora_init)(), VELMORA_STATUS_JVM_LIBRARY_NOT_FOUND);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_NE(printed.find("/nonexistent/libjvm.so"), std::string::npos) << printed;
    EXPECT_EQ(printed.back(), '\n');
    EXPECT_EQ(*s.symbol<void *>("jvmlibHandle"), nullptr);
    EXPECT_EQ(VELMORA_FN(s, velmora_getJNIEnv)(), nullptr);
}

TEST(StartupFailure, RuntimeLibraryWithoutAnEntryPoint) {
    Scenario s(mainJar(), "JVM64PATH=" VELMORA_TEST_FAKE_JVM "\n");
    testing::internal::CaptureStdout();
    EXPECT_EQ(VELMORA_FN(s, velmora_initJava)(), VELMORA_STATUS_JVM_LIBRARY_NOT_FOUND);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_NE(printed.find("JNI_GetCreatedJavaVMs"), std::string::npos) << printed;
    EXPECT_NE(*s.symbol<void *>("jvmlibHandle"), nullptr);
}

TEST(Startup, CreatedMachineHasTheLibraryOptions) {
    Scenario s(mainJar(), "JVMPATH=/a\r\nJVM64PATH=" + kJdkRuntime + "\r\nJVMPATH=/c\r\n");
    ASSERT_EQ(VELMORA_FN(s, velmora_initJava)(), 0);
    const std::string dir = s.dir().string();
    EXPECT_EQ(property(s, "java.class.path"),
              dir + "/velmora.jar:" + dir + "/commons-codec-1.3.jar:" + dir + "/xmlrpc-2.0.jar");
    EXPECT_EQ(property(s, "com.sun.management.jmxremote"), "");
    // -Xmx128M: the heap limit lies just below 128 MiB.
    JNIEnv *jenv = VELMORA_FN(s, velmora_getJNIEnv)();
    jclass runtime = jenv->FindClass("java/lang/Runtime");
    jobject current = jenv->CallStaticObjectMethod(runtime, jenv->GetStaticMethodID(runtime, "getRuntime", "()Ljava/lang/Runtime;"));
    const jlong max = jenv->CallLongMethod(current, jenv->GetMethodID(runtime, "maxMemory", "()J"));
    EXPECT_GT(max, 100LL << 20);
    EXPECT_LE(max, 128LL << 20);
    // Start-up again while ready: no second machine, and an initialiser still works.
    JavaVM *machine = VELMORA_FN(s, velmora_getJavaVM)();
    EXPECT_EQ(VELMORA_FN(s, velmora_initJava)(), 0);
    EXPECT_EQ(VELMORA_FN(s, velmora_getJavaVM)(), machine);
    EXPECT_EQ(VELMORA_FN(s, velmora_init)(), 0);
    EXPECT_EQ(VELMORA_FN(s, velmora_open)(), 0);
}

// The host started its own JVM before the library: the library joins it and
// its options do not apply.
TEST(Startup, JoinsTheMachineAlreadyRunning) {
    Scenario s(mainJar());
    void *runtime = dlopen(kJdkRuntime.c_str(), RTLD_NOW);
    ASSERT_NE(runtime, nullptr);
    auto create = reinterpret_cast<jint (*)(JavaVM **, void **, void *)>(dlsym(runtime, "JNI_CreateJavaVM"));
    std::string classPath = "-Djava.class.path=" + (s.dir() / "velmora.jar").string();
    JavaVMOption options[2] = {{classPath.data(), nullptr}, {const_cast<char *>("-Dhost.owned=yes"), nullptr}};
    JavaVMInitArgs args{JNI_VERSION_1_8, 2, options, JNI_FALSE};
    JavaVM *host = nullptr;
    JNIEnv *hostEnv = nullptr;
    ASSERT_EQ(create(&host, reinterpret_cast<void **>(&hostEnv), &args), JNI_OK);

    EXPECT_EQ(VELMORA_FN(s, velmora_init)(), 0);
    EXPECT_EQ(VELMORA_FN(s, velmora_getJavaVM)(), host);
    EXPECT_EQ(property(s, "host.owned"), "yes");
    EXPECT_EQ(property(s, "com.sun.management.jmxremote"), "<none>");
    EXPECT_EQ(VELMORA_FN(s, velmora_open)(), 0);
}

// JAVA_HOME names no runtime: the launcher on PATH, reached through a link,
// leads to a current JDK's lib/server/libjvm.so.
TEST(RuntimeSearch, FollowsTheLauncherLinkOnPath) {
    Scenario s(mainJar());
    fs::create_directory(s.dir() / "bin");
    fs::create_symlink(VELMORA_TEST_JDK_HOME "/bin/java", s.dir() / "bin" / "java");
    setenv("JAVA_HOME", "/nonexistent", 1);
    setenv("PATH", (s.dir() / "bin").c_str(), 1);
    ASSERT_EQ(VELMORA_FN(s, velmora_init)(), 0);
    EXPECT_EQ(property(s, "java.home"), VELMORA_TEST_JDK_HOME);
}

// JAVA_HOME is tried before the launchers on PATH: the JDK on PATH here has a
// runtime library that cannot start anything.
TEST(RuntimeSearch, JavaHomeComesBeforePath) {
    Scenario s(mainJar());
    fs::create_directories(s.dir() / "jdk/bin");
    fs::create_directories(s.dir() / "jdk/lib/server");
    std::ofstream(s.dir() / "jdk/bin/java") << "";
    fs::copy_file(VELMORA_TEST_FAKE_JVM, s.dir() / "jdk/lib/server/libjvm.so");
    setenv("JAVA_HOME", VELMORA_TEST_JDK_HOME, 1);
    setenv("PATH", (s.dir() / "jdk/bin").c_str(), 1);
    ASSERT_EQ(VELMORA_FN(s, velmora_init)(), 0);
    EXPECT_EQ(property(s, "java.home"), VELMORA_TEST_JDK_HOME);
}

TEST(RuntimeSearch, NoRuntimeAnywhere) {
    setenv("JAVA_HOME", "/nonexistent", 1);
    setenv("PATH", "/nonexistent", 1);
    Scenario s(mainJar());
    if (fs::exists("/usr/lib/jvm/default-java/lib/server/libjvm.so")) GTEST_SKIP() << "a system default runtime exists";
    testing::internal::CaptureStdout();
    EXPECT_EQ(VELMORA_FN(s, velmora_initJava)(), VELMORA_STATUS_JVM_LIBRARY_NOT_FOUND);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("libjvm.so"), std::string::npos);
}

}  // namespace
