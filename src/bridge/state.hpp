// The process-wide bridge state. The exported variables are plain pointers
// (hosts may read them); the library reads them through these accessors.
#pragma once

#include <jni.h>

#include <atomic>

#include "velmora.h"

namespace velmora::state {

inline JavaVM *vm() { return static_cast<JavaVM *>(::jvm); }
inline JNIEnv *startupEnv() { return static_cast<JNIEnv *>(::env); }
inline jclass managementClass() { return static_cast<jclass>(::cls); }
inline jobject management() { return static_cast<jobject>(::sgc); }
inline jclass peachClass() { return static_cast<jclass>(::pwcls); }
inline jobject peachWrapper() { return static_cast<jobject>(::pwobj); }

// The guard of every management call: management object, class and a
// started runtime, tested in this order.
inline bool managementReady() { return ::sgc && ::cls && ::env; }
// The guard of every peach call.
inline bool peachReady() { return ::pwobj && ::pwcls && ::env; }

// Replaces a global-reference slot, releasing the reference it held.
void replaceGlobal(void *&slot, JNIEnv *jenv, jobject localOrNull);
// Forgets the peach wrapper (unload); releases its global references.
void forgetPeachWrapper(JNIEnv *jenv);
// Forgets every reference held into a machine that no longer exists.
void forgetMachineReferences();

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

// Detaches the calling thread now.
void detachCurrentThread(JavaVM *machine);

}  // namespace velmora::state
