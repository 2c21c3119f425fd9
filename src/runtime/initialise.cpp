// The four initialisers: start-up when needed, a new management object, and
// its Java initialiser.
#include "bridge/frame.hpp"
#include "runtime/startup.hpp"

namespace velmora {
namespace {

// The initialiser's call reports a missing method as "no initialiser".
struct InitialiserResult : IntResult {
    static Value fail(int status) { return status == VELMORA_STATUS_METHOD_NOT_FOUND ? VELMORA_STATUS_NO_INITIALIZER : status; }
};

// Starts the runtime if needed and makes a new management object current.
int constructManagementObject() {
    if (const int status = runtime::startOrAttach(); status != VELMORA_STATUS_OK) return status;
    JNIEnv *jenv = state::startupEnv();
    jclass klass = state::managementClass();
    jmethodID constructor = jenv->GetMethodID(klass, calls::constructor.method, calls::constructor.signature);
    if (!constructor) {
        jenv->ExceptionClear();
        state::tearDownMachine(state::TearDown::DestroyAttached);
        runtime::recordStartup(std::string("The management class ") + className(calls::constructor.target) +
                               " has no constructor " + calls::constructor.signature +
                               ". The Java machine was destroyed." + std::string(failure::kOnlyANewProcess));
        return VELMORA_STATUS_NO_CONSTRUCTOR;
    }
    jobject object = jenv->NewObject(klass, constructor);
    state::replaceManagement(jenv, object);
    if (!object) {
        if (!failure::keepException(jenv, "The management object could not be created:"))
            failure::record("The management object could not be created.");
        return VELMORA_STATUS_INIT_FAILED;
    }
    jenv->DeleteLocalRef(object);
    return VELMORA_STATUS_OK;
}

template <const CallRow &Row, class... A> int initialise(A... args) {
    if (const int status = constructManagementObject(); status != VELMORA_STATUS_OK) return status;
    return forward<Row>(InitialiserResult{}, args...);
}

}  // namespace
}  // namespace velmora

using namespace velmora;

extern "C" {

VELMORA_API int velmora_init(void) { return initialise<calls::initFile0>(); }

VELMORA_API int velmora_initFile(const char *file) { return initialise<calls::initFile1>(file); }

VELMORA_API int velmora_initFileWithPassword(const char *file, const char *password) {
    return initialise<calls::initFile2>(file, password);
}

VELMORA_API int velmora_initWithoutFile(const char *s1, const char *s2, const char *s3, const char *s4, int i5,
                                        const char *s6, const char *s7, int i8, int i9, const char *s10,
                                        const char *s11) {
    return initialise<calls::init>(s1, s2, s3, s4, i5, s6, s7, i8, i9, s10, s11);
}

}  // extern "C"
