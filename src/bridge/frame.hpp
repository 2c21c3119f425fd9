// The one forwarding frame. Every exported function that calls a Java method
// on the management object or on the peach wrapper is a single use of
// `forward<Row>(result, arguments...)`:
//
//   guard -> attach -> clear -> lookup -> -12 test -> string lists ->
//   other arguments -> call -> exception test (-13) -> result conversion ->
//   the call's local references deleted.
//
// An exception that the host left pending on its thread is discarded by every
// call that passes the guard. It is cleared before anything else, so that no
// JNI function (a lookup, a list's strings) ever runs with it pending.
//
// The method of each row is resolved once per class reference and kept in the
// row's slot (state.hpp). A call makes local references only for what it
// converts (texts, lists, a string result) and deletes exactly those before it
// returns, so a host thread never accumulates references; a call that makes
// none costs no local frame.
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
// Local references of the few calls that make several of their own (start of
// the peach wrapper, handler registration, system properties): a local frame
// for the call.

class LocalFrame {
public:
    LocalFrame(JNIEnv *jenv, jint capacity) : jenv_(jenv), pushed_(jenv->PushLocalFrame(capacity) == 0) {}
    ~LocalFrame() {
        if (pushed_) jenv_->PopLocalFrame(nullptr);
    }
    LocalFrame(const LocalFrame &) = delete;
    LocalFrame &operator=(const LocalFrame &) = delete;

    bool pushed() const { return pushed_; }

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

// The start of a call that runs in a local frame once its guard has passed:
// the calling thread's environment (attaching the thread) and the frame.
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
    Value finish(JNIEnv *e) {
        const int status = deliverString(e, raw, out, rule);
        discard(e);
        return status;
    }
    void discard(JNIEnv *e) {
        if (raw) e->DeleteLocalRef(raw);
    }
};

inline StringResult emptyOnNull(char *buf, std::size_t *len) { return {buf, len, NullRule::EmptyString}; }
inline StringResult zeroOnNull(char *buf, std::size_t *len) { return {buf, len, NullRule::NoText}; }
// A null string where the SDK promises text is delivered as "".
inline StringResult plain(char *buf, std::size_t *len) { return {buf, len, NullRule::EmptyString}; }

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

// ---------------------------------------------------------------------------

namespace detail {

template <class A> inline constexpr bool kIsList = std::is_same_v<A, StringList>;

inline jvalue scalar(JNIEnv *, int v) { jvalue j; j.i = v; return j; }
inline jvalue scalar(JNIEnv *, std::int64_t v) { jvalue j; j.j = v; return j; }
inline jvalue scalar(JNIEnv *, Flag v) { jvalue j; j.z = v; return j; }  // passed as it is
inline jvalue scalar(JNIEnv *e, const char *v) { jvalue j; j.l = newJavaString(e, v); return j; }
inline jvalue scalar(JNIEnv *, ResultHandler v) { jvalue j; j.l = v.object; return j; }

// Whether the argument kind makes a local reference of the call.
template <class A> inline constexpr bool kMakesReference = kIsList<A> || std::is_same_v<A, const char *>;

// Deletes, on every way out of the call, the references that the arguments
// made (values not made yet are null).
template <class... A> class ArgumentReferences {
public:
    ArgumentReferences(JNIEnv *e, const jvalue *values) : e_(e), values_(values) {}
    ~ArgumentReferences() { release(std::index_sequence_for<A...>{}); }
    ArgumentReferences(const ArgumentReferences &) = delete;
    ArgumentReferences &operator=(const ArgumentReferences &) = delete;

private:
    template <std::size_t... I> void release(std::index_sequence<I...>) {
        [[maybe_unused]] auto one = [this](auto made, std::size_t i) {
            if constexpr (decltype(made)::value) {
                if (values_[i].l) e_->DeleteLocalRef(values_[i].l);
            }
        };
        (one(std::bool_constant<kMakesReference<A>>{}, I), ...);
    }
    JNIEnv *e_;
    const jvalue *values_;
};

struct NoReferences {
    NoReferences(JNIEnv *, const jvalue *) {}
};
template <class... A>
using ReferencesOf = std::conditional_t<(kMakesReference<A> || ...), ArgumentReferences<A...>, NoReferences>;

// The method of `row` on `klass`, through the row's slot: resolved by name
// and signature only when the slot holds nothing for this class reference.
// Null, with the lookup's error pending, when the class has no such method.
inline jmethodID resolve(JNIEnv *e, jclass klass, const CallRow &row, state::MethodSlot &slot) {
    if (jmethodID known = slot.find(klass)) return known;
    jmethodID method = e->GetMethodID(klass, row.method, row.signature);
    if (method) slot.keep(klass, method);
    return method;
}
template <const CallRow &Row> inline state::MethodSlot &slotOf() {
    return state::resolvedMethod(Row.position);
}

// A result that is a local reference of the call, deleted when the call fails.
template <class R> inline void discard(JNIEnv *e, R &result) {
    if constexpr (requires { result.discard(e); }) result.discard(e);
}

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
// arrays are created, then filled (in argument order), then the other values
// are converted. Stops at the first array or string that the runtime cannot
// make and returns false, with its exception pending.
template <class... A, std::size_t... I>
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
            made = made && fillStringArray(e, static_cast<jobjectArray>(values[i].l), a.count, *a.source);
    };
    (fill(I, args), ...);
    if (!made) return false;
    [[maybe_unused]] auto convert = [&](std::size_t i, const auto &a) {
        using Kind = std::decay_t<decltype(a)>;
        if constexpr (!kIsList<Kind>) {
            if (!made) return;
            values[i] = scalar(e, a);
            if constexpr (std::is_same_v<Kind, const char *>) made = values[i].l || !a;
        }
    };
    (convert(I, args), ...);
    return made;
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
    JNIEnv *e = state::attachCurrentThread();
    if (!e) return result.notInitialized();

    e->ExceptionClear();
    jmethodID method = detail::resolve(e, detail::targetClass<kTarget>(), Row, detail::slotOf<Row>());
    if (!method) {
        e->ExceptionClear();
        return result.fail(kMethodNotFound);
    }

    if (!detail::listsReadable(args...)) return result.fail(kJavaException);
    std::array<jvalue, sizeof...(A) + 1> values{};
    [[maybe_unused]] const detail::ReferencesOf<A...> made(e, values.data());
    if (!detail::buildArguments(e, values.data(), std::index_sequence_for<A...>{}, args...)) {
        takeException(e);
        return result.fail(kJavaException);
    }

    result.invoke(e, detail::targetObject<kTarget>(), method, values.data());
    if constexpr (requires { result.returned(e); }) result.returned(e);
    if (takeException(e)) {
        detail::discard(e, result);
        return result.fail(kJavaException);
    }
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
int indexedName(const CallRow &count, state::MethodSlot &countSlot, const CallRow &name,
                state::MethodSlot &nameSlot, int handle, int *index, char *buf, std::size_t *len);

template <const CallRow &Count, const CallRow &Name>
int forwardIndexedName(int handle, int *index, char *buf, std::size_t *len) {
    static_assert(Count.target == Target::Management && Name.target == Target::Management);
    static_assert(std::string_view(Count.signature) == "(I)I");
    static_assert(std::string_view(Name.signature) == "(II)Ljava/lang/String;");
    return indexedName(Count, detail::slotOf<Count>(), Name, detail::slotOf<Name>(), handle, index, buf, len);
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
