// A C++ host of velmora.hpp, built as C++17 and as C++20 with every warning an
// error, run before Java is started: every kind of call turns the library's
// -11 into velmora::NotInitialized, with no SDK message.
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "velmora.hpp"

namespace {

int failures = 0;

template <class Call>
void expectNotInitialized(const char *what, Call call) {
    try {
        call();
        std::printf("%s: nothing thrown\n", what);
    } catch (const velmora::NotInitialized &e) {
        if (e.code() == -11 && e.description() == "Java is not initialized" && e.sdkMessage().empty()) return;
        std::printf("%s: %s\n", what, e.what());
    }
    ++failures;
}

}  // namespace

int main() {
    const std::vector<std::string> list{"a", "b"};
    velmora::Peach peach(1);
    expectNotInitialized("int", [] { velmora::open(); });
    expectNotInitialized("long", [] { velmora::getUsedTime(1); });
    expectNotInitialized("boolean", [] { velmora::isCompleted(1); });
    expectNotInitialized("text", [] { velmora::getLastErrorMessage(); });
    expectNotInitialized("property", [] { velmora::getJavaSystemProperty("java.version"); });
    expectNotInitialized("list", [&] { velmora::createBundle(1, "", "", "", "", "", "", "", "", "", list, {"c"}); });
    expectNotInitialized("walk", [] {
        for (const std::string &name : velmora::getResultFiles(1)) std::puts(name.c_str());
    });
    expectNotInitialized("peach", [&] { peach.addJobFile({std::string_view("x")}); });
    expectNotInitialized("handler", [&] { peach.setIntermediateResultHandler([](std::string_view) {}); });
    if (velmora::describeStatusCode(-23) != "String buffer is too small.") ++failures;
    if (velmora::getPluginClass("p") != nullptr) ++failures;
    if (failures == 0) std::puts("C++ host ok");
    return failures;
}
