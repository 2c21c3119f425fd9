// The number of live Java threads of the library's JVM, attached native
// threads included, as java.lang.management reports it. The calling thread
// must already be attached.
#pragma once

#include <jni.h>

#include <stdexcept>

#include "velmora.h"

inline int javaThreadCount() {
    JNIEnv *e = nullptr;
    if (velmora_getJavaVM()->GetEnv(reinterpret_cast<void **>(&e), JNI_VERSION_1_6) != JNI_OK)
        throw std::runtime_error("javaThreadCount: the calling thread is not attached");
    e->PushLocalFrame(8);
    jclass factory = e->FindClass("java/lang/management/ManagementFactory");
    jmethodID bean = e->GetStaticMethodID(factory, "getThreadMXBean", "()Ljava/lang/management/ThreadMXBean;");
    jobject threads = e->CallStaticObjectMethod(factory, bean);
    jclass beanClass = e->FindClass("java/lang/management/ThreadMXBean");
    const jint count = e->CallIntMethod(threads, e->GetMethodID(beanClass, "getThreadCount", "()I"));
    e->PopLocalFrame(nullptr);
    return count;
}
