#include "bridge/state.hpp"

#include <pthread.h>

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

namespace {

// Detaches a thread that ends while still attached to `machine`. Runs after
// the JVM's own thread-local data is restored for exactly this purpose, and
// does nothing once the machine is gone or the host detached the thread.
void detachEndingThread(void *machine) {
    auto *vm = static_cast<JavaVM *>(machine);
    JNIEnv *jenv = nullptr;
    if (vm->GetEnv(reinterpret_cast<void **>(&jenv), JNI_VERSION_1_4) == JNI_OK) vm->DetachCurrentThread();
}

// Holds, on each thread that the library attached, the machine to detach it
// from when it ends. Threads that the host attached itself never carry it.
struct AttachedThreads {
    pthread_key_t key{};
    bool usable = pthread_key_create(&key, detachEndingThread) == 0;
};

AttachedThreads &attachedThreads() {
    static AttachedThreads threads;
    return threads;
}

}  // namespace

void detachWhenThreadEnds(JavaVM *machine) {
    AttachedThreads &threads = attachedThreads();
    if (threads.usable) pthread_setspecific(threads.key, machine);
}

JNIEnv *attachThread(JavaVM *machine, Attach kind) {
    JNIEnv *jenv = nullptr;
    if (machine->GetEnv(reinterpret_cast<void **>(&jenv), JNI_VERSION_1_4) == JNI_OK) return jenv;
    jenv = nullptr;
    const jint attached = kind == Attach::Daemon
                              ? machine->AttachCurrentThreadAsDaemon(reinterpret_cast<void **>(&jenv), nullptr)
                              : machine->AttachCurrentThread(reinterpret_cast<void **>(&jenv), nullptr);
    if (attached != JNI_OK) return nullptr;
    detachWhenThreadEnds(machine);
    return jenv;
}

JNIEnv *attachCurrentThread() {
    JavaVM *machine = vm();
    return machine ? attachThread(machine, Attach::Daemon) : nullptr;
}

void detachCurrentThread(JavaVM *machine) {
    machine->DetachCurrentThread();
    detachWhenThreadEnds(nullptr);
}

}  // namespace velmora::state
