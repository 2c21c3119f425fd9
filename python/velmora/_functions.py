"""The binding's one table: every function that velmora.h declares.

Each line is ``shape  C prototype``. The prototype gives the Python name (the C
name without ``velmora_``), the parameters and their C types; the shape says
how the result reaches Python:

  init     an initialiser: the Java initialiser's int; start-up codes raise
  int      a Java int; -11, -12 and -13 raise (the codes a forwarding call gives)
  long     a Java long, the same codes raise
  bool     a Java boolean: True or False; a negative result raises
  none     a void Java method: None; a negative result raises
  text     a string result: str; a negative result raises
  text?    a string result that may be "no text": str or None
  walk     an indexed name result: an iterator over the collection's names
  peach    the peach handle of a new description (the Peach class)
  handler  the intermediate-result handler, any Python callable or None
  path     the 4,096-byte path buffer: str, or None when nothing was found
  plugin   a JNI reference handed out through a pointer: int
  raw      the C result as it is (an address as int or None, a text as str)
  form     the variadic or va_list form of a string-list call: Python calls
           the array form (suffix 3) of the same stem instead
  native   not for hosts: the JVM calls it

Parameters named count (count1, count2) before a ``const char **`` become one
iterable of str per count; ``char *buf, size_t *len``, ``int *index``,
``char *path`` and ``jobject *plugin`` are filled by the binding. Functions
whose name starts with ``velmora_peach_`` are the methods of velmora.Peach.
tests/python checks this table against include/velmora.h.
"""

FUNCTIONS = """
# Start-up and initialisation
init    int velmora_initJava(void)
init    int velmora_init(void)
init    int velmora_initFile(const char *file)
init    int velmora_initFileWithPassword(const char *file, const char *password)
init    int velmora_initWithoutFile(const char *s1, const char *s2, const char *s3, const char *s4, int i5, const char *s6, const char *s7, int i8, int i9, const char *s10, const char *s11)
path    int velmora_findJavaInPath(char *path)

# Unloading and runtime access
int     int velmora_unload(unsigned char flag)
int     int velmora_unload2(unsigned char flag1, unsigned char flag2)
int     int velmora_unload3(unsigned char flag1, unsigned char flag2)
raw     JNIEnv *velmora_getJNIEnv(void)
raw     JavaVM *velmora_getJavaVM(void)
text    int velmora_getTempDir(char *buf, size_t *len)
text?   int velmora_getJavaSystemProperty(const char *name, char *buf, size_t *len)
plugin  int velmora_getPlugin(const char *name, jobject *plugin)
raw     jclass velmora_getPluginClass(const char *name)
text    int velmora_getPluginConf(const char *plugin, const char *key, char *buf, size_t *len)

# Status texts, open, close and diagnostics
text    int velmora_describeStatusCode(int code, char *buf, size_t *len)
int     int velmora_open(void)
int     int velmora_ready(int handle)
int     int velmora_close(int handle)
int     int velmora_getLastError(int handle)
int     int velmora_setLogLevel(const char *level)
int     int velmora_stopWaitingBG(int handle)
text    int velmora_getLastErrorMessage(char *buf, size_t *len)
text    int velmora_getUserLogin(char *buf, size_t *len)
bool    int velmora_actionWait(int64_t value)
raw     void velmora_debug(void)
raw     void velmora_debug2(void)

# Bundles
form    int velmora_createBundle(int handle, const char *s1, const char *s2, const char *s3, const char *s4, const char *s5, const char *s6, const char *s7, const char *s8, const char *s9, int count1, int count2, ...)
form    int velmora_createBundle2(int handle, const char *s1, const char *s2, const char *s3, const char *s4, const char *s5, const char *s6, const char *s7, const char *s8, const char *s9, int count1, int count2, va_list strings)
int     int velmora_createBundle3(int handle, const char *s1, const char *s2, const char *s3, const char *s4, const char *s5, const char *s6, const char *s7, const char *s8, const char *s9, int count1, int count2, const char **list)
form    int velmora_createSignedBundle(int handle, const char *s1, const char *s2, const char *s3, const char *s4, const char *s5, const char *s6, const char *s7, const char *s8, const char *s9, const char *s10, const char *s11, int count1, int count2, ...)
form    int velmora_createSignedBundle2(int handle, const char *s1, const char *s2, const char *s3, const char *s4, const char *s5, const char *s6, const char *s7, const char *s8, const char *s9, const char *s10, const char *s11, int count1, int count2, va_list strings)
int     int velmora_createSignedBundle3(int handle, const char *s1, const char *s2, const char *s3, const char *s4, const char *s5, const char *s6, const char *s7, const char *s8, const char *s9, const char *s10, const char *s11, int count1, int count2, const char **list)
int     int velmora_uploadBundle(int handle)
int     int velmora_uploadBundleWithName(int handle, const char *name)
int     int velmora_approveUploadedBundles(int handle)
int     int velmora_useBundle(int handle, const char *name)
int     int velmora_useBundleWithPrefix(int handle, const char *first, const char *second)
int     int velmora_getBundleId(int handle)
int     int velmora_setBundleId(int handle, int bundleId)
int     int velmora_signJar(const char *first, const char *second)
bool    int velmora_bundleExists(const char *name)
bool    int velmora_bundleVersionExists(const char *first, const char *second)
bool    int velmora_bundleWithPrefixExists(const char *first, const char *second)
text?   int velmora_getLastCreatedBundleName(int handle, char *buf, size_t *len)

# Projects and jobs
form    int velmora_createProject(int handle, int second, const char *text, int count, ...)
form    int velmora_createProject2(int handle, int second, const char *text, int count, va_list strings)
int     int velmora_createProject3(int handle, int second, const char *text, int count, const char **list)
form    int velmora_setProjectParams(int handle, int count, ...)
form    int velmora_setProjectParams2(int handle, int count, va_list strings)
int     int velmora_setProjectParams3(int handle, int count, const char **list)
form    int velmora_createProjectJobs(int handle, int count, ...)
form    int velmora_createProjectJobs2(int handle, int count, va_list strings)
int     int velmora_createProjectJobs3(int handle, int count, const char **list)
form    int velmora_createJob(int handle, int count, ...)
form    int velmora_createJob2(int handle, int count, va_list strings)
int     int velmora_createJob3(int handle, int count, const char **list)
form    int velmora_createCachedJob(int handle, int count, ...)
form    int velmora_createCachedJob2(int handle, int count, va_list strings)
int     int velmora_createCachedJob3(int handle, int count, const char **list)
int     int velmora_createEmptyProject(int handle, int second, const char *text)
int     int velmora_flushCachedJobs(int handle)
int     int velmora_markAllJobsCreated(int handle)
int     int velmora_addUserClientsToProject(int handle)
int     int velmora_startProject(int handle)
int     int velmora_stopProject(int handle)
int     int velmora_removeProject(int handle)
int     int velmora_cleanup(int handle, int second)
int     int velmora_waitCompletion(int handle)
int     int velmora_waitCompletionBG(int handle)
int     int velmora_getProjectId(int handle)
int     int velmora_setProjectId(int handle, int projectId)
int     int velmora_getProjectStatus(int handle)
int     int velmora_getProjectParamCount(int handle)
int     int velmora_sendJobPostParameter(int handle, int64_t job, const char *text)
bool    int velmora_isCompleted(int handle)
bool    int velmora_isFailed(int handle)
bool    int velmora_isJobCompleted(int handle, int64_t job)
text    int velmora_getProjectDescription(int handle, char *buf, size_t *len)
text    int velmora_getProjectParamValue(int handle, const char *name, char *buf, size_t *len)
walk    int velmora_getProjectParamName(int handle, int *index, char *buf, size_t *len)

# Results and statistics
int     int velmora_downloadResult(int handle)
int     int velmora_downloadPartialResult(int handle)
int     int velmora_setDownloadDir(int handle, const char *dir)
int     int velmora_setUnzipDir(int handle, const char *dir)
int     int velmora_unzip(int handle)
int     int velmora_unzipFile(const char *first, const char *second, const char *third)
int     int velmora_setStreamResults(int handle, unsigned char flag)
int     int velmora_getStreamedResultFilesCount(int handle)
text    int velmora_getResultDirectory(int handle, char *buf, size_t *len)
text    int velmora_getResultFile(int handle, char *buf, size_t *len)
text    int velmora_getProjectStatistic(int handle, const char *name, char *buf, size_t *len)
text?   int velmora_getStatisticsString(int handle, char *buf, size_t *len)
walk    int velmora_getResultFiles(int handle, int *index, char *buf, size_t *len)
walk    int velmora_getStreamedResultFiles(int handle, int *index, char *buf, size_t *len)
long    int64_t velmora_getUsedCpuTime(int handle)
long    int64_t velmora_getUsedTime(int handle)
none    int velmora_printStatistics(int handle)

# One-call peach
form    int velmora_peach(int count, ...)
form    int velmora_peach2(int count, va_list strings)
int     int velmora_peach3(int count, const char **list)
text?   int velmora_peachNextFile(int handle, char *buf, size_t *len)
none    int velmora_peachDone(int handle)

# Peach builder: the methods of velmora.Peach
peach   int velmora_peach_handle(void)
none    int velmora_peach_setName(int handle, const char *text)
none    int velmora_peach_setStateDir(int handle, const char *text)
none    int velmora_peach_setDescription(int handle, const char *text)
none    int velmora_peach_setMessages(int handle, unsigned char flag)
none    int velmora_peach_setPriorityI(int handle, int priority)
none    int velmora_peach_setPriority(int handle, const char *text)
none    int velmora_peach_setProjectId(int handle, int projectId)
none    int velmora_peach_setResultFile(int handle, const char *text)
none    int velmora_peach_setJobs(int handle, int jobs)
none    int velmora_peach_setAllowPartial(int handle, unsigned char flag)
none    int velmora_peach_setRemove(int handle, unsigned char flag)
none    int velmora_peach_setCleanup(int handle, unsigned char flag)
none    int velmora_peach_setClose(int handle, unsigned char flag)
none    int velmora_peach_setStream(int handle, unsigned char flag)
int     int velmora_peach_getProjectHandle(int handle)
int     int velmora_peach_getProjectId(int handle)
none    int velmora_peach_addSourceFile(int handle, const char *text)
none    int velmora_peach_putSourceExtras(int handle, const char *text1, const char *text2)
bool    int velmora_peach_sourcesChanged(int handle)
none    int velmora_peach_setExeBundleName(int handle, const char *text)
none    int velmora_peach_setExecutable(int handle, const char *text)
none    int velmora_peach_setExeSkipDigest(int handle, unsigned char flag)
none    int velmora_peach_addExeFile(int handle, const char *text1, const char *text2, const char *text3, const char *text4)
none    int velmora_peach_putExeExtras(int handle, const char *text1, const char *text2)
none    int velmora_peach_addExeImport(int handle, const char *text)
none    int velmora_peach_addOutputFile(int handle, const char *text)
none    int velmora_peach_newDataBundle(int handle)
none    int velmora_peach_newDataBundleWithName(int handle, const char *text)
none    int velmora_peach_setDataSkipDigest(int handle, unsigned char flag)
none    int velmora_peach_addDataFile(int handle, const char *text)
none    int velmora_peach_addDataFileWithDir(int handle, const char *text1, const char *text2)
none    int velmora_peach_putDataExtras(int handle, const char *text1, const char *text2)
none    int velmora_peach_setDataCopy(int handle, unsigned char flag)
none    int velmora_peach_setJobSkipDigest(int handle, unsigned char flag)
form    int velmora_peach_setJobFileNames(int handle, int count, ...)
none    int velmora_peach_setJobFileNames3(int handle, int count, const char **list)
form    int velmora_peach_addJobFile(int handle, int count, ...)
none    int velmora_peach_addJobFile3(int handle, int count, const char **list)
form    int velmora_peach_addJobFileWithDir(int handle, const char *dir, int count, ...)
none    int velmora_peach_addJobFileWithDir3(int handle, const char *dir, int count, const char **list)
none    int velmora_peach_putJobExtras(int handle, const char *text1, const char *text2)
none    int velmora_peach_setParamSkipDigest(int handle, unsigned char flag)
none    int velmora_peach_addParamFile(int handle, const char *text)
none    int velmora_peach_addParamFileWithDir(int handle, const char *text1, const char *text2)
none    int velmora_peach_addParamFileWithTarget(int handle, const char *text1, const char *text2)
none    int velmora_peach_putParamExtras(int handle, const char *text1, const char *text2)
none    int velmora_peach_addParamExternalResource(int handle, const char *text)
none    int velmora_peach_setParamCopy(int handle, unsigned char flag)
none    int velmora_peach_putProjectParam(int handle, const char *text1, const char *text2)
int     int velmora_peach_execute(int handle)
text?   int velmora_peach_nextFile(int handle, char *buf, size_t *len)
none    int velmora_peach_postProcessed(int handle, int value)
none    int velmora_peach_done(int handle)
text?   int velmora_peach_getLastErrorMessage(int handle, char *buf, size_t *len)
handler int velmora_peach_setIntermediateResultHandler(int handle, velmora_intermediate_callback callback)
native  void velmora_peach_intermediate_callback(JNIEnv *jenv, jobject self, jstring text)
"""

# The library's own extensions beyond the SDK's calls: a library that lacks
# them still loads (Error.failure is then empty).
EXTENSIONS = """
text    int velmora_describeLastFailure(char *buf, size_t *len)
raw     const char *velmora_libraryVersion(void)
"""
