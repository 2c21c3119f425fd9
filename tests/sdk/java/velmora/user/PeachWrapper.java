package velmora.user;

import velmora.testing.Sdk;

/**
 * Test double of the peach builder. Like {@link ManagementImpl}, every method
 * records its call in the journal of {@link Sdk} and returns the scripted
 * outcome; the first argument is always the peach handle.
 */
public class PeachWrapper {
    public PeachWrapper() {
    }

    public int get() {
        return Sdk.i();
    }

    // ---- run settings and project queries ------------------------------

    public void setName(int handle, String text) {
        Sdk.v(handle, text);
    }

    public void setStateDir(int handle, String text) {
        Sdk.v(handle, text);
    }

    public void setDescription(int handle, String text) {
        Sdk.v(handle, text);
    }

    public void setMessages(int handle, boolean flag) {
        Sdk.v(handle, flag);
    }

    public void setPriority(int handle, int priority) {
        Sdk.v(handle, priority);
    }

    public void setPriority(int handle, String priority) {
        Sdk.v(handle, priority);
    }

    public void setProjectId(int handle, int projectId) {
        Sdk.v(handle, projectId);
    }

    public void setResultFile(int handle, String text) {
        Sdk.v(handle, text);
    }

    public void setJobs(int handle, int jobs) {
        Sdk.v(handle, jobs);
    }

    public void setAllowPartial(int handle, boolean flag) {
        Sdk.v(handle, flag);
    }

    public void setRemove(int handle, boolean flag) {
        Sdk.v(handle, flag);
    }

    public void setCleanup(int handle, boolean flag) {
        Sdk.v(handle, flag);
    }

    public void setClose(int handle, boolean flag) {
        Sdk.v(handle, flag);
    }

    public void setStream(int handle, boolean flag) {
        Sdk.v(handle, flag);
    }

    public int getProjectHandle(int handle) {
        return Sdk.i(handle);
    }

    public int getProjectId(int handle) {
        return Sdk.i(handle);
    }

    // ---- source files --------------------------------------------------

    public void addSourceFile(int handle, String text) {
        Sdk.v(handle, text);
    }

    public void putSourceExtras(int handle, String text1, String text2) {
        Sdk.v(handle, text1, text2);
    }

    public boolean sourcesChanged(int handle) {
        return Sdk.z(handle);
    }

    // ---- executable ----------------------------------------------------

    public void setExeBundleName(int handle, String text) {
        Sdk.v(handle, text);
    }

    public void setExecutable(int handle, String text) {
        Sdk.v(handle, text);
    }

    public void setExeSkipDigest(int handle, boolean flag) {
        Sdk.v(handle, flag);
    }

    public void addExeFile(int handle, String text1, String text2, String text3, String text4) {
        Sdk.v(handle, text1, text2, text3, text4);
    }

    public void putExeExtras(int handle, String text1, String text2) {
        Sdk.v(handle, text1, text2);
    }

    public void addExeImport(int handle, String text) {
        Sdk.v(handle, text);
    }

    // ---- output files --------------------------------------------------

    public void addOutputFile(int handle, String text) {
        Sdk.v(handle, text);
    }

    // ---- data bundles --------------------------------------------------

    public void newDataBundle(int handle) {
        Sdk.v(handle);
    }

    public void newDataBundle(int handle, String name) {
        Sdk.v(handle, name);
    }

    public void setDataSkipDigest(int handle, boolean flag) {
        Sdk.v(handle, flag);
    }

    public void addDataFile(int handle, String text) {
        Sdk.v(handle, text);
    }

    public void addDataFileWithDir(int handle, String text1, String text2) {
        Sdk.v(handle, text1, text2);
    }

    public void putDataExtras(int handle, String text1, String text2) {
        Sdk.v(handle, text1, text2);
    }

    public void setDataCopy(int handle, boolean flag) {
        Sdk.v(handle, flag);
    }

    // ---- job files -----------------------------------------------------

    public void setJobSkipDigest(int handle, boolean flag) {
        Sdk.v(handle, flag);
    }

    public void setJobFileNames(int handle, String[] names) {
        Sdk.v(handle, names);
    }

    public void addJobFile(int handle, String[] files) {
        Sdk.v(handle, files);
    }

    public void addJobFileWithDir(int handle, String dir, String[] files) {
        Sdk.v(handle, dir, files);
    }

    public void putJobExtras(int handle, String text1, String text2) {
        Sdk.v(handle, text1, text2);
    }

    // ---- parameter files and project parameters ------------------------

    public void setParamSkipDigest(int handle, boolean flag) {
        Sdk.v(handle, flag);
    }

    public void addParamFile(int handle, String text) {
        Sdk.v(handle, text);
    }

    public void addParamFile(int handle, String text1, String text2) {
        Sdk.v(handle, text1, text2);
    }

    public void addParamFileWithDir(int handle, String text1, String text2) {
        Sdk.v(handle, text1, text2);
    }

    public void putParamExtras(int handle, String text1, String text2) {
        Sdk.v(handle, text1, text2);
    }

    public void addParamExternalResource(int handle, String text) {
        Sdk.v(handle, text);
    }

    public void setParamCopy(int handle, boolean flag) {
        Sdk.v(handle, flag);
    }

    public void putProjectParam(int handle, String text1, String text2) {
        Sdk.v(handle, text1, text2);
    }

    // ---- execution and results -----------------------------------------

    public int execute(int handle) {
        return Sdk.i(handle);
    }

    public String nextFile(int handle) {
        return Sdk.s(handle);
    }

    public void postProcessed(int handle, int value) {
        Sdk.v(handle, value);
    }

    public void done(int handle) {
        Sdk.v(handle);
    }

    public String getLastErrorMessage(int handle) {
        return Sdk.s(handle);
    }

    /** Records the call; unless scripted to throw, the handler becomes the one that {@link Sdk#fire} uses. */
    public void setIntermediateResultHandler(int handle, IntermediateResultHandler handler) {
        Sdk.handler(handle, handler);
    }
}
