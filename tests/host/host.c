/* A host compiled with every warning as an error against the public header,
 * once as C11 and once as C++: the declarations must be valid in both, with
 * jni.h included before or after, and the version macros agree. */
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
    char buf[64];
    size_t len = sizeof buf;
    snprintf(buf, sizeof buf, "%d.%d.%d", VELMORA_VERSION_MAJOR, VELMORA_VERSION_MINOR, VELMORA_VERSION_PATCH);
    if (strcmp(buf, VELMORA_VERSION_STRING) != 0) return 6;
    velmora_intermediate_callback cb = on_result;
    (void)cb;
    if (velmora_describeStatusCode(VELMORA_STATUS_JAVA_EXCEPTION, buf, &len) != VELMORA_STATUS_OK) return 1;
    if (strcmp(buf, "Uncaught exception thrown from Java") != 0 || len != 36) return 2;
    if (velmora_open() != VELMORA_STATUS_JAVA_NOT_INITIALIZED) return 3;
    if (jvm != NULL || env != NULL || velmora_peach_intermediate_callback_fun != NULL) return 4;
    JNIEnv *e = velmora_getJNIEnv();
    JavaVM *vm = velmora_getJavaVM();
    if (e != NULL || vm != NULL) return 5;
    puts("host ok");
    return 0;
}
