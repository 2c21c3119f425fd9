// The one forwarding frame. Every entry point that reaches Java starts with
// `enter<Target>()`: the guard of its target, the calling thread's
// environment (attaching the thread), and the discarding of an exception the
// host left pending, before any other JNI function runs. Every exported
// function that calls a Java method on the management object or on the peach
// wrapper is a single use of `forward<Row>(result, arguments...)`:
//
//   enter -> lookup -> -12 test -> string lists -> other arguments -> call ->
//   exception test (-13) -> result conversion -> the call's local
//   references deleted.
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
#include <string_view>
#include <type_traits>
#include <utility>

#include "bridge/calls.hpp"
#include "bridge/failure.hpp"
#include "bridge/results.hpp"
#include "bridge/state.hpp"
#include "bridge/strings.hpp"

namespace velmora {

using failure::takeException;

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

    // 0, or -13 (the runtime's error described and cleared) when no frame
    // could be made.
    int status() const {
        if (pushed_) return VELMORA_STATUS_OK;
        takeException(jenv_);
        return VELMORA_STATUS_JAVA_EXCEPTION;
    }

private:
    JNIEnv *jenv_;
    bool pushed_;
};


// The guard of each target: a management call needs the management object,
// its class and a started runtime (tested in this order), a peach call the
// peach wrapper, and a System call only the started runtime. In a forked
// child nothing may reach the copied machine.
template <Target T> inline bool ready() {
    if (state::inForkedChild()) [[unlikely]]
        return false;
    if constexpr (T == Target::Peach) return state::peachReady();
    else if constexpr (T == Target::Management) return state::managementReady();
    else return state::startupEnv() != nullptr;
}

// The setup of every call that reaches Java: null when the guard fails or the
// thread cannot attach; else the calling thread's environment, with nothing
// pending.
template <Target T> inline JNIEnv *enter() {
    JNIEnv *e = ready<T>() ? state::attachCurrentThread() : nullptr;
    if (e) [[likely]]
        e->ExceptionClear();
    else
        failure::notInitialized();
    return e;
}

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

    static_assert(kTarget == Target::Management || kTarget == Target::Peach);
    JNIEnv *e = enter<kTarget>();
    if (!e) return result.notInitialized();

    jmethodID method = detail::resolve(e, detail::targetClass<kTarget>(), Row, detail::slotOf<Row>());
    if (!method) return result.fail(failure::methodNotFound(e, Row));

    if (!detail::listsReadable(args...)) {
        failure::record("A string list cannot be read (a negative count, or a null array with strings to "
                        "read); Java was not called.");
        return result.fail(VELMORA_STATUS_JAVA_EXCEPTION);
    }
    std::array<jvalue, sizeof...(A) + 1> values{};
    [[maybe_unused]] const detail::ReferencesOf<A...> made(e, values.data());
    if (!detail::buildArguments(e, values.data(), std::index_sequence_for<A...>{}, args...)) {
        takeException(e);
        return result.fail(VELMORA_STATUS_JAVA_EXCEPTION);
    }

    result.invoke(e, detail::targetObject<kTarget>(), method, values.data());
    if constexpr (requires { result.returned(e); }) result.returned(e);
    if (takeException(e)) {
        detail::discard(e, result);
        return result.fail(VELMORA_STATUS_JAVA_EXCEPTION);
    }
    return result.finish(e);
}

// A row that returns a plain value (int, boolean, long or nothing).
template <const CallRow &Row, class... A> auto forwardValue(A... args) {
    return forward<Row>(valueResult<Row>(), args...);
}

// A call whose last Java argument is one string list: `count` strings read
// from `source` (a va_list or an array), after the `leading` arguments.
template <const CallRow &Row, class... Leading> auto forwardList(ListSource &&source, int count, Leading... leading) {
    return forwardValue<Row>(leading..., StringList{count, &source});
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
