#include "runtime/locator.hpp"

#include <velmora.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <libgen.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <utility>

namespace velmora::runtime {
namespace {

constexpr std::string_view kConfigFileName = "/VelmoraDLL.conf";
constexpr std::string_view kConfigDelimiters = "=\n\r";
constexpr std::string_view kKeyJvm64Path = "JVM64PATH";
constexpr std::string_view kKeyJvmPath = "JVMPATH";
constexpr const char* kBareName = "libjvm.so";

constexpr const char* kDefaultJavaHome = "/usr/lib/jvm/default-java";  // the system's default runtime
constexpr std::string_view kBlanks = " \t";

// The configuration file is read up to this many bytes; the rest of a larger
// file is ignored.
constexpr long kConfigReadLimit = 1 << 20;

// A link chain longer than this is given up, whatever the files say.
constexpr int kMaxLinkHops = 64;

// Emits one trace line built from `detail` pieces; costs nothing without a
// trace.
void note(const Trace* trace, std::string_view step,
          std::initializer_list<std::string_view> detail) {
    if (trace == nullptr || !*trace) return;
    std::string text;
    for (std::string_view piece : detail) text += piece;
    (*trace)(step, text);
}

// Writes the concatenation of `parts` with its terminator into `buffer`
// (kPathBuffer bytes) when it fits; otherwise leaves `buffer` alone.
bool compose(char* buffer, std::initializer_list<std::string_view> parts) {
    std::size_t length = 0;
    for (std::string_view part : parts) length += part.size();
    if (length >= kPathBuffer) return false;
    char* out = buffer;
    for (std::string_view part : parts) {
        std::memcpy(out, part.data(), part.size());
        out += part.size();
    }
    *out = '\0';
    return true;
}

// Opens `path` for reading without ever blocking (an ordinary open of a FIFO
// waits for a writer) and keeps it only when it is a regular file: a FIFO, a
// device or a directory counts as absent, since reading or loading it could
// block or never end. Returns the descriptor, or -1 with the reason in `why`.
int openRegularFile(const char* path, std::string_view& why) {
    int fd = ::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (fd < 0) {
        why = "cannot open";
        return -1;
    }
    struct stat status;
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(fd);
        why = "not a regular file";
        return -1;
    }
    return fd;
}

// Whether `path` (of any kind) opens for reading; never blocks.
bool opens(const char* path) {
    int fd = ::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (fd < 0) return false;
    ::close(fd);
    return true;
}

// The test every runtime library candidate must pass: it opens for reading
// and is a regular file. `why` says what was found.
bool opensForReading(const char* path, std::string_view& why) {
    int fd = openRegularFile(path, why);
    if (fd < 0) return false;
    ::close(fd);
    why = "opened";
    return true;
}

std::string posixDirname(std::string path) {
    return ::dirname(path.data());  // works on our copy; may return a constant "."
}

// The next token of `rest`, delimited by any of "=\n\r": delimiters before it
// are skipped, so runs of them count as one. Empty when none is left.
std::string_view nextToken(std::string_view& rest) {
    std::size_t start = rest.find_first_not_of(kConfigDelimiters);
    if (start == std::string_view::npos) {
        rest = {};
        return {};
    }
    rest.remove_prefix(start);
    std::size_t end = std::min(rest.find_first_of(kConfigDelimiters), rest.size());
    std::string_view token = rest.substr(0, end);
    rest.remove_prefix(end);
    return token;
}

std::string_view withoutLineEnd(std::string_view line) {
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
    return line;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t start = text.find_first_not_of(kBlanks);
    if (start == std::string_view::npos) return {};
    return text.substr(start, text.find_last_not_of(kBlanks) - start + 1);
}

// Reads the configured runtime path, if any, with the line that gave it. A
// JVMPATH line replaces what an earlier one gave; the first JVM64PATH line
// wins and ends the reading.
std::optional<std::pair<std::string, int>> readConfig(const std::string& configPath, const Trace* trace) {
    std::string_view why;
    const int fd = openRegularFile(configPath.c_str(), why);
    std::FILE* file = fd < 0 ? nullptr : ::fdopen(fd, "r");
    if (fd >= 0 && file == nullptr) ::close(fd);
    note(trace, "config file", {configPath, file ? ": opened" : ": ", file ? "" : why, file ? "" : ", skipped"});
    if (file == nullptr) return std::nullopt;

    std::optional<std::pair<std::string, int>> value;
    char line[kPathBuffer];  // a longer line arrives in several pieces
    for (int number = 1; std::fgets(line, sizeof line, file) != nullptr; ++number) {
        if (std::ftell(file) > kConfigReadLimit) {
            note(trace, "config file", {"longer than the reading limit, the rest is ignored"});
            break;
        }
        std::string_view rest(line);  // up to the first NUL byte, like any C string
        std::string_view key = nextToken(rest);
        std::string_view found = nextToken(rest);
        std::string_view shown = withoutLineEnd(line);
        if (found.empty()) {
            note(trace, "config line", {"'", shown, "': no key and value, ignored"});
        } else if (key == kKeyJvm64Path) {
            value.emplace(found, number);
            note(trace, "config line", {"'", shown, "': runtime path '", found, "', reading stops"});
            break;
        } else if (key == kKeyJvmPath) {
            value.emplace(found, number);
            note(trace, "config line", {"'", shown, "': runtime path '", found, "'"});
        } else {
            note(trace, "config line", {"'", shown, "': unknown key '", key, "', ignored"});
            if (trimmed(key) == kKeyJvm64Path || trimmed(key) == kKeyJvmPath) {
                note(trace, "hint", {"blanks count in keys and values: write line ", std::to_string(number), " as ",
                                     trimmed(key), "=", trimmed(found)});
            }
        }
    }
    std::fclose(file);
    return value;
}

std::optional<std::string> searchJavaHome(const Trace* trace) {
    const char* home = std::getenv("JAVA_HOME");
    if (home == nullptr) {
        note(trace, "JAVA_HOME", {"unset"});
        return std::nullopt;
    }
    note(trace, "JAVA_HOME", {"'", home, "'"});
    char candidate[kPathBuffer];
    for (std::string_view layout : kClassicLayouts) {
        if (!compose(candidate, {home, "/", layout})) {
            note(trace, "JAVA_HOME candidate", {"$JAVA_HOME/", layout, ": too long, skipped"});
            continue;
        }
        std::string_view why;
        bool opened = opensForReading(candidate, why);
        note(trace, "JAVA_HOME candidate", {candidate, ": ", why});
        if (opened) return std::string(candidate);
    }
    return std::nullopt;
}

// `path` holds a regular java launcher: tries the library layouts under the
// directory three levels above it, each candidate written into `path`.
bool tryLauncherHome(char* path, const Trace* trace) {
    std::string home = posixDirname(posixDirname(posixDirname(path)));
    note(trace, "java home", {path, " -> ", home});
    for (std::string_view relative : kClassicLayouts) {
        if (!compose(path, {home, "/", relative})) {
            note(trace, "candidate", {home, "/", relative, ": too long, skipped"});
            continue;
        }
        std::string_view why;
        bool opened = opensForReading(path, why);
        note(trace, "candidate", {path, ": ", why});
        if (opened) return true;
    }
    return false;
}

// One PATH entry: "<entry>/java", links followed one at a time with each link
// text taken as it is (a relative text is relative to the working directory).
bool searchPathEntry(std::string_view entry, char* path, const Trace* trace) {
    if (!compose(path, {entry, "/java"})) {
        note(trace, "PATH entry", {"'", entry, "': too long, skipped"});
        return false;
    }
    note(trace, "PATH entry", {"'", entry, "': trying ", path});
    for (int hops = 0;; ++hops) {
        if (!opens(path)) {
            note(trace, "launcher", {path, ": cannot open, next entry"});
            return false;
        }
        struct stat status;
        if (::lstat(path, &status) != 0) {
            note(trace, "launcher", {path, ": no status, next entry"});
            return false;
        }
        if (S_ISREG(status.st_mode)) return tryLauncherHome(path, trace);
        if (hops == kMaxLinkHops) {
            note(trace, "launcher", {path, ": too many links, next entry"});
            return false;
        }
        char target[kPathBuffer] = {};
        ssize_t length = ::readlink(path, target, sizeof target);
        if (length < 0) {
            note(trace, "launcher", {path, ": neither a file nor a link, next entry"});
            return false;
        }
        if (static_cast<std::size_t>(length) >= sizeof target) {
            note(trace, "launcher", {path, ": link text too long, next entry"});
            return false;
        }
        note(trace, "link", {path, " -> ", target});
        std::memcpy(path, target, static_cast<std::size_t>(length) + 1);
    }
}

// Calls `visit` for each non-empty entry of a copy of PATH; stops when it
// returns true. False when PATH is unset or empty.
template <typename Visit>
bool forEachPathEntry(const Trace* trace, Visit visit) {
    const char* value = std::getenv("PATH");
    if (value == nullptr || *value == '\0') {
        note(trace, "PATH", {value ? "empty" : "unset"});
        return false;
    }
    note(trace, "PATH", {"'", value, "'"});
    const std::string entries(value);
    for (std::size_t start = 0; start <= entries.size();) {
        std::size_t end = std::min(entries.find(':', start), entries.size());
        std::string_view entry(entries.data() + start, end - start);
        start = end + 1;
        if (!entry.empty() && visit(entry)) return true;
    }
    return false;
}

}  // namespace

std::string_view describe(Location::Source source) {
    switch (source) {
        case Location::Source::Config: return "configuration file";
        case Location::Source::JavaHome: return "JAVA_HOME";
        case Location::Source::Path: return "java on PATH";
        case Location::Source::BareName: return "bare name for the dynamic loader";
        case Location::Source::CurrentLayout: return "current JDK layout";
    }
    return "unknown";
}

namespace {

// The library's file as the loader named it. A relative name (a relative
// dlopen path or LD_LIBRARY_PATH entry) is relative to the working directory
// of the moment the library was loaded, so it is made absolute when the
// library is loaded, while the host cannot have changed directory yet.
std::string fileAsLoaded() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<void*>(&velmora_findJavaInPath), &info) == 0 ||
        info.dli_fname == nullptr) {
        return {};
    }
    std::string file = info.dli_fname;
    if (file.empty() || file.front() == '/' || file.find('/') == std::string::npos) return file;
    char* cwd = ::getcwd(nullptr, 0);
    if (cwd == nullptr) return file;
    std::string absolute = cwd;
    std::free(cwd);
    if (absolute.back() != '/') absolute += '/';
    return absolute + file;
}

const std::string& loadedFile() {
    static const std::string file = fileAsLoaded();
    return file;
}

[[gnu::constructor]] void nameLoadedFileAtLoad() { loadedFile(); }

// Appends the places where current JDKs keep the runtime library, each once.
void addCurrentLayouts(std::vector<Location::Candidate>& candidates) {
    auto add = [&](std::string home) {
        if (home.empty() || home.back() != '/') home += '/';
        std::string path = home + std::string(kCurrentLayout);
        for (const Location::Candidate& known : candidates) {
            if (known.path == path) return;
        }
        candidates.push_back({std::move(path), Location::Source::CurrentLayout});
    };
    const char* home = std::getenv("JAVA_HOME");
    if (home != nullptr && *home != '\0') add(home);
    forEachPathEntry(nullptr, [&](std::string_view entry) {
        std::string launcher = std::string(entry) + "/java";
        char* resolved = ::realpath(launcher.c_str(), nullptr);
        if (resolved == nullptr) return false;
        std::string real(resolved);
        std::free(resolved);
        struct stat status;
        if (::stat(real.c_str(), &status) == 0 && S_ISREG(status.st_mode)) add(posixDirname(posixDirname(real)));
        return false;
    });
    add(kDefaultJavaHome);
}

}  // namespace

std::string ownLibraryFile() { return loadedFile(); }

Location locate(std::string_view libraryFile, const Trace* trace) {
    Location where;
    std::size_t slash = libraryFile.rfind('/');
    if (libraryFile.empty()) {
        note(trace, "library file", {"unknown, no configuration file"});
    } else if (slash == std::string_view::npos) {
        note(trace, "library file", {"'", libraryFile, "' has no directory, no configuration file"});
    } else if (slash >= kPathBuffer) {
        note(trace, "library file", {"'", libraryFile, "': directory too long, no configuration file"});
    } else {
        where.libraryDir = libraryFile.substr(0, slash);
        if (where.libraryDir.size() + kConfigFileName.size() < kPathBuffer) {
            where.configPath = where.libraryDir + std::string(kConfigFileName);
        }
        note(trace, "library directory", {"'", where.libraryDir, "'"});
        if (where.configPath.empty()) note(trace, "config file", {"path too long, skipped"});
    }

    auto choose = [&](std::string path, Location::Source source) {
        note(trace, "runtime library", {path, " (", describe(source), ")"});
        if (namesIrregularFile(path)) {
            note(trace, "runtime library", {"not a regular file: start-up will not load it (-22)"});
        }
        where.candidates.push_back({std::move(path), source});
        if (source == Location::Source::BareName) addCurrentLayouts(where.candidates);
        return where;
    };

    if (!where.configPath.empty()) {
        if (auto configured = readConfig(where.configPath, trace)) {
            where.configLine = configured->second;
            return choose(std::move(configured->first), Location::Source::Config);
        }
    }
    if (auto fromHome = searchJavaHome(trace)) {
        return choose(std::move(*fromHome), Location::Source::JavaHome);
    }
    char found[kPathBuffer] = {};
    if (findJavaInPath(found, trace) == 0) return choose(found, Location::Source::Path);
    return choose(kBareName, Location::Source::BareName);
}

bool namesIrregularFile(const std::string& path) {
    struct stat status;
    return path.find('/') != std::string::npos && ::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

int findJavaInPath(char* path, const Trace* trace) {
    if (path == nullptr) return -1;
    bool found = forEachPathEntry(
        trace, [&](std::string_view entry) { return searchPathEntry(entry, path, trace); });
    return found ? 0 : -1;
}

}  // namespace velmora::runtime

extern "C" __attribute__((visibility("default"))) int velmora_findJavaInPath(char* path) {
    return velmora::runtime::findJavaInPath(path);
}
