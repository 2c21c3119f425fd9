// Peach run settings and the project queries of a peach description.
#include "bridge/frame.hpp"

using namespace velmora;

extern "C" {

VELMORA_API int velmora_peach_setName(int handle, const char *text) {
    return forwardVoid<calls::peach_setName>(handle, text);
}
VELMORA_API int velmora_peach_setStateDir(int handle, const char *text) {
    return forwardVoid<calls::peach_setStateDir>(handle, text);
}
VELMORA_API int velmora_peach_setDescription(int handle, const char *text) {
    return forwardVoid<calls::peach_setDescription>(handle, text);
}
VELMORA_API int velmora_peach_setMessages(int handle, unsigned char flag) {
    return forwardVoid<calls::peach_setMessages>(handle, flag);
}
VELMORA_API int velmora_peach_setPriorityI(int handle, int priority) {
    return forwardVoid<calls::peach_setPriorityI>(handle, priority);
}
VELMORA_API int velmora_peach_setPriority(int handle, const char *text) {
    return forwardVoid<calls::peach_setPriority>(handle, text);
}
VELMORA_API int velmora_peach_setProjectId(int handle, int projectId) {
    return forwardVoid<calls::peach_setProjectId>(handle, projectId);
}
VELMORA_API int velmora_peach_setResultFile(int handle, const char *text) {
    return forwardVoid<calls::peach_setResultFile>(handle, text);
}
VELMORA_API int velmora_peach_setJobs(int handle, int jobs) {
    return forwardVoid<calls::peach_setJobs>(handle, jobs);
}
VELMORA_API int velmora_peach_setAllowPartial(int handle, unsigned char flag) {
    return forwardVoid<calls::peach_setAllowPartial>(handle, flag);
}
VELMORA_API int velmora_peach_setRemove(int handle, unsigned char flag) {
    return forwardVoid<calls::peach_setRemove>(handle, flag);
}
VELMORA_API int velmora_peach_setCleanup(int handle, unsigned char flag) {
    return forwardVoid<calls::peach_setCleanup>(handle, flag);
}
VELMORA_API int velmora_peach_setClose(int handle, unsigned char flag) {
    return forwardVoid<calls::peach_setClose>(handle, flag);
}
VELMORA_API int velmora_peach_setStream(int handle, unsigned char flag) {
    return forwardVoid<calls::peach_setStream>(handle, flag);
}

VELMORA_API int velmora_peach_getProjectHandle(int handle) {
    return forwardInt<calls::peach_getProjectHandle>(handle);
}
VELMORA_API int velmora_peach_getProjectId(int handle) { return forwardInt<calls::peach_getProjectId>(handle); }

}  // extern "C"
