#include "runtime/startup.hpp"

#include <dlfcn.h>
#include <signal.h>
#include <jni.h>

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>

#include "bridge/calls.hpp"
#include "bridge/failure.hpp"
#include "bridge/strings.hpp"
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

// Prints the loader's pending error text, if any, and keeps it as the
// calling thread's failure; says whether there was one.
bool reportLoaderError() {
    const char *error = dlerror();
    if (!error) return false;
    std::puts(error);
    std::fflush(stdout);
    recordStartup(std::string("The Java runtime library lacks the Invocation API: ") + error);
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
// (the search's own choice) is printed and given back in `error`.
bool loadRuntimeLibrary(const Location &location, std::string &error) {
    std::string first;
    for (const Location::Candidate &candidate : location.candidates) {
        std::string tried;
        if (void *handle = openRuntime(candidate.path, tried)) {
            state::keepRuntimeLibrary(handle);
            return true;
        }
        if (&candidate == &location.candidates.front()) first = tried;
    }
    state::keepRuntimeLibrary(nullptr);
    std::puts(first.c_str());
    std::fflush(stdout);
    error = first;
    return false;
}

bool resolveInvocationApi(InvocationApi &api) {
    void *lib = state::runtimeLibrary();
    api.create = reinterpret_cast<CreateJavaVMFn>(dlsym(lib, "JNI_CreateJavaVM"));
    if (reportLoaderError()) return false;
    api.defaults = reinterpret_cast<GetDefaultArgsFn>(dlsym(lib, "JNI_GetDefaultJavaVMInitArgs"));
    if (reportLoaderError()) return false;
    api.created = reinterpret_cast<GetCreatedVMsFn>(dlsym(lib, "JNI_GetCreatedJavaVMs"));
    return !reportLoaderError();
}

// The host's own handlers of the signals for which creating a machine
// installs the runtime's (shutdown hooks, then exit): read before the
// creation and installed again after it, so that a host keeps what it chose.
// A signal the host left at its default keeps the runtime's behaviour; one it
// ignores the runtime leaves ignored itself.
class HostSignalHandlers {
public:
    HostSignalHandlers() {
        for (std::size_t i = 0; i < std::size(kSignals); ++i) sigaction(kSignals[i], nullptr, &saved_[i]);
    }
    void reinstall() const {
        for (std::size_t i = 0; i < std::size(kSignals); ++i) {
            if (hostsOwn(saved_[i])) sigaction(kSignals[i], &saved_[i], nullptr);
        }
    }

private:
    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
    static bool hostsOwn(const struct sigaction &action) {
        if (action.sa_flags & SA_SIGINFO) return action.sa_sigaction != nullptr;
        return action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN;
    }
    struct sigaction saved_[std::size(kSignals)] = {};
};

// Why JNI_CreateJavaVM refused: its code, what may have caused it, and
// whether this process already had a machine (which cannot come back).
std::string creationFailure(jint code, const JavaVMInitArgs &args) {
    std::string text = "JNI_CreateJavaVM failed with code " + std::to_string(code) + "; the options were";
    for (jint i = 0; i < args.nOptions; ++i) text += std::string(" ") + args.options[i].optionString;
    text += ".";
    if (const char *tool = std::getenv("JAVA_TOOL_OPTIONS"); tool && *tool)
        text += std::string(" JAVA_TOOL_OPTIONS adds '") + tool + "': an option the runtime refuses there fails the creation.";
    if (state::vm()) {
        text += " The Java machine this process had was destroyed, and a runtime cannot be created twice in one "
                "process.";
        text += failure::kOnlyANewProcess;
    }
    return text;
}

// Joins the machine already running in the process, or creates one.
int joinOrCreate(const InvocationApi &api, JavaVMInitArgs &args) {
    JavaVM *machine = nullptr;
    jsize count = 0;
    JNIEnv *jenv = nullptr;
    if (api.created(&machine, 1, &count) == JNI_OK && count >= 1) {
        state::adoptMachine(machine, nullptr);
        if (state::becomeStartupThread()) return VELMORA_STATUS_OK;
        recordStartup("The Java machine already running in this process could not be joined (the thread did not "
                      "attach).");
        return VELMORA_STATUS_JAVA_NOT_INITIALIZED;
    }
    const HostSignalHandlers host;
    if (const jint created = api.create(&machine, reinterpret_cast<void **>(&jenv), &args); created != JNI_OK) {
        recordStartup(creationFailure(created, args));
        return VELMORA_STATUS_JAVA_NOT_INITIALIZED;
    }
    host.reinstall();
    state::adoptMachine(machine, jenv);
    state::detachWhenThreadEnds(machine);  // creating the machine attached this thread
    return VELMORA_STATUS_OK;
}

}  // namespace

std::string classPathOption(const std::string &dir) {
    return "-Djava.class.path=" + dir + "/velmora.jar:" + dir + "/commons-codec-1.3.jar:" + dir + "/xmlrpc-2.0.jar";
}

void recordStartup(std::string cause) {
    const std::string library = ownLibraryFile();
    failure::record(std::move(cause) + "\n-> run: velmora-doctor " +
                    (library.empty() ? std::string("<path of libvelmora.so>") : library));
}

int startUp() {
    if (state::inForkedChild()) {
        failure::notInitialized();
        return VELMORA_STATUS_JAVA_NOT_INITIALIZED;
    }
    const Location location = locate(ownLibraryFile());
    if (std::string error; !loadRuntimeLibrary(location, error)) {
        std::string cause = "The Java runtime library could not be loaded: " + error + "\nIt was chosen from the " +
                            std::string(describe(location.candidates.front().source));
        if (location.configLine > 0)
            cause += ", line " + std::to_string(location.configLine) + " of " + location.configPath;
        if (location.candidates.size() > 1)
            cause += "; " + std::to_string(location.candidates.size() - 1) + " other places did not load either";
        recordStartup(cause + ".");
        return VELMORA_STATUS_JVM_LIBRARY_NOT_FOUND;
    }
    InvocationApi api;
    if (!resolveInvocationApi(api)) return VELMORA_STATUS_JVM_LIBRARY_NOT_FOUND;

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

    if (!state::startupEnv()) {
        if (const int status = joinOrCreate(api, args); status != VELMORA_STATUS_OK) return status;
    } else {
        state::becomeStartupThread();
    }

    JNIEnv *jenv = state::startupEnv();
    jclass management = jenv->FindClass(className(Target::Management));
    if (!management) {
        jenv->ExceptionClear();
        state::tearDownMachine(state::TearDown::DetachFirst);
        recordStartup(std::string("The management class ") + className(Target::Management) +
                      " is not on the class path " + classPath.substr(classPath.find('=') + 1) +
                      ": velmora.jar, commons-codec-1.3.jar and xmlrpc-2.0.jar must lie beside the library in '" +
                      location.libraryDir + "'. The Java machine was destroyed." + std::string(failure::kOnlyANewProcess));
        return VELMORA_STATUS_METHOD_NOT_FOUND;
    }
    state::replaceManagementClass(jenv, management);
    jenv->DeleteLocalRef(management);
    state::keepStringClass(jenv);
    state::becomeStartupThread();
    return VELMORA_STATUS_OK;
}

int startOrAttach() {
    if (!state::startupEnv() || state::inForkedChild()) return startUp();
    state::becomeStartupThread();
    return VELMORA_STATUS_OK;
}

}  // namespace velmora::runtime

extern "C" VELMORA_API int velmora_initJava(void) { return velmora::runtime::startUp(); }
