// String results: every string function x the Java outcome x the caller's
// capacity, with the function's rule for a null Java string (delivered as "",
// or no text at all); the three indexed walks; and the bridge's own texts.
#include <cstring>

#include "support/fixture.hpp"

namespace {

using Fetch = int (*)(char *, std::size_t *);
using Journal = std::vector<std::string>;

struct Case {
    const char *outcome;  // "null" for a null Java string
    std::size_t capacity;
    bool noBytes, noLength;
    int status, noTextStatus;    // by the function's null rule
    std::size_t len, noTextLen;  // after the call
    const char *text;            // in the buffer; nullptr: untouched
};
const char kSupplementary[] = "x\xED\xA0\xBD\xED\xB8\x80";  // U+1F600 as Java hands it out
const Case kCases[] = {
    {"0123456789", 0, false, false, -23, -23, 11, 11, nullptr},
    {"0123456789", 10, false, false, -23, -23, 11, 11, nullptr},
    {"0123456789", 11, false, false, 0, 0, 11, 11, "0123456789"},
    {"0123456789", 64, true, false, -23, -23, 11, 11, nullptr},
    {"0123456789", 64, false, true, -23, -23, 64, 64, nullptr},
    {"Grüße", 7, false, false, -23, -23, 8, 8, nullptr},
    {"Grüße", 8, false, false, 0, 0, 8, 8, "Grüße"},
    {kSupplementary, 64, false, false, 0, 0, 8, 8, kSupplementary},
    {"", 0, false, false, -23, -23, 1, 1, nullptr},
    {"", 1, false, false, 0, 0, 1, 1, ""},
    {"null", 0, false, false, -23, 0, 1, 0, nullptr},
    {"null", 1, false, false, 0, 0, 1, 0, ""},  // no text: untouched
    {"null", 64, false, false, 0, 0, 1, 0, ""},
};

class StringResults : public PeachBridge {};

// Every text row of the forwarding table (the indexed walks have a table of
// their own) against every case.
TEST_F(StringResults, EveryFunctionOutcomeAndCapacity) {
    for (const table::Row &row : table::forwarders()) {
        if (!row.text || row.reached.size() != 1) continue;
        const std::string &line = row.reached[0].line;
        for (const Case &c : kCases) {
            SCOPED_TRACE(std::string(row.function) + " <- \"" + c.outcome + "\" into " + std::to_string(c.capacity));
            const bool noText = row.nullIsNoText && std::string(c.outcome) == "null";
            sdk::script(line.substr(0, line.find(' ')), {c.outcome});
            Buffer b(c.capacity, c.noBytes, c.noLength);
            EXPECT_EQ(row.call(b), noText ? c.noTextStatus : c.status);
            EXPECT_EQ(b.len, noText ? c.noTextLen : c.len);
            EXPECT_EQ(b.untouched(), c.text == nullptr || noText);
            if (c.text && !noText) {
                EXPECT_STREQ(b.bytes, c.text);
            }
        }
        sdk::journal();
    }
}

// The count travels back through index on success and on -24 only; -23
// leaves "" and the position asked for.
TEST_F(StringResults, IndexedNamesReportCountAndBoundaries) {
    using Walk = int (*)(int *, char *, size_t *);
    const std::tuple<const char *, const char *, Walk> collections[] = {
        {"getProjectParamCount", "getProjectParamName",
         [](int *i, char *b, size_t *l) { return velmora_getProjectParamName(5, i, b, l); }},
        {"getResultFileCount", "getResultFileName",
         [](int *i, char *b, size_t *l) { return velmora_getResultFiles(5, i, b, l); }},
        {"getStreamedResultFilesCount", "getStreamedResultFileName",
         [](int *i, char *b, size_t *l) { return velmora_getStreamedResultFiles(5, i, b, l); }},
    };
    struct Step {
        const char *countIs, *nameIs;
        int index;
        size_t capacity;
        int status, indexAfter;
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
    for (const auto &[count, name, walk] : collections) {
        for (const Step &s : steps) {
            SCOPED_TRACE(std::string(name) + " at " + std::to_string(s.index) + " of " + s.countIs);
            sdk::script(count, {s.countIs});
            sdk::script(name, {s.nameIs});
            Buffer b(s.capacity);
            int index = s.index;
            EXPECT_EQ(walk(&index, b.bytes, &b.len), s.status);
            EXPECT_EQ(index, s.indexAfter);
            EXPECT_EQ(b.len, s.lenAfter);
            EXPECT_EQ(b.untouched(), s.text == nullptr);
            if (s.text) {
                EXPECT_EQ(b.text(), s.text);
            }
            Journal expected = {std::string(count) + "(I)I 5"};
            if (s.status != kOutOfRange && std::string(s.countIs) != "throw")
                expected.push_back(std::string(name) + "(II)Ljava/lang/String; 5, " + std::to_string(s.index));
            EXPECT_EQ(sdk::journal(), expected);
        }
        sdk::script(count, {"3"});  // a null index pointer reads as out of range
        Buffer b(64);
        EXPECT_EQ(walk(nullptr, b.bytes, &b.len), kOutOfRange) << name;
        EXPECT_EQ(b.len, 1u) << name;
        sdk::journal();
    }
}

// Java system properties come from the running machine, by the no-text rule;
// built-in status texts never ask Java.
TEST_F(StringResults, JavaSystemPropertiesAndBuiltInTexts) {
    Buffer missing(64), empty(64), version(4), builtIn(64);
    EXPECT_EQ(velmora_getJavaSystemProperty("no.such.property", missing.bytes, &missing.len), 0);
    EXPECT_EQ(missing.len, 0u);
    EXPECT_TRUE(missing.untouched());
    EXPECT_EQ(velmora_getJavaSystemProperty("com.sun.management.jmxremote", empty.bytes, &empty.len), 0);
    EXPECT_EQ(empty.len, 1u);
    EXPECT_EQ(velmora_getJavaSystemProperty("java.class.version", version.bytes, &version.len), -23);
    EXPECT_EQ(version.len, 5u);  // "61.0" (or "69.0") and the NUL
    EXPECT_EQ(velmora_getJavaSystemProperty(nullptr, version.bytes, &version.len), -13);
    EXPECT_EQ(velmora_describeStatusCode(-24, builtIn.bytes, &builtIn.len), 0);
    EXPECT_TRUE(sdk::journal().empty());
}

// Before start-up: the built-in status texts need no Java, other codes are
// Java's to describe, and two functions explain in 52 characters and two NULs
// why they failed.
TEST(BridgeTexts, BuiltInStatusTextsAndTheNotInitialisedText) {
    const std::pair<int, const char *> builtIn[] = {
        {0, "OK"}, {-11, "Java is not initialized"}, {-12, "Java method could not be found"},
        {-13, "Uncaught exception thrown from Java"}, {-14, "Unable to find the constructor of Management Interface"},
        {-15, "Unable to find the initializer of Management Interface"}, {-16, "Unable to initialize Management Interface"},
        {-17, "Unknown error"}, {-18, "Unable to find Java"}, {-19, "Unable to find Java version"},
        {-20, "Unable to find Java keypath"}, {-21, "Unable to find Java runtime library location"},
        {-22, "Unable to find Java runtime library"}, {-23, "String buffer is too small."},
        {-24, "File index is out of bounds."}, {-25, "VARIANT type is invalid, BSTR expected."},
    };
    for (auto [code, text] : builtIn) {
        Buffer small(std::strlen(text)), exact(std::strlen(text) + 1);
        EXPECT_EQ(velmora_describeStatusCode(code, small.bytes, &small.len), -23) << code;
        EXPECT_EQ(small.len, exact.len);
        EXPECT_TRUE(small.untouched());
        EXPECT_EQ(velmora_describeStatusCode(code, exact.bytes, &exact.len), 0) << code;
        EXPECT_EQ(exact.text(), text);
    }
    Buffer unknown(64), property(64);
    EXPECT_EQ(velmora_describeStatusCode(-26, unknown.bytes, &unknown.len), -11);
    EXPECT_TRUE(unknown.untouched());
    EXPECT_EQ(velmora_getJavaSystemProperty("java.version", property.bytes, &property.len), -11);
    EXPECT_TRUE(property.untouched());
    for (Fetch fetch : std::initializer_list<Fetch>{[](char *b, size_t *l) { return velmora_getLastErrorMessage(b, l); },
                                                    [](char *b, size_t *l) { return velmora_getPluginConf("p", "k", b, l); }}) {
        Buffer tight(53), room(54);
        EXPECT_EQ(fetch(tight.bytes, &tight.len), -11);
        EXPECT_EQ(tight.len, 54u);
        EXPECT_TRUE(tight.untouched());
        EXPECT_EQ(fetch(room.bytes, &room.len), -11);
        EXPECT_EQ(room.len, 54u);
        EXPECT_EQ(std::string(room.bytes, 55), std::string("No Error Message available; Java is not initialized.\0\0#", 55));
    }
}

}  // namespace
