#include "sdk_control.hpp"

#include <jni.h>

#include <sstream>
#include <stdexcept>

#include "velmora.h"

namespace sdk {
namespace {

[[noreturn]] void fail(const std::string &what) { throw std::runtime_error("sdk control: " + what); }

// The calling thread's environment inside a local frame of its own, so that
// the references a call makes die with it.
struct Frame {
    JNIEnv *env = nullptr;
    Frame() {
        JavaVM *vm = velmora_getJavaVM();
        if (!vm || vm->AttachCurrentThread(reinterpret_cast<void **>(&env), nullptr) != JNI_OK ||
            env->PushLocalFrame(64) != JNI_OK)
            fail("no Java VM to attach to");
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
        if (env->ExceptionCheck() || !id) {
            env->ExceptionDescribe();
            env->ExceptionClear();
            fail(std::string("Sdk.") + name + " failed");
        }
        return result;
    }
    jint fire(const char *text, jint threads, jint perThread) {
        return call(&JNIEnv::CallStaticIntMethod, "fire", "(Ljava/lang/String;II)I", string(text), threads, perThread);
    }
};

}  // namespace

void reset() { Frame().call(&JNIEnv::CallStaticIntMethod, "reset", "()I"); }

void script(const std::string &key, std::vector<std::string> outcomes) {
    Frame f;
    jclass string = f.env->FindClass("java/lang/String");
    jobjectArray array = f.env->NewObjectArray(static_cast<jsize>(outcomes.size()), string, nullptr);
    for (std::size_t i = 0; i < outcomes.size(); ++i)
        f.env->SetObjectArrayElement(array, static_cast<jsize>(i), f.string(outcomes[i].c_str()));
    f.call(&JNIEnv::CallStaticIntMethod, "script", "(Ljava/lang/String;[Ljava/lang/String;)I", f.string(key.c_str()),
           array);
}

std::vector<std::string> journal() {
    Frame f;
    auto text = static_cast<jstring>(f.call(&JNIEnv::CallStaticObjectMethod, "journal", "()Ljava/lang/String;"));
    const char *chars = f.env->GetStringUTFChars(text, nullptr);
    std::istringstream all(chars);
    f.env->ReleaseStringUTFChars(text, chars);
    std::vector<std::string> lines;
    for (std::string line; std::getline(all, line);) lines.push_back(line);
    return lines;
}

std::string lastCall() {
    const std::vector<std::string> calls = journal();
    if (calls.size() == 1) return calls.front();
    std::string message = "expected exactly one SDK call, journal has " + std::to_string(calls.size());
    for (const std::string &c : calls) message += "\n  " + c;
    fail(message);
}

int javaThreads() { return Frame().call(&JNIEnv::CallStaticIntMethod, "threads", "()I"); }
void fire(const char *text) { Frame().fire(text, 0, 0); }
int fireConcurrently(int threads, int perThread, const std::string &prefix) {
    return Frame().fire(prefix.c_str(), threads, perThread);
}

}  // namespace sdk
