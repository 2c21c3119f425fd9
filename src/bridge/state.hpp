// The process-wide bridge state. The exported variables are plain pointers
// (hosts may read them); the library reads them through these accessors.
#pragma once

#include <jni.h>

#include <atomic>
#include <cstddef>

#include "velmora.h"

namespace velmora::state {

namespace detail {
// Calls on other threads may read the exported slots while a host points one
// at another class; every read is one untorn load.
template <class T> inline T load(void *&slot) {
    return static_cast<T>(std::atomic_ref(slot).load(std::memory_order_acquire));
}
}  // namespace detail

inline JavaVM *vm() { return detail::load<JavaVM *>(::jvm); }
inline JNIEnv *startupEnv() { return detail::load<JNIEnv *>(::env); }
inline jclass managementClass() { return detail::load<jclass>(::cls); }
inline jobject management() { return detail::load<jobject>(::sgc); }
inline jclass peachClass() { return detail::load<jclass>(::pwcls); }
inline jobject peachWrapper() { return detail::load<jobject>(::pwobj); }

// Whether this process is a child forked from one whose machine had started:
// fork copied the machine's memory but none of its threads, so the copy must
// never be touched (its first collection would wait for ever). Read on every
// call, so inline.
extern std::atomic<bool> forkedFromMachine;
inline bool inForkedChild() { return forkedFromMachine.load(std::memory_order_relaxed); }

// The guard of every management call: management object, class and a
// started runtime, tested in this order.
inline bool managementReady() { return management() && managementClass() && startupEnv(); }
// The guard of every peach call.
inline bool peachReady() { return peachWrapper() && peachClass() && startupEnv(); }

inline void *runtimeLibrary() { return detail::load<void *>(::jvmlibHandle); }

// ---------------------------------------------------------------------------
// The operations that change the bridge state. This module is the only
// writer of the exported variables; each class or object slot holds a global
// reference, and replacing or forgetting one releases the reference it held
// and empties every resolved method (below).

// The loader handle of the runtime library that start-up loaded.
void keepRuntimeLibrary(void *handle);
// The machine that start-up created or joined, and the environment of the
// start-up thread (null when the thread could not join it).
void adoptMachine(JavaVM *machine, JNIEnv *startupEnv);
// Attaches the calling thread to the machine as an ordinary (non-daemon)
// thread and makes it the start-up thread; its environment, or null.
JNIEnv *becomeStartupThread();
// The management class and the management object (local references or null).
void replaceManagementClass(JNIEnv *jenv, jclass local);
void replaceManagement(JNIEnv *jenv, jobject localOrNull);
// The peach wrapper's class and object; forgetPeachWrapper drops both.
void replacePeachClass(JNIEnv *jenv, jclass localOrNull);
void replacePeachWrapper(JNIEnv *jenv, jobject localOrNull);
void forgetPeachWrapper(JNIEnv *jenv);
// The class java/lang/String of the machine (the element class of string
// lists), kept by start-up; null before that.
void keepStringClass(JNIEnv *jenv);
jclass stringClass();

// The one tear-down of a machine that start-up or an initialiser gives up
// on: the calling thread is detached first (DetachFirst) or not, the machine
// is destroyed, and every reference into it is forgotten, so that only a new
// start-up can follow.
enum class TearDown { DetachFirst, DestroyAttached };
void tearDownMachine(TearDown order);

// ---------------------------------------------------------------------------
// Resolved methods: one slot per row of the call table, holding the method ID
// together with the class reference it was resolved against. Any number of
// threads read and fill a slot without a lock: a sequence count makes a
// reader that overlaps a writer see a miss, never half of a pair. Whenever a
// class reference or the machine is replaced or forgotten, every slot is
// emptied (`dropResolvedMethods`).
class MethodSlot {
public:
    // The method resolved against `klass`, or null when the slot holds none.
    jmethodID find(jclass klass) const {
        const unsigned before = sequence_.load(std::memory_order_acquire);
        // Acquire loads keep the second sequence read after the pair's.
        const jclass resolvedOn = klass_.load(std::memory_order_acquire);
        const jmethodID method = method_.load(std::memory_order_acquire);
        const bool stable = (before & 1u) == 0 && sequence_.load(std::memory_order_relaxed) == before;
        return stable && resolvedOn == klass ? method : nullptr;
    }
    // Keeps `method` as resolved against `klass`, unless another thread is
    // writing the slot right now (its pair wins; this call's result is used
    // only by this call).
    void keep(jclass klass, jmethodID method) {
        unsigned sequence = sequence_.load(std::memory_order_relaxed);
        if ((sequence & 1u) == 0 && sequence_.compare_exchange_strong(sequence, sequence + 1, std::memory_order_relaxed))
            write(sequence, klass, method);
    }
    // Empties the slot, waiting out a writer in the middle of its few stores.
    void drop() {
        unsigned sequence = sequence_.load(std::memory_order_relaxed);
        while ((sequence & 1u) != 0 ||
               !sequence_.compare_exchange_weak(sequence, sequence + 1, std::memory_order_relaxed))
            sequence = sequence_.load(std::memory_order_relaxed);
        write(sequence, nullptr, nullptr);
    }

private:
    // Release stores keep the pair after the odd sequence that announces it.
    void write(unsigned sequence, jclass klass, jmethodID method) {
        klass_.store(klass, std::memory_order_release);
        method_.store(method, std::memory_order_release);
        sequence_.store(sequence + 2, std::memory_order_release);
    }

    std::atomic<unsigned> sequence_{0};
    std::atomic<jclass> klass_{nullptr};
    std::atomic<jmethodID> method_{nullptr};
};

// The slots, one per row of the call table, in table order.
extern MethodSlot resolvedMethods[];
inline MethodSlot &resolvedMethod(std::size_t row) { return resolvedMethods[row]; }
// Empties every slot.
void dropResolvedMethods();

inline velmora_intermediate_callback callback() {
    return std::atomic_ref(::velmora_peach_intermediate_callback_fun).load(std::memory_order_acquire);
}
inline void setCallback(velmora_intermediate_callback cb) {
    std::atomic_ref(::velmora_peach_intermediate_callback_fun).store(cb, std::memory_order_release);
}

// Thread attachment. Every thread that the library attaches is detached
// again when it ends, whichever call attached it (a pthread key destructor),
// so that short-lived host threads leave no Java thread behind and a
// non-daemon start-up thread that ended cannot hold up DestroyJavaVM.
// Threads that were attached already (by the host, or by the JVM itself) are
// left as they are.
enum class Attach { Daemon, NonDaemon };

// The calling thread's environment in `machine`, attaching the thread when it
// is not attached yet. Null if it cannot attach.
JNIEnv *attachThread(JavaVM *machine, Attach kind);

// The calling thread's JNI environment, attaching the thread (as a daemon, so
// that a host thread can never hold up the JVM's shutdown) when it is not
// attached yet. Costs one GetEnv on an attached thread. Null if the thread
// cannot attach.
JNIEnv *attachCurrentThread();

// Makes the calling thread, which `machine` already knows (the thread that
// created it), be detached when it ends; null cancels that.
void detachWhenThreadEnds(JavaVM *machine);

}  // namespace velmora::state
