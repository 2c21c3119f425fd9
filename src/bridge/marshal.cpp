#include "bridge/marshal.hpp"

#include <cstring>
#include <string>

namespace velmora {

namespace {

// Re-encodes every 4-byte UTF-8 sequence of `text` as two 3-byte surrogate
// encodings; everything else is copied as it is.
std::string toModifiedUtf8(const char *text) {
    std::string out;
    const auto *p = reinterpret_cast<const unsigned char *>(text);
    while (*p) {
        if ((p[0] & 0xF8) == 0xF0 && (p[1] & 0xC0) == 0x80 && (p[2] & 0xC0) == 0x80 &&
            (p[3] & 0xC0) == 0x80) {
            std::uint32_t cp = (std::uint32_t(p[0] & 0x07) << 18) | (std::uint32_t(p[1] & 0x3F) << 12) |
                               (std::uint32_t(p[2] & 0x3F) << 6) | std::uint32_t(p[3] & 0x3F);
            cp -= 0x10000;
            for (std::uint32_t unit : {0xD800 + (cp >> 10), 0xDC00 + (cp & 0x3FF)}) {
                out += char(0xE0 | (unit >> 12));
                out += char(0x80 | ((unit >> 6) & 0x3F));
                out += char(0x80 | (unit & 0x3F));
            }
            p += 4;
        } else {
            out += char(*p++);
        }
    }
    return out;
}

constexpr char kNotInitializedText[] = "No Error Message available; Java is not initialized.";
constexpr std::size_t kNotInitializedBytes = sizeof kNotInitializedText + 1;  // two NULs
static_assert(kNotInitializedBytes == 54);

}  // namespace

jstring newJavaString(JNIEnv *jenv, const char *text) {
    if (!text) return nullptr;
    for (const char *p = text; *p; ++p) {
        if ((static_cast<unsigned char>(*p) & 0xF8) == 0xF0) return jenv->NewStringUTF(toModifiedUtf8(text).c_str());
    }
    return jenv->NewStringUTF(text);
}

jobjectArray newStringArray(JNIEnv *jenv, jsize count) {
    jstring empty = jenv->NewStringUTF("");
    jclass stringClass = jenv->FindClass("java/lang/String");
    jobjectArray array = stringClass ? jenv->NewObjectArray(count, stringClass, empty) : nullptr;
    jenv->DeleteLocalRef(stringClass);
    jenv->DeleteLocalRef(empty);
    return array;
}

void fillStringArray(JNIEnv *jenv, jobjectArray array, int count, ListSource &source) {
    for (int i = 0; i < count; ++i) {
        jstring element = newJavaString(jenv, source.next());
        jenv->SetObjectArrayElement(array, i, element);
        if (element) jenv->DeleteLocalRef(element);
    }
}

void StringOut::write(std::string_view bytes) {
    std::memcpy(buf_, bytes.data(), bytes.size());
    buf_[bytes.size()] = '\0';
}

void StringOut::writeEmptyIfRoom() {
    if (capacity_ > 0) buf_[0] = '\0';
}

int deliverString(JNIEnv *jenv, jstring text, StringOut &out, NullRule rule) {
    if (!text) {
        if (rule == NullRule::NoText) {
            out.setLength(0);
            return kOk;
        }
        out.setLength(1);
        if (out.capacity() == 0) return kBufferTooSmall;
        out.writeEmptyIfRoom();
        return kOk;
    }
    // The length alone decides whether the text fits; the bytes are converted
    // straight into the caller's buffer.
    const std::size_t bytes = static_cast<std::size_t>(jenv->GetStringUTFLength(text));
    out.setLength(bytes + 1);
    if (out.capacity() < bytes + 1) return kBufferTooSmall;
    jenv->GetStringUTFRegion(text, 0, jenv->GetStringLength(text), out.buffer());
    out.buffer()[bytes] = '\0';
    return kOk;
}

int deliverNotInitializedText(StringOut &out) {
    out.setLength(kNotInitializedBytes);
    if (out.capacity() >= kNotInitializedBytes) {
        out.write(kNotInitializedText);
        out.buffer()[kNotInitializedBytes - 1] = '\0';
    }
    return kNotInitialized;
}

}  // namespace velmora
