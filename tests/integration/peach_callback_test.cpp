// Intermediate results: texts fired by the SDK double reach the host's
// callback through the registered native method (delivery from Java threads
// while the host re-registers is tested through the C++ interface); null
// callbacks and null texts drop them; failed registrations and unloads keep
// the previous callback.
#include "support/fixture.hpp"

namespace {

using Texts = std::vector<std::string>;

// What each host callback received.
Texts inboxes[3];
template <int N> void receive(const char *text) { inboxes[N].emplace_back(text); }
Texts take(int n) { return std::exchange(inboxes[n], {}); }
const velmora_intermediate_callback kCallbacks[] = {receive<0>, receive<1>, receive<2>};

class PeachResults : public PeachBridge {};

TEST_F(PeachResults, NullCallbacksAndNullTextsAreDroppedAndFailuresKeepTheCallback) {
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[0]), 0);
    EXPECT_EQ(velmora_peach_intermediate_callback_fun, kCallbacks[0]);
    sdk::fire("one");
    sdk::fire(nullptr);  // a null Java string is skipped, never read
    sdk::fire("");
    EXPECT_EQ(take(0), (Texts{"one", ""}));
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle, nullptr), 0);
    sdk::fire("dropped");
    EXPECT_EQ(take(0), Texts{});
    // One pointer for the whole process: any description's handler delivers
    // to the callback registered last.
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle + 1, kCallbacks[1]), 0);
    sdk::fire("Grüße\nzwei");
    EXPECT_EQ(take(1), Texts{"Grüße\nzwei"});
    sdk::script("setIntermediateResultHandler", {"throw"});
    EXPECT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[2]), -13);
    EXPECT_EQ(velmora_peach_intermediate_callback_fun, kCallbacks[1]);
    // An unload forgets the wrapper but not the callback.
    ASSERT_EQ(velmora_unload(0), 0);
    EXPECT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[2]), -11);
    sdk::fire("after unload");
    EXPECT_EQ(take(1), Texts{"after unload"});
    EXPECT_EQ(take(2), Texts{});
}

}  // namespace
