// Unloading and direct access to the runtime: the unload functions, the two
// accessors, the temporary directory, Java system properties and plug-ins.
#include "bridge/frame.hpp"

namespace velmora {
namespace {

// Unloading forgets the peach wrapper once the guard has passed, before the
// Java method is even looked up.
template <const CallRow &Row> int unload(Flag first, auto... more) {
    if (state::managementReady()) {
        if (JNIEnv *jenv = state::attachCurrentThread()) state::forgetPeachWrapper(jenv);
    }
    return forwardInt<Row>(first, more...);
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
    Value notInitialized() { return kNotInitialized; }
    void invoke(JNIEnv *e, jobject o, jmethodID m, const jvalue *a) { raw = e->CallObjectMethodA(o, m, a); }
    void returned(JNIEnv *e) {
        if (destination) *destination = raw;
        else if (raw) e->DeleteLocalRef(raw);
    }
    Value finish(JNIEnv *) { return kOk; }
};

int systemProperty(const char *name, char *buf, std::size_t *len) {
    StringOut out(buf, len);
    if (!::env) return kNotInitialized;
    CallScope scope(8);
    if (const int status = scope.status(); status != kOk) return status;
    JNIEnv *e = scope.env();
    jclass system = e->FindClass(className(calls::getProperty.target));
    jmethodID method =
        system ? e->GetStaticMethodID(system, calls::getProperty.method, calls::getProperty.signature) : nullptr;
    e->ExceptionClear();
    if (!method) return kMethodNotFound;
    auto value = static_cast<jstring>(e->CallStaticObjectMethod(system, method, newJavaString(e, name)));
    if (takeException(e)) return kJavaException;
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

VELMORA_API int velmora_getTempDir(char *buf, size_t *len) {
    return forward<calls::getTempDir>(emptyOnNull(buf, len));
}

VELMORA_API int velmora_getJavaSystemProperty(const char *name, char *buf, size_t *len) {
    return systemProperty(name, buf, len);
}

VELMORA_API int velmora_getPlugin(const char *name, jobject *plugin) {
    return forward<calls::getPlugin>(PluginResult{plugin}, name);
}

VELMORA_API jclass velmora_getPluginClass(const char *name) {
    return static_cast<jclass>(forward<calls::getPluginClass>(ObjectResult<calls::getPluginClass>{}, name));
}

VELMORA_API int velmora_getPluginConf(const char *plugin, const char *key, char *buf, size_t *len) {
    return forward<calls::getPluginConf>(StringResult{buf, len, NullRule::EmptyString, true}, plugin, key);
}

}  // extern "C"
