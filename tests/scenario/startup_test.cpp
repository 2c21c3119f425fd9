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
#include <sstream>

#include "velmora.h"

namespace fs = std::filesystem;

#define JDK VELMORA_TEST_JDK_HOME
constexpr int kUnready = VELMORA_STATUS_JAVA_NOT_INITIALIZED, kNoMethod = VELMORA_STATUS_METHOD_NOT_FOUND,
              kNoRuntime = VELMORA_STATUS_JVM_LIBRARY_NOT_FOUND;

// The scenario's copy of an exported function, typed from the header.
#define VELMORA_FN(scenario, name) (scenario).symbol<decltype(name)>(#name)
// The directory of an SDK variant's jar.
#define SDK(name) VELMORA_TEST_VARIANTS_DIR "/" name

struct Scenario {
    // `sdk` is the directory of the velmora.jar to use.
    explicit Scenario(const std::string &sdk, const std::string &config) {
        fs::copy_file(fs::canonical(VELMORA_TEST_LIB_DIR "/libvelmora.so"), dir / "libvelmora.so");
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
        return text.find('@') == text.npos ? text : at(text.replace(text.find('@'), 1, dir.string()));
    }

    template <class F> F *symbol(const char *name) const { return reinterpret_cast<F *>(dlsym(handle, name)); }

    // A system property ("<none>" when not set), or without a name the calling
    // thread's account of its last failure; "<failed>" when the call fails.
    std::string text(const char *property = nullptr) const {
        char buf[8192];
        size_t len = sizeof buf;
        const int status = property ? VELMORA_FN(*this, velmora_getJavaSystemProperty)(property, buf, &len)
                                    : VELMORA_FN(*this, velmora_describeLastFailure)(buf, &len);
        return status ? "<failed>" : len ? buf : "<none>";
    }

    fs::path dir = mkdtemp(std::string("/tmp/velmora-scenario-XXXXXX").data());
    void *handle = nullptr;
};

// A scenario: its SDK, VelmoraDLL.conf, JAVA_HOME and PATH ("@" is the
// scenario's directory, where the runner lays out bin/java, a link to the JDK's
// launcher, and fifo/libjvm.so, a FIFO; the locator's own choices and their
// order have unit tests), then what is expected: a text start-up prints on standard output;
// whether the host creates its own machine first (with only the library's class
// path) and whether the runtime library stays loaded; the results of
// velmora_initJava (on a thread that ends before the rest) with the pieces
// ("|" between them) of that thread's account of its failure, of the first
// initialiser, of an initialiser after it (and of start-up again when nothing
// is kept), and of a management call at the end (only an object answers).
struct Case {
    const char *name, *sdk = VELMORA_TEST_LIB_DIR, *config = "", *javaHome = JDK, *path = "@/bin", *printed = "",
               *failure = "";
    bool host = false, loaded = true;
    int startup = 0, init = startup, again = init, open = again ? kUnready : 0;
};

const Case kCases[] = {
    // A destroyed machine cannot be created again in this process.
    {.name = "MissingManagementClass", .sdk = SDK("missing-class"),
     .failure = "velmora/user/ManagementImpl|'@'|-> run: velmora-doctor @/libvelmora.so", .startup = kNoMethod,
     .init = kUnready},
    // The machine is destroyed although the thread that started it has ended.
    {.name = "NoConstructor", .sdk = SDK("no-constructor"), .init = VELMORA_STATUS_NO_CONSTRUCTOR, .again = kUnready},
    {.name = "ConstructorThrows", .sdk = SDK("constructor-throws"), .init = VELMORA_STATUS_INIT_FAILED},
    // The object exists without its initialiser: calls reach it and miss their methods.
    {.name = "NoInitializer", .sdk = SDK("no-initializer"), .init = VELMORA_STATUS_NO_INITIALIZER, .open = kNoMethod},
    {.name = "ConfiguredRuntimeMissing", .config = "JVMPATH=/nonexistent/libjvm.so\n",
     .printed = "/nonexistent/libjvm.so", .failure = "/nonexistent/libjvm.so: cannot open|line 1 of @/VelmoraDLL.conf",
     .loaded = false, .startup = kNoRuntime},
    {.name = "RuntimeWithoutAnEntryPoint", .config = "JVM64PATH=" VELMORA_TEST_FAKE_JVM "\n",
     .printed = "JNI_GetCreatedJavaVMs", .startup = kNoRuntime},
    {.name = "ConfiguredFifo", .config = "JVMPATH=@/fifo/libjvm.so\n", .printed = "@/fifo/libjvm.so", .loaded = false,
     .startup = kNoRuntime},
    {.name = "NoRuntimeAnywhere", .javaHome = "/nonexistent", .path = "/nonexistent", .printed = "libjvm.so",
     .loaded = false, .startup = kNoRuntime},
    {.name = "LauncherLinkOnPath", .javaHome = "/nonexistent"},
    // The library joins the host's machine, whose options stay the host's.
    {.name = "HostMachine", .host = true},
};

void PrintTo(const Case &c, std::ostream *os) { *os << c.name; }
class Startup : public testing::TestWithParam<Case> {};

TEST_P(Startup, ReachesItsState) {
    const Case &c = GetParam();
    alarm(60);  // a hang ends the process
    Scenario s(c.sdk, c.config);
    for (const char *sub : {"bin", "fifo"}) fs::create_directories(s.dir / sub);
    fs::create_symlink(JDK "/bin/java", s.dir / "bin/java");
    ASSERT_EQ(mkfifo((s.dir / "fifo/libjvm.so").c_str(), 0600), 0);
    setenv("JAVA_HOME", s.at(c.javaHome).c_str(), 1);
    setenv("PATH", s.at(c.path).c_str(), 1);
    // A system default runtime would be found.
    if (!*c.config && c.startup == kNoRuntime && fs::exists("/usr/lib/jvm/default-java/lib/server/libjvm.so"))
        GTEST_SKIP();
    std::string option = s.at("-Djava.class.path=@/velmora.jar:@/commons-codec-1.3.jar:@/xmlrpc-2.0.jar");
    JavaVM *machine = nullptr;
    if (c.host) {
        auto *create = reinterpret_cast<decltype(JNI_CreateJavaVM) *>(
            dlsym(dlopen(JDK "/lib/server/libjvm.so", RTLD_NOW), "JNI_CreateJavaVM"));
        JavaVMOption options[1] = {{option.data(), nullptr}};
        JavaVMInitArgs args{JNI_VERSION_1_8, 1, options, JNI_FALSE};
        void *hostEnv;
        ASSERT_EQ(create(&machine, &hostEnv, &args), JNI_OK);
    }

    testing::internal::CaptureStdout();
    // Start-up runs on a thread that has ended (joined with its future) before the rest.
    const auto [started, failure] = std::async(std::launch::async, [&s] {
                                        const int status = VELMORA_FN(s, velmora_initJava)();
                                        return std::make_pair(status, s.text());
                                    }).get();
    EXPECT_EQ(started, c.startup);
    std::istringstream pieces(c.failure);
    for (std::string piece; std::getline(pieces, piece, '|');)
        EXPECT_NE(failure.find(s.at(piece)), std::string::npos) << failure;
    EXPECT_EQ(VELMORA_FN(s, velmora_init)(), c.init);
    EXPECT_EQ(VELMORA_FN(s, velmora_initFile)("f"), c.again);
    const bool kept = c.again != kUnready && c.again != kNoRuntime;
    // Start-up again: the same machine (the host's, if it made one), the management object kept.
    if (!c.host) machine = VELMORA_FN(s, velmora_getJavaVM)();
    EXPECT_EQ(VELMORA_FN(s, velmora_initJava)(), kept ? 0 : c.again);
    EXPECT_EQ(VELMORA_FN(s, velmora_getJavaVM)(), machine);
    const std::string out = testing::internal::GetCapturedStdout();
    // Start-up prints the loader's text, a line at a time.
    EXPECT_TRUE(out.find(s.at(c.printed)) != out.npos && (out.empty() || out.back() == '\n')) << out;
    EXPECT_EQ(*s.symbol<void *>("jvmlibHandle") != nullptr, c.loaded);
    // Once the machine is gone, each call says why it cannot come back.
    EXPECT_TRUE(c.again != kUnready || s.text().find("Only a new process can start Java again") != std::string::npos);
    EXPECT_EQ(VELMORA_FN(s, velmora_open)(), c.open);
    EXPECT_EQ(*s.symbol<void *>("cls") != nullptr, kept);
    JNIEnv *jenv = VELMORA_FN(s, velmora_getJNIEnv)();
    ASSERT_EQ(jenv != nullptr, kept);
    if (!kept) return;

    // A machine the library created has the library's options, a host's machine only the host's.
    EXPECT_EQ("-Djava.class.path=" + s.text("java.class.path"), option);
    EXPECT_EQ(s.text("com.sun.management.jmxremote"), c.host ? "<none>" : "");
    EXPECT_EQ(s.text("java.home"), JDK);
    // -Xmx128M: the heap limit lies just below 128 MiB.
    jclass rt = jenv->FindClass("java/lang/Runtime");
    jobject now = jenv->CallStaticObjectMethod(rt, jenv->GetStaticMethodID(rt, "getRuntime", "()Ljava/lang/Runtime;"));
    const jlong max = jenv->CallLongMethod(now, jenv->GetMethodID(rt, "maxMemory", "()J"));
    EXPECT_EQ(max > 100LL << 20 && max <= 128LL << 20, !c.host) << max;
}

INSTANTIATE_TEST_SUITE_P(Scenarios, Startup, testing::ValuesIn(kCases), [](const auto &i) { return i.param.name; });
