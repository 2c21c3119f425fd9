// A scenario is a library directory of its own: a copy of libvelmora, the SDK
// jar of the scenario as velmora.jar, and optionally VelmoraDLL.conf. The
// scenario suites never link the library; each test process loads one copy
// with dlopen, so the class path, configuration and jar are the scenario's.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "velmora.h"

namespace fs = std::filesystem;

inline std::string mainJar() { return VELMORA_TEST_LIB_DIR "/velmora.jar"; }
inline std::string variantJar(const std::string &name) {
    return VELMORA_TEST_VARIANTS_DIR "/" + name + "/velmora.jar";
}

class Scenario {
public:
    // `jar` may be empty (no SDK at all); `config` is the text of
    // VelmoraDLL.conf, none when empty.
    explicit Scenario(const std::string &jar, const std::string &config = {}) {
        char pattern[] = "/tmp/velmora-scenario-XXXXXX";
        dir_ = mkdtemp(pattern);
        fs::copy_file(fs::canonical(VELMORA_TEST_LIB_DIR "/libvelmora.so"), dir_ / "libvelmora.so");
        if (!jar.empty()) fs::copy_file(jar, dir_ / "velmora.jar");
        if (!config.empty()) std::ofstream(dir_ / "VelmoraDLL.conf") << config;
        handle_ = dlopen((dir_ / "libvelmora.so").c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!handle_) ADD_FAILURE() << dlerror();
    }
    ~Scenario() {
        std::error_code ignored;
        fs::remove_all(dir_, ignored);
    }
    Scenario(const Scenario &) = delete;
    Scenario &operator=(const Scenario &) = delete;

    const fs::path &dir() const { return dir_; }

    template <class F> F *symbol(const char *name) const {
        void *address = handle_ ? dlsym(handle_, name) : nullptr;
        if (!address) ADD_FAILURE() << "missing symbol " << name;
        return reinterpret_cast<F *>(address);
    }

private:
    fs::path dir_;
    void *handle_ = nullptr;
};

// The scenario's copy of an exported function, typed from the header.
#define VELMORA_FN(scenario, name) (scenario).symbol<decltype(name)>(#name)
