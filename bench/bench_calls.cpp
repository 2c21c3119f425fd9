// Cost of forwarded calls against the SDK double (build/lib/velmora.jar), and
// the native memory a host thread keeps after many calls: the
// "native_growth_kib" counter (malloc'd bytes in use, where the JVM keeps JNI
// references; the Java heap is not counted) must stay near zero however many
// iterations run.
//
//   build/bin/velmora_bench [--benchmark_filter=...]
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "velmora.h"

namespace {

long nativeInUseKib() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long>((info.uordblks + info.hblkhd) / 1024);
}

template <class Call> void measure(benchmark::State &state, Call call) {
    for (int i = 0; i < 1000; ++i) call();  // warm up: JIT, first attach
    const long before = nativeInUseKib();
    for (auto _ : state) benchmark::DoNotOptimize(call());
    state.counters["native_growth_kib"] = double(nativeInUseKib() - before);
}

void IntCall(benchmark::State &state) { measure(state, [] { return velmora_ready(1); }); }

void StringResult(benchmark::State &state) {
    measure(state, [] {
        char buf[64];
        size_t len = sizeof buf;
        return velmora_getTempDir(buf, &len);
    });
}

void TextArgument(benchmark::State &state) { measure(state, [] { return velmora_setLogLevel("info"); }); }

void StringList(benchmark::State &state) {
    std::vector<const char *> list(static_cast<std::size_t>(state.range(0)), "job-parameter");
    measure(state, [&] { return velmora_createJob3(1, static_cast<int>(list.size()), list.data()); });
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BuiltInStatusText(benchmark::State &state) {
    measure(state, [] {
        char buf[64];
        size_t len = sizeof buf;
        return velmora_describeStatusCode(-13, buf, &len);
    });
}

void NotInitialisedGuard(benchmark::State &state) { measure(state, [] { return velmora_peach_setJobs(1, 1); }); }

BENCHMARK(IntCall);
BENCHMARK(StringResult);
BENCHMARK(TextArgument);
BENCHMARK(StringList)->Arg(1)->Arg(16)->Arg(256);
BENCHMARK(BuiltInStatusText);
BENCHMARK(NotInitialisedGuard);
BENCHMARK(IntCall)->Threads(2)->Name("IntCall/threads");

}  // namespace

int main(int argc, char **argv) {
    // The SDK double answers without journaling, so that the bridge is measured.
    setenv("JAVA_TOOL_OPTIONS", "-Dvelmora.sdk.quiet=true", 1);
    if (velmora_init() != 0) {
        std::fprintf(stderr, "velmora_init failed: is velmora.jar beside the library?\n");
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
