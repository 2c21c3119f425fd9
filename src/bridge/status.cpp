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
        const std::size_t bytes = std::strlen(text) + 1;
        out.setLength(bytes);
        if (out.capacity() < bytes) return VELMORA_STATUS_BUFFER_TOO_SMALL;
        out.write(text);
        return VELMORA_STATUS_OK;
    }
    return forward<calls::describeStatusCode>(textResult(buf, len), code);
}
