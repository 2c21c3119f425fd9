// The C++ interface (velmora.hpp) against the SDK double: string results that
// size their own buffer, walks that follow a changing collection, string lists
// of every size and shape, one exception type per kind of failure, and
// callable handlers fed from Java threads.
#include <jni.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "support/fixture.hpp"
#include "velmora.hpp"

namespace {

using Texts = std::vector<std::string>;

// The journal rendering of a String[] argument.
std::string rendered(const Texts &list) {
    std::string out = "[";
    for (const std::string &s : list) out += (out.size() > 1 ? ", \"" : "\"") + s + "\"";
    return out + "]";
}

template <class Walk>
Texts collect(Walk &&walk) {
    Texts out;
    for (const std::string &name : walk) out.push_back(name);
    return out;
}

// Points the exported wrapper class at java.lang.Object, so that every peach
// method lookup misses.
class ForeignPeachClass {
public:
    ForeignPeachClass() : saved_(pwcls) {
        JNIEnv *jni = env();
        jclass object = jni->FindClass("java/lang/Object");
        pwcls = foreign_ = jni->NewGlobalRef(object);
        jni->DeleteLocalRef(object);
    }
    ~ForeignPeachClass() {
        pwcls = saved_;
        env()->DeleteGlobalRef(foreign_);
    }

private:
    static JNIEnv *env() {
        JNIEnv *jni = nullptr;
        velmora_getJavaVM()->GetEnv(reinterpret_cast<void **>(&jni), JNI_VERSION_1_6);
        return jni;
    }
    void *saved_;
    jobject foreign_ = nullptr;
};

// Runs call, which must throw exactly Kind with this code, the library's text
// for it and this SDK message.
template <class Kind, class Call>
void expectFailure(Call call, int code, const std::string &description, const std::string &sdkMessage) {
    try {
        call();
        ADD_FAILURE() << "nothing thrown for " << code;
    } catch (const Kind &e) {
        EXPECT_EQ(e.code(), code);
        EXPECT_EQ(e.description(), description);
        EXPECT_EQ(e.sdkMessage(), sdkMessage);
        EXPECT_EQ(std::string(e.what()), "velmora: " + std::to_string(code) + " " + description +
                                             (sdkMessage.empty() ? "" : ": " + sdkMessage));
    }
}

class CppBridge : public Bridge {};
class CppPeach : public PeachBridge {};

TEST_F(CppBridge, StringResultsSizeTheirOwnBuffer) {
    // A text that fits the first buffer costs one call; a longer one exactly
    // one more, with the size reported.
    for (int size : {0, 1, 255, 256, 257, 4096, 70000}) {
        SCOPED_TRACE(size);
        const std::string text(static_cast<std::size_t>(size), 'd');
        sdk::script("getProjectDescription", {text});
        EXPECT_EQ(velmora::getProjectDescription(7), text);
        EXPECT_EQ(sdk::journal().size(), size < 256 ? 1u : 2u);
    }
    // A text that grows between the calls is asked for until it fits.
    const std::string longer(600, 'b'), longest(2000, 'c');
    sdk::script("getResultDirectory", {std::string(300, 'a'), longer, longest});
    EXPECT_EQ(velmora::getResultDirectory(7), longest);
    EXPECT_EQ(sdk::journal().size(), 4u);  // 300, 600, 2000 too long; 2000 fits

    // No text, an empty text, and the empty-on-null rule.
    sdk::script("getStatisticsString", {"null", "", std::string(300, 's')});
    EXPECT_EQ(velmora::getStatisticsString(7), std::nullopt);
    EXPECT_EQ(velmora::getStatisticsString(7), "");
    EXPECT_EQ(velmora::getStatisticsString(7), std::string(300, 's'));
    sdk::script("getTempDir", {"null"});
    EXPECT_EQ(velmora::getTempDir(), "");
    EXPECT_EQ(velmora::getJavaSystemProperty("velmora.no.such.property"), std::nullopt);
    EXPECT_EQ(velmora::describeStatusCode(-24), "File index is out of bounds.");
}

TEST_F(CppBridge, WalksFollowTheCollectionWhileItChanges) {
    const std::string longName(300, 'n');
    struct Row {
        const char *what;
        velmora::NameWalk (*walk)(int);
        const char *countMethod, *nameMethod;
        std::vector<std::string> counts, names;
        Texts expected, positionsAsked;
    } rows[] = {
        {"steady", velmora::getResultFiles, "getResultFileCount", "getResultFileName", {"3"}, {"a", "b", "c"},
         {"a", "b", "c"}, {"0", "1", "2"}},
        {"empty", velmora::getResultFiles, "getResultFileCount", "getResultFileName", {"0"}, {"x"}, {}, {}},
        {"shrinks", velmora::getStreamedResultFiles, "getStreamedResultFilesCount", "getStreamedResultFileName",
         {"3", "3", "1"}, {"a", "b", "c"}, {"a", "b"}, {"0", "1"}},
        {"grows", velmora::getProjectParamNames, "getProjectParamCount", "getProjectParamName", {"1", "2", "2"},
         {"a", "b", "c"}, {"a", "b"}, {"0", "1"}},
        // The long name is asked for again with a larger buffer, same index.
        {"long name", velmora::getProjectParamNames, "getProjectParamCount", "getProjectParamName", {"2"},
         {"a", longName, longName, "c"}, {"a", longName}, {"0", "1", "1"}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        sdk::script(row.countMethod, row.counts);
        sdk::script(row.nameMethod, row.names);
        EXPECT_EQ(collect(row.walk(7)), row.expected);
        Texts nameCalls;
        for (const std::string &call : sdk::journal())
            if (call.rfind(row.nameMethod + std::string("("), 0) == 0) nameCalls.push_back(call.substr(call.rfind(' ') + 1));
        EXPECT_EQ(nameCalls, row.positionsAsked);
    }
    // A failure in the middle of a walk is thrown from the step.
    sdk::script("getResultFileCount", {"2"});
    sdk::script("getResultFileName", {"a", "throw"});
    velmora::NameWalk walk = velmora::getResultFiles(7);
    auto it = walk.begin();
    EXPECT_EQ(*it, "a");
    EXPECT_THROW(++it, velmora::JavaException);
}

TEST_F(CppBridge, ListsOfAnySizeAndShapeReachJava) {
    Texts many;
    for (int i = 0; i < 40; ++i) many.push_back("job-" + std::to_string(i));
    // Views into one long text, none ending at a NUL: each must be cut out.
    const std::string joined(1200, 'v');
    std::vector<std::string_view> views;
    Texts viewTexts;
    for (std::size_t i = 0; i < 30; ++i) {
        views.push_back(std::string_view(joined).substr(i, 20 + i));
        viewTexts.emplace_back(views.back());
    }
    const char *pointers[] = {"p", "q"};

    EXPECT_EQ(velmora::createJob(7, {}), 0);
    EXPECT_EQ(sdk::lastCall(), "createJob(I[Ljava/lang/String;)I 7, []");
    EXPECT_EQ(velmora::createJob(7, many), 0);
    EXPECT_EQ(sdk::lastCall(), "createJob(I[Ljava/lang/String;)I 7, " + rendered(many));
    EXPECT_EQ(velmora::setProjectParams(7, views), 0);
    EXPECT_EQ(sdk::lastCall(), "setProjectParams(I[Ljava/lang/String;)I 7, " + rendered(viewTexts));
    EXPECT_EQ(velmora::peach(pointers), 0);
    EXPECT_EQ(sdk::lastCall(), "peach([Ljava/lang/String;)I [\"p\", \"q\"]");
    const std::string owned = "b";
    EXPECT_EQ(velmora::createProject(7, 2, "t", {"a", owned, std::string_view("cd").substr(1)}), 0);
    EXPECT_EQ(sdk::lastCall(), "createProject(IILjava/lang/String;[Ljava/lang/String;)I 7, 2, \"t\", [\"a\", \"b\", \"d\"]");

    // Two lists: the second starts where the first ends, whatever their sizes.
    EXPECT_EQ(velmora::createSignedBundle(7, "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11", many, {"x"}), 0);
    EXPECT_EQ(sdk::lastCall(), "createSignedBundle(ILjava/lang/String;Ljava/lang/String;Ljava/lang/String;"
                               "Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;"
                               "Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;[Ljava/lang/String;"
                               "[Ljava/lang/String;Ljava/lang/String;)I 7, \"1\", \"2\", \"3\", \"4\", \"5\", \"6\", "
                               "\"7\", \"8\", \"9\", \"10\", " +
                                   rendered(many) + ", [\"x\"], \"11\"");
}

TEST_F(CppPeach, EachKindOfFailureHasItsOwnException) {
    velmora::Peach peach(handle);
    sdk::script("getLastErrorMessage()Ljava/lang/String;", {"disk full"});

    sdk::script("setName", {"throw"});
    expectFailure<velmora::JavaException>([&] { peach.setName("x"); }, -13, "Uncaught exception thrown from Java",
                                          "disk full");
    sdk::script("createJob", {"throw"});
    expectFailure<velmora::JavaException>([] { velmora::createJob(7, {"a"}); }, -13,
                                          "Uncaught exception thrown from Java", "disk full");
    {
        ForeignPeachClass noMethods;
        expectFailure<velmora::MethodNotFound>([&] { peach.setJobs(1); }, -12, "Java method could not be found",
                                               "disk full");
    }
    // Values from Java are values, negative ones included; only the three
    // codes of the call itself are read as failures. The raw form throws none.
    sdk::script("createJob", {"-24", "-10", "-11"});
    EXPECT_EQ(velmora::createJob(7, {}), -24);
    EXPECT_EQ(velmora::createJob(7, {}), -10);
    EXPECT_THROW(velmora::createJob(7, {}), velmora::NotInitialized);
    sdk::script("createJob", {"throw"});
    EXPECT_EQ(velmora::raw::createJob(7, {"a"}), -13);
    sdk::script("getUsedTime", {"-5000000000", "-12"});
    EXPECT_EQ(velmora::getUsedTime(7), -5000000000);
    EXPECT_THROW(velmora::getUsedTime(7), velmora::MethodNotFound);
    sdk::script("isCompleted", {"true"});
    EXPECT_TRUE(velmora::isCompleted(7));

    // Once unloaded the wrapper is gone: -11, with the management message.
    ASSERT_EQ(velmora::unload(false), 0);
    expectFailure<velmora::NotInitialized>([&] { peach.setName("x"); }, -11, "Java is not initialized", "disk full");
}

TEST_F(CppPeach, BuilderMethodsReachTheirJavaMethods) {
    sdk::script("get", {"9"});
    velmora::Peach peach = velmora::Peach::create();
    EXPECT_EQ(peach.handle(), 9);
    sdk::journal();
    peach.setPriorityI(3);
    peach.setMessages(true);
    peach.addJobFileWithDir("frames", {"a", "b"});
    EXPECT_EQ(sdk::journal(), (Texts{"setPriority(II)V 9, 3", "setMessages(IZ)V 9, true",
                                     "addJobFileWithDir(ILjava/lang/String;[Ljava/lang/String;)V 9, \"frames\", [\"a\", \"b\"]"}));
    const std::string longName(400, 'f');
    sdk::script("nextFile", {"a", longName, longName, "null"});
    EXPECT_EQ(collect(peach.files()), (Texts{"a", longName}));
}

TEST_F(CppPeach, HandlersAreAnyCallableFedFromJavaThreads) {
    velmora::Peach peach(handle);
    auto counted = std::make_shared<std::atomic<int>>(0);
    peach.setIntermediateResultHandler([counted](std::string_view) { ++*counted; });
    EXPECT_EQ(sdk::fireConcurrently(4, 100, "t"), 400);
    EXPECT_EQ(*counted, 400);

    // A std::function replaces it; the replaced callable is released.
    std::mutex mutex;
    Texts received;
    peach.setIntermediateResultHandler(std::function<void(std::string_view)>([&](std::string_view text) {
        std::lock_guard lock(mutex);
        received.emplace_back(text);
    }));
    EXPECT_EQ(counted.use_count(), 1);
    sdk::fire("Grüße\nzwei");
    EXPECT_EQ(received, Texts{"Grüße\nzwei"});

    // A refused registration keeps the previous handler.
    sdk::script("setIntermediateResultHandler", {"throw"});
    EXPECT_THROW(peach.setIntermediateResultHandler([counted](std::string_view) { ++*counted; }), velmora::JavaException);
    sdk::script("setIntermediateResultHandler", {});
    sdk::fire("kept");
    EXPECT_EQ(received.back(), "kept");
    EXPECT_EQ(counted.use_count(), 1);

    // A throwing handler loses the text, not the JVM's thread.
    peach.setIntermediateResultHandler([](std::string_view) { throw std::runtime_error("host failure"); });
    EXPECT_NO_THROW(sdk::fire("lost"));

    // Replacing handlers while Java threads deliver: each text reaches one
    // handler, none is freed while it runs, and every replaced one is released.
    std::atomic<int> delivered{-1};
    {
        auto counting = [counted](std::string_view text) {
            std::this_thread::sleep_for(std::chrono::microseconds(50));  // still running when replaced
            if (!text.empty()) ++*counted;
        };
        peach.setIntermediateResultHandler(counting);
        std::thread java([&] { delivered = sdk::fireConcurrently(4, 1000, "c"); });
        for (int replaced = 0; delivered < 0 || replaced < 10; ++replaced) peach.setIntermediateResultHandler(counting);
        java.join();
    }
    peach.setIntermediateResultHandler(std::function<void(std::string_view)>());
    EXPECT_EQ(counted.use_count(), 1);
    EXPECT_EQ(*counted - 400, delivered);
    sdk::fire("dropped");
    EXPECT_EQ(received.back(), "kept");
}

}  // namespace
