// The C++ interface (velmora.hpp) against the SDK double: string results that
// size their own buffer, walks that follow a changing collection, string lists
// of every size and shape, one exception type per kind of failure, and
// callable handlers fed from Java threads.
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>
#include <vector>

#include "support/fixture.hpp"
#include "velmora.hpp"

// Every name a walk yields.
template <class Walk>
static Texts all(const Walk &walk) { return Texts(walk.begin(), walk.end()); }

class CppPeach : public PeachBridge {};

TEST_F(CppPeach, StringResultsAndWalksSizeTheirOwnBuffer) {
    // A text that fits the first buffer (255 bytes and the NUL) costs one
    // call, a longer one exactly one more, and one that grows between the
    // calls is asked for until it fits: 1 + 1 + 1 + 2 + 4 calls. No text is
    // nullopt, an empty text "".
    const std::string fits(255, 'a'), longer(256, 'b'), mid(600, 'c'), grown(2000, 'd');
    sdk::script("getStatisticsString", {"null", "", fits, longer, longer, longer, mid, grown});
    for (const auto &expected : std::vector<std::optional<std::string>>{std::nullopt, "", fits, longer, grown})
        EXPECT_EQ(velmora::getStatisticsString(7), expected);

    // Each step of a walk asks the count, then the name at its position; a
    // name too long for the first buffer is asked for again (count and name).
    // The collection grows (1 to 3) and then shrinks (to 2): 2 + 4 + 1 more calls.
    sdk::script("getProjectParamCount", {"1", "3", "3", "2"});
    sdk::script("getProjectParamName", {"a", longer});
    EXPECT_EQ(all(velmora::getProjectParamNames(7)), (Texts{"a", longer}));
    EXPECT_EQ(sdk::journal().size(), 9u + 7u);

    // A property that is not set.
    EXPECT_EQ(velmora::getJavaSystemProperty("velmora.no.such.property"), std::nullopt);

    // A failure in the middle of a walk is thrown, not taken for its end.
    sdk::script("getStreamedResultFilesCount", {"2"});
    sdk::script("getStreamedResultFileName", {"a", "throw"});
    EXPECT_THROW(all(velmora::getStreamedResultFiles(7)), velmora::JavaException);

    // The files of a peach run, until Java returns none.
    sdk::script("nextFile", {"a", longer, longer, "null"});
    EXPECT_EQ(all(velmora::Peach(handle).files()), (Texts{"a", longer}));
}

TEST_F(CppPeach, ListsOfAnySizeAndShapeAndBuilderCallsReachJava) {
    // Views into one text, none ending at a NUL (each is copied with one), more
    // and longer than a list keeps inline, through a builder; a braced list of
    // mixed kinds.
    const std::string joined(1200, 'v');
    std::vector<std::string_view> views;
    std::string rendered;  // how the journal shows them
    for (std::size_t i = 0; i < 40; ++i) {
        views.push_back(std::string_view(joined).substr(i, 20 + i));
        rendered += (i ? ", \"" : "[\"") + std::string(views.back()) + "\"";
    }
    velmora::Peach(handle).addJobFileWithDir("frames", views);
    velmora::createJob(7, {"a", std::string("b"), std::string_view("cd").substr(1)});
    EXPECT_EQ(sdk::journal(), (Texts{"addJobFileWithDir(I" S SA ")V 5, \"frames\", " + rendered + "]",
                                     "createJob(I" SA ")I 7, [\"a\", \"b\", \"d\"]"}));
}

TEST_F(CppPeach, EachKindOfFailureHasItsOwnException) {
    // Values from Java are values, negative ones included; only the three
    // codes of the call itself are read as failures. The raw form throws none.
    sdk::script("createJob", {"-14", "-10", "-11", "throw"});
    sdk::script("getUsedTime", {"-5000000000", "-12"});
    sdk::script("getLastErrorMessage()Ljava/lang/String;", {"disk full"});
    for (int value : {-14, -10}) EXPECT_EQ(velmora::createJob(7, {}), value);
    EXPECT_EQ(velmora::raw::createJob(7, {"a"}), -11);
    EXPECT_EQ(velmora::getUsedTime(7), -5000000000);
    EXPECT_THROW(velmora::getUsedTime(7), velmora::MethodNotFound);
    try {
        velmora::createJob(7, {});
        ADD_FAILURE() << "nothing thrown";
    } catch (const velmora::JavaException &e) {
        // The description is the header's text of the code.
#define VELMORA_TEXT_OF_13(name, value, kind, text) value == -13 ? text:
        const std::string description = VELMORA_STATUS_CODES(VELMORA_TEXT_OF_13) "";
        EXPECT_EQ(std::make_tuple(e.code(), e.description(), e.sdkMessage(), e.failure().substr(0, 60)),
                  std::make_tuple(-13, description, "disk full",
                                  "java.lang.RuntimeException: scripted failure in createJob\n\ta"));
        EXPECT_EQ(e.what(), "velmora: -13 " + description + ": disk full\n" + e.failure());
    }
    // NotInitialized: the C++17/20 host programs, for every kind of call.
}

TEST_F(CppPeach, HandlersAreAnyCallableFedFromJavaThreads) {
    velmora::Peach peach(handle);
    // A std::function replaced by copies of itself while a Java thread
    // delivers: each text reaches one handler, none is freed while it runs.
    auto counted = std::make_shared<std::atomic<int>>(0);
    std::function<void(std::string_view)> counting = [counted](std::string_view) {
        std::this_thread::sleep_for(std::chrono::microseconds(50));  // still running when replaced
        ++*counted;
    };
    std::atomic<bool> ran{false};
    peach.setIntermediateResultHandler(counting);
    std::thread java([&] {
        for (int run = 0; run < 30; ++run) peach.execute();
        ran = true;
    });
    for (int replaced = 0; !ran || replaced < 10; ++replaced) peach.setIntermediateResultHandler(counting);
    java.join();

    // A refused registration keeps the previous handler (which counts this
    // text too) and frees the refused callable.
    sdk::script("setIntermediateResultHandler", {"throw", "accepted"});
    EXPECT_THROW(peach.setIntermediateResultHandler([counted](std::string_view) {}), velmora::JavaException);
    sdk::fire("kept");
    EXPECT_EQ(*counted, 30 * 3 + 1);

    // A lambda replaces it, and every replaced callable is released; when it
    // throws, the text is lost, not the JVM's thread.
    peach.setIntermediateResultHandler([](std::string_view) { throw std::runtime_error("host failure"); });
    EXPECT_EQ(counted.use_count(), 2);  // counted and counting
    EXPECT_NO_THROW(sdk::fire("lost"));
}
