// Texts both ways: C text into Java strings (with the repair of UTF-8 that
// the JVM cannot take as it is), string lists into String[], and Java strings
// back into caller buffers.
#pragma once

#include <jni.h>

#include <cstddef>
#include <string_view>

#include "bridge/arguments.hpp"

namespace velmora {

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

// Delivers the library's own text into `out`: 0, or -23 with nothing
// written when it does not fit.
int deliverText(std::string_view text, StringOut &out);

// Delivers a Java string (or null, by `rule`) into `out`: 0 or -23.
int deliverString(JNIEnv *jenv, jstring text, StringOut &out, NullRule rule);

// The text of a not-initialised bridge for the functions that report one:
// *len becomes 54 and the 52 characters plus two NULs are written when they
// fit. Returns -11.
int deliverNotInitializedText(StringOut &out);

}  // namespace velmora
