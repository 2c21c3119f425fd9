// String lists in every form (variadic, va_list, array) of every function
// that takes them, the list rows of the forwarding table: each form reads
// exactly `count` strings, in order, with null elements arriving as null
// slots; lists that cannot be read are refused before Java.
#include "support/fixture.hpp"

namespace {

using Pool = const char *const *;
const char *kWithNulls[] = {"a", nullptr, "", "d\ne", nullptr};

// The journal's rendering of pool[from, to).
std::string render(Pool pool, int from, int to) {
    std::string out = "[";
    for (int i = from; i < to; ++i) {
        std::string text = pool[i] ? "\"" + std::string(pool[i]) + "\"" : "null";
        if (text.find('\n') != std::string::npos) text.replace(text.find('\n'), 1, "\\n");
        out += (i == from ? "" : ", ") + text;
    }
    return out + "]";
}

class StringLists : public PeachBridge {};

TEST_F(StringLists, EveryFormReadsExactlyItsCountWithNullElements) {
    for (const table::Row &row : table::forwarders()) {
        const std::string &line = row.reached[0].line, function = row.function;
        if (line.find("[Ljava/lang/String;") == std::string::npos) continue;
        const bool twoLists = line.find("], [") != std::string::npos;
        for (Pool pool : {static_cast<Pool>(table::kPool), static_cast<Pool>(kWithNulls)}) {
            for (int count : {0, 1, 3}) {
                table::listCount = count;
                table::listPool = pool;
                Buffer b(64);
                EXPECT_GE(row.call(b), 0) << function << " " << count;
                const std::string lists = twoLists ? render(pool, 0, 2) + ", " + render(pool, 2, 2 + count)
                                                   : render(pool, 0, count);
                const std::size_t from = line.find('[', line.find(' ')), to = line.rfind(']') + 1;
                EXPECT_EQ(sdk::lastCall(), line.substr(0, from) + lists + line.substr(to));
            }
        }
        // Refused before Java: a negative count, or no array for a positive count.
        Buffer b(64);
        table::listCount = -1;
        EXPECT_EQ(row.call(b), VELMORA_STATUS_JAVA_EXCEPTION) << function;
        table::listCount = 3;
        table::listPool = nullptr;
        if (function.back() == '3') {
            EXPECT_EQ(row.call(b), VELMORA_STATUS_JAVA_EXCEPTION) << function;
        }
        table::listPool = table::kPool;
        EXPECT_TRUE(sdk::journal().empty()) << function;
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
