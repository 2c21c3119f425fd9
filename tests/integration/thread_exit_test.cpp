// Threads that end: every thread the library attached is detached when it
// ends, whichever call attached it, so short-lived host threads leave no Java
// thread behind and the JVM can be destroyed after the start-up thread ended.
// Threads that the host attached itself stay the host's business.
#include <jni.h>
#include <unistd.h>

#include <functional>
#include <thread>

#include "support/fixture.hpp"
#include "support/java_threads.hpp"

namespace {

// A hang in DestroyJavaVM ends the test process instead of the suite's timeout.
constexpr unsigned kHangSeconds = 60;

struct AttachingCall {
    const char *what;
    std::function<int()> call;
    int expected;
};

TEST(ThreadExit, EveryThreadTheLibraryAttachedIsDetachedWhenItEnds) {
    ASSERT_EQ(velmora_init(), 0);
    const AttachingCall calls[] = {
        {"forwarded call", [] { return velmora_ready(1); }, 0},
        {"start-up", [] { return velmora_initJava(); }, 0},
        {"initialiser", [] { return velmora_init(); }, 0},
        {"unload", [] { return velmora_unload(0); }, 0},
        {"peach handle", [] { return velmora_peach_handle(); }, 0},
    };
    constexpr int kThreads = 100;
    for (const AttachingCall &c : calls) {
        const int before = javaThreadCount();
        for (int i = 0; i < kThreads; ++i) {
            int status = -1;
            std::thread([&] { status = c.call(); }).join();
            ASSERT_EQ(status, c.expected) << c.what;
        }
        EXPECT_LE(javaThreadCount(), before) << c.what << ": " << kThreads << " threads ended";
    }
}

TEST(ThreadExit, ThreadsTheHostAttachedStayAttached) {
    ASSERT_EQ(velmora_init(), 0);
    JavaVM *vm = velmora_getJavaVM();
    const int before = javaThreadCount();
    std::thread([&] {
        JNIEnv *jenv = nullptr;
        ASSERT_EQ(vm->AttachCurrentThreadAsDaemon(reinterpret_cast<void **>(&jenv), nullptr), JNI_OK);
        EXPECT_EQ(velmora_ready(1), 0);
    }).join();
    EXPECT_EQ(javaThreadCount(), before + 1);
}

struct EndedStartup {
    const char *what;
    std::function<int()> start;
};

void PrintTo(const EndedStartup &s, std::ostream *os) { *os << s.what; }

class DestroyAfterStartupThreadEnded : public ::testing::TestWithParam<EndedStartup> {};

TEST_P(DestroyAfterStartupThreadEnded, HostDestroyJavaVMReturns) {
    int status = -1;
    std::thread([&] { status = GetParam().start(); }).join();
    ASSERT_EQ(status, 0);
    alarm(kHangSeconds);
    EXPECT_EQ(velmora_getJavaVM()->DestroyJavaVM(), JNI_OK);
    alarm(0);
}

INSTANTIATE_TEST_SUITE_P(ThreadExit, DestroyAfterStartupThreadEnded,
                         ::testing::Values(EndedStartup{"initJava", [] { return velmora_initJava(); }},
                                           EndedStartup{"init", [] { return velmora_init(); }}),
                         [](const auto &info) { return std::string(info.param.what); });

}  // namespace
