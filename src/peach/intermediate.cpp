// Intermediate results of a peach run, delivered to the host's C callback
// through the native method of NativeFunctionCaller.
#include "bridge/frame.hpp"

namespace velmora {
namespace {

// Makes a NativeFunctionCaller whose `func` is bound to the library's native
// method. The binding is renewed on every registration, so a class that was
// reloaded or rebound since still ends up delivering here. Returns 0 with
// *handler set (a local reference of the current frame) or a status.
int newHandlerObject(JNIEnv *e, jobject *handler) {
    jclass caller = e->FindClass(className(calls::callerConstructor.target));
    if (!caller) return failure::classNotFound(e, className(calls::callerConstructor.target));
    jmethodID constructor = e->GetMethodID(caller, calls::callerConstructor.method, calls::callerConstructor.signature);
    if (!constructor) return failure::methodNotFound(e, calls::callerConstructor);

    jobject object = e->NewObject(caller, constructor);
    if (takeException(e) || !object) return VELMORA_STATUS_JAVA_EXCEPTION;
    const JNINativeMethod binding{const_cast<char *>(calls::callerFunc.method),
                                  const_cast<char *>(calls::callerFunc.signature),
                                  reinterpret_cast<void *>(&velmora_peach_intermediate_callback)};
    const jint registered = e->RegisterNatives(caller, &binding, 1);
    if (takeException(e) || registered != JNI_OK) return VELMORA_STATUS_JAVA_EXCEPTION;
    *handler = object;
    return VELMORA_STATUS_OK;
}

int registerHandler(int handle, velmora_intermediate_callback callback) {
    JNIEnv *e = enter<Target::Peach>();
    if (!e) return VELMORA_STATUS_JAVA_NOT_INITIALIZED;
    const LocalFrame frame(e, 8);
    if (const int status = frame.status(); status != VELMORA_STATUS_OK) return status;

    jobject handler = nullptr;
    if (const int status = newHandlerObject(e, &handler); status != VELMORA_STATUS_OK) return status;
    const int status = forwardValue<calls::peach_setIntermediateResultHandler>(handle, ResultHandler{handler});
    // The callback changes only once Java has taken the handler.
    if (status == VELMORA_STATUS_OK) state::setCallback(callback);
    return status;
}

}  // namespace
}  // namespace velmora

using namespace velmora;

extern "C" {

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
