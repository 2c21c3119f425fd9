#include "sdk_control.hpp"

#include <jni.h>

#include <stdexcept>
#include <type_traits>

#include "velmora.h"

namespace sdk {
namespace {

[[noreturn]] void fail(const std::string &what) { throw std::runtime_error("sdk control: " + what); }

// The calling thread's environment inside a local frame of its own, so that
// the references a helper makes die with it.
struct Frame {
    JNIEnv *env = nullptr;
    Frame() {
        JavaVM *vm = velmora_getJavaVM();
        if (vm == nullptr || vm->AttachCurrentThread(reinterpret_cast<void **>(&env), nullptr) != JNI_OK ||
            env->PushLocalFrame(64) != JNI_OK) {
            fail("no Java VM to attach to");
        }
    }
    ~Frame() { env->PopLocalFrame(nullptr); }
    jstring string(const char *text) const { return text ? env->NewStringUTF(text) : nullptr; }
};

// Calls the static method Sdk.name(signature) through `invoke`, the JNI call
// function of its result type.
template <class Result, class... A>
Result call(const Frame &f, Result (JNIEnv::*invoke)(jclass, jmethodID, ...), const char *name,
            const char *signature, A... args) {
    jclass cls = f.env->FindClass("velmora/testing/Sdk");
    jmethodID id = cls ? f.env->GetStaticMethodID(cls, name, signature) : nullptr;
    if constexpr (std::is_void_v<Result>) {
        if (id) (f.env->*invoke)(cls, id, args...);
    }
    std::conditional_t<std::is_void_v<Result>, int, Result> result{};
    if constexpr (!std::is_void_v<Result>) {
        if (id) result = (f.env->*invoke)(cls, id, args...);
    }
    if (f.env->ExceptionCheck() || !id) {
        f.env->ExceptionDescribe();
        f.env->ExceptionClear();
        fail(std::string("Sdk.") + name + " failed");
    }
    if constexpr (!std::is_void_v<Result>) return result;
}

}  // namespace

void reset() { call(Frame(), &JNIEnv::CallStaticVoidMethod, "reset", "()V"); }

void script(const std::string &key, std::vector<std::string> outcomes) {
    Frame f;
    jobjectArray array =
        f.env->NewObjectArray(static_cast<jsize>(outcomes.size()), f.env->FindClass("java/lang/String"), nullptr);
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        f.env->SetObjectArrayElement(array, static_cast<jsize>(i), f.string(outcomes[i].c_str()));
    }
    call(f, &JNIEnv::CallStaticVoidMethod, "script", "(Ljava/lang/String;[Ljava/lang/String;)V",
         f.string(key.c_str()), array);
}

std::vector<std::string> journal() {
    Frame f;
    auto text = static_cast<jstring>(call(f, &JNIEnv::CallStaticObjectMethod, "journal", "()Ljava/lang/String;"));
    const char *chars = f.env->GetStringUTFChars(text, nullptr);
    const std::string all(chars);
    f.env->ReleaseStringUTFChars(text, chars);
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < all.size();) {
        std::size_t end = all.find('\n', start);
        if (end == std::string::npos) end = all.size();
        lines.push_back(all.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

std::string lastCall() {
    std::vector<std::string> calls = journal();
    if (calls.size() == 1) return calls.front();
    std::string message = "expected exactly one SDK call, journal has " + std::to_string(calls.size());
    for (const std::string &c : calls) message += "\n  " + c;
    fail(message);
}

bool lastArgumentCollected() {
    return call(Frame(), &JNIEnv::CallStaticBooleanMethod, "lastArgumentCollected", "()Z") == JNI_TRUE;
}

int instances() { return call(Frame(), &JNIEnv::CallStaticIntMethod, "instances", "()I"); }

void fire(const char *text) {
    Frame f;
    call(f, &JNIEnv::CallStaticVoidMethod, "fire", "(Ljava/lang/String;)V", f.string(text));
}

int fireConcurrently(int threads, int perThread, const std::string &prefix) {
    Frame f;
    return call(f, &JNIEnv::CallStaticIntMethod, "fireConcurrently", "(IILjava/lang/String;)I", jint{threads},
                jint{perThread}, f.string(prefix.c_str()));
}

}  // namespace sdk
