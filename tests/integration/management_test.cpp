// The management families (bundles, projects and jobs, results and
// statistics, one-call peach) against the SDK double: the Java overload and
// arguments every function reaches, the three string-list forms, 64-bit
// values, string and indexed-name results at their boundaries, and the
// bridge's own failures.
#include <cstdarg>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "support/fixture.hpp"

namespace {

#define S "Ljava/lang/String;"
#define SA "[Ljava/lang/String;"
#define POOL "p0", "p1", "p2", "p3", "p4"
#define T9 "t1", "t2", "t3", "t4", "t5", "t6", "t7", "t8", "t9"
#define T11 T9, "t10", "t11"
const char *kPool[] = {POOL};
const char *kTexts[] = {T11};

// Runs `call` with a va_list holding the arguments after `anchor`.
int withVaList(const std::function<int(va_list)> &call, int anchor, ...) {
    va_list ap;
    va_start(ap, anchor);
    const int result = call(ap);
    va_end(ap);
    return result;
}

// Journal renderings: "a", "b" and ["a", "b"].
std::string quoted(const char *const *texts, int from, int to) {
    std::string out;
    for (int i = from; i < to; ++i) out += (i == from ? "\"" : ", \"") + std::string(texts[i]) + "\"";
    return out;
}
std::string array(int from, int to) { return "[" + quoted(kPool, from, to) + "]"; }

// The two bundle creations, their lists split from the pool at count1.
std::string bundleLine(int count1, int count2) {
    return "createBundle(I" S S S S S S S S S SA SA ")I 3, " + quoted(kTexts, 0, 9) + ", " + array(0, count1) + ", " +
           array(count1, count1 + count2);
}
std::string signedLine(int count1, int count2) {
    return "createSignedBundle(I" S S S S S S S S S S SA SA S ")I 3, " + quoted(kTexts, 0, 10) + ", " +
           array(0, count1) + ", " + array(count1, count1 + count2) + ", \"t11\"";
}

// One exported function: the Java calls it makes (journal line and the
// outcome scripted for that overload), its result and the text it delivers.
struct Reached {
    std::string line;
    std::string outcome;
};
struct Row {
    const char *function;
    std::function<int64_t(Buffer &)> call;
    std::vector<Reached> reached;
    int64_t result;
    const char *text = nullptr;
};

// An index slot for the walks of the table.
int *position(int value) {
    static int slot;
    slot = value;
    return &slot;
}

std::string keyOf(const std::string &line) { return line.substr(0, line.find(' ')); }

#define CALL(expression) [](Buffer & b) -> int64_t { return (void)b, (expression); }
#define VA(expression) withVaList([](va_list ap) { return expression; }, 0, POOL)
#define OUT b.bytes, &b.len

std::vector<Row> everyFunction() {
    const std::string bundle = bundleLine(2, 3), sealed = signedLine(2, 3), list = array(0, 2);
    const std::string project = "createProject(II" S SA ")I 7, 8, \"t\", " + list;
    return {
        {"createBundle", CALL(velmora_createBundle(3, T9, 2, 3, POOL)), {{bundle, "41"}}, 41},
        {"createBundle2", CALL(VA(velmora_createBundle2(3, T9, 2, 3, ap))), {{bundle, "41"}}, 41},
        {"createBundle3", CALL(velmora_createBundle3(3, T9, 2, 3, kPool)), {{bundle, "41"}}, 41},
        {"createSignedBundle", CALL(velmora_createSignedBundle(3, T11, 2, 3, POOL)), {{sealed, "42"}}, 42},
        {"createSignedBundle2", CALL(VA(velmora_createSignedBundle2(3, T11, 2, 3, ap))), {{sealed, "42"}}, 42},
        {"createSignedBundle3", CALL(velmora_createSignedBundle3(3, T11, 2, 3, kPool)), {{sealed, "42"}}, 42},
        {"uploadBundle", CALL(velmora_uploadBundle(4)), {{"uploadBundle(I)I 4", "43"}}, 43},
        {"uploadBundleWithName", CALL(velmora_uploadBundleWithName(4, "b")),
         {{"uploadBundle(I" S ")I 4, \"b\"", "44"}}, 44},
        {"approveUploadedBundles", CALL(velmora_approveUploadedBundles(4)),
         {{"approveUploadedBundles(I)I 4", "45"}}, 45},
        {"bundleExists", CALL(velmora_bundleExists("b")), {{"bundleExists(" S ")Z \"b\"", "true"}}, 1},
        {"bundleVersionExists", CALL(velmora_bundleVersionExists("b", "v")),
         {{"bundleVersionExists(" S S ")Z \"b\", \"v\"", "true"}}, 1},
        {"bundleWithPrefixExists", CALL(velmora_bundleWithPrefixExists("b", "p")),
         {{"bundleExists(" S S ")Z \"b\", \"p\"", "true"}}, 1},
        {"useBundle", CALL(velmora_useBundle(4, "b")), {{"useBundle(I" S ")I 4, \"b\"", "46"}}, 46},
        {"useBundleWithPrefix", CALL(velmora_useBundleWithPrefix(4, "b", "p")),
         {{"useBundle(I" S S ")I 4, \"b\", \"p\"", "47"}}, 47},
        {"getBundleId", CALL(velmora_getBundleId(4)), {{"getBundleId(I)I 4", "48"}}, 48},
        {"setBundleId", CALL(velmora_setBundleId(4, 9)), {{"setBundleId(II)I 4, 9", "49"}}, 49},
        {"getLastCreatedBundleName", CALL(velmora_getLastCreatedBundleName(4, OUT)),
         {{"getLastCreatedBundleName(I)" S " 4", "last.bundle"}}, 0, "last.bundle"},
        {"signJar", CALL(velmora_signJar("j", "k")), {{"signJar(" S S ")I \"j\", \"k\"", "50"}}, 50},

        {"createProject", CALL(velmora_createProject(7, 8, "t", 2, "p0", "p1")), {{project, "51"}}, 51},
        {"createProject2", CALL(VA(velmora_createProject2(7, 8, "t", 2, ap))), {{project, "51"}}, 51},
        {"createProject3", CALL(velmora_createProject3(7, 8, "t", 2, kPool)), {{project, "51"}}, 51},
        {"createEmptyProject", CALL(velmora_createEmptyProject(7, 8, "t")),
         {{"createProject(II" S ")I 7, 8, \"t\"", "52"}}, 52},
#define LIST_STEM(stem, value)                                                                                  \
    {#stem, CALL(velmora_##stem(7, 2, "p0", "p1")), {{#stem "(I" SA ")I 7, " + list, #value}}, value},          \
        {#stem "2", CALL(VA(velmora_##stem##2(7, 2, ap))), {{#stem "(I" SA ")I 7, " + list, #value}}, value}, \
        {#stem "3", CALL(velmora_##stem##3(7, 2, kPool)), {{#stem "(I" SA ")I 7, " + list, #value}}, value}
        LIST_STEM(setProjectParams, 53),
        LIST_STEM(createProjectJobs, 54),
        LIST_STEM(createJob, 55),
        LIST_STEM(createCachedJob, 56),
#define INT_ROW(name, value) {#name, CALL(velmora_##name(7)), {{#name "(I)I 7", #value}}, value}
        INT_ROW(flushCachedJobs, 60),
        INT_ROW(markAllJobsCreated, 61),
        INT_ROW(addUserClientsToProject, 62),
        INT_ROW(startProject, 63),
        INT_ROW(stopProject, 64),
        INT_ROW(removeProject, 65),
        INT_ROW(waitCompletion, 66),
        INT_ROW(waitCompletionBG, 67),
        INT_ROW(getProjectId, 68),
        INT_ROW(getProjectStatus, 69),
        INT_ROW(getProjectParamCount, 70),
        {"cleanup", CALL(velmora_cleanup(7, 8)), {{"cleanup(II)I 7, 8", "71"}}, 71},
        {"setProjectId", CALL(velmora_setProjectId(7, 8)), {{"setProjectId(II)I 7, 8", "72"}}, 72},
        {"sendJobPostParameter", CALL(velmora_sendJobPostParameter(7, 8, "t")),
         {{"sendJobPostParameter(IJ" S ")I 7, 8, \"t\"", "73"}}, 73},
        {"isCompleted", CALL(velmora_isCompleted(7)), {{"isCompleted(I)Z 7", "true"}}, 1},
        {"isFailed", CALL(velmora_isFailed(7)), {{"isFailed(I)Z 7", "true"}}, 1},
        {"isJobCompleted", CALL(velmora_isJobCompleted(7, 8)), {{"isJobCompleted(IJ)Z 7, 8", "true"}}, 1},
        {"getProjectDescription", CALL(velmora_getProjectDescription(7, OUT)),
         {{"getProjectDescription(I)" S " 7", "described"}}, 0, "described"},
        {"getProjectParamValue", CALL(velmora_getProjectParamValue(7, "k", OUT)),
         {{"getProjectParamValue(I" S ")" S " 7, \"k\"", "value"}}, 0, "value"},
        {"getProjectParamName", CALL(velmora_getProjectParamName(7, position(1), OUT)),
         {{"getProjectParamCount(I)I 7", "3"}, {"getProjectParamName(II)" S " 7, 1", "param"}}, 0, "param"},

        INT_ROW(downloadResult, 80),
        {"downloadPartialResult", CALL(velmora_downloadPartialResult(7)), {{"downloadResult(IZ)I 7, true", "81"}}, 81},
        {"setDownloadDir", CALL(velmora_setDownloadDir(7, "d")), {{"setDownloadDir(I" S ")I 7, \"d\"", "82"}}, 82},
        {"setUnzipDir", CALL(velmora_setUnzipDir(7, "d")), {{"setUnzipDir(I" S ")I 7, \"d\"", "83"}}, 83},
        INT_ROW(unzip, 84),
        {"unzipFile", CALL(velmora_unzipFile("a", "b", "c")),
         {{"unzipFile(" S S S ")I \"a\", \"b\", \"c\"", "85"}}, 85},
        {"setStreamResults", CALL(velmora_setStreamResults(7, 0)), {{"setStreamResults(IZ)I 7, false", "86"}}, 86},
        INT_ROW(getStreamedResultFilesCount, 87),
        {"getResultDirectory", CALL(velmora_getResultDirectory(7, OUT)),
         {{"getResultDirectory(I)" S " 7", "/r"}}, 0, "/r"},
        {"getResultFile", CALL(velmora_getResultFile(7, OUT)), {{"getResultFile(I)" S " 7", "r.zip"}}, 0, "r.zip"},
        {"getResultFiles", CALL(velmora_getResultFiles(7, position(0), OUT)),
         {{"getResultFileCount(I)I 7", "1"}, {"getResultFileName(II)" S " 7, 0", "f0"}}, 0, "f0"},
        {"getStreamedResultFiles", CALL(velmora_getStreamedResultFiles(7, position(2), OUT)),
         {{"getStreamedResultFilesCount(I)I 7", "3"}, {"getStreamedResultFileName(II)" S " 7, 2", "s2"}}, 0, "s2"},
        {"getUsedCpuTime", CALL(velmora_getUsedCpuTime(7)), {{"getUsedCpuTime(I)J 7", "-4294967296"}}, -4294967296LL},
        {"getUsedTime", CALL(velmora_getUsedTime(7)), {{"getUsedTime(I)J 7", "8589934597"}}, 8589934597LL},
        {"getProjectStatistic", CALL(velmora_getProjectStatistic(7, "n", OUT)),
         {{"getProjectStatistic(I" S ")" S " 7, \"n\"", "stat"}}, 0, "stat"},
        {"printStatistics", CALL(velmora_printStatistics(7)), {{"printStatistics(I)V 7", ""}}, 0},
        {"getStatisticsString", CALL(velmora_getStatisticsString(7, OUT)),
         {{"getStatisticsString(I)" S " 7", "stats"}}, 0, "stats"},

        {"peach", CALL(velmora_peach(2, "p0", "p1")), {{"peach(" SA ")I " + list, "90"}}, 90},
        {"peach2", CALL(VA(velmora_peach2(2, ap))), {{"peach(" SA ")I " + list, "90"}}, 90},
        {"peach3", CALL(velmora_peach3(2, kPool)), {{"peach(" SA ")I " + list, "90"}}, 90},
        {"peachNextFile", CALL(velmora_peachNextFile(7, OUT)), {{"peachNextFile(I)" S " 7", "next"}}, 0, "next"},
        {"peachDone", CALL(velmora_peachDone(7)), {{"peachDone(I)V 7", ""}}, 0},
#undef LIST_STEM
#undef INT_ROW
    };
}

// A started bridge for the management families.
class Management : public Bridge {};

}  // namespace

TEST_F(Management, EveryFunctionReachesItsJavaOverloadWithItsArguments) {
    for (const Row &row : everyFunction()) {
        for (const Reached &r : row.reached) sdk::script(keyOf(r.line), {r.outcome});
        Buffer b(64);
        EXPECT_EQ(row.call(b), row.result) << row.function;
        std::vector<std::string> lines;
        for (const Reached &r : row.reached) lines.push_back(r.line);
        EXPECT_EQ(sdk::journal(), lines) << row.function;
        if (row.text) {
            EXPECT_EQ(b.text(), row.text) << row.function;
            EXPECT_EQ(b.len, std::string(row.text).size() + 1) << row.function;
        } else {
            EXPECT_TRUE(b.untouched()) << row.function;
        }
    }
}

// A throwing Java method is -13 (64-bit for the time functions); nothing is
// written to any output.
TEST_F(Management, EveryFunctionReportsAJavaExceptionAs13) {
    for (const Row &row : everyFunction()) {
        for (const Reached &r : row.reached) sdk::script(keyOf(r.line), {"throw"});
        Buffer b(64);
        EXPECT_EQ(row.call(b), int64_t{VELMORA_STATUS_JAVA_EXCEPTION}) << row.function;
        EXPECT_EQ(sdk::journal(), std::vector<std::string>{row.reached.front().line}) << row.function;
        EXPECT_TRUE(b.untouched()) << row.function;
        EXPECT_EQ(b.len, 64u) << row.function;
    }
}

// No initialiser has run: every function is -11, writes nothing and starts
// no Java runtime.
TEST(ManagementBeforeStartup, EveryFunctionIsNotInitialised) {
    for (const Row &row : everyFunction()) {
        Buffer b(64);
        EXPECT_EQ(row.call(b), int64_t{VELMORA_STATUS_JAVA_NOT_INITIALIZED}) << row.function;
        EXPECT_TRUE(b.untouched()) << row.function;
        EXPECT_EQ(b.len, 64u) << row.function;
    }
    int index = 2;
    Buffer b(64);
    EXPECT_EQ(velmora_getResultFiles(1, &index, OUT), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
    EXPECT_EQ(index, 2);
    EXPECT_EQ(velmora_getJavaVM(), nullptr);
}

// Each form reads exactly `count` strings of the run it is given, in order;
// a count of 0 is an empty array. Two lists split the run at count1, and the
// signed form hands its eleventh text over after both lists.
TEST_F(Management, ListFormsReadExactlyTheirCounts) {
    struct Stem {
        std::string prefix;
        std::function<int(int)> variadic;
        std::function<int(int, va_list)> vaList;
        std::function<int(int, const char **)> array;
    };
#define STEM(stem, prefix, ...)                                                                                   \
    {prefix, [](int n) { return velmora_##stem(__VA_ARGS__ n, POOL); },                                           \
     [](int n, va_list ap) { return velmora_##stem##2(__VA_ARGS__ n, ap); },                                      \
     [](int n, const char **l) { return velmora_##stem##3(__VA_ARGS__ n, l); }}
    const Stem stems[] = {
        STEM(createProject, "createProject(II" S SA ")I 7, 8, \"t\", ", 7, 8, "t", ),
        STEM(setProjectParams, "setProjectParams(I" SA ")I 7, ", 7, ),
        STEM(createProjectJobs, "createProjectJobs(I" SA ")I 7, ", 7, ),
        STEM(createJob, "createJob(I" SA ")I 7, ", 7, ),
        STEM(createCachedJob, "createCachedJob(I" SA ")I 7, ", 7, ),
        STEM(peach, "peach(" SA ")I ", ),
    };
#undef STEM
    for (const Stem &stem : stems) {
        for (int n : {0, 1, 5}) {
            stem.variadic(n);
            withVaList([&](va_list ap) { return stem.vaList(n, ap); }, 0, POOL);
            stem.array(n, kPool);
            EXPECT_EQ(sdk::journal(), std::vector<std::string>(3, stem.prefix + array(0, n))) << n;
        }
    }

    const std::pair<int, int> splits[] = {{0, 0}, {0, 3}, {2, 0}, {5, 0}, {0, 5}, {1, 1}};
    for (auto [c1, c2] : splits) {
        velmora_createBundle(3, T9, c1, c2, POOL);
        withVaList([&](va_list ap) { return velmora_createBundle2(3, T9, c1, c2, ap); }, 0, POOL);
        velmora_createBundle3(3, T9, c1, c2, kPool);
        EXPECT_EQ(sdk::journal(), std::vector<std::string>(3, bundleLine(c1, c2))) << c1 << "+" << c2;
        velmora_createSignedBundle(3, T11, c1, c2, POOL);
        withVaList([&](va_list ap) { return velmora_createSignedBundle2(3, T11, c1, c2, ap); }, 0, POOL);
        velmora_createSignedBundle3(3, T11, c1, c2, kPool);
        EXPECT_EQ(sdk::journal(), std::vector<std::string>(3, signedLine(c1, c2))) << c1 << "+" << c2;
    }

    // Lists that cannot be read are refused before Java; a negative first
    // count never moves the second list outside the caller's array.
    const std::function<int()> refused[] = {
        [] { return velmora_createJob3(7, -1, kPool); },
        [] { return velmora_createJob3(7, 2, nullptr); },
        [] { return velmora_createProject(7, 8, "t", -1, POOL); },
        [] { return velmora_peach3(-3, kPool); },
        [] { return velmora_createBundle3(3, T9, -2, 3, kPool); },
        [] { return velmora_createBundle3(3, T9, 2, -1, kPool); },
        [] { return velmora_createSignedBundle(3, T11, -1, 1, POOL); },
        [] { return velmora_createSignedBundle3(3, T11, 0, 1, nullptr); },
    };
    for (const auto &call : refused) EXPECT_EQ(call(), VELMORA_STATUS_JAVA_EXCEPTION);
    EXPECT_TRUE(sdk::journal().empty());
    EXPECT_EQ(velmora_createJob3(7, 0, nullptr), 0);  // nothing to read, no array needed
    EXPECT_EQ(sdk::lastCall(), "createJob(I" SA ")I 7, []");
}

// Job numbers and used times keep all 64 bits in both directions.
TEST_F(Management, SixtyFourBitValuesStayIntact) {
    for (int64_t job : {int64_t{1} << 31, (int64_t{1} << 32) + 5, INT64_MAX, INT64_MIN, int64_t{-2}}) {
        velmora_isJobCompleted(1, job);
        EXPECT_EQ(sdk::lastCall(), "isJobCompleted(IJ)Z 1, " + std::to_string(job));
        velmora_sendJobPostParameter(1, job, "x");
        EXPECT_EQ(sdk::lastCall(), "sendJobPostParameter(IJ" S ")I 1, " + std::to_string(job) + ", \"x\"");
    }
    for (int64_t used : {(int64_t{1} << 32) + 7, int64_t{1} << 62, INT64_MIN, int64_t{-11}}) {
        sdk::script("getUsedTime", {std::to_string(used)});
        sdk::script("getUsedCpuTime", {std::to_string(used)});
        EXPECT_EQ(velmora_getUsedTime(1), used);
        EXPECT_EQ(velmora_getUsedCpuTime(1), used);
    }
    sdk::script("isJobCompleted", {"false"});
    EXPECT_EQ(velmora_isJobCompleted(1, int64_t{1} << 40), 0);
}

// Single string results at the edge of the buffer, and what a null Java
// string gives under each function's rule.
TEST_F(Management, StringResultsAtTheirBoundaries) {
    struct Case {
        const char *method;
        bool zeroOnNull;
        int (*fetch)(char *, size_t *);
    };
    const Case cases[] = {
        {"getProjectDescription", false, [](char *b, size_t *l) { return velmora_getProjectDescription(1, b, l); }},
        {"getProjectParamValue", false, [](char *b, size_t *l) { return velmora_getProjectParamValue(1, "k", b, l); }},
        {"getResultDirectory", false, [](char *b, size_t *l) { return velmora_getResultDirectory(1, b, l); }},
        {"getResultFile", false, [](char *b, size_t *l) { return velmora_getResultFile(1, b, l); }},
        {"getProjectStatistic", false, [](char *b, size_t *l) { return velmora_getProjectStatistic(1, "s", b, l); }},
        {"getLastCreatedBundleName", true,
         [](char *b, size_t *l) { return velmora_getLastCreatedBundleName(1, b, l); }},
        {"getStatisticsString", true, [](char *b, size_t *l) { return velmora_getStatisticsString(1, b, l); }},
        {"peachNextFile", true, [](char *b, size_t *l) { return velmora_peachNextFile(1, b, l); }},
    };
    for (const Case &c : cases) {
        sdk::script(c.method, {"0123456789"});
        for (size_t capacity : {0, 10}) {
            Buffer b(capacity);
            EXPECT_EQ(c.fetch(OUT), VELMORA_STATUS_BUFFER_TOO_SMALL) << c.method << " " << capacity;
            EXPECT_EQ(b.len, 11u) << c.method;
            EXPECT_TRUE(b.untouched()) << c.method;
        }
        Buffer exact(11);
        EXPECT_EQ(c.fetch(exact.bytes, &exact.len), 0) << c.method;
        EXPECT_EQ(exact.text(), "0123456789") << c.method;
        EXPECT_EQ(exact.len, 11u) << c.method;
        // A null buffer is no room; a null length is neither read nor written.
        size_t len = 64;
        EXPECT_EQ(c.fetch(nullptr, &len), VELMORA_STATUS_BUFFER_TOO_SMALL) << c.method;
        EXPECT_EQ(len, 11u) << c.method;
        Buffer unsized(64);
        EXPECT_EQ(c.fetch(unsized.bytes, nullptr), VELMORA_STATUS_BUFFER_TOO_SMALL) << c.method;
        EXPECT_TRUE(unsized.untouched()) << c.method;

        sdk::script(c.method, {"null"});
        for (size_t capacity : {0, 1, 64}) {
            Buffer b(capacity);
            const int status = c.fetch(OUT);
            if (c.zeroOnNull) {  // no text: 0, length 0, buffer as it was
                EXPECT_EQ(status, 0) << c.method;
                EXPECT_EQ(b.len, 0u) << c.method;
                EXPECT_TRUE(b.untouched()) << c.method;
            } else {  // plain: delivered as ""
                EXPECT_EQ(status, capacity ? 0 : VELMORA_STATUS_BUFFER_TOO_SMALL) << c.method << " " << capacity;
                EXPECT_EQ(b.len, 1u) << c.method;
                EXPECT_EQ(b.untouched(), capacity == 0) << c.method;
                if (capacity) {
                    EXPECT_EQ(b.text(), "") << c.method;
                }
            }
        }
    }
}

// The three indexed walks: the count travels back through index on success
// and on -24 only; -23 leaves "" and the position asked for.
TEST_F(Management, IndexedNamesReportCountAndBoundaries) {
    struct Collection {
        const char *count;
        const char *name;
        int (*walk)(int *, char *, size_t *);
    };
    const Collection collections[] = {
        {"getProjectParamCount", "getProjectParamName",
         [](int *i, char *b, size_t *l) { return velmora_getProjectParamName(5, i, b, l); }},
        {"getResultFileCount", "getResultFileName",
         [](int *i, char *b, size_t *l) { return velmora_getResultFiles(5, i, b, l); }},
        {"getStreamedResultFilesCount", "getStreamedResultFileName",
         [](int *i, char *b, size_t *l) { return velmora_getStreamedResultFiles(5, i, b, l); }},
    };
    struct Step {
        const char *countIs;
        const char *nameIs;
        int index;
        size_t capacity;
        int status;
        int indexAfter;
        size_t lenAfter;
        const char *text;  // nullptr: buffer untouched
    };
    const int kOutOfRange = VELMORA_STATUS_FILE_INDEX_OUT_OF_BOUNDS, kSmall = VELMORA_STATUS_BUFFER_TOO_SMALL;
    const Step steps[] = {
        {"3", "name-one", -1, 64, kOutOfRange, 3, 1, ""},
        {"3", "name-one", 3, 64, kOutOfRange, 3, 1, ""},
        {"3", "name-one", 3, 0, kOutOfRange, 3, 1, nullptr},
        {"0", "name-one", 0, 64, kOutOfRange, 0, 1, ""},
        {"3", "name-one", 1, 9, 0, 3, 9, "name-one"},
        {"3", "name-one", 1, 8, kSmall, 1, 9, ""},
        {"3", "name-one", 1, 0, kSmall, 1, 9, nullptr},
        {"3", "null", 2, 64, 0, 3, 1, ""},
        {"3", "throw", 2, 64, VELMORA_STATUS_JAVA_EXCEPTION, 2, 64, nullptr},
        {"throw", "name-one", 2, 64, VELMORA_STATUS_JAVA_EXCEPTION, 2, 64, nullptr},
    };
    for (const Collection &c : collections) {
        for (const Step &s : steps) {
            sdk::script(c.count, {s.countIs});
            sdk::script(c.name, {s.nameIs});
            Buffer b(s.capacity);
            int index = s.index;
            const std::string where = std::string(c.name) + " at " + std::to_string(s.index) + " of " + s.countIs;
            EXPECT_EQ(c.walk(&index, OUT), s.status) << where;
            EXPECT_EQ(index, s.indexAfter) << where;
            EXPECT_EQ(b.len, s.lenAfter) << where;
            EXPECT_EQ(b.untouched(), s.text == nullptr) << where;
            if (s.text) {
                EXPECT_EQ(b.text(), s.text) << where;
            }
            std::vector<std::string> expected = {std::string(c.count) + "(I)I 5"};
            if (s.status != kOutOfRange && std::string(s.countIs) != "throw")
                expected.push_back(std::string(c.name) + "(II)" S " 5, " + std::to_string(s.index));
            EXPECT_EQ(sdk::journal(), expected) << where;
        }
        // A null index pointer reads as out of range.
        sdk::script(c.count, {"3"});
        Buffer b(64);
        EXPECT_EQ(c.walk(nullptr, OUT), kOutOfRange) << c.name;
        EXPECT_EQ(b.len, 1u) << c.name;
        sdk::journal();
    }
    // The streamed count has its own forwarder and agrees with the walk.
    sdk::script("getStreamedResultFilesCount", {"4"});
    int index = -1;
    Buffer b(64);
    EXPECT_EQ(velmora_getStreamedResultFiles(5, &index, OUT), kOutOfRange);
    EXPECT_EQ(velmora_getStreamedResultFilesCount(5), index);
}

namespace {

// A va_list form reads exactly its strings from the caller's list and leaves
// it just past them.
const char *stringAfterTwoLists(int count1, int count2, ...) {
    va_list ap;
    va_start(ap, count2);
    velmora_createBundle2(1, "1", "2", "3", "4", "5", "6", "7", "8", "9", count1, count2, ap);
    const char *next = va_arg(ap, const char *);
    va_end(ap);
    return next;
}

TEST_F(Bridge, VaListFormsLeaveTheCallersListPastTheirStrings) {
    EXPECT_STREQ(stringAfterTwoLists(1, 2, "a", "b", "c", "after"), "after");
    EXPECT_STREQ(stringAfterTwoLists(0, 0, "after"), "after");
    EXPECT_EQ(sdk::journal().size(), 2u);
}

}  // namespace
