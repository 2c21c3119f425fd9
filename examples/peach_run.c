/*
 * peach_run: a complete peach run through the builder interface.
 *
 *   peach_run [configuration-file]
 *
 * Starts Java and the management interface, describes a run (settings,
 * executable, data, job and parameter files), prints intermediate results as
 * the SDK reports them, executes the run, walks its result files and marks it
 * done. With no argument the management interface is initialised from its
 * default configuration.
 *
 * Every call returns a status: 0 or a value on success, a negative
 * velmora_status on failure. check() below turns a failure into a message
 * with the library's own text for the code.
 */
#define VELMORA_NO_BRIDGE_STATE /* the host needs none of the bridge's globals */
#include "velmora.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* Prints "what: code text" for a failed call; returns 1 when status is a
 * failure, 0 otherwise. A Java int result that happens to be negative cannot
 * be told from a status, so only the calls that return statuses go here. */
static int check(const char *what, int status) {
    if (status >= 0) return 0;
    char text[128];
    size_t len = sizeof text;
    if (velmora_describeStatusCode(status, text, &len) != VELMORA_STATUS_OK) strcpy(text, "(no description)");
    fprintf(stderr, "peach_run: %s failed: %d %s\n", what, status, text);
    return 1;
}

/* Intermediate results arrive on a Java thread of the SDK while the run is in
 * progress. The text is valid only during the call. */
static void print_intermediate(const char *text) {
    printf("  intermediate: %s\n", text);
    fflush(stdout);
}

/* Describes the run: every step reports its own failure. */
static int describe(int peach) {
    static const char *job_files[] = {"frames/0001.scene", "frames/0002.scene", "frames/0003.scene"};
    const int job_count = (int)(sizeof job_files / sizeof job_files[0]);

    return check("setName", velmora_peach_setName(peach, "example render"))
        || check("setDescription", velmora_peach_setDescription(peach, "three frames, one job each"))
        || check("setPriority", velmora_peach_setPriorityI(peach, 5))
        || check("setJobs", velmora_peach_setJobs(peach, job_count))
        || check("setResultFile", velmora_peach_setResultFile(peach, "frames.zip"))
        || check("setAllowPartial", velmora_peach_setAllowPartial(peach, 1))
        || check("setStream", velmora_peach_setStream(peach, 1))

        /* the program every job runs, with the files it brings along */
        || check("setExecutable", velmora_peach_setExecutable(peach, "bin/render"))
        || check("addExeFile", velmora_peach_addExeFile(peach, "bin/render", "render", "linux", "x86_64"))
        || check("addExeImport", velmora_peach_addExeImport(peach, "lib/libscene.so"))

        /* data shared by every job, in a bundle of its own */
        || check("newDataBundle", velmora_peach_newDataBundleWithName(peach, "textures"))
        || check("addDataFileWithDir", velmora_peach_addDataFileWithDir(peach, "textures/wood.png", "textures"))

        /* one job file per job: the array form and the variadic form */
        || check("setJobFileNames", velmora_peach_setJobFileNames3(peach, job_count, job_files))
        || check("addJobFileWithDir", velmora_peach_addJobFileWithDir(peach, "frames", 1, "frames/common.scene"))

        /* parameters and what each job leaves behind */
        || check("addParamFile", velmora_peach_addParamFile(peach, "render.conf"))
        || check("putProjectParam", velmora_peach_putProjectParam(peach, "quality", "high"))
        || check("addOutputFile", velmora_peach_addOutputFile(peach, "frame.png"));
}

/* Fetches result file names until the SDK has none left (0 with *len == 0),
 * growing the buffer when a name does not fit. Returns the number of files,
 * or a negative status. */
static int walk_results(int peach) {
    size_t capacity = 16; /* small on purpose: long names take the -23 path */
    char *name = malloc(capacity);
    int files = 0;
    if (name == NULL) return VELMORA_STATUS_UNKNOWN_ERROR;

    for (;;) {
        size_t len = capacity;
        int status = velmora_peach_nextFile(peach, name, &len);
        if (status == VELMORA_STATUS_BUFFER_TOO_SMALL) {
            char *larger = realloc(name, len); /* len: the bytes the name needs */
            if (larger == NULL) {
                files = VELMORA_STATUS_UNKNOWN_ERROR;
                break;
            }
            name = larger;
            capacity = len;
            continue; /* asks again for the same name */
        }
        if (status != VELMORA_STATUS_OK) {
            files = status;
            break;
        }
        if (len == 0) break; /* no further result file */

        ++files;
        printf("  result file %d: %s\n", files, name);
        /* the host has dealt with the file; tell the SDK which one */
        if (check("postProcessed", velmora_peach_postProcessed(peach, files))) {
            files = VELMORA_STATUS_JAVA_EXCEPTION;
            break;
        }
    }
    free(name);
    return files;
}

int main(int argc, char **argv) {
    int status = argc > 1 ? velmora_initFile(argv[1]) : velmora_init();
    if (check("initialisation", status)) return 1;

    int peach = velmora_peach_handle();
    if (check("velmora_peach_handle", peach)) return 1;
    printf("peach handle %d\n", peach);

    if (describe(peach)) return 1;
    printf("run described\n");

    if (check("setIntermediateResultHandler", velmora_peach_setIntermediateResultHandler(peach, print_intermediate)))
        return 1;

    /* execute returns the SDK's own result for the run */
    int executed = velmora_peach_execute(peach);
    if (check("execute", executed)) {
        char message[512];
        size_t len = sizeof message;
        if (velmora_peach_getLastErrorMessage(peach, message, &len) == VELMORA_STATUS_OK && len > 0)
            fprintf(stderr, "peach_run: %s\n", message);
        return 1;
    }
    printf("executed: %d\n", executed);

    int files = walk_results(peach);
    if (check("nextFile", files)) return 1;
    printf("%d result file(s)\n", files);

    /* no more results are wanted: stop delivering them, then end the run */
    if (check("setIntermediateResultHandler", velmora_peach_setIntermediateResultHandler(peach, NULL))
        || check("done", velmora_peach_done(peach)))
        return 1;
    printf("peach run finished\n");
    return 0;
}
