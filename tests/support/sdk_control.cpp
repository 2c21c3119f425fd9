#include "sdk_control.hpp"

#include <atomic>
#include <stdexcept>
#include <utility>

extern "C" JavaVM *velmora_getJavaVM();

namespace sdk {
namespace {

constexpr const char *kSdkClass = "velmora/testing/Sdk";

std::atomic<JavaVMSource> vmSource{&velmora_getJavaVM};

[[noreturn]] void fail(const std::string &what) { throw std::runtime_error("sdk control: " + what); }

JNIEnv *attach() {
    JavaVM *vm = vmSource.load()();
    if (vm == nullptr) fail("no Java VM is running");
    JNIEnv *env = nullptr;
    jint rc = vm->GetEnv(reinterpret_cast<void **>(&env), JNI_VERSION_1_6);
    if (rc == JNI_EDETACHED) rc = vm->AttachCurrentThread(reinterpret_cast<void **>(&env), nullptr);
    if (rc != JNI_OK || env == nullptr) fail("cannot attach the thread to the Java VM");
    return env;
}

std::string utf(JNIEnv *env, jstring text) {
    if (text == nullptr) return {};
    const char *chars = env->GetStringUTFChars(text, nullptr);
    if (chars == nullptr) return {};
    std::string copy(chars);
    env->ReleaseStringUTFChars(text, chars);
    return copy;
}

// Runs `body(env, sdkClass)` inside a local frame. A Java exception pending
// afterwards is printed, cleared and rethrown as std::runtime_error.
template <typename Body>
auto withSdk(const char *operation, Body body) {
    JNIEnv *env = attach();
    if (env->PushLocalFrame(32) != JNI_OK) {
        env->ExceptionClear();
        fail(std::string(operation) + ": no room for local references");
    }
    struct Frame {
        JNIEnv *env;
        ~Frame() { env->PopLocalFrame(nullptr); }
    } frame{env};

    auto check = [&](bool ok, const char *what) {
        if (!env->ExceptionCheck() && ok) return;
        std::string message = std::string(operation) + ": " + what;
        if (jthrowable thrown = env->ExceptionOccurred()) {
            env->ExceptionDescribe();
            env->ExceptionClear();
            jclass object = env->FindClass("java/lang/Object");
            jmethodID toString = object ? env->GetMethodID(object, "toString", "()Ljava/lang/String;") : nullptr;
            if (toString != nullptr) {
                message += ": " + utf(env, static_cast<jstring>(env->CallObjectMethod(thrown, toString)));
            }
            env->ExceptionClear();
        }
        fail(message);
    };

    jclass cls = env->FindClass(kSdkClass);
    check(cls != nullptr, "class velmora.testing.Sdk not found");
    return body(env, cls, check);
}

template <typename Check>
jmethodID method(JNIEnv *env, jclass cls, const char *name, const char *signature, Check &check) {
    jmethodID id = env->GetStaticMethodID(cls, name, signature);
    check(id != nullptr, (std::string("no method Sdk.") + name + signature).c_str());
    return id;
}

}  // namespace

void setJavaVMSource(JavaVMSource source) { vmSource.store(source ? source : &velmora_getJavaVM); }

void reset() {
    withSdk("reset", [](JNIEnv *env, jclass cls, auto &check) {
        env->CallStaticVoidMethod(cls, method(env, cls, "reset", "()V", check));
        check(true, "Sdk.reset threw");
    });
}

void script(const std::string &key, std::vector<std::string> outcomes) {
    withSdk("script", [&](JNIEnv *env, jclass cls, auto &check) {
        jmethodID id = method(env, cls, "script", "(Ljava/lang/String;[Ljava/lang/String;)V", check);
        jclass stringClass = env->FindClass("java/lang/String");
        check(stringClass != nullptr, "no java.lang.String");
        auto count = static_cast<jsize>(outcomes.size());
        jobjectArray array = env->NewObjectArray(count, stringClass, nullptr);
        check(array != nullptr, "cannot create the outcome array");
        for (jsize i = 0; i < count; ++i) {
            jstring text = env->NewStringUTF(outcomes[static_cast<size_t>(i)].c_str());
            check(text != nullptr, "cannot create an outcome string");
            env->SetObjectArrayElement(array, i, text);
            env->DeleteLocalRef(text);
        }
        jstring jkey = env->NewStringUTF(key.c_str());
        check(jkey != nullptr, "cannot create the key string");
        env->CallStaticVoidMethod(cls, id, jkey, array);
        check(true, "Sdk.script threw");
    });
}

std::vector<std::string> journal() {
    std::string text = withSdk("journal", [](JNIEnv *env, jclass cls, auto &check) {
        jobject result = env->CallStaticObjectMethod(cls, method(env, cls, "journal", "()Ljava/lang/String;", check));
        check(true, "Sdk.journal threw");
        return utf(env, static_cast<jstring>(result));
    });
    std::vector<std::string> lines;
    if (text.empty()) return lines;
    size_t start = 0;
    for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
        lines.push_back(text.substr(start, end - start));
    }
    lines.push_back(text.substr(start));
    return lines;
}

std::string lastCall() {
    std::vector<std::string> calls = journal();
    if (calls.size() == 1) return std::move(calls.front());
    std::string message = "expected exactly one SDK call, journal has " + std::to_string(calls.size());
    for (const std::string &call : calls) message += "\n  " + call;
    fail(message);
}

bool lastArgumentCollected() {
    return withSdk("lastArgumentCollected", [](JNIEnv *env, jclass cls, auto &check) {
        jboolean collected =
            env->CallStaticBooleanMethod(cls, method(env, cls, "lastArgumentCollected", "()Z", check));
        check(true, "Sdk.lastArgumentCollected threw");
        return collected == JNI_TRUE;
    });
}

int instances() {
    return withSdk("instances", [](JNIEnv *env, jclass cls, auto &check) {
        jint count = env->CallStaticIntMethod(cls, method(env, cls, "instances", "()I", check));
        check(true, "Sdk.instances threw");
        return static_cast<int>(count);
    });
}

void fire(const char *text) {
    withSdk("fire", [&](JNIEnv *env, jclass cls, auto &check) {
        jmethodID id = method(env, cls, "fire", "(Ljava/lang/String;)V", check);
        jstring jtext = nullptr;
        if (text != nullptr) {
            jtext = env->NewStringUTF(text);
            check(jtext != nullptr, "cannot create the result text");
        }
        env->CallStaticVoidMethod(cls, id, jtext);
        check(true, "Sdk.fire threw");
    });
}

int fireConcurrently(int threads, int perThread, const std::string &prefix) {
    return withSdk("fireConcurrently", [&](JNIEnv *env, jclass cls, auto &check) {
        jmethodID id = method(env, cls, "fireConcurrently", "(IILjava/lang/String;)I", check);
        jstring jprefix = env->NewStringUTF(prefix.c_str());
        check(jprefix != nullptr, "cannot create the prefix");
        jint delivered = env->CallStaticIntMethod(cls, id, static_cast<jint>(threads), static_cast<jint>(perThread),
                                                  jprefix);
        check(true, "Sdk.fireConcurrently threw");
        return static_cast<int>(delivered);
    });
}

}  // namespace sdk
