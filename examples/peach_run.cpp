// peach_run_cpp: the run of peach_run.c, written against the C++ interface.
//
//   peach_run_cpp [configuration-file]
//
// Starts Java and the management interface, describes a run (settings,
// executable, data, job and parameter files), prints intermediate results as
// the SDK reports them, executes the run, walks its result files and marks it
// done. With no argument the management interface is initialised from its
// default configuration.
//
// Every failure is a velmora::Error carrying the status code, the library's
// text for it and the SDK's last error message; main() reports it.
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "velmora.hpp"

namespace {

void describe(velmora::Peach &peach) {
    const std::vector<std::string> jobFiles{"frames/0001.scene", "frames/0002.scene", "frames/0003.scene"};

    peach.setName("example render");
    peach.setDescription("three frames, one job each");
    peach.setPriorityI(5);
    peach.setJobs(static_cast<int>(jobFiles.size()));
    peach.setResultFile("frames.zip");
    peach.setAllowPartial(true);
    peach.setStream(true);

    // the program every job runs, with the files it brings along
    peach.setExecutable("bin/render");
    peach.addExeFile("bin/render", "render", "linux", "x86_64");
    peach.addExeImport("lib/libscene.so");

    // data shared by every job, in a bundle of its own
    peach.newDataBundleWithName("textures");
    peach.addDataFileWithDir("textures/wood.png", "textures");

    // one job file per job, then one more from a braced list
    peach.setJobFileNames(jobFiles);
    peach.addJobFileWithDir("frames", {"frames/common.scene"});

    // parameters and what each job leaves behind
    peach.addParamFile("render.conf");
    peach.putProjectParam("quality", "high");
    peach.addOutputFile("frame.png");
}

}  // namespace

int main(int argc, char **argv) {
    try {
        if (argc > 1)
            velmora::initFile(argv[1]);
        else
            velmora::init();

        velmora::Peach peach = velmora::Peach::create();
        std::cout << "peach handle " << peach.handle() << '\n';
        describe(peach);
        std::cout << "run described\n";

        // Intermediate results arrive on a Java thread of the SDK while the
        // run is in progress; any callable will do.
        peach.setIntermediateResultHandler(
            [](std::string_view text) { std::cout << "  intermediate: " << text << std::endl; });

        int executed = 0;  // the results are printed while execute runs
        try {
            executed = peach.execute();
        } catch (const velmora::Error &) {
            if (auto message = peach.getLastErrorMessage()) std::cerr << "peach_run_cpp: " << *message << '\n';
            throw;
        }
        std::cout << "executed: " << executed << '\n';

        int files = 0;
        for (const std::string &name : peach.files()) {
            std::cout << "  result file " << ++files << ": " << name << '\n';
            peach.postProcessed(files);  // the host has dealt with the file
        }
        std::cout << files << " result file(s)\n";

        // no more results are wanted: stop delivering them, then end the run
        peach.setIntermediateResultHandler(nullptr);
        peach.done();
        std::cout << "peach run finished\n";
        return 0;
    } catch (const velmora::Error &e) {
        std::cerr << "peach_run_cpp: " << e.what() << '\n';
        return 1;
    }
}
