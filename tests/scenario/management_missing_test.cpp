// The management families against an SDK whose management class has a
// constructor and no method at all: every call is -12, writes nothing to any
// output and leaves no Java exception behind.
#include <cstdint>
#include <functional>
#include <string>

#include "scenario.hpp"

namespace {

#define T9 "1", "2", "3", "4", "5", "6", "7", "8", "9"
const char *kList[] = {"a", "b", "c"};

TEST(ManagementMissingMethods, EveryFamilyReportsMethodNotFound) {
    Scenario s(variantJar("no-initializer"));
    ASSERT_EQ(VELMORA_FN(s, velmora_init)(), VELMORA_STATUS_NO_INITIALIZER);  // the object exists

    struct Out {
        char buf[16];
        size_t len = sizeof buf;
        int index = 1;
    };
    struct Case {
        const char *function;
        std::function<int64_t(Out &)> call;
    };
#define CASE(name, ...) {#name, [&s](Out &o) -> int64_t { return (void)o, VELMORA_FN(s, name)(__VA_ARGS__); }}
    const Case cases[] = {
        CASE(velmora_createBundle3, 1, T9, 1, 2, kList),
        CASE(velmora_createSignedBundle3, 1, T9, "10", "11", 1, 2, kList),
        CASE(velmora_bundleWithPrefixExists, "a", "b"),
        CASE(velmora_uploadBundleWithName, 1, "a"),
        CASE(velmora_getLastCreatedBundleName, 1, o.buf, &o.len),
        CASE(velmora_createProject3, 1, 2, "t", 3, kList),
        CASE(velmora_createEmptyProject, 1, 2, "t"),
        CASE(velmora_createJob3, 1, 0, kList),
        CASE(velmora_isJobCompleted, 1, int64_t{1} << 40),
        CASE(velmora_getProjectParamValue, 1, "k", o.buf, &o.len),
        CASE(velmora_getProjectParamName, 1, &o.index, o.buf, &o.len),
        CASE(velmora_downloadPartialResult, 1),
        CASE(velmora_getUsedTime, 1),
        CASE(velmora_printStatistics, 1),
        CASE(velmora_getStatisticsString, 1, o.buf, &o.len),
        CASE(velmora_getResultFiles, 1, &o.index, o.buf, &o.len),
        CASE(velmora_getStreamedResultFiles, 1, &o.index, o.buf, &o.len),
        CASE(velmora_peach3, 3, kList),
        CASE(velmora_peachNextFile, 1, o.buf, &o.len),
        CASE(velmora_peachDone, 1),
    };
#undef CASE
    for (const Case &c : cases) {
        Out o;
        o.buf[0] = '#';
        EXPECT_EQ(c.call(o), int64_t{VELMORA_STATUS_METHOD_NOT_FOUND}) << c.function;
        EXPECT_EQ(o.buf[0], '#') << c.function;
        EXPECT_EQ(o.len, sizeof o.buf) << c.function;
        EXPECT_EQ(o.index, 1) << c.function;
    }

    // Nothing was left pending: a call that needs a clean thread still works.
    char path[4096];
    size_t len = sizeof path;
    EXPECT_EQ(VELMORA_FN(s, velmora_getJavaSystemProperty)("java.class.path", path, &len), 0);
    EXPECT_EQ(std::string(path).find(s.dir().string()), 0u) << path;
}

}  // namespace
