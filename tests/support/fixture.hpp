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

class Bridge : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(velmora_init(), 0);
        sdk::reset();
    }
};

// A started bridge with the peach wrapper fetched; `handle` is a peach handle.
class PeachBridge : public Bridge {
protected:
    void SetUp() override {
        Bridge::SetUp();
        sdk::script("get", {"5"});
        handle = velmora_peach_handle();
        ASSERT_EQ(handle, 5);
        sdk::reset();
    }
    int handle = 0;
};
