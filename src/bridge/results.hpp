// Result policies, one per kind of Java result. Each names the return
// descriptor it serves (checked against the row at compile time), turns a
// bridge status into its C result (`fail`), makes the JNI call (`invoke`)
// and converts the outcome (`finish`).
#pragma once

#include <jni.h>

#include <cstdint>
#include <string_view>

#include "bridge/calls.hpp"
#include "bridge/strings.hpp"

namespace velmora {

// A Java int, boolean (1 or 0), long or void (0) as the C result.
template <char Descriptor, class Java, class C, auto Call> struct ValueResult {
    using Value = C;
    static constexpr char kDescriptor[] = {Descriptor, '\0'};
    static constexpr std::string_view kReturns{kDescriptor, 1};
    Java raw{};
    static Value fail(int status) { return status; }
    Value notInitialized() { return VELMORA_STATUS_JAVA_NOT_INITIALIZED; }
    void invoke(JNIEnv *e, jobject o, jmethodID m, const jvalue *a) {
        if constexpr (Descriptor == 'V') (e->*Call)(o, m, a);
        else raw = (e->*Call)(o, m, a);
    }
    Value finish(JNIEnv *) { return static_cast<Value>(raw); }
};
using IntResult = ValueResult<'I', jint, int, &JNIEnv::CallIntMethodA>;
using BoolResult = ValueResult<'Z', jboolean, int, &JNIEnv::CallBooleanMethodA>;
using LongResult = ValueResult<'J', jlong, std::int64_t, &JNIEnv::CallLongMethodA>;
using VoidResult = ValueResult<'V', int, int, &JNIEnv::CallVoidMethodA>;

// The value policy of a row, from its return descriptor.
template <const CallRow &Row> auto valueResult() {
    constexpr std::string_view returns = returnDescriptor(Row);
    if constexpr (returns == IntResult::kReturns) return IntResult{};
    else if constexpr (returns == BoolResult::kReturns) return BoolResult{};
    else if constexpr (returns == LongResult::kReturns) return LongResult{};
    else return VoidResult{};
}

// A Java string delivered into a caller buffer. The capacity is read when
// the policy is made, on entry to the exported function.
struct StringResult {
    using Value = int;
    static constexpr std::string_view kReturns = "Ljava/lang/String;";
    StringOut out;
    NullRule rule;
    bool reportsNotInitialized = false;  // the 54-byte text when the guard fails
    jstring raw = nullptr;

    StringResult(char *buf, std::size_t *len, NullRule r, bool notInitText = false)
        : out(buf, len), rule(r), reportsNotInitialized(notInitText) {}
    static Value fail(int status) { return status; }
    Value notInitialized() {
        return reportsNotInitialized ? deliverNotInitializedText(out) : VELMORA_STATUS_JAVA_NOT_INITIALIZED;
    }
    void invoke(JNIEnv *e, jobject o, jmethodID m, const jvalue *a) {
        raw = static_cast<jstring>(e->CallObjectMethodA(o, m, a));
    }
    Value finish(JNIEnv *e) {
        const int status = deliverString(e, raw, out, rule);
        discard(e);
        return status;
    }
    void discard(JNIEnv *e) {
        if (raw) e->DeleteLocalRef(raw);
    }
};

// "" for a null string; no text (0, *len 0); "" and the not-initialised text.
inline StringResult textResult(char *buf, std::size_t *len) { return {buf, len, NullRule::EmptyString}; }
inline StringResult maybeTextResult(char *buf, std::size_t *len) { return {buf, len, NullRule::NoText}; }
inline StringResult notInitTextResult(char *buf, std::size_t *len) {
    return {buf, len, NullRule::EmptyString, true};
}

// A Java object handed to the host as a local reference of its thread; null
// on every failure.
template <const CallRow &Row> struct ObjectResult {
    using Value = jobject;
    static constexpr std::string_view kReturns = returnDescriptor(Row);
    jobject raw = nullptr;
    static Value fail(int) { return nullptr; }
    Value notInitialized() { return nullptr; }
    void invoke(JNIEnv *e, jobject o, jmethodID m, const jvalue *a) { raw = e->CallObjectMethodA(o, m, a); }
    Value finish(JNIEnv *) { return raw; }
};

}  // namespace velmora
