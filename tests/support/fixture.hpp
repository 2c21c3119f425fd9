// Fixtures for the integration suites: a started bridge with the SDK double
// scripted to defaults and its journal empty.
#pragma once

#include <gtest/gtest.h>
#include <jni.h>

#include <atomic>

#include "support/sdk_control.hpp"
#include "tables/forwarders.hpp"

using sdk::Journal;
using Texts = std::vector<std::string>;
// The journal line of the management object handing out the peach wrapper.
inline const std::string kGetWrapper = "getPeachWrapper()Lvelmora/user/PeachWrapper;";

// The calling thread's own JNI environment (null when it is not attached).
inline JNIEnv *threadEnv() {
    JNIEnv *e = nullptr;
    JavaVM *vm = velmora_getJavaVM();
    return vm && vm->GetEnv(reinterpret_cast<void **>(&e), JNI_VERSION_1_6) == JNI_OK ? e : nullptr;
}

// A global reference to the class `name`.
inline jobject globalClass(const char *name) {
    jclass local = threadEnv()->FindClass(name);
    jobject global = threadEnv()->NewGlobalRef(local);
    threadEnv()->DeleteLocalRef(local);
    return global;
}

// How a host points an exported reference elsewhere while calls may run.
inline void point(void *&slot, void *value) { std::atomic_ref(slot).store(value); }

// The calling thread's account of its last failure, read by the rules of
// every string result.
inline std::string lastFailure() {
    std::size_t len = 0;
    EXPECT_EQ(velmora_describeLastFailure(nullptr, &len), VELMORA_STATUS_BUFFER_TOO_SMALL);
    std::string text(len, '#');
    EXPECT_EQ(velmora_describeLastFailure(text.data(), &len), 0);
    EXPECT_EQ(text.size(), len);
    return text.substr(0, len - 1);
}

// The first reference of a new local frame on this thread, compared and never
// used. HotSpot gives a new frame the block of references that the thread
// released last, so the value stays the same over any calls that pop every
// frame they push, and changes once a frame is left open (a leak per call
// that JNI checking does not report).
inline jobject firstOfANewFrame() {
    JNIEnv *e = threadEnv();
    if (!e || e->PushLocalFrame(1) != JNI_OK) return nullptr;
    jobject first = e->NewStringUTF("");
    e->PopLocalFrame(nullptr);
    return first;
}

// A started bridge; no test may leave a local frame of the library open on
// the test's thread.
class Bridge : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(velmora_init(), 0);
        sdk::reset();
        frames = firstOfANewFrame();
    }
    void TearDown() override { EXPECT_EQ(firstOfANewFrame(), frames) << "a local frame was left open"; }
    jobject frames = nullptr;
};

// A started bridge with the peach wrapper fetched; `handle` is a peach handle.
class PeachBridge : public Bridge {
protected:
    void SetUp() override {
        Bridge::SetUp();
        sdk::script("get", {"5"});
        ASSERT_EQ(handle = velmora_peach_handle(), 5);
        sdk::reset();
    }
    int handle = 0;
};
