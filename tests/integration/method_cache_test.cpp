// Methods are resolved once per class reference: wherever the exported class
// references point, each call uses a method of the class they name now, and
// nothing resolved survives the references the library lets go.
#include <atomic>
#include <functional>
#include <thread>

#include "support/fixture.hpp"

namespace {

jobject globalClass(const char *name) {
    jclass local = threadEnv()->FindClass(name);
    jobject global = threadEnv()->NewGlobalRef(local);
    threadEnv()->DeleteLocalRef(local);
    return global;
}

// How a host points an exported reference elsewhere while calls may run.
void point(void *&slot, void *value) { std::atomic_ref(slot).store(value); }

using Journal = std::vector<std::string>;

TEST_F(PeachBridge, EachCallUsesTheMethodOfTheCurrentClassReference) {
    sdk::script("getResultFileCount", {"3"});
    const jobject object = globalClass("java/lang/Object");  // has none of the methods
    struct Case {
        const char *what, *className, *journal;
        void **classSlot;
        std::function<int()> call;
        int result;
    };
    const Case cases[] = {
        {"management", "velmora/user/ManagementImpl", "ready(I)I 4", &cls, [] { return velmora_ready(4); }, 0},
        {"indexed name", "velmora/user/ManagementImpl", "getResultFileCount(I)I 2", &cls,
         [] {
             int index = -1;
             size_t len = 0;
             return velmora_getResultFiles(2, &index, nullptr, &len);
         },
         -24},
        {"peach", "velmora/user/PeachWrapper", "setJobs(II)V 5, 9", &pwcls, [] { return velmora_peach_setJobs(5, 9); }, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        void *const original = *c.classSlot;
        const jobject sameClassAgain = globalClass(c.className);
        EXPECT_EQ(c.call(), c.result);  // resolved for the class as it stands
        point(*c.classSlot, object);  // the method is missing: -12 on every call
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(c.call(), VELMORA_STATUS_METHOD_NOT_FOUND);
            EXPECT_FALSE(threadEnv()->ExceptionCheck());
        }
        point(*c.classSlot, sameClassAgain);  // and present again, under another reference
        EXPECT_EQ(c.call(), c.result);
        point(*c.classSlot, original);
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(sdk::journal(), (Journal{c.journal, c.journal, c.journal}));
        threadEnv()->DeleteGlobalRef(sameClassAgain);
    }
    threadEnv()->DeleteGlobalRef(object);
}

// An unload deletes the wrapper's references; a reference made afterwards may
// reuse the deleted one's value for another class, and must not meet a method
// resolved for the old one.
TEST_F(PeachBridge, NothingResolvedOutlivesAnUnload) {
    EXPECT_EQ(velmora_peach_setJobs(handle, 1), 0);
    void *const unloaded = pwcls;
    ASSERT_EQ(velmora_unload(0), 0);
    EXPECT_EQ(velmora_peach_setJobs(handle, 1), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
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
    void *const original = cls;
    const jobject again = globalClass("velmora/user/ManagementImpl"), object = globalClass("java/lang/Object");
    void *const targets[] = {object, again, original};
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
    point(cls, original);
    EXPECT_EQ(unexpected.load(), 0);
    EXPECT_EQ(velmora_ready(1), 7);
    threadEnv()->DeleteGlobalRef(again);
    threadEnv()->DeleteGlobalRef(object);
}

}  // namespace
