// Running a peach description: execute, result files, post-processing, done,
// the last error message, and intermediate results delivered to the host's
// C callback through the native method of NativeFunctionCaller.
#include "bridge/frame.hpp"

namespace velmora {
namespace {

// Makes a NativeFunctionCaller whose `func` is bound to the library's native
// method. The binding is renewed on every registration, so a class that was
// reloaded or rebound since still ends up delivering here. Returns 0 with
// *handler set (a local reference of the current frame) or a status.
int newHandlerObject(JNIEnv *e, jobject *handler) {
    jclass caller = e->FindClass(className(calls::callerConstructor.target));
    jmethodID constructor =
        caller ? e->GetMethodID(caller, calls::callerConstructor.method, calls::callerConstructor.signature) : nullptr;
    if (!constructor) {
        e->ExceptionClear();
        return kMethodNotFound;
    }

    jobject object = e->NewObject(caller, constructor);
    if (takeException(e) || !object) return kJavaException;
    const JNINativeMethod binding{const_cast<char *>(calls::callerFunc.method),
                                  const_cast<char *>(calls::callerFunc.signature),
                                  reinterpret_cast<void *>(&velmora_peach_intermediate_callback)};
    const jint registered = e->RegisterNatives(caller, &binding, 1);
    if (takeException(e) || registered != JNI_OK) return kJavaException;
    *handler = object;
    return kOk;
}

int registerHandler(int handle, velmora_intermediate_callback callback) {
    if (!state::peachReady()) return kNotInitialized;
    CallScope scope(8);
    if (const int status = scope.status(); status != kOk) return status;
    JNIEnv *e = scope.env();

    jobject handler = nullptr;
    if (const int status = newHandlerObject(e, &handler); status != kOk) return status;
    const int status = forwardVoid<calls::peach_setIntermediateResultHandler>(handle, ResultHandler{handler});
    // The callback changes only once Java has taken the handler.
    if (status == kOk) state::setCallback(callback);
    return status;
}

}  // namespace
}  // namespace velmora

using namespace velmora;

extern "C" {

VELMORA_API int velmora_peach_execute(int handle) { return forwardInt<calls::peach_execute>(handle); }

VELMORA_API int velmora_peach_nextFile(int handle, char *buf, size_t *len) {
    return forward<calls::peach_nextFile>(zeroOnNull(buf, len), handle);
}

VELMORA_API int velmora_peach_postProcessed(int handle, int value) {
    return forwardVoid<calls::peach_postProcessed>(handle, value);
}

VELMORA_API int velmora_peach_done(int handle) { return forwardVoid<calls::peach_done>(handle); }

VELMORA_API int velmora_peach_getLastErrorMessage(int handle, char *buf, size_t *len) {
    return forward<calls::peach_getLastErrorMessage>(zeroOnNull(buf, len), handle);
}

VELMORA_API int velmora_peach_setIntermediateResultHandler(int handle, velmora_intermediate_callback callback) {
    return registerHandler(handle, callback);
}

// Runs on the SDK's delivering thread, possibly while the host registers
// another callback: the pointer is read once, atomically, so the text goes
// to either the old or the new callback.
VELMORA_API void velmora_peach_intermediate_callback(JNIEnv *jenv, jobject, jstring text) {
    if (!jenv || !text) return;
    const char *chars = jenv->GetStringUTFChars(text, nullptr);
    if (!chars) return;  // the runtime's OutOfMemoryError stays pending for the caller
    if (velmora_intermediate_callback callback = state::callback()) callback(chars);
    jenv->ReleaseStringUTFChars(text, chars);
}

}  // extern "C"
