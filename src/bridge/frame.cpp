#include "bridge/frame.hpp"

namespace velmora {

int indexedName(const CallRow &count, state::MethodSlot &countSlot, const CallRow &name,
                state::MethodSlot &nameSlot, int handle, int *index, char *buf, std::size_t *len) {
    StringOut out(buf, len);
    JNIEnv *e = enter<Target::Management>();
    if (!e) return VELMORA_STATUS_JAVA_NOT_INITIALIZED;

    jclass klass = state::managementClass();
    jmethodID countMethod = detail::resolve(e, klass, count, countSlot);
    if (!countMethod) return failure::methodNotFound(e, count);
    jmethodID nameMethod = detail::resolve(e, klass, name, nameSlot);
    if (!nameMethod) return failure::methodNotFound(e, name);

    jobject target = state::management();
    const jint size = e->CallIntMethod(target, countMethod, static_cast<jint>(handle));
    if (takeException(e)) return VELMORA_STATUS_JAVA_EXCEPTION;

    // A null index pointer reads as a position outside the collection.
    const bool inRange = index && *index >= 0 && *index < size;
    if (!inRange) {
        out.writeEmptyIfRoom();
        out.setLength(1);
        if (index) *index = size;
        return VELMORA_STATUS_FILE_INDEX_OUT_OF_BOUNDS;
    }

    auto text = static_cast<jstring>(e->CallObjectMethod(target, nameMethod, static_cast<jint>(handle), *index));
    if (takeException(e)) return VELMORA_STATUS_JAVA_EXCEPTION;
    const int status = deliverString(e, text, out, NullRule::EmptyString);
    if (text) e->DeleteLocalRef(text);
    if (status == VELMORA_STATUS_BUFFER_TOO_SMALL) {
        out.writeEmptyIfRoom();
        return status;
    }
    *index = size;
    return status;
}

}  // namespace velmora
