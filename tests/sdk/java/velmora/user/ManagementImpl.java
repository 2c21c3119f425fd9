package velmora.user;

import velmora.testing.Sdk;

/**
 * Test double of the management object. Every method records its call in the
 * journal of {@link Sdk} and returns the scripted outcome (or the type's
 * default). Parameter and return types are the ones the bridge looks up, so a
 * call that reaches a method here proves that name and signature matched.
 */
public class ManagementImpl {
    private PeachWrapper wrapper;

    public ManagementImpl() {
        Sdk.constructed();
    }

    // ---- initialisers --------------------------------------------------

    public int initFile() {
        return Sdk.i();
    }

    public int initFile(String file) {
        return Sdk.i(file);
    }

    public int initFile(String file, String password) {
        return Sdk.i(file, password);
    }

    public int init(String s1, String s2, String s3, String s4, int i5, String s6, String s7,
            int i8, int i9, String s10, String s11) {
        return Sdk.i(s1, s2, s3, s4, i5, s6, s7, i8, i9, s10, s11);
    }

    // ---- status texts, unloading, runtime access -----------------------

    public String describeStatusCode(int code) {
        return Sdk.s(code);
    }

    public int unload(boolean flag) {
        return Sdk.i(flag);
    }

    public int unload(boolean flag1, boolean flag2) {
        return Sdk.i(flag1, flag2);
    }

    public int unload3(boolean flag1, boolean flag2) {
        return Sdk.i(flag1, flag2);
    }

    public String getTempDir() {
        return Sdk.s();
    }

    public VelmoraManagerPlugin getPlugin(String name) {
        return Sdk.o(new VelmoraManagerPlugin(name), name);
    }

    public Class<?> getPluginClass(String name) {
        return Sdk.o(VelmoraManagerPlugin.class, name);
    }

    public String getPluginConf(String plugin, String key) {
        return Sdk.s(plugin, key);
    }

    // ---- open, close, diagnostics --------------------------------------

    public int open() {
        return Sdk.i();
    }

    public int ready(int handle) {
        return Sdk.i(handle);
    }

    public int close(int handle) {
        return Sdk.i(handle);
    }

    public int getLastError(int handle) {
        return Sdk.i(handle);
    }

    public String getLastErrorMessage() {
        return Sdk.s();
    }

    public String getUserLogin() {
        return Sdk.s();
    }

    public int setLogLevel(String level) {
        return Sdk.i(level);
    }

    public boolean actionWait(long value) {
        return Sdk.z(value);
    }

    public int stopWaitingBG(int handle) {
        return Sdk.i(handle);
    }

    // ---- bundles -------------------------------------------------------

    public int createBundle(int handle, String s1, String s2, String s3, String s4, String s5,
            String s6, String s7, String s8, String s9, String[] list1, String[] list2) {
        return Sdk.i(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9, list1, list2);
    }

    public int createSignedBundle(int handle, String s1, String s2, String s3, String s4,
            String s5, String s6, String s7, String s8, String s9, String s10, String[] list1,
            String[] list2, String s11) {
        return Sdk.i(handle, s1, s2, s3, s4, s5, s6, s7, s8, s9, s10, list1, list2, s11);
    }

    public int uploadBundle(int handle) {
        return Sdk.i(handle);
    }

    public int uploadBundle(int handle, String name) {
        return Sdk.i(handle, name);
    }

    public int approveUploadedBundles(int handle) {
        return Sdk.i(handle);
    }

    public boolean bundleExists(String name) {
        return Sdk.z(name);
    }

    public boolean bundleExists(String first, String second) {
        return Sdk.z(first, second);
    }

    public boolean bundleVersionExists(String first, String second) {
        return Sdk.z(first, second);
    }

    public int useBundle(int handle, String name) {
        return Sdk.i(handle, name);
    }

    public int useBundle(int handle, String first, String second) {
        return Sdk.i(handle, first, second);
    }

    public int getBundleId(int handle) {
        return Sdk.i(handle);
    }

    public int setBundleId(int handle, int bundleId) {
        return Sdk.i(handle, bundleId);
    }

    public String getLastCreatedBundleName(int handle) {
        return Sdk.s(handle);
    }

    public int signJar(String first, String second) {
        return Sdk.i(first, second);
    }

    // ---- projects and jobs ---------------------------------------------

    public int createProject(int handle, int second, String text, String[] list) {
        return Sdk.i(handle, second, text, list);
    }

    public int createProject(int handle, int second, String text) {
        return Sdk.i(handle, second, text);
    }

    public int setProjectParams(int handle, String[] list) {
        return Sdk.i(handle, list);
    }

    public int createProjectJobs(int handle, String[] list) {
        return Sdk.i(handle, list);
    }

    public int createJob(int handle, String[] list) {
        return Sdk.i(handle, list);
    }

    public int createCachedJob(int handle, String[] list) {
        return Sdk.i(handle, list);
    }

    public int flushCachedJobs(int handle) {
        return Sdk.i(handle);
    }

    public int markAllJobsCreated(int handle) {
        return Sdk.i(handle);
    }

    public int addUserClientsToProject(int handle) {
        return Sdk.i(handle);
    }

    public int startProject(int handle) {
        return Sdk.i(handle);
    }

    public int stopProject(int handle) {
        return Sdk.i(handle);
    }

    public int removeProject(int handle) {
        return Sdk.i(handle);
    }

    public int cleanup(int handle, int second) {
        return Sdk.i(handle, second);
    }

    public int waitCompletion(int handle) {
        return Sdk.i(handle);
    }

    public int waitCompletionBG(int handle) {
        return Sdk.i(handle);
    }

    public int getProjectId(int handle) {
        return Sdk.i(handle);
    }

    public int setProjectId(int handle, int projectId) {
        return Sdk.i(handle, projectId);
    }

    public int getProjectStatus(int handle) {
        return Sdk.i(handle);
    }

    public int getProjectParamCount(int handle) {
        return Sdk.i(handle);
    }

    public String getProjectParamName(int handle, int index) {
        return Sdk.s(handle, index);
    }

    public String getProjectParamValue(int handle, String name) {
        return Sdk.s(handle, name);
    }

    public String getProjectDescription(int handle) {
        return Sdk.s(handle);
    }

    public boolean isCompleted(int handle) {
        return Sdk.z(handle);
    }

    public boolean isFailed(int handle) {
        return Sdk.z(handle);
    }

    public boolean isJobCompleted(int handle, long job) {
        return Sdk.z(handle, job);
    }

    public int sendJobPostParameter(int handle, long job, String text) {
        return Sdk.i(handle, job, text);
    }

    // ---- results and statistics ----------------------------------------

    public int downloadResult(int handle) {
        return Sdk.i(handle);
    }

    public int downloadResult(int handle, boolean partial) {
        return Sdk.i(handle, partial);
    }

    public int setDownloadDir(int handle, String dir) {
        return Sdk.i(handle, dir);
    }

    public int setUnzipDir(int handle, String dir) {
        return Sdk.i(handle, dir);
    }

    public int unzip(int handle) {
        return Sdk.i(handle);
    }

    public int unzipFile(String first, String second, String third) {
        return Sdk.i(first, second, third);
    }

    public int setStreamResults(int handle, boolean stream) {
        return Sdk.i(handle, stream);
    }

    public String getResultDirectory(int handle) {
        return Sdk.s(handle);
    }

    public String getResultFile(int handle) {
        return Sdk.s(handle);
    }

    public int getResultFileCount(int handle) {
        return Sdk.i(handle);
    }

    public String getResultFileName(int handle, int index) {
        return Sdk.s(handle, index);
    }

    public int getStreamedResultFilesCount(int handle) {
        return Sdk.i(handle);
    }

    public String getStreamedResultFileName(int handle, int index) {
        return Sdk.s(handle, index);
    }

    public long getUsedCpuTime(int handle) {
        return Sdk.j(handle);
    }

    public long getUsedTime(int handle) {
        return Sdk.j(handle);
    }

    public String getProjectStatistic(int handle, String name) {
        return Sdk.s(handle, name);
    }

    public void printStatistics(int handle) {
        Sdk.v(handle);
    }

    public String getStatisticsString(int handle) {
        return Sdk.s(handle);
    }

    // ---- one-call peach ------------------------------------------------

    public int peach(String[] args) {
        return Sdk.i((Object) args);
    }

    public String peachNextFile(int handle) {
        return Sdk.s(handle);
    }

    public void peachDone(int handle) {
        Sdk.v(handle);
    }

    // ---- peach builder -------------------------------------------------

    /** One wrapper per management object, made on first use. */
    public PeachWrapper getPeachWrapper() {
        return Sdk.o(wrapper());
    }

    private synchronized PeachWrapper wrapper() {
        if (wrapper == null) {
            wrapper = new PeachWrapper();
        }
        return wrapper;
    }
}
