#include "runtime/startup.hpp"

#include <dlfcn.h>
#include <jni.h>

#include <cstdio>
#include <string>

#include "bridge/calls.hpp"
#include "bridge/marshal.hpp"
#include "bridge/state.hpp"
#include "runtime/locator.hpp"

namespace velmora::runtime {
namespace {

using CreateJavaVMFn = jint(JNICALL *)(JavaVM **, void **, void *);
using GetDefaultArgsFn = jint(JNICALL *)(void *);
using GetCreatedVMsFn = jint(JNICALL *)(JavaVM **, jsize, jsize *);

struct InvocationApi {
    CreateJavaVMFn create = nullptr;
    GetDefaultArgsFn defaults = nullptr;
    GetCreatedVMsFn created = nullptr;
};

// Prints the loader's pending error text, if any, and says whether there was one.
bool reportLoaderError() {
    const char *error = dlerror();
    if (!error) return false;
    std::puts(error);
    std::fflush(stdout);
    return true;
}

// Loads one runtime library file, or gives the reason why not in `error`. A
// path naming a FIFO, a device or a directory is refused before the loader
// sees it (the loader would block on a FIFO), with a text in the loader's
// manner.
void *openRuntime(const std::string &path, std::string &error) {
    if (namesIrregularFile(path)) {
        error = path + ": cannot open shared object file: Not a regular file";
        return nullptr;
    }
    dlerror();
    void *handle = dlopen(path.c_str(), RTLD_LAZY);
    if (const char *text = dlerror()) error = text;
    return handle;
}

// Loads the first of the located candidates that loads into jvmlibHandle.
// When none does, jvmlibHandle is null and the loader's text for the first
// (the search's own choice) is printed.
bool loadRuntimeLibrary(const Location &location) {
    std::string first;
    for (const Location::Candidate &candidate : location.candidates) {
        std::string error;
        if (void *handle = openRuntime(candidate.path, error)) {
            ::jvmlibHandle = handle;
            return true;
        }
        if (&candidate == &location.candidates.front()) first = error;
    }
    ::jvmlibHandle = nullptr;
    std::puts(first.c_str());
    std::fflush(stdout);
    return false;
}

bool resolveInvocationApi(InvocationApi &api) {
    void *lib = ::jvmlibHandle;
    api.create = reinterpret_cast<CreateJavaVMFn>(dlsym(lib, "JNI_CreateJavaVM"));
    if (reportLoaderError()) return false;
    api.defaults = reinterpret_cast<GetDefaultArgsFn>(dlsym(lib, "JNI_GetDefaultJavaVMInitArgs"));
    if (reportLoaderError()) return false;
    api.created = reinterpret_cast<GetCreatedVMsFn>(dlsym(lib, "JNI_GetCreatedJavaVMs"));
    return !reportLoaderError();
}

// Joins the machine already running in the process, or creates one.
int joinOrCreate(const InvocationApi &api, JavaVMInitArgs &args) {
    JavaVM *machine = nullptr;
    jsize count = 0;
    JNIEnv *jenv = nullptr;
    if (api.created(&machine, 1, &count) == JNI_OK && count >= 1) {
        ::jvm = machine;
        state::attachThread(machine, state::Attach::NonDaemon);
        if (machine->GetEnv(reinterpret_cast<void **>(&jenv), JNI_VERSION_1_4) != JNI_OK) {
            ::env = nullptr;
            return kNotInitialized;
        }
        ::env = jenv;
        return kOk;
    }
    if (api.create(&machine, reinterpret_cast<void **>(&jenv), &args) != JNI_OK) {
        ::env = nullptr;
        return kNotInitialized;
    }
    ::jvm = machine;
    ::env = jenv;
    state::detachWhenThreadEnds(machine);  // creating the machine attached this thread
    return kOk;
}

JNIEnv *attachAsStartupThread() {
    JNIEnv *jenv = state::attachThread(state::vm(), state::Attach::NonDaemon);
    ::env = jenv;
    return jenv;
}

}  // namespace

std::string classPathOption(const std::string &dir) {
    return "-Djava.class.path=" + dir + "/velmora.jar:" + dir + "/commons-codec-1.3.jar:" + dir + "/xmlrpc-2.0.jar";
}

int startUp() {
    const Location location = locate(ownLibraryFile());
    if (!loadRuntimeLibrary(location)) return kLibraryNotFound;
    InvocationApi api;
    if (!resolveInvocationApi(api)) return kLibraryNotFound;

    std::string classPath = classPathOption(location.libraryDir);
    JavaVMOption options[3] = {};
    options[0].optionString = classPath.data();
    options[1].optionString = const_cast<char *>("-Xmx128M");
    options[2].optionString = const_cast<char *>("-Dcom.sun.management.jmxremote");
    JavaVMInitArgs args{};
    args.version = JNI_VERSION_1_4;
    api.defaults(&args);
    args.version = JNI_VERSION_1_4;
    args.nOptions = 3;
    args.options = options;
    args.ignoreUnrecognized = JNI_TRUE;

    if (!::env) {
        if (const int status = joinOrCreate(api, args); status != kOk) return status;
    } else {
        attachAsStartupThread();
    }

    JNIEnv *jenv = state::startupEnv();
    jclass management = jenv->FindClass(className(Target::Management));
    if (!management) {
        jenv->ExceptionClear();
        JavaVM *machine = state::vm();
        state::detachCurrentThread(machine);
        machine->DestroyJavaVM();
        ::env = nullptr;
        state::forgetMachineReferences();
        return kMethodNotFound;
    }
    state::replaceGlobal(::cls, jenv, management);
    jenv->DeleteLocalRef(management);
    state::keepStringReferences(jenv);
    attachAsStartupThread();
    return kOk;
}

}  // namespace velmora::runtime

extern "C" VELMORA_API int velmora_initJava(void) { return velmora::runtime::startUp(); }
