// Writes the Java sources of the SDK double: every overload the forwarding
// table expects to reach, the few methods start-up, plug-ins and the peach
// wrapper need besides, and the variants that break the SDK one way each.
// Each method journals its call and returns the scripted outcome through
// velmora.testing.Sdk (java/). Usage: generate OUTDIR HANDWRITTEN.java...
// makes OUTDIR/SET/... for the double ("double") and every variant, with
// OUTDIR/SET/sources.txt listing every source of the set, hand-written ones
// included. A variant is the double without the classes it names, with the
// classes it describes replacing or adding to them.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>

#include "tables/forwarders.hpp"

namespace {

namespace fs = std::filesystem;
using Members = std::map<std::string, std::map<std::string, std::string>>;  // class -> key -> natural

const std::string MI = "velmora.user.ManagementImpl", PW = "velmora.user.PeachWrapper";

// Besides the table: the natural value of an object result, a constructor's
// statement after it journaled itself, or the statement a method of another
// result type runs first (the peach run's intermediate results).
const Members kDouble = {
    {MI,
     {{"<init>()V", ""}, {"initFile()I", ""}, {"initFile(" S ")I", ""}, {"initFile(" S S ")I", ""},
      {"init(" S S S S "I" S S "II" S S ")I", ""},
      {"getPlugin(" S ")Lvelmora/user/VelmoraManagerPlugin;", "new VelmoraManagerPlugin()"},
      {"getPluginClass(" S ")Ljava/lang/Class;", "VelmoraManagerPlugin.class"},
      {"getPeachWrapper()Lvelmora/user/PeachWrapper;", "new PeachWrapper()"}}},
    {PW, {{"get()I", ""}, {"execute(I)I", "Sdk.progress(a0);"}}},
};
// A variant: the double without the classes `without`, with `own` replacing or adding to them.
struct Variant { std::string name; std::vector<std::string> without; Members own; };
const Variant kVariants[] = {
    {"missing-class", {MI, PW}, {{"velmora.ManagementImpl", {{"<init>()V", ""}, {"initFile()I", ""}}}}},
    {"no-constructor", {PW}, {{MI, {{"<init>(I)V", ""}}}}},
    {"no-initializer", {PW}, {{MI, {{"<init>()V", ""}}}}},
    {"constructor-throws", {PW}, {{MI, {{"<init>()V", "throw new IllegalStateException(\"refused\");"}, {"initFile()I", ""}}}}},
};

// The Java type at `d`, which moves past it.
std::string javaType(const char *&d) {
    const char kind = *d++;
    if (kind == '[') return javaType(d) + "[]";
    if (kind != 'L') return kind == 'I' ? "int" : kind == 'J' ? "long" : kind == 'Z' ? "boolean" : "void";
    const char *end = std::strchr(d, ';');
    const std::string name(d, end);
    d = end + 1;
    return name.substr(name.rfind('/') + 1);
}

// One method: it journals its key and arguments and returns the outcome.
std::string method(const std::string &cls, const std::string &key, const std::string &natural) {
    const std::string name = key.substr(0, key.find('('));
    std::string params, args;
    const char *d = key.c_str() + name.size() + 1;
    for (int k = 0; *d != ')'; ++k) {
        params += (k ? ", " : "") + javaType(d) + " a" + std::to_string(k);
        args += ", (Object) a" + std::to_string(k);
    }
    const std::string type = javaType(++d);
    // The statement that answers by result type, "@" standing for the key and
    // the arguments; an object is its natural value unless scripted "null".
    const std::map<std::string, std::string> answers = {
        {"int", "return Sdk.QUIET ? Sdk.QUIET_INT : Integer.parseInt(Sdk.answer(\"0\", @));"},
        {"long", "return Long.parseLong(Sdk.answer(\"0\", @));"},
        {"boolean", "return Boolean.parseBoolean(Sdk.answer(null, @));"},
        {"String", "return Sdk.QUIET ? Sdk.QUIET_TEXT : Sdk.text(Sdk.answer(null, @));"},
        {"void", "Sdk.answer(null, @);"}};
    std::string body = !answers.count(type) ? "return Sdk.text(Sdk.answer(\"\", @)) == null ? null : " + natural + ";"
                       : name == "<init>" ? "Sdk.answer(null, @); " + natural
                                          : (natural.empty() ? "" : natural + " ") + answers.at(type);
    body.replace(body.find('@'), 1, "\"" + key + "\"" + args);
    return "public " + (name == "<init>" ? cls : type + " " + name) + "(" + params + ") throws Exception { " + body + " }\n";
}

// Writes the classes of `members` into `dir`, and the list of every source of
// the set (`sources` and those) into dir/sources.txt; returns that set.
std::map<std::string, fs::path> write(const fs::path &dir, const Members &members, std::map<std::string, fs::path> sources) {
    for (const auto &[cls, methods] : members) {
        const std::size_t dot = cls.rfind('.');
        std::string path = cls;
        std::replace(path.begin(), path.end(), '.', '/');
        const fs::path file = dir / (path + ".java");
        fs::create_directories(file.parent_path());
        std::ofstream java(file);
        java << "package " << cls.substr(0, dot) << ";\nimport velmora.testing.Sdk;\npublic class " << cls.substr(dot + 1)
             << " {\n";
        for (const auto &[key, natural] : methods) java << method(cls.substr(dot + 1), key, natural);
        java << "}\n";
        sources[cls] = fs::absolute(file);
    }
    fs::create_directories(dir);
    std::ofstream list(dir / "sources.txt");
    for (const auto &[cls, file] : sources) list << file.string() << "\n";
    return sources;
}

}  // namespace

int main(int argc, char **argv) {
    const fs::path out = argv[1];
    Members members = kDouble;
    for (const table::Row &row : table::forwarders())
        for (const table::Reached &r : row.reached)
            members[std::string(row.function).rfind("peach_", 0) == 0 ? PW : MI][r.key()];
    std::map<std::string, fs::path> sources;
    for (int k = 2; k < argc; ++k) {  // .../java/velmora/user/X.java is velmora.user.X
        const fs::path file = fs::absolute(argv[k]);
        sources["velmora." + file.parent_path().filename().string() + "." + file.stem().string()] = file;
    }
    const auto all = write(out / "double", members, sources);
    for (const auto &[name, without, own] : kVariants) {
        std::map<std::string, fs::path> variant = all;
        for (const std::string &cls : without) variant.erase(cls);
        write(out / name, own, variant);
    }
}
