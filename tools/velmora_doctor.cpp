// velmora-doctor: explains how libvelmora finds and starts Java on this
// machine, checks the SDK beside the library against every Java class, method
// and signature that the library calls, and says what to do about each
// problem it finds. Usage and exit codes: see kUsage below.
#include <dlfcn.h>
#include <jni.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "bridge/calls.hpp"
#include "runtime/locator.hpp"
#include "velmora.h"

namespace fs = std::filesystem;
using velmora::CallRow;
using velmora::Target;
using velmora::runtime::Location;

namespace {

// One meaning per exit code.
enum Exit {
    kReady = 0,          // Java starts and the SDK has every jar, class and method
    kSdkIncomplete = 1,  // jars, the management class or other classes/methods are missing
    kBadUsage = 2,       // bad command line
    kNoLibrary = 3,      // libvelmora itself cannot be loaded
    kNoJava = 4,         // the Java runtime cannot be loaded or the JVM not created
};

constexpr const char *kUsage =
    "usage: velmora-doctor [--verbose] [path/to/libvelmora.so]\n"
    "       velmora-doctor --help | --version\n"
    "\n"
    "Loads libvelmora (by default the one installed beside this program, else\n"
    "through the loader's search), traces how it finds the Java runtime (with\n"
    "--verbose every PATH entry, also those without java), starts Java, and\n"
    "checks the SDK jars in the library's directory against every Java class and\n"
    "method the library calls. Each problem comes with a next step (->); the\n"
    "last line is the result.\n"
    "\n"
    "exit status:\n"
    "  0  ready: Java starts and the SDK has every jar, class and method\n"
    "  1  the SDK beside the library is missing or lacks jars, classes or methods\n"
    "  2  usage error\n"
    "  3  libvelmora cannot be loaded\n"
    "  4  no Java runtime could be loaded, or the JVM could not be created\n";

constexpr const char *kJars[] = {"velmora.jar", "commons-codec-1.3.jar", "xmlrpc-2.0.jar"};

template <class F> F *symbol(void *library, const char *name) {
    return reinterpret_cast<F *>(dlsym(library, name));
}
#define LIBRARY_FN(library, name) symbol<decltype(name)>(library, #name)

void section(const std::string &title) { std::printf("\n== %s\n", title.c_str()); }
void advise(const std::string &text) { std::printf("  -> %s\n", text.c_str()); }
// "  <label padded to 20> <text>\n", the layout of every finding.
std::string formatted(std::string_view label, std::string_view text) {
    std::string out = "  " + std::string(label);
    if (out.size() < 22) out.resize(22, ' ');
    return out.append(" ").append(text) += '\n';
}
void line(std::string_view label, const std::string &text) { std::fputs(formatted(label, text).c_str(), stdout); }

// Every run that checks something ends with the result, whatever it is.
int finish(Exit code, const std::string &result) {
    section("Result: " + result);
    return code;
}

std::string defaultLibrary() {
    std::error_code ec;
    const fs::path bin = fs::read_symlink("/proc/self/exe", ec).parent_path();
    for (const fs::path &dir : {bin / VELMORA_BIN_TO_LIB, bin / ".." / "lib"}) {
        if (!ec && fs::exists(dir / "libvelmora.so.1")) return (dir / "libvelmora.so.1").lexically_normal().string();
    }
    return "libvelmora.so.1";
}

// The file the loader actually mapped for `library`, as the loader names it.
std::string loadedFile(void *library) {
    Dl_info info{};
    void *address = dlsym(library, "velmora_initJava");
    return address && dladdr(address, &info) && info.dli_fname ? info.dli_fname : "";
}

bool hasJar(const fs::path &dir, const char *jar) {
    std::error_code ec;
    return fs::is_regular_file(dir / jar, ec);
}

// A Java runtime found under the usual directories.
struct Runtime {
    std::string home;     // what JAVA_HOME would name
    std::string library;  // what a configuration line would name
};

// Where a Java home may keep its runtime library, current layout first.
std::vector<std::string_view> runtimeLayouts() {
    std::vector<std::string_view> layouts{velmora::runtime::kCurrentLayout};
    layouts.insert(layouts.end(), velmora::runtime::kClassicLayouts.begin(), velmora::runtime::kClassicLayouts.end());
    return layouts;
}

std::vector<Runtime> installedRuntimes() {
    std::vector<Runtime> found;
    std::set<fs::path> seen;
    for (const char *root : {"/usr/lib/jvm", "/usr/java", "/usr/local", "/opt", "/opt/java"}) {
        std::error_code ec;
        for (const fs::directory_entry &home : fs::directory_iterator(root, ec)) {
            for (std::string_view layout : runtimeLayouts()) {
                const fs::path library = home.path() / layout;
                std::error_code exists;
                if (!fs::is_regular_file(library, exists) || !seen.insert(fs::canonical(library, exists)).second) continue;
                found.push_back({home.path().string(), library.string()});
            }
        }
    }
    return found;
}

std::string someJavaHome() {
    const std::vector<Runtime> runtimes = installedRuntimes();
    return runtimes.empty() ? "/usr/lib/jvm/<jdk>" : runtimes.front().home;
}

void adviseRuntimes(const std::string &dir) {
    const std::vector<Runtime> runtimes = installedRuntimes();
    if (runtimes.empty()) {
        advise("no Java runtime found under /usr/lib/jvm, /usr/java, /usr/local or /opt: install one "
               "(Debian: apt-get install openjdk-17-jre-headless)");
        return;
    }
    advise("Java runtimes on this machine:");
    for (const Runtime &runtime : runtimes) std::printf("       %s\n", runtime.library.c_str());
    advise("point at one with a line JVM64PATH=" + runtimes.front().library + " in " + dir +
           "/VelmoraDLL.conf, or with JAVA_HOME=" + runtimes.front().home);
}

// A JAVA_HOME that is no directory, or a directory without any runtime layout.
void adviseJavaHome() {
    const char *home = std::getenv("JAVA_HOME");
    if (home == nullptr) return;
    std::error_code ec;
    if (!fs::is_directory(home, ec)) {
        advise(std::string("JAVA_HOME names '") + home + "', which is not a directory: unset it or point it at a "
               "Java home such as " + someJavaHome());
        return;
    }
    for (std::string_view layout : runtimeLayouts()) {
        if (fs::is_regular_file(fs::path(home) / layout, ec)) return;
    }
    advise(std::string("JAVA_HOME names '") + home + "', a directory that holds no runtime library (no " +
           std::string(velmora::runtime::kCurrentLayout) + " nor " + std::string(velmora::runtime::kClassicLayouts[0]) +
           "): unset it or point it at a Java home such as " + someJavaHome());
}

// Prints the search's trace and the candidates start-up tries. Unless
// `verbose`, a PATH entry that holds no java is counted, not shown.
Location traceLocator(const std::string &libraryFile, bool verbose) {
    section("Java runtime search");
    std::string entry;  // a PATH entry's line, held until its next step shows whether it has a java
    int quiet = 0;
    const velmora::runtime::Trace trace = [&](std::string_view step, std::string_view detail) {
        if (!verbose && !entry.empty()) {
            const bool none = step == "launcher" && detail.ends_with(": cannot open, next entry");
            if (!none) std::fputs(entry.c_str(), stdout);
            entry.clear();
            if (none) return void(++quiet);
        }
        if (step == "runtime library" && quiet > 0) {
            std::printf("  (%d PATH entries without java not shown: velmora-doctor --verbose shows them)\n", quiet);
            quiet = 0;
        }
        if (step == "hint") return advise(std::string(detail));
        if (!verbose && step == "PATH entry") entry = formatted(step, detail);
        else std::fputs(formatted(step, detail).c_str(), stdout);
    };
    const Location location = velmora::runtime::locate(libraryFile, &trace);
    adviseJavaHome();
    if (location.candidates.size() > 1) {
        std::printf("  (the bare name is left to the loader; if it cannot load it, current JDK layouts are tried)\n");
    }
    for (std::size_t i = 1; i < location.candidates.size(); ++i) {
        const std::string &candidate = location.candidates[i].path;
        const char *found = velmora::runtime::namesIrregularFile(candidate) ? "  <- not a regular file, skipped"
                            : fs::exists(candidate)                           ? "  <- exists"
                                                                              : "";
        std::printf("  %-20s %s%s\n", "modern layout", candidate.c_str(), found);
    }
    return location;
}

// Where the jars are looked for, and what to do when they are not there.
// The test double needs only velmora.jar. Returns the required jars absent.
std::string checkJars(const std::string &file, const std::string &dir, bool testDouble, bool noManagement) {
    section("SDK jars in the library directory");
    std::string absent;
    for (const char *jar : kJars) {
        const bool present = hasJar(dir.empty() ? "/" : dir, jar);
        const bool needed = !testDouble || jar == kJars[0];
        if (!present && needed) absent += std::string(absent.empty() ? "" : ", ") + jar;
        std::printf("  %-24s %s\n", jar,
                    present ? "present" : needed ? "absent" : "absent, not needed by the test double");
    }
    if (!dir.empty() && dir.front() != '/') {
        advise("the loader names the library by a relative path; the library takes its directory relative to "
               "the working directory at the moment it is loaded: load it by an absolute path to be sure");
    }
    std::error_code ec;
    const fs::path real = fs::canonical(file, ec);
    const fs::path realDir = real.parent_path();
    if (!ec && realDir != fs::canonical(dir.empty() ? "/" : dir, ec)) {
        advise("the library was reached through a link: " + file + " -> " + real.string() +
               "; the jars are looked for in " + dir + " (the directory of the path the loader reports), not in " +
               realDir.string());
        if (!absent.empty() && hasJar(realDir, kJars[0])) {
            advise("link or copy the jars (and VelmoraDLL.conf) of " + realDir.string() + " into " + dir +
                   ", or load the library by its real path " + real.string());
        }
    }
    if (!absent.empty()) {
        advise("copy the vendor's " + absent + " into " + (dir.empty() ? std::string("/") : dir));
    } else if (noManagement) {
        advise("velmora.jar in " + dir + " holds no " + velmora::className(Target::Management) +
               ": it is not the Velmora SDK; install the vendor's");
    }
    return absent;
}

std::string describe(void *library, int status) {
    char text[256];
    size_t len = sizeof text;
    return LIBRARY_FN(library, velmora_describeStatusCode)(status, text, &len) == 0 ? text : "";
}

std::string property(void *library, const char *name) {
    char value[8192];
    size_t len = sizeof value;
    const int status = LIBRARY_FN(library, velmora_getJavaSystemProperty)(name, value, &len);
    return status == 0 && len > 0 ? value : "(unknown)";
}

// Next steps when start-up failed with `status`.
void adviseStartFailure(int status, const Location &location, const std::string &dir) {
    const Location::Candidate &chosen = location.candidates.front();
    if (status == VELMORA_STATUS_JVM_LIBRARY_NOT_FOUND && chosen.source == Location::Source::Config &&
        !fs::exists(chosen.path)) {
        advise(location.configPath + " line " + std::to_string(location.configLine) + " names " + chosen.path +
               ", which does not exist; a configured path is used as it is and no other source is tried: correct "
               "or remove that line");
        adviseRuntimes(dir);
    } else if (status == VELMORA_STATUS_JVM_LIBRARY_NOT_FOUND) {
        advise("no Java runtime library could be loaded (the loader's message is above)");
        adviseRuntimes(dir);
    } else {
        advise("the JVM was loaded but could not be created: its reason is printed above; check "
               "JAVA_TOOL_OPTIONS and _JAVA_OPTIONS for options it rejects");
    }
}

// How the runtime behaves inside a host process, for the runtime that started.
void describeHostProcess(const std::string &runtimeLibrary) {
    section("Signals and fork in the host process");
    line("signals", "a handler for SIGINT, SIGTERM or SIGHUP that the host installed before start-up is kept; "
                    "where the host left the default, the runtime's handlers run the Java shutdown hooks and exit");
    line("fork", "a forked child gets -11 from every call that reaches Java");
    const fs::path jsig = fs::path(runtimeLibrary).parent_path().parent_path() / "libjsig.so";
    std::error_code ec;
    if (runtimeLibrary.empty() || !fs::is_regular_file(jsig, ec)) {
        line("crash handlers", "this runtime has no libjsig.so: a host installs its SIGSEGV or SIGBUS handlers "
                               "before start-up, never after");
        return;
    }
    line("crash handlers", "a host that installs SIGSEGV or SIGBUS handlers (a crash reporter) runs with");
    std::printf("    LD_PRELOAD=%s\n", jsig.c_str());
}

// Classes named in a signature ("Lpkg/Name;"), so that a parameter type the
// SDK lacks is reported too.
void referencedClasses(std::string_view signature, std::set<std::string> &out) {
    for (std::size_t at = signature.find('L'); at != std::string_view::npos; at = signature.find('L', at + 1)) {
        const std::size_t end = signature.find(';', at);
        if (end == std::string_view::npos) break;
        out.emplace(signature.substr(at + 1, end - at - 1));
        at = end;
    }
}

bool classExists(JNIEnv *jenv, const char *name) {
    jclass klass = jenv->FindClass(name);
    jenv->ExceptionClear();
    jenv->DeleteLocalRef(klass);
    return klass != nullptr;
}

int checkContract(JNIEnv *jenv) {
    section("SDK contract (every Java call the library makes)");
    std::set<std::string> classes;
    for (const CallRow &row : velmora::calls::all) {
        classes.emplace(velmora::className(row.target));
        referencedClasses(row.signature, classes);
    }
    int missing = 0;
    for (const std::string &name : classes) {
        if (classExists(jenv, name.c_str())) continue;
        std::printf("  missing class   %s\n", name.c_str());
        ++missing;
    }
    for (const CallRow &row : velmora::calls::all) {
        const char *owner = velmora::className(row.target);
        jclass klass = jenv->FindClass(owner);
        jenv->ExceptionClear();
        jmethodID method = nullptr;
        if (klass) {
            method = row.target == Target::System ? jenv->GetStaticMethodID(klass, row.method, row.signature)
                                                  : jenv->GetMethodID(klass, row.method, row.signature);
            jenv->ExceptionClear();
        }
        if (!method) {
            std::printf("  missing method  %s.%s %s\n", owner, row.method, row.signature);
            ++missing;
        }
        jenv->DeleteLocalRef(klass);
    }
    const std::size_t total = std::size(velmora::calls::all);
    std::printf("  %zu calls checked, %d missing (classes included)\n", total, missing);
    return missing;
}

int usageError(const std::string &problem) {
    std::fprintf(stderr, "velmora-doctor: %s\n\n%s\n== Result: usage error\n", problem.c_str(), kUsage);
    return kBadUsage;
}

}  // namespace

int main(int argc, char **argv) {
    bool verbose = false;
    std::vector<std::string> named;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            std::fputs(kUsage, stdout);
            return kReady;
        }
        if (arg == "--version") {
            std::printf("velmora-doctor %s\n", VELMORA_VERSION_STRING);
            return kReady;
        }
        if (arg == "--verbose") {
            verbose = true;
        } else if (arg.starts_with('-')) {
            return usageError("unknown option '" + arg + "'");
        } else {
            named.push_back(arg);
        }
    }
    if (named.size() > 1) return usageError("one library at most, not also '" + named[1] + "'");
    const std::string request = named.empty() ? defaultLibrary() : named.front();
    section("Library");
    void *library = dlopen(request.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        std::printf("  cannot load %s: %s\n", request.c_str(), dlerror());
        advise("name the library file: velmora-doctor /path/to/libvelmora.so, or add its directory to "
               "LD_LIBRARY_PATH");
        return finish(kNoLibrary, "libvelmora cannot be loaded");
    }
    const std::string file = loadedFile(library);
    const std::string dir = file.substr(0, file.find_last_of('/') == std::string::npos ? 0 : file.find_last_of('/'));
    std::printf("  loaded               %s\n  library directory    %s\n", file.c_str(), dir.c_str());

    const Location location = traceLocator(file, verbose);

    section("Starting Java");
    std::fflush(stdout);
    const int status = LIBRARY_FN(library, velmora_initJava)();
    line("velmora_initJava", std::to_string(status) + " " + describe(library, status));
    JNIEnv *jenv = nullptr;
    std::string runtimeLibrary;
    bool testDouble = false;
    if (status == VELMORA_STATUS_METHOD_NOT_FOUND) {
        std::printf("  the management class %s is not on the class path: no call can work (next step below)\n",
                    velmora::className(Target::Management));
    } else if (status != 0) {
        adviseStartFailure(status, location, dir);
    } else {
        Dl_info runtime{};
        void *create = dlsym(*symbol<void *>(library, "jvmlibHandle"), "JNI_CreateJavaVM");
        if (create && dladdr(create, &runtime) && runtime.dli_fname) runtimeLibrary = runtime.dli_fname;
        line("runtime library", runtimeLibrary);
        line("java.version", property(library, "java.version") + " (" + property(library, "java.vendor") + ")");
        line("java.home", property(library, "java.home"));
        line("java.class.path", property(library, "java.class.path"));
        jenv = LIBRARY_FN(library, velmora_getJNIEnv)();
        testDouble = classExists(jenv, "velmora/testing/Sdk");
        if (testDouble) {
            line("SDK", "this project's own test double, not the vendor's SDK");
            advise("fine for the tests; for real use replace the jars in " + dir + " with the vendor's");
        }
    }

    const std::string absent = checkJars(file, dir, testDouble, status == VELMORA_STATUS_METHOD_NOT_FOUND);
    if (status == VELMORA_STATUS_METHOD_NOT_FOUND) return finish(kSdkIncomplete, "the SDK has no management class");
    if (status != 0) return finish(kNoJava, "Java cannot be started");
    const int missing = checkContract(jenv);
    if (missing != 0) {
        advise("the velmora.jar in " + dir + " is not the SDK that libvelmora " VELMORA_VERSION_STRING
               " calls: install the matching vendor SDK there");
    }
    describeHostProcess(runtimeLibrary);
    if (missing != 0) return finish(kSdkIncomplete, "the SDK lacks what the library calls");
    if (!absent.empty()) return finish(kSdkIncomplete, "the SDK lacks " + absent);
    return finish(kReady, "ready");
}
