// velmora-generate: writes the forwarding functions of the library and the
// per-function part of the C++ layer from the call table (calls.def), so that
// both follow the one description of each function.
//
//   velmora-generate <forwarders.cpp> <functions.hpp>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

enum class Rule { Value, Text, MaybeText, NotInitText, Lists, ListsNoVaList, Walk };

struct Row {
    const char *id;
    bool peach;
    const char *signature;
    Rule rule;
    const char *names;
    const char *cname = nullptr;  // walks: the C and C++ names and the count row
    const char *cxxName = nullptr;
    const char *countId = nullptr;
};

constexpr bool kPeach = true, kManagement = false;
constexpr bool isPeach(bool target) { return target; }

const Row kRows[] = {
#define Management kManagement
#define Peach kPeach
#define VELMORA_CALL(id, target, method, signature)
#define VELMORA_FUNCTION(id, target, method, signature, rule, names) {#id, target, signature, Rule::rule, names},
#define VELMORA_WALK(id, target, method, signature, cname, cxxName, countId) \
    {#id, target, signature, Rule::Walk, "", #cname, #cxxName, #countId},
#include "bridge/calls.def"
#undef VELMORA_CALL
#undef Management
#undef Peach
};

// One parameter of the Java method, with the name the functions give it.
struct Param {
    char kind;  // I, J, Z, S (String), L (String[])
    std::string name;
};

std::vector<Param> parameters(const Row &row) {
    std::vector<Param> params;
    std::string_view sig = row.signature;
    for (std::size_t i = 1; sig[i] != ')';) {
        if (sig.substr(i, 18) == "Ljava/lang/String;") params.push_back({'S', ""}), i += 18;
        else if (sig.substr(i, 19) == "[Ljava/lang/String;") params.push_back({'L', ""}), i += 19;
        else params.push_back({sig[i], ""}), ++i;
    }
    std::istringstream given(row.names);
    int texts = 0;
    for (const Param &p : params) texts += p.kind == 'S';
    int text = 0;
    for (std::size_t i = 0; i < params.size(); ++i) {
        Param &p = params[i];
        if (given >> p.name) continue;
        switch (p.kind) {
        case 'I': p.name = i == 0 ? "handle" : "value"; break;
        case 'J': p.name = "value"; break;
        case 'Z': p.name = "flag"; break;
        case 'L': p.name = "count"; break;
        default: p.name = texts == 1 ? "text" : "text" + std::to_string(++text);
        }
    }
    return params;
}

char returns(const Row &row) { return std::string_view(row.signature).back() == ';' ? 'S' : std::string_view(row.signature).back(); }

const char *cType(char kind) {
    switch (kind) {
    case 'I': return "int ";
    case 'J': return "int64_t ";
    case 'Z': return "unsigned char ";
    default: return "const char *";
    }
}

// "a, b, c" from the parameters before a list (or all), each through `item`.
template <class Item> std::string joined(const std::vector<Param> &params, Item item, std::size_t from = 0) {
    std::string out;
    for (std::size_t i = from; i < params.size(); ++i) {
        if (params[i].kind == 'L') break;
        if (!out.empty()) out += ", ";
        out += item(params[i]);
    }
    return out;
}
std::string withComma(const std::string &list) { return list.empty() ? list : list + ", "; }

void writeC(std::ostream &out, const Row &row) {
    const std::vector<Param> params = parameters(row);
    const std::string id = row.id;
    const std::string decls = joined(params, [](const Param &p) { return cType(p.kind) + p.name; });
    const std::string args = joined(params, [](const Param &p) { return p.name; });
    switch (row.rule) {
    case Rule::Value:
        out << "VELMORA_API " << (returns(row) == 'J' ? "int64_t" : "int") << " velmora_" << id << "("
            << (decls.empty() ? "void" : decls) << ") {\n    return forwardValue<calls::" << id << ">(" << args
            << ");\n}\n";
        return;
    case Rule::Text:
    case Rule::MaybeText:
    case Rule::NotInitText: {
        const char *policy = row.rule == Rule::Text ? "textResult" : row.rule == Rule::MaybeText ? "maybeTextResult"
                                                                                                 : "notInitTextResult";
        out << "VELMORA_API int velmora_" << id << "(" << withComma(decls) << "char *buf, size_t *len) {\n"
            << "    return forward<calls::" << id << ">(" << policy << "(buf, len)" << (args.empty() ? "" : ", ")
            << args << ");\n}\n";
        return;
    }
    case Rule::Lists:
    case Rule::ListsNoVaList: {
        const std::string lead = withComma(decls) + "int count";
        const std::string call = "forwardList<calls::" + id + ">(ListSource(%), count" + (args.empty() ? "" : ", ") +
                                 args + ")";
        auto with = [&call](const char *source) { return call.substr(0, call.find('%')) + source + call.substr(call.find('%') + 1); };
        out << "VELMORA_API int velmora_" << id << "3(" << lead << ", const char **list) {\n    return " << with("list")
            << ";\n}\n";
        if (row.rule == Rule::Lists) {
            out << "VELMORA_API int velmora_" << id << "2(" << lead << ", va_list strings) {\n    return "
                << with("strings") << ";\n}\n";
            out << "VELMORA_API int velmora_" << id << "(" << lead << ", ...) {\n    VELMORA_WITH_VA_LIST(count, velmora_"
                << id << "2(" << withComma(args) << "count, strings));\n}\n";
        } else {
            out << "VELMORA_API int velmora_" << id << "(" << lead << ", ...) {\n    VELMORA_WITH_VA_LIST(count, "
                << with("strings") << ");\n}\n";
        }
        return;
    }
    case Rule::Walk:
        out << "VELMORA_API int velmora_" << row.cname << "(int handle, int *index, char *buf, size_t *len) {\n"
            << "    return forwardIndexedName<calls::" << row.countId << ", calls::" << id
            << ">(handle, index, buf, len);\n}\n";
        return;
    }
}

// The C++ layer: functions in namespace velmora, peach methods in PeachCalls.
void writeCxx(std::ostream &out, const Row &row, bool member) {
    const std::vector<Param> params = parameters(row);
    const std::string id = row.id;
    const std::string name = member ? id.substr(6) : id;  // peach_ dropped on members
    const std::size_t from = member ? 1 : 0;              // the handle is the Peach's own
    const bool list = !params.empty() && params.back().kind == 'L';
    std::string decls = joined(
        params,
        [](const Param &p) {
            switch (p.kind) {
            case 'I': return "int " + p.name;
            case 'J': return "std::int64_t " + p.name;
            case 'Z': return "bool " + p.name;
            default: return "CString " + p.name;
            }
        },
        from);
    std::string args = joined(params, [](const Param &p) {
        return p.kind == 'Z' ? "detail::flag(" + p.name + ")" : p.kind == 'S' ? p.name + ".c_str()" : p.name;
    });
    if (member) args.replace(0, params[0].name.size(), "peachHandle()");
    const char *qualifier = member ? " const" : "";
    const std::string indent = member ? "    " : "";
    if (list) {
        decls = withComma(decls) + "const StringList &list";
        args = withComma(args) + "list.count(), list.data()";
    }
    const std::string function = "velmora_" + id + (list ? "3" : "");
    std::string result, call = function + "(" + args + ")";
    if (row.rule == Rule::Text || row.rule == Rule::NotInitText) {
        result = "std::string", call = "detail::text(" + function + (args.empty() ? "" : ", ") + args + ")";
    } else if (row.rule == Rule::MaybeText) {
        result = "std::optional<std::string>";
        call = "detail::maybeText(" + function + (args.empty() ? "" : ", ") + args + ")";
    } else if (row.rule == Rule::Walk) {
        out << indent << "inline NameWalk " << row.cxxName << "(int handle) { return NameWalk({velmora_" << row.cname
            << ", handle, 0}); }\n";
        return;
    } else {
        switch (returns(row)) {
        case 'I': result = "int", call = "detail::javaInt(" + call + ")"; break;
        case 'J': result = "std::int64_t", call = "detail::javaLong(" + call + ")"; break;
        case 'Z': result = "bool", call = "detail::truth(" + call + ")"; break;
        default: result = "void", call = "detail::done(" + call + ")";
        }
    }
    out << indent << (member ? "" : "inline ") << result << " " << name << "(" << decls << ")" << qualifier << " { "
        << (result == "void" ? "" : "return ") << call << "; }\n";
    // The list functions of the management object also have their raw form.
    if (list && !member && result == "int") {
        out << "namespace raw {\ninline int " << name << "(" << decls << ") { return " << function << "(" << args
            << "); }\n}  // namespace raw\n";
    }
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        std::cerr << "usage: velmora-generate <forwarders.cpp> <functions.hpp>\n";
        return 2;
    }
    std::ostringstream c, cxx, peach;
    c << "// Generated by velmora-generate from src/bridge/calls.def: the forwarding\n"
         "// functions of the call table. Do not edit.\n"
         "#include \"bridge/frame.hpp\"\n\nusing namespace velmora;\n\nextern \"C\" {\n\n";
    cxx << "// Generated by velmora-generate from the library's call table: the C++\n"
           "// form of every forwarding function (see velmora.hpp). Do not edit.\n"
           "#ifndef VELMORA_FUNCTIONS_HPP\n#define VELMORA_FUNCTIONS_HPP\n\n"
           "#include \"velmora/support.hpp\"\n\nnamespace velmora {\n\n";
    for (const Row &row : kRows) {
        writeC(c, row);
        writeCxx(isPeach(row.peach) ? peach : cxx, row, isPeach(row.peach));
    }
    c << "\n}  // extern \"C\"\n";
    cxx << "\n// The methods of a peach description (velmora::Peach): velmora_peach_<name>\n"
           "// with the description's handle first.\ntemplate <class Self>\nclass PeachCalls {\npublic:\n"
        << peach.str()
        << "\nprivate:\n    int peachHandle() const noexcept { return static_cast<const Self &>(*this).handle(); }\n};\n\n"
           "}  // namespace velmora\n\n#endif\n";
    std::ofstream forwarders(argv[1]), functions(argv[2]);
    forwarders << c.str();
    functions << cxx.str();
    return forwarders && functions ? 0 : 1;
}
