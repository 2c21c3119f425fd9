#include "bridge/state.hpp"

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

void replaceGlobal(void *&slot, JNIEnv *jenv, jobject localOrNull) {
    jobject old = static_cast<jobject>(slot);
    slot = localOrNull ? jenv->NewGlobalRef(localOrNull) : nullptr;
    if (old) jenv->DeleteGlobalRef(old);
}

void forgetPeachWrapper(JNIEnv *jenv) {
    replaceGlobal(::pwcls, jenv, nullptr);
    replaceGlobal(::pwobj, jenv, nullptr);
}

void forgetMachineReferences() {
    ::cls = nullptr;
    ::sgc = nullptr;
    ::pwcls = nullptr;
    ::pwobj = nullptr;
}

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
