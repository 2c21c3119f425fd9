// Stress run against the SDK double: host threads make verified mixed calls
// (results checked, and every call the double journaled checked against what
// was sent) while Java threads of the double deliver intermediate results to
// the host's callback. Each host thread ends after a number of rounds and a
// new one takes its place, so attaching and detaching are exercised too.
//
//   build/bin/velmora_stress [--threads N] [--seconds S] [--rounds-per-thread R]
//
// Prints calls, errors, deliveries, host threads started, Java threads and
// resident memory at the start and the end; exits 1 on any error.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "support/sdk_control.hpp"
#include "velmora.h"

namespace {

struct Options {
    int threads = 32;
    double seconds = 60;
    int roundsPerThread = 200;
};

Options parse(int argc, char **argv) {
    Options o;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string flag = argv[i];
        const char *value = argv[i + 1];
        if (flag == "--threads") o.threads = std::atoi(value);
        else if (flag == "--seconds") o.seconds = std::atof(value);
        else if (flag == "--rounds-per-thread") o.roundsPerThread = std::atoi(value);
        else std::fprintf(stderr, "unknown option %s\n", argv[i]);
    }
    return o;
}

long residentKib() {
    long pages = 0, resident = 0;
    if (std::FILE *statm = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2) resident = 0;
        std::fclose(statm);
    }
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

std::atomic<long> calls{0}, javaCalls{0}, errors{0}, delivered{0}, badDeliveries{0}, threadsStarted{0};

void fail(const char *what, long got) {
    if (errors.fetch_add(1) < 10) std::fprintf(stderr, "error: %s (got %ld)\n", what, got);
}

void receive(const char *text) {
    if (text == nullptr || std::strncmp(text, "stress-", 7) != 0) ++badDeliveries;
    ++delivered;
}

// One round of calls of every kind; `peach` is the peach handle.
void round(int worker, int peach) {
    const char *list[] = {"alpha", "b\xC3\xA9ta", "\xE2\x82\xAC"};
    char buf[64];
    size_t len = sizeof buf;
    if (const int r = velmora_ready(worker); r != 17) fail("ready", r);
    if (const int r = velmora_getUserLogin(buf, &len); r != 0 || std::strcmp(buf, "stress-login") != 0)
        fail("getUserLogin", r);
    if (const int r = velmora_createJob3(worker, 3, list); r != 42) fail("createJob3", r);
    if (const int r = velmora_peach_setJobs(peach, worker); r != 0) fail("peach_setJobs", r);
    len = sizeof buf;
    if (const int r = velmora_describeStatusCode(-23, buf, &len); r != 0 || len != std::strlen(buf) + 1)
        fail("describeStatusCode", r);
    calls += 5;
    javaCalls += 4;
}

// Every journaled call must be one of those `round` makes, with its arguments.
bool expectedEntry(const std::string &entry) {
    const auto startsWith = [&](const char *prefix) { return entry.rfind(prefix, 0) == 0; };
    return startsWith("ready(I)I ") || entry == "getUserLogin()Ljava/lang/String;" ||
           (startsWith("createJob(I[Ljava/lang/String;)I ") &&
            entry.ends_with(", [\"alpha\", \"b\xC3\xA9ta\", \"\xE2\x82\xAC\"]")) ||
           startsWith("setJobs(II)V 5, ");
}

}  // namespace

int main(int argc, char **argv) {
    const Options o = parse(argc, argv);
    if (velmora_init() != 0) {
        std::fprintf(stderr, "velmora_init failed: is velmora.jar beside the library?\n");
        return 1;
    }
    sdk::reset();
    sdk::script("get", {"5"});
    const int peach = velmora_peach_handle();
    sdk::script("ready", {"17"});
    sdk::script("getUserLogin", {"stress-login"});
    sdk::script("createJob", {"42"});
    if (peach != 5 || velmora_peach_setIntermediateResultHandler(peach, receive) != 0) {
        std::fprintf(stderr, "peach set-up failed\n");
        return 1;
    }
    sdk::journal();

    const int javaThreadsBefore = sdk::javaThreads();
    const long rssBefore = residentKib();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(o.seconds);
    const auto running = [&] { return std::chrono::steady_clock::now() < deadline; };

    std::vector<std::thread> slots;
    for (int s = 0; s < o.threads; ++s) {
        slots.emplace_back([&, s] {
            while (running()) {
                ++threadsStarted;
                std::thread([&, s] {
                    for (int r = 0; r < o.roundsPerThread && running(); ++r) round(s, peach);
                }).join();
            }
        });
    }
    // The main thread delivers results through the double's Java threads and
    // checks the journal as it goes; resident memory is sampled again once the
    // JVM has warmed up (a quarter of the run, at most 10 s).
    long firedTotal = 0, journaled = 0, unexpected = 0, rssWarm = 0;
    const auto checkJournal = [&] {
        for (const std::string &entry : sdk::journal()) {
            ++journaled;
            if (!expectedEntry(entry) && unexpected++ < 10) std::fprintf(stderr, "unexpected: %s\n", entry.c_str());
        }
    };
    const auto warm = std::chrono::steady_clock::now() + std::chrono::duration<double>(std::min(o.seconds / 4, 10.0));
    while (running()) {
        firedTotal += sdk::fire("stress-", 2, 100);
        checkJournal();
        if (rssWarm == 0 && std::chrono::steady_clock::now() >= warm) rssWarm = residentKib();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    for (std::thread &slot : slots) slot.join();
    checkJournal();

    const long rssAfter = residentKib();
    const int javaThreadsAfter = sdk::javaThreads();
    const bool clean = errors == 0 && unexpected == 0 && journaled == javaCalls && badDeliveries == 0 &&
                       delivered == firedTotal;
    std::printf("threads %d, seconds %.0f, host threads started %ld\n", o.threads, o.seconds, threadsStarted.load());
    std::printf("calls %ld (%ld reached Java, %ld journaled), errors %ld, unexpected journal entries %ld\n",
                calls.load(), javaCalls.load(), journaled, errors.load(), unexpected);
    std::printf("deliveries %ld of %ld fired, malformed %ld\n", delivered.load(), firedTotal, badDeliveries.load());
    std::printf("java threads %d -> %d, rss %ld KiB, after warm-up %ld KiB, at the end %ld KiB\n", javaThreadsBefore,
                javaThreadsAfter, rssBefore, rssWarm, rssAfter);
    std::printf("%s\n", clean ? "clean" : "FAILED");
    return clean ? 0 : 1;
}
