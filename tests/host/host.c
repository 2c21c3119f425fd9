/* A host compiled with every warning as an error against the public header,
 * once as C11 and once as C++: the declarations must be valid in both, with
 * jni.h included before or after, and the version macros agree. What the
 * calls do is the integration suites' business. */
#ifdef VELMORA_HOST_JNI_FIRST
#include <jni.h>
#endif
#include "velmora.h"
#ifndef VELMORA_HOST_JNI_FIRST
#include <jni.h>
#endif
#include <stdio.h>
#include <string.h>

#if VELMORA_VERSION_NUM < VELMORA_VERSION_CHECK(1, 0, 0)
#error "libvelmora 1.0 or later is needed"
#endif

static void on_result(const char *text) { (void)text; }

int main(void) {
    char version[32];
    velmora_intermediate_callback cb = on_result;
    snprintf(version, sizeof version, "%d.%d.%d", VELMORA_VERSION_MAJOR, VELMORA_VERSION_MINOR, VELMORA_VERSION_PATCH);
    if (strcmp(version, VELMORA_VERSION_STRING) != 0) return 1;
    /* Before start-up the exported state is empty and calls are refused. */
    if (jvm || env || velmora_getJNIEnv() || velmora_getJavaVM() || velmora_peach_intermediate_callback_fun == cb) return 2;
    return velmora_open() == VELMORA_STATUS_JAVA_NOT_INITIALIZED ? 0 : 3;
}
