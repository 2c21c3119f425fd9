// The forwarding functions that the call table does not generate: bundle
// creation (plain and signed, each with two string lists), the partial
// download and the two functions that do nothing.
//
// Both creation methods take their two lists from one source: the second list
// continues where the first ended (after count1 strings of the va_list, or at
// entry count1 of the array). The signed form hands its eleventh text to Java
// after the two lists.
#include "bridge/frame.hpp"

using namespace velmora;

extern "C" {

VELMORA_API int velmora_createBundle2(int handle, const char *s1, const char *s2, const char *s3,
                                      const char *s4, const char *s5, const char *s6,
                                      const char *s7, const char *s8, const char *s9,
                                      int count1, int count2, va_list strings) {
    ListSource src(strings);
    return forwardValue<calls::createBundle>(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9,
                                           StringList{count1, &src}, StringList{count2, &src});
}

VELMORA_API int velmora_createBundle3(int handle, const char *s1, const char *s2, const char *s3,
                                      const char *s4, const char *s5, const char *s6,
                                      const char *s7, const char *s8, const char *s9,
                                      int count1, int count2, const char **list) {
    ListSource src(list);
    return forwardValue<calls::createBundle>(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9,
                                           StringList{count1, &src}, StringList{count2, &src});
}

VELMORA_API int velmora_createBundle(int handle, const char *s1, const char *s2, const char *s3,
                                     const char *s4, const char *s5, const char *s6,
                                     const char *s7, const char *s8, const char *s9,
                                     int count1, int count2, ...) {
    VELMORA_WITH_VA_LIST(count2, velmora_createBundle2(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9,
                                                       count1, count2, strings));
}

VELMORA_API int velmora_createSignedBundle2(int handle, const char *s1, const char *s2,
                                            const char *s3, const char *s4, const char *s5,
                                            const char *s6, const char *s7, const char *s8,
                                            const char *s9, const char *s10, const char *s11,
                                            int count1, int count2, va_list strings) {
    ListSource src(strings);
    return forwardValue<calls::createSignedBundle>(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9, s10,
                                                 StringList{count1, &src}, StringList{count2, &src},
                                                 s11);
}

VELMORA_API int velmora_createSignedBundle3(int handle, const char *s1, const char *s2,
                                            const char *s3, const char *s4, const char *s5,
                                            const char *s6, const char *s7, const char *s8,
                                            const char *s9, const char *s10, const char *s11,
                                            int count1, int count2, const char **list) {
    ListSource src(list);
    return forwardValue<calls::createSignedBundle>(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9, s10,
                                                 StringList{count1, &src}, StringList{count2, &src},
                                                 s11);
}

VELMORA_API int velmora_createSignedBundle(int handle, const char *s1, const char *s2,
                                           const char *s3, const char *s4, const char *s5,
                                           const char *s6, const char *s7, const char *s8,
                                           const char *s9, const char *s10, const char *s11,
                                           int count1, int count2, ...) {
    VELMORA_WITH_VA_LIST(count2, velmora_createSignedBundle2(handle, s1, s2, s3, s4, s5, s6, s7, s8,
                                                             s9, s10, s11, count1, count2, strings));
}

// The partial download is the boolean overload, always with true.
VELMORA_API int velmora_downloadPartialResult(int handle) {
    return forwardValue<calls::downloadPartialResult>(handle, Flag{JNI_TRUE});
}

VELMORA_API void velmora_debug(void) {}
VELMORA_API void velmora_debug2(void) {}

}  // extern "C"
