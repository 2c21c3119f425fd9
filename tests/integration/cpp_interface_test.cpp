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

using Texts = std::vector<std::string>;

// The journal rendering of a String[] argument.
static std::string rendered(const Texts &list) {
    std::string out = "[";
    for (const std::string &s : list) out += (out.size() > 1 ? ", \"" : "\"") + s + "\"";
    return out + "]";
}

// Every name a walk yields.
template <class Walk>
static Texts all(const Walk &walk) { return Texts(walk.begin(), walk.end()); }

class CppPeach : public PeachBridge {};

TEST_F(CppPeach, StringResultsSizeTheirOwnBuffer) {
    // A text that fits the first buffer (255 bytes and the NUL) costs one
    // call, a longer one exactly one more, and one that grows between the
    // calls is asked for until it fits: 1 + 1 + 1 + 2 + 4 calls. No text is
    // nullopt, an empty text "".
    const std::string fits(255, 'a'), longer(256, 'b'), mid(600, 'c'), grown(2000, 'd');
    sdk::script("getStatisticsString", {"null", "", fits, longer, longer, longer, mid, grown});
    for (const auto &expected : std::vector<std::optional<std::string>>{std::nullopt, "", fits, longer, grown})
        EXPECT_EQ(velmora::getStatisticsString(7), expected);
    EXPECT_EQ(sdk::journal().size(), 9u);

    // Functions that give "" for null; properties. (The library's own texts
    // are the exceptions' descriptions below.)
    sdk::script("getTempDir", {"null"});
    EXPECT_EQ(velmora::getTempDir(), "");
    EXPECT_EQ(velmora::getJavaSystemProperty("velmora.no.such.property"), std::nullopt);
}

TEST_F(CppPeach, WalksFollowTheCollectionWhileItChanges) {
    // Each step asks the count, then the name at its position; a name too
    // long for the first buffer is asked for again (count and name).
    const std::string longName(300, 'n');
    const std::tuple<Texts, Texts, Texts, std::size_t> rows[] = {
        {{"1", "2", "2"}, {"a", "b", "c"}, {"a", "b"}, 5},                    // grows
        {{"3", "3", "3", "1"}, {"a", longName, longName}, {"a", longName}, 7},  // long name, then shrinks
    };
    for (const auto &[counts, names, expected, calls] : rows) {
        sdk::script("getProjectParamCount", counts);
        sdk::script("getProjectParamName", names);
        EXPECT_EQ(all(velmora::getProjectParamNames(7)), expected);
        EXPECT_EQ(sdk::journal().size(), calls);
    }
    // A failure in the middle of a walk is thrown, not taken for its end.
    sdk::script("getStreamedResultFilesCount", {"2"});
    sdk::script("getStreamedResultFileName", {"a", "throw"});
    EXPECT_THROW(all(velmora::getStreamedResultFiles(7)), velmora::JavaException);

    // The files of a peach run, until Java returns none.
    sdk::script("nextFile", {"a", longName, longName, "null"});
    EXPECT_EQ(all(velmora::Peach(handle).files()), (Texts{"a", longName}));
}

TEST_F(CppPeach, ListsOfAnySizeAndShapeAndBuilderCallsReachJava) {
    // Views into one long text, none ending at a NUL (each is cut out and
    // copied), and more of them than a list keeps inline; the same texts as
    // std::string; a const char * array; a braced list mixing kinds; an
    // empty list; two lists in one call.
    const std::string joined(1200, 'v');
    std::vector<std::string_view> views;
    for (std::size_t i = 0; i < 40; ++i) views.push_back(std::string_view(joined).substr(i, 20 + i));
    const Texts many(views.begin(), views.end());
    const char *pointers[] = {"p", "q"};
    sdk::script("get", {"9"});
    velmora::Peach peach = velmora::Peach::create();

    velmora::createJob(7, views);
    velmora::createProject(7, 2, "t", {"a", std::string("b"), std::string_view("cd").substr(1)});
    velmora::createBundle(7, "1", "2", "3", "4", "5", "6", "7", "8", "9", many, pointers);
    peach.setPriorityI(3);
    peach.setMessages(true);
    peach.addJobFileWithDir("frames", {});
    // Each call as the method's name and its arguments.
    Texts calls;
    for (std::string c : sdk::journal()) calls.push_back(c.erase(c.find('('), c.find(' ') - c.find('(')));
    EXPECT_EQ(calls, (Texts{"get", "createJob 7, " + rendered(many), "createProject 7, 2, \"t\", [\"a\", \"b\", \"d\"]",
                            "createBundle 7, \"1\", \"2\", \"3\", \"4\", \"5\", \"6\", \"7\", \"8\", \"9\", " +
                                rendered(many) + ", [\"p\", \"q\"]",
                            "setPriority 9, 3", "setMessages 9, true", "addJobFileWithDir 9, \"frames\", []"}));
}

TEST_F(CppPeach, EachKindOfFailureHasItsOwnException) {
    sdk::script("getLastErrorMessage()Ljava/lang/String;", {"disk full"});
    sdk::script("setName", {"throw"});
    try {
        velmora::Peach(handle).setName("x");
        ADD_FAILURE() << "nothing thrown";
    } catch (const velmora::JavaException &e) {
        EXPECT_EQ(e.code(), -13);
        EXPECT_EQ(e.description(), "Uncaught exception thrown from Java");
        EXPECT_EQ(e.sdkMessage(), "disk full");
        EXPECT_STREQ(e.what(), "velmora: -13 Uncaught exception thrown from Java: disk full");
    }
    // Values from Java are values, negative ones included; only the three
    // codes of the call itself are read as failures. The raw form throws none.
    sdk::script("createJob", {"-14", "-10", "-11", "throw"});
    sdk::script("getUsedTime", {"-5000000000", "-12"});
    EXPECT_EQ(velmora::createJob(7, {}), -14);
    EXPECT_EQ(velmora::createJob(7, {}), -10);
    EXPECT_THROW(velmora::createJob(7, {}), velmora::NotInitialized);
    EXPECT_EQ(velmora::raw::createJob(7, {"a"}), -13);
    EXPECT_EQ(velmora::getUsedTime(7), -5000000000);
    EXPECT_THROW(velmora::getUsedTime(7), velmora::MethodNotFound);

    // Once unloaded the wrapper is gone.
    ASSERT_EQ(velmora::unload(false), 0);
    EXPECT_THROW(velmora::Peach(handle).setName("x"), velmora::NotInitialized);
}

TEST_F(CppPeach, HandlersAreAnyCallableFedFromJavaThreads) {
    velmora::Peach peach(handle);
    // A std::function replaced by copies of itself while Java threads
    // deliver: each text reaches one handler, none is freed while it runs.
    auto counted = std::make_shared<std::atomic<int>>(0);
    std::function<void(std::string_view)> counting = [counted](std::string_view text) {
        std::this_thread::sleep_for(std::chrono::microseconds(50));  // still running when replaced
        if (!text.empty()) ++*counted;
    };
    std::atomic<int> delivered{-1};
    peach.setIntermediateResultHandler(counting);
    std::thread java([&] { delivered = sdk::fireConcurrently(4, 25, "c"); });
    for (int replaced = 0; delivered < 0 || replaced < 10; ++replaced) peach.setIntermediateResultHandler(counting);
    java.join();
    EXPECT_EQ(*counted, delivered);

    // A refused registration keeps the previous handler and frees the refused callable.
    sdk::script("setIntermediateResultHandler", {"throw"});
    EXPECT_THROW(peach.setIntermediateResultHandler([counted](std::string_view) {}), velmora::JavaException);
    sdk::fire("kept");
    EXPECT_EQ(*counted, delivered + 1);

    // A lambda replaces it, and every replaced callable is released; when it
    // throws, the text is lost, not the JVM's thread.
    sdk::script("setIntermediateResultHandler", {});
    peach.setIntermediateResultHandler([](std::string_view) { throw std::runtime_error("host failure"); });
    EXPECT_EQ(counted.use_count(), 2);  // counted and counting
    EXPECT_NO_THROW(sdk::fire("lost"));
}
