// Every forwarding function in one table: the C call, the Java overload(s) it
// must reach with their arguments (journal lines of the SDK double, written
// here by hand in Java's terms), the outcome scripted for each, the C result
// and the text delivered into the buffer. Peach rows use the peach handle 5.
// The unload rows drop the peach wrapper. The SDK double is
// generated from the Java side of this table (tests/sdk/generate.cpp), so a
// row whose overload the library does not call fails as -12 in every pass.
#pragma once

#include <string.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "velmora.h"

// A caller buffer with its in/out length, preset with a marker so that
// "untouched" can be asserted; out() and size() are what a call is given.
struct Buffer {
    explicit Buffer(std::size_t capacity, bool noBytes = false, bool noLength = false)
        : len(capacity), noBytes(noBytes), noLength(noLength) {
        std::fill(bytes, bytes + sizeof bytes, '#');
    }
    char bytes[256];
    std::size_t len;
    bool noBytes, noLength;
    char *out() { return noBytes ? nullptr : bytes; }
    std::size_t *size() { return noLength ? nullptr : &len; }
    std::string text() const { return std::string(bytes, strnlen(bytes, sizeof bytes)); }
    bool untouched() const { return bytes[0] == '#'; }
};

namespace table {

struct Reached {
    std::string line;     // journal line: name, descriptor, arguments
    std::string outcome;  // scripted for that overload
    std::string key() const { return line.substr(0, line.find(' ')); }  // name and descriptor
};
struct Row {
    const char *function;
    std::function<int64_t(Buffer &)> call;
    std::vector<Reached> reached;
    int64_t result;
    const char *text = nullptr;  // delivered into the buffer; nullptr: untouched
    bool nullIsNoText = false;   // a null Java string is no text, else ""
};

// Runs `call` with a va_list holding the arguments after `anchor`.
inline int withVaList(const std::function<int(va_list)> &call, int anchor, ...) {
    va_list ap;
    va_start(ap, anchor);
    const int result = call(ap);
    va_end(ap);
    return result;
}

// The in/out index of the indexed-name rows: each call passes indexIn
// (their lines expect 1) in the slot indexOut, or no slot for kNoIndex.
inline constexpr int kNoIndex = INT32_MIN;
inline int indexIn = 1, indexOut;
inline int *index() { return (indexOut = indexIn) == kNoIndex ? nullptr : &indexOut; }

// The strings every list row (every row of a String[] overload) passes:
// listCount of listPool, after the first list of two rows that take two
// (always 2). The rows' lines expect 3 of kPool, a null and an empty string
// among them: LIST, or FIRST and SECOND.
inline const char *kPool[] = {"a", nullptr, "", "d", nullptr};
inline int listCount = 3;
inline const char *const *listPool = kPool;

#define S "Ljava/lang/String;"
#define SA "[Ljava/lang/String;"
#define POOL listPool[0], listPool[1], listPool[2], listPool[3], listPool[4]
#define T9 "t1", "t2", "t3", "t4", "t5", "t6", "t7", "t8", "t9"
#define Q9 "\"t1\", \"t2\", \"t3\", \"t4\", \"t5\", \"t6\", \"t7\", \"t8\", \"t9\""
#define CALL(expression) [](Buffer & b) -> int64_t { return (void)b, (expression); }
#define VA(expression) withVaList([](va_list ap) { return expression; }, 0, POOL)
#define OUT b.out(), b.size()
#define ARRAY const_cast<const char **>(listPool)
#define LIST "[\"a\", null, \"\"]"
#define FIRST "[\"a\", null]"
#define SECOND "[\"\", \"d\", null]"

inline std::vector<Row> forwarders() {
    const std::string bundle = "createBundle(I" S S S S S S S S S SA SA ")I 3, " Q9 ", " FIRST ", " SECOND;
    const std::string sealed = "createSignedBundle(I" S S S S S S S S S S SA SA S ")I 3, " Q9 ", \"t10\", " FIRST
                               ", " SECOND ", \"t11\"";
    const std::string project = "createProject(II" S SA ")I 7, 8, \"t\", " LIST;
    const std::string handler = "setIntermediateResultHandler(ILvelmora/user/IntermediateResultHandler;)V 5, "
                                "NativeFunctionCaller";
    return {
// A row that passes `args` and returns `value` (as Java returned it), true (1), or a text.
#define ROW(name, args, line, value) {#name, CALL(velmora_##name args), {{line, #value}}, value}
#define YES(name, args, line) {#name, CALL(velmora_##name args), {{line, "true"}}, 1}
#define TXT(name, args, line, text, noText) {#name, CALL(velmora_##name args), {{line, text}}, 0, text, noText}
        ROW(open, (), "open()I", 2147483647), ROW(ready, (-3), "ready(I)I -3", -7),
        ROW(setLogLevel, ("debug"), "setLogLevel(" S ")I \"debug\"", 3),
        {"setLogLevel(null)", CALL(velmora_setLogLevel(nullptr)), {{"setLogLevel(" S ")I null", "3"}}, 3},
        // Text reaches Java as its characters: modified UTF-8 as it is, standard UTF-8 outside the BMP as a
        // surrogate pair, each maximal ill-formed subsequence (an overlong form too) as one U+FFFD.
#define TEXT(what, c, java) {"setLogLevel(" what ")", CALL(velmora_setLogLevel(c)), {{"setLogLevel(" S ")I \"" java "\"", "3"}}, 3}
#define FFFD "\xEF\xBF\xBD"
        TEXT("well formed", "whole words first: \xC3\xA9\xE2\x82\xAC a\xF0\x9F\x98\x80 \xF4\x8F\xBF\xBF \xED\xA0\xBD\xED\xB8\x80 a\xC0\x80z",
             "whole words first: \xC3\xA9\xE2\x82\xAC a\xED\xA0\xBD\xED\xB8\x80 \xED\xAF\xBF\xED\xBF\xBF \xED\xA0\xBD\xED\xB8\x80 a\xC0\x80z"),
        TEXT("overlong", "\xC0\xAF|\xE0\x80\xAF|\xF0\x80\x80\xAF", FFFD FFFD "|" FFFD FFFD FFFD "|" FFFD FFFD FFFD FFFD),
        // Beyond U+10FFFF, cut short, stray and invalid bytes, cut at the end.
        TEXT("ill formed", "\xF4\x90\x80\x80|\xF0\x9F\x98z|\x80\xC1\xBF\xFF|x\xE2\x82",
             FFFD FFFD FFFD FFFD "|" FFFD "z|" FFFD FFFD FFFD FFFD "|x" FFFD),
        YES(actionWait, (int64_t{1} << 40), "actionWait(J)Z 1099511627776"),
        TXT(getLastErrorMessage, (OUT), "getLastErrorMessage()" S, "bad", false),
        TXT(getUserLogin, (OUT), "getUserLogin()" S, "me", false), TXT(getTempDir, (OUT), "getTempDir()" S, "/t", false),
        TXT(getPluginConf, ("p", "k", OUT), "getPluginConf(" S S ")" S " \"p\", \"k\"", "v", false),
        ROW(getPlugin, ("p", nullptr), "getPlugin(" S ")Lvelmora/user/VelmoraManagerPlugin; \"p\"", 0),
        TXT(describeStatusCode, (-5, OUT), "describeStatusCode(I)" S " -5", "remote failure", false),
        ROW(uploadBundleWithName, (4, "b"), "uploadBundle(I" S ")I 4, \"b\"", 44),
        YES(bundleExists, ("b"), "bundleExists(" S ")Z \"b\""),
        YES(bundleVersionExists, ("b", "v"), "bundleVersionExists(" S S ")Z \"b\", \"v\""),
        YES(bundleWithPrefixExists, ("b", "p"), "bundleExists(" S S ")Z \"b\", \"p\""),
        ROW(useBundleWithPrefix, (4, "b", "p"), "useBundle(I" S S ")I 4, \"b\", \"p\"", 47),
        ROW(setBundleId, (4, 9), "setBundleId(II)I 4, 9", 49), ROW(signJar, ("j", "k"), "signJar(" S S ")I \"j\", \"k\"", 50),
        ROW(createEmptyProject, (7, 8, "t"), "createProject(II" S ")I 7, 8, \"t\"", 52),
// The three forms of a string-list function: variadic, va_list, array.
#define FORMS(stem, line, value, ...)                                                                           \
    {#stem, CALL(velmora_##stem(__VA_OPT__(__VA_ARGS__, ) listCount, POOL)), {{line, #value}}, value},                \
        {#stem "2", CALL(VA(velmora_##stem##2(__VA_OPT__(__VA_ARGS__, ) listCount, ap))), {{line, #value}}, value}, \
        {#stem "3", CALL(velmora_##stem##3(__VA_OPT__(__VA_ARGS__, ) listCount, ARRAY)), {{line, #value}}, value}
#define LIST_STEM(stem, value) FORMS(stem, #stem "(I" SA ")I 7, " LIST, value, 7)
        LIST_STEM(setProjectParams, 53), LIST_STEM(createProjectJobs, 54), LIST_STEM(createJob, 55),
        LIST_STEM(createCachedJob, 56), FORMS(createBundle, bundle, 41, 3, T9, 2),
        FORMS(createSignedBundle, sealed, 42, 3, T9, "t10", "t11", 2), FORMS(createProject, project, 51, 7, 8, "t"),
        FORMS(peach, "peach(" SA ")I " LIST, 90),
#define INT_ROW(name, value) {#name, CALL(velmora_##name(7)), {{#name "(I)I 7", #value}}, value}
#define BOOL_ROW(name, value) {#name, CALL(velmora_##name(7)), {{#name "(I)Z 7", #value}}, value}
#define DIR_ROW(name, value) {#name, CALL(velmora_##name(7, "d")), {{#name "(I" S ")I 7, \"d\"", #value}}, value}
#define TEXT_ROW(name, text, noText) {#name, CALL(velmora_##name(7, OUT)), {{#name "(I)" S " 7", text}}, 0, text, noText}
// An indexed name: the count method, then the name at position 1.
#define WALK(name, count, n, each, text) \
    {#name, CALL(velmora_##name(7, index(), OUT)), {{count "(I)I 7", #n}, {each "(II)" S " 7, 1", text}}, 0, text}
        INT_ROW(flushCachedJobs, 60), INT_ROW(markAllJobsCreated, 61), INT_ROW(addUserClientsToProject, 62),
        INT_ROW(startProject, 63), INT_ROW(stopProject, 64), INT_ROW(removeProject, 65), INT_ROW(waitCompletion, 66),
        INT_ROW(waitCompletionBG, 67), INT_ROW(getProjectId, 68), INT_ROW(getProjectStatus, 69),
        INT_ROW(getProjectParamCount, 70), TEXT_ROW(getProjectDescription, "described", false),
        TEXT_ROW(getResultDirectory, "/r", false), TEXT_ROW(getResultFile, "r.zip", false),
        TEXT_ROW(getStatisticsString, "stats", true), TEXT_ROW(peachNextFile, "next", true),
        TEXT_ROW(getLastCreatedBundleName, "last.bundle", true), DIR_ROW(setDownloadDir, 82), DIR_ROW(setUnzipDir, 83),
        DIR_ROW(useBundle, 46), BOOL_ROW(isCompleted, true), BOOL_ROW(isFailed, false), INT_ROW(close, 1), INT_ROW(getLastError, 2), INT_ROW(stopWaitingBG, 5),
        INT_ROW(uploadBundle, 43), INT_ROW(approveUploadedBundles, 45), INT_ROW(getBundleId, 48),
        ROW(cleanup, (7, 8), "cleanup(II)I 7, 8", 71), ROW(setProjectId, (7, 8), "setProjectId(II)I 7, 8", 72),
        ROW(sendJobPostParameter, (7, INT64_MIN, "t"), "sendJobPostParameter(IJ" S ")I 7, -9223372036854775808, \"t\"", 73),
        YES(isJobCompleted, (7, (int64_t{1} << 32) + 5), "isJobCompleted(IJ)Z 7, 4294967301"),
        TXT(getProjectParamValue, (7, "k", OUT), "getProjectParamValue(I" S ")" S " 7, \"k\"", "value", false),
        WALK(getProjectParamName, "getProjectParamCount", 3, "getProjectParamName", "param"),
        WALK(getResultFiles, "getResultFileCount", 2, "getResultFileName", "f1"),
        WALK(getStreamedResultFiles, "getStreamedResultFilesCount", 3, "getStreamedResultFileName", "s1"),
        INT_ROW(downloadResult, 80), ROW(downloadPartialResult, (7), "downloadResult(IZ)I 7, true", 81), INT_ROW(unzip, 84),
        ROW(unzipFile, ("a", "b", "c"), "unzipFile(" S S S ")I \"a\", \"b\", \"c\"", 85),
        ROW(setStreamResults, (7, 0), "setStreamResults(IZ)I 7, false", 86), INT_ROW(getStreamedResultFilesCount, 87),
        ROW(getUsedCpuTime, (7), "getUsedCpuTime(I)J 7", -4294967296), ROW(getUsedTime, (7), "getUsedTime(I)J 7", 9223372036854775807),
        TXT(getProjectStatistic, (7, "n", OUT), "getProjectStatistic(I" S ")" S " 7, \"n\"", "stat", false),
        ROW(printStatistics, (7), "printStatistics(I)V 7", 0), ROW(peachDone, (7), "peachDone(I)V 7", 0),

// Peach setters named as their Java method, taking one text, two texts, a flag or an int.
#define P_TEXT(name, a) {"peach_" #name, CALL(velmora_peach_##name(5, a)), {{#name "(I" S ")V 5, \"" a "\"", ""}}, 0}
#define P_TEXTS(name, a, b) \
    {"peach_" #name, CALL(velmora_peach_##name(5, a, b)), {{#name "(I" S S ")V 5, \"" a "\", \"" b "\"", ""}}, 0}
#define P_FLAG(name, flag) {"peach_" #name, CALL(velmora_peach_##name(5, flag)), {{#name "(IZ)V 5, " #flag, ""}}, 0}
#define P_INT(name, n) {"peach_" #name, CALL(velmora_peach_##name(5, n)), {{#name "(II)V 5, " #n, ""}}, 0}
#define PEACH(name, args, line) {"peach_" #name, CALL(velmora_peach_##name args), {{line, ""}}, 0}
#define P_RESULT(name, value) {"peach_" #name, CALL(velmora_peach_##name(5)), {{#name "(I)I 5", #value}}, value}
#define P_FORMS(stem, line, ...)                                                                      \
    {"peach_" #stem, CALL(velmora_peach_##stem(__VA_ARGS__, listCount, POOL)), {{#stem line, ""}}, 0}, \
        {"peach_" #stem "3", CALL(velmora_peach_##stem##3(__VA_ARGS__, listCount, ARRAY)), {{#stem line, ""}}, 0}
        P_TEXT(setName, "nightly"), P_TEXT(setStateDir, "/var"), P_TEXT(setDescription, "Grüße"),
        P_TEXT(setPriority, "3"), P_TEXT(setResultFile, "out.zip"), P_TEXT(addSourceFile, "main.c"),
        P_TEXT(setExeBundleName, "exe"), P_TEXT(setExecutable, "run.sh"), P_TEXT(addExeImport, "lib.so"),
        P_TEXT(addOutputFile, "o.txt"), P_TEXT(addDataFile, "d.csv"), P_TEXT(addParamFile, "p.txt"),
        P_TEXT(addParamExternalResource, "url"),
        P_TEXTS(putSourceExtras, "k", "v"), P_TEXTS(putExeExtras, "x", "y"), P_TEXTS(addDataFileWithDir, "d.csv", "in"),
        P_TEXTS(putDataExtras, "p", "q"), P_TEXTS(putJobExtras, "m", "n"), P_TEXTS(addParamFileWithDir, "p.txt", "cfg"),
        P_TEXTS(putParamExtras, "r", "s"), P_TEXTS(putProjectParam, "key", "value"),
        P_FLAG(setMessages, true), P_FLAG(setAllowPartial, false), P_FLAG(setRemove, true), P_FLAG(setCleanup, false),
        P_FLAG(setClose, true), P_FLAG(setStream, false), P_FLAG(setExeSkipDigest, true), P_FLAG(setDataCopy, true),
        P_FLAG(setDataSkipDigest, false), P_FLAG(setJobSkipDigest, true), P_FLAG(setParamSkipDigest, false),
        P_FLAG(setParamCopy, true), P_INT(setProjectId, -4), P_INT(setJobs, 12), P_INT(postProcessed, 4),
        P_RESULT(getProjectHandle, -42), P_RESULT(getProjectId, 91), P_RESULT(execute, -3),
        PEACH(setPriorityI, (5, 3), "setPriority(II)V 5, 3"), P_FORMS(setJobFileNames, "(I" SA ")V 5, " LIST, 5),
        P_FORMS(addJobFile, "(I" SA ")V 5, " LIST, 5), P_FORMS(addJobFileWithDir, "(I" S SA ")V 5, \"dir\", " LIST, 5, "dir"),
        YES(peach_sourcesChanged, (5), "sourcesChanged(I)Z 5"),
        PEACH(addExeFile, (5, "a", "b", "c", "d"), "addExeFile(I" S S S S ")V 5, \"a\", \"b\", \"c\", \"d\""),
        PEACH(newDataBundle, (5), "newDataBundle(I)V 5"), PEACH(done, (5), "done(I)V 5"),
        PEACH(newDataBundleWithName, (5, "set1"), "newDataBundle(I" S ")V 5, \"set1\""),
        PEACH(addParamFileWithTarget, (5, "p.txt", "cfg"), "addParamFile(I" S S ")V 5, \"p.txt\", \"cfg\""),
        TXT(peach_nextFile, (5, OUT), "nextFile(I)" S " 5", "f.out", true),
        TXT(peach_getLastErrorMessage, (5, OUT), "getLastErrorMessage(I)" S " 5", "boom", true),
        ROW(peach_setIntermediateResultHandler, (5, [](const char *) {}), handler, 0), ROW(peach_handle, (), "get()I", 5),
        ROW(unload, (2), "unload(Z)I true", 92), ROW(unload2, (1, 0), "unload(ZZ)I true, false", 93),
        ROW(unload3, (0, 255), "unload3(ZZ)I false, true", 94),
    };
#undef PEACH
#undef ROW
#undef YES
#undef TXT
#undef WALK
#undef P_TEXT
#undef P_TEXTS
#undef P_FLAG
#undef P_INT
#undef TEXT
#undef FFFD
#undef INT_ROW
#undef BOOL_ROW
#undef DIR_ROW
#undef TEXT_ROW
#undef P_RESULT
#undef LIST_STEM
#undef FORMS
#undef ARRAY
#undef P_FORMS
}

}  // namespace table
