// Single string results: every string function x the Java outcome x the
// caller's capacity, with the function's rule for a null Java string
// (delivered as "", or no text at all), plus the texts of the bridge itself.
#include <cstring>

#include "support/fixture.hpp"

namespace {

enum class Null { Empty, NoText };
using Fetch = int (*)(char *, std::size_t *);
struct Function {
    const char *method;  // scripted in the double
    Null rule;
    Fetch fetch;
};
#define FETCH(expression) [](char *b, std::size_t *l) { return expression; }
const Function kFunctions[] = {
    {"getTempDir", Null::Empty, FETCH(velmora_getTempDir(b, l))},
    {"getLastErrorMessage()Ljava/lang/String;", Null::Empty, FETCH(velmora_getLastErrorMessage(b, l))},
    {"getUserLogin", Null::Empty, FETCH(velmora_getUserLogin(b, l))},
    {"getPluginConf", Null::Empty, FETCH(velmora_getPluginConf("p", "k", b, l))},
    {"describeStatusCode", Null::Empty, FETCH(velmora_describeStatusCode(7, b, l))},
    {"getProjectDescription", Null::Empty, FETCH(velmora_getProjectDescription(1, b, l))},
    {"getProjectParamValue", Null::Empty, FETCH(velmora_getProjectParamValue(1, "k", b, l))},
    {"getResultDirectory", Null::Empty, FETCH(velmora_getResultDirectory(1, b, l))},
    {"getResultFile", Null::Empty, FETCH(velmora_getResultFile(1, b, l))},
    {"getProjectStatistic", Null::Empty, FETCH(velmora_getProjectStatistic(1, "s", b, l))},
    {"getLastCreatedBundleName", Null::NoText, FETCH(velmora_getLastCreatedBundleName(1, b, l))},
    {"getStatisticsString", Null::NoText, FETCH(velmora_getStatisticsString(1, b, l))},
    {"peachNextFile", Null::NoText, FETCH(velmora_peachNextFile(1, b, l))},
    {"nextFile", Null::NoText, FETCH(velmora_peach_nextFile(5, b, l))},
    {"getLastErrorMessage(I)Ljava/lang/String;", Null::NoText, FETCH(velmora_peach_getLastErrorMessage(5, b, l))},
};

enum class Shape { Plain, NoBuffer, NoLength };
struct Case {
    const char *outcome;
    std::size_t capacity;
    Shape shape;
    int status;
    std::size_t len;    // after the call
    const char *text;   // in the buffer; nullptr: untouched
};
const char kSupplementary[] = "x\xED\xA0\xBD\xED\xB8\x80";  // U+1F600 as Java hands it out
const Case kCases[] = {
    {"0123456789", 0, Shape::Plain, -23, 11, nullptr},
    {"0123456789", 10, Shape::Plain, -23, 11, nullptr},
    {"0123456789", 11, Shape::Plain, 0, 11, "0123456789"},
    {"0123456789", 64, Shape::NoBuffer, -23, 11, nullptr},
    {"0123456789", 64, Shape::NoLength, -23, 64, nullptr},
    {"Grüße", 7, Shape::Plain, -23, 8, nullptr},
    {"Grüße", 8, Shape::Plain, 0, 8, "Grüße"},
    {kSupplementary, 64, Shape::Plain, 0, 8, kSupplementary},
    {"", 0, Shape::Plain, -23, 1, nullptr},
    {"", 1, Shape::Plain, 0, 1, ""},
};

class StringResults : public PeachBridge {};

TEST_F(StringResults, EveryFunctionOutcomeAndCapacity) {
    for (const Function &f : kFunctions) {
        for (const Case &c : kCases) {
            SCOPED_TRACE(std::string(f.method) + " <- \"" + c.outcome + "\" into " + std::to_string(c.capacity));
            sdk::script(f.method, {c.outcome});
            Buffer b(c.capacity);
            EXPECT_EQ(f.fetch(c.shape == Shape::NoBuffer ? nullptr : b.bytes,
                              c.shape == Shape::NoLength ? nullptr : &b.len),
                      c.status);
            EXPECT_EQ(b.len, c.len);
            EXPECT_EQ(b.untouched(), c.text == nullptr);
            if (c.text) {
                EXPECT_STREQ(b.bytes, c.text);
            }
        }
        // A null Java string, by the function's rule.
        const bool noText = f.rule == Null::NoText;
        sdk::script(f.method, {"null"});
        for (std::size_t capacity : {0, 1, 64}) {
            SCOPED_TRACE(std::string(f.method) + " <- null into " + std::to_string(capacity));
            Buffer b(capacity);
            EXPECT_EQ(f.fetch(b.bytes, &b.len), noText || capacity ? 0 : -23);
            EXPECT_EQ(b.len, noText ? 0u : 1u);
            EXPECT_EQ(b.untouched(), noText || capacity == 0);
        }
        sdk::journal();
    }
}

// The library's own texts: built-in status texts need no Java, and before
// start-up two functions explain in 52 characters and two NULs why they failed.
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
        const std::size_t bytes = std::strlen(text) + 1;
        Buffer small(bytes - 1), exact(bytes);
        EXPECT_EQ(velmora_describeStatusCode(code, small.bytes, &small.len), -23) << code;
        EXPECT_EQ(small.len, bytes);
        EXPECT_TRUE(small.untouched());
        EXPECT_EQ(velmora_describeStatusCode(code, exact.bytes, &exact.len), 0) << code;
        EXPECT_EQ(exact.text(), text);
    }
    Buffer unknown(64);  // other codes are Java's to describe
    EXPECT_EQ(velmora_describeStatusCode(-26, unknown.bytes, &unknown.len), -11);
    EXPECT_TRUE(unknown.untouched());

    for (Fetch fetch : std::initializer_list<Fetch>{FETCH(velmora_getLastErrorMessage(b, l)), FETCH(velmora_getPluginConf("p", "k", b, l))}) {
        Buffer tight(53), room(54);
        EXPECT_EQ(fetch(tight.bytes, &tight.len), -11);
        EXPECT_EQ(tight.len, 54u);
        EXPECT_TRUE(tight.untouched());
        EXPECT_EQ(fetch(room.bytes, &room.len), -11);
        EXPECT_EQ(room.len, 54u);
        EXPECT_EQ(std::string(room.bytes, 55), std::string("No Error Message available; Java is not initialized.\0\0#", 55));
    }
    Buffer property(64);
    EXPECT_EQ(velmora_getJavaSystemProperty("java.version", property.bytes, &property.len), -11);
    EXPECT_TRUE(property.untouched());
}

// Java system properties come from the running machine, by the no-text rule.
TEST_F(StringResults, JavaSystemProperties) {
    Buffer missing(64), empty(64), version(4);
    EXPECT_EQ(velmora_getJavaSystemProperty("no.such.property", missing.bytes, &missing.len), 0);
    EXPECT_EQ(missing.len, 0u);
    EXPECT_TRUE(missing.untouched());
    EXPECT_EQ(velmora_getJavaSystemProperty("com.sun.management.jmxremote", empty.bytes, &empty.len), 0);
    EXPECT_EQ(empty.len, 1u);
    EXPECT_EQ(velmora_getJavaSystemProperty("java.class.version", version.bytes, &version.len), -23);
    EXPECT_EQ(version.len, 5u);  // "61.0" (or "69.0") and the NUL
    EXPECT_EQ(velmora_getJavaSystemProperty(nullptr, version.bytes, &version.len), -13);
    // Built-in codes never ask Java.
    Buffer builtIn(64);
    EXPECT_EQ(velmora_describeStatusCode(-24, builtIn.bytes, &builtIn.len), 0);
    EXPECT_TRUE(sdk::journal().empty());
}

}  // namespace
