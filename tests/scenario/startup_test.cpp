// Start-up scenarios, one per process. Each test gives a copy of libvelmora a
// directory of its own (the scenario's SDK jar as velmora.jar, optionally a
// VelmoraDLL.conf), loads it by a path relative to the working directory and
// then changes directory: the library must still know where it lies.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <jni.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <future>

#include "velmora.h"

namespace fs = std::filesystem;

#define JDK VELMORA_TEST_JDK_HOME
constexpr int kUnready = VELMORA_STATUS_JAVA_NOT_INITIALIZED, kNoMethod = VELMORA_STATUS_METHOD_NOT_FOUND;
constexpr int kNoRuntime = VELMORA_STATUS_JVM_LIBRARY_NOT_FOUND;

// The scenario's copy of an exported function, typed from the header.
#define VELMORA_FN(scenario, name) (scenario).symbol<decltype(name)>(#name)

struct Scenario {
    // `variant` names a jar of build/sdk-variants, the double itself when empty.
    explicit Scenario(const std::string &variant, const std::string &config = {}) {
        char pattern[] = "/tmp/velmora-scenario-XXXXXX";
        dir = mkdtemp(pattern);
        fs::copy_file(fs::canonical(VELMORA_TEST_LIB_DIR "/libvelmora.so"), dir / "libvelmora.so");
        const std::string sdk = variant.empty() ? VELMORA_TEST_LIB_DIR : VELMORA_TEST_VARIANTS_DIR "/" + variant;
        fs::copy_file(sdk + "/velmora.jar", dir / "velmora.jar");
        if (!config.empty()) std::ofstream(dir / "VelmoraDLL.conf") << at(config);
        fs::current_path(dir.parent_path());
        handle = dlopen((dir.filename() / "libvelmora.so").c_str(), RTLD_NOW | RTLD_LOCAL);
        fs::current_path("/");
        if (!handle) ADD_FAILURE() << dlerror();
    }
    ~Scenario() { fs::remove_all(dir); }

    // `text` with every "@" replaced by the scenario's directory.
    std::string at(std::string text) const {
        for (size_t i; (i = text.find('@')) != std::string::npos;) text.replace(i, 1, dir.string());
        return text;
    }

    template <class F> F *symbol(const char *name) const { return reinterpret_cast<F *>(dlsym(handle, name)); }

    std::string property(const char *name) const {
        char buf[4096];
        size_t len = sizeof buf;
        const int status = VELMORA_FN(*this, velmora_getJavaSystemProperty)(name, buf, &len);
        return status ? "<status " + std::to_string(status) + ">" : len == 0 ? "<none>" : std::string(buf);
    }

    fs::path dir;
    void *handle = nullptr;
};

// A scenario: its SDK variant, VelmoraDLL.conf, JAVA_HOME and PATH ("@" is the
// scenario's directory, where the runner lays out bin/java, a link to the JDK's
// launcher; fake/, a JDK whose runtime library lacks an entry point; fifo/, with
// FIFOs where runtime libraries are looked for), then what is expected.
struct Case {
    const char *name, *variant = "", *config = "", *javaHome = JDK, *path = "@/bin";
    const char *printed = "";  // a text start-up prints on standard output
    bool loaded = true;        // the runtime library stays loaded
    int startup = 0;           // velmora_initJava, on a thread that ends before the rest
    int init = startup;        // the first initialiser
    int again = init;          // each initialiser after it
    int open = again ? kUnready : 0;  // a management call at the end: only an object answers
};

const Case kCases[] = {
    // A destroyed machine cannot be created again in this process.
    {.name = "MissingManagementClass", .variant = "missing-class", .startup = kNoMethod, .init = kUnready},
    // The machine is destroyed although the thread that started it has ended.
    {.name = "NoConstructor", .variant = "no-constructor", .init = VELMORA_STATUS_NO_CONSTRUCTOR, .again = kUnready},
    {.name = "ConstructorThrows", .variant = "constructor-throws", .init = VELMORA_STATUS_INIT_FAILED},
    // The object exists without its initialiser: calls reach it and miss their methods.
    {.name = "NoInitializer", .variant = "no-initializer", .init = VELMORA_STATUS_NO_INITIALIZER, .open = kNoMethod},
    {.name = "ConfiguredRuntimeMissing", .config = "JVMPATH=/nonexistent/libjvm.so\n",
     .printed = "/nonexistent/libjvm.so", .loaded = false, .startup = kNoRuntime},
    {.name = "RuntimeWithoutAnEntryPoint", .config = "JVM64PATH=" VELMORA_TEST_FAKE_JVM "\n",
     .printed = "JNI_GetCreatedJavaVMs", .startup = kNoRuntime},
    {.name = "ConfiguredFifo", .config = "JVMPATH=@/fifo/lib/server/libjvm.so\n",
     .printed = "@/fifo/lib/server/libjvm.so", .loaded = false, .startup = kNoRuntime},
    {.name = "NoRuntimeAnywhere", .javaHome = "/nonexistent", .path = "/nonexistent", .printed = "libjvm.so",
     .loaded = false, .startup = kNoRuntime},
    // The first JVM64PATH line wins over JVMPATH lines before and after it; CRLF line ends.
    {.name = "CrLfConfiguration", .config = "JVMPATH=/a\r\nJVM64PATH=" JDK "/lib/server/libjvm.so\r\nJVMPATH=/c\r\n",
     .javaHome = "/nonexistent", .path = "/nonexistent"},
    {.name = "LauncherLinkOnPath", .javaHome = "/nonexistent"},
    // JAVA_HOME is tried before PATH, whose JDK here cannot start anything.
    {.name = "JavaHomeBeforePath", .path = "@/fake/bin"},
    {.name = "FifosUnderJavaHomePassedBy", .javaHome = "@/fifo"},
};

void PrintTo(const Case &c, std::ostream *os) { *os << c.name; }
class Startup : public testing::TestWithParam<Case> {};

TEST_P(Startup, ReachesItsState) {
    const Case &c = GetParam();
    alarm(60);  // a hang ends the process
    Scenario s(c.variant, c.config);
    for (const char *sub : {"bin", "fake/bin", "fake/lib/server", "fifo/jre/lib/amd64/server", "fifo/lib/server"})
        fs::create_directories(s.dir / sub);
    fs::create_symlink(JDK "/bin/java", s.dir / "bin/java");
    std::ofstream(s.dir / "fake/bin/java") << "";
    fs::copy_file(VELMORA_TEST_FAKE_JVM, s.dir / "fake/lib/server/libjvm.so");
    for (const char *fifo : {"fifo/jre/lib/amd64/server/libjvm.so", "fifo/lib/server/libjvm.so"})
        ASSERT_EQ(mkfifo((s.dir / fifo).c_str(), 0600), 0);
    setenv("JAVA_HOME", s.at(c.javaHome).c_str(), 1);
    setenv("PATH", s.at(c.path).c_str(), 1);
    if (!*c.config && c.startup == kNoRuntime && fs::exists("/usr/lib/jvm/default-java/lib/server/libjvm.so"))
        GTEST_SKIP() << "a system default runtime exists";

    testing::internal::CaptureStdout();
    // Start-up runs on a thread that has ended (joined with its future) before the rest.
    EXPECT_EQ(std::async(std::launch::async, VELMORA_FN(s, velmora_initJava)).get(), c.startup);
    EXPECT_EQ(VELMORA_FN(s, velmora_init)(), c.init);
    EXPECT_EQ(VELMORA_FN(s, velmora_initFile)("f"), c.again);
    EXPECT_EQ(VELMORA_FN(s, velmora_initWithoutFile)("a", "b", "c", "d", 1, "f", "g", 2, 3, "j", "k"), c.again);
    const std::string printed = testing::internal::GetCapturedStdout();
    // Start-up prints the loader's text, a line at a time.
    EXPECT_NE(printed.find(s.at(c.printed)), std::string::npos) << printed;
    EXPECT_TRUE(printed.empty() || printed.back() == '\n');
    EXPECT_EQ(*s.symbol<void *>("jvmlibHandle") != nullptr, c.loaded);
    EXPECT_EQ(VELMORA_FN(s, velmora_open)(), c.open);
    JNIEnv *jenv = VELMORA_FN(s, velmora_getJNIEnv)();
    const bool kept = c.again != kUnready && c.again != kNoRuntime;
    EXPECT_EQ(*s.symbol<void *>("cls") != nullptr, kept);
    ASSERT_EQ(jenv != nullptr, kept);
    if (!kept) return;

    // The machine the library created has the library's options.
    EXPECT_EQ(s.property("java.class.path"), s.at("@/velmora.jar:@/commons-codec-1.3.jar:@/xmlrpc-2.0.jar"));
    EXPECT_EQ(s.property("com.sun.management.jmxremote"), "");
    EXPECT_EQ(s.property("java.home"), JDK);
    // -Xmx128M: the heap limit lies just below 128 MiB.
    jclass rt = jenv->FindClass("java/lang/Runtime");
    jobject now = jenv->CallStaticObjectMethod(rt, jenv->GetStaticMethodID(rt, "getRuntime", "()Ljava/lang/Runtime;"));
    const jlong max = jenv->CallLongMethod(now, jenv->GetMethodID(rt, "maxMemory", "()J"));
    EXPECT_TRUE(max > 100LL << 20 && max <= 128LL << 20) << max;
    // Start-up again while ready: no second machine, the management object kept.
    JavaVM *machine = VELMORA_FN(s, velmora_getJavaVM)();
    EXPECT_EQ(VELMORA_FN(s, velmora_initJava)(), 0);
    EXPECT_EQ(VELMORA_FN(s, velmora_getJavaVM)(), machine);
    EXPECT_EQ(VELMORA_FN(s, velmora_open)(), c.open);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, Startup, testing::ValuesIn(kCases), [](const auto &i) { return i.param.name; });

// The host started its own JVM before the library: the library joins it and
// its options do not apply.
TEST(HostMachine, IsJoinedWithItsOwnOptions) {
    Scenario s("");
    auto create = reinterpret_cast<jint (*)(JavaVM **, void **, void *)>(
        dlsym(dlopen(JDK "/lib/server/libjvm.so", RTLD_NOW), "JNI_CreateJavaVM"));
    ASSERT_NE(create, nullptr);
    std::string classPath = "-Djava.class.path=" + (s.dir / "velmora.jar").string();
    JavaVMOption options[2] = {{classPath.data(), nullptr}, {const_cast<char *>("-Dhost.owned=yes"), nullptr}};
    JavaVMInitArgs args{JNI_VERSION_1_8, 2, options, JNI_FALSE};
    JavaVM *host = nullptr;
    void *hostEnv = nullptr;
    ASSERT_EQ(create(&host, &hostEnv, &args), JNI_OK);

    EXPECT_EQ(VELMORA_FN(s, velmora_init)(), 0);
    EXPECT_EQ(VELMORA_FN(s, velmora_getJavaVM)(), host);
    EXPECT_EQ(s.property("host.owned"), "yes");
    EXPECT_EQ(s.property("com.sun.management.jmxremote"), "<none>");
    EXPECT_EQ(VELMORA_FN(s, velmora_open)(), 0);
}

// Without a PeachWrapper class no wrapper is kept, a retry fails the same way,
// and no Java error is left behind for the management calls.
TEST(PeachVariants, MissingWrapperClassKeepsNothing) {
    Scenario s("peach-missing");
    ASSERT_EQ(VELMORA_FN(s, velmora_init)(), 0);
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(VELMORA_FN(s, velmora_peach_handle)(), kNoMethod);
        for (const char *global : {"pwcls", "pwobj"}) EXPECT_EQ(*s.symbol<void *>(global), nullptr);
        EXPECT_EQ(VELMORA_FN(s, velmora_peach_setName)(0, "x"), kUnready);
    }
    EXPECT_FALSE(VELMORA_FN(s, velmora_getJNIEnv)()->ExceptionCheck());
    EXPECT_EQ(VELMORA_FN(s, velmora_open)(), 0);
}

// Without NativeFunctionCaller a registration is refused and the callback kept.
TEST(PeachVariants, MissingHandlerClassKeepsTheCallback) {
    Scenario s("handler-missing");
    ASSERT_EQ(VELMORA_FN(s, velmora_init)(), 0);
    const int handle = VELMORA_FN(s, velmora_peach_handle)();
    ASSERT_GE(handle, 0);
    const velmora_intermediate_callback kept = [](const char *) {}, other = [](const char *) { std::abort(); };
    auto &callback = *s.symbol<velmora_intermediate_callback>("velmora_peach_intermediate_callback_fun");
    callback = kept;  // as an earlier registration would have left it
    for (velmora_intermediate_callback wanted : {other, velmora_intermediate_callback{}}) {
        EXPECT_EQ(VELMORA_FN(s, velmora_peach_setIntermediateResultHandler)(handle, wanted), kNoMethod);
        EXPECT_EQ(callback, kept);
    }
    EXPECT_EQ(VELMORA_FN(s, velmora_peach_done)(handle), 0);
}
