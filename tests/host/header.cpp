// A C++ host of velmora.hpp, built as C++17 and as C++20 with every warning an
// error, run before Java is started: every kind of call turns the library's
// -11 into velmora::NotInitialized, with no SDK message and the library's
// account of the failure after the first line.
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "velmora.hpp"

int main() {
    // long, boolean, text (which has a text of its own before start-up),
    // optional text, two lists, walk, peach list, handler registration.
    const std::function<void()> calls[] = {
        [] { velmora::getUsedTime(1); }, [] { velmora::isCompleted(1); }, [] { velmora::getLastErrorMessage(); },
        [] { velmora::getJavaSystemProperty("java.version"); },
        [] { velmora::createBundle(1, "", "", "", "", "", "", "", "", "", std::vector<std::string>{"a"}, {"c"}); },
        [] { velmora::getResultFiles(1).begin(); }, [] { velmora::Peach(1).addJobFile({std::string_view("x")}); },
        [] { velmora::Peach(1).setIntermediateResultHandler([](std::string_view) {}); },
    };
    // The header's text of -11.
#define VELMORA_TEXT_OF_11(name, value, kind, text) value == -11 ? text:
    const std::string description = VELMORA_STATUS_CODES(VELMORA_TEXT_OF_11) "";
    std::size_t caught = 0;
    for (const std::function<void()> &call : calls) {
        try {
            call();
        } catch (const velmora::NotInitialized &e) {
            caught += e.code() == -11 && e.sdkMessage().empty() &&
                      std::string(e.what()) == "velmora: -11 " + description + "\n" + e.failure() &&
                      e.failure().find("no start-up") != std::string::npos;
        }
    }
    return static_cast<int>(std::size(calls) - caught);  // the calls that did not
}
