// Every forwarding function in one table: the C call, the Java overload(s) it
// must reach with their arguments (journal lines of the SDK double, written
// here by hand in Java's terms), the outcome scripted for each, the C result
// and the text delivered into the buffer. Peach rows use the PeachBridge
// handle 5. The unload rows come last: they drop the peach wrapper.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "support/fixture.hpp"

namespace table {

struct Reached {
    std::string line;     // journal line: name, descriptor, arguments
    std::string outcome;  // scripted for that overload
};
struct Row {
    const char *function;
    std::function<int64_t(Buffer &)> call;
    std::vector<Reached> reached;
    int64_t result;
    const char *text = nullptr;  // delivered into the buffer; nullptr: untouched
};

// Runs `call` with a va_list holding the arguments after `anchor`.
inline int withVaList(const std::function<int(va_list)> &call, int anchor, ...) {
    va_list ap;
    va_start(ap, anchor);
    const int result = call(ap);
    va_end(ap);
    return result;
}

// An index slot for the indexed-name rows.
inline int *position(int value) {
    static int slot;
    slot = value;
    return &slot;
}

inline const char *kPool[] = {"p0", "p1", "p2", "p3", "p4"};

#define S "Ljava/lang/String;"
#define SA "[Ljava/lang/String;"
#define POOL "p0", "p1", "p2", "p3", "p4"
#define T9 "t1", "t2", "t3", "t4", "t5", "t6", "t7", "t8", "t9"
#define Q9 "\"t1\", \"t2\", \"t3\", \"t4\", \"t5\", \"t6\", \"t7\", \"t8\", \"t9\""
#define CALL(expression) [](Buffer & b) -> int64_t { return (void)b, (expression); }
#define VA(expression) withVaList([](va_list ap) { return expression; }, 0, POOL)
#define OUT b.bytes, &b.len
#define P2 "[\"p0\", \"p1\"]"
#define P3 "[\"p2\", \"p3\", \"p4\"]"

inline std::vector<Row> forwarders() {
    const std::string bundle = "createBundle(I" S S S S S S S S S SA SA ")I 3, " Q9 ", " P2 ", " P3;
    const std::string sealed = "createSignedBundle(I" S S S S S S S S S S SA SA S ")I 3, " Q9 ", \"t10\", " P2
                               ", " P3 ", \"t11\"";
    const std::string project = "createProject(II" S SA ")I 7, 8, \"t\", " P2;
    const std::string handler = "setIntermediateResultHandler(ILvelmora/user/IntermediateResultHandler;)V 5, "
                                "NativeFunctionCaller";
    return {
        {"open", CALL(velmora_open()), {{"open()I", "2147483647"}}, 2147483647},
        {"ready", CALL(velmora_ready(-3)), {{"ready(I)I -3", "-7"}}, -7},
        {"close", CALL(velmora_close(4)), {{"close(I)I 4", "1"}}, 1},
        {"getLastError", CALL(velmora_getLastError(4)), {{"getLastError(I)I 4", "2"}}, 2},
        {"setLogLevel", CALL(velmora_setLogLevel("debug")), {{"setLogLevel(" S ")I \"debug\"", "3"}}, 3},
        {"setLogLevel(null)", CALL(velmora_setLogLevel(nullptr)), {{"setLogLevel(" S ")I null", "3"}}, 3},
        {"setLogLevel(\"\")", CALL(velmora_setLogLevel("")), {{"setLogLevel(" S ")I \"\"", "3"}}, 3},
        // Standard UTF-8 outside the BMP arrives whole, as a surrogate pair.
        {"setLogLevel(U+1F600)", CALL(velmora_setLogLevel("a\xF0\x9F\x98\x80z")), {{"setLogLevel(" S ")I \"a\xED\xA0\xBD\xED\xB8\x80z\"", "3"}}, 3},
        {"actionWait", CALL(velmora_actionWait(int64_t{1} << 40)), {{"actionWait(J)Z 1099511627776", "true"}}, 1},
        {"actionWait(-1)", CALL(velmora_actionWait(-1)), {{"actionWait(J)Z -1", "false"}}, 0},
        {"stopWaitingBG", CALL(velmora_stopWaitingBG(4)), {{"stopWaitingBG(I)I 4", "5"}}, 5},
        {"getLastErrorMessage", CALL(velmora_getLastErrorMessage(OUT)), {{"getLastErrorMessage()" S, "bad"}}, 0, "bad"},
        {"getUserLogin", CALL(velmora_getUserLogin(OUT)), {{"getUserLogin()" S, "me"}}, 0, "me"},
        {"getTempDir", CALL(velmora_getTempDir(OUT)), {{"getTempDir()" S, "/t"}}, 0, "/t"},
        {"getPluginConf", CALL(velmora_getPluginConf("p", "k", OUT)), {{"getPluginConf(" S S ")" S " \"p\", \"k\"", "v"}}, 0, "v"},
        {"describeStatusCode", CALL(velmora_describeStatusCode(-5, OUT)), {{"describeStatusCode(I)" S " -5", "remote failure"}}, 0, "remote failure"},

        {"createBundle", CALL(velmora_createBundle(3, T9, 2, 3, POOL)), {{bundle, "41"}}, 41},
        {"createBundle2", CALL(VA(velmora_createBundle2(3, T9, 2, 3, ap))), {{bundle, "41"}}, 41},
        {"createBundle3", CALL(velmora_createBundle3(3, T9, 2, 3, kPool)), {{bundle, "41"}}, 41},
        {"createSignedBundle", CALL(velmora_createSignedBundle(3, T9, "t10", "t11", 2, 3, POOL)), {{sealed, "42"}}, 42},
        {"createSignedBundle2", CALL(VA(velmora_createSignedBundle2(3, T9, "t10", "t11", 2, 3, ap))), {{sealed, "42"}}, 42},
        {"createSignedBundle3", CALL(velmora_createSignedBundle3(3, T9, "t10", "t11", 2, 3, kPool)), {{sealed, "42"}}, 42},
        {"uploadBundle", CALL(velmora_uploadBundle(4)), {{"uploadBundle(I)I 4", "43"}}, 43},
        {"uploadBundleWithName", CALL(velmora_uploadBundleWithName(4, "b")), {{"uploadBundle(I" S ")I 4, \"b\"", "44"}}, 44},
        {"approveUploadedBundles", CALL(velmora_approveUploadedBundles(4)), {{"approveUploadedBundles(I)I 4", "45"}}, 45},
        {"bundleExists", CALL(velmora_bundleExists("b")), {{"bundleExists(" S ")Z \"b\"", "true"}}, 1},
        {"bundleVersionExists", CALL(velmora_bundleVersionExists("b", "v")), {{"bundleVersionExists(" S S ")Z \"b\", \"v\"", "true"}}, 1},
        {"bundleWithPrefixExists", CALL(velmora_bundleWithPrefixExists("b", "p")), {{"bundleExists(" S S ")Z \"b\", \"p\"", "true"}}, 1},
        {"useBundle", CALL(velmora_useBundle(4, "b")), {{"useBundle(I" S ")I 4, \"b\"", "46"}}, 46},
        {"useBundleWithPrefix", CALL(velmora_useBundleWithPrefix(4, "b", "p")), {{"useBundle(I" S S ")I 4, \"b\", \"p\"", "47"}}, 47},
        {"getBundleId", CALL(velmora_getBundleId(4)), {{"getBundleId(I)I 4", "48"}}, 48},
        {"setBundleId", CALL(velmora_setBundleId(4, 9)), {{"setBundleId(II)I 4, 9", "49"}}, 49},
        {"getLastCreatedBundleName", CALL(velmora_getLastCreatedBundleName(4, OUT)), {{"getLastCreatedBundleName(I)" S " 4", "last.bundle"}}, 0, "last.bundle"},
        {"signJar", CALL(velmora_signJar("j", "k")), {{"signJar(" S S ")I \"j\", \"k\"", "50"}}, 50},

        {"createProject", CALL(velmora_createProject(7, 8, "t", 2, "p0", "p1")), {{project, "51"}}, 51},
        {"createProject2", CALL(VA(velmora_createProject2(7, 8, "t", 2, ap))), {{project, "51"}}, 51},
        {"createProject3", CALL(velmora_createProject3(7, 8, "t", 2, kPool)), {{project, "51"}}, 51},
        {"createEmptyProject", CALL(velmora_createEmptyProject(7, 8, "t")), {{"createProject(II" S ")I 7, 8, \"t\"", "52"}}, 52},
#define LIST_STEM(stem, value)                                                                                  \
    {#stem, CALL(velmora_##stem(7, 2, "p0", "p1")), {{#stem "(I" SA ")I 7, " P2, #value}}, value},              \
        {#stem "2", CALL(VA(velmora_##stem##2(7, 2, ap))), {{#stem "(I" SA ")I 7, " P2, #value}}, value},     \
        {#stem "3", CALL(velmora_##stem##3(7, 2, kPool)), {{#stem "(I" SA ")I 7, " P2, #value}}, value}
        LIST_STEM(setProjectParams, 53), LIST_STEM(createProjectJobs, 54), LIST_STEM(createJob, 55),
        LIST_STEM(createCachedJob, 56),
#define INT_ROW(name, value) {#name, CALL(velmora_##name(7)), {{#name "(I)I 7", #value}}, value}
        INT_ROW(flushCachedJobs, 60), INT_ROW(markAllJobsCreated, 61), INT_ROW(addUserClientsToProject, 62),
        INT_ROW(startProject, 63), INT_ROW(stopProject, 64), INT_ROW(removeProject, 65), INT_ROW(waitCompletion, 66),
        INT_ROW(waitCompletionBG, 67), INT_ROW(getProjectId, 68), INT_ROW(getProjectStatus, 69),
        INT_ROW(getProjectParamCount, 70),
        {"cleanup", CALL(velmora_cleanup(7, 8)), {{"cleanup(II)I 7, 8", "71"}}, 71},
        {"setProjectId", CALL(velmora_setProjectId(7, 8)), {{"setProjectId(II)I 7, 8", "72"}}, 72},
        {"sendJobPostParameter", CALL(velmora_sendJobPostParameter(7, INT64_MIN, "t")), {{"sendJobPostParameter(IJ" S ")I 7, -9223372036854775808, \"t\"", "73"}}, 73},
        {"isCompleted", CALL(velmora_isCompleted(7)), {{"isCompleted(I)Z 7", "true"}}, 1},
        {"isFailed", CALL(velmora_isFailed(7)), {{"isFailed(I)Z 7", "false"}}, 0},
        {"isJobCompleted", CALL(velmora_isJobCompleted(7, (int64_t{1} << 32) + 5)), {{"isJobCompleted(IJ)Z 7, 4294967301", "true"}}, 1},
        {"getProjectDescription", CALL(velmora_getProjectDescription(7, OUT)), {{"getProjectDescription(I)" S " 7", "described"}}, 0, "described"},
        {"getProjectParamValue", CALL(velmora_getProjectParamValue(7, "k", OUT)), {{"getProjectParamValue(I" S ")" S " 7, \"k\"", "value"}}, 0, "value"},
        {"getProjectParamName", CALL(velmora_getProjectParamName(7, position(1), OUT)), {{"getProjectParamCount(I)I 7", "3"}, {"getProjectParamName(II)" S " 7, 1", "param"}}, 0, "param"},

        INT_ROW(downloadResult, 80),
        {"downloadPartialResult", CALL(velmora_downloadPartialResult(7)), {{"downloadResult(IZ)I 7, true", "81"}}, 81},
        {"setDownloadDir", CALL(velmora_setDownloadDir(7, "d")), {{"setDownloadDir(I" S ")I 7, \"d\"", "82"}}, 82},
        {"setUnzipDir", CALL(velmora_setUnzipDir(7, "d")), {{"setUnzipDir(I" S ")I 7, \"d\"", "83"}}, 83},
        INT_ROW(unzip, 84),
        {"unzipFile", CALL(velmora_unzipFile("a", "b", "c")), {{"unzipFile(" S S S ")I \"a\", \"b\", \"c\"", "85"}}, 85},
        {"setStreamResults", CALL(velmora_setStreamResults(7, 0)), {{"setStreamResults(IZ)I 7, false", "86"}}, 86},
        INT_ROW(getStreamedResultFilesCount, 87),
        {"getResultDirectory", CALL(velmora_getResultDirectory(7, OUT)), {{"getResultDirectory(I)" S " 7", "/r"}}, 0, "/r"},
        {"getResultFile", CALL(velmora_getResultFile(7, OUT)), {{"getResultFile(I)" S " 7", "r.zip"}}, 0, "r.zip"},
        {"getResultFiles", CALL(velmora_getResultFiles(7, position(0), OUT)), {{"getResultFileCount(I)I 7", "1"}, {"getResultFileName(II)" S " 7, 0", "f0"}}, 0, "f0"},
        {"getStreamedResultFiles", CALL(velmora_getStreamedResultFiles(7, position(2), OUT)), {{"getStreamedResultFilesCount(I)I 7", "3"}, {"getStreamedResultFileName(II)" S " 7, 2", "s2"}}, 0, "s2"},
        {"getUsedCpuTime", CALL(velmora_getUsedCpuTime(7)), {{"getUsedCpuTime(I)J 7", "-4294967296"}}, -4294967296LL},
        {"getUsedTime", CALL(velmora_getUsedTime(7)), {{"getUsedTime(I)J 7", "9223372036854775807"}}, INT64_MAX},
        {"getProjectStatistic", CALL(velmora_getProjectStatistic(7, "n", OUT)), {{"getProjectStatistic(I" S ")" S " 7, \"n\"", "stat"}}, 0, "stat"},
        {"printStatistics", CALL(velmora_printStatistics(7)), {{"printStatistics(I)V 7", ""}}, 0},
        {"getStatisticsString", CALL(velmora_getStatisticsString(7, OUT)), {{"getStatisticsString(I)" S " 7", "stats"}}, 0, "stats"},
        {"peach", CALL(velmora_peach(2, "p0", "p1")), {{"peach(" SA ")I " P2, "90"}}, 90},
        {"peach2", CALL(VA(velmora_peach2(2, ap))), {{"peach(" SA ")I " P2, "90"}}, 90},
        {"peach3", CALL(velmora_peach3(2, kPool)), {{"peach(" SA ")I " P2, "90"}}, 90},
        {"peachNextFile", CALL(velmora_peachNextFile(7, OUT)), {{"peachNextFile(I)" S " 7", "next"}}, 0, "next"},
        {"peachDone", CALL(velmora_peachDone(7)), {{"peachDone(I)V 7", ""}}, 0},

#define PEACH(name, args, line) {"peach_" #name, CALL(velmora_peach_##name args), {{line, ""}}, 0}
        PEACH(setName, (5, "nightly"), "setName(I" S ")V 5, \"nightly\""),
        PEACH(setStateDir, (5, "/var"), "setStateDir(I" S ")V 5, \"/var\""),
        PEACH(setDescription, (5, "Grüße"), "setDescription(I" S ")V 5, \"Grüße\""),
        PEACH(setMessages, (5, 1), "setMessages(IZ)V 5, true"),
        PEACH(setPriorityI, (5, 3), "setPriority(II)V 5, 3"),
        PEACH(setPriority, (5, "3"), "setPriority(I" S ")V 5, \"3\""),
        PEACH(setProjectId, (5, -4), "setProjectId(II)V 5, -4"),
        PEACH(setResultFile, (5, "out.zip"), "setResultFile(I" S ")V 5, \"out.zip\""),
        PEACH(setJobs, (5, 12), "setJobs(II)V 5, 12"),
        PEACH(setAllowPartial, (5, 0), "setAllowPartial(IZ)V 5, false"),
        PEACH(setRemove, (5, 1), "setRemove(IZ)V 5, true"),
        PEACH(setCleanup, (5, 0), "setCleanup(IZ)V 5, false"),
        PEACH(setClose, (5, 1), "setClose(IZ)V 5, true"),
        PEACH(setStream, (5, 0), "setStream(IZ)V 5, false"),
        {"peach_getProjectHandle", CALL(velmora_peach_getProjectHandle(5)), {{"getProjectHandle(I)I 5", "-42"}}, -42},
        {"peach_getProjectId", CALL(velmora_peach_getProjectId(5)), {{"getProjectId(I)I 5", "91"}}, 91},
        PEACH(addSourceFile, (5, "main.c"), "addSourceFile(I" S ")V 5, \"main.c\""),
        PEACH(putSourceExtras, (5, "k", "v"), "putSourceExtras(I" S S ")V 5, \"k\", \"v\""),
        {"peach_sourcesChanged", CALL(velmora_peach_sourcesChanged(5)), {{"sourcesChanged(I)Z 5", "true"}}, 1},
        PEACH(setExeBundleName, (5, "exe"), "setExeBundleName(I" S ")V 5, \"exe\""),
        PEACH(setExecutable, (5, "run.sh"), "setExecutable(I" S ")V 5, \"run.sh\""),
        PEACH(setExeSkipDigest, (5, 1), "setExeSkipDigest(IZ)V 5, true"),
        PEACH(addExeFile, (5, "a", "b", "c", "d"), "addExeFile(I" S S S S ")V 5, \"a\", \"b\", \"c\", \"d\""),
        PEACH(putExeExtras, (5, "x", "y"), "putExeExtras(I" S S ")V 5, \"x\", \"y\""),
        PEACH(addExeImport, (5, "lib.so"), "addExeImport(I" S ")V 5, \"lib.so\""),
        PEACH(addOutputFile, (5, "o.txt"), "addOutputFile(I" S ")V 5, \"o.txt\""),
        PEACH(newDataBundle, (5), "newDataBundle(I)V 5"),
        PEACH(newDataBundleWithName, (5, "set1"), "newDataBundle(I" S ")V 5, \"set1\""),
        PEACH(setDataSkipDigest, (5, 0), "setDataSkipDigest(IZ)V 5, false"),
        PEACH(addDataFile, (5, "d.csv"), "addDataFile(I" S ")V 5, \"d.csv\""),
        PEACH(addDataFileWithDir, (5, "d.csv", "in"), "addDataFileWithDir(I" S S ")V 5, \"d.csv\", \"in\""),
        PEACH(putDataExtras, (5, "p", "q"), "putDataExtras(I" S S ")V 5, \"p\", \"q\""),
        PEACH(setDataCopy, (5, 1), "setDataCopy(IZ)V 5, true"),
        PEACH(setJobSkipDigest, (5, 1), "setJobSkipDigest(IZ)V 5, true"),
        PEACH(setJobFileNames, (5, 2, "p0", "p1"), "setJobFileNames(I" SA ")V 5, " P2),
        PEACH(setJobFileNames3, (5, 2, kPool), "setJobFileNames(I" SA ")V 5, " P2),
        PEACH(addJobFile, (5, 2, "p0", "p1"), "addJobFile(I" SA ")V 5, " P2),
        PEACH(addJobFile3, (5, 2, kPool), "addJobFile(I" SA ")V 5, " P2),
        PEACH(addJobFileWithDir, (5, "dir", 2, "p0", "p1"), "addJobFileWithDir(I" S SA ")V 5, \"dir\", " P2),
        PEACH(addJobFileWithDir3, (5, "dir", 2, kPool), "addJobFileWithDir(I" S SA ")V 5, \"dir\", " P2),
        PEACH(putJobExtras, (5, "m", "n"), "putJobExtras(I" S S ")V 5, \"m\", \"n\""),
        PEACH(setParamSkipDigest, (5, 0), "setParamSkipDigest(IZ)V 5, false"),
        PEACH(addParamFile, (5, "p.txt"), "addParamFile(I" S ")V 5, \"p.txt\""),
        PEACH(addParamFileWithDir, (5, "p.txt", "cfg"), "addParamFileWithDir(I" S S ")V 5, \"p.txt\", \"cfg\""),
        PEACH(addParamFileWithTarget, (5, "p.txt", "cfg"), "addParamFile(I" S S ")V 5, \"p.txt\", \"cfg\""),
        PEACH(putParamExtras, (5, "r", "s"), "putParamExtras(I" S S ")V 5, \"r\", \"s\""),
        PEACH(addParamExternalResource, (5, "url"), "addParamExternalResource(I" S ")V 5, \"url\""),
        PEACH(setParamCopy, (5, 1), "setParamCopy(IZ)V 5, true"),
        PEACH(putProjectParam, (5, "key", "value"), "putProjectParam(I" S S ")V 5, \"key\", \"value\""),
        {"peach_execute", CALL(velmora_peach_execute(5)), {{"execute(I)I 5", "-3"}}, -3},
        {"peach_nextFile", CALL(velmora_peach_nextFile(5, OUT)), {{"nextFile(I)" S " 5", "f.out"}}, 0, "f.out"},
        PEACH(postProcessed, (5, 4), "postProcessed(II)V 5, 4"),
        PEACH(done, (5), "done(I)V 5"),
        {"peach_getLastErrorMessage", CALL(velmora_peach_getLastErrorMessage(5, OUT)), {{"getLastErrorMessage(I)" S " 5", "boom"}}, 0, "boom"},
        {"peach_setIntermediateResultHandler", CALL(velmora_peach_setIntermediateResultHandler(5, nullptr)), {{handler, ""}}, 0},

        {"unload(0)", CALL(velmora_unload(0)), {{"unload(Z)I false", "95"}}, 95},
        {"unload", CALL(velmora_unload(2)), {{"unload(Z)I true", "92"}}, 92},
        {"unload2", CALL(velmora_unload2(1, 0)), {{"unload(ZZ)I true, false", "93"}}, 93},
        {"unload3", CALL(velmora_unload3(0, 255)), {{"unload3(ZZ)I false, true", "94"}}, 94},
    };
#undef PEACH
#undef INT_ROW
#undef LIST_STEM
}

}  // namespace table
