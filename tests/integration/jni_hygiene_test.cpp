// Under the JVM's own JNI checking, a host thread making every call of the
// table gets no warning: no local reference outlives its call (the JVM warns
// once an attached thread holds more than 32), no JNI function is called with
// an exception pending, and every exception is checked.
#include <stdlib.h>

#include <thread>

#include "tables/forwarders.hpp"

namespace {

TEST(JniHygiene, EveryCallOnOneThreadRaisesNoCheckWarning) {
    setenv("JAVA_TOOL_OPTIONS", "-Xcheck:jni", 1);
    ASSERT_EQ(velmora_init(), 0);
    sdk::script("open", {"throw"});
    sdk::script("getResultFileCount", {"3"});
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    std::thread host([] {
        for (int round = 0; round < 2; ++round) {
            velmora_peach_handle();
            for (const table::Row &row : table::forwarders()) {
                Buffer b(64);
                row.call(b);
            }
            Buffer b(64);
            velmora_getJavaSystemProperty("java.version", b.bytes, &b.len);
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
    const std::pair<const char *, void (*)()> cases[] = {
        {"text", [] { velmora_setLogLevel("transient"); }},
        {"list", [] { velmora_createJob3(1, 3, table::kPool); }},
        {"throwing call", [] {
             sdk::script("setLogLevel", {"throw"});
             velmora_setLogLevel("transient");
         }},
    };
    for (const auto &[what, call] : cases) {
        std::thread(call).join();
        EXPECT_TRUE(sdk::lastArgumentCollected()) << what;
    }
}

}  // namespace
