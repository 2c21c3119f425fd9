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
#include "velmora/support.hpp"
#include "velmora/functions.hpp"  // every function that the library's call table generates

#include <optional>
#include <string>

namespace velmora {

// The functions below are those whose C form is written by hand.

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
    char path[VELMORA_PATH_SIZE];
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
inline std::string describeStatusCode(int code) { return detail::text(velmora_describeStatusCode, code); }
inline void debug() noexcept { velmora_debug(); }
inline void debug2() noexcept { velmora_debug2(); }
inline int downloadPartialResult(int handle) { return detail::javaInt(velmora_downloadPartialResult(handle)); }

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
// Every remaining result file name (peachNextFile until it returns none).
inline FileWalk peachFiles(int handle) { return FileWalk({velmora_peachNextFile, handle}); }

// A peach description, known by its peach handle. peach.name(args) is
// velmora_peach_name(handle, args): setters and other void Java methods
// return nothing, the Java ints and booleans come back as values. Copying a
// Peach copies the handle; both copies describe the same run.
class Peach : public PeachCalls<Peach> {
public:
    // A new description: velmora_peach_handle (the first call fetches the
    // SDK's wrapper). The codes -11, -12, -13 and -16 are thrown.
    static Peach create() {
        return Peach(detail::initialised(velmora_peach_handle()));
    }
    // A description whose handle the caller already has.
    explicit Peach(int handle) noexcept : handle_(handle) {}
    int handle() const noexcept { return handle_; }

    // Every remaining result file name (nextFile until it returns none).
    FileWalk files() const { return FileWalk({velmora_peach_nextFile, handle_}); }

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
    int handle_;
};

}  // namespace velmora

#endif /* VELMORA_HPP */
