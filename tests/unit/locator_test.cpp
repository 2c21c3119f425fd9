// The runtime locator against fake installations in a scratch directory: empty
// files stand in for launchers and libraries, since only opening is tested.
#include "runtime/locator.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

namespace fs = std::filesystem;
using namespace velmora::runtime;
using Strings = std::vector<std::string>;

namespace {

const std::string kSrv = "/jre/lib/amd64/server/libjvm.so", kJreCli = "/jre/lib/amd64/client/libjvm.so",
                  kLibSrv = "/lib/amd64/server/libjvm.so", kLibCli = "/lib/amd64/client/libjvm.so";

class LocatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (auto& [name, saved] : env_)
            if (const char* v = std::getenv(name)) saved = v;
        ::unsetenv("JAVA_HOME");
        ::unsetenv("PATH");
        char tmpl[] = "/tmp/locator_test.XXXXXX";
        ASSERT_NE(::mkdtemp(tmpl), nullptr);
        t_ = fs::canonical(tmpl).string();
    }
    void TearDown() override {
        fs::current_path(cwd_);
        fs::remove_all(t_);
        for (auto& [name, saved] : env_) saved ? ::setenv(name, saved->c_str(), 1) : ::unsetenv(name);
    }
    std::string sub(std::string s) const {  // "$T" stands for the scratch directory
        for (auto at = s.find("$T"); at != std::string::npos; at = s.find("$T", at)) s.replace(at, 2, t_);
        return s;
    }
    void file(const std::string& rel, const std::string& content = "") {
        fs::create_directories(fs::path(t_ + "/" + rel).parent_path());
        std::ofstream(t_ + "/" + rel, std::ios::binary) << content;
    }
    void link(const std::string& rel, const std::string& target) {
        fs::create_directories(fs::path(t_ + "/" + rel).parent_path());
        ASSERT_EQ(::symlink(sub(target).c_str(), (t_ + "/" + rel).c_str()), 0);
    }
    int search(std::string& out, const std::string& path) {
        ::setenv("PATH", sub(path).c_str(), 1);
        out.assign(kPathBuffer, '\0');
        int rc = findJavaInPath(out.data());
        out.resize(out.find('\0'));
        return rc;
    }
    std::string t_;
    fs::path cwd_ = fs::current_path();
    std::vector<std::pair<const char*, std::optional<std::string>>> env_ = {{"JAVA_HOME", {}}, {"PATH", {}}};
};

TEST_F(LocatorTest, ConfigurationFile) {
    file("home" + kLibCli);  // what JAVA_HOME yields when the file names nothing
    ::setenv("JAVA_HOME", (t_ + "/home").c_str(), 1);
    const std::string x4095(4095, 'x');
    const std::vector<std::pair<std::string, std::optional<std::string>>> cases = {
        {"JVMPATH=/a\nJVM64PATH=/b\nJVMPATH=/c\n", "/b"}, {"JVMPATH=/a\nJVMPATH=/c\n", "/c"},
        {"JVM64PATH=/a\nJVM64PATH=/b\n", "/a"}, {"JVMPATH=\nJVMPATH\nJAVA_HOME=/a\n", {}},
        {"\n\r==JVMPATH\r==/a=b\r\n", "/a"}, {"jvmpath=/a\nJVMPATH = /a\n JVMPATH=/a\n", {}},
        {"JVMPATH=/my jre/j.so \n", "/my jre/j.so "}, {std::string("JVMPATH\0=/a\n", 12), {}},
        // A line longer than one 4095-byte read is taken as several lines.
        {x4095 + "JVMPATH=/a\n", "/a"}, {x4095.substr(1) + "JVMPATH=/a\n", {}},
        {"JVMPATH=/" + std::string(5000, 'a'), "/" + std::string(4086, 'a')},
    };
    const Trace empty;  // a trace without a target is the same as none
    for (const auto& [content, expected] : cases) {
        SCOPED_TRACE(content.substr(0, 60));
        file("lib/VelmoraDLL.conf", content);
        EXPECT_EQ(locate(t_ + "/lib/v.so", &empty).runtimePath, expected.value_or(t_ + "/home" + kLibCli));
    }
}

TEST_F(LocatorTest, LibraryDirectoryAndConfigurationPath) {
    const std::string d4095 = "/" + std::string(4094, 'd'), d4079 = d4095.substr(0, 4079);
    const std::vector<Strings> cases = {  // library file, directory, configuration file
        {"lib/v.so", "lib", "lib/VelmoraDLL.conf"}, {"/v.so", "", "/VelmoraDLL.conf"}, {"v.so", "", ""},
        {"", "", ""}, {d4079 + "/v.so", d4079, d4079 + "/VelmoraDLL.conf"}, {d4079 + "d/v.so", d4079 + "d", ""},
        {d4095 + "d/v.so", "", ""},
    };
    for (const auto& c : cases) {
        Location where = locate(c[0]);
        EXPECT_EQ(where.libraryDir, c[1]) << c[0].substr(0, 60);
        EXPECT_EQ(where.configPath, c[2]) << c[0].substr(0, 60);
    }
}

TEST_F(LocatorTest, JavaHomeCandidates) {
    Strings tried;
    Trace trace = [&](std::string_view step, std::string_view detail) {
        if (step == "JAVA_HOME candidate") tried.emplace_back(detail.substr(0, detail.find(':')));
    };
    ::setenv("JAVA_HOME", "", 1);  // used as it is
    locate("", &trace);
    EXPECT_EQ(tried, (Strings{kSrv, kJreCli, kLibSrv, kLibCli}));

    for (const auto& p : {kJreCli, kLibSrv, kLibCli}) file(p.substr(1));
    ::setenv("JAVA_HOME", t_.c_str(), 1);
    EXPECT_EQ(locate("").runtimePath, t_ + kJreCli);
    // Slashes pad the value to the limit without changing where it points.
    const std::string fits = t_ + std::string(4095 - kLibSrv.size() - t_.size(), '/');
    ::setenv("JAVA_HOME", fits.c_str(), 1);
    EXPECT_EQ(locate("").runtimePath, fits + kLibSrv);
    ::setenv("JAVA_HOME", (fits + "/").c_str(), 1);
    EXPECT_EQ(locate("").source, Location::Source::BareName);
}

TEST_F(LocatorTest, PathSearch) {
    struct Case {
        std::string path;
        Strings files;
        std::vector<Strings> links;
        int rc;
        std::string out;  // the runtime library, or the last path tried
        bool inScratch = false;  // run from the scratch directory
    };
    const std::vector<Case> cases = {
        {"$T/o/jdk/bin", {"o/jdk/bin/java", "o" + kSrv, "o/jdk" + kSrv}, {}, 0, "$T/o" + kSrv},
        {"$T/j/jre/bin", {"j/jre/bin/java", "j" + kJreCli, "j" + kLibSrv}, {}, 0, "$T/j" + kJreCli},
        {"$T/bin", {"jvm/j8/jre/bin/java", "jvm/j8" + kSrv},
         {{"bin/java", "$T/alt/java"}, {"alt/java", "$T/jvm/j8/jre/bin/java"}}, 0, "$T/jvm/j8" + kSrv},
        {"::$T/a::$T/b/x/y:$T/c/jre/bin:", {"a/java/f", "b/x/y/java", "c/jre/bin/java", "c" + kLibCli}, {},
         0, "$T/c" + kLibCli},
        {"$T/b/x/y", {"b/x/y/java"}, {}, -1, "$T/b" + kLibCli},
        {"$T/a:$T/b", {}, {}, -1, "$T/b/java"},
        {"$T/a", {}, {{"a/java", "$T/gone"}}, -1, "$T/a/java"},
        {"$T/a", {}, {{"a/java", "$T/a/j2"}, {"a/j2", "$T/a/java"}}, -1, "$T/a/java"},
        {"$T/a", {"d/f"}, {{"a/java", "$T/d"}}, -1, "$T/d"},
        // A relative link text is read from the working directory, not from the link's
        // own directory (which here holds a launcher without a library).
        {"$T/bin", {"bin/jdk/jre/bin/java", "jdk/jre/bin/java", "jdk" + kSrv}, {{"bin/java", "jdk/jre/bin/java"}},
         0, "jdk" + kSrv, true},
        // Every link opens, yet read from the working directory they go round for ever.
        {"$T/loop", {"loop/java2"}, {{"loop/java", "java2"}, {"java2", "loop/java"}}, -1, "loop/java", true},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        fs::remove_all(t_);
        for (const auto& f : c.files) file(f);
        for (const auto& l : c.links) link(l[0], l[1]);
        fs::current_path(c.inScratch ? fs::path(t_) : cwd_);
        std::string out;
        EXPECT_EQ(search(out, c.path), c.rc) << "case " << i;
        EXPECT_EQ(out, sub(c.out)) << "case " << i;
    }
}

TEST_F(LocatorTest, PathLimitsAndUntouchedBuffer) {
    // Slashes pad entry and link text to 4095 bytes; the dirname steps drop them.
    file("j/bin/java");
    file(kSrv.substr(1));
    const std::string pad(4095 - t_.size() - 10, '/');
    std::string out;
    EXPECT_EQ(search(out, t_ + pad + "j/bin"), 0);
    EXPECT_EQ(out, t_ + kSrv);
    link("a/java", t_ + pad + "j/bin/java");
    EXPECT_EQ(search(out, "$T/a"), 0);
    EXPECT_EQ(out, t_ + kSrv);

    const std::string tooLong = t_ + "/" + pad + "j/bin";  // 4096 bytes with "/java"
    for (const auto& path : std::vector<std::optional<std::string>>{{}, "", ":::", tooLong}) {
        path ? ::setenv("PATH", path->c_str(), 1) : ::unsetenv("PATH");
        std::string buf(kPathBuffer - 1, '#');
        EXPECT_EQ(findJavaInPath(buf.data()), -1);
        EXPECT_EQ(buf, std::string(kPathBuffer - 1, '#'));
    }
    EXPECT_EQ(findJavaInPath(nullptr), -1);
}

TEST_F(LocatorTest, ModernCandidatesInOrderWithoutDuplicates) {
    file("jdkA/bin/java");
    file("jdkB/bin/java");
    file("d/java/f");  // a directory is no launcher
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

}  // namespace
