#include "bridge/frame.hpp"

namespace velmora {

int indexedName(const CallRow &count, state::MethodSlot &countSlot, const CallRow &name,
                state::MethodSlot &nameSlot, int handle, int *index, char *buf, std::size_t *len) {
    StringOut out(buf, len);
    if (!state::managementReady()) return kNotInitialized;
    JNIEnv *e = state::attachCurrentThread();
    if (!e) return kNotInitialized;

    e->ExceptionClear();  // whatever the host left pending, before any lookup
    jclass klass = state::managementClass();
    jmethodID countMethod = detail::resolve(e, klass, count, countSlot);
    jmethodID nameMethod = countMethod ? detail::resolve(e, klass, name, nameSlot) : nullptr;
    if (!nameMethod) {
        e->ExceptionClear();
        return kMethodNotFound;
    }

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
    if (text) e->DeleteLocalRef(text);
    if (status == kBufferTooSmall) {
        out.writeEmptyIfRoom();
        return status;
    }
    *index = size;
    return status;
}

}  // namespace velmora
