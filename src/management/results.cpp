// Results and statistics: downloading and unpacking results, streaming, the
// result directory and files, the two walks over result file names, used
// time, and statistics.
#include "bridge/frame.hpp"

using namespace velmora;

extern "C" {

VELMORA_API int velmora_downloadResult(int handle) { return forwardInt<calls::downloadResult>(handle); }
// The partial download is the boolean overload, always with true.
VELMORA_API int velmora_downloadPartialResult(int handle) {
    return forwardInt<calls::downloadPartialResult>(handle, Flag{JNI_TRUE});
}
VELMORA_API int velmora_setDownloadDir(int handle, const char *dir) {
    return forwardInt<calls::setDownloadDir>(handle, dir);
}
VELMORA_API int velmora_setUnzipDir(int handle, const char *dir) { return forwardInt<calls::setUnzipDir>(handle, dir); }
VELMORA_API int velmora_unzip(int handle) { return forwardInt<calls::unzip>(handle); }
VELMORA_API int velmora_unzipFile(const char *first, const char *second, const char *third) {
    return forwardInt<calls::unzipFile>(first, second, third);
}
VELMORA_API int velmora_setStreamResults(int handle, unsigned char flag) {
    return forwardInt<calls::setStreamResults>(handle, flag);
}
VELMORA_API int velmora_getStreamedResultFilesCount(int handle) {
    return forwardInt<calls::getStreamedResultFilesCount>(handle);
}

VELMORA_API int velmora_getResultDirectory(int handle, char *buf, size_t *len) {
    return forward<calls::getResultDirectory>(plain(buf, len), handle);
}
VELMORA_API int velmora_getResultFile(int handle, char *buf, size_t *len) {
    return forward<calls::getResultFile>(plain(buf, len), handle);
}
VELMORA_API int velmora_getProjectStatistic(int handle, const char *name, char *buf, size_t *len) {
    return forward<calls::getProjectStatistic>(plain(buf, len), handle, name);
}
VELMORA_API int velmora_getStatisticsString(int handle, char *buf, size_t *len) {
    return forward<calls::getStatisticsString>(zeroOnNull(buf, len), handle);
}

VELMORA_API int velmora_getResultFiles(int handle, int *index, char *buf, size_t *len) {
    return forwardIndexedName<calls::getResultFileCount, calls::getResultFileName>(handle, index, buf, len);
}
VELMORA_API int velmora_getStreamedResultFiles(int handle, int *index, char *buf, size_t *len) {
    return forwardIndexedName<calls::getStreamedResultFilesCount, calls::getStreamedResultFileName>(handle, index,
                                                                                                  buf, len);
}

VELMORA_API int64_t velmora_getUsedCpuTime(int handle) { return forwardLong<calls::getUsedCpuTime>(handle); }
VELMORA_API int64_t velmora_getUsedTime(int handle) { return forwardLong<calls::getUsedTime>(handle); }

VELMORA_API int velmora_printStatistics(int handle) { return forwardVoid<calls::printStatistics>(handle); }

}  // extern "C"
