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

// What one host callback received, and whether the test thread delivered any.
struct Inbox {
    std::mutex mutex;
    Texts texts;
    bool onTestThread = false;
    Texts take() {
        std::lock_guard lock(mutex);
        return std::exchange(texts, {});
    }
    bool deliveredOnTestThread() {
        std::lock_guard lock(mutex);
        return onTestThread;
    }
};
Inbox inboxes[3];
std::thread::id testThread = std::this_thread::get_id();
template <int N> void receive(const char *text) {
    std::lock_guard lock(inboxes[N].mutex);
    inboxes[N].texts.emplace_back(text);
    inboxes[N].onTestThread |= std::this_thread::get_id() == testThread;
}
const velmora_intermediate_callback kCallbacks[] = {receive<0>, receive<1>, receive<2>};

class PeachResults : public PeachBridge {};

TEST_F(PeachResults, EveryTextReachesOneCallbackWhileTheHostReRegisters) {
    constexpr int kThreads = 4, kPerThread = 25;
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[0]), 0);
    std::atomic<bool> delivering{true};
    std::atomic<int> refused{0};
    std::thread host([&] {
        for (int i = 1; delivering.load() || i < 4; ++i) {
            if (velmora_peach_setIntermediateResultHandler(handle, kCallbacks[i % 3]) != 0) ++refused;
        }
    });
    EXPECT_EQ(sdk::fireConcurrently(kThreads, kPerThread, "r"), kThreads * kPerThread);
    delivering = false;
    host.join();
    EXPECT_EQ(refused.load(), 0);

    std::map<std::string, int> seen;
    for (Inbox &inbox : inboxes) {
        EXPECT_FALSE(inbox.deliveredOnTestThread());
        for (const std::string &text : inbox.take()) ++seen[text];
    }
    EXPECT_EQ(seen.size(), std::size_t{kThreads * kPerThread});
    for (const auto &[text, count] : seen) EXPECT_EQ(count, 1) << text;
}

TEST_F(PeachResults, NullCallbacksAndNullTextsAreDroppedAndFailuresKeepTheCallback) {
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[0]), 0);
    EXPECT_EQ(velmora_peach_intermediate_callback_fun, kCallbacks[0]);
    sdk::fire("one");
    sdk::fire(nullptr);  // a null Java string is skipped, never read
    sdk::fire("");
    EXPECT_EQ(inboxes[0].take(), (Texts{"one", ""}));

    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle, nullptr), 0);
    sdk::fire("dropped");
    EXPECT_EQ(inboxes[0].take(), Texts{});

    // One pointer for the whole process: any description's handler delivers
    // to the callback registered last.
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle + 1, kCallbacks[1]), 0);
    sdk::fire("Grüße\nzwei");
    EXPECT_EQ(inboxes[1].take(), Texts{"Grüße\nzwei"});

    sdk::script("setIntermediateResultHandler", {"throw"});
    EXPECT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[2]), -13);
    EXPECT_EQ(velmora_peach_intermediate_callback_fun, kCallbacks[1]);
    // An unload forgets the wrapper but not the callback.
    ASSERT_EQ(velmora_unload(0), 0);
    EXPECT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[2]), -11);
    sdk::fire("after unload");
    EXPECT_EQ(inboxes[1].take(), Texts{"after unload"});
    EXPECT_EQ(inboxes[2].take(), Texts{});
}

}  // namespace
