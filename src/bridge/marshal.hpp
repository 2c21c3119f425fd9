// Conversion of C values into Java values and of Java strings back into
// caller buffers.
#pragma once

#include <jni.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velmora {

// Status codes of the bridge itself.
enum Status : int {
    kOk = 0,
    kNotInitialized = -11,
    kMethodNotFound = -12,
    kJavaException = -13,
    kNoConstructor = -14,
    kNoInitializer = -15,
    kInitFailed = -16,
    kLibraryNotFound = -22,
    kBufferTooSmall = -23,
    kIndexOutOfBounds = -24,
};

// ---------------------------------------------------------------------------
// Argument kinds. Each C++ type that a forwarding function hands to the frame
// names its JNI descriptor, so that the frame can check the row's signature
// against the C++ arguments at compile time.

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

// ---------------------------------------------------------------------------
// Values into Java.

// A new Java string from C text; null for a null pointer, and null with the
// runtime's exception pending when it cannot make the string. Standard UTF-8
// characters outside the Basic Multilingual Plane (well-formed 4-byte
// sequences, which the JVM would silently drop with the rest of the text) are
// re-encoded as the surrogate pairs of modified UTF-8; each maximal
// ill-formed subsequence (the start of a sequence that breaks off, or a byte
// that starts none) becomes one U+FFFD. Plain ASCII is handed over as it is.
jstring newJavaString(JNIEnv *jenv, const char *text);

// A new String[] of `count` null slots, for fillStringArray to fill before
// any Java code sees it; null, with the runtime's exception pending, when it
// cannot be made.
jobjectArray newStringArray(JNIEnv *jenv, jsize count);

// Fills slots 0..count-1 of `array` from `source` (a null text leaves its
// slot null), releasing every string reference it makes. Stops at the first
// string the runtime cannot make and returns false, with its exception
// pending.
bool fillStringArray(JNIEnv *jenv, jobjectArray array, int count, ListSource &source);

// ---------------------------------------------------------------------------
// Strings back into caller buffers.

// What a null Java string yields.
enum class NullRule {
    EmptyString,  // "" and length 1
    NoText,       // 0 with length 0, buffer untouched
};

// A caller's buffer and in/out length. The capacity is read once, on entry;
// a null buffer or length counts as capacity 0, and a null length is never
// written.
class StringOut {
public:
    StringOut(char *buf, std::size_t *len) : buf_(buf), len_(len), capacity_(buf && len ? *len : 0) {}

    std::size_t capacity() const { return capacity_; }
    void setLength(std::size_t n) {
        if (len_) *len_ = n;
    }
    // Writes `bytes` (which must fit) and a NUL.
    void write(std::string_view bytes);
    // A single NUL when the capacity allows it.
    void writeEmptyIfRoom();
    char *buffer() { return buf_; }

private:
    char *buf_;
    std::size_t *len_;
    std::size_t capacity_;
};

// Delivers a Java string (or null, by `rule`) into `out`: 0 or -23.
int deliverString(JNIEnv *jenv, jstring text, StringOut &out, NullRule rule);

// The text of a not-initialised bridge for the functions that report one:
// *len becomes 54 and the 52 characters plus two NULs are written when they
// fit. Returns -11.
int deliverNotInitializedText(StringOut &out);

}  // namespace velmora
