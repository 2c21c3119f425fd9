// Open, close and diagnostics.
#include "bridge/frame.hpp"

using namespace velmora;

extern "C" {

VELMORA_API int velmora_open(void) { return forwardInt<calls::open>(); }
VELMORA_API int velmora_ready(int handle) { return forwardInt<calls::ready>(handle); }
VELMORA_API int velmora_close(int handle) { return forwardInt<calls::close>(handle); }
VELMORA_API int velmora_getLastError(int handle) { return forwardInt<calls::getLastError>(handle); }
VELMORA_API int velmora_setLogLevel(const char *level) { return forwardInt<calls::setLogLevel>(level); }
VELMORA_API int velmora_stopWaitingBG(int handle) { return forwardInt<calls::stopWaitingBG>(handle); }
VELMORA_API int velmora_actionWait(int64_t value) { return forwardBool<calls::actionWait>(value); }

VELMORA_API int velmora_getLastErrorMessage(char *buf, size_t *len) {
    return forward<calls::getLastErrorMessage>(StringResult{buf, len, NullRule::EmptyString, true});
}

VELMORA_API int velmora_getUserLogin(char *buf, size_t *len) {
    return forward<calls::getUserLogin>(emptyOnNull(buf, len));
}

VELMORA_API void velmora_debug(void) {}
VELMORA_API void velmora_debug2(void) {}

}  // extern "C"
