// Control of the Java SDK test double (class velmora.testing.Sdk, see
// tests/sdk/java) from the native tests, through the JVM the library runs.
// The calling thread is attached if needed and stays attached. A failure (no
// JVM, a Java exception) throws std::runtime_error, which fails the test.
//
// Journal entries are the method name, the JNI descriptor of the overload
// that ran, then the arguments comma-separated: numbers in decimal,
// true/false, strings quoted (newline and CR as \n and \r), string arrays as
// ["a", null] or [], null as null, other objects by simple class name:
//     createJob(I[Ljava/lang/String;)I 7, ["a", "b"]
#pragma once

#include <jni.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "velmora.h"

namespace sdk {

using Journal = std::vector<std::string>;

// The calling thread's environment inside a local frame of its own, so that
// the references a call makes die with it.
struct Frame {
    JNIEnv *env = nullptr;
    Frame() {
        JavaVM *vm = velmora_getJavaVM();
        if (!vm || vm->AttachCurrentThread(reinterpret_cast<void **>(&env), nullptr) != JNI_OK ||
            env->PushLocalFrame(64) != JNI_OK)
            throw std::runtime_error("sdk control: no Java VM to attach to");
    }
    ~Frame() { env->PopLocalFrame(nullptr); }
    jstring string(const char *text) const { return text ? env->NewStringUTF(text) : nullptr; }

    // Calls the static method Sdk.name(signature) through `invoke`, the JNI
    // call function of its result type.
    template <class Result, class... A>
    Result call(Result (JNIEnv::*invoke)(jclass, jmethodID, ...), const char *name, const char *signature, A... args) {
        jclass cls = env->FindClass("velmora/testing/Sdk");
        jmethodID id = cls ? env->GetStaticMethodID(cls, name, signature) : nullptr;
        const Result result = id ? (env->*invoke)(cls, id, args...) : Result{};
        if (!env->ExceptionCheck() && id) return result;
        env->ExceptionDescribe();
        env->ExceptionClear();
        throw std::runtime_error(std::string("sdk control: Sdk.") + name + " failed");
    }
};

// Forgets journal, scripts and the registered result handler.
inline void reset() { Frame().call(&JNIEnv::CallStaticIntMethod, "reset", "()I"); }

// Outcomes for `key`, a method name (every overload) or name+descriptor
// (which wins), one per call, the last staying in force: "throw", "null" (a
// String or object result), or the value to return. No outcomes removes the
// script. "<init>" scripts the constructors ("throw" only), which journal
// themselves as "<init>()V".
inline void script(const std::string &key, const std::vector<std::string> &outcomes) {
    Frame f;
    jobjectArray array = f.env->NewObjectArray(static_cast<jsize>(outcomes.size()), f.env->FindClass("java/lang/String"), nullptr);
    for (std::size_t i = 0; i < outcomes.size(); ++i)
        f.env->SetObjectArrayElement(array, static_cast<jsize>(i), f.string(outcomes[i].c_str()));
    f.call(&JNIEnv::CallStaticIntMethod, "script", "(Ljava/lang/String;[Ljava/lang/String;)I", f.string(key.c_str()), array);
}

// Calls recorded since the last reset or read, oldest first; clears them.
inline Journal journal() {
    Frame f;
    auto text = static_cast<jstring>(f.call(&JNIEnv::CallStaticObjectMethod, "journal", "()Ljava/lang/String;"));
    const char *chars = f.env->GetStringUTFChars(text, nullptr);
    std::istringstream all(chars);
    f.env->ReleaseStringUTFChars(text, chars);
    Journal lines;
    for (std::string line; std::getline(all, line);) lines.push_back(line);
    return lines;
}

// Live Java threads of the library's JVM, attached native threads included.
inline int javaThreads() { return Frame().call(&JNIEnv::CallStaticIntMethod, "threads", "()I"); }

// Delivers `text` (which may be null) to the handler the library registered,
// on the calling thread. (Deliveries from Java threads of their own: the
// double's peach execute, three per run.)
inline void fire(const char *text) {
    Frame f;
    f.call(&JNIEnv::CallStaticIntMethod, "fire", "(Ljava/lang/String;)I", f.string(text));
}

}  // namespace sdk
