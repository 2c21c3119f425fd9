#include "bridge/strings.hpp"

#include <atomic>
#include <cstddef>
#include <cstring>
#include <string>

#include "bridge/state.hpp"

namespace velmora {

namespace {

// Whether no byte of text[0, length) has its high bit set, a word at a time
// (the last word overlapping the one before it rather than going bytewise).
bool isAscii(const char *text, std::size_t length) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080u;
    const auto word = [text](std::size_t at) {
        std::uint64_t w;
        std::memcpy(&w, text + at, sizeof w);
        return w;
    };
    if (length >= 8) {
        std::uint64_t seen = word(length - 8);
        for (std::size_t i = 0; i + 8 < length; i += 8) seen |= word(i);
        return (seen & kHighBits) == 0;
    }
    std::uint64_t seen = 0;
    for (std::size_t i = 0; i < length; ++i) seen |= static_cast<unsigned char>(text[i]);
    return (seen & 0x80) == 0;
}

// The well-formed sequence or maximal ill-formed subsequence at `p`. The
// input is modified UTF-8 or standard UTF-8: the two-byte NUL (C0 80) and
// three-byte surrogates pass like any other sequence, four-byte sequences
// are well formed from U+10000 to U+10FFFF.
struct Sequence {
    int length;      // bytes taken
    bool wellFormed;
};
Sequence sequenceAt(const unsigned char *p) {
    const unsigned char lead = p[0];
    int expected = 0;
    unsigned char low = 0x80, high = 0xBF;  // range of the second byte
    if (lead < 0x80) return {1, true};
    if (lead == 0xC0) expected = 2, high = 0x80;
    else if (lead >= 0xC2 && lead <= 0xDF) expected = 2;
    else if (lead == 0xE0) expected = 3, low = 0xA0;
    else if (lead >= 0xE1 && lead <= 0xEF) expected = 3;
    else if (lead == 0xF0) expected = 4, low = 0x90;
    else if (lead >= 0xF1 && lead <= 0xF3) expected = 4;
    else if (lead == 0xF4) expected = 4, high = 0x8F;
    else return {1, false};
    int taken = 1;
    if (p[1] >= low && p[1] <= high) {
        taken = 2;
        while (taken < expected && (p[taken] & 0xC0) == 0x80) ++taken;
    }
    return {taken, taken == expected};
}

// Rewrites `text` from its first sequence that modified UTF-8 cannot carry
// as it is (`from`): four-byte sequences become the two three-byte encodings
// of their surrogate pair, each ill-formed subsequence one U+FFFD.
std::string toModifiedUtf8(const char *text, std::size_t from) {
    std::string out(text, from);
    const auto *p = reinterpret_cast<const unsigned char *>(text) + from;
    while (*p) {
        const Sequence s = sequenceAt(p);
        if (!s.wellFormed) {
            out += "\xEF\xBF\xBD";
        } else if (s.length == 4) {
            std::uint32_t cp = (std::uint32_t(p[0] & 0x07) << 18) | (std::uint32_t(p[1] & 0x3F) << 12) |
                               (std::uint32_t(p[2] & 0x3F) << 6) | std::uint32_t(p[3] & 0x3F);
            cp -= 0x10000;
            for (std::uint32_t unit : {0xD800 + (cp >> 10), 0xDC00 + (cp & 0x3FF)}) {
                out += char(0xE0 | (unit >> 12));
                out += char(0x80 | ((unit >> 6) & 0x3F));
                out += char(0x80 | (unit & 0x3F));
            }
        } else {
            out.append(reinterpret_cast<const char *>(p), static_cast<std::size_t>(s.length));
        }
        p += s.length;
    }
    return out;
}

// The modified UTF-8 length of `text`. A runtime of JNI 24 or later counts
// it faster with GetStringUTFLengthAsLong (the entry two after GetModule in
// its function table; the jni.h this builds with may not name it) than with
// GetStringUTFLength, which it keeps only for older code. The version is
// asked once: a process holds one runtime.
std::size_t utfLength(JNIEnv *jenv, jstring text) {
    using AsLong = jlong(JNICALL *)(JNIEnv *, jstring);
    constexpr jint kJni24 = 0x00180000;
    enum : signed char { kUnknown, kOld, kNew };
    static std::atomic<signed char> runtime{kUnknown};
    signed char known = runtime.load(std::memory_order_relaxed);
    if (known == kUnknown) {
        known = jenv->GetVersion() >= kJni24 ? kNew : kOld;
        runtime.store(known, std::memory_order_relaxed);
    }
    if (known == kOld) return static_cast<std::size_t>(jenv->GetStringUTFLength(text));
    const auto *table = reinterpret_cast<void *const *>(jenv->functions);
    const auto asLong =
        reinterpret_cast<AsLong>(table[offsetof(JNINativeInterface_, GetModule) / sizeof(void *) + 2]);
    return static_cast<std::size_t>(asLong(jenv, text));
}

constexpr char kNotInitializedText[] = "No Error Message available; Java is not initialized.";
constexpr std::size_t kNotInitializedBytes = sizeof kNotInitializedText + 1;  // two NULs
static_assert(kNotInitializedBytes == 54);

}  // namespace

jstring newJavaString(JNIEnv *jenv, const char *text) {
    if (!text) return nullptr;
    const std::size_t length = std::strlen(text);
    if (isAscii(text, length)) return jenv->NewStringUTF(text);
    const auto *bytes = reinterpret_cast<const unsigned char *>(text);
    for (std::size_t i = 0; i < length;) {
        const Sequence s = sequenceAt(bytes + i);
        if (!s.wellFormed || s.length == 4) return jenv->NewStringUTF(toModifiedUtf8(text, i).c_str());
        i += static_cast<std::size_t>(s.length);
    }
    return jenv->NewStringUTF(text);
}

jobjectArray newStringArray(JNIEnv *jenv, jsize count) {
    jclass element = state::stringClass();
    return element ? jenv->NewObjectArray(count, element, nullptr) : nullptr;
}

bool fillStringArray(JNIEnv *jenv, jobjectArray array, int count, ListSource &source) {
    // The strings of up to kStringsPerFrame slots live in one local frame,
    // released at once when it is popped: one push and one pop instead of a
    // deletion per string, and a capacity that stays small for any list.
    constexpr int kStringsPerFrame = 64;
    for (int i = 0; i < count;) {
        const int end = count - i > kStringsPerFrame ? i + kStringsPerFrame : count;
        if (jenv->PushLocalFrame(end - i) != 0) return false;
        for (; i < end; ++i) {
            const char *text = source.next();
            jstring element = newJavaString(jenv, text);
            // A string the runtime could not make ends the list with its
            // exception pending; a null text leaves its slot null.
            if (!element && text) {
                jenv->PopLocalFrame(nullptr);
                return false;
            }
            if (element) jenv->SetObjectArrayElement(array, i, element);
        }
        jenv->PopLocalFrame(nullptr);
    }
    return true;
}

void StringOut::write(std::string_view bytes) {
    std::memcpy(buf_, bytes.data(), bytes.size());
    buf_[bytes.size()] = '\0';
}

void StringOut::writeEmptyIfRoom() {
    if (capacity_ > 0) buf_[0] = '\0';
}

int deliverText(std::string_view text, StringOut &out) {
    out.setLength(text.size() + 1);
    if (out.capacity() < text.size() + 1) return VELMORA_STATUS_BUFFER_TOO_SMALL;
    out.write(text);
    return VELMORA_STATUS_OK;
}

int deliverString(JNIEnv *jenv, jstring text, StringOut &out, NullRule rule) {
    if (!text) {
        if (rule == NullRule::NoText) {
            out.setLength(0);
            return VELMORA_STATUS_OK;
        }
        out.setLength(1);
        if (out.capacity() == 0) return VELMORA_STATUS_BUFFER_TOO_SMALL;
        out.writeEmptyIfRoom();
        return VELMORA_STATUS_OK;
    }
    // The length alone decides whether the text fits; the bytes are converted
    // straight into the caller's buffer.
    const std::size_t bytes = utfLength(jenv, text);
    out.setLength(bytes + 1);
    if (out.capacity() < bytes + 1) return VELMORA_STATUS_BUFFER_TOO_SMALL;
    jenv->GetStringUTFRegion(text, 0, jenv->GetStringLength(text), out.buffer());
    out.buffer()[bytes] = '\0';
    return VELMORA_STATUS_OK;
}

int deliverNotInitializedText(StringOut &out) {
    out.setLength(kNotInitializedBytes);
    if (out.capacity() >= kNotInitializedBytes) {
        out.write(kNotInitializedText);
        out.buffer()[kNotInitializedBytes - 1] = '\0';
    }
    return VELMORA_STATUS_JAVA_NOT_INITIALIZED;
}

}  // namespace velmora
