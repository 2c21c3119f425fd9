// The runtime locator against fake installations in a scratch directory: empty
// files stand in for launchers and libraries, since only opening is tested.
#include "runtime/locator.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <regex>
#include <tuple>

namespace fs = std::filesystem;
using namespace velmora::runtime;
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
    std::string sub(const std::string& s) const { return std::regex_replace(s, std::regex("\\$T"), t_); }
    std::string at(const std::string& rel) const {  // "$T/<rel>", its directory made
        fs::create_directories(fs::path(t_ + "/" + rel).parent_path());
        return t_ + "/" + rel;
    }
    void file(const std::string& rel, const std::string& content = "") const { std::ofstream(at(rel)) << content; }
    void link(const std::string& rel, const std::string& target) const { fs::create_symlink(sub(target), at(rel)); }
    static std::string traceOf(const std::string& libraryFile) {  // what the search traces, a line per step
        std::string text;
        const Trace trace = [&](std::string_view step, std::string_view detail) {
            text.append(step).append(" ").append(detail).append("\n");
        };
        locate(libraryFile, &trace);
        return text;
    }
    std::string t_;
    fs::path cwd_ = fs::current_path();
};

TEST_F(LocatorTest, ConfigurationFile) {
    file("home" + kLibCli);  // what JAVA_HOME yields when the file names nothing
    ::setenv("JAVA_HOME", (t_ + "/home").c_str(), 1);
    const std::string x4095(4095, 'x'), big = std::string(1 << 20, 'x') + "\nJVMPATH=/late\n";
    const std::vector<std::pair<std::string, std::optional<std::string>>> cases = {
        {"JVMPATH=/a\nJVM64PATH=/b\nJVMPATH=/c\n", "/b"}, {"JVMPATH=/a\nJVMPATH=/c\n", "/c"},
        {"JVM64PATH=/a\nJVM64PATH=/b\n", "/a"}, {"JVMPATH=\nJVMPATH\nJAVA_HOME=/a\n", {}},
        {"\n\r==JVMPATH\r==/a=b\r\n", "/a"}, {"jvmpath=/a\nJVMPATH = /a\n JVMPATH=/a\n", {}},
        {"JVMPATH=/my jre/j.so \n", "/my jre/j.so "}, {std::string("JVMPATH\0=/a\n", 12), {}},
        // A line longer than one 4095-byte read is taken as several lines.
        {x4095 + "JVMPATH=/a\n", "/a"}, {x4095.substr(1) + "JVMPATH=/a\n", {}},
        {"JVMPATH=/" + std::string(5000, 'a'), "/" + std::string(4086, 'a')},
        // Only the first MiB is read.
        {"JVMPATH=/early\n" + big, "/early"}, {big, {}},
    };
    const Trace empty;  // a trace without a target is the same as none
    for (const auto& [content, expected] : cases) {
        file("lib/VelmoraDLL.conf", content);
        EXPECT_EQ(locate(t_ + "/lib/v.so", &empty).runtimePath, expected.value_or(t_ + "/home" + kLibCli))
            << content.substr(0, 60);
    }
}

TEST_F(LocatorTest, LibraryDirectoryAndConfigurationPath) {
    const std::string d4095 = "/" + std::string(4094, 'd'), d4079 = d4095.substr(0, 4079);
    const std::vector<Strings> cases = {  // library file, directory, configuration file
        {"lib/v.so", "lib", "lib/VelmoraDLL.conf"}, {"/v.so", "", "/VelmoraDLL.conf"}, {"v.so", "", ""},
        {"", "", ""}, {d4079 + "/v.so", d4079, d4079 + "/VelmoraDLL.conf"}, {d4079 + "d/v.so", d4079 + "d", ""},
        {d4095 + "d/v.so", "", ""},
    };
    for (const auto& c : cases) EXPECT_EQ((Strings{c[0], locate(c[0]).libraryDir, locate(c[0]).configPath}), c);
}

TEST_F(LocatorTest, JavaHomeCandidates) {
    std::string order;
    for (const auto& p : {kSrv, kJreCli, kLibSrv, kLibCli}) order += "JAVA_HOME candidate " + p + ": cannot open\n";
    ::setenv("JAVA_HOME", "", 1);  // used as it is
    EXPECT_THAT(traceOf(""), HasSubstr(order));

    for (const auto& p : {kJreCli, kLibSrv, kLibCli}) file(p.substr(1));
    // Slashes pad the value to the limit without changing where it points.
    const std::string fits = t_ + std::string(4095 - kLibSrv.size() - t_.size(), '/');
    for (const auto& [home, expected] : std::vector<std::pair<std::string, std::string>>{
             {t_, t_ + kJreCli}, {fits, fits + kLibSrv}, {fits + "/", "libjvm.so"}}) {
        ::setenv("JAVA_HOME", home.c_str(), 1);
        EXPECT_EQ(locate("").runtimePath, expected);
    }
}

// Run from the scratch directory, where relative link texts are read.
TEST_F(LocatorTest, PathSearch) {
    // PATH (unset when absent), files, links, result, and the runtime library, the last path tried or
    // the buffer untouched.
    using Case = std::tuple<std::optional<std::string>, Strings, std::vector<Strings>, int, std::string>;
    // Slashes pad an entry, or a link text, to 4095 bytes with "/java"; the dirname steps drop them.
    const std::string pad(4095 - t_.size() - 10, '/'), untouched(kPathBuffer - 1, '#');
    const Strings jdk = {"j/bin/java", kSrv.substr(1)};
    const std::vector<Case> cases = {
        {std::nullopt, {}, {}, -1, untouched}, {"", {}, {}, -1, untouched}, {":::", {}, {}, -1, untouched},
        {t_ + "/" + pad + "j/bin", jdk, {}, -1, untouched},  // 4096 bytes with "/java"
        {"$T/o/jdk/bin", {"o/jdk/bin/java", "o" + kSrv, "o" + kJreCli, "o/jdk" + kSrv}, {}, 0, "$T/o" + kSrv},
        {"$T/j/jre/bin", {"j/jre/bin/java", "j" + kJreCli, "j" + kLibSrv}, {}, 0, "$T/j" + kJreCli},
        {"$T/bin", {"jvm/j8/jre/bin/java", "jvm/j8" + kSrv},
         {{"bin/java", "$T/alt/java"}, {"alt/java", "$T/jvm/j8/jre/bin/java"}}, 0, "$T/jvm/j8" + kSrv},
        {"::$T/a::$T/b/x/y:$T/c/jre/bin:", {"a/java/f", "b/x/y/java", "c/jre/bin/java", "c" + kLibCli}, {},
         0, "$T/c" + kLibCli},
        {"$T/b/x/y", {"b/x/y/java"}, {}, -1, "$T/b" + kLibCli}, {"$T/a:$T/b", {}, {}, -1, "$T/b/java"},
        {"$T/a", {}, {{"a/java", "$T/gone"}}, -1, "$T/a/java"}, {"$T/a", {"d/f"}, {{"a/java", "$T/d"}}, -1, "$T/d"},
        {"$T/a", {}, {{"a/java", "$T/a/j2"}, {"a/j2", "$T/a/java"}}, -1, "$T/a/java"},
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
        for (const auto& l : links) link(l[0], l[1]);
        path ? ::setenv("PATH", sub(*path).c_str(), 1) : ::unsetenv("PATH");
        std::string out = untouched + '\0';
        EXPECT_EQ(findJavaInPath(out.data()), rc) << "PATH " << path.value_or("unset");
        EXPECT_EQ(out.substr(0, out.find('\0')), sub(expected)) << "PATH " << path.value_or("unset");
    }
    EXPECT_EQ(findJavaInPath(nullptr), -1);  // with the last row's PATH, which leads to a launcher
}

TEST_F(LocatorTest, ModernCandidatesInOrderWithoutDuplicates) {
    for (const char* f : {"jdkA/bin/java", "jdkB/bin/java", "d/java/f"}) file(f);  // d/java: a directory, no launcher
    link("a/java", "$T/jdkA/bin/java");
    link("b/java", "../jdkB/bin/java");
    ::setenv("JAVA_HOME", sub("$T/jdkA/").c_str(), 1);
    ::setenv("PATH", sub(":$T/a:$T/none:$T/d:$T/b:$T/jdkA/bin").c_str(), 1);
    const std::string tail = "/lib/server/libjvm.so", fallback = "/usr/lib/jvm/default-java" + tail;
    EXPECT_EQ(modernRuntimeCandidates(), (Strings{t_ + "/jdkA" + tail, t_ + "/jdkB" + tail, fallback}));
    ::setenv("JAVA_HOME", "", 1);
    ::unsetenv("PATH");
    EXPECT_EQ(modernRuntimeCandidates(), Strings{fallback});
}

// A FIFO, a directory or a link to an endless device where the configuration file or a runtime
// library candidate is expected counts as absent, with the reason traced, and never blocks.
TEST_F(LocatorTest, IrregularFilesCountAsAbsent) {
    // A configured path is kept even so: start-up refuses it.
    file("lib/VelmoraDLL.conf", "JVMPATH=/dev/zero\n");
    EXPECT_THAT(traceOf(t_ + "/lib/v.so"),
                HasSubstr("/dev/zero (configuration file)\nruntime library not a regular file"));

    const std::function<void(const std::string&)> makers[] = {
        [](const std::string& p) { ASSERT_EQ(::mkfifo(p.c_str(), 0600), 0); },
        [](const std::string& p) { fs::create_directory(p); },
        [](const std::string& p) { fs::create_symlink("/dev/zero", p); },
    };
    const std::string home = t_ + "/home";
    ::setenv("PATH", (home + "/jre/bin").c_str(), 1);
    for (const auto& make : makers) {
        // Odd: the configuration file and every layout of the home but the last. The home is
        // JAVA_HOME, then that of the java on PATH.
        fs::remove_all(t_);
        for (const auto& f : Strings{"home/jre/bin/java", "home" + kLibCli}) file(f);
        for (const auto& odd : Strings{"lib/VelmoraDLL.conf", "home" + kSrv, "home" + kJreCli, "home" + kLibSrv})
            make(at(odd));
        ::setenv("JAVA_HOME", home.c_str(), 1);
        for (const std::string source : {"JAVA_HOME", "java on PATH"}) {
            const std::string text = traceOf(t_ + "/lib/v.so");
            for (const auto& why : {t_ + "/lib/VelmoraDLL.conf: not a regular file, skipped",
                                    home + kSrv + ": not a regular file", home + kLibCli + " (" + source + ")"})
                EXPECT_THAT(text, HasSubstr(why));
            ::unsetenv("JAVA_HOME");
        }
        // A bare name is the loader's to search, whatever the working directory holds.
        fs::current_path(home + "/jre/lib/amd64/server");
        for (const auto& [name, irregular] : std::vector<std::pair<std::string, bool>>{
                 {"libjvm.so", false}, {home + kSrv, true}, {home + kLibCli, false}, {t_ + "/absent", false}})
            EXPECT_EQ(namesIrregularFile(name), irregular) << name;
    }
}
