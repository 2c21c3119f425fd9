// The one forwarding frame. Every exported function that calls a Java method
// on the management object or on the peach wrapper is a single use of
// `forward<Row>(result, arguments...)`:
//
//   guard -> attach -> local frame -> lookup -> (peach: clear) -> -12 test ->
//   string lists -> (management: clear) -> other arguments -> call ->
//   exception test (-13) -> result conversion -> local frame released.
//
// The row's JNI signature is checked at compile time against the C++ types
// of the arguments and the result policy, so a forwarding function cannot
// pass what its row does not declare.
#pragma once

#include <jni.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "bridge/calls.hpp"
#include "bridge/marshal.hpp"
#include "bridge/state.hpp"

namespace velmora {

// ---------------------------------------------------------------------------
// Local references: every call runs in a local frame of its own, so a host
// thread that makes any number of calls never accumulates references.

class LocalFrame {
public:
    LocalFrame(JNIEnv *jenv, jint capacity) : jenv_(jenv), pushed_(jenv->PushLocalFrame(capacity) == 0) {}
    ~LocalFrame() {
        if (pushed_) jenv_->PopLocalFrame(nullptr);
    }
    LocalFrame(const LocalFrame &) = delete;
    LocalFrame &operator=(const LocalFrame &) = delete;

    bool pushed() const { return pushed_; }
    // Ends the frame, carrying `keep` out as a reference of the enclosing frame.
    jobject release(jobject keep) {
        if (!pushed_) return keep;
        pushed_ = false;
        return jenv_->PopLocalFrame(keep);
    }

private:
    JNIEnv *jenv_;
    bool pushed_;
};

// Describes and clears a pending exception; true if there was one.
inline bool takeException(JNIEnv *jenv) {
    if (!jenv->ExceptionCheck()) return false;
    jenv->ExceptionDescribe();
    jenv->ExceptionClear();
    return true;
}

// The start of every call once its guard has passed: the calling thread's
// environment (attaching the thread) and a local frame for the call.
// status() is 0, -11 when the thread cannot attach, or -13 when no frame
// could be made.
class CallScope {
public:
    explicit CallScope(jint capacity)
        : env_(state::attachCurrentThread()), frame_(env_ ? std::optional<LocalFrame>(std::in_place, env_, capacity)
                                                          : std::nullopt) {}
    int status() const {
        if (!env_) return kNotInitialized;
        if (frame_->pushed()) return kOk;
        takeException(env_);
        return kJavaException;
    }
    JNIEnv *env() const { return env_; }
    LocalFrame &frame() { return *frame_; }

private:
    JNIEnv *env_;
    std::optional<LocalFrame> frame_;
};

// ---------------------------------------------------------------------------
// Result policies, one per kind of Java result. Each names the return
// descriptor it serves, turns a bridge status into its C result (`fail`),
// makes the JNI call (`invoke`) and converts the outcome (`finish`).

struct IntResult {
    using Value = int;
    static constexpr std::string_view kReturns = "I";
    jint raw = 0;
    static Value fail(int status) { return status; }
    Value notInitialized() { return kNotInitialized; }
    void invoke(JNIEnv *e, jobject o, jmethodID m, const jvalue *a) { raw = e->CallIntMethodA(o, m, a); }
    Value finish(JNIEnv *) { return raw; }
};

struct BoolResult {
    using Value = int;
    static constexpr std::string_view kReturns = "Z";
    jboolean raw = JNI_FALSE;
    static Value fail(int status) { return status; }
    Value notInitialized() { return kNotInitialized; }
    void invoke(JNIEnv *e, jobject o, jmethodID m, const jvalue *a) { raw = e->CallBooleanMethodA(o, m, a); }
    Value finish(JNIEnv *) { return raw ? 1 : 0; }
};

struct LongResult {
    using Value = std::int64_t;
    static constexpr std::string_view kReturns = "J";
    jlong raw = 0;
    static Value fail(int status) { return status; }
    Value notInitialized() { return kNotInitialized; }
    void invoke(JNIEnv *e, jobject o, jmethodID m, const jvalue *a) { raw = e->CallLongMethodA(o, m, a); }
    Value finish(JNIEnv *) { return raw; }
};

struct VoidResult {
    using Value = int;
    static constexpr std::string_view kReturns = "V";
    static Value fail(int status) { return status; }
    Value notInitialized() { return kNotInitialized; }
    void invoke(JNIEnv *e, jobject o, jmethodID m, const jvalue *a) { e->CallVoidMethodA(o, m, a); }
    Value finish(JNIEnv *) { return kOk; }
};

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
    Value notInitialized() { return reportsNotInitialized ? deliverNotInitializedText(out) : kNotInitialized; }
    void invoke(JNIEnv *e, jobject o, jmethodID m, const jvalue *a) {
        raw = static_cast<jstring>(e->CallObjectMethodA(o, m, a));
    }
    Value finish(JNIEnv *e) { return deliverString(e, raw, out, rule); }
};

inline StringResult emptyOnNull(char *buf, std::size_t *len) { return {buf, len, NullRule::EmptyString}; }
inline StringResult zeroOnNull(char *buf, std::size_t *len) { return {buf, len, NullRule::NoText}; }
// A null string where the SDK promises text is delivered as "".
inline StringResult plain(char *buf, std::size_t *len) { return {buf, len, NullRule::EmptyString}; }

// A Java object handed to the host, surviving the call's local frame; null
// on every failure.
template <const CallRow &Row> struct ObjectResult {
    using Value = jobject;
    static constexpr std::string_view kReturns = returnDescriptor(Row);
    jobject raw = nullptr;
    static Value fail(int) { return nullptr; }
    Value notInitialized() { return nullptr; }
    void invoke(JNIEnv *e, jobject o, jmethodID m, const jvalue *a) { raw = e->CallObjectMethodA(o, m, a); }
    jobject keep() const { return raw; }
    void kept(jobject survivor) { raw = survivor; }
    Value finish(JNIEnv *) { return raw; }
};

template <class R>
concept KeepsObject = requires(R r, jobject o) {
    r.keep();
    r.kept(o);
};

// ---------------------------------------------------------------------------

namespace detail {

template <class A> inline constexpr bool kIsList = std::is_same_v<A, StringList>;

inline jvalue scalar(JNIEnv *, int v) { jvalue j; j.i = v; return j; }
inline jvalue scalar(JNIEnv *, std::int64_t v) { jvalue j; j.j = v; return j; }
inline jvalue scalar(JNIEnv *, Flag v) { jvalue j; j.z = v; return j; }  // passed as it is
inline jvalue scalar(JNIEnv *e, const char *v) { jvalue j; j.l = newJavaString(e, v); return j; }
inline jvalue scalar(JNIEnv *, ResultHandler v) { jvalue j; j.l = v.object; return j; }

// The guard of the frame's target.
template <Target T> inline bool ready() {
    static_assert(T == Target::Management || T == Target::Peach);
    if constexpr (T == Target::Peach) return state::peachReady();
    else return state::managementReady();
}
template <Target T> inline jclass targetClass() {
    if constexpr (T == Target::Peach) return state::peachClass();
    else return state::managementClass();
}
template <Target T> inline jobject targetObject() {
    if constexpr (T == Target::Peach) return state::peachWrapper();
    else return state::management();
}

// A list whose strings cannot be read (negative count, null array) is turned
// away before anything is made in Java.
template <class... A> inline bool listsReadable(const A &...args) {
    bool ok = true;
    [[maybe_unused]] auto check = [&](const auto &a) {
        if constexpr (kIsList<std::decay_t<decltype(a)>>) ok = ok && a.count >= 0 && a.source->canRead(a.count);
    };
    (check(args), ...);
    return ok;
}

// Builds the Java arguments in the order the frame fixes: all string-list
// arrays are created, then filled (in argument order), then - for the
// management target - pending exceptions are cleared, then the other values
// are converted. Returns false when an array could not be made.
template <Target T, class... A, std::size_t... I>
bool buildArguments(JNIEnv *e, jvalue *values, std::index_sequence<I...>, const A &...args) {
    bool made = true;
    [[maybe_unused]] auto create = [&](std::size_t i, const auto &a) {
        if constexpr (kIsList<std::decay_t<decltype(a)>>) {
            values[i].l = made ? newStringArray(e, a.count) : nullptr;
            made = made && values[i].l;
        }
    };
    (create(I, args), ...);
    if (!made) return false;
    [[maybe_unused]] auto fill = [&](std::size_t i, const auto &a) {
        if constexpr (kIsList<std::decay_t<decltype(a)>>)
            fillStringArray(e, static_cast<jobjectArray>(values[i].l), a.count, *a.source);
    };
    (fill(I, args), ...);
    if constexpr (T == Target::Management) e->ExceptionClear();
    [[maybe_unused]] auto convert = [&](std::size_t i, const auto &a) {
        if constexpr (!kIsList<std::decay_t<decltype(a)>>) values[i] = scalar(e, a);
    };
    (convert(I, args), ...);
    return true;
}

}  // namespace detail

// Runs one Java call of `Row` on its target with `args` (in Java order).
template <const CallRow &Row, class R, class... A>
typename std::remove_cvref_t<R>::Value forward(R &&result, A... args) {
    constexpr Target kTarget = Row.target;
    static_assert(parametersMatch<A...>(Row.signature), "arguments do not match the row's JNI signature");
    static_assert(returnDescriptor(Row) == std::remove_cvref_t<R>::kReturns,
                  "result policy does not match the row's JNI signature");

    if (!detail::ready<kTarget>()) return result.notInitialized();
    CallScope scope(2 * static_cast<jint>(sizeof...(A)) + 8);
    if (const int status = scope.status(); status != kOk)
        return status == kNotInitialized ? result.notInitialized() : result.fail(status);
    JNIEnv *e = scope.env();

    jmethodID method = e->GetMethodID(detail::targetClass<kTarget>(), Row.method, Row.signature);
    if constexpr (kTarget == Target::Peach) e->ExceptionClear();
    if (!method) {
        e->ExceptionClear();
        return result.fail(kMethodNotFound);
    }

    if (!detail::listsReadable(args...)) return result.fail(kJavaException);
    std::array<jvalue, sizeof...(A) + 1> values{};
    if (!detail::buildArguments<kTarget>(e, values.data(), std::index_sequence_for<A...>{}, args...)) {
        takeException(e);
        return result.fail(kJavaException);
    }

    result.invoke(e, detail::targetObject<kTarget>(), method, values.data());
    if constexpr (KeepsObject<std::remove_cvref_t<R>>) result.kept(scope.frame().release(result.keep()));
    if (takeException(e)) return result.fail(kJavaException);
    return result.finish(e);
}

// Shorthands for the common result kinds.
template <const CallRow &Row, class... A> int forwardInt(A... args) {
    return forward<Row>(IntResult{}, args...);
}
template <const CallRow &Row, class... A> int forwardBool(A... args) {
    return forward<Row>(BoolResult{}, args...);
}
template <const CallRow &Row, class... A> std::int64_t forwardLong(A... args) {
    return forward<Row>(LongResult{}, args...);
}
template <const CallRow &Row, class... A> int forwardVoid(A... args) {
    return forward<Row>(VoidResult{}, args...);
}

namespace detail {
// The result policy of a row that returns a plain value (int, boolean, long
// or nothing).
template <const CallRow &Row> auto valueResult() {
    constexpr std::string_view returns = returnDescriptor(Row);
    if constexpr (returns == IntResult::kReturns) return IntResult{};
    else if constexpr (returns == BoolResult::kReturns) return BoolResult{};
    else if constexpr (returns == LongResult::kReturns) return LongResult{};
    else return VoidResult{};
}
}  // namespace detail

// A call whose last Java argument is one string list: `count` strings read
// from `source` (a va_list or an array), after the `leading` arguments.
template <const CallRow &Row, class... Leading> auto forwardList(ListSource &&source, int count, Leading... leading) {
    return forward<Row>(detail::valueResult<Row>(), leading..., StringList{count, &source});
}

// One name of an indexed collection per call: `Count` "(I)I" gives the size,
// `Name` "(II)Ljava/lang/String;" the name at a position.
int indexedName(const CallRow &count, const CallRow &name, int handle, int *index, char *buf,
                std::size_t *len);

template <const CallRow &Count, const CallRow &Name>
int forwardIndexedName(int handle, int *index, char *buf, std::size_t *len) {
    static_assert(Count.target == Target::Management && Name.target == Target::Management);
    static_assert(std::string_view(Count.signature) == "(I)I");
    static_assert(std::string_view(Name.signature) == "(II)Ljava/lang/String;");
    return indexedName(Count, Name, handle, index, buf, len);
}

}  // namespace velmora

// Packs the variadic arguments after `last` into a va_list and returns what
// `expression` (which uses `strings`) returns.
#define VELMORA_WITH_VA_LIST(last, expression) \
    do {                                       \
        va_list strings;                       \
        va_start(strings, last);               \
        auto result_ = (expression);           \
        va_end(strings);                       \
        return result_;                        \
    } while (0)
