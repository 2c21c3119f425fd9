/* A host compiled with every warning as an error against the public header,
 * once as C11 and once as C++: the declarations must be valid in both, with
 * jni.h included before or after. */
#ifdef VELMORA_HOST_JNI_FIRST
#include <jni.h>
#endif
#include "velmora.h"
#ifndef VELMORA_HOST_JNI_FIRST
#include <jni.h>
#endif
#include <stdio.h>
#include <string.h>

static void on_result(const char *text) { (void)text; }

int main(void) {
    char buf[64];
    size_t len = sizeof buf;
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
