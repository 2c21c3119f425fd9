/* A host compiled with every warning as an error against the public header,
 * once as C11 and once as C++: the declarations must be valid in both, with
 * jni.h included before or after. What the calls do is the integration
 * suites' business. */
#ifdef VELMORA_HOST_JNI_FIRST
#include <jni.h>
#endif
#include "velmora.h"
#ifndef VELMORA_HOST_JNI_FIRST
#include <jni.h>
#endif

#if VELMORA_VERSION_NUM < VELMORA_VERSION_CHECK(1, 0, 0)
#error "libvelmora 1.0 or later is needed"
#endif

int main(void) {
    /* Before start-up the exported state is empty and calls are refused. */
    if (jvm || env || velmora_getJNIEnv() || velmora_getJavaVM() || velmora_peach_intermediate_callback_fun) return 2;
    return velmora_open() == VELMORA_STATUS_JAVA_NOT_INITIALIZED ? 0 : 3;
}
