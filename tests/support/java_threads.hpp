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
    jint count = -1;
    jclass factory = e->FindClass("java/lang/management/ManagementFactory");
    jclass beanClass = factory ? e->FindClass("java/lang/management/ThreadMXBean") : nullptr;
    jmethodID bean = beanClass ? e->GetStaticMethodID(factory, "getThreadMXBean", "()Ljava/lang/management/ThreadMXBean;")
                               : nullptr;
    jmethodID getCount = bean ? e->GetMethodID(beanClass, "getThreadCount", "()I") : nullptr;
    jobject threads = getCount ? e->CallStaticObjectMethod(factory, bean) : nullptr;
    if (threads && !e->ExceptionCheck()) count = e->CallIntMethod(threads, getCount);
    if (e->ExceptionCheck()) {
        e->ExceptionDescribe();
        e->ExceptionClear();
        count = -1;
    }
    e->PopLocalFrame(nullptr);
    if (count < 0) throw std::runtime_error("javaThreadCount: ThreadMXBean.getThreadCount failed");
    return count;
}
