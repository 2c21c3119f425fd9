// One-call peach: a whole run started from one string list, its result file
// names fetched one per call, and the run finished.
#include "bridge/frame.hpp"

using namespace velmora;

extern "C" {

VELMORA_API int velmora_peach2(int count, va_list strings) {
    return forwardList<calls::peach>(ListSource(strings), count);
}
VELMORA_API int velmora_peach3(int count, const char **list) {
    return forwardList<calls::peach>(ListSource(list), count);
}
VELMORA_API int velmora_peach(int count, ...) { VELMORA_WITH_VA_LIST(count, velmora_peach2(count, strings)); }

// 0 with *len 0 when Java has no name to give.
VELMORA_API int velmora_peachNextFile(int handle, char *buf, size_t *len) {
    return forward<calls::peachNextFile>(zeroOnNull(buf, len), handle);
}

VELMORA_API int velmora_peachDone(int handle) { return forwardVoid<calls::peachDone>(handle); }

}  // extern "C"
