// Status texts and velmora_describeStatusCode.
#include <cstring>
#include <string_view>

#include "bridge/frame.hpp"
#include "velmora.h"

namespace velmora {
namespace {

// Built-in texts for 0 and -11 to -25, indexed by -code; null where a code
// in that range has none.
constexpr const char *kTexts[26] = {
    "OK",
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
    "Java is not initialized",
    "Java method could not be found",
    "Uncaught exception thrown from Java",
    "Unable to find the constructor of Management Interface",
    "Unable to find the initializer of Management Interface",
    "Unable to initialize Management Interface",
    "Unknown error",
    "Unable to find Java",
    "Unable to find Java version",
    "Unable to find Java keypath",
    "Unable to find Java runtime library location",
    "Unable to find Java runtime library",
    "String buffer is too small.",
    "File index is out of bounds.",
    "VARIANT type is invalid, BSTR expected.",
};

const char *builtInText(int code) { return code <= 0 && code >= -25 ? kTexts[-code] : nullptr; }

}  // namespace
}  // namespace velmora

extern "C" VELMORA_API int velmora_describeStatusCode(int code, char *buf, size_t *len) {
    using namespace velmora;
    if (const char *text = builtInText(code)) {
        StringOut out(buf, len);
        const std::size_t bytes = std::strlen(text) + 1;
        out.setLength(bytes);
        if (out.capacity() < bytes) return kBufferTooSmall;
        out.write(text);
        return kOk;
    }
    return forward<calls::describeStatusCode>(plain(buf, len), code);
}
