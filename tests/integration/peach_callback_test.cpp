// Intermediate results: texts fired by the SDK double on its own Java threads
// reach the host's callback through the registered native method, also while
// the host registers other callbacks; null callbacks and null texts drop
// them; failed registrations and unloads keep the previous callback.
#include <atomic>
#include <map>
#include <mutex>
#include <thread>

#include "support/fixture.hpp"

namespace {

using Texts = std::vector<std::string>;

// What each host callback received, and whether any ran on the test thread.
std::mutex mutex;
Texts inboxes[3];
bool onTestThread = false;
const std::thread::id testThread = std::this_thread::get_id();
template <int N> void receive(const char *text) {
    std::lock_guard lock(mutex);
    inboxes[N].emplace_back(text);
    onTestThread |= std::this_thread::get_id() == testThread;
}
Texts take(int n) {
    std::lock_guard lock(mutex);
    return std::exchange(inboxes[n], {});
}
const velmora_intermediate_callback kCallbacks[] = {receive<0>, receive<1>, receive<2>};

class PeachResults : public PeachBridge {};

TEST_F(PeachResults, EveryTextReachesOneCallbackWhileTheHostReRegisters) {
    constexpr int kThreads = 4, kPerThread = 25;
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[0]), 0);
    std::atomic<bool> delivering{true};
    std::atomic<int> refused{0};
    std::thread host([&] {
        for (int i = 1; delivering.load() || i < 4; ++i)
            refused += velmora_peach_setIntermediateResultHandler(handle, kCallbacks[i % 3]) != 0;
    });
    EXPECT_EQ(sdk::fireConcurrently(kThreads, kPerThread, "r"), kThreads * kPerThread);
    delivering = false;
    host.join();
    EXPECT_EQ(refused.load(), 0);
    std::map<std::string, int> seen;
    for (int n = 0; n < 3; ++n)
        for (const std::string &text : take(n)) ++seen[text];
    EXPECT_EQ(seen.size(), std::size_t{kThreads * kPerThread});
    for (const auto &[text, count] : seen) EXPECT_EQ(count, 1) << text;
    std::lock_guard lock(mutex);
    EXPECT_FALSE(onTestThread);
}

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
