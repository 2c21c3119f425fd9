// The table of Java calls (calls.def) as constexpr rows: each forwarding
// function names its row as a template argument of the frame, and the
// diagnostics tool walks `calls::all`.
#pragma once

#include <cstddef>
#include <iterator>
#include <span>
#include <string_view>

namespace velmora {

enum class Target { Management, Peach, Caller, System };

struct CallRow {
    Target target;
    const char *method;
    const char *signature;
    std::size_t position;  // in the table, which names the row's slot of resolved methods
};

constexpr const char *className(Target t) {
    switch (t) {
    case Target::Management: return "velmora/user/ManagementImpl";
    case Target::Peach: return "velmora/user/PeachWrapper";
    case Target::Caller: return "velmora/user/NativeFunctionCaller";
    case Target::System: return "java/lang/System";
    }
    return "";
}

namespace calls {
enum class Position : std::size_t {
#define VELMORA_CALL(id, target, method, signature) id,
#include "bridge/calls.def"
#undef VELMORA_CALL
    count
};

#define VELMORA_CALL(id, target, method, signature) \
    inline constexpr CallRow id{Target::target, method, signature, static_cast<std::size_t>(Position::id)};
#include "bridge/calls.def"
#undef VELMORA_CALL

inline constexpr CallRow all[] = {
#define VELMORA_CALL(id, target, method, signature) id,
#include "bridge/calls.def"
#undef VELMORA_CALL
};

inline constexpr std::size_t kRowCount = static_cast<std::size_t>(Position::count);
static_assert(std::size(all) == kRowCount);
}  // namespace calls

// The return descriptor of a signature: what follows the ')'.
constexpr std::string_view returnDescriptor(const CallRow &row) {
    std::string_view sig = row.signature;
    return sig.substr(sig.find(')') + 1);
}

}  // namespace velmora
