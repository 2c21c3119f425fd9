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

MethodSlot resolvedMethods[calls::kRowCount];
std::atomic<bool> forkedFromMachine{false};  // set in a forked child when the parent had a machine

void dropResolvedMethods() {
    for (MethodSlot &slot : resolvedMethods) slot.drop();
}

namespace {

jclass stringClassRef = nullptr;

void markForkedChild() {
    if (vm()) forkedFromMachine.store(true, std::memory_order_relaxed);
}
[[maybe_unused]] const int forkWatch = pthread_atfork(nullptr, nullptr, markForkedChild);

void store(void *&slot, void *value) { std::atomic_ref(slot).store(value, std::memory_order_release); }

// Points a reference slot at a new global reference (or null), empties the
// resolved methods, and only then releases the reference it held.
void replaceGlobal(void *&slot, JNIEnv *jenv, jobject localOrNull) {
    jobject old = static_cast<jobject>(slot);
    store(slot, localOrNull ? jenv->NewGlobalRef(localOrNull) : nullptr);
    dropResolvedMethods();
    if (old) jenv->DeleteGlobalRef(old);
}

}  // namespace

void keepRuntimeLibrary(void *handle) { store(::jvmlibHandle, handle); }

void adoptMachine(JavaVM *machine, JNIEnv *startupEnv) {
    store(::jvm, machine);
    store(::env, startupEnv);
}

JNIEnv *becomeStartupThread() {
    JNIEnv *jenv = attachThread(vm(), Attach::NonDaemon);
    store(::env, jenv);
    return jenv;
}

void replaceManagementClass(JNIEnv *jenv, jclass local) { replaceGlobal(::cls, jenv, local); }
void replaceManagement(JNIEnv *jenv, jobject localOrNull) { replaceGlobal(::sgc, jenv, localOrNull); }
void replacePeachClass(JNIEnv *jenv, jclass localOrNull) { replaceGlobal(::pwcls, jenv, localOrNull); }
void replacePeachWrapper(JNIEnv *jenv, jobject localOrNull) { replaceGlobal(::pwobj, jenv, localOrNull); }

void forgetPeachWrapper(JNIEnv *jenv) {
    replacePeachClass(jenv, nullptr);
    replacePeachWrapper(jenv, nullptr);
}

void keepStringClass(JNIEnv *jenv) {
    if (stringClassRef) return;
    if (jclass local = jenv->FindClass("java/lang/String")) {
        stringClassRef = static_cast<jclass>(jenv->NewGlobalRef(local));
        jenv->DeleteLocalRef(local);
    }
    jenv->ExceptionClear();
}

jclass stringClass() { return stringClassRef; }

void tearDownMachine(TearDown order) {
    JavaVM *machine = vm();
    if (order == TearDown::DetachFirst) machine->DetachCurrentThread();
    machine->DestroyJavaVM();
    detachWhenThreadEnds(nullptr);  // nothing is left to detach from
    store(::env, nullptr);
    // The references died with the machine: forgotten, never released.
    for (void **slot : {&::cls, &::sgc, &::pwcls, &::pwobj}) store(*slot, nullptr);
    stringClassRef = nullptr;
    dropResolvedMethods();
}

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

}  // namespace velmora::state
