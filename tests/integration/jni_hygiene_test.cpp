// Under the JVM's own JNI checking, a host thread making many calls of every
// kind gets no warning: no local reference outlives its call (the JVM warns
// once an attached thread holds more than 32), no JNI function is called with
// an exception pending, and every exception is checked.
#include <stdlib.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/fixture.hpp"

namespace {

TEST(JniHygiene, ManyCallsOnOneThreadRaiseNoCheckWarning) {
    setenv("JAVA_TOOL_OPTIONS", "-Xcheck:jni", 1);
    ASSERT_EQ(velmora_init(), 0);
    sdk::script("getUserLogin", {"login"});
    sdk::script("getResultFileCount", {"3"});
    sdk::script("getResultFileName", {"result.txt"});
    sdk::script("open", {"throw"});

    std::vector<const char *> list(50, "element");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    std::thread host([&] {
        for (int i = 0; i < 40; ++i) {
            char buf[64];
            size_t len = sizeof buf;
            int index = i % 4;
            velmora_ready(i);
            velmora_getUserLogin(buf, &len);
            len = sizeof buf;
            velmora_describeStatusCode(-5, buf, &len);
            velmora_setLogLevel("a\xF0\x9F\x98\x80");
            velmora_createJob3(1, static_cast<int>(list.size()), list.data());
            len = sizeof buf;
            velmora_getResultFiles(1, &index, buf, &len);
            velmora_open();  // throws: -13
            len = sizeof buf;
            velmora_getJavaSystemProperty("java.version", buf, &len);
            velmora_unload(1);
        }
    });
    host.join();
    const std::string out = testing::internal::GetCapturedStdout();
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(out.find("WARNING"), std::string::npos) << out.substr(0, 2000);
    EXPECT_EQ(err.find("WARNING"), std::string::npos) << err.substr(0, 2000);
    EXPECT_NE(err.find("scripted failure in open"), std::string::npos);
}

// Arguments made for a call are released with it, even on a host thread that
// stays attached and idle afterwards.
TEST_F(Bridge, ArgumentsDoNotOutliveTheirCall) {
    std::vector<const char *> list(3, "x");
    struct Case {
        const char *what;
        std::function<void()> call;
    };
    const Case cases[] = {
        {"text", [] { velmora_setLogLevel("transient"); }},
        {"list", [&] { velmora_createJob3(1, 3, list.data()); }},
        {"throwing call", [] {
             sdk::script("setLogLevel", {"throw"});
             velmora_setLogLevel("transient");
         }},
    };
    for (const Case &c : cases) {
        std::thread host(c.call);
        host.join();
        EXPECT_TRUE(sdk::lastArgumentCollected()) << c.what;
    }
}

}  // namespace
