// The cost of each shape of forwarded call against a raw JNI baseline in the
// same process: the same Java methods of the SDK double (build/lib/velmora.jar,
// answering quietly with fixed values), called with method IDs and classes
// resolved once and only the JNI that the same job needs, in the fastest way
// measured on each runtime (clear a pending exception, call, check for an
// exception; for a text argument the string; for a string result its length,
// with GetStringUTFLengthAsLong where the runtime offers JNI 24, and the copy
// into the buffer; for a list an array of null slots filled inside one local
// frame; every local reference released).
//
// Each round times, for every shape in turn, one short batch through the
// library and one raw, in CPU time of the calling thread, in alternating
// order; the rounds of a shape are thus paired samples spread over the whole
// run, so that a burst of other work on the machine touches every shape and
// both ways alike. A pair in which the scheduler took the processor away
// during either batch (which then resumes with cold caches) is timed again,
// up to a limit. The table shows the median time per call of each way and
// the median of the per-round ratios.
// Then the native memory (malloc'd bytes in use, where the JVM keeps JNI
// references) that millions of calls on one host thread leave behind, and
// start-up against a raw JNI_CreateJavaVM, each in child processes of its own.
//
//   build/bin/velmora_bench [rounds [shape]]   (shape: part of a name in the table)
#include <dlfcn.h>
#include <jni.h>
#include <malloc.h>
#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "velmora.h"

namespace {

constexpr char kText64[] = "result-directory/of-the-benchmark/with-a-64-byte-long-name.text";  // 63 + NUL
static_assert(sizeof kText64 == 64);
constexpr int kWalkLength = 10000;
constexpr int kListLength = 100;

double cpuNs() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e9 + double(t.tv_nsec);
}
double wallNs() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return double(t.tv_sec) * 1e9 + double(t.tv_nsec);
}
// Times the thread was taken off the processor against its will so far.
long preemptions() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nivcsw;
}
double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : v[v.size() / 2];
}
[[noreturn]] void fail(const char *what) {
    std::fprintf(stderr, "velmora_bench: %s\n", what);
    std::exit(1);
}

// Keeps a result alive without storing it.
inline void use(long value) { asm volatile("" : : "r"(value)); }
std::size_t delivered;
void countDelivery(const char *text) { delivered += std::strlen(text); }

// ---------------------------------------------------------------------------
// The raw baseline: the calling thread's environment and every ID up front.

// GetStringUTFLengthAsLong of a JNI 24 runtime, two entries after GetModule
// in the function table (the jni.h this builds with may predate it).
using UtfLengthAsLong = jlong(JNICALL *)(JNIEnv *, jstring);
UtfLengthAsLong utfLengthAsLong(JNIEnv *e) {
    constexpr jint kJni24 = 0x00180000;
    if (e->GetVersion() < kJni24) return nullptr;
    const auto *table = reinterpret_cast<void *const *>(e->functions);
    return reinterpret_cast<UtfLengthAsLong>(table[offsetof(JNINativeInterface_, GetModule) / sizeof(void *) + 2]);
}

struct Raw {
    JNIEnv *e = nullptr;
    UtfLengthAsLong utfLength = nullptr;
    jobject target = nullptr;
    jclass stringClass = nullptr, sdk = nullptr, caller = nullptr;
    jmethodID status{}, completed{}, usedTime{}, print{}, logLevel{}, tempDir{}, createJob{}, count{}, name{}, fire{};
    jstring fireText = nullptr;

    void resolve() {
        velmora_getJavaVM()->GetEnv(reinterpret_cast<void **>(&e), JNI_VERSION_1_6);
        utfLength = utfLengthAsLong(e);
        target = static_cast<jobject>(sgc);
        auto klass = static_cast<jclass>(cls);
        auto id = [&](const char *n, const char *s) {
            jmethodID m = e->GetMethodID(klass, n, s);
            if (!m) fail(n);
            return m;
        };
        status = id("getProjectStatus", "(I)I");
        completed = id("isCompleted", "(I)Z");
        usedTime = id("getUsedTime", "(I)J");
        print = id("printStatistics", "(I)V");
        logLevel = id("setLogLevel", "(Ljava/lang/String;)I");
        tempDir = id("getTempDir", "()Ljava/lang/String;");
        createJob = id("createJob", "(I[Ljava/lang/String;)I");
        count = id("getResultFileCount", "(I)I");
        name = id("getResultFileName", "(II)Ljava/lang/String;");
        auto global = [&](const char *n) {
            jclass local = e->FindClass(n);
            if (!local) fail(n);
            auto g = static_cast<jclass>(e->NewGlobalRef(local));
            e->DeleteLocalRef(local);
            return g;
        };
        stringClass = global("java/lang/String");
        sdk = global("velmora/testing/Sdk");
        caller = global("velmora/user/NativeFunctionCaller");
        fire = e->GetStaticMethodID(sdk, "fire", "(Ljava/lang/String;)I");
        jstring text = e->NewStringUTF(kText64);
        fireText = static_cast<jstring>(e->NewGlobalRef(text));
        e->DeleteLocalRef(text);
        if (!fire) fail("Sdk.fire");
    }
    bool thrown() {
        if (!e->ExceptionCheck()) return false;
        e->ExceptionDescribe();
        e->ExceptionClear();
        return true;
    }
    int intCall(jmethodID m) {
        e->ExceptionClear();
        const jint v = e->CallIntMethod(target, m, 1);
        return thrown() ? -13 : v;
    }
    int boolCall() {
        e->ExceptionClear();
        const jboolean v = e->CallBooleanMethod(target, completed, 1);
        return thrown() ? -13 : v ? 1 : 0;
    }
    jlong longCall() {
        e->ExceptionClear();
        const jlong v = e->CallLongMethod(target, usedTime, 1);
        return thrown() ? -13 : v;
    }
    int voidCall() {
        e->ExceptionClear();
        e->CallVoidMethod(target, print, 1);
        return thrown() ? -13 : 0;
    }
    int textCall(const char *text) {
        e->ExceptionClear();
        jstring s = e->NewStringUTF(text);
        const jint v = e->CallIntMethod(target, logLevel, s);
        const bool failed = thrown();
        e->DeleteLocalRef(s);
        return failed ? -13 : v;
    }
    int copy(jstring s, char *buf, size_t *len) {
        const auto bytes = static_cast<size_t>(utfLength ? utfLength(e, s) : e->GetStringUTFLength(s));
        *len = bytes + 1;
        int status = -23;
        if (bytes < sizeof kText64) {
            e->GetStringUTFRegion(s, 0, e->GetStringLength(s), buf);
            buf[bytes] = '\0';
            status = 0;
        }
        e->DeleteLocalRef(s);
        return status;
    }
    int stringCall(char *buf, size_t *len) {
        e->ExceptionClear();
        auto s = static_cast<jstring>(e->CallObjectMethod(target, tempDir));
        return thrown() ? -13 : copy(s, buf, len);
    }
    int listCall(int n, const char *const *list) {
        e->ExceptionClear();
        jobjectArray array = e->NewObjectArray(n, stringClass, nullptr);
        e->PushLocalFrame(n);
        for (int i = 0; i < n; ++i) e->SetObjectArrayElement(array, i, e->NewStringUTF(list[i]));
        e->PopLocalFrame(nullptr);
        const jint v = e->CallIntMethod(target, createJob, 1, array);
        const bool failed = thrown();
        e->DeleteLocalRef(array);
        return failed ? -13 : v;
    }
    int walkStep(int index, char *buf, size_t *len) {
        e->ExceptionClear();
        const jint size = e->CallIntMethod(target, count, 1);
        if (thrown()) return -13;
        if (index >= size) return -24;
        auto s = static_cast<jstring>(e->CallObjectMethod(target, name, 1, index));
        return thrown() ? -13 : copy(s, buf, len);
    }
    // Delivers once on the calling thread.
    void fireOnce() { use(e->CallStaticIntMethod(sdk, fire, fireText)); }
    // Binds NativeFunctionCaller.func to `native`.
    void bind(void *native) {
        JNINativeMethod m{const_cast<char *>("func"), const_cast<char *>("(Ljava/lang/String;)V"), native};
        if (e->RegisterNatives(caller, &m, 1) != JNI_OK) fail("RegisterNatives");
    }
};
Raw raw;

// The least a native delivery does: the bytes, the callback, the release.
void JNICALL rawDelivery(JNIEnv *e, jobject, jstring text) {
    const char *chars = e->GetStringUTFChars(text, nullptr);
    if (!chars) return;
    countDelivery(chars);
    e->ReleaseStringUTFChars(text, chars);
}

// NativeFunctionCaller.func is bound once, to a trampoline that calls the
// delivery of the batch: binding the native anew before each batch would
// discard its compiled wrapper every time and disturb the shapes after it.
using Delivery = void(JNICALL *)(JNIEnv *, jobject, jstring);
Delivery delivery = &velmora_peach_intermediate_callback;
void JNICALL deliverThrough(JNIEnv *e, jobject self, jstring text) { delivery(e, self, text); }

// ---------------------------------------------------------------------------
// The shapes: a batch of n calls each way (a batch takes about half a
// millisecond).

std::vector<const char *> listStrings(kListLength, "job-parameter-0");

struct Shape {
    const char *name;
    long batch;  // calls per timed batch
    void (*library)(long n);
    void (*baseline)(long n);
    void (*before)(bool library);  // prepares a batch, untimed (may be null)
};

const Shape kShapes[] = {
    {"int result (getProjectStatus)", 5000,
     [](long n) { for (long i = 0; i < n; ++i) use(velmora_getProjectStatus(1)); },
     [](long n) { for (long i = 0; i < n; ++i) use(raw.intCall(raw.status)); }, nullptr},
    {"boolean result (isCompleted)", 5000,
     [](long n) { for (long i = 0; i < n; ++i) use(velmora_isCompleted(1)); },
     [](long n) { for (long i = 0; i < n; ++i) use(raw.boolCall()); }, nullptr},
    {"long result (getUsedTime)", 5000,
     [](long n) { for (long i = 0; i < n; ++i) use(velmora_getUsedTime(1)); },
     [](long n) { for (long i = 0; i < n; ++i) use(raw.longCall()); }, nullptr},
    {"void (printStatistics)", 5000,
     [](long n) { for (long i = 0; i < n; ++i) use(velmora_printStatistics(1)); },
     [](long n) { for (long i = 0; i < n; ++i) use(raw.voidCall()); }, nullptr},
    {"text argument (setLogLevel)", 1500,
     [](long n) { for (long i = 0; i < n; ++i) use(velmora_setLogLevel("info")); },
     [](long n) { for (long i = 0; i < n; ++i) use(raw.textCall("info")); }, nullptr},
    {"64-byte string result (getTempDir)", 2500,
     [](long n) {
         char buf[128];
         for (long i = 0; i < n; ++i) {
             size_t len = sizeof buf;
             use(velmora_getTempDir(buf, &len));
         }
     },
     [](long n) {
         char buf[128];
         for (long i = 0; i < n; ++i) {
             size_t len = sizeof buf;
             use(raw.stringCall(buf, &len));
         }
     },
     nullptr},
    {"list of 100 strings (createJob3)", 60,
     [](long n) { for (long i = 0; i < n; ++i) use(velmora_createJob3(1, kListLength, listStrings.data())); },
     [](long n) { for (long i = 0; i < n; ++i) use(raw.listCall(kListLength, listStrings.data())); }, nullptr},
    {"walk of 10,000 names (getResultFiles)", 2000,
     [](long n) {
         char buf[128];
         for (long i = 0; i < n; ++i) {
             int index = static_cast<int>(i % kWalkLength);
             size_t len = sizeof buf;
             use(velmora_getResultFiles(1, &index, buf, &len));
         }
     },
     [](long n) {
         char buf[128];
         for (long i = 0; i < n; ++i) {
             size_t len = sizeof buf;
             use(raw.walkStep(static_cast<int>(i % kWalkLength), buf, &len));
         }
     },
     nullptr},
    {"Java->C delivery (intermediate result)", 3000,
     [](long n) { for (long i = 0; i < n; ++i) raw.fireOnce(); },
     [](long n) { for (long i = 0; i < n; ++i) raw.fireOnce(); },
     [](bool library) { delivery = library ? &velmora_peach_intermediate_callback : &rawDelivery; }},
};

void compareCalls(int rounds, const char *only) {
    std::vector<const Shape *> shapes;
    for (const Shape &s : kShapes)
        if (!only || std::strstr(s.name, only)) shapes.push_back(&s);
    for (const Shape *s : shapes) {
        for (bool library : {true, false}) {  // warm up both ways: JIT, first resolutions
            if (s->before) s->before(library);
            (library ? s->library : s->baseline)(s->batch * 20);
        }
    }
    constexpr int kAttempts = 20;  // timings of a pair at most
    std::vector<std::vector<double>> lib(shapes.size()), base(shapes.size()), ratio(shapes.size());
    long repeated = 0, disturbed = 0;
    for (int r = 0; r < rounds; ++r) {
        for (std::size_t i = 0; i < shapes.size(); ++i) {
            const Shape &s = *shapes[i];
            double t[2];
            for (int attempt = 1;; ++attempt) {
                const long before = preemptions();
                for (int k = 0; k < 2; ++k) {
                    const bool library = (k == 0) == (r % 2 == 0);
                    if (s.before) s.before(library);
                    const double start = cpuNs();
                    (library ? s.library : s.baseline)(s.batch);
                    t[library ? 0 : 1] = (cpuNs() - start) / double(s.batch);
                }
                if (preemptions() == before) break;
                if (attempt == kAttempts) {
                    ++disturbed;
                    break;
                }
                ++repeated;
            }
            lib[i].push_back(t[0]);
            base[i].push_back(t[1]);
            ratio[i].push_back(t[0] / t[1]);
        }
    }
    std::printf("%-40s %12s %12s %8s   (%d rounds)\n", "shape (per call, CPU time)", "library ns", "raw JNI ns",
                "ratio", rounds);
    for (std::size_t i = 0; i < shapes.size(); ++i)
        std::printf("%-40s %12.1f %12.1f %7.2fx\n", shapes[i]->name, median(lib[i]), median(base[i]),
                    median(ratio[i]));
    std::printf("pairs timed again after a preemption: %ld; kept although preempted %d times: %ld\n", repeated,
                kAttempts, disturbed);
    std::fflush(stdout);
}

// ---------------------------------------------------------------------------
// Native memory kept by a host thread over millions of calls.

long nativeInUseKib() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long>((info.uordblks + info.hblkhd) / 1024);
}

void memoryGrowth() {
    std::thread host([] {
        auto mixed = [](long strings, long others) {
            char buf[128];
            for (long i = 0; i < strings; ++i) {
                size_t len = sizeof buf;
                use(velmora_getTempDir(buf, &len));
            }
            for (long i = 0; i < others; ++i) {
                int index = static_cast<int>(i % kWalkLength);
                size_t len = sizeof buf;
                use(velmora_createJob3(1, 10, listStrings.data()));
                use(velmora_setLogLevel("info"));
                use(velmora_getResultFiles(1, &index, buf, &len));
                use(velmora_getPlugin("plugin", nullptr));
            }
        };
        mixed(1000, 1000);  // first attach, warm up
        const long before = nativeInUseKib();
        mixed(5000000, 1000000);
        std::printf("native memory growth over 5M string results and 1M each of 10-string lists, text arguments, "
                    "walk steps and plug-ins without out-pointer, on one host thread: %ld KiB\n",
                    nativeInUseKib() - before);
    });
    host.join();
}

// ---------------------------------------------------------------------------
// Start-up, each in a fresh process: the library's velmora_initJava against
// loading the same libjvm and calling JNI_CreateJavaVM with the same options.

std::string libraryDir() {
    Dl_info info{};
    dladdr(reinterpret_cast<void *>(&velmora_initJava), &info);
    std::string path = info.dli_fname ? info.dli_fname : "";
    return path.substr(0, path.rfind('/'));
}

int startupChild(int argc, char **argv) {
    const std::string which = argc > 2 ? argv[2] : "";
    double start = wallNs();
    if (which == "library") {
        if (velmora_initJava() != 0) fail("velmora_initJava");
        const double elapsed = wallNs() - start;
        Dl_info info{};
        dladdr(dlsym(jvmlibHandle, "JNI_CreateJavaVM"), &info);
        std::printf("%.0f %s\n", elapsed, info.dli_fname);
    } else if (which == "raw" && argc > 3) {
        start = wallNs();
        void *lib = dlopen(argv[3], RTLD_LAZY);
        if (!lib) fail("dlopen");
        using Create = jint(JNICALL *)(JavaVM **, void **, void *);
        auto create = reinterpret_cast<Create>(dlsym(lib, "JNI_CreateJavaVM"));
        const std::string dir = libraryDir();
        std::string classPath = "-Djava.class.path=" + dir + "/velmora.jar:" + dir + "/commons-codec-1.3.jar:" + dir +
                                "/xmlrpc-2.0.jar";
        JavaVMOption options[3] = {};
        options[0].optionString = classPath.data();
        options[1].optionString = const_cast<char *>("-Xmx128M");
        options[2].optionString = const_cast<char *>("-Dcom.sun.management.jmxremote");
        JavaVMInitArgs args{JNI_VERSION_1_4, 3, options, JNI_TRUE};
        JavaVM *vm = nullptr;
        JNIEnv *e = nullptr;
        if (create(&vm, reinterpret_cast<void **>(&e), &args) != JNI_OK) fail("JNI_CreateJavaVM");
        if (!e->FindClass("velmora/user/ManagementImpl")) fail("FindClass");
        std::printf("%.0f\n", wallNs() - start);
    } else {
        fail("--startup library|raw <libjvm>");
    }
    std::fflush(stdout);
    std::_Exit(0);
}

double runChild(const std::string &arguments, std::string *rest) {
    const std::string command = "/proc/" + std::to_string(getpid()) + "/exe --startup " + arguments + " 2>/dev/null";
    FILE *child = popen(command.c_str(), "r");
    if (!child) fail("popen");
    char line[4096] = {};
    const bool read = std::fgets(line, sizeof line, child) != nullptr;
    pclose(child);
    if (!read) fail("start-up child gave no result");
    char *end = nullptr;
    const double ns = std::strtod(line, &end);
    if (rest) {
        *rest = end;
        while (!rest->empty() && (rest->front() == ' ')) rest->erase(0, 1);
        while (!rest->empty() && (rest->back() == '\n')) rest->pop_back();
    }
    return ns;
}

void compareStartup(int pairs) {
    std::string runtime;
    runChild("library", &runtime);  // learns the runtime the locator picks; warms the file cache
    runChild("raw '" + runtime + "'", nullptr);
    std::vector<double> lib, base, ratio;
    for (int p = 0; p < pairs; ++p) {
        double l, b;
        if (p % 2 == 0) {
            l = runChild("library", nullptr);
            b = runChild("raw '" + runtime + "'", nullptr);
        } else {
            b = runChild("raw '" + runtime + "'", nullptr);
            l = runChild("library", nullptr);
        }
        lib.push_back(l);
        base.push_back(b);
        ratio.push_back(l / b);
    }
    std::printf("start-up (wall time, %d pairs of processes): velmora_initJava %.1f ms, raw JNI_CreateJavaVM "
                "%.1f ms, ratio %.2fx\n  runtime: %s\n",
                pairs, median(lib) / 1e6, median(base) / 1e6, median(ratio), runtime.c_str());
}

std::string machine() {
    std::ifstream cpuinfo("/proc/cpuinfo");
    std::string line;
    while (std::getline(cpuinfo, line))
        if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
    return "unknown CPU";
}

std::string property(const char *name) {
    char buf[256];
    size_t len = sizeof buf;
    return velmora_getJavaSystemProperty(name, buf, &len) == 0 && len > 0 ? buf : "?";
}

}  // namespace

int main(int argc, char **argv) {
    if (argc > 1 && std::strcmp(argv[1], "--startup") == 0) return startupChild(argc, argv);
    const int rounds = argc > 1 ? std::max(3, std::atoi(argv[1])) : 201;

    // The SDK double answers without journaling, with a 64-byte text and a
    // collection of 10,000 names.
    const std::string options = std::string("-Dvelmora.sdk.quiet=true -Dvelmora.sdk.quiet.int=") +
                                std::to_string(kWalkLength) + " -Dvelmora.sdk.quiet.text=" + kText64;
    setenv("JAVA_TOOL_OPTIONS", options.c_str(), 1);

    std::printf("machine: %s, %u hardware threads\n", machine().c_str(), std::thread::hardware_concurrency());
    std::fflush(stdout);
    if (argc <= 2) compareStartup(5);

    // Its initialiser answers the fixed int too.
    if (velmora_init() < 0) fail("velmora_init failed: is velmora.jar beside the library?");
    std::printf("JDK: %s %s (%s)\n\n", property("java.vm.name").c_str(), property("java.runtime.version").c_str(),
                property("java.home").c_str());
    raw.resolve();
    if (velmora_peach_handle() < 0 || velmora_peach_setIntermediateResultHandler(0, countDelivery) != 0)
        fail("no intermediate-result handler");
    raw.bind(reinterpret_cast<void *>(&deliverThrough));
    compareCalls(rounds, argc > 2 ? argv[2] : nullptr);
    if (argc > 2) return 0;
    std::printf("\n");
    memoryGrowth();
    return 0;
}
