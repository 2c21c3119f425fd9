// The kinds of argument that a forwarding function hands to the frame. Each
// C++ type names its JNI descriptor, so that the frame can check a row's
// signature against the C++ arguments at compile time.
#pragma once

#include <jni.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "velmora.h"

namespace velmora {

// The source of the strings of one or two string lists: a va_list or an
// array, read front to back (a second list continues where the first ended).
// On this ABI a va_list parameter is a pointer into the caller's list, so
// reading through it leaves the caller's va_list advanced past the strings.
#if !defined(__x86_64__)
#error "string lists read va_list as the x86-64 ABI passes it"
#endif
va_list &vaListLvalue();  // never defined: only its type is used
class ListSource {
    using VaPointer = decltype(&vaListLvalue()[0]);  // what a va_list parameter is on x86-64

public:
    explicit ListSource(const char *const *array) : array_(array) {}
    explicit ListSource(VaPointer ap) : ap_(ap) {}
    ListSource(const ListSource &) = delete;
    ListSource &operator=(const ListSource &) = delete;

    // Whether `total` strings can be read at all (a null array holds none).
    bool canRead(long total) const { return total <= 0 || ap_ || array_; }
    const char *next() { return ap_ ? va_arg(ap_, const char *) : array_[position_++]; }

private:
    const char *const *array_ = nullptr;
    std::size_t position_ = 0;
    VaPointer ap_ = nullptr;
};

// A string list argument: `count` strings taken from `source`.
struct StringList {
    int count;
    ListSource *source;
};

// The handler object of setIntermediateResultHandler.
struct ResultHandler {
    jobject object;
};

using Flag = unsigned char;

template <class T> struct JniDescriptor;
template <> struct JniDescriptor<int> { static constexpr std::string_view value = "I"; };
template <> struct JniDescriptor<std::int64_t> { static constexpr std::string_view value = "J"; };
template <> struct JniDescriptor<Flag> { static constexpr std::string_view value = "Z"; };
template <> struct JniDescriptor<const char *> {
    static constexpr std::string_view value = "Ljava/lang/String;";
};
template <> struct JniDescriptor<StringList> {
    static constexpr std::string_view value = "[Ljava/lang/String;";
};
template <> struct JniDescriptor<ResultHandler> {
    static constexpr std::string_view value = "Lvelmora/user/IntermediateResultHandler;";
};

// True when `signature` takes exactly the parameters A... in this order.
template <class... A> constexpr bool parametersMatch(std::string_view signature) {
    std::size_t pos = 1;
    bool ok = !signature.empty() && signature[0] == '(';
    ((ok = ok && signature.substr(pos, JniDescriptor<A>::value.size()) == JniDescriptor<A>::value,
      pos += JniDescriptor<A>::value.size()),
     ...);
    return ok && pos < signature.size() && signature[pos] == ')';
}

}  // namespace velmora
