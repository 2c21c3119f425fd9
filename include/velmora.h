/*
 * velmora.h - C interface of libvelmora, the native bridge to the Velmora
 * distributed-computing service.
 *
 * The library embeds a Java virtual machine and turns every function below
 * into one call of one method of the Velmora Java SDK (velmora.jar, which lies
 * with commons-codec-1.3.jar and xmlrpc-2.0.jar beside the library file).
 *
 * Conventions shared by every function:
 *  - Results are status codes (velmora_status below) or the Java method's own
 *    result passed through unchanged: a Java int as int, a Java boolean as
 *    1 or 0, a Java long as a signed 64-bit value, a void method as 0.
 *    A Java result equal to a status code cannot be told apart from it.
 *  - Every forwarding function returns VELMORA_STATUS_JAVA_NOT_INITIALIZED
 *    before an initialiser has run, VELMORA_STATUS_METHOD_NOT_FOUND when the
 *    SDK lacks the method with that exact name and JNI signature, and
 *    VELMORA_STATUS_JAVA_EXCEPTION when the Java method threw (the JVM prints
 *    the exception on its error stream and it is cleared). A Java exception
 *    that the host left pending on the calling thread is discarded by every
 *    call that gets past the not-initialised test, before any other JNI call.
 *  - Texts are NUL-terminated byte strings in the JVM's modified UTF-8; plain
 *    UTF-8 is accepted too (characters outside the Basic Multilingual Plane are
 *    re-encoded, never dropped), and each maximal ill-formed subsequence
 *    reaches Java as one U+FFFD. A null text pointer reaches Java as null. A
 *    text or string list that the Java heap cannot hold gives
 *    VELMORA_STATUS_JAVA_EXCEPTION without calling Java; nothing is left
 *    pending.
 *  - String lists come in three forms under one stem: the plain name takes
 *    the strings as variadic const char * arguments after the count, suffix 2
 *    takes a va_list, suffix 3 a const char ** array. A count of 0 passes an
 *    empty Java array. A negative count, or a null array with a positive
 *    count, is rejected with VELMORA_STATUS_JAVA_EXCEPTION before Java is
 *    called. A null element reaches Java as a null array slot.
 *  - String results are copied into a caller buffer: buf (capacity on entry
 *    in *len) and len (on return, the bytes the text needs including its NUL).
 *    A text that does not fit gives VELMORA_STATUS_BUFFER_TOO_SMALL and leaves
 *    buf untouched, so a call with *len == 0 asks for the size. What a null
 *    Java string yields is named per function:
 *      empty-on-null: an empty string, *len 1 (BUFFER_TOO_SMALL if capacity 0);
 *      zero-on-null:  0 with *len 0, buf untouched ("no text");
 *      plain:         as empty-on-null.
 *    A null buf is treated as capacity 0 (nothing is ever written through it);
 *    a null len is treated as capacity 0 and the needed size is not reported.
 *  - Indexed name results (one name of a collection per call) take an in/out
 *    index: on entry the 0-based position, on success and on
 *    VELMORA_STATUS_FILE_INDEX_OUT_OF_BOUNDS it is set to the collection's
 *    size (pass -1 to learn the size). On out-of-range and on too-small, buf
 *    holds "" when its capacity is not 0. A null name from Java is delivered
 *    as "". A null index pointer reads as out of range and is not written.
 *  - Any thread may call any function, and no call takes a lock. The first
 *    call on a thread attaches it to the JVM: as a daemon thread, or as an
 *    ordinary thread when that call is start-up or an initialiser. The
 *    thread stays attached until it ends, and the library detaches it then.
 *    A thread that was attached before its first call (by the host, or a
 *    Java thread delivering intermediate results) is never detached by the
 *    library. So short-lived threads leave no Java thread behind, and a host
 *    may destroy the JVM (velmora_getJavaVM()->DestroyJavaVM()) once the
 *    threads that ran start-up or an initialiser have ended.
 *  - Signals: creating the JVM installs the runtime's handlers for SIGINT,
 *    SIGTERM and SIGHUP, which run the Java shutdown hooks and then end the
 *    process. A handler that the host installed for one of them before
 *    start-up is installed again once the JVM exists, so the host keeps it;
 *    a signal left at its default gets the runtime's behaviour, an ignored one
 *    stays ignored, and joining a JVM that already runs changes nothing. The
 *    runtime relies on SIGSEGV and SIGBUS itself (its safepoint polls fault on
 *    purpose): a host that installs handlers for them after start-up, as
 *    crash reporters do, must chain to the runtime's, which starting the host
 *    with LD_PRELOAD=<java home>/lib/libjsig.so does (velmora-doctor prints
 *    the line for the runtime it finds).
 *  - Shutdown hooks run when the runtime's own signal handlers end the
 *    process, not when the host returns from main or calls exit. A host whose
 *    SDK needs them destroys the JVM before it ends:
 *    velmora_getJavaVM()->DestroyJavaVM(), once its other calling threads
 *    have ended (see above); no Java can be started again in that process.
 *  - fork: in a child forked from a process whose JVM had started, every
 *    function that would reach Java, velmora_initJava and the initialisers
 *    included, returns VELMORA_STATUS_JAVA_NOT_INITIALIZED at once without
 *    touching the copied JVM (fork copies none of its threads); the status
 *    texts keep working and the parent is unaffected. A child that execs
 *    needs nothing.
 *  - Calls that must not overlap any other call into the library, on any
 *    thread: velmora_initJava, the four initialisers, the three unload
 *    functions, the first velmora_peach_handle (the one that fetches the
 *    peach wrapper, and the first after an unload) and
 *    velmora_peach_setIntermediateResultHandler. They replace the
 *    process-wide state (the JVM, the management object, the peach wrapper,
 *    the callback) that every other call reads without a lock, so run them
 *    before other threads start calling or while those threads are idle.
 *    If one of them overlaps another call, the behaviour is undefined: the
 *    other call may reach the old management object or peach wrapper, or use
 *    a reference to it that is being released, which the JVM may answer by
 *    aborting the process; two start-ups at once may both try to create a
 *    JVM. Intermediate results are the exception: the callback may run on
 *    the SDK's threads at any time, also during a registration, and each
 *    text goes to either the old or the new callback.
 *  - Every call releases the JNI local references it created before it
 *    returns, except the references that velmora_getPlugin and
 *    velmora_getPluginClass hand to the caller.
 *  - Java methods are resolved once per class reference: a host that points
 *    cls or pwcls at another class reference gets the methods of the class it
 *    names, from the next call on.
 */
#ifndef VELMORA_H
#define VELMORA_H

#include <stddef.h>
#include <stdint.h>
#include <stdarg.h>

#include "velmora_version.h" /* VELMORA_VERSION_MAJOR, _MINOR, _PATCH, _STRING, _NUM */

/* JNI types used by the runtime accessors. Compatible with <jni.h>, which may
 * be included before or after this header. */
#ifndef _JAVASOFT_JNI_H_
#ifdef __cplusplus
struct JNIEnv_;
struct JavaVM_;
typedef JNIEnv_ JNIEnv;
typedef JavaVM_ JavaVM;
class _jobject;
class _jclass;
class _jstring;
typedef _jobject *jobject;
typedef _jclass *jclass;
typedef _jstring *jstring;
#else
struct JNINativeInterface_;
struct JNIInvokeInterface_;
typedef const struct JNINativeInterface_ *JNIEnv;
typedef const struct JNIInvokeInterface_ *JavaVM;
struct _jobject;
typedef struct _jobject *jobject;
typedef jobject jclass;
typedef jobject jstring;
#endif
#endif

#if defined(VELMORA_BUILDING_LIBRARY)
#define VELMORA_API __attribute__((visibility("default")))
#else
#define VELMORA_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------ */
/* Status codes                                                              */
/* ------------------------------------------------------------------------ */

/* 0 is success; -11 to -25 are the library's own failures, each with a fixed
 * text (velmora_describeStatusCode). -17 to -21 and -25 have texts but are
 * never returned. Any other value is the Java method's own result.
 *
 * VELMORA_STATUS_CODES(X) lists every code once as X(NAME, value, KIND,
 * "text"); the enum below and the library's texts are made from it. KIND
 * names the exception class of the C++ layer (velmora.hpp): NotInitialized,
 * MethodNotFound and JavaException are the failures of a call itself,
 * StartupError those of start-up and initialisation (0 is never thrown). */
#define VELMORA_STATUS_CODES(X)                                                              \
    X(OK, 0, Error, "OK")                                                                     \
    X(JAVA_NOT_INITIALIZED, -11, NotInitialized, "Java is not initialized")                  \
    X(METHOD_NOT_FOUND, -12, MethodNotFound, "Java method could not be found")               \
    X(JAVA_EXCEPTION, -13, JavaException, "Uncaught exception thrown from Java")             \
    X(NO_CONSTRUCTOR, -14, StartupError, "Unable to find the constructor of Management Interface") \
    X(NO_INITIALIZER, -15, StartupError, "Unable to find the initializer of Management Interface") \
    X(INIT_FAILED, -16, StartupError, "Unable to initialize Management Interface")           \
    X(UNKNOWN_ERROR, -17, Error, "Unknown error")                                            \
    X(JAVA_NOT_FOUND, -18, Error, "Unable to find Java")                                     \
    X(JAVA_VERSION_NOT_FOUND, -19, Error, "Unable to find Java version")                     \
    X(JAVA_KEYPATH_NOT_FOUND, -20, Error, "Unable to find Java keypath")                     \
    X(JVM_LOCATION_NOT_FOUND, -21, Error, "Unable to find Java runtime library location")    \
    X(JVM_LIBRARY_NOT_FOUND, -22, StartupError, "Unable to find Java runtime library")       \
    X(BUFFER_TOO_SMALL, -23, Error, "String buffer is too small.")                           \
    X(FILE_INDEX_OUT_OF_BOUNDS, -24, Error, "File index is out of bounds.")                  \
    X(VARIANT_TYPE_INVALID, -25, Error, "VARIANT type is invalid, BSTR expected.")

typedef enum velmora_status {
#define VELMORA_STATUS_ENUMERATOR(name, value, kind, text) VELMORA_STATUS_##name = value,
    VELMORA_STATUS_CODES(VELMORA_STATUS_ENUMERATOR)
#undef VELMORA_STATUS_ENUMERATOR
} velmora_status;

/* The size of the path buffer of velmora_findJavaInPath, with its NUL. */
#define VELMORA_PATH_SIZE 4096

/* Host callback for intermediate results of a peach run. The text is valid
 * only during the call; the callback runs on a Java thread of the SDK. */
typedef void (*velmora_intermediate_callback)(const char *text);

/* ------------------------------------------------------------------------ */
/* Bridge state                                                              */
/* ------------------------------------------------------------------------ */

/* Process-wide state, readable by hosts; null at load. jvm is the JavaVM *,
 * env the JNIEnv * of the thread that last ran start-up or an initialiser,
 * cls/sgc the management class and object, pwcls/pwobj the peach wrapper
 * class and object (all four JNI global references), jvmlibHandle the
 * loader handle of libjvm. Define VELMORA_NO_BRIDGE_STATE before including
 * this header to keep these short names out of the host's namespace. */
#ifndef VELMORA_NO_BRIDGE_STATE
extern VELMORA_API void *jvm;
extern VELMORA_API void *env;
extern VELMORA_API void *cls;
extern VELMORA_API void *sgc;
extern VELMORA_API void *pwcls;
extern VELMORA_API void *pwobj;
extern VELMORA_API void *jvmlibHandle;
/* Read and written with single atomic accesses by the library. */
extern VELMORA_API velmora_intermediate_callback velmora_peach_intermediate_callback_fun;
#endif

/* ------------------------------------------------------------------------ */
/* Start-up and initialisation                                               */
/* ------------------------------------------------------------------------ */

/* Finds and loads the Java runtime library, then joins the JVM already
 * running in the process or creates one with the class path
 * <libdir>/velmora.jar:<libdir>/commons-codec-1.3.jar:<libdir>/xmlrpc-2.0.jar,
 * -Xmx128M and -Dcom.sun.management.jmxremote, and finds the management
 * class. Returns 0, -22 (runtime library not loadable; the loader's message
 * is printed on stdout), -11 (JVM could not be created or joined) or -12
 * (management class missing; the JVM is destroyed). <libdir> is the
 * directory of the library file; a relative name the library was loaded by
 * is taken against the working directory at load time. The runtime library
 * must be a regular file: a FIFO, device or directory counts as absent (a
 * configured one gives -22 with "<path>: cannot open shared object file:
 * Not a regular file"). */
VELMORA_API int velmora_initJava(void);

/* The initialisers run start-up when no JVM is ready, construct a new
 * management object (replacing the previous one) and call its Java
 * initialiser: velmora_init -> initFile(), velmora_initFile ->
 * initFile(String), velmora_initFileWithPassword -> initFile(String,String),
 * velmora_initWithoutFile -> init(11 arguments, in C order). They return the
 * Java initialiser's int, a start-up code, -14 (no constructor; the JVM is
 * destroyed), -16 (the object could not be created), -15 (no initialiser
 * with that signature) or -13 (the initialiser threw). After -15, -13 or any
 * Java result the new object is current and forwarding calls reach it. */
VELMORA_API int velmora_init(void);
VELMORA_API int velmora_initFile(const char *file);
VELMORA_API int velmora_initFileWithPassword(const char *file, const char *password);
VELMORA_API int velmora_initWithoutFile(const char *s1, const char *s2, const char *s3,
                                        const char *s4, int i5, const char *s6,
                                        const char *s7, int i8, int i9, const char *s10,
                                        const char *s11);

/* Searches PATH for the java launcher and derives libjvm.so from it. path is
 * a caller buffer of VELMORA_PATH_SIZE bytes. Returns 0 with the full path of the runtime
 * library in path, or -1 (not a status code) with the last path tried left in
 * path (untouched when PATH is unset or empty, or when path is null). */
VELMORA_API int velmora_findJavaInPath(char *path);

/* ------------------------------------------------------------------------ */
/* Unloading and runtime access                                              */
/* ------------------------------------------------------------------------ */

/* unload(boolean), unload(boolean,boolean), unload3(boolean,boolean): the Java
 * int. Once the initialisation guard passes they forget the peach wrapper
 * (velmora_peach_* return -11 until velmora_peach_handle runs again); the
 * management object and the JVM stay. */
VELMORA_API int velmora_unload(unsigned char flag);
VELMORA_API int velmora_unload2(unsigned char flag1, unsigned char flag2);
VELMORA_API int velmora_unload3(unsigned char flag1, unsigned char flag2);

/* The stored JNI environment (valid only on the thread that last ran
 * start-up or an initialiser) and the JVM; null before start-up. */
VELMORA_API JNIEnv *velmora_getJNIEnv(void);
VELMORA_API JavaVM *velmora_getJavaVM(void);

/* getTempDir(): string result, empty-on-null. */
VELMORA_API int velmora_getTempDir(char *buf, size_t *len);

/* java.lang.System.getProperty(name): needs only start-up, not an
 * initialiser. String result, zero-on-null (a missing property gives 0 with
 * *len 0). */
VELMORA_API int velmora_getJavaSystemProperty(const char *name, char *buf, size_t *len);

/* getPlugin(String): stores the returned reference (a JNI local reference of
 * the calling thread, the caller's to delete) in *plugin and returns 0; with a
 * null plugin the reference is deleted. On -13
 * *plugin holds what the throwing call returned; on -11/-12 it is untouched. */
VELMORA_API int velmora_getPlugin(const char *name, jobject *plugin);

/* getPluginClass(String): the class reference (a local reference of the
 * calling thread), or null on every failure. */
VELMORA_API jclass velmora_getPluginClass(const char *name);

/* getPluginConf(String,String): string result, empty-on-null. Before
 * initialisation it sets *len to 54 and, when the capacity is at least 54,
 * writes "No Error Message available; Java is not initialized." followed by
 * two NUL bytes; it returns -11 either way. */
VELMORA_API int velmora_getPluginConf(const char *plugin, const char *key, char *buf, size_t *len);

/* ------------------------------------------------------------------------ */
/* Status texts, open, close and diagnostics                                 */
/* ------------------------------------------------------------------------ */

/* Describes a status code. 0 and -11 to -25 use built-in texts and work
 * without Java (0 or -23). Every other code is described by the Java method
 * describeStatusCode(int) (string result, plain); -11 before start-up. */
VELMORA_API int velmora_describeStatusCode(int code, char *buf, size_t *len);

/* open(), ready(int), close(int), getLastError(int), setLogLevel(String),
 * stopWaitingBG(int): the Java int. */
VELMORA_API int velmora_open(void);
VELMORA_API int velmora_ready(int handle);
VELMORA_API int velmora_close(int handle);
VELMORA_API int velmora_getLastError(int handle);
VELMORA_API int velmora_setLogLevel(const char *level);
VELMORA_API int velmora_stopWaitingBG(int handle);

/* getLastErrorMessage(): string result, empty-on-null; before initialisation
 * it behaves as velmora_getPluginConf does (the 54-byte text, -11). */
VELMORA_API int velmora_getLastErrorMessage(char *buf, size_t *len);

/* getUserLogin(): string result, empty-on-null. */
VELMORA_API int velmora_getUserLogin(char *buf, size_t *len);

/* actionWait(long): 1 or 0 on success, so test for a negative status first. */
VELMORA_API int velmora_actionWait(int64_t value);

/* Do nothing, before or after start-up. */
VELMORA_API void velmora_debug(void);
VELMORA_API void velmora_debug2(void);

/* ------------------------------------------------------------------------ */
/* Bundles                                                                   */
/* ------------------------------------------------------------------------ */

/* createBundle(int, 9 Strings, String[], String[]): the two lists are given
 * as both counts, then count1 + count2 strings (variadic, va_list or one
 * array; in the array form the second list starts at entry count1). */
VELMORA_API int velmora_createBundle(int handle, const char *s1, const char *s2, const char *s3,
                                     const char *s4, const char *s5, const char *s6,
                                     const char *s7, const char *s8, const char *s9,
                                     int count1, int count2, ...);
VELMORA_API int velmora_createBundle2(int handle, const char *s1, const char *s2, const char *s3,
                                      const char *s4, const char *s5, const char *s6,
                                      const char *s7, const char *s8, const char *s9,
                                      int count1, int count2, va_list strings);
VELMORA_API int velmora_createBundle3(int handle, const char *s1, const char *s2, const char *s3,
                                      const char *s4, const char *s5, const char *s6,
                                      const char *s7, const char *s8, const char *s9,
                                      int count1, int count2, const char **list);

/* createSignedBundle(int, s1..s10, String[], String[], s11): the eleventh
 * text is handed to Java last, after the two lists. */
VELMORA_API int velmora_createSignedBundle(int handle, const char *s1, const char *s2,
                                           const char *s3, const char *s4, const char *s5,
                                           const char *s6, const char *s7, const char *s8,
                                           const char *s9, const char *s10, const char *s11,
                                           int count1, int count2, ...);
VELMORA_API int velmora_createSignedBundle2(int handle, const char *s1, const char *s2,
                                            const char *s3, const char *s4, const char *s5,
                                            const char *s6, const char *s7, const char *s8,
                                            const char *s9, const char *s10, const char *s11,
                                            int count1, int count2, va_list strings);
VELMORA_API int velmora_createSignedBundle3(int handle, const char *s1, const char *s2,
                                            const char *s3, const char *s4, const char *s5,
                                            const char *s6, const char *s7, const char *s8,
                                            const char *s9, const char *s10, const char *s11,
                                            int count1, int count2, const char **list);

/* uploadBundle(int), uploadBundle(int,String), approveUploadedBundles(int),
 * useBundle(int,String), useBundle(int,String,String), getBundleId(int),
 * setBundleId(int,int), signJar(String,String): the Java int. */
VELMORA_API int velmora_uploadBundle(int handle);
VELMORA_API int velmora_uploadBundleWithName(int handle, const char *name);
VELMORA_API int velmora_approveUploadedBundles(int handle);
VELMORA_API int velmora_useBundle(int handle, const char *name);
VELMORA_API int velmora_useBundleWithPrefix(int handle, const char *first, const char *second);
VELMORA_API int velmora_getBundleId(int handle);
VELMORA_API int velmora_setBundleId(int handle, int bundleId);
VELMORA_API int velmora_signJar(const char *first, const char *second);

/* bundleExists(String), bundleVersionExists(String,String),
 * bundleExists(String,String): 1 or 0. */
VELMORA_API int velmora_bundleExists(const char *name);
VELMORA_API int velmora_bundleVersionExists(const char *first, const char *second);
VELMORA_API int velmora_bundleWithPrefixExists(const char *first, const char *second);

/* getLastCreatedBundleName(int): string result, zero-on-null. */
VELMORA_API int velmora_getLastCreatedBundleName(int handle, char *buf, size_t *len);

/* ------------------------------------------------------------------------ */
/* Projects and jobs                                                         */
/* ------------------------------------------------------------------------ */

/* createProject(int,int,String,String[]) and the list methods
 * setProjectParams, createProjectJobs, createJob, createCachedJob
 * (int,String[]): the Java int. The list is always Java's last argument. */
VELMORA_API int velmora_createProject(int handle, int second, const char *text, int count, ...);
VELMORA_API int velmora_createProject2(int handle, int second, const char *text, int count,
                                       va_list strings);
VELMORA_API int velmora_createProject3(int handle, int second, const char *text, int count,
                                       const char **list);
VELMORA_API int velmora_setProjectParams(int handle, int count, ...);
VELMORA_API int velmora_setProjectParams2(int handle, int count, va_list strings);
VELMORA_API int velmora_setProjectParams3(int handle, int count, const char **list);
VELMORA_API int velmora_createProjectJobs(int handle, int count, ...);
VELMORA_API int velmora_createProjectJobs2(int handle, int count, va_list strings);
VELMORA_API int velmora_createProjectJobs3(int handle, int count, const char **list);
VELMORA_API int velmora_createJob(int handle, int count, ...);
VELMORA_API int velmora_createJob2(int handle, int count, va_list strings);
VELMORA_API int velmora_createJob3(int handle, int count, const char **list);
VELMORA_API int velmora_createCachedJob(int handle, int count, ...);
VELMORA_API int velmora_createCachedJob2(int handle, int count, va_list strings);
VELMORA_API int velmora_createCachedJob3(int handle, int count, const char **list);

/* createProject(int,int,String): the Java int. */
VELMORA_API int velmora_createEmptyProject(int handle, int second, const char *text);

/* The Java int of the method of the same name. */
VELMORA_API int velmora_flushCachedJobs(int handle);
VELMORA_API int velmora_markAllJobsCreated(int handle);
VELMORA_API int velmora_addUserClientsToProject(int handle);
VELMORA_API int velmora_startProject(int handle);
VELMORA_API int velmora_stopProject(int handle);
VELMORA_API int velmora_removeProject(int handle);
VELMORA_API int velmora_cleanup(int handle, int second);
VELMORA_API int velmora_waitCompletion(int handle);
VELMORA_API int velmora_waitCompletionBG(int handle);
VELMORA_API int velmora_getProjectId(int handle);
VELMORA_API int velmora_setProjectId(int handle, int projectId);
VELMORA_API int velmora_getProjectStatus(int handle);
VELMORA_API int velmora_getProjectParamCount(int handle);
VELMORA_API int velmora_sendJobPostParameter(int handle, int64_t job, const char *text);

/* isCompleted(int), isFailed(int), isJobCompleted(int,long): 1 or 0 on
 * success; only 1 means true. */
VELMORA_API int velmora_isCompleted(int handle);
VELMORA_API int velmora_isFailed(int handle);
VELMORA_API int velmora_isJobCompleted(int handle, int64_t job);

/* getProjectDescription(int), getProjectParamValue(int,String): string
 * result, plain. */
VELMORA_API int velmora_getProjectDescription(int handle, char *buf, size_t *len);
VELMORA_API int velmora_getProjectParamValue(int handle, const char *name, char *buf, size_t *len);

/* Indexed name result over getProjectParamCount(int) and
 * getProjectParamName(int,int). */
VELMORA_API int velmora_getProjectParamName(int handle, int *index, char *buf, size_t *len);

/* ------------------------------------------------------------------------ */
/* Results and statistics                                                    */
/* ------------------------------------------------------------------------ */

/* downloadResult(int); downloadResult(int,boolean) with true;
 * setDownloadDir, setUnzipDir (int,String); unzip(int);
 * unzipFile(String,String,String); setStreamResults(int,boolean);
 * getStreamedResultFilesCount(int): the Java int. */
VELMORA_API int velmora_downloadResult(int handle);
VELMORA_API int velmora_downloadPartialResult(int handle);
VELMORA_API int velmora_setDownloadDir(int handle, const char *dir);
VELMORA_API int velmora_setUnzipDir(int handle, const char *dir);
VELMORA_API int velmora_unzip(int handle);
VELMORA_API int velmora_unzipFile(const char *first, const char *second, const char *third);
VELMORA_API int velmora_setStreamResults(int handle, unsigned char flag);
VELMORA_API int velmora_getStreamedResultFilesCount(int handle);

/* getResultDirectory(int), getResultFile(int), getProjectStatistic(int,String):
 * string result, plain. getStatisticsString(int): zero-on-null. */
VELMORA_API int velmora_getResultDirectory(int handle, char *buf, size_t *len);
VELMORA_API int velmora_getResultFile(int handle, char *buf, size_t *len);
VELMORA_API int velmora_getProjectStatistic(int handle, const char *name, char *buf, size_t *len);
VELMORA_API int velmora_getStatisticsString(int handle, char *buf, size_t *len);

/* Indexed name results over getResultFileCount/getResultFileName and
 * getStreamedResultFilesCount/getStreamedResultFileName. */
VELMORA_API int velmora_getResultFiles(int handle, int *index, char *buf, size_t *len);
VELMORA_API int velmora_getStreamedResultFiles(int handle, int *index, char *buf, size_t *len);

/* getUsedCpuTime(int), getUsedTime(int): the Java long; status codes as
 * 64-bit values. */
VELMORA_API int64_t velmora_getUsedCpuTime(int handle);
VELMORA_API int64_t velmora_getUsedTime(int handle);

/* printStatistics(int): 0. */
VELMORA_API int velmora_printStatistics(int handle);

/* ------------------------------------------------------------------------ */
/* One-call peach                                                            */
/* ------------------------------------------------------------------------ */

/* peach(String[]): the Java int. */
VELMORA_API int velmora_peach(int count, ...);
VELMORA_API int velmora_peach2(int count, va_list strings);
VELMORA_API int velmora_peach3(int count, const char **list);

/* peachNextFile(int): string result, zero-on-null (0 with *len 0: no name). */
VELMORA_API int velmora_peachNextFile(int handle, char *buf, size_t *len);

/* peachDone(int): 0. */
VELMORA_API int velmora_peachDone(int handle);

/* ------------------------------------------------------------------------ */
/* Peach builder                                                             */
/* ------------------------------------------------------------------------ */

/* Returns a peach handle: the result of PeachWrapper.get(). The first call
 * (and the first after an unload) fetches the wrapper with
 * getPeachWrapper() and keeps it. -11 before initialisation; -12 when
 * getPeachWrapper, the PeachWrapper class or get is missing; -13 when one of
 * them threw (the next call retries); -16 when getPeachWrapper returned null
 * (nothing is kept; the next call retries). */
VELMORA_API int velmora_peach_handle(void);

/* Every function below takes a peach handle first, passes it through to the
 * PeachWrapper method of the same name, and returns -11 until
 * velmora_peach_handle has succeeded. void Java methods give 0. */

/* Run settings. setPriorityI -> setPriority(int,int), setPriority ->
 * setPriority(int,String). getProjectHandle, getProjectId: the Java int. */
VELMORA_API int velmora_peach_setName(int handle, const char *text);
VELMORA_API int velmora_peach_setStateDir(int handle, const char *text);
VELMORA_API int velmora_peach_setDescription(int handle, const char *text);
VELMORA_API int velmora_peach_setMessages(int handle, unsigned char flag);
VELMORA_API int velmora_peach_setPriorityI(int handle, int priority);
VELMORA_API int velmora_peach_setPriority(int handle, const char *text);
VELMORA_API int velmora_peach_setProjectId(int handle, int projectId);
VELMORA_API int velmora_peach_setResultFile(int handle, const char *text);
VELMORA_API int velmora_peach_setJobs(int handle, int jobs);
VELMORA_API int velmora_peach_setAllowPartial(int handle, unsigned char flag);
VELMORA_API int velmora_peach_setRemove(int handle, unsigned char flag);
VELMORA_API int velmora_peach_setCleanup(int handle, unsigned char flag);
VELMORA_API int velmora_peach_setClose(int handle, unsigned char flag);
VELMORA_API int velmora_peach_setStream(int handle, unsigned char flag);
VELMORA_API int velmora_peach_getProjectHandle(int handle);
VELMORA_API int velmora_peach_getProjectId(int handle);

/* Source files. sourcesChanged: exactly 1 or 0. */
VELMORA_API int velmora_peach_addSourceFile(int handle, const char *text);
VELMORA_API int velmora_peach_putSourceExtras(int handle, const char *text1, const char *text2);
VELMORA_API int velmora_peach_sourcesChanged(int handle);

/* Executable. */
VELMORA_API int velmora_peach_setExeBundleName(int handle, const char *text);
VELMORA_API int velmora_peach_setExecutable(int handle, const char *text);
VELMORA_API int velmora_peach_setExeSkipDigest(int handle, unsigned char flag);
VELMORA_API int velmora_peach_addExeFile(int handle, const char *text1, const char *text2,
                                         const char *text3, const char *text4);
VELMORA_API int velmora_peach_putExeExtras(int handle, const char *text1, const char *text2);
VELMORA_API int velmora_peach_addExeImport(int handle, const char *text);

/* Output files. */
VELMORA_API int velmora_peach_addOutputFile(int handle, const char *text);

/* Data bundles. newDataBundle -> newDataBundle(int), newDataBundleWithName ->
 * newDataBundle(int,String). */
VELMORA_API int velmora_peach_newDataBundle(int handle);
VELMORA_API int velmora_peach_newDataBundleWithName(int handle, const char *text);
VELMORA_API int velmora_peach_setDataSkipDigest(int handle, unsigned char flag);
VELMORA_API int velmora_peach_addDataFile(int handle, const char *text);
VELMORA_API int velmora_peach_addDataFileWithDir(int handle, const char *text1, const char *text2);
VELMORA_API int velmora_peach_putDataExtras(int handle, const char *text1, const char *text2);
VELMORA_API int velmora_peach_setDataCopy(int handle, unsigned char flag);

/* Job files. String lists in the variadic and the array (suffix 3) form;
 * WithDir passes dir to Java before the array. */
VELMORA_API int velmora_peach_setJobSkipDigest(int handle, unsigned char flag);
VELMORA_API int velmora_peach_setJobFileNames(int handle, int count, ...);
VELMORA_API int velmora_peach_setJobFileNames3(int handle, int count, const char **list);
VELMORA_API int velmora_peach_addJobFile(int handle, int count, ...);
VELMORA_API int velmora_peach_addJobFile3(int handle, int count, const char **list);
VELMORA_API int velmora_peach_addJobFileWithDir(int handle, const char *dir, int count, ...);
VELMORA_API int velmora_peach_addJobFileWithDir3(int handle, const char *dir, int count,
                                                 const char **list);
VELMORA_API int velmora_peach_putJobExtras(int handle, const char *text1, const char *text2);

/* Parameter files and project parameters. addParamFileWithTarget ->
 * addParamFile(int,String,String); addParamFileWithDir -> its own method. */
VELMORA_API int velmora_peach_setParamSkipDigest(int handle, unsigned char flag);
VELMORA_API int velmora_peach_addParamFile(int handle, const char *text);
VELMORA_API int velmora_peach_addParamFileWithDir(int handle, const char *text1, const char *text2);
VELMORA_API int velmora_peach_addParamFileWithTarget(int handle, const char *text1,
                                                     const char *text2);
VELMORA_API int velmora_peach_putParamExtras(int handle, const char *text1, const char *text2);
VELMORA_API int velmora_peach_addParamExternalResource(int handle, const char *text);
VELMORA_API int velmora_peach_setParamCopy(int handle, unsigned char flag);
VELMORA_API int velmora_peach_putProjectParam(int handle, const char *text1, const char *text2);

/* Execution and results. execute: the Java int. nextFile and
 * getLastErrorMessage: string result, zero-on-null (0 with *len 0: Java
 * returned no text); nothing is written on -11, -12 or -13. */
VELMORA_API int velmora_peach_execute(int handle);
VELMORA_API int velmora_peach_nextFile(int handle, char *buf, size_t *len);
VELMORA_API int velmora_peach_postProcessed(int handle, int value);
VELMORA_API int velmora_peach_done(int handle);
VELMORA_API int velmora_peach_getLastErrorMessage(int handle, char *buf, size_t *len);

/* Registers the library's native method as NativeFunctionCaller.func, hands a
 * new NativeFunctionCaller to setIntermediateResultHandler(int, handler) and,
 * once Java accepted it, makes callback (null allowed: texts are dropped) the
 * one process-wide receiver of intermediate results. On failure the previous
 * callback stays. */
VELMORA_API int velmora_peach_setIntermediateResultHandler(int handle,
                                                           velmora_intermediate_callback callback);

/* The native implementation of NativeFunctionCaller.func(String), called by
 * the JVM on the SDK's thread: hands the text to the callback registered
 * last. A null text, or any text while no callback is set, is dropped. Not
 * for hosts to call. */
VELMORA_API void velmora_peach_intermediate_callback(JNIEnv *jenv, jobject self, jstring text);

/* ------------------------------------------------------------------------ */
/* The library's own extensions (symbol version VELMORA_1.1)                 */
/* ------------------------------------------------------------------------ */

/* The calling thread's account of the last call on that thread that returned
 * one of the library's failures (-11 to -22), as a string result (*len is the
 * size needed with its NUL; VELMORA_STATUS_BUFFER_TOO_SMALL and nothing
 * written when it does not fit). For -13, the Java exception as the JVM
 * prints it: class, message, stack trace and its causes. For -12, the Java
 * class, method and signature that were not found. For start-up and the
 * initialisers, the cause in words (the runtime library path and the
 * configuration lines it came from, the class path, whether only a new
 * process can start Java) and a last line "-> run: velmora-doctor <library>".
 * An empty text before the thread's first failure. A later call that
 * succeeds leaves the account as it is (as errno), and a call that returns
 * -23 or -24 does not change it. Works without Java. */
VELMORA_API int velmora_describeLastFailure(char *buf, size_t *len);

/* The version of the library that is loaded: VELMORA_VERSION_STRING of the
 * build, which a host may compare with the header's. */
VELMORA_API const char *velmora_libraryVersion(void);

#ifdef __cplusplus
}
#endif

#endif /* VELMORA_H */
