// String lists in every form (variadic, va_list, array) of every function
// that takes them: each form reads exactly `count` strings, in order, with
// null elements arriving as null slots; lists that cannot be read are
// refused before Java.
#include "support/fixture.hpp"

namespace {

using Pool = const char *const *;
struct Form {
    const char *function;
    std::string prefix;  // the journal line up to the list
    int (*call)(int count, Pool pool);
    bool array;  // takes the pool as an array (which may then be null)
};
#define EACH(p) p[0], p[1], p[2], p[3], p[4]
#define VARIADIC(stem, prefix, ...) {#stem, prefix, [](int n, Pool p) { return velmora_##stem(__VA_ARGS__ n, EACH(p)); }, false}
#define VA_LIST(stem, prefix, ...)                                                                                    \
    {#stem "2", prefix,                                                                                             \
     [](int n, Pool p) { return table::withVaList([&](va_list ap) { return velmora_##stem##2(__VA_ARGS__ n, ap); }, 0, EACH(p)); }, \
     false}
#define ARRAY(stem, prefix, ...) {#stem "3", prefix, [](int n, Pool p) { return velmora_##stem##3(__VA_ARGS__ n, const_cast<const char **>(p)); }, true}
#define ALL3(stem, prefix, ...) VARIADIC(stem, prefix, __VA_ARGS__), VA_LIST(stem, prefix, __VA_ARGS__), ARRAY(stem, prefix, __VA_ARGS__)
#define ALL2(stem, prefix, ...) VARIADIC(stem, prefix, __VA_ARGS__), ARRAY(stem, prefix, __VA_ARGS__)

const Form kForms[] = {
    ALL3(createProject, "createProject(II" S SA ")I 7, 8, \"t\", ", 7, 8, "t", ),
    ALL3(setProjectParams, "setProjectParams(I" SA ")I 7, ", 7, ),
    ALL3(createProjectJobs, "createProjectJobs(I" SA ")I 7, ", 7, ),
    ALL3(createJob, "createJob(I" SA ")I 7, ", 7, ),
    ALL3(createCachedJob, "createCachedJob(I" SA ")I 7, ", 7, ),
    ALL3(peach, "peach(" SA ")I ", ),
    ALL2(peach_setJobFileNames, "setJobFileNames(I" SA ")V 5, ", 5, ),
    ALL2(peach_addJobFile, "addJobFile(I" SA ")V 5, ", 5, ),
    ALL2(peach_addJobFileWithDir, "addJobFileWithDir(I" S SA ")V 5, \"/d\", ", 5, "/d", ),
    // Two lists split the pool at count1; the signed form's eleventh text comes after both.
    ALL3(createBundle, "createBundle(I" S S S S S S S S S SA SA ")I 3, " Q9 ", ", 3, T9, 2, ),
    ALL3(createSignedBundle, "createSignedBundle(I" S S S S S S S S S S SA SA S ")I 3, " Q9 ", \"t10\", ", 3, T9,
         "t10", "t11", 2, ),
};

const char *kWithNulls[] = {"a", nullptr, "", "d\ne", nullptr};

std::string render(Pool pool, int from, int to) {
    std::string out = "[";
    for (int i = from; i < to; ++i) {
        out += i == from ? "" : ", ";
        out += pool[i] ? "\"" + std::string(pool[i]) + "\"" : "null";
    }
    return out + "]";
}

// The journal line of `form` reading `count` strings of `pool`.
std::string line(const Form &form, Pool pool, int count) {
    const std::string name = form.function;
    if (name.rfind("createBundle", 0) == 0) return form.prefix + render(pool, 0, 2) + ", " + render(pool, 2, 2 + count);
    if (name.rfind("createSignedBundle", 0) == 0)
        return form.prefix + render(pool, 0, 2) + ", " + render(pool, 2, 2 + count) + ", \"t11\"";
    return form.prefix + render(pool, 0, count);
}

class StringLists : public PeachBridge {};

TEST_F(StringLists, EveryFormReadsExactlyItsCountWithNullElements) {
    for (const Form &form : kForms) {
        for (Pool pool : {static_cast<Pool>(table::kPool), static_cast<Pool>(kWithNulls)}) {
            for (int count : {0, 1, 3}) {
                EXPECT_GE(form.call(count, pool), 0) << form.function << " " << count;
                std::string expected = line(form, pool, count);
                for (std::size_t at; (at = expected.find('\n')) != std::string::npos;) expected.replace(at, 1, "\\n");
                EXPECT_EQ(sdk::lastCall(), expected) << form.function;
            }
        }
        // Refused before Java: a negative count, or no array for a positive count.
        EXPECT_EQ(form.call(-1, table::kPool), VELMORA_STATUS_JAVA_EXCEPTION) << form.function;
        if (form.array) {
            EXPECT_EQ(form.call(3, nullptr), VELMORA_STATUS_JAVA_EXCEPTION) << form.function;
        }
        EXPECT_TRUE(sdk::journal().empty()) << form.function;
    }
    // Nothing to read needs no array; a negative first count of two never
    // moves the second list outside the caller's array.
    EXPECT_EQ(velmora_createJob3(7, 0, nullptr), 0);
    EXPECT_EQ(sdk::lastCall(), "createJob(I" SA ")I 7, []");
    EXPECT_EQ(velmora_createBundle3(3, T9, -2, 3, table::kPool), VELMORA_STATUS_JAVA_EXCEPTION);
    EXPECT_TRUE(sdk::journal().empty());
}

// A va_list form reads exactly its strings and leaves the caller's list just past them.
const char *stringAfterTwoLists(int count1, int count2, ...) {
    va_list ap;
    va_start(ap, count2);
    velmora_createBundle2(1, T9, count1, count2, ap);
    const char *next = va_arg(ap, const char *);
    va_end(ap);
    return next;
}

TEST_F(StringLists, VaListFormsLeaveTheCallersListPastTheirStrings) {
    EXPECT_STREQ(stringAfterTwoLists(1, 2, "a", "b", "c", "after"), "after");
    EXPECT_STREQ(stringAfterTwoLists(0, 0, "after"), "after");
}

}  // namespace
