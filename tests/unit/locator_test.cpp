// The runtime locator against fake installations in a scratch directory: empty
// files stand in for launchers and libraries, since only opening is tested.
#include "runtime/locator.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <tuple>

namespace fs = std::filesystem;
using namespace velmora::runtime;
using namespace std::string_literals;
using Strings = std::vector<std::string>;
using ::testing::HasSubstr;

const std::string kSrv = "/jre/lib/amd64/server/libjvm.so", kJreCli = "/jre/lib/amd64/client/libjvm.so",
                  kLibSrv = "/lib/amd64/server/libjvm.so", kLibCli = "/lib/amd64/client/libjvm.so";

class LocatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"JAVA_HOME", "PATH"}) ::unsetenv(name);
        char tmpl[] = "/tmp/locator_test.XXXXXX";
        ASSERT_NE(::mkdtemp(tmpl), nullptr);
        t_ = fs::canonical(tmpl).string();
        ::alarm(20);  // a search that blocks or goes round for ever ends the process
    }
    void TearDown() override {
        ::alarm(0);
        fs::current_path(cwd_);
        fs::remove_all(t_);
    }
    // "$T" stands for the scratch directory.
    std::string sub(std::string s) const { return s.find("$T") == s.npos ? s : sub(s.replace(s.find("$T"), 2, t_)); }
    std::string at(const std::string& rel) const {  // "$T/<rel>", its directory made
        fs::create_directories(fs::path(t_ + "/" + rel).parent_path());
        return t_ + "/" + rel;
    }
    void file(const std::string& rel, const std::string& content = "") const { std::ofstream(at(rel)) << content; }
    static std::string traceOf(const std::string& libraryFile) {  // what the search traces, a line per step
        std::string text;
        const Trace trace = [&](auto step, auto detail) { text.append(step).append(" ").append(detail) += '\n'; };
        locate(libraryFile, &trace);
        return text;
    }
    std::string t_;
    fs::path cwd_ = fs::current_path();
};

TEST_F(LocatorTest, ConfigurationFileThenJavaHome) {
    // What the file names; "libjvm.so" when nothing.
    const std::vector<std::pair<std::string, std::string>> cases = {
        // The first JVM64PATH wins and ends the reading; runs of '=', '\n' and '\r' delimit, spaces
        // belong to the value.
        {"JVMPATH=/a\n\r==JVM64PATH\r==/my jre/j.so =b\r\nJVM64PATH=/c\nJVMPATH=/d\n", "/my jre/j.so "},
        // Keys match whole and exactly; a line without a value, or cut by a NUL byte, names nothing.
        {"JVMPATH=\nJVMPATH\nJAVA_HOME=/a\njvmpath=/a\nJVMPATH = /a\n JVMPATH=/a\nJVMPATH\0=/a\n"s, "libjvm.so"},
        // A line longer than one 4095-byte read is taken as several lines.
        {std::string(4095, 'x') + "JVMPATH=/a\n", "/a"},
        // A later JVMPATH replaces an earlier one; only the first MiB is read.
        {"JVMPATH=/a\nJVMPATH=/early\n" + std::string(1 << 20, 'x') + "\nJVMPATH=/late\n", "/early"},
    };
    const Trace empty;  // a trace without a target is the same as none
    for (const auto& [content, expected] : cases) {
        file("lib/VelmoraDLL.conf", content);
        EXPECT_EQ(locate(t_ + "/lib/v.so", &empty).candidates[0].path, expected) << content.substr(0, 60);
    }

    // Where the file is looked for: library file, directory, configuration file. "fit" is the longest
    // directory whose configuration path fits, "big" a directory one byte too long.
    const std::string fit = "/" + std::string(4078, 'd'), big = fit + std::string(17, 'd');
    const std::vector<Strings> places = {
        {"lib/v.so", "lib", "lib/VelmoraDLL.conf"}, {"/v.so", "", "/VelmoraDLL.conf"}, {"v.so", "", ""},
        {fit + "/v.so", fit, fit + "/VelmoraDLL.conf"}, {fit + "d/v.so", fit + "d", ""}, {big + "/v.so", "", ""},
    };
    for (const auto& c : places) EXPECT_EQ((Strings{c[0], locate(c[0]).libraryDir, locate(c[0]).configPath}), c);

    // Then JAVA_HOME, without a library file.
    file(kLibSrv.substr(1));
    // Slashes pad the value to the limit without changing where it points; one more is too long for
    // every layout. An empty value is used as it is.
    const std::string fits = t_ + std::string(4095 - kLibSrv.size() - t_.size(), '/');
    for (const auto& [home, step] : std::vector<std::pair<std::string, std::string>>{
             {"", "JAVA_HOME candidate " + kSrv + ": cannot open"}, {fits + "/", "runtime library libjvm.so (bare"},
             {fits, "runtime library " + fits + kLibSrv + " (JAVA_HOME)"}}) {
        ::setenv("JAVA_HOME", home.c_str(), 1);
        EXPECT_THAT(traceOf(""), HasSubstr(step));
    }
}

// Run from the scratch directory, where relative link texts are read.
TEST_F(LocatorTest, PathSearch) {
    // PATH, files, links, result, and the runtime library, the last path tried or
    // the buffer untouched.
    // Slashes pad an entry, or a link text, to 4095 bytes with "/java"; the dirname steps drop them.
    const std::string pad(4095 - t_.size() - 10, '/'), untouched(kPathBuffer - 1, '#');
    const Strings jdk = {"j/bin/java", kSrv.substr(1)};
    const std::vector<std::tuple<std::string, Strings, std::vector<Strings>, int, std::string>> cases = {
        // Only empty entries and one of 4096 bytes with "/java": the buffer is left alone.
        {":::" + t_ + "/" + pad + "j/bin", jdk, {}, -1, untouched},
        // The home is three directories above the launcher, never two.
        {"$T/o/jdk/bin", {"o/jdk/bin/java", "o" + kSrv, "o" + kJreCli, "o/jdk" + kSrv}, {}, 0, "$T/o" + kSrv},
        // Empty entries, a link to a directory, a dangling link and a launcher without a library are
        // passed over.
        {"::$T/a::$T/g:$T/b/x/y:$T/c/jre/bin:", {"d/f", "b/x/y/java", "c/jre/bin/java", "c" + kLibCli},
         {{"a/java", "$T/d"}, {"g/java", "$T/gone"}}, 0, "$T/c" + kLibCli},
        // A relative link text is read from the working directory, not from the link's
        // own directory (which here holds a launcher without a library).
        {"$T/bin", {"bin/jdk/jre/bin/java", "jdk/jre/bin/java", "jdk" + kSrv}, {{"bin/java", "jdk/jre/bin/java"}},
         0, "jdk" + kSrv},
        // Every link opens, yet read from the working directory they go round for ever.
        {"$T/loop", {"loop/java2"}, {{"loop/java", "java2"}, {"java2", "loop/java"}}, -1, "loop/java"},
        {t_ + pad + "j/bin", jdk, {}, 0, "$T" + kSrv},
        {"$T/a", jdk, {{"a/java", t_ + pad + "j/bin/java"}}, 0, "$T" + kSrv},
    };
    fs::current_path(t_);
    for (const auto& [path, files, links, rc, expected] : cases) {
        for (const auto& entry : fs::directory_iterator(t_)) fs::remove_all(entry);
        for (const auto& f : files) file(f);
        for (const auto& l : links) fs::create_symlink(sub(l[1]), at(l[0]));
        ::setenv("PATH", sub(path).c_str(), 1);
        std::string out = untouched + '\0';
        EXPECT_EQ(findJavaInPath(out.data()), rc) << "PATH " << path;
        EXPECT_EQ(out.substr(0, out.find('\0')), sub(expected)) << "PATH " << path;
    }
    EXPECT_EQ(findJavaInPath(nullptr), -1);  // with the last row's PATH, which leads to a launcher
}

TEST_F(LocatorTest, CandidatesInOrderWithoutDuplicates) {
    // d/java: a directory, no launcher; jdkC: a home of the classic layout.
    for (const std::string& f : {"jdkA/bin/java"s, "jdkB/bin/java"s, "d/java/f"s, "jdkC" + kSrv}) file(f);
    fs::create_symlink(t_ + "/jdkA/bin/java", at("a/java"));
    fs::create_symlink("../jdkB/bin/java", at("b/java"));
    const std::string tail = "/lib/server/libjvm.so", a = t_ + "/jdkA" + tail, b = t_ + "/jdkB" + tail,
                      fallback = "/usr/lib/jvm/default-java" + tail, path = ":$T/a:$T/none:$T/d:$T/b:$T/jdkA/bin";
    // After the bare name, where current JDKs keep the library: JAVA_HOME first, though its JDK comes
    // later on PATH; an empty one is none, and so is an empty PATH. Nothing follows another choice.
    for (const auto& [home, entries, want] : std::vector<std::tuple<std::string, std::string, Strings>>{
             {"$T/jdkB/", path, {"libjvm.so", b, a, fallback}}, {"", path, {"libjvm.so", a, b, fallback}},
             {"", "", {"libjvm.so", fallback}}, {"$T/jdkC", path, {t_ + "/jdkC" + kSrv}}}) {
        ::setenv("JAVA_HOME", sub(home).c_str(), 1);
        ::setenv("PATH", sub(entries).c_str(), 1);
        EXPECT_TRUE(std::ranges::equal(locate("").candidates, want, {}, &Location::Candidate::path)) << home << entries;
    }
}

// A FIFO, a directory or a link to an endless device where the configuration file or a runtime
// library candidate is expected counts as absent, with the reason traced, and never blocks.
TEST_F(LocatorTest, IrregularFilesCountAsAbsent) {
    // A configured path is kept even so: start-up refuses it.
    file("lib/VelmoraDLL.conf", "JVMPATH=/dev/zero\n");
    EXPECT_THAT(traceOf(t_ + "/lib/v.so"), HasSubstr("zero (configuration file)\nruntime library not a regular file"));

    const std::string home = t_ + "/home";
    ::setenv("PATH", (home + "/jre/bin").c_str(), 1);
    int (*const makers[])(const char*) = {[](const char* p) { return ::mkfifo(p, 0600); },
                                          [](const char* p) { return ::mkdir(p, 0700); },
                                          [](const char* p) { return ::symlink("/dev/zero", p); }};
    for (const auto make : makers) {
        // Odd: the configuration file and every layout of the home but the last, which the trace
        // shows tried in order. The home is JAVA_HOME, then that of the java on PATH.
        fs::remove_all(t_);
        for (const auto& f : Strings{"home/jre/bin/java", "home" + kLibCli}) file(f);
        for (const auto& odd : Strings{"lib/VelmoraDLL.conf", "home" + kSrv, "home" + kJreCli, "home" + kLibSrv})
            ASSERT_EQ(make(at(odd).c_str()), 0) << odd;
        ::setenv("JAVA_HOME", home.c_str(), 1);
        for (const auto& [source, step] : {std::pair{"JAVA_HOME", "\nJAVA_HOME "}, {"java on PATH", "\n"}}) {
            std::string steps, lead = step + "candidate "s + home;
            for (const auto& p : {kSrv, kJreCli, kLibSrv}) steps += lead + p + ": not a regular file";
            steps += lead + kLibCli + ": opened\nruntime library " + home + kLibCli + " (" + source + ")";
            EXPECT_THAT(traceOf(t_ + "/lib/v.so"),
                        testing::AllOf(HasSubstr(steps), HasSubstr("VelmoraDLL.conf: not a regular file, skipped")));
            ::unsetenv("JAVA_HOME");
        }
        // A bare name is the loader's to search, whatever the working directory holds.
        fs::current_path(home + "/jre/lib/amd64/server");
        for (const auto& name : {"libjvm.so"s, home + kSrv, home + kLibCli, t_ + "/absent"})
            EXPECT_EQ(namesIrregularFile(name), name == home + kSrv) << name;
    }
}
