// Methods are resolved once per class reference (the forwarding suite points
// the references at another class and back): nothing resolved survives the
// references the library lets go, and calls racing a change of reference
// reach the method or find it missing.
#include <atomic>
#include <thread>

#include "support/fixture.hpp"

namespace {

// An unload deletes the wrapper's references; a reference made afterwards may
// reuse the deleted one's value for another class, and must not meet a method
// resolved for the old one.
TEST_F(PeachBridge, NothingResolvedOutlivesAnUnload) {
    EXPECT_EQ(velmora_peach_setJobs(handle, 1), 0);
    void *const unloaded = pwcls;
    ASSERT_EQ(velmora_unload(0), 0);
    const jobject object = globalClass("java/lang/Object");
    if (object == unloaded) {
        point(pwcls, object);
        point(pwobj, object);
        EXPECT_EQ(velmora_peach_setJobs(handle, 1), VELMORA_STATUS_METHOD_NOT_FOUND);
        point(pwcls, nullptr);
        point(pwobj, nullptr);
    }
    threadEnv()->DeleteGlobalRef(object);
    sdk::script("get", {"6"});
    EXPECT_EQ(velmora_peach_handle(), 6);
    EXPECT_EQ(velmora_peach_setJobs(6, 3), 0);
    EXPECT_EQ(sdk::journal(), (Journal{"setJobs(II)V 5, 1", "unload(Z)I false", "getPeachWrapper()Lvelmora/user/PeachWrapper;",
                                       "get()I", "setJobs(II)V 6, 3"}));
}

// Host threads call while another points the class reference back and forth
// between the class (under two references) and one without the method: every
// call either reaches the method or finds it missing.
TEST_F(Bridge, ConcurrencyCallsRacingAClassChange) {
    sdk::script("ready", {"7"});
    const jobject again = globalClass("velmora/user/ManagementImpl"), object = globalClass("java/lang/Object");
    void *const targets[] = {object, again, cls};
    std::atomic<bool> stop{false};
    std::atomic<int> unexpected{0}, reached{0};
    std::vector<std::thread> hosts;
    for (int t = 0; t < 3; ++t) {
        hosts.emplace_back([&] {
            while (!stop.load()) {
                const int result = velmora_ready(1);
                reached += result == 7;
                unexpected += result != 7 && result != VELMORA_STATUS_METHOD_NOT_FOUND;
            }
        });
    }
    for (int i = 0; i < 600 || reached.load() < 100; ++i) {
        point(cls, targets[i % 3]);
        std::this_thread::yield();
    }
    stop = true;
    for (std::thread &h : hosts) h.join();
    point(cls, targets[2]);
    EXPECT_EQ(unexpected.load(), 0);
    EXPECT_EQ(velmora_ready(1), 7);
    threadEnv()->DeleteGlobalRef(again);
    threadEnv()->DeleteGlobalRef(object);
}

}  // namespace
