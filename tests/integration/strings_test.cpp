// Strings both ways. Results: every string function x the Java outcome x the
// caller's capacity, with the function's rule for a null Java string
// (delivered as "", or no text at all); the three indexed walks; system
// properties. Lists: empty ones and ones that cannot be read, in every form
// of every function that takes one. Arguments at their limits: a heap too
// small for them, null pointers.
#include <stdlib.h>

#include <functional>

#include "support/fixture.hpp"

namespace {

// A Java outcome ("null" for a null Java string) delivered into a caller
// buffer of `capacity` (or none, or no length). A function whose null rule is
// "no text" gives 0, *len 0 and an untouched buffer for a null string instead.
struct Case {
    const char *outcome;
    std::size_t capacity;
    bool noBytes, noLength;
    int status;
    std::size_t len;   // after the call
    const char *text;  // in the buffer; nullptr: untouched
};
// Non-ASCII bytes are counted, U+1F600 as Java hands it out (a surrogate pair).
const char kWide[] = "Grüße x\xED\xA0\xBD\xED\xB8\x80";
const Case kCases[] = {
    {"0123456789", 10, false, false, -23, 11, nullptr}, {"0123456789", 11, false, false, 0, 11, "0123456789"},
    {"0123456789", 64, true, false, -23, 11, nullptr},  {"0123456789", 64, false, true, -23, 64, nullptr},
    {kWide, sizeof kWide, false, false, 0, sizeof kWide, kWide},
    {"", 1, false, false, 0, 1, ""},
    {"null", 0, false, false, -23, 1, nullptr},
    {"null", 1, false, false, 0, 1, ""},
};

class Strings : public PeachBridge {};

// Every text row of the forwarding table (the indexed walks have a table of
// their own) against every case.
TEST_F(Strings, EveryFunctionOutcomeAndCapacity) {
    for (const table::Row &row : table::forwarders()) {
        if (!row.text || row.reached.size() != 1) continue;
        for (const Case &c : kCases) {
            SCOPED_TRACE(std::string(row.function) + " <- \"" + c.outcome + "\" into " + std::to_string(c.capacity));
            const bool noText = row.nullIsNoText && std::string(c.outcome) == "null";
            sdk::script(row.reached[0].key(), {c.outcome});
            Buffer b(c.capacity, c.noBytes, c.noLength);
            EXPECT_EQ(row.call(b), noText ? 0 : c.status);
            EXPECT_EQ(b.len, noText ? 0 : c.len);
            EXPECT_EQ(b.text(), c.text && !noText ? c.text : std::string(sizeof b.bytes, '#'));
        }
        sdk::journal();
    }
}

// The indexed walks (the rows that reach a count and a name): the count
// travels back through index on success and on -24 only; -23 leaves "" and
// the position asked for.
TEST_F(Strings, IndexedNamesReportCountAndBoundaries) {
    struct Step {
        const char *countIs, *nameIs;
        int index;
        std::size_t capacity;
        int status, indexAfter;
        std::size_t lenAfter;
        const char *text;  // nullptr: buffer untouched
    };
    const int kOutOfRange = VELMORA_STATUS_FILE_INDEX_OUT_OF_BOUNDS, kSmall = VELMORA_STATUS_BUFFER_TOO_SMALL;
    const Step steps[] = {
        {"3", "name-one", -1, 64, kOutOfRange, 3, 1, ""},     {"3", "name-one", 3, 64, kOutOfRange, 3, 1, ""},
        {"3", "name-one", table::kNoIndex, 64, kOutOfRange, table::kNoIndex, 1, ""},
        {"3", "name-one", 3, 0, kOutOfRange, 3, 1, nullptr},  {"3", "name-one", 1, 9, 0, 3, 9, "name-one"},
        {"3", "name-one", 1, 8, kSmall, 1, 9, ""},            {"3", "name-one", 1, 0, kSmall, 1, 9, nullptr},
        {"3", "null", 2, 64, 0, 3, 1, ""},
        {"3", "throw", 2, 64, VELMORA_STATUS_JAVA_EXCEPTION, 2, 64, nullptr},
        {"throw", "name-one", 2, 64, VELMORA_STATUS_JAVA_EXCEPTION, 2, 64, nullptr},
    };
    for (const table::Row &row : table::forwarders()) {
        if (row.reached.size() != 2) continue;
        const std::string count = row.reached[0].key(), name = row.reached[1].key();
        for (const Step &s : steps) {
            SCOPED_TRACE(name + " at " + std::to_string(s.index) + " of " + s.countIs);
            sdk::script(count, {s.countIs});
            sdk::script(name, {s.nameIs});
            Buffer b(s.capacity);
            table::indexIn = s.index;
            EXPECT_EQ(row.call(b), s.status);
            EXPECT_EQ(table::indexOut, s.indexAfter);
            EXPECT_EQ(b.len, s.lenAfter);
            EXPECT_EQ(b.text(), s.text ? s.text : std::string(sizeof b.bytes, '#'));
            Journal expected = {row.reached[0].line};
            if (s.status != kOutOfRange && std::string(s.countIs) != "throw")
                expected.push_back(name + " 7, " + std::to_string(s.index));
            EXPECT_EQ(sdk::journal(), expected);
        }
    }
    table::indexIn = 1;
}

// Java system properties come from the running machine, by the no-text rule
// (a property that cannot be asked for is -13; an empty one is "", which the
// start-up scenarios check, and the buffer rules are every text's, above).
TEST_F(Strings, JavaSystemProperties) {
    Buffer missing(64);
    EXPECT_EQ(velmora_getJavaSystemProperty("no.such.property", missing.bytes, &missing.len), 0);
    EXPECT_TRUE(missing.untouched() && missing.len == 0);
    EXPECT_EQ(velmora_getJavaSystemProperty(nullptr, missing.bytes, &missing.len), -13);
}

// String lists in every form (variadic, va_list, array) of every function
// that takes them, the list rows of the forwarding table, read exactly their
// count of strings, null elements as null slots (the forwarding passes, with
// three strings); an empty list needs no array, and lists that cannot be read
// are refused before Java.
TEST_F(Strings, ListsOfNoStringsAndListsThatCannotBeRead) {
    for (const table::Row &row : table::forwarders()) {
        const std::string function = row.function;
        std::string line = row.reached[0].line;
        if (line.find(SA) == std::string::npos) continue;
        for (const std::string list : {LIST, SECOND})
            if (const std::size_t at = line.find(list); at != std::string::npos) line.replace(at, list.size(), "[]");
        Buffer b(64);
        table::listCount = 0;
        EXPECT_GE(row.call(b), 0) << function;
        EXPECT_EQ(sdk::journal(), Journal{line});
        // A negative count, or no array for a positive count.
        table::listCount = -1;
        EXPECT_EQ(row.call(b), VELMORA_STATUS_JAVA_EXCEPTION) << function;
        table::listCount = 3;
        table::listPool = nullptr;
        if (function.back() == '3') { EXPECT_EQ(row.call(b), VELMORA_STATUS_JAVA_EXCEPTION) << function; }
        table::listPool = table::kPool;
        EXPECT_TRUE(sdk::journal().empty()) << function;
    }
    // Nothing to read needs no array; a negative first count of two never moves
    // the second list outside the caller's array.
    EXPECT_EQ(velmora_createJob3(7, 0, nullptr), 0);
    EXPECT_EQ(sdk::journal(), Journal{"createJob(I" SA ")I 7, []"});
    EXPECT_EQ(velmora_createBundle3(3, T9, -2, 3, table::kPool), VELMORA_STATUS_JAVA_EXCEPTION);
    EXPECT_TRUE(sdk::journal().empty());
}

// Conversion of C arguments at its limits: a heap too small for them (text
// that is not well-formed UTF-8 has rows of the forwarding table, null
// pointers rows in every table), none of which may leave an exception
// pending, a JNI call made with one, or a reference or a local frame behind
// (the suites run under the JVM's JNI checking, which warns on the first two
// and once a thread holds more than 32 references; the fixture checks
// frames).

// Each argument that cannot fit in the heap: -13 at once, the Java method not
// called, nothing pending, and the next call as usual.
class SmallHeap : public PeachBridge {
protected:
    void SetUp() override {
        setenv("_JAVA_OPTIONS", "-Xmx32m", 1);
        PeachBridge::SetUp();
    }
};

TEST_F(SmallHeap, ArgumentsThatDoNotFitTheHeap) {
    const std::string kilobyte(1024, 'k'), huge(48 << 20, 't');
    std::vector<const char *> list(40000, kilobyte.c_str());  // 40 MB of strings
    const std::pair<const char *, std::function<int()>> cases[] = {
        {"list", [&] { return velmora_createJob3(1, 40000, list.data()); }},
        {"text", [&] { return velmora_peach_setName(handle, huge.c_str()); }},
    };
    for (const auto &[what, call] : cases) {
        EXPECT_EQ(call(), VELMORA_STATUS_JAVA_EXCEPTION) << what;
        EXPECT_FALSE(threadEnv()->ExceptionCheck()) << what;
        EXPECT_EQ(velmora_ready(1), 0) << what;
        EXPECT_EQ(sdk::journal(), Journal{"ready(I)I 1"}) << what;
    }
}

}  // namespace
