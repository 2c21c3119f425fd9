// Projects and jobs: creation, parameters, jobs from string lists, the
// project's life cycle, its state, and its description and parameters.
//
// Five methods take a String[] as their last argument; each is reached by a
// variadic, a va_list (suffix 2) and an array (suffix 3) form.
#include "bridge/frame.hpp"

using namespace velmora;

extern "C" {

// ---- string-list stems ------------------------------------------------------

VELMORA_API int velmora_createProject2(int handle, int second, const char *text, int count,
                                       va_list strings) {
    return forwardList<calls::createProject>(ListSource(strings), count, handle, second, text);
}
VELMORA_API int velmora_createProject3(int handle, int second, const char *text, int count,
                                       const char **list) {
    return forwardList<calls::createProject>(ListSource(list), count, handle, second, text);
}
VELMORA_API int velmora_createProject(int handle, int second, const char *text, int count, ...) {
    VELMORA_WITH_VA_LIST(count, velmora_createProject2(handle, second, text, count, strings));
}

VELMORA_API int velmora_setProjectParams2(int handle, int count, va_list strings) {
    return forwardList<calls::setProjectParams>(ListSource(strings), count, handle);
}
VELMORA_API int velmora_setProjectParams3(int handle, int count, const char **list) {
    return forwardList<calls::setProjectParams>(ListSource(list), count, handle);
}
VELMORA_API int velmora_setProjectParams(int handle, int count, ...) {
    VELMORA_WITH_VA_LIST(count, velmora_setProjectParams2(handle, count, strings));
}

VELMORA_API int velmora_createProjectJobs2(int handle, int count, va_list strings) {
    return forwardList<calls::createProjectJobs>(ListSource(strings), count, handle);
}
VELMORA_API int velmora_createProjectJobs3(int handle, int count, const char **list) {
    return forwardList<calls::createProjectJobs>(ListSource(list), count, handle);
}
VELMORA_API int velmora_createProjectJobs(int handle, int count, ...) {
    VELMORA_WITH_VA_LIST(count, velmora_createProjectJobs2(handle, count, strings));
}

VELMORA_API int velmora_createJob2(int handle, int count, va_list strings) {
    return forwardList<calls::createJob>(ListSource(strings), count, handle);
}
VELMORA_API int velmora_createJob3(int handle, int count, const char **list) {
    return forwardList<calls::createJob>(ListSource(list), count, handle);
}
VELMORA_API int velmora_createJob(int handle, int count, ...) {
    VELMORA_WITH_VA_LIST(count, velmora_createJob2(handle, count, strings));
}

VELMORA_API int velmora_createCachedJob2(int handle, int count, va_list strings) {
    return forwardList<calls::createCachedJob>(ListSource(strings), count, handle);
}
VELMORA_API int velmora_createCachedJob3(int handle, int count, const char **list) {
    return forwardList<calls::createCachedJob>(ListSource(list), count, handle);
}
VELMORA_API int velmora_createCachedJob(int handle, int count, ...) {
    VELMORA_WITH_VA_LIST(count, velmora_createCachedJob2(handle, count, strings));
}

// ---- plain forwarders -------------------------------------------------------

VELMORA_API int velmora_createEmptyProject(int handle, int second, const char *text) {
    return forwardInt<calls::createEmptyProject>(handle, second, text);
}

VELMORA_API int velmora_flushCachedJobs(int handle) { return forwardInt<calls::flushCachedJobs>(handle); }
VELMORA_API int velmora_markAllJobsCreated(int handle) { return forwardInt<calls::markAllJobsCreated>(handle); }
VELMORA_API int velmora_addUserClientsToProject(int handle) {
    return forwardInt<calls::addUserClientsToProject>(handle);
}
VELMORA_API int velmora_startProject(int handle) { return forwardInt<calls::startProject>(handle); }
VELMORA_API int velmora_stopProject(int handle) { return forwardInt<calls::stopProject>(handle); }
VELMORA_API int velmora_removeProject(int handle) { return forwardInt<calls::removeProject>(handle); }
VELMORA_API int velmora_cleanup(int handle, int second) { return forwardInt<calls::cleanup>(handle, second); }
VELMORA_API int velmora_waitCompletion(int handle) { return forwardInt<calls::waitCompletion>(handle); }
VELMORA_API int velmora_waitCompletionBG(int handle) { return forwardInt<calls::waitCompletionBG>(handle); }
VELMORA_API int velmora_getProjectId(int handle) { return forwardInt<calls::getProjectId>(handle); }
VELMORA_API int velmora_setProjectId(int handle, int projectId) {
    return forwardInt<calls::setProjectId>(handle, projectId);
}
VELMORA_API int velmora_getProjectStatus(int handle) { return forwardInt<calls::getProjectStatus>(handle); }
VELMORA_API int velmora_getProjectParamCount(int handle) {
    return forwardInt<calls::getProjectParamCount>(handle);
}
VELMORA_API int velmora_sendJobPostParameter(int handle, int64_t job, const char *text) {
    return forwardInt<calls::sendJobPostParameter>(handle, job, text);
}

VELMORA_API int velmora_isCompleted(int handle) { return forwardBool<calls::isCompleted>(handle); }
VELMORA_API int velmora_isFailed(int handle) { return forwardBool<calls::isFailed>(handle); }
VELMORA_API int velmora_isJobCompleted(int handle, int64_t job) {
    return forwardBool<calls::isJobCompleted>(handle, job);
}

// ---- string results ---------------------------------------------------------

VELMORA_API int velmora_getProjectDescription(int handle, char *buf, size_t *len) {
    return forward<calls::getProjectDescription>(plain(buf, len), handle);
}
VELMORA_API int velmora_getProjectParamValue(int handle, const char *name, char *buf, size_t *len) {
    return forward<calls::getProjectParamValue>(plain(buf, len), handle, name);
}
VELMORA_API int velmora_getProjectParamName(int handle, int *index, char *buf, size_t *len) {
    return forwardIndexedName<calls::getProjectParamCount, calls::getProjectParamName>(handle, index, buf, len);
}

}  // extern "C"
