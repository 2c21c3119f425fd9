// Conversion of C arguments at its limits: a heap too small for them and null
// pointers anywhere (text that is not well-formed UTF-8 has rows of the
// forwarding table), none of which may leave an exception pending, a JNI call
// made with one, or a reference behind (the suites run under the JVM's JNI
// checking, which warns on each).
#include <stdlib.h>

#include <functional>
#include <thread>

#include "support/fixture.hpp"

namespace {

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
    const int count = static_cast<int>(list.size());
    const std::pair<const char *, std::function<int()>> cases[] = {
        {"management list", [&] { return velmora_createJob3(1, count, list.data()); }},
        {"peach list", [&] { return velmora_peach_addJobFile3(handle, count, list.data()); }},
        {"management text", [&] { return velmora_setLogLevel(huge.c_str()); }},
        {"peach text", [&] { return velmora_peach_setName(handle, huge.c_str()); }},
    };
    for (const auto &[what, call] : cases) {
        EXPECT_EQ(call(), VELMORA_STATUS_JAVA_EXCEPTION) << what;
        EXPECT_FALSE(threadEnv()->ExceptionCheck()) << what;
        EXPECT_EQ(sdk::journal(), Journal{}) << what;
        EXPECT_EQ(velmora_ready(1), 0) << what;
        EXPECT_EQ(sdk::journal(), Journal{"ready(I)I 1"}) << what;
    }
}

// However many calls a host thread makes with null pointers wherever the
// interface takes one, it holds no reference afterwards (the JVM warns once a
// thread holds more than 32).
TEST_F(PeachBridge, NullPointersLeaveNoReference) {
    sdk::script("getResultFileCount", {"3"});
    sdk::script("getResultFileName", {"name"});
    const char *nulls[] = {nullptr, nullptr};
    std::thread([&] {
        for (int i = 0; i < 40; ++i) {
            int index = 0;
            size_t len = 2;
            EXPECT_EQ(velmora_getPlugin("plugin", nullptr), 0);
            EXPECT_EQ(velmora_getTempDir(nullptr, nullptr), -23);
            EXPECT_EQ(velmora_getLastErrorMessage(nullptr, nullptr), -23);
            EXPECT_EQ(velmora_getResultFiles(1, nullptr, nullptr, nullptr), -24);
            EXPECT_EQ(velmora_getResultFiles(1, &index, nullptr, &len), -23);
            EXPECT_EQ(velmora_describeStatusCode(-5, nullptr, nullptr), -23);
            EXPECT_EQ(velmora_setLogLevel(nullptr), 0);
            EXPECT_EQ(velmora_createJob3(1, 2, nulls), 0);
            EXPECT_EQ(velmora_createJob3(1, 0, nullptr), 0);
            EXPECT_EQ(velmora_peach_setName(handle, nullptr), 0);
            EXPECT_EQ(velmora_getJavaSystemProperty("java.version", nullptr, nullptr), -23);
        }
    }).join();
}

}  // namespace
