// Conversion of C arguments at its limits: a heap too small for them, text
// that is not well-formed UTF-8, and null pointers anywhere, none of which may
// leave an exception pending, a JNI call made with one, or a reference behind.
#include <stdlib.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/fixture.hpp"

namespace {

JNIEnv *jni() {
    JNIEnv *e = nullptr;
    velmora_getJavaVM()->GetEnv(reinterpret_cast<void **>(&e), JNI_VERSION_1_6);
    return e;
}

// The JVM's own JNI checking prints its warnings on standard output.
class CheckedJni : public PeachBridge {
protected:
    void start(const char *options) {
        setenv("_JAVA_OPTIONS", options, 1);
        PeachBridge::SetUp();
        testing::internal::CaptureStdout();
    }
    void SetUp() override {}
    void TearDown() override {
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(out.find("WARNING"), std::string::npos) << out.substr(0, 2000);
    }
};

// Each argument that cannot fit in the heap: -13 at once, the Java method not
// called, nothing pending, and the next call as usual.
TEST_F(CheckedJni, ArgumentsThatDoNotFitTheHeap) {
    start("-Xmx32m -Xcheck:jni");
    const std::string kilobyte(1024, 'k');
    std::vector<const char *> list(40000, kilobyte.c_str());  // 40 MB of strings
    const std::string huge(48 << 20, 't');
    struct Case {
        const char *what;
        std::function<int()> call;
    };
    const Case cases[] = {
        {"management list", [&] { return velmora_createJob3(1, static_cast<int>(list.size()), list.data()); }},
        {"peach list", [&] { return velmora_peach_addJobFile3(handle, static_cast<int>(list.size()), list.data()); }},
        {"management text", [&] { return velmora_setLogLevel(huge.c_str()); }},
        {"peach text", [&] { return velmora_peach_setName(handle, huge.c_str()); }},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.call(), VELMORA_STATUS_JAVA_EXCEPTION);
        EXPECT_FALSE(jni()->ExceptionCheck());
        EXPECT_EQ(sdk::journal(), std::vector<std::string>{});
        EXPECT_EQ(velmora_ready(1), 0);
        EXPECT_EQ(sdk::lastCall(), "ready(I)I 1");
    }
}

// However many calls a host thread makes with null pointers wherever the
// interface takes one, it holds no reference afterwards (the JVM warns once a
// thread holds more than 32).
TEST_F(CheckedJni, NullPointersLeaveNoReference) {
    start("-Xcheck:jni");
    sdk::script("getResultFileCount", {"3"});
    sdk::script("getResultFileName", {"name"});
    const char *nulls[] = {nullptr, nullptr};
    std::thread host([&] {
        for (int i = 0; i < 100; ++i) {
            int index = 0;
            size_t len = 2;
            velmora_getPlugin("plugin", nullptr);
            velmora_getTempDir(nullptr, nullptr);
            velmora_getLastErrorMessage(nullptr, nullptr);
            velmora_getResultFiles(1, nullptr, nullptr, nullptr);
            velmora_getResultFiles(1, &index, nullptr, &len);
            velmora_describeStatusCode(-5, nullptr, nullptr);
            velmora_setLogLevel(nullptr);
            velmora_createJob3(1, 2, nulls);
            velmora_createJob3(1, 0, nullptr);
            velmora_peach_setName(handle, nullptr);
            velmora_getJavaSystemProperty("java.version", nullptr, nullptr);
        }
    });
    host.join();
}

// Well-formed text reaches Java as its characters; each maximal ill-formed
// subsequence as one U+FFFD.
TEST_F(Bridge, TextIsReencodedOnlyWhereItMustBe) {
    constexpr const char *kFffd = "\xEF\xBF\xBD";
    const std::string kSmiley = "\xED\xA0\xBD\xED\xB8\x80";  // U+1F600 in modified UTF-8
    struct Case {
        const char *what;
        const char *text;
        std::string java;
    };
    const Case cases[] = {
        {"ASCII", "plain text, long enough for whole words", "plain text, long enough for whole words"},
        {"two and three bytes", "\xC3\xA9\xE2\x82\xAC", "\xC3\xA9\xE2\x82\xAC"},
        {"four bytes", "a\xF0\x9F\x98\x80", "a" + kSmiley},
        {"largest code point", "\xF4\x8F\xBF\xBF", "\xED\xAF\xBF\xED\xBF\xBF"},
        {"surrogate pair as modified UTF-8", "\xED\xA0\xBD\xED\xB8\x80", kSmiley},
        {"NUL as modified UTF-8", "a\xC0\x80z", std::string("a\xC0\x80z")},
        {"overlong four bytes", "\xF0\x80\x80\x80!", std::string(kFffd) + kFffd + kFffd + kFffd + "!"},
        {"beyond U+10FFFF", "\xF4\x90\x80\x80", std::string(kFffd) + kFffd + kFffd + kFffd},
        {"truncated four bytes", "\xF0\x9F\x98z", std::string(kFffd) + "z"},
        {"truncated three bytes at the end", "x\xE2\x82", std::string("x") + kFffd},
        {"lone continuation and invalid bytes", "\x80\xC1\xBF\xFF", std::string(kFffd) + kFffd + kFffd + kFffd},
        {"overlong two bytes", "\xC0\xAF", std::string(kFffd) + kFffd},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(velmora_setLogLevel(c.text), 0) << c.what;
        EXPECT_EQ(sdk::lastCall(), "setLogLevel(Ljava/lang/String;)I \"" + c.java + "\"") << c.what;
    }
}

}  // namespace
