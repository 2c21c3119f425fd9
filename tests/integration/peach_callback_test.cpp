// Intermediate results: texts fired by the SDK double on its own Java threads
// reach the host's callback through the registered native method, also while
// the host registers other callbacks; null callbacks and null texts drop
// them; failed registrations keep the previous callback.
#include <atomic>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "peach_calls.hpp"

namespace {

// What one host callback received, and on which threads.
struct Inbox {
    std::mutex mutex;
    std::vector<std::string> texts;
    std::set<std::thread::id> threads;

    void add(const char *text) {
        std::lock_guard lock(mutex);
        texts.emplace_back(text);
        threads.insert(std::this_thread::get_id());
    }
    std::vector<std::string> take() {
        std::lock_guard lock(mutex);
        threads.clear();
        return std::exchange(texts, {});
    }
};

Inbox inboxes[3];
template <int N> void receive(const char *text) { inboxes[N].add(text); }
const velmora_intermediate_callback kCallbacks[] = {receive<0>, receive<1>, receive<2>};

using Texts = std::vector<std::string>;

class PeachResults : public PeachBridge {
protected:
    void TearDown() override {
        for (Inbox &inbox : inboxes) inbox.take();
    }
};

}  // namespace

TEST_F(PeachResults, EveryTextReachesOneCallbackWhileTheHostReRegisters) {
    constexpr int kThreads = 6, kPerThread = 400;
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[0]), 0);

    // The host swaps callbacks (and handler objects) for as long as the SDK
    // delivers; each registration must succeed.
    std::atomic<bool> delivering{true};
    std::atomic<int> registrations{0}, refused{0};
    std::thread host([&] {
        for (int i = 1; delivering.load() || i < 4; ++i) {
            if (velmora_peach_setIntermediateResultHandler(handle, kCallbacks[i % 3]) != 0) ++refused;
            ++registrations;
        }
    });
    const int delivered = sdk::fireConcurrently(kThreads, kPerThread, "r");
    delivering = false;
    host.join();

    EXPECT_EQ(delivered, kThreads * kPerThread);
    EXPECT_EQ(refused.load(), 0);
    EXPECT_GE(registrations.load(), 3);

    std::map<std::string, int> seen;
    for (Inbox &inbox : inboxes) {
        {
            std::lock_guard lock(inbox.mutex);
            EXPECT_EQ(inbox.threads.count(std::this_thread::get_id()), 0u) << "delivered on the test thread";
            EXPECT_EQ(inbox.threads.count(host.get_id()), 0u) << "delivered on the registering thread";
        }
        for (const std::string &text : inbox.take()) ++seen[text];
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(kThreads * kPerThread));
    for (int t = 0; t < kThreads; ++t) {
        for (int i = 0; i < kPerThread; ++i) {
            const std::string text = "r" + std::to_string(t) + ":" + std::to_string(i);
            ASSERT_EQ(seen[text], 1) << text;
        }
    }
}

TEST_F(PeachResults, NullCallbacksAndNullTextsAreDropped) {
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[0]), 0);
    EXPECT_EQ(velmora_peach_intermediate_callback_fun, kCallbacks[0]);
    sdk::fire("one");
    sdk::fire(nullptr);  // a null Java string is skipped, never read
    sdk::fire("");
    EXPECT_EQ(inboxes[0].take(), (Texts{"one", ""}));

    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle, nullptr), 0);
    EXPECT_EQ(velmora_peach_intermediate_callback_fun, nullptr);
    sdk::fire("dropped");
    sdk::fire(nullptr);
    EXPECT_EQ(inboxes[0].take(), Texts{});

    // One pointer for the whole process: a second description's handler
    // delivers to the callback registered last.
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle + 1, kCallbacks[1]), 0);
    EXPECT_EQ(sdk::journal().back(),
              "setIntermediateResultHandler(ILvelmora/user/IntermediateResultHandler;)V 6, NativeFunctionCaller");
    sdk::fire("Grüße\nzwei");
    EXPECT_EQ(inboxes[1].take(), Texts{"Grüße\nzwei"});
    EXPECT_EQ(inboxes[0].take(), Texts{});
}

TEST_F(PeachResults, FailedRegistrationsKeepThePreviousCallback) {
    ASSERT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[0]), 0);

    sdk::script("setIntermediateResultHandler", {"throw"});
    EXPECT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[1]), -13);
    EXPECT_EQ(velmora_peach_intermediate_callback_fun, kCallbacks[0]);
    sdk::script("setIntermediateResultHandler", {});
    {
        peach::ForeignWrapperClass noMethods;
        EXPECT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[1]), -12);
        EXPECT_FALSE(peach::jni()->ExceptionCheck());
    }
    EXPECT_EQ(velmora_peach_intermediate_callback_fun, kCallbacks[0]);
    sdk::fire("still first");
    EXPECT_EQ(inboxes[0].take(), Texts{"still first"});

    // An unload forgets the wrapper but not the callback; registering is
    // refused until a handle is fetched again.
    ASSERT_EQ(velmora_unload(0), 0);
    EXPECT_EQ(velmora_peach_setIntermediateResultHandler(handle, kCallbacks[2]), -11);
    EXPECT_EQ(velmora_peach_intermediate_callback_fun, kCallbacks[0]);
    sdk::fire("after unload");
    EXPECT_EQ(inboxes[0].take(), Texts{"after unload"});
    EXPECT_EQ(inboxes[2].take(), Texts{});
}
