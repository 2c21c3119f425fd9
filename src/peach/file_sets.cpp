// Files and values attached to a peach description: source files, the
// executable, output files, data bundles, job files, parameter files and
// project parameters.
#include "bridge/frame.hpp"

using namespace velmora;

extern "C" {

// ---- source files ---------------------------------------------------------

VELMORA_API int velmora_peach_addSourceFile(int handle, const char *text) {
    return forwardVoid<calls::peach_addSourceFile>(handle, text);
}
VELMORA_API int velmora_peach_putSourceExtras(int handle, const char *text1, const char *text2) {
    return forwardVoid<calls::peach_putSourceExtras>(handle, text1, text2);
}
VELMORA_API int velmora_peach_sourcesChanged(int handle) {
    return forwardBool<calls::peach_sourcesChanged>(handle);
}

// ---- executable -----------------------------------------------------------

VELMORA_API int velmora_peach_setExeBundleName(int handle, const char *text) {
    return forwardVoid<calls::peach_setExeBundleName>(handle, text);
}
VELMORA_API int velmora_peach_setExecutable(int handle, const char *text) {
    return forwardVoid<calls::peach_setExecutable>(handle, text);
}
VELMORA_API int velmora_peach_setExeSkipDigest(int handle, unsigned char flag) {
    return forwardVoid<calls::peach_setExeSkipDigest>(handle, flag);
}
VELMORA_API int velmora_peach_addExeFile(int handle, const char *text1, const char *text2, const char *text3,
                                         const char *text4) {
    return forwardVoid<calls::peach_addExeFile>(handle, text1, text2, text3, text4);
}
VELMORA_API int velmora_peach_putExeExtras(int handle, const char *text1, const char *text2) {
    return forwardVoid<calls::peach_putExeExtras>(handle, text1, text2);
}
VELMORA_API int velmora_peach_addExeImport(int handle, const char *text) {
    return forwardVoid<calls::peach_addExeImport>(handle, text);
}

// ---- output files ---------------------------------------------------------

VELMORA_API int velmora_peach_addOutputFile(int handle, const char *text) {
    return forwardVoid<calls::peach_addOutputFile>(handle, text);
}

// ---- data bundles ---------------------------------------------------------

VELMORA_API int velmora_peach_newDataBundle(int handle) { return forwardVoid<calls::peach_newDataBundle>(handle); }
VELMORA_API int velmora_peach_newDataBundleWithName(int handle, const char *text) {
    return forwardVoid<calls::peach_newDataBundleWithName>(handle, text);
}
VELMORA_API int velmora_peach_setDataSkipDigest(int handle, unsigned char flag) {
    return forwardVoid<calls::peach_setDataSkipDigest>(handle, flag);
}
VELMORA_API int velmora_peach_addDataFile(int handle, const char *text) {
    return forwardVoid<calls::peach_addDataFile>(handle, text);
}
VELMORA_API int velmora_peach_addDataFileWithDir(int handle, const char *text1, const char *text2) {
    return forwardVoid<calls::peach_addDataFileWithDir>(handle, text1, text2);
}
VELMORA_API int velmora_peach_putDataExtras(int handle, const char *text1, const char *text2) {
    return forwardVoid<calls::peach_putDataExtras>(handle, text1, text2);
}
VELMORA_API int velmora_peach_setDataCopy(int handle, unsigned char flag) {
    return forwardVoid<calls::peach_setDataCopy>(handle, flag);
}

// ---- job files ------------------------------------------------------------

VELMORA_API int velmora_peach_setJobSkipDigest(int handle, unsigned char flag) {
    return forwardVoid<calls::peach_setJobSkipDigest>(handle, flag);
}

VELMORA_API int velmora_peach_setJobFileNames(int handle, int count, ...) {
    VELMORA_WITH_VA_LIST(count, forwardList<calls::peach_setJobFileNames>(ListSource(strings), count, handle));
}
VELMORA_API int velmora_peach_setJobFileNames3(int handle, int count, const char **list) {
    return forwardList<calls::peach_setJobFileNames>(ListSource(list), count, handle);
}

VELMORA_API int velmora_peach_addJobFile(int handle, int count, ...) {
    VELMORA_WITH_VA_LIST(count, forwardList<calls::peach_addJobFile>(ListSource(strings), count, handle));
}
VELMORA_API int velmora_peach_addJobFile3(int handle, int count, const char **list) {
    return forwardList<calls::peach_addJobFile>(ListSource(list), count, handle);
}

VELMORA_API int velmora_peach_addJobFileWithDir(int handle, const char *dir, int count, ...) {
    VELMORA_WITH_VA_LIST(count, forwardList<calls::peach_addJobFileWithDir>(ListSource(strings), count, handle, dir));
}
VELMORA_API int velmora_peach_addJobFileWithDir3(int handle, const char *dir, int count, const char **list) {
    return forwardList<calls::peach_addJobFileWithDir>(ListSource(list), count, handle, dir);
}

VELMORA_API int velmora_peach_putJobExtras(int handle, const char *text1, const char *text2) {
    return forwardVoid<calls::peach_putJobExtras>(handle, text1, text2);
}

// ---- parameter files and project parameters ---------------------------------

VELMORA_API int velmora_peach_setParamSkipDigest(int handle, unsigned char flag) {
    return forwardVoid<calls::peach_setParamSkipDigest>(handle, flag);
}
VELMORA_API int velmora_peach_addParamFile(int handle, const char *text) {
    return forwardVoid<calls::peach_addParamFile>(handle, text);
}
VELMORA_API int velmora_peach_addParamFileWithDir(int handle, const char *text1, const char *text2) {
    return forwardVoid<calls::peach_addParamFileWithDir>(handle, text1, text2);
}
VELMORA_API int velmora_peach_addParamFileWithTarget(int handle, const char *text1, const char *text2) {
    return forwardVoid<calls::peach_addParamFileWithTarget>(handle, text1, text2);
}
VELMORA_API int velmora_peach_putParamExtras(int handle, const char *text1, const char *text2) {
    return forwardVoid<calls::peach_putParamExtras>(handle, text1, text2);
}
VELMORA_API int velmora_peach_addParamExternalResource(int handle, const char *text) {
    return forwardVoid<calls::peach_addParamExternalResource>(handle, text);
}
VELMORA_API int velmora_peach_setParamCopy(int handle, unsigned char flag) {
    return forwardVoid<calls::peach_setParamCopy>(handle, flag);
}
VELMORA_API int velmora_peach_putProjectParam(int handle, const char *text1, const char *text2) {
    return forwardVoid<calls::peach_putProjectParam>(handle, text1, text2);
}

}  // extern "C"
