#include "bridge/frame.hpp"

namespace velmora {

int indexedName(const CallRow &count, const CallRow &name, int handle, int *index, char *buf,
                std::size_t *len) {
    StringOut out(buf, len);
    if (!state::managementReady()) return kNotInitialized;
    CallScope scope(8);
    if (const int status = scope.status(); status != kOk) return status;
    JNIEnv *e = scope.env();

    jclass klass = state::managementClass();
    jmethodID countMethod = e->GetMethodID(klass, count.method, count.signature);
    jmethodID nameMethod = countMethod ? e->GetMethodID(klass, name.method, name.signature) : nullptr;
    if (!nameMethod) {
        e->ExceptionClear();
        return kMethodNotFound;
    }
    e->ExceptionClear();

    jobject target = state::management();
    const jint size = e->CallIntMethod(target, countMethod, static_cast<jint>(handle));
    if (takeException(e)) return kJavaException;

    // A null index pointer reads as a position outside the collection.
    const bool inRange = index && *index >= 0 && *index < size;
    if (!inRange) {
        out.writeEmptyIfRoom();
        out.setLength(1);
        if (index) *index = size;
        return kIndexOutOfBounds;
    }

    auto text = static_cast<jstring>(e->CallObjectMethod(target, nameMethod, static_cast<jint>(handle), *index));
    if (takeException(e)) return kJavaException;
    const int status = deliverString(e, text, out, NullRule::EmptyString);
    if (status == kBufferTooSmall) {
        out.writeEmptyIfRoom();
        return status;
    }
    *index = size;
    return status;
}

}  // namespace velmora
