// The runtime locator on a fake machine in a scratch directory, which is also the working directory:
// paths, PATH entries and link texts below are relative to it. Empty files stand in for launchers and
// libraries, since only opening is tested.
#include "runtime/locator.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <utility>

namespace fs = std::filesystem;
using namespace velmora::runtime;
using namespace std::string_literals;
using Strings = std::vector<std::string>;

// The classic layouts of a Java home, in the order they are tried.
const std::string kSrv = "/jre/lib/amd64/server/libjvm.so", kJreCli = "/jre/lib/amd64/client/libjvm.so",
                  kLibSrv = "/lib/amd64/server/libjvm.so", kLibCli = "/lib/amd64/client/libjvm.so";
// Slashes pad a path to the launcher o/jdk/bin/java to 4095 bytes; the dirname steps drop them.
const std::string kPad = "o" + std::string(4095 - "ojdk/bin/java"s.size(), '/');

// `path`, its directory made.
std::string made(const std::string& path) {
    fs::create_directories(fs::absolute(path).parent_path());
    return path;
}

class LocatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"JAVA_HOME", "PATH"}) ::unsetenv(name);
        fs::current_path(t_);
        ::alarm(20);  // a search that blocks or goes round for ever ends the process; each test re-arms it
        // Java homes: o, with the first two classic layouts, whose launcher o/jdk/bin/java has a library
        // two directories up as well and is reached through bin/java and through java, a link text of
        // 4095 bytes; home, with odd files (a FIFO, a directory, a link to an endless device) at every
        // layout but the last; jdkA and jdkB, JDKs of the current layout reached through a/java and
        // b/java. bin/o/jdk/bin/java and b/x/y/java are launchers without a library, d/java is a
        // FIFO, g/java a dangling link, loop/java a link that goes round. The configuration files
        // beside fifo/, dir/ and zero/ are odd.
        for (const auto& f : Strings{"o/jdk/bin/java", "o" + kSrv, "o" + kJreCli, "o/jdk" + kSrv, "bin/o/jdk/bin/java",
                                     "home/jre/bin/java", "home" + kJreCli + "/f", "home" + kLibCli, "jdkA/bin/java",
                                     "jdkB/bin/java", "b/x/y/java", "loop/java2", "dir/VelmoraDLL.conf/f"})
            std::ofstream{made(f)};
        for (const auto& [link, text] : std::map<std::string, std::string>{
                 {"bin/java", "o/jdk/bin/java"}, {"java", kPad + "jdk/bin/java"}, {"home" + kLibSrv, "/dev/zero"},
                 {"a/java", t_ + "/jdkA/bin/java"}, {"b/java", "../jdkB/bin/java"}, {"g/java", "gone"},
                 {"loop/java", "java2"}, {"java2", "loop/java"}, {"zero/VelmoraDLL.conf", "/dev/zero"}})
            fs::create_symlink(text, made(link));
        for (const auto& f : {"home" + kSrv, "d/java"s, "fifo/VelmoraDLL.conf"s})
            ASSERT_EQ(::mkfifo(made(f).c_str(), 0600), 0);
    }
    void TearDown() override {
        fs::current_path(cwd_);
        fs::remove_all(t_);
    }
    fs::path cwd_ = fs::current_path();
    std::string t_ = fs::canonical(::mkdtemp(std::string("/tmp/locator_test.XXXXXX").data()));
};

// What VelmoraDLL.conf beside the library file names, where it is looked for, and what is never read.
TEST_F(LocatorTest, ConfigurationFile) {
    // `trace` keeps what the search traces, a line per step; `empty`, a trace without a target, is the
    // same as none.
    std::string steps;
    const Trace empty, trace = [&](auto, auto detail) { steps.append(detail) += '\n'; };
    // The runtime path each content names; "libjvm.so" when none.
    const struct { std::string content, chosen; } lines[] = {
        // The first JVM64PATH wins and ends the reading; runs of '=', '\n' and '\r' delimit, spaces
        // belong to the value.
        {"JVMPATH=/a\n\r==JVM64PATH\r==/my jre/j.so =b\r\nJVM64PATH=/c\nJVMPATH=/d\n", "/my jre/j.so "},
        // Keys match whole and exactly; a line without a value, or cut by a NUL byte, names nothing.
        {"JVMPATH=\nJVMPATH\nJVMPATHX=/a\njvmpath=/a\nJVMPATH =/a\n JVMPATH=/a\nJVMPATH\0=/a\n"s, "libjvm.so"},
        // A line longer than one 4095-byte read is taken as several lines.
        {std::string(4095, 'x') + "JVMPATH=/a\n", "/a"},
        // A later JVMPATH replaces an earlier one; only the first MiB is read.
        {"JVMPATH=/a\nJVMPATH=/early\n" + std::string(1 << 20, 'x') + "\nJVMPATH=/late\n", "/early"},
    };
    for (const auto& [content, chosen] : lines) {
        std::ofstream("VelmoraDLL.conf") << content;
        EXPECT_EQ(locate(t_ + "/v.so", &empty).candidates[0].path, chosen) << content.substr(0, 60);
    }

    // "fit" is the longest directory whose configuration path fits; "big" a directory one byte too
    // long, and without its first byte the longest one that is kept.
    const std::string fit = "/" + std::string(4078, 'd'), big = fit + std::string(17, 'd');
    const struct { std::string file, dir, config; } places[] = {
        {big.substr(1) + "/v.so", big.substr(1), ""}, {"/v.so", "", "/VelmoraDLL.conf"}, {"v.so", "", ""},
        {fit + "/v.so", fit, fit + "/VelmoraDLL.conf"}, {fit + "d/v.so", fit + "d", ""}, {big + "/v.so", "", ""},
    };
    for (const auto& [file, dir, config] : places)
        EXPECT_EQ((Strings{locate(file).libraryDir, locate(file).configPath}), (Strings{dir, config})) << file.size();

    // A configuration file that is a FIFO, a directory or an endless device counts as absent, and
    // never blocks. A bare name is the loader's to search, whatever the working directory holds.
    for (const std::string odd : {"fifo", "dir", "zero"}) {
        locate(odd + "/v.so", &trace);
        EXPECT_THAT(steps, ::testing::HasSubstr(odd + "/VelmoraDLL.conf: not a regular file"));
        EXPECT_TRUE(namesIrregularFile(odd + "/VelmoraDLL.conf")) << odd;
    }
    for (const auto& name : {"home" + kLibCli, "home"s, "none/x"s}) EXPECT_FALSE(namesIrregularFile(name)) << name;
}

// The search through JAVA_HOME and PATH.
TEST_F(LocatorTest, JavaHomeAndPath) {
    // The PATH search returns 0 with the runtime library found in the buffer, else -1 with the last
    // path tried there or, when no entry could be tried, the buffer untouched. "fits" is a JAVA_HOME
    // padded with slashes to the limit with the first layout, without changing where it points.
    const std::string untouched(kPathBuffer - 1, '#'), fits = "o" + std::string(4095 - kSrv.size() - 1, '/');
    const struct { std::string path; int rc; std::string out; } searches[] = {
        // Only empty entries and one of 4096 bytes with "/java"; then a FIFO, a dangling link, a
        // launcher without a library and odd libraries are passed over, and nothing blocks.
        {":::" + kPad + "/jdk/bin", -1, untouched}, {"d:g:b/x/y::home/jre/bin", 0, "home" + kLibCli},
        // The home is three directories above the launcher, never two; a relative link text is read
        // from the working directory, not from the link's own directory; links that go round are
        // given up; an entry of 4095 bytes with "/java"; a link text of 4095 bytes.
        {"bin", 0, "o" + kSrv}, {"loop", -1, "loop/java"}, {kPad + "jdk/bin", 0, "o" + kSrv}, {".", 0, "o" + kSrv},
    };
    for (const auto& [path, rc, out] : searches) {
        ::setenv("PATH", path.c_str(), 1);
        std::string held = untouched + '\0';
        EXPECT_EQ((std::pair{findJavaInPath(held.data()), std::string(held.c_str())}), (std::pair{rc, out})) << path;
    }
    EXPECT_EQ(findJavaInPath(nullptr), -1);  // with the last row's PATH, which leads to a launcher

    // What start-up tries, in order: the library under JAVA_HOME, else under the home of the java on
    // PATH, else the bare name followed by where current JDKs keep the library, each once, and the
    // system's default runtime.
    const std::string tail = "/lib/server/libjvm.so", a = t_ + "/jdkA" + tail, b = t_ + "/jdkB" + tail,
                      fallback = "/usr/lib/jvm/default-java" + tail, entries = ":a:none:d:b:jdkA/bin";
    const struct { std::string home, path; Strings candidates; } choices[] = {
        // Among the current layouts JAVA_HOME leads, though its JDK comes later on PATH; an empty one
        // is none, and so is an empty PATH. JAVA_HOME comes before PATH, odd files in it passed over,
        // and fits up to the limit, one byte more being too long. Any other choice than the bare name
        // stands alone.
        {t_ + "/jdkB/", entries, {"libjvm.so", b, a, fallback}}, {"", entries, {"libjvm.so", a, b, fallback}},
        {"", "", {"libjvm.so", fallback}}, {"home", "o/jdk/bin", {"home" + kLibCli}}, {fits, "", {fits + kSrv}},
        {fits + "/", "", {"libjvm.so", fits + tail, fallback}},
    };
    for (const auto& [home, path, candidates] : choices) {
        ::setenv("JAVA_HOME", home.c_str(), 1);
        ::setenv("PATH", path.c_str(), 1);
        EXPECT_TRUE(std::ranges::equal(locate("").candidates, candidates, {}, &Location::Candidate::path)) << home;
    }
}
