// Choosing the Java runtime library (libjvm.so) to load.
//
// Four sources are consulted in a fixed order and the first that yields a
// path wins:
//   1. VelmoraDLL.conf beside the library file (keys JVM64PATH and JVMPATH);
//   2. the JAVA_HOME environment variable (the classic layouts under it);
//   3. the java launcher found on PATH, links followed one at a time, from
//      which a Java home three directories up is derived;
//   4. the bare name "libjvm.so", left to the dynamic loader's search.
// When the bare name wins, the places where current JDKs keep the library
// follow it in the list of candidates that start-up tries in order and the
// doctor prints. Nothing here fails: every branch ends with a path, and a path
// that cannot be loaded shows up when start-up loads it. The environment is
// only read.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::runtime {

// Size of every path, configuration line and link text buffer, terminator
// included: values of at most kPathBuffer - 1 bytes are supported.
inline constexpr std::size_t kPathBuffer = 4096;

// Where a Java home keeps its runtime library: the classic layouts, tried in
// this order under JAVA_HOME and under the home of a java launcher on PATH,
// and the layout of current JDKs (9 and later).
inline constexpr std::array<std::string_view, 4> kClassicLayouts = {
    "jre/lib/amd64/server/libjvm.so",
    "jre/lib/amd64/client/libjvm.so",
    "lib/amd64/server/libjvm.so",
    "lib/amd64/client/libjvm.so",
};
inline constexpr std::string_view kCurrentLayout = "lib/server/libjvm.so";

// Receives one line per step of the search (for the diagnostics tool); a step
// named "hint" says how to fix what the step before it found. Every function
// takes it as a pointer that may be null; nothing is formatted then.
using Trace = std::function<void(std::string_view step, std::string_view detail)>;

struct Location {
    enum class Source { Config, JavaHome, Path, BareName, CurrentLayout };
    struct Candidate {
        std::string path;  // what to hand to dlopen
        Source source;
    };

    // Directory of the library's own file; "" when the file is unknown, has
    // no directory part, lies directly in "/", or the directory is too long.
    std::string libraryDir;
    // "<libraryDir>/VelmoraDLL.conf"; "" when no configuration file can be
    // named (unknown file, no directory part, or the path would be too long).
    std::string configPath;
    // Line of the configuration file that gave the runtime path (counted as
    // read, a longer line in pieces of kPathBuffer - 1 bytes); 0 for none.
    int configLine = 0;
    // What start-up tries to load, in order, until one loads: first the
    // search's own choice; after the bare name, $JAVA_HOME/lib/server/libjvm.so
    // (JAVA_HOME set and non-empty), then for each java launcher on PATH,
    // fully resolved, the directory two levels above it + /lib/server/libjvm.so,
    // then the system's default runtime, without duplicates. Never empty.
    std::vector<Candidate> candidates;
};

// Short human-readable name of a source ("configuration file", ...).
std::string_view describe(Location::Source source);

// Path of the file that holds this library, as the dynamic loader names it,
// a relative name made absolute against the working directory the library
// was loaded in; "" when the loader cannot say.
std::string ownLibraryFile();

// Runs the whole search for a library file path as the loader reported it
// ("" = unknown).
Location locate(std::string_view libraryFile, const Trace* trace = nullptr);

// The PATH search. `path` is a buffer of kPathBuffer bytes. Returns 0 with the
// runtime library's path in `path`, or -1 with the last path tried left in
// `path` (untouched when PATH is unset or holds no usable entry). A null
// `path` gives -1.
int findJavaInPath(char* path, const Trace* trace = nullptr);

// Whether `path` names a file (it holds a "/") that exists but is not a
// regular file: a FIFO, a device or a directory, links followed. Such a path
// is never handed to the dynamic loader, which could block on it or read it
// without end; it counts as a library that is absent.
bool namesIrregularFile(const std::string& path);

}  // namespace velmora::runtime
