// What the functions of the C++ layer (velmora.hpp) share: string results
// sized by the call, statuses thrown by kind, walks, and the receiver of
// intermediate results.
#ifndef VELMORA_SUPPORT_HPP
#define VELMORA_SUPPORT_HPP

#include "velmora.h"
#include "velmora/arguments.hpp"
#include "velmora/errors.hpp"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace velmora {

/* ------------------------------------------------------------------------ */
/* Internals                                                                 */
/* ------------------------------------------------------------------------ */

namespace detail {

struct Reading {
    int status;
    bool present;  // false: the call delivered no text (*len 0)
};

// Runs call(buf, &len) with a stack buffer first and, on BUFFER_TOO_SMALL,
// again with a buffer of the size reported, until the text fits or another
// status comes back. out holds the text on success.
template <class Call>
Reading readText(Call &&call, std::string &out) {
    char local[256];
    std::size_t len = sizeof local;
    int status = call(local, &len);
    if (status == VELMORA_STATUS_OK) {
        if (len != 0) out.assign(local, len - 1);
        return {status, len != 0};
    }
    while (status == VELMORA_STATUS_BUFFER_TOO_SMALL && len > 0) {
        out.resize(len - 1);  // len bytes with the terminator's place
        status = call(out.data(), &len);
        if (status == VELMORA_STATUS_OK) {
            out.resize(len != 0 ? len - 1 : 0);
            return {status, len != 0};
        }
    }
    out.clear();
    return {status, false};
}

// Builds and throws the exception for a negative status: the class that
// velmora.h names as the status's kind.
[[noreturn]] [[gnu::cold]] [[gnu::noinline]] inline void fail(int code) {
    std::string failure, description, message;
    readText(velmora_describeLastFailure, failure);  // first: the calls below may fail themselves
    auto describe = [code](char *buf, std::size_t *len) { return velmora_describeStatusCode(code, buf, len); };
    Reading described = readText(describe, description);
    if (described.status != VELMORA_STATUS_OK) description = "status " + std::to_string(code);
    readText(velmora_getLastErrorMessage, message);  // left empty when it fails
    switch (code) {
#define VELMORA_THROW_KIND(name, value, kind, text) \
    case value: throw kind(code, std::move(description), std::move(message), std::move(failure));
        VELMORA_STATUS_CODES(VELMORA_THROW_KIND)
#undef VELMORA_THROW_KIND
    default: throw Error(code, std::move(description), std::move(message), std::move(failure));
    }
}

// Whether a status code is of one of the kinds.
template <class... Kinds> constexpr bool isKind(long long code) noexcept {
    switch (code) {
#define VELMORA_KIND_TEST(name, value, kind, text) \
    case value: return (std::is_same_v<kind, Kinds> || ...);
        VELMORA_STATUS_CODES(VELMORA_KIND_TEST)
#undef VELMORA_KIND_TEST
    default: return false;
    }
}

// A call's own failure codes, shared with Java int and long results.
template <class T> constexpr bool callFailed(T result) noexcept {
    return isKind<NotInitialized, MethodNotFound, JavaException>(result);
}

inline int javaInt(int result) {
    if (callFailed(result)) fail(result);
    return result;
}
inline std::int64_t javaLong(std::int64_t result) {
    if (callFailed(result)) fail(static_cast<int>(result));
    return result;
}
inline void done(int result) {
    if (result < 0) fail(result);
}
inline bool truth(int result) {
    done(result);
    return result == 1;
}
// The result of start-up, an initialiser or a peach handle: the failures of a
// call and of start-up are thrown.
inline int initialised(int result) {
    if (callFailed(result) || isKind<StartupError>(result)) fail(result);
    return result;
}
inline unsigned char flag(bool value) noexcept { return value ? 1 : 0; }

// A string result of function(args..., buf, len).
template <class... Params, class... Args>
std::string text(int (*function)(Params...), Args... args) {
    std::string out;
    done(readText([&](char *buf, std::size_t *len) { return function(args..., buf, len); }, out).status);
    return out;
}
// The same where the result may be no text.
template <class... Params, class... Args>
std::optional<std::string> maybeText(int (*function)(Params...), Args... args) {
    std::string out;
    Reading reading = readText([&](char *buf, std::size_t *len) { return function(args..., buf, len); }, out);
    done(reading.status);
    if (!reading.present) return std::nullopt;
    return out;
}

// The two lists of a bundle creation as one array, the second after the first.
class JoinedLists {
public:
    JoinedLists(const StringList &first, const StringList &second) {
        std::size_t total = static_cast<std::size_t>(first.count()) + static_cast<std::size_t>(second.count());
        if (total > sizeof inline_ / sizeof inline_[0]) {
            heap_.reset(new const char *[total]);
            items_ = heap_.get();
        }
        std::copy(first.data(), first.data() + first.count(), items_);
        std::copy(second.data(), second.data() + second.count(), items_ + first.count());
    }
    const char **data() const noexcept { return items_; }

private:
    const char *inline_[32];
    std::unique_ptr<const char *[]> heap_;
    const char **items_ = inline_;
};

// The one process-wide receiver of intermediate results behind the C
// callback: a type-erased callable, swapped atomically.
struct Handler {
    void (*invoke)(Handler *, std::string_view) noexcept;
    void (*destroy)(Handler *) noexcept;
    Handler *retiredNext;
};

template <class F>
struct HandlerFor final : Handler {
    explicit HandlerFor(F callable) : Handler{&call, &drop, nullptr}, f(std::move(callable)) {}
    static void call(Handler *self, std::string_view text) noexcept {
        try {
            static_cast<HandlerFor *>(self)->f(text);
        } catch (...) {
            // Nothing may unwind into the JVM's thread: the text is dropped.
        }
    }
    static void drop(Handler *self) noexcept { delete static_cast<HandlerFor *>(self); }
    F f;
};

struct HandlerSlot {
    std::atomic<Handler *> current{nullptr};
    std::atomic<int> deliveries{0};  // deliveries running right now
    Handler *retired = nullptr;      // replaced callables not yet freed
};
inline HandlerSlot handlerSlot;

// The C callback: hands the text to the callable registered last.
inline void deliver(const char *text) noexcept {
    HandlerSlot &slot = handlerSlot;
    slot.deliveries.fetch_add(1);
    if (Handler *handler = slot.current.load()) handler->invoke(handler, text);
    slot.deliveries.fetch_sub(1);
}

// Makes next the receiver. A replaced callable is freed once no delivery is
// running: a delivery that could still hold it counts itself in deliveries
// before it reads current, so reading 0 after the exchange proves none does.
inline void install(Handler *next) noexcept {
    HandlerSlot &slot = handlerSlot;
    if (Handler *previous = slot.current.exchange(next)) {
        previous->retiredNext = slot.retired;
        slot.retired = previous;
    }
    if (slot.deliveries.load() != 0) return;
    while (Handler *old = slot.retired) {
        slot.retired = old->retiredNext;
        old->destroy(old);
    }
}

struct HandlerDeleter {
    void operator()(Handler *handler) const noexcept { handler->destroy(handler); }
};

}  // namespace detail

/* ------------------------------------------------------------------------ */
/* Walks                                                                     */
/* ------------------------------------------------------------------------ */

// An input range of std::string over a source that yields one string per
// call (Next: bool(std::string &), false at the end). Single pass: begin()
// starts the walk.
template <class Next>
class Walk {
public:
    class iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = std::string;
        using difference_type = std::ptrdiff_t;
        using pointer = const std::string *;
        using reference = const std::string &;

        iterator() = default;
        reference operator*() const noexcept { return current_; }
        pointer operator->() const noexcept { return &current_; }
        iterator &operator++() {
            advance();
            return *this;
        }
        iterator operator++(int) {
            iterator before = *this;
            advance();
            return before;
        }
        // Iterators compare equal when both are at the end or both are not.
        friend bool operator==(const iterator &a, const iterator &b) noexcept { return a.atEnd_ == b.atEnd_; }
        friend bool operator!=(const iterator &a, const iterator &b) noexcept { return a.atEnd_ != b.atEnd_; }

    private:
        friend class Walk;
        explicit iterator(Next next) : next_(std::move(next)), atEnd_(false) { advance(); }
        void advance() { atEnd_ = !next_(current_); }
        Next next_{};
        std::string current_;
        bool atEnd_ = true;
    };

    explicit Walk(Next next) : next_(std::move(next)) {}
    iterator begin() const { return iterator(next_); }
    iterator end() const noexcept { return iterator(); }

private:
    Next next_;
};

namespace detail {

// One name of an indexed collection per call, position by position, until
// the library reports the position out of range.
struct IndexedNames {
    int (*function)(int, int *, char *, std::size_t *) = nullptr;
    int handle = 0;
    int position = 0;
    bool operator()(std::string &out) {
        int index = 0;
        Reading reading = readText(
            [&](char *buf, std::size_t *len) {
                index = position;
                return function(handle, &index, buf, len);
            },
            out);
        if (reading.status == VELMORA_STATUS_FILE_INDEX_OUT_OF_BOUNDS) return false;
        done(reading.status);
        ++position;
        return true;
    }
};

// Next file names of a run, until the SDK returns none.
struct NextFiles {
    int (*function)(int, char *, std::size_t *) = nullptr;
    int handle = 0;
    bool operator()(std::string &out) {
        Reading reading = readText([&](char *buf, std::size_t *len) { return function(handle, buf, len); }, out);
        done(reading.status);
        return reading.present;
    }
};

}  // namespace detail

using NameWalk = Walk<detail::IndexedNames>;
using FileWalk = Walk<detail::NextFiles>;

}  // namespace velmora

#endif
