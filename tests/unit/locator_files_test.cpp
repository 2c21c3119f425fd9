// The locator against files that are not regular: a FIFO, a link to an
// endless device or a directory where the configuration file or a runtime
// library candidate is expected counts as absent, with the reason traced, and
// never blocks or spins (a hang ends the process through alarm()).
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "runtime/locator.hpp"

namespace fs = std::filesystem;
using namespace velmora::runtime;

namespace {

class LocatorFiles : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/locator_files.XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir_ = pattern;
        fs::create_directory(dir_ / "lib");
        unsetenv("JAVA_HOME");
        unsetenv("PATH");
        alarm(20);
    }
    void TearDown() override {
        alarm(0);
        fs::remove_all(dir_);
    }
    // Runs the search for a library in lib/, collecting the trace.
    Location locateTraced() {
        traced_.clear();
        const Trace trace = [this](std::string_view step, std::string_view detail) {
            traced_ += std::string(step) + " " + std::string(detail) + "\n";
        };
        return locate((dir_ / "lib" / "libvelmora.so").string(), &trace);
    }
    fs::path dir_;
    std::string traced_;
};

struct OddFile {
    const char *what;
    std::function<void(const fs::path &)> make;
};

const OddFile kOddFiles[] = {
    {"FIFO", [](const fs::path &p) { ASSERT_EQ(mkfifo(p.c_str(), 0600), 0); }},
    {"link to /dev/zero", [](const fs::path &p) { fs::create_symlink("/dev/zero", p); }},
    {"directory", [](const fs::path &p) { fs::create_directory(p); }},
};

TEST_F(LocatorFiles, OddConfigurationFileCountsAsAbsent) {
    for (const OddFile &odd : kOddFiles) {
        SCOPED_TRACE(odd.what);
        const fs::path config = dir_ / "lib" / "VelmoraDLL.conf";
        odd.make(config);
        const Location found = locateTraced();
        EXPECT_EQ(found.source, Location::Source::BareName);
        EXPECT_NE(traced_.find(config.string() + ": not a regular file, skipped"), std::string::npos) << traced_;
        fs::remove(config);
    }
}

TEST_F(LocatorFiles, OddRuntimeCandidatesArePassedBy) {
    const fs::path home = dir_ / "home", java = home / "jre" / "bin" / "java";
    fs::create_directories(java.parent_path());
    std::ofstream(java.string());
    setenv("JAVA_HOME", home.c_str(), 1);
    setenv("PATH", java.parent_path().c_str(), 1);
    for (const OddFile &odd : kOddFiles) {
        SCOPED_TRACE(odd.what);
        // Every layout under JAVA_HOME, and so under the home of the java on
        // PATH (the same directory), holds an odd file but the last.
        const char *layouts[] = {"jre/lib/amd64/server", "jre/lib/amd64/client", "lib/amd64/server"};
        for (const char *layout : layouts) {
            fs::create_directories(home / layout);
            odd.make(home / layout / "libjvm.so");
        }
        EXPECT_EQ(locateTraced().source, Location::Source::BareName);
        EXPECT_NE(traced_.find("libjvm.so: not a regular file"), std::string::npos) << traced_;

        const fs::path regular = home / "lib/amd64/client/libjvm.so";
        fs::create_directories(regular.parent_path());
        std::ofstream(regular.string());
        const Location found = locateTraced();
        EXPECT_EQ(found.runtimePath, regular.string());
        EXPECT_EQ(found.source, Location::Source::JavaHome);
        unsetenv("JAVA_HOME");
        EXPECT_EQ(locateTraced().runtimePath, regular.string());
        setenv("JAVA_HOME", home.c_str(), 1);
        for (const char *layout : {"jre/lib", "lib"}) fs::remove_all(home / layout);
    }
}

TEST_F(LocatorFiles, ConfiguredPathThatIsNotARegularFile) {
    std::ofstream(dir_ / "lib" / "VelmoraDLL.conf") << "JVMPATH=/dev/zero\n";
    const Location found = locateTraced();
    EXPECT_EQ(found.runtimePath, "/dev/zero");  // still the configured path: start-up refuses it
    EXPECT_TRUE(namesIrregularFile(found.runtimePath));
    EXPECT_NE(traced_.find("not a regular file"), std::string::npos) << traced_;
    EXPECT_FALSE(namesIrregularFile("libjvm.so"));
    EXPECT_FALSE(namesIrregularFile((dir_ / "lib" / "VelmoraDLL.conf").string()));
    EXPECT_FALSE(namesIrregularFile((dir_ / "absent").string()));
}

// Only the first MiB of the configuration file is read.
TEST_F(LocatorFiles, ConfigurationIsReadUpToALimit) {
    std::string filler;
    while (filler.size() <= (1u << 20)) filler += std::string(4000, 'x') + "\n";
    for (const auto &[content, expected] :
         {std::pair<std::string, std::string>{"JVMPATH=/early\n" + filler + "JVMPATH=/late\n", "/early"},
          {filler + "JVMPATH=/late\n", "libjvm.so"}}) {
        std::ofstream(dir_ / "lib" / "VelmoraDLL.conf", std::ios::trunc) << content;
        EXPECT_EQ(locateTraced().runtimePath, expected);
    }
}

}  // namespace
