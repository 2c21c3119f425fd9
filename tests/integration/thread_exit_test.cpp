// Threads that end: every thread the library attached is detached when it
// ends, whichever call attached it, so short-lived host threads leave no Java
// thread behind and the JVM can be destroyed after the start-up thread ended.
// Threads that the host attached itself stay the host's business.
#include <unistd.h>

#include <thread>

#include "support/fixture.hpp"

namespace {

TEST(ThreadExit, EveryThreadTheLibraryAttachedIsDetachedWhenItEnds) {
    ASSERT_EQ(velmora_init(), 0);
    const std::pair<const char *, int (*)()> calls[] = {
        {"forwarded call", [] { return velmora_ready(1); }},   {"start-up", velmora_initJava},
        {"initialiser", velmora_init},                          {"unload", [] { return velmora_unload(0); }},
        {"peach handle", velmora_peach_handle},
    };
    for (const auto &[what, call] : calls) {
        const int before = sdk::javaThreads();
        for (int i = 0; i < 100; ++i) {
            int status = -1;
            std::thread([&] { status = call(); }).join();
            ASSERT_EQ(status, 0) << what;
        }
        EXPECT_LE(sdk::javaThreads(), before) << what << ": 100 threads ended";
    }
}

TEST(ThreadExit, ThreadsTheHostAttachedStayAttached) {
    ASSERT_EQ(velmora_init(), 0);
    JavaVM *vm = velmora_getJavaVM();
    const int before = sdk::javaThreads();
    std::thread([&] {
        JNIEnv *jenv = nullptr;
        ASSERT_EQ(vm->AttachCurrentThreadAsDaemon(reinterpret_cast<void **>(&jenv), nullptr), JNI_OK);
        EXPECT_EQ(velmora_ready(1), 0);
    }).join();
    EXPECT_EQ(sdk::javaThreads(), before + 1);
}

// The host's DestroyJavaVM returns once the thread that started Java ended (a
// hang ends the test process through alarm() instead of the suite's timeout).
void destroyAfterTheStartupThreadEnded(int (*start)()) {
    int status = -1;
    std::thread([&] { status = start(); }).join();
    ASSERT_EQ(status, 0);
    alarm(60);
    EXPECT_EQ(velmora_getJavaVM()->DestroyJavaVM(), JNI_OK);
    alarm(0);
}
TEST(ThreadExit, DestroyAfterAnInitJavaThreadEnded) { destroyAfterTheStartupThreadEnded(velmora_initJava); }
TEST(ThreadExit, DestroyAfterAnInitThreadEnded) { destroyAfterTheStartupThreadEnded(velmora_init); }

}  // namespace
