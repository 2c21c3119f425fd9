// Shared by the peach suites: one row per exported velmora_peach_* function
// (velmora_peach_handle aside) with the call it makes and what must reach the
// SDK double, plus helpers that reach into the bridge state.
#pragma once

#include <climits>
#include <string>
#include <vector>

#include "support/fixture.hpp"

namespace peach {

// The handle the rows' journal entries expect (the PeachBridge handle).
constexpr int kHandle = 5;

struct Call {
    const char *function;
    int (*call)(int handle);
    const char *outcome;  // scripted for the method, or nullptr
    int result;           // on success
    const char *journal;  // entry recorded for handle kHandle
};

// The method name of a row (the journal entry up to its descriptor).
inline std::string method(const Call &c) {
    const std::string entry = c.journal;
    return entry.substr(0, entry.find('('));
}

// The buffer of the string rows (their boundaries have a suite of their own).
inline char scratch[64];
inline std::size_t scratchLength;

#define PEACH_S "Ljava/lang/String;"
#define PEACH_SA "[Ljava/lang/String;"
#define PEACH_CALL(function, args, outcome, result, journal) \
    Call { #function, +[](int h) { return function args; }, outcome, result, journal }

inline const std::vector<Call> &all() {
    static const char *three[] = {"j1", "j2", "j3"};
    static const std::vector<Call> calls = {
        // run settings and project queries; the two setPriority overloads
        // are given the same-looking value on purpose
        PEACH_CALL(velmora_peach_setName, (h, "nightly run"), nullptr, 0, "setName(I" PEACH_S ")V 5, \"nightly run\""),
        PEACH_CALL(velmora_peach_setStateDir, (h, "/var/peach"), nullptr, 0, "setStateDir(I" PEACH_S ")V 5, \"/var/peach\""),
        PEACH_CALL(velmora_peach_setDescription, (h, "Grüße"), nullptr, 0, "setDescription(I" PEACH_S ")V 5, \"Grüße\""),
        PEACH_CALL(velmora_peach_setMessages, (h, 1), nullptr, 0, "setMessages(IZ)V 5, true"),
        PEACH_CALL(velmora_peach_setPriorityI, (h, 3), nullptr, 0, "setPriority(II)V 5, 3"),
        PEACH_CALL(velmora_peach_setPriority, (h, "3"), nullptr, 0, "setPriority(I" PEACH_S ")V 5, \"3\""),
        PEACH_CALL(velmora_peach_setProjectId, (h, -4), nullptr, 0, "setProjectId(II)V 5, -4"),
        PEACH_CALL(velmora_peach_setResultFile, (h, "out.zip"), nullptr, 0, "setResultFile(I" PEACH_S ")V 5, \"out.zip\""),
        PEACH_CALL(velmora_peach_setJobs, (h, 12), nullptr, 0, "setJobs(II)V 5, 12"),
        PEACH_CALL(velmora_peach_setAllowPartial, (h, 0), nullptr, 0, "setAllowPartial(IZ)V 5, false"),
        PEACH_CALL(velmora_peach_setRemove, (h, 1), nullptr, 0, "setRemove(IZ)V 5, true"),
        PEACH_CALL(velmora_peach_setCleanup, (h, 0), nullptr, 0, "setCleanup(IZ)V 5, false"),
        PEACH_CALL(velmora_peach_setClose, (h, 1), nullptr, 0, "setClose(IZ)V 5, true"),
        PEACH_CALL(velmora_peach_setStream, (h, 0), nullptr, 0, "setStream(IZ)V 5, false"),
        PEACH_CALL(velmora_peach_getProjectHandle, (h), "-42", -42, "getProjectHandle(I)I 5"),
        PEACH_CALL(velmora_peach_getProjectId, (h), "2147483647", INT_MAX, "getProjectId(I)I 5"),

        // source files; sourcesChanged normalises to exactly 1 / 0
        PEACH_CALL(velmora_peach_addSourceFile, (h, "main.c"), nullptr, 0, "addSourceFile(I" PEACH_S ")V 5, \"main.c\""),
        PEACH_CALL(velmora_peach_putSourceExtras, (h, "k", "v"), nullptr, 0,
                   "putSourceExtras(I" PEACH_S PEACH_S ")V 5, \"k\", \"v\""),
        PEACH_CALL(velmora_peach_sourcesChanged, (h), "true", 1, "sourcesChanged(I)Z 5"),
        PEACH_CALL(velmora_peach_sourcesChanged, (h), "false", 0, "sourcesChanged(I)Z 5"),

        // executable
        PEACH_CALL(velmora_peach_setExeBundleName, (h, "exe"), nullptr, 0, "setExeBundleName(I" PEACH_S ")V 5, \"exe\""),
        PEACH_CALL(velmora_peach_setExecutable, (h, "run.sh"), nullptr, 0, "setExecutable(I" PEACH_S ")V 5, \"run.sh\""),
        PEACH_CALL(velmora_peach_setExeSkipDigest, (h, 1), nullptr, 0, "setExeSkipDigest(IZ)V 5, true"),
        PEACH_CALL(velmora_peach_addExeFile, (h, "a", "b", "c", "d"), nullptr, 0,
                   "addExeFile(I" PEACH_S PEACH_S PEACH_S PEACH_S ")V 5, \"a\", \"b\", \"c\", \"d\""),
        PEACH_CALL(velmora_peach_putExeExtras, (h, "x", "y"), nullptr, 0,
                   "putExeExtras(I" PEACH_S PEACH_S ")V 5, \"x\", \"y\""),
        PEACH_CALL(velmora_peach_addExeImport, (h, "lib.so"), nullptr, 0, "addExeImport(I" PEACH_S ")V 5, \"lib.so\""),

        // output files
        PEACH_CALL(velmora_peach_addOutputFile, (h, "o.txt"), nullptr, 0, "addOutputFile(I" PEACH_S ")V 5, \"o.txt\""),

        // data bundles; newDataBundle and WithName on the two overloads
        PEACH_CALL(velmora_peach_newDataBundle, (h), nullptr, 0, "newDataBundle(I)V 5"),
        PEACH_CALL(velmora_peach_newDataBundleWithName, (h, "set1"), nullptr, 0,
                   "newDataBundle(I" PEACH_S ")V 5, \"set1\""),
        PEACH_CALL(velmora_peach_setDataSkipDigest, (h, 0), nullptr, 0, "setDataSkipDigest(IZ)V 5, false"),
        PEACH_CALL(velmora_peach_addDataFile, (h, "d.csv"), nullptr, 0, "addDataFile(I" PEACH_S ")V 5, \"d.csv\""),
        PEACH_CALL(velmora_peach_addDataFileWithDir, (h, "d.csv", "in"), nullptr, 0,
                   "addDataFileWithDir(I" PEACH_S PEACH_S ")V 5, \"d.csv\", \"in\""),
        PEACH_CALL(velmora_peach_putDataExtras, (h, "p", "q"), nullptr, 0,
                   "putDataExtras(I" PEACH_S PEACH_S ")V 5, \"p\", \"q\""),
        PEACH_CALL(velmora_peach_setDataCopy, (h, 1), nullptr, 0, "setDataCopy(IZ)V 5, true"),

        // job files, both list forms
        PEACH_CALL(velmora_peach_setJobSkipDigest, (h, 1), nullptr, 0, "setJobSkipDigest(IZ)V 5, true"),
        PEACH_CALL(velmora_peach_setJobFileNames, (h, 2, "n1", "n2"), nullptr, 0,
                   "setJobFileNames(I" PEACH_SA ")V 5, [\"n1\", \"n2\"]"),
        PEACH_CALL(velmora_peach_setJobFileNames3, (h, 3, three), nullptr, 0,
                   "setJobFileNames(I" PEACH_SA ")V 5, [\"j1\", \"j2\", \"j3\"]"),
        PEACH_CALL(velmora_peach_addJobFile, (h, 1, "f"), nullptr, 0, "addJobFile(I" PEACH_SA ")V 5, [\"f\"]"),
        PEACH_CALL(velmora_peach_addJobFile3, (h, 2, three), nullptr, 0,
                   "addJobFile(I" PEACH_SA ")V 5, [\"j1\", \"j2\"]"),
        PEACH_CALL(velmora_peach_addJobFileWithDir, (h, "dir", 1, "f"), nullptr, 0,
                   "addJobFileWithDir(I" PEACH_S PEACH_SA ")V 5, \"dir\", [\"f\"]"),
        PEACH_CALL(velmora_peach_addJobFileWithDir3, (h, "dir", 3, three), nullptr, 0,
                   "addJobFileWithDir(I" PEACH_S PEACH_SA ")V 5, \"dir\", [\"j1\", \"j2\", \"j3\"]"),
        PEACH_CALL(velmora_peach_putJobExtras, (h, "m", "n"), nullptr, 0,
                   "putJobExtras(I" PEACH_S PEACH_S ")V 5, \"m\", \"n\""),

        // parameter files; WithTarget reaches the two-text addParamFile,
        // WithDir its own method, with the very same texts
        PEACH_CALL(velmora_peach_setParamSkipDigest, (h, 0), nullptr, 0, "setParamSkipDigest(IZ)V 5, false"),
        PEACH_CALL(velmora_peach_addParamFile, (h, "p.txt"), nullptr, 0, "addParamFile(I" PEACH_S ")V 5, \"p.txt\""),
        PEACH_CALL(velmora_peach_addParamFileWithDir, (h, "p.txt", "cfg"), nullptr, 0,
                   "addParamFileWithDir(I" PEACH_S PEACH_S ")V 5, \"p.txt\", \"cfg\""),
        PEACH_CALL(velmora_peach_addParamFileWithTarget, (h, "p.txt", "cfg"), nullptr, 0,
                   "addParamFile(I" PEACH_S PEACH_S ")V 5, \"p.txt\", \"cfg\""),
        PEACH_CALL(velmora_peach_putParamExtras, (h, "r", "s"), nullptr, 0,
                   "putParamExtras(I" PEACH_S PEACH_S ")V 5, \"r\", \"s\""),
        PEACH_CALL(velmora_peach_addParamExternalResource, (h, "url"), nullptr, 0,
                   "addParamExternalResource(I" PEACH_S ")V 5, \"url\""),
        PEACH_CALL(velmora_peach_setParamCopy, (h, 1), nullptr, 0, "setParamCopy(IZ)V 5, true"),
        PEACH_CALL(velmora_peach_putProjectParam, (h, "key", "value"), nullptr, 0,
                   "putProjectParam(I" PEACH_S PEACH_S ")V 5, \"key\", \"value\""),

        // execution and results
        PEACH_CALL(velmora_peach_execute, (h), "-3", -3, "execute(I)I 5"),
        PEACH_CALL(velmora_peach_nextFile, (h, scratch, &(scratchLength = sizeof scratch)), "f.out", 0, "nextFile(I)" PEACH_S " 5"),
        PEACH_CALL(velmora_peach_postProcessed, (h, 4), nullptr, 0, "postProcessed(II)V 5, 4"),
        PEACH_CALL(velmora_peach_done, (h), nullptr, 0, "done(I)V 5"),
        PEACH_CALL(velmora_peach_getLastErrorMessage, (h, scratch, &(scratchLength = sizeof scratch)), "boom", 0,
                   "getLastErrorMessage(I)" PEACH_S " 5"),
        PEACH_CALL(velmora_peach_setIntermediateResultHandler, (h, nullptr), nullptr, 0,
                   "setIntermediateResultHandler(ILvelmora/user/IntermediateResultHandler;)V 5, NativeFunctionCaller"),
    };
    return calls;
}

#undef PEACH_CALL
#undef PEACH_SA
#undef PEACH_S

// The calling thread's JNI environment (the test thread ran start-up).
inline JNIEnv *jni() {
    JNIEnv *e = nullptr;
    velmora_getJavaVM()->GetEnv(reinterpret_cast<void **>(&e), JNI_VERSION_1_6);
    return e;
}

// While it lives, the cached wrapper class is one that has none of the
// wrapper's methods, so every lookup of the peach frame fails.
class ForeignWrapperClass {
public:
    ForeignWrapperClass() : saved_(pwcls) {
        jclass object = jni()->FindClass("java/lang/Object");
        foreign_ = jni()->NewGlobalRef(object);
        jni()->DeleteLocalRef(object);
        pwcls = foreign_;
    }
    ~ForeignWrapperClass() {
        pwcls = saved_;
        jni()->DeleteGlobalRef(foreign_);
    }
    ForeignWrapperClass(const ForeignWrapperClass &) = delete;
    ForeignWrapperClass &operator=(const ForeignWrapperClass &) = delete;

private:
    void *saved_;
    jobject foreign_;
};

}  // namespace peach
