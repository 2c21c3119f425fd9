// Unloading and direct access to the runtime: the unload functions, the two
// accessors, Java system properties and plug-ins.
#include "bridge/frame.hpp"

namespace velmora {
namespace {

// Unloading forgets the peach wrapper once the guard has passed, before the
// Java method is even looked up.
template <const CallRow &Row> int unload(Flag first, auto... more) {
    if (JNIEnv *jenv = enter<Target::Management>()) state::forgetPeachWrapper(jenv);
    return forwardValue<Row>(first, more...);
}

// getPlugin stores the reference as soon as the call returns, before the
// exception test, and reports a status. With nowhere to store it, the
// reference is deleted.
struct PluginResult {
    using Value = int;
    static constexpr std::string_view kReturns = returnDescriptor(calls::getPlugin);
    jobject *destination;
    jobject raw = nullptr;
    static Value fail(int status) { return status; }
    Value notInitialized() { return VELMORA_STATUS_JAVA_NOT_INITIALIZED; }
    void invoke(JNIEnv *e, jobject o, jmethodID m, const jvalue *a) { raw = e->CallObjectMethodA(o, m, a); }
    void returned(JNIEnv *e) {
        if (destination) *destination = raw;
        else if (raw) e->DeleteLocalRef(raw);
    }
    Value finish(JNIEnv *) { return VELMORA_STATUS_OK; }
};

int systemProperty(const char *name, char *buf, std::size_t *len) {
    StringOut out(buf, len);
    JNIEnv *e = enter<Target::System>();
    if (!e) return VELMORA_STATUS_JAVA_NOT_INITIALIZED;
    const LocalFrame frame(e, 8);
    if (const int status = frame.status(); status != VELMORA_STATUS_OK) return status;
    jclass system = e->FindClass(className(calls::getProperty.target));
    jmethodID method =
        system ? e->GetStaticMethodID(system, calls::getProperty.method, calls::getProperty.signature) : nullptr;
    if (!method) return failure::methodNotFound(e, calls::getProperty);
    auto value = static_cast<jstring>(e->CallStaticObjectMethod(system, method, newJavaString(e, name)));
    if (takeException(e)) return VELMORA_STATUS_JAVA_EXCEPTION;
    return deliverString(e, value, out, NullRule::NoText);
}

}  // namespace
}  // namespace velmora

using namespace velmora;

extern "C" {

VELMORA_API int velmora_unload(unsigned char flag) { return unload<calls::unload>(flag); }
VELMORA_API int velmora_unload2(unsigned char flag1, unsigned char flag2) {
    return unload<calls::unload2>(flag1, flag2);
}
VELMORA_API int velmora_unload3(unsigned char flag1, unsigned char flag2) {
    return unload<calls::unload3>(flag1, flag2);
}

VELMORA_API JNIEnv *velmora_getJNIEnv(void) { return state::startupEnv(); }
VELMORA_API JavaVM *velmora_getJavaVM(void) { return state::vm(); }

VELMORA_API int velmora_getJavaSystemProperty(const char *name, char *buf, size_t *len) {
    return systemProperty(name, buf, len);
}

VELMORA_API int velmora_getPlugin(const char *name, jobject *plugin) {
    return forward<calls::getPlugin>(PluginResult{plugin}, name);
}

VELMORA_API jclass velmora_getPluginClass(const char *name) {
    return static_cast<jclass>(forward<calls::getPluginClass>(ObjectResult<calls::getPluginClass>{}, name));
}

}  // extern "C"
