// Peach handles: the one PeachWrapper of the process, fetched from the
// management object on first use and kept until an unload forgets it.
#include "bridge/frame.hpp"

namespace velmora {
namespace {

// Fetches the wrapper and its class into pwobj/pwcls (global references).
// Returns 0 once both are kept, else a status with pwobj left null so that
// the next call starts over.
int fetchWrapper(JNIEnv *e) {
    jmethodID getWrapper = e->GetMethodID(state::managementClass(), calls::getPeachWrapper.method,
                                          calls::getPeachWrapper.signature);
    if (!getWrapper) return failure::methodNotFound(e, calls::getPeachWrapper);

    jclass wrapperClass = e->FindClass(className(calls::peach_get.target));
    if (!wrapperClass) {
        failure::classNotFound(e, className(calls::peach_get.target));
        state::forgetPeachWrapper(e);
        return VELMORA_STATUS_METHOD_NOT_FOUND;
    }
    state::replacePeachClass(e, wrapperClass);
    e->DeleteLocalRef(wrapperClass);

    jobject wrapper = e->CallObjectMethod(state::management(), getWrapper);
    if (takeException(e)) {
        state::replacePeachWrapper(e, nullptr);
        return VELMORA_STATUS_JAVA_EXCEPTION;
    }
    // A wrapper that is not there cannot be kept; `get` is never called on it.
    if (!wrapper) {
        state::replacePeachWrapper(e, nullptr);
        failure::record("getPeachWrapper() returned null: the SDK has no peach wrapper to give; the next "
                        "velmora_peach_handle asks again.");
        return VELMORA_STATUS_INIT_FAILED;
    }
    state::replacePeachWrapper(e, wrapper);
    e->DeleteLocalRef(wrapper);
    return VELMORA_STATUS_OK;
}

}  // namespace
}  // namespace velmora

using namespace velmora;

extern "C" VELMORA_API int velmora_peach_handle(void) {
    JNIEnv *e = enter<Target::Management>();
    if (!e) return VELMORA_STATUS_JAVA_NOT_INITIALIZED;

    if (!state::peachClass() || !state::peachWrapper()) {
        if (const int status = fetchWrapper(e); status != VELMORA_STATUS_OK) return status;
    }

    jmethodID get = detail::resolve(e, state::peachClass(), calls::peach_get, detail::slotOf<calls::peach_get>());
    if (!get) return failure::methodNotFound(e, calls::peach_get);
    const jint handle = e->CallIntMethod(state::peachWrapper(), get);
    if (takeException(e)) return VELMORA_STATUS_JAVA_EXCEPTION;
    return handle;
}
