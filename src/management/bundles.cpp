// Bundles: creation (plain and signed, each with two string lists), upload,
// approval, existence checks, selection, identifiers, the name of the bundle
// created last, and jar signing.
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
    return forwardInt<calls::createBundle>(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9,
                                           StringList{count1, &src}, StringList{count2, &src});
}

VELMORA_API int velmora_createBundle3(int handle, const char *s1, const char *s2, const char *s3,
                                      const char *s4, const char *s5, const char *s6,
                                      const char *s7, const char *s8, const char *s9,
                                      int count1, int count2, const char **list) {
    ListSource src(list);
    return forwardInt<calls::createBundle>(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9,
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
    return forwardInt<calls::createSignedBundle>(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9, s10,
                                                 StringList{count1, &src}, StringList{count2, &src},
                                                 s11);
}

VELMORA_API int velmora_createSignedBundle3(int handle, const char *s1, const char *s2,
                                            const char *s3, const char *s4, const char *s5,
                                            const char *s6, const char *s7, const char *s8,
                                            const char *s9, const char *s10, const char *s11,
                                            int count1, int count2, const char **list) {
    ListSource src(list);
    return forwardInt<calls::createSignedBundle>(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9, s10,
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

VELMORA_API int velmora_uploadBundle(int handle) { return forwardInt<calls::uploadBundle>(handle); }
VELMORA_API int velmora_uploadBundleWithName(int handle, const char *name) {
    return forwardInt<calls::uploadBundleWithName>(handle, name);
}
VELMORA_API int velmora_approveUploadedBundles(int handle) {
    return forwardInt<calls::approveUploadedBundles>(handle);
}

VELMORA_API int velmora_bundleExists(const char *name) { return forwardBool<calls::bundleExists>(name); }
VELMORA_API int velmora_bundleVersionExists(const char *first, const char *second) {
    return forwardBool<calls::bundleVersionExists>(first, second);
}
VELMORA_API int velmora_bundleWithPrefixExists(const char *first, const char *second) {
    return forwardBool<calls::bundleWithPrefixExists>(first, second);
}

VELMORA_API int velmora_useBundle(int handle, const char *name) {
    return forwardInt<calls::useBundle>(handle, name);
}
VELMORA_API int velmora_useBundleWithPrefix(int handle, const char *first, const char *second) {
    return forwardInt<calls::useBundleWithPrefix>(handle, first, second);
}

VELMORA_API int velmora_getBundleId(int handle) { return forwardInt<calls::getBundleId>(handle); }
VELMORA_API int velmora_setBundleId(int handle, int bundleId) {
    return forwardInt<calls::setBundleId>(handle, bundleId);
}

VELMORA_API int velmora_getLastCreatedBundleName(int handle, char *buf, size_t *len) {
    return forward<calls::getLastCreatedBundleName>(zeroOnNull(buf, len), handle);
}

VELMORA_API int velmora_signJar(const char *first, const char *second) {
    return forwardInt<calls::signJar>(first, second);
}

}  // extern "C"
