#include "bridge/failure.hpp"

#include <utility>

#include "bridge/state.hpp"
#include "bridge/strings.hpp"

namespace velmora::failure {
namespace {

thread_local std::string account;

// The stack trace that Throwable.printStackTrace() writes, with every cause,
// made in a local frame of its own; empty when the runtime cannot make it.
// Every step checks for an exception before the next JNI call.
std::string stackTrace(JNIEnv *e, jthrowable thrown) {
    std::string text;
    if (e->PushLocalFrame(8) != 0) {
        e->ExceptionClear();
        return text;
    }
    auto ok = [e](const void *made) { return made && !e->ExceptionCheck(); };
    jclass writerClass = e->FindClass("java/io/StringWriter");
    jclass printerClass = ok(writerClass) ? e->FindClass("java/io/PrintWriter") : nullptr;
    jmethodID newWriter = ok(printerClass) ? e->GetMethodID(writerClass, "<init>", "()V") : nullptr;
    jmethodID newPrinter = ok(newWriter) ? e->GetMethodID(printerClass, "<init>", "(Ljava/io/Writer;)V") : nullptr;
    jclass thrownClass = ok(newPrinter) ? e->GetObjectClass(thrown) : nullptr;
    jmethodID print = ok(thrownClass) ? e->GetMethodID(thrownClass, "printStackTrace", "(Ljava/io/PrintWriter;)V")
                                      : nullptr;
    jmethodID flush = ok(print) ? e->GetMethodID(printerClass, "flush", "()V") : nullptr;
    jmethodID toString = ok(flush) ? e->GetMethodID(writerClass, "toString", "()Ljava/lang/String;") : nullptr;
    jobject writer = ok(toString) ? e->NewObject(writerClass, newWriter) : nullptr;
    jobject printer = ok(writer) ? e->NewObject(printerClass, newPrinter, writer) : nullptr;
    if (ok(printer)) e->CallVoidMethod(thrown, print, printer);
    if (ok(printer)) e->CallVoidMethod(printer, flush);
    auto written = static_cast<jstring>(ok(printer) ? e->CallObjectMethod(writer, toString) : nullptr);
    const char *chars = ok(written) ? e->GetStringUTFChars(written, nullptr) : nullptr;
    if (chars) {
        text = chars;
        e->ReleaseStringUTFChars(written, chars);
    }
    e->ExceptionClear();
    e->PopLocalFrame(nullptr);
    return text;
}

}  // namespace

void record(std::string text) { account = std::move(text); }

const std::string &lastAccount() { return account; }


void notInitialized() {
    if (state::inForkedChild()) {
        return record(std::string("Java is not initialized in this process: it was forked from one whose Java "
                                  "machine had started, and fork copies none of the machine's threads.") +
                      std::string(kOnlyANewProcess));
    }
    if (state::vm() && !state::startupEnv()) {
        return record(std::string("Java is not initialized: the Java machine of this process was destroyed "
                                  "(a failed start-up or initialisation, or the host).") +
                      std::string(kOnlyANewProcess));
    }
    if (!state::startupEnv()) return record("Java is not initialized: no start-up or initialiser has run yet (velmora_init).");
    if (!state::management() || !state::managementClass())
        return record("Java is not initialized: there is no management object; run an initialiser (velmora_init).");
    if (!state::peachWrapper() || !state::peachClass())
        return record("Java is not initialized for peach calls: there is no peach wrapper; call velmora_peach_handle "
                      "first (an unload forgets it).");
    record("Java is not initialized: this thread could not attach to the Java machine.");
}

int methodNotFound(JNIEnv *jenv, const char *klass, const char *method, const char *signature) {
    jenv->ExceptionClear();
    record(std::string("Java method not found: ") + klass + "." + method + " " + signature +
           " (the SDK on the class path lacks this method with this exact signature)");
    return VELMORA_STATUS_METHOD_NOT_FOUND;
}

int classNotFound(JNIEnv *jenv, const char *klass) {
    jenv->ExceptionClear();
    record(std::string("Java class not found on the class path: ") + klass);
    return VELMORA_STATUS_METHOD_NOT_FOUND;
}

namespace {
bool take(JNIEnv *jenv, bool describe, std::string_view context) {
    if (!jenv->ExceptionCheck()) return false;
    auto thrown = static_cast<jthrowable>(jenv->ExceptionOccurred());
    if (describe) jenv->ExceptionDescribe();
    jenv->ExceptionClear();
    std::string trace = thrown ? stackTrace(jenv, thrown) : std::string();
    if (thrown) jenv->DeleteLocalRef(thrown);
    if (trace.empty()) trace = "A Java exception was thrown (the runtime could not describe it).";
    record(context.empty() ? std::move(trace) : std::string(context) + "\n" + trace);
    return true;
}
}  // namespace

bool takeException(JNIEnv *jenv) { return take(jenv, true, {}); }
bool keepException(JNIEnv *jenv, std::string_view context) { return take(jenv, false, context); }

}  // namespace velmora::failure

extern "C" VELMORA_API int velmora_describeLastFailure(char *buf, size_t *len) {
    velmora::StringOut out(buf, len);
    return velmora::deliverText(velmora::failure::lastAccount(), out);
}

extern "C" VELMORA_API const char *velmora_libraryVersion(void) { return VELMORA_VERSION_STRING; }
