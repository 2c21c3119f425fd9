// Status texts and velmora_describeStatusCode.
#include <cstring>
#include <string_view>

#include "bridge/frame.hpp"
#include "velmora.h"

namespace velmora {
namespace {

// The library's own text for a status code, or null for any other code.
const char *builtInText(int code) {
    switch (code) {
#define VELMORA_STATUS_TEXT(name, value, kind, text) \
    case value: return text;
        VELMORA_STATUS_CODES(VELMORA_STATUS_TEXT)
#undef VELMORA_STATUS_TEXT
    default: return nullptr;
    }
}

}  // namespace
}  // namespace velmora

extern "C" VELMORA_API int velmora_describeStatusCode(int code, char *buf, size_t *len) {
    using namespace velmora;
    if (const char *text = builtInText(code)) {
        StringOut out(buf, len);
        return deliverText(text, out);
    }
    return forward<calls::describeStatusCode>(textResult(buf, len), code);
}
