#include "bridge/state.hpp"

#include "bridge/calls.hpp"

extern "C" {
VELMORA_API void *jvm = nullptr;
VELMORA_API void *env = nullptr;
VELMORA_API void *cls = nullptr;
VELMORA_API void *sgc = nullptr;
VELMORA_API void *pwcls = nullptr;
VELMORA_API void *pwobj = nullptr;
VELMORA_API void *jvmlibHandle = nullptr;
VELMORA_API velmora_intermediate_callback velmora_peach_intermediate_callback_fun = nullptr;
}

namespace velmora::state {

static_assert(sizeof(::velmora_peach_intermediate_callback_fun) == sizeof(void *));
static_assert(std::atomic_ref<velmora_intermediate_callback>::is_always_lock_free);
static_assert(std::atomic_ref<void *>::is_always_lock_free);

namespace {
jclass stringClassRef = nullptr;
jstring emptyStringRef = nullptr;
}  // namespace

MethodSlot resolvedMethods[calls::kRowCount];

void dropResolvedMethods() {
    for (MethodSlot &slot : resolvedMethods) slot.drop();
}

void replaceGlobal(void *&slot, JNIEnv *jenv, jobject localOrNull) {
    jobject old = static_cast<jobject>(slot);
    std::atomic_ref(slot).store(localOrNull ? jenv->NewGlobalRef(localOrNull) : nullptr, std::memory_order_release);
    dropResolvedMethods();
    if (old) jenv->DeleteGlobalRef(old);
}

void forgetPeachWrapper(JNIEnv *jenv) {
    replaceGlobal(::pwcls, jenv, nullptr);
    replaceGlobal(::pwobj, jenv, nullptr);
}

void forgetMachineReferences() {
    for (void **slot : {&::cls, &::sgc, &::pwcls, &::pwobj}) std::atomic_ref(*slot).store(nullptr);
    stringClassRef = nullptr;
    emptyStringRef = nullptr;
    dropResolvedMethods();
}

void keepStringReferences(JNIEnv *jenv) {
    if (!stringClassRef) {
        jclass local = jenv->FindClass("java/lang/String");
        if (local) {
            stringClassRef = static_cast<jclass>(jenv->NewGlobalRef(local));
            jenv->DeleteLocalRef(local);
        }
    }
    if (!emptyStringRef) {
        jstring local = jenv->NewStringUTF("");
        if (local) {
            emptyStringRef = static_cast<jstring>(jenv->NewGlobalRef(local));
            jenv->DeleteLocalRef(local);
        }
    }
    jenv->ExceptionClear();
}

jclass stringClass() { return stringClassRef; }
jstring emptyString() { return emptyStringRef; }

JNIEnv *attachCurrentThread() {
    JavaVM *machine = vm();
    if (!machine) return nullptr;
    JNIEnv *jenv = nullptr;
    if (machine->GetEnv(reinterpret_cast<void **>(&jenv), JNI_VERSION_1_4) == JNI_OK) return jenv;
    jenv = nullptr;
    machine->AttachCurrentThreadAsDaemon(reinterpret_cast<void **>(&jenv), nullptr);
    return jenv;
}

}  // namespace velmora::state
