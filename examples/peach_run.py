"""peach_run.py: a complete peach run through the builder, from Python.

    python3 peach_run.py [configuration-file]

Starts Java and the management interface, describes a run (settings,
executable, data, job and parameter files), prints intermediate results as the
SDK reports them, executes the run, walks its result files and marks it done.
With no argument the management interface is initialised from its default
configuration. The same run as peach_run.c and peach_run.cpp.

Needs the velmora package (pip install ./python) and the library: an install
made with cmake --install (found through pkg-config, or in this Python's own
prefix or /usr/local), or the file named by VELMORA_LIBRARY. An install made
with -DVELMORA_INSTALL_DEMO_SDK=ON brings the project's demo SDK along.
"""
import sys

import velmora


def describe(peach):
    """Describes the run; a failing step raises velmora.Error."""
    job_files = ["frames/0001.scene", "frames/0002.scene", "frames/0003.scene"]
    peach.setName("example render")
    peach.setDescription("three frames, one job each")
    peach.setPriorityI(5)
    peach.setJobs(len(job_files))
    peach.setResultFile("frames.zip")
    peach.setAllowPartial(True)
    peach.setStream(True)

    # the program every job runs, with the files it brings along
    peach.setExecutable("bin/render")
    peach.addExeFile("bin/render", "render", "linux", "x86_64")
    peach.addExeImport("lib/libscene.so")

    # data shared by every job, in a bundle of its own
    peach.newDataBundleWithName("textures")
    peach.addDataFileWithDir("textures/wood.png", "textures")

    # one job file per job; any iterable of str makes a string list
    peach.setJobFileNames(job_files)
    peach.addJobFileWithDir("frames", ["frames/common.scene"])

    # parameters and what each job leaves behind
    peach.addParamFile("render.conf")
    peach.putProjectParam("quality", "high")
    peach.addOutputFile("frame.png")


def intermediate(text):
    """Runs on a Java thread of the SDK while the run is in progress."""
    print("  intermediate: %s" % text, flush=True)


def main(argv):
    try:
        if len(argv) > 1:
            velmora.initFile(argv[1])
        else:
            velmora.init()
        print("library %s" % velmora.library_path())
        peach = velmora.Peach()
        print("peach handle %d" % peach.handle)

        describe(peach)
        print("run described")

        peach.setIntermediateResultHandler(intermediate)
        try:
            executed = peach.execute()  # the SDK's own result for the run
        except velmora.Error:
            message = peach.getLastErrorMessage()
            if message:
                print("peach_run.py: %s" % message, file=sys.stderr)
            raise
        print("executed: %d" % executed)

        files = 0
        for files, name in enumerate(peach.files(), 1):
            print("  result file %d: %s" % (files, name))
            peach.postProcessed(files)  # the host has dealt with the file
        print("%d result file(s)" % files)

        # no more results are wanted: stop delivering them, then end the run
        peach.setIntermediateResultHandler(None)
        peach.done()
    except (velmora.Error, velmora.LibraryNotFoundError) as error:
        print("peach_run.py: %s" % error, file=sys.stderr)
        return 1
    print("peach run finished")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
