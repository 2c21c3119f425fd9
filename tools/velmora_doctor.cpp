// velmora-doctor: explains how libvelmora finds and starts Java on this
// machine, and checks the SDK beside the library against every Java class,
// method and signature that the library calls.
//
//   velmora-doctor [path/to/libvelmora.so]
//
// Without an argument it loads the library from ../lib beside this program,
// else through the loader's search. Exit status: 0 when Java starts and the
// SDK has every method, 1 when methods are missing, 2 when the library cannot
// be loaded or Java cannot be started.
#include <dlfcn.h>
#include <jni.h>
#include <unistd.h>

#include <cstdio>
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

namespace {

template <class F> F *symbol(void *library, const char *name) {
    return reinterpret_cast<F *>(dlsym(library, name));
}
#define LIBRARY_FN(library, name) symbol<decltype(name)>(library, #name)

void section(const char *title) { std::printf("\n== %s\n", title); }

std::string defaultLibrary() {
    std::error_code ec;
    const fs::path self = fs::read_symlink("/proc/self/exe", ec);
    const fs::path beside = self.parent_path().parent_path() / "lib" / "libvelmora.so.1";
    return !ec && fs::exists(beside) ? beside.string() : "libvelmora.so.1";
}

// The file the loader actually mapped for `library`.
std::string loadedFile(void *library) {
    Dl_info info{};
    void *address = dlsym(library, "velmora_initJava");
    return address && dladdr(address, &info) && info.dli_fname ? info.dli_fname : "";
}

void traceLocator(const std::string &libraryFile) {
    section("Java runtime search");
    const velmora::runtime::Trace trace = [](std::string_view step, std::string_view detail) {
        std::printf("  %-20.*s %.*s\n", int(step.size()), step.data(), int(detail.size()), detail.data());
    };
    const auto location = velmora::runtime::locate(libraryFile, &trace);
    if (location.source != velmora::runtime::Location::Source::BareName) return;
    std::printf("  (the bare name is left to the loader; if it cannot load it, current JDK layouts are tried)\n");
    for (const std::string &candidate : velmora::runtime::modernRuntimeCandidates()) {
        const char *found = velmora::runtime::namesIrregularFile(candidate) ? "  <- not a regular file, skipped"
                            : fs::exists(candidate)                           ? "  <- exists"
                                                                              : "";
        std::printf("  %-20s %s%s\n", "modern layout", candidate.c_str(), found);
    }
}

void listJars(const std::string &dir) {
    section("SDK jars in the library directory");
    for (const char *jar : {"velmora.jar", "commons-codec-1.3.jar", "xmlrpc-2.0.jar"}) {
        const fs::path path = fs::path(dir.empty() ? "/" : dir) / jar;
        std::printf("  %-24s %s\n", jar, fs::exists(path) ? "present" : "absent");
    }
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

int checkContract(JNIEnv *jenv) {
    section("SDK contract (every Java call the library makes)");
    std::set<std::string> classes;
    for (const CallRow &row : velmora::calls::all) {
        classes.emplace(velmora::className(row.target));
        referencedClasses(row.signature, classes);
    }
    int missing = 0;
    for (const std::string &name : classes) {
        jclass klass = jenv->FindClass(name.c_str());
        jenv->ExceptionClear();
        if (!klass) {
            std::printf("  missing class   %s\n", name.c_str());
            ++missing;
        }
        jenv->DeleteLocalRef(klass);
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

}  // namespace

int main(int argc, char **argv) {
    if (argc > 2 || (argc == 2 && argv[1][0] == '-')) {
        std::fprintf(stderr, "usage: %s [path/to/libvelmora.so]\n", argv[0]);
        return 2;
    }
    const std::string request = argc == 2 ? argv[1] : defaultLibrary();
    section("Library");
    void *library = dlopen(request.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        std::printf("  cannot load %s: %s\n", request.c_str(), dlerror());
        return 2;
    }
    const std::string file = loadedFile(library);
    const std::string dir = file.substr(0, file.find_last_of('/') == std::string::npos ? 0 : file.find_last_of('/'));
    std::printf("  loaded               %s\n  library directory    %s\n", file.c_str(), dir.c_str());

    traceLocator(file);
    listJars(dir);

    section("Starting Java");
    std::fflush(stdout);
    const int status = LIBRARY_FN(library, velmora_initJava)();
    std::printf("  velmora_initJava     %d %s\n", status, describe(library, status).c_str());
    if (status == -12) {
        std::printf("  the management class %s is not on the class path: no call can work\n",
                    velmora::className(Target::Management));
        return 1;
    }
    if (status != 0) return 2;
    Dl_info runtime{};
    if (void *create = dlsym(*symbol<void *>(library, "jvmlibHandle"), "JNI_CreateJavaVM"); create && dladdr(create, &runtime))
        std::printf("  runtime library      %s\n", runtime.dli_fname);
    std::printf("  java.version         %s (%s)\n", property(library, "java.version").c_str(),
                property(library, "java.vendor").c_str());
    std::printf("  java.home            %s\n", property(library, "java.home").c_str());
    std::printf("  java.class.path      %s\n", property(library, "java.class.path").c_str());

    const int missing = checkContract(LIBRARY_FN(library, velmora_getJNIEnv)());
    section(missing == 0 ? "Result: ready" : "Result: the SDK lacks what the library calls");
    return missing == 0 ? 0 : 1;
}
