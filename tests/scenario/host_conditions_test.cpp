// Start-up under conditions a host can create: the start-up thread ends
// before a failing initialiser destroys the machine, the library was loaded
// by a relative path and the host changed directory, and runtime library
// candidates that are FIFOs. A hang ends the process through alarm().
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "scenario.hpp"

namespace {

constexpr unsigned kHangSeconds = 60;

TEST(HostConditions, NoConstructorAfterTheStartupThreadEnded) {
    Scenario s(variantJar("no-constructor"));
    int started = -1;
    std::thread([&] { started = VELMORA_FN(s, velmora_initJava)(); }).join();
    ASSERT_EQ(started, 0);
    alarm(kHangSeconds);
    EXPECT_EQ(VELMORA_FN(s, velmora_init)(), VELMORA_STATUS_NO_CONSTRUCTOR);
    alarm(0);
}

TEST(HostConditions, RelativeLibraryPathSurvivesAChangeOfDirectory) {
    char pattern[] = "/tmp/velmora-relative-XXXXXX";
    const fs::path dir = mkdtemp(pattern);
    fs::create_directory(dir / "lib");
    fs::copy_file(fs::canonical(VELMORA_TEST_LIB_DIR "/libvelmora.so"), dir / "lib" / "libvelmora.so");
    fs::copy_file(mainJar(), dir / "lib" / "velmora.jar");
    fs::current_path(dir);
    void *library = dlopen("./lib/libvelmora.so", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    fs::current_path("/");

    auto init = reinterpret_cast<decltype(&velmora_init)>(dlsym(library, "velmora_init"));
    auto open = reinterpret_cast<decltype(&velmora_open)>(dlsym(library, "velmora_open"));
    EXPECT_EQ(init(), 0);
    EXPECT_EQ(open(), 0);
    fs::remove_all(dir);
}

// FIFOs stand where runtime libraries are looked for; the search passes them
// by and start-up ends either with the real runtime or with -22.
TEST(HostConditions, FifoAsConfiguredRuntimeGivesNotFound) {
    Scenario s(mainJar(), "x");  // the configuration is written below
    const fs::path fifo = s.dir() / "libjvm.so";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::ofstream(s.dir() / "VelmoraDLL.conf") << "JVMPATH=" << fifo.string() << "\n";
    alarm(kHangSeconds);
    testing::internal::CaptureStdout();
    EXPECT_EQ(VELMORA_FN(s, velmora_initJava)(), VELMORA_STATUS_JVM_LIBRARY_NOT_FOUND);
    EXPECT_NE(testing::internal::GetCapturedStdout().find(fifo.string()), std::string::npos);
    alarm(0);
}

TEST(HostConditions, FifosUnderJavaHomeArePassedBy) {
    Scenario s(mainJar());
    const fs::path home = s.dir() / "home";
    for (const char *layout : {"jre/lib/amd64/server", "lib/server"}) {
        fs::create_directories(home / layout);
        ASSERT_EQ(mkfifo((home / layout / "libjvm.so").c_str(), 0600), 0);
    }
    setenv("JAVA_HOME", home.c_str(), 1);
    alarm(kHangSeconds);
    EXPECT_EQ(VELMORA_FN(s, velmora_init)(), 0);  // the JDK of the java on PATH
    alarm(0);
}

}  // namespace
