/*
 * velmora.hpp - C++ interface of libvelmora, over the C functions of velmora.h.
 *
 * Header-only, C++17 or later, built on nothing but the exported C functions,
 * so it works against any build of the library. Every C function is one
 * natural call here, in namespace velmora, under the same name without the
 * velmora_ prefix (velmora_getProjectStatus -> velmora::getProjectStatus);
 * the peach builder functions are the methods of velmora::Peach.
 *
 * What the layer does for the caller, and nothing more:
 *  - Failures become exceptions. A negative bridge status is thrown as
 *    velmora::Error (or the subclass for its kind, below) carrying the code,
 *    the library's text for it and, when a management object exists, the
 *    SDK's last error message. Values that the SDK returns are returned:
 *      Java int (ids, handles, counts, SDK results): returned as int, except
 *        -11, -12 and -13, the codes that the forwarding call itself gives;
 *        a Java result equal to one of those cannot be told from a failure
 *        and is thrown. The C function (velmora_<name>) is the raw form that
 *        throws nothing; functions that take string lists also have a raw
 *        form in velmora::raw, with the C++ argument types.
 *      Java long (used times): int64_t, with the same three codes thrown.
 *      Java boolean: bool; every negative result is thrown.
 *      void Java methods: void; every negative result is thrown.
 *      Initialisers: the Java initialiser's int; the start-up and
 *        initialisation codes (-11 to -16, -22) are thrown.
 *  - String results are std::string, sized by the call: a stack buffer is
 *    tried first and a larger one only after VELMORA_STATUS_BUFFER_TOO_SMALL,
 *    with the size the library reported (again if the text grew meanwhile).
 *    Results that may be "no text" (zero-on-null in velmora.h) are
 *    std::optional<std::string>, empty for no text.
 *  - Walks (result files, streamed result files, project parameter names,
 *    the files of a peach run) are input ranges of std::string for a
 *    range-for. Each step asks the library afresh, so a collection that grows
 *    or shrinks while it is walked is followed to its current end.
 *  - Text arguments are CString: a const char * or a std::string, passed on
 *    without a copy (a null pointer reaches Java as null). String lists are
 *    StringList: any range of strings (std::vector<std::string>, a
 *    std::span<const std::string_view>, an array of const char *) or a braced
 *    list, turned into the array form of the C function. Elements that are
 *    std::string or const char * are passed without a copy; string views are
 *    copied once to add their terminating NUL.
 *
 * The Java virtual machine is process-wide: the initialisers start it (or join
 * the one already running) once, and it lives until the process ends; there
 * is nothing to close. velmora::unload and its siblings forget the peach
 * wrapper only. Threads follow velmora.h: any thread may call; the
 * initialisers, the unloads, the first Peach::create and handler registration
 * must not overlap other calls.
 */
#ifndef VELMORA_HPP
#define VELMORA_HPP

#include "velmora.h"

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
/* Errors                                                                    */
/* ------------------------------------------------------------------------ */

// A negative bridge status. what() reads "velmora: <code> <description>",
// followed by ": <SDK message>" when the SDK had one.
class Error : public std::runtime_error {
public:
    Error(int code, std::string description, std::string sdkMessage)
        : std::runtime_error(compose(code, description, sdkMessage)),
          code_(code),
          description_(std::move(description)),
          sdkMessage_(std::move(sdkMessage)) {}

    // The status code (a velmora_status value).
    int code() const noexcept { return code_; }
    // The library's text for the code (velmora_describeStatusCode).
    const std::string &description() const noexcept { return description_; }
    // The management object's getLastErrorMessage() at the time of the
    // failure; empty when there was none or no management object.
    const std::string &sdkMessage() const noexcept { return sdkMessage_; }

private:
    static std::string compose(int code, const std::string &description, const std::string &sdkMessage) {
        std::string text = "velmora: " + std::to_string(code) + " " + description;
        if (!sdkMessage.empty()) text += ": " + sdkMessage;
        return text;
    }
    int code_;
    std::string description_;
    std::string sdkMessage_;
};

// -11: Java not started, no management object, or (for Peach) no wrapper.
class NotInitialized : public Error {
    using Error::Error;
};
// -12: the SDK lacks the Java method with that name and signature.
class MethodNotFound : public Error {
    using Error::Error;
};
// -13: the Java method threw (the JVM printed it on its error stream).
class JavaException : public Error {
    using Error::Error;
};
// -14, -15, -16, -22: start-up or creating the management object failed.
class StartupError : public Error {
    using Error::Error;
};

/* ------------------------------------------------------------------------ */
/* Argument types                                                            */
/* ------------------------------------------------------------------------ */

// A NUL-terminated text argument: a const char * (null allowed) or a
// std::string, never copied. Meant for parameters: a CString must not
// outlive the string it was made from.
class CString {
public:
    CString(const char *text) noexcept : text_(text) {}
    CString(const std::string &text) noexcept : text_(text.c_str()) {}
    CString(std::nullptr_t) noexcept : text_(nullptr) {}
    const char *c_str() const noexcept { return text_; }

private:
    const char *text_;
};

// A list of strings for the array form of a C function, built for the one
// call it is an argument of. Up to 16 strings, and up to 256 bytes of copied
// string views, need no heap allocation.
class StringList {
public:
    // One element: a terminated text (const char *, std::string), or a view
    // that is copied with a NUL added.
    class Item {
    public:
        Item(const char *text) noexcept : data_(text), size_(0), terminated_(true) {}
        Item(const std::string &text) noexcept : data_(text.c_str()), size_(0), terminated_(true) {}
        Item(std::string_view text) noexcept : data_(text.data()), size_(text.size()), terminated_(false) {}

    private:
        friend class StringList;
        const char *data_;
        std::size_t size_;
        bool terminated_;
    };

    // Whether Range is a range whose elements make Items (and not itself one
    // string, which would be a range of characters).
    template <class Range>
    static constexpr bool isStringRange(...) { return false; }
    template <class Range, class Element = decltype(*std::begin(std::declval<const Range &>())),
              class = decltype(std::end(std::declval<const Range &>()))>
    static constexpr bool isStringRange(int) {
        return std::is_constructible_v<Item, Element> && !std::is_convertible_v<const Range &, Item> &&
               !std::is_same_v<std::decay_t<Range>, StringList>;
    }

    StringList() noexcept = default;
    StringList(std::initializer_list<Item> items) { fill(items.begin(), items.end()); }
    template <class Range, class = std::enable_if_t<isStringRange<Range>(0)>>
    StringList(const Range &strings) {
        using std::begin;
        using std::end;
        fill(begin(strings), end(strings));
    }
    StringList(const StringList &) = delete;
    StringList &operator=(const StringList &) = delete;

    int count() const noexcept { return count_; }
    const char **data() const noexcept { return items_; }

private:
    static constexpr std::size_t kInlineItems = 16;
    static constexpr std::size_t kInlineBytes = 256;

    template <class It>
    void fill(It first, It last) {
        std::size_t count = 0, bytes = 0;
        for (It i = first; i != last; ++i, ++count) {
            Item item(*i);
            if (!item.terminated_) bytes += item.size_ + 1;
        }
        if (count > static_cast<std::size_t>(INT_MAX)) throw std::length_error("velmora: string list too long");
        if (count > kInlineItems) {
            heapItems_.reset(new const char *[count]);
            items_ = heapItems_.get();
        }
        char *copy = inlineBytes_;
        if (bytes > kInlineBytes) {
            heapBytes_.reset(new char[bytes]);
            copy = heapBytes_.get();
        }
        for (std::size_t n = 0; first != last; ++first, ++n) {
            Item item(*first);
            if (item.terminated_) {
                items_[n] = item.data_;
                continue;
            }
            items_[n] = copy;
            copy = std::copy(item.data_, item.data_ + item.size_, copy);
            *copy++ = '\0';
        }
        count_ = static_cast<int>(count);
    }

    const char *inlineItems_[kInlineItems];
    char inlineBytes_[kInlineBytes];
    std::unique_ptr<const char *[]> heapItems_;
    std::unique_ptr<char[]> heapBytes_;
    const char **items_ = inlineItems_;
    int count_ = 0;
};

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

// Builds and throws the exception for a negative status.
[[noreturn]] [[gnu::cold]] [[gnu::noinline]] inline void fail(int code) {
    std::string description, message;
    auto describe = [code](char *buf, std::size_t *len) { return velmora_describeStatusCode(code, buf, len); };
    Reading described = readText(describe, description);
    if (described.status != VELMORA_STATUS_OK) description = "status " + std::to_string(code);
    readText(velmora_getLastErrorMessage, message);  // left empty when it fails
    switch (code) {
    case VELMORA_STATUS_JAVA_NOT_INITIALIZED:
        throw NotInitialized(code, std::move(description), std::move(message));
    case VELMORA_STATUS_METHOD_NOT_FOUND:
        throw MethodNotFound(code, std::move(description), std::move(message));
    case VELMORA_STATUS_JAVA_EXCEPTION:
        throw JavaException(code, std::move(description), std::move(message));
    case VELMORA_STATUS_NO_CONSTRUCTOR:
    case VELMORA_STATUS_NO_INITIALIZER:
    case VELMORA_STATUS_INIT_FAILED:
    case VELMORA_STATUS_JVM_LIBRARY_NOT_FOUND:
        throw StartupError(code, std::move(description), std::move(message));
    default:
        throw Error(code, std::move(description), std::move(message));
    }
}

// A call's own failure codes, shared with Java int and long results.
template <class T>
inline bool callFailed(T result) noexcept {
    return result >= VELMORA_STATUS_JAVA_EXCEPTION && result <= VELMORA_STATUS_JAVA_NOT_INITIALIZED;
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
inline int initialised(int result) {
    if ((result <= VELMORA_STATUS_JAVA_NOT_INITIALIZED && result >= VELMORA_STATUS_INIT_FAILED) ||
        result == VELMORA_STATUS_JVM_LIBRARY_NOT_FOUND)
        fail(result);
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

/* ------------------------------------------------------------------------ */
/* Start-up and runtime                                                      */
/* ------------------------------------------------------------------------ */

// Start-up alone; 0 or thrown.
inline int initJava() { return detail::initialised(velmora_initJava()); }
// The initialisers: the Java initialiser's int.
inline int init() { return detail::initialised(velmora_init()); }
inline int initFile(CString file) { return detail::initialised(velmora_initFile(file.c_str())); }
inline int initFileWithPassword(CString file, CString password) {
    return detail::initialised(velmora_initFileWithPassword(file.c_str(), password.c_str()));
}
inline int initWithoutFile(CString s1, CString s2, CString s3, CString s4, int i5, CString s6, CString s7, int i8,
                           int i9, CString s10, CString s11) {
    return detail::initialised(velmora_initWithoutFile(s1.c_str(), s2.c_str(), s3.c_str(), s4.c_str(), i5, s6.c_str(),
                                                       s7.c_str(), i8, i9, s10.c_str(), s11.c_str()));
}

// The runtime library found through PATH, or nothing.
inline std::optional<std::string> findJavaInPath() {
    char path[4096];
    if (velmora_findJavaInPath(path) != 0) return std::nullopt;
    return std::string(path);
}

inline int unload(bool flag) { return detail::javaInt(velmora_unload(detail::flag(flag))); }
inline int unload2(bool flag1, bool flag2) {
    return detail::javaInt(velmora_unload2(detail::flag(flag1), detail::flag(flag2)));
}
inline int unload3(bool flag1, bool flag2) {
    return detail::javaInt(velmora_unload3(detail::flag(flag1), detail::flag(flag2)));
}
inline JNIEnv *getJNIEnv() noexcept { return velmora_getJNIEnv(); }
inline JavaVM *getJavaVM() noexcept { return velmora_getJavaVM(); }
inline std::string getTempDir() { return detail::text(velmora_getTempDir); }
// Nothing when the property is not set.
inline std::optional<std::string> getJavaSystemProperty(CString name) {
    return detail::maybeText(velmora_getJavaSystemProperty, name.c_str());
}
// A JNI local reference of the calling thread, the caller's to delete.
inline jobject getPlugin(CString name) {
    jobject plugin = nullptr;
    detail::done(velmora_getPlugin(name.c_str(), &plugin));
    return plugin;
}
// A local reference, or null on every failure (the C function has no status).
inline jclass getPluginClass(CString name) noexcept { return velmora_getPluginClass(name.c_str()); }
inline std::string getPluginConf(CString plugin, CString key) {
    return detail::text(velmora_getPluginConf, plugin.c_str(), key.c_str());
}

/* ------------------------------------------------------------------------ */
/* Status texts, open, close and diagnostics                                 */
/* ------------------------------------------------------------------------ */

inline std::string describeStatusCode(int code) { return detail::text(velmora_describeStatusCode, code); }
inline int open() { return detail::javaInt(velmora_open()); }
inline int ready(int handle) { return detail::javaInt(velmora_ready(handle)); }
inline int close(int handle) { return detail::javaInt(velmora_close(handle)); }
inline int getLastError(int handle) { return detail::javaInt(velmora_getLastError(handle)); }
inline int setLogLevel(CString level) { return detail::javaInt(velmora_setLogLevel(level.c_str())); }
inline int stopWaitingBG(int handle) { return detail::javaInt(velmora_stopWaitingBG(handle)); }
inline std::string getLastErrorMessage() { return detail::text(velmora_getLastErrorMessage); }
inline std::string getUserLogin() { return detail::text(velmora_getUserLogin); }
inline bool actionWait(std::int64_t value) { return detail::truth(velmora_actionWait(value)); }
inline void debug() noexcept { velmora_debug(); }
inline void debug2() noexcept { velmora_debug2(); }

/* ------------------------------------------------------------------------ */
/* Bundles                                                                   */
/* ------------------------------------------------------------------------ */

namespace raw {
// The Java int unchecked: status codes and Java results alike.
inline int createBundle(int handle, CString s1, CString s2, CString s3, CString s4, CString s5, CString s6, CString s7,
                        CString s8, CString s9, const StringList &first, const StringList &second) {
    detail::JoinedLists both(first, second);
    return velmora_createBundle3(handle, s1.c_str(), s2.c_str(), s3.c_str(), s4.c_str(), s5.c_str(), s6.c_str(),
                                 s7.c_str(), s8.c_str(), s9.c_str(), first.count(), second.count(), both.data());
}
inline int createSignedBundle(int handle, CString s1, CString s2, CString s3, CString s4, CString s5, CString s6,
                              CString s7, CString s8, CString s9, CString s10, CString s11, const StringList &first,
                              const StringList &second) {
    detail::JoinedLists both(first, second);
    return velmora_createSignedBundle3(handle, s1.c_str(), s2.c_str(), s3.c_str(), s4.c_str(), s5.c_str(), s6.c_str(),
                                       s7.c_str(), s8.c_str(), s9.c_str(), s10.c_str(), s11.c_str(), first.count(),
                                       second.count(), both.data());
}
}  // namespace raw

inline int createBundle(int handle, CString s1, CString s2, CString s3, CString s4, CString s5, CString s6, CString s7,
                        CString s8, CString s9, const StringList &first, const StringList &second) {
    return detail::javaInt(raw::createBundle(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9, first, second));
}
// s11 reaches Java last, after the two lists.
inline int createSignedBundle(int handle, CString s1, CString s2, CString s3, CString s4, CString s5, CString s6,
                              CString s7, CString s8, CString s9, CString s10, CString s11, const StringList &first,
                              const StringList &second) {
    return detail::javaInt(
        raw::createSignedBundle(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9, s10, s11, first, second));
}
inline int uploadBundle(int handle) { return detail::javaInt(velmora_uploadBundle(handle)); }
inline int uploadBundleWithName(int handle, CString name) {
    return detail::javaInt(velmora_uploadBundleWithName(handle, name.c_str()));
}
inline int approveUploadedBundles(int handle) { return detail::javaInt(velmora_approveUploadedBundles(handle)); }
inline int useBundle(int handle, CString name) { return detail::javaInt(velmora_useBundle(handle, name.c_str())); }
inline int useBundleWithPrefix(int handle, CString first, CString second) {
    return detail::javaInt(velmora_useBundleWithPrefix(handle, first.c_str(), second.c_str()));
}
inline int getBundleId(int handle) { return detail::javaInt(velmora_getBundleId(handle)); }
inline int setBundleId(int handle, int bundleId) { return detail::javaInt(velmora_setBundleId(handle, bundleId)); }
inline int signJar(CString first, CString second) {
    return detail::javaInt(velmora_signJar(first.c_str(), second.c_str()));
}
inline bool bundleExists(CString name) { return detail::truth(velmora_bundleExists(name.c_str())); }
inline bool bundleVersionExists(CString first, CString second) {
    return detail::truth(velmora_bundleVersionExists(first.c_str(), second.c_str()));
}
inline bool bundleWithPrefixExists(CString first, CString second) {
    return detail::truth(velmora_bundleWithPrefixExists(first.c_str(), second.c_str()));
}
inline std::optional<std::string> getLastCreatedBundleName(int handle) {
    return detail::maybeText(velmora_getLastCreatedBundleName, handle);
}

/* ------------------------------------------------------------------------ */
/* Projects and jobs                                                         */
/* ------------------------------------------------------------------------ */

namespace raw {
inline int createProject(int handle, int second, CString text, const StringList &list) {
    return velmora_createProject3(handle, second, text.c_str(), list.count(), list.data());
}
inline int setProjectParams(int handle, const StringList &list) {
    return velmora_setProjectParams3(handle, list.count(), list.data());
}
inline int createProjectJobs(int handle, const StringList &list) {
    return velmora_createProjectJobs3(handle, list.count(), list.data());
}
inline int createJob(int handle, const StringList &list) {
    return velmora_createJob3(handle, list.count(), list.data());
}
inline int createCachedJob(int handle, const StringList &list) {
    return velmora_createCachedJob3(handle, list.count(), list.data());
}
}  // namespace raw

inline int createProject(int handle, int second, CString text, const StringList &list) {
    return detail::javaInt(raw::createProject(handle, second, text, list));
}
inline int setProjectParams(int handle, const StringList &list) {
    return detail::javaInt(raw::setProjectParams(handle, list));
}
inline int createProjectJobs(int handle, const StringList &list) {
    return detail::javaInt(raw::createProjectJobs(handle, list));
}
inline int createJob(int handle, const StringList &list) { return detail::javaInt(raw::createJob(handle, list)); }
inline int createCachedJob(int handle, const StringList &list) {
    return detail::javaInt(raw::createCachedJob(handle, list));
}
inline int createEmptyProject(int handle, int second, CString text) {
    return detail::javaInt(velmora_createEmptyProject(handle, second, text.c_str()));
}
inline int flushCachedJobs(int handle) { return detail::javaInt(velmora_flushCachedJobs(handle)); }
inline int markAllJobsCreated(int handle) { return detail::javaInt(velmora_markAllJobsCreated(handle)); }
inline int addUserClientsToProject(int handle) { return detail::javaInt(velmora_addUserClientsToProject(handle)); }
inline int startProject(int handle) { return detail::javaInt(velmora_startProject(handle)); }
inline int stopProject(int handle) { return detail::javaInt(velmora_stopProject(handle)); }
inline int removeProject(int handle) { return detail::javaInt(velmora_removeProject(handle)); }
inline int cleanup(int handle, int second) { return detail::javaInt(velmora_cleanup(handle, second)); }
inline int waitCompletion(int handle) { return detail::javaInt(velmora_waitCompletion(handle)); }
inline int waitCompletionBG(int handle) { return detail::javaInt(velmora_waitCompletionBG(handle)); }
inline int getProjectId(int handle) { return detail::javaInt(velmora_getProjectId(handle)); }
inline int setProjectId(int handle, int projectId) { return detail::javaInt(velmora_setProjectId(handle, projectId)); }
inline int getProjectStatus(int handle) { return detail::javaInt(velmora_getProjectStatus(handle)); }
inline int getProjectParamCount(int handle) { return detail::javaInt(velmora_getProjectParamCount(handle)); }
inline int sendJobPostParameter(int handle, std::int64_t job, CString text) {
    return detail::javaInt(velmora_sendJobPostParameter(handle, job, text.c_str()));
}
inline bool isCompleted(int handle) { return detail::truth(velmora_isCompleted(handle)); }
inline bool isFailed(int handle) { return detail::truth(velmora_isFailed(handle)); }
inline bool isJobCompleted(int handle, std::int64_t job) { return detail::truth(velmora_isJobCompleted(handle, job)); }
inline std::string getProjectDescription(int handle) { return detail::text(velmora_getProjectDescription, handle); }
inline std::string getProjectParamValue(int handle, CString name) {
    return detail::text(velmora_getProjectParamValue, handle, name.c_str());
}
// The names of the project's parameters (velmora_getProjectParamName).
inline NameWalk getProjectParamNames(int handle) { return NameWalk({velmora_getProjectParamName, handle, 0}); }

/* ------------------------------------------------------------------------ */
/* Results and statistics                                                    */
/* ------------------------------------------------------------------------ */

inline int downloadResult(int handle) { return detail::javaInt(velmora_downloadResult(handle)); }
inline int downloadPartialResult(int handle) { return detail::javaInt(velmora_downloadPartialResult(handle)); }
inline int setDownloadDir(int handle, CString dir) {
    return detail::javaInt(velmora_setDownloadDir(handle, dir.c_str()));
}
inline int setUnzipDir(int handle, CString dir) { return detail::javaInt(velmora_setUnzipDir(handle, dir.c_str())); }
inline int unzip(int handle) { return detail::javaInt(velmora_unzip(handle)); }
inline int unzipFile(CString first, CString second, CString third) {
    return detail::javaInt(velmora_unzipFile(first.c_str(), second.c_str(), third.c_str()));
}
inline int setStreamResults(int handle, bool flag) {
    return detail::javaInt(velmora_setStreamResults(handle, detail::flag(flag)));
}
inline int getStreamedResultFilesCount(int handle) {
    return detail::javaInt(velmora_getStreamedResultFilesCount(handle));
}
inline std::string getResultDirectory(int handle) { return detail::text(velmora_getResultDirectory, handle); }
inline std::string getResultFile(int handle) { return detail::text(velmora_getResultFile, handle); }
inline std::string getProjectStatistic(int handle, CString name) {
    return detail::text(velmora_getProjectStatistic, handle, name.c_str());
}
inline std::optional<std::string> getStatisticsString(int handle) {
    return detail::maybeText(velmora_getStatisticsString, handle);
}
// The names of the result files, and of the streamed result files.
inline NameWalk getResultFiles(int handle) { return NameWalk({velmora_getResultFiles, handle, 0}); }
inline NameWalk getStreamedResultFiles(int handle) { return NameWalk({velmora_getStreamedResultFiles, handle, 0}); }
inline std::int64_t getUsedCpuTime(int handle) { return detail::javaLong(velmora_getUsedCpuTime(handle)); }
inline std::int64_t getUsedTime(int handle) { return detail::javaLong(velmora_getUsedTime(handle)); }
inline void printStatistics(int handle) { detail::done(velmora_printStatistics(handle)); }

/* ------------------------------------------------------------------------ */
/* One-call peach                                                            */
/* ------------------------------------------------------------------------ */

namespace raw {
inline int peach(const StringList &list) { return velmora_peach3(list.count(), list.data()); }
}  // namespace raw

inline int peach(const StringList &list) { return detail::javaInt(raw::peach(list)); }
// The next result file name, or nothing when Java returned none.
inline std::optional<std::string> peachNextFile(int handle) { return detail::maybeText(velmora_peachNextFile, handle); }
// Every remaining result file name (peachNextFile until it returns none).
inline FileWalk peachFiles(int handle) { return FileWalk({velmora_peachNextFile, handle}); }
inline void peachDone(int handle) { detail::done(velmora_peachDone(handle)); }

/* ------------------------------------------------------------------------ */
/* Peach builder                                                             */
/* ------------------------------------------------------------------------ */

// A peach description, known by its peach handle. peach.name(args) is
// velmora_peach_name(handle, args): setters and other void Java methods
// return nothing, the Java ints and booleans come back as values. Copying a
// Peach copies the handle; both copies describe the same run.
class Peach {
public:
    // A new description: velmora_peach_handle (the first call fetches the
    // SDK's wrapper). The codes -11, -12, -13 and -16 are thrown.
    static Peach create() {
        int handle = velmora_peach_handle();
        if (detail::callFailed(handle) || handle == VELMORA_STATUS_INIT_FAILED) detail::fail(handle);
        return Peach(handle);
    }
    // A description whose handle the caller already has.
    explicit Peach(int handle) noexcept : handle_(handle) {}
    int handle() const noexcept { return handle_; }

    // Run settings.
    void setName(CString text) { forward(velmora_peach_setName, text); }
    void setStateDir(CString text) { forward(velmora_peach_setStateDir, text); }
    void setDescription(CString text) { forward(velmora_peach_setDescription, text); }
    void setMessages(bool flag) { forward(velmora_peach_setMessages, flag); }
    void setPriorityI(int priority) { forward(velmora_peach_setPriorityI, priority); }
    void setPriority(CString text) { forward(velmora_peach_setPriority, text); }
    void setProjectId(int projectId) { forward(velmora_peach_setProjectId, projectId); }
    void setResultFile(CString text) { forward(velmora_peach_setResultFile, text); }
    void setJobs(int jobs) { forward(velmora_peach_setJobs, jobs); }
    void setAllowPartial(bool flag) { forward(velmora_peach_setAllowPartial, flag); }
    void setRemove(bool flag) { forward(velmora_peach_setRemove, flag); }
    void setCleanup(bool flag) { forward(velmora_peach_setCleanup, flag); }
    void setClose(bool flag) { forward(velmora_peach_setClose, flag); }
    void setStream(bool flag) { forward(velmora_peach_setStream, flag); }
    int getProjectHandle() const { return detail::javaInt(velmora_peach_getProjectHandle(handle_)); }
    int getProjectId() const { return detail::javaInt(velmora_peach_getProjectId(handle_)); }

    // Source files.
    void addSourceFile(CString text) { forward(velmora_peach_addSourceFile, text); }
    void putSourceExtras(CString text1, CString text2) { forward(velmora_peach_putSourceExtras, text1, text2); }
    bool sourcesChanged() const { return detail::truth(velmora_peach_sourcesChanged(handle_)); }

    // Executable.
    void setExeBundleName(CString text) { forward(velmora_peach_setExeBundleName, text); }
    void setExecutable(CString text) { forward(velmora_peach_setExecutable, text); }
    void setExeSkipDigest(bool flag) { forward(velmora_peach_setExeSkipDigest, flag); }
    void addExeFile(CString text1, CString text2, CString text3, CString text4) {
        forward(velmora_peach_addExeFile, text1, text2, text3, text4);
    }
    void putExeExtras(CString text1, CString text2) { forward(velmora_peach_putExeExtras, text1, text2); }
    void addExeImport(CString text) { forward(velmora_peach_addExeImport, text); }

    // Output files.
    void addOutputFile(CString text) { forward(velmora_peach_addOutputFile, text); }

    // Data bundles.
    void newDataBundle() { forward(velmora_peach_newDataBundle); }
    void newDataBundleWithName(CString text) { forward(velmora_peach_newDataBundleWithName, text); }
    void setDataSkipDigest(bool flag) { forward(velmora_peach_setDataSkipDigest, flag); }
    void addDataFile(CString text) { forward(velmora_peach_addDataFile, text); }
    void addDataFileWithDir(CString text1, CString text2) { forward(velmora_peach_addDataFileWithDir, text1, text2); }
    void putDataExtras(CString text1, CString text2) { forward(velmora_peach_putDataExtras, text1, text2); }
    void setDataCopy(bool flag) { forward(velmora_peach_setDataCopy, flag); }

    // Job files.
    void setJobSkipDigest(bool flag) { forward(velmora_peach_setJobSkipDigest, flag); }
    void setJobFileNames(const StringList &list) { forward(velmora_peach_setJobFileNames3, list.count(), list.data()); }
    void addJobFile(const StringList &list) { forward(velmora_peach_addJobFile3, list.count(), list.data()); }
    void addJobFileWithDir(CString dir, const StringList &list) {
        forward(velmora_peach_addJobFileWithDir3, dir, list.count(), list.data());
    }
    void putJobExtras(CString text1, CString text2) { forward(velmora_peach_putJobExtras, text1, text2); }

    // Parameter files and project parameters.
    void setParamSkipDigest(bool flag) { forward(velmora_peach_setParamSkipDigest, flag); }
    void addParamFile(CString text) { forward(velmora_peach_addParamFile, text); }
    void addParamFileWithDir(CString text1, CString text2) { forward(velmora_peach_addParamFileWithDir, text1, text2); }
    void addParamFileWithTarget(CString text1, CString text2) {
        forward(velmora_peach_addParamFileWithTarget, text1, text2);
    }
    void putParamExtras(CString text1, CString text2) { forward(velmora_peach_putParamExtras, text1, text2); }
    void addParamExternalResource(CString text) { forward(velmora_peach_addParamExternalResource, text); }
    void setParamCopy(bool flag) { forward(velmora_peach_setParamCopy, flag); }
    void putProjectParam(CString text1, CString text2) { forward(velmora_peach_putProjectParam, text1, text2); }

    // Execution and results.
    int execute() { return detail::javaInt(velmora_peach_execute(handle_)); }
    // The next result file name, or nothing when Java returned none.
    std::optional<std::string> nextFile() { return detail::maybeText(velmora_peach_nextFile, handle_); }
    // Every remaining result file name (nextFile until it returns none).
    FileWalk files() const { return FileWalk({velmora_peach_nextFile, handle_}); }
    void postProcessed(int value) { detail::done(velmora_peach_postProcessed(handle_, value)); }
    void done() { detail::done(velmora_peach_done(handle_)); }
    std::optional<std::string> getLastErrorMessage() const {
        return detail::maybeText(velmora_peach_getLastErrorMessage, handle_);
    }

    // Makes handler, any callable taking a std::string_view, the one
    // process-wide receiver of intermediate results, for every description,
    // as the C callback is: the handler registered last receives them all.
    // It runs on a Java thread of the SDK, possibly on several at once and
    // while other calls are in progress; the text is valid only during the
    // call; an exception it throws is swallowed (the text is dropped). When
    // the registration fails (thrown) the previous handler stays. An empty
    // std::function, a null function pointer or nullptr drops the texts from
    // then on. The library keeps the handler until it is replaced (and freed
    // once no delivery is running it) or the process ends.
    template <class F>
    void setIntermediateResultHandler(F &&handler) {
        using Callable = std::decay_t<F>;
        static_assert(std::is_invocable_v<Callable &, std::string_view>,
                      "the handler must be callable with a std::string_view");
        if constexpr (std::is_constructible_v<bool, const Callable &>) {
            if (!static_cast<bool>(handler)) return setIntermediateResultHandler(nullptr);
        }
        std::unique_ptr<detail::Handler, detail::HandlerDeleter> next(
            new detail::HandlerFor<Callable>(std::forward<F>(handler)));
        detail::done(velmora_peach_setIntermediateResultHandler(handle_, &detail::deliver));
        detail::install(next.release());
    }
    void setIntermediateResultHandler(std::nullptr_t) {
        detail::done(velmora_peach_setIntermediateResultHandler(handle_, nullptr));
        detail::install(nullptr);
    }

private:
    // One peach function with the handle first: texts as their pointers,
    // flags as 1 or 0; a negative result is thrown.
    static const char *arg(CString text) noexcept { return text.c_str(); }
    static unsigned char arg(bool flag) noexcept { return detail::flag(flag); }
    static int arg(int value) noexcept { return value; }
    static const char **arg(const char **list) noexcept { return list; }
    template <class... Params, class... Args>
    void forward(int (*function)(int, Params...), Args... args) {
        detail::done(function(handle_, arg(args)...));
    }

    int handle_;
};

}  // namespace velmora

#endif /* VELMORA_HPP */
