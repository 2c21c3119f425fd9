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
    e->ExceptionClear();
    if (!getWrapper) return kMethodNotFound;

    jclass wrapperClass = e->FindClass(className(calls::peach_get.target));
    if (!wrapperClass) {
        e->ExceptionClear();
        state::forgetPeachWrapper(e);
        return kMethodNotFound;
    }
    state::replaceGlobal(::pwcls, e, wrapperClass);
    e->DeleteLocalRef(wrapperClass);

    jobject wrapper = e->CallObjectMethod(state::management(), getWrapper);
    if (takeException(e)) {
        state::replaceGlobal(::pwobj, e, nullptr);
        return kJavaException;
    }
    // A wrapper that is not there cannot be kept; `get` is never called on it.
    if (!wrapper) {
        state::replaceGlobal(::pwobj, e, nullptr);
        return kInitFailed;
    }
    state::replaceGlobal(::pwobj, e, wrapper);
    e->DeleteLocalRef(wrapper);
    return kOk;
}

}  // namespace
}  // namespace velmora

using namespace velmora;

extern "C" VELMORA_API int velmora_peach_handle(void) {
    if (!state::managementReady()) return kNotInitialized;
    JNIEnv *e = state::attachCurrentThread();
    if (!e) return kNotInitialized;

    if (!state::peachClass() || !state::peachWrapper()) {
        if (const int status = fetchWrapper(e); status != kOk) return status;
    }

    jmethodID get = detail::resolve(e, state::peachClass(), calls::peach_get, detail::slotOf<calls::peach_get>());
    if (!get) {
        e->ExceptionClear();
        return kMethodNotFound;
    }
    const jint handle = e->CallIntMethod(state::peachWrapper(), get);
    if (takeException(e)) return kJavaException;
    return handle;
}
