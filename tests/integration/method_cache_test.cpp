// Methods are resolved once per class reference: wherever the exported class
// references point, each call uses a method of the class they name now, and
// nothing resolved survives the references the library lets go.
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "support/fixture.hpp"

namespace {

JNIEnv *jni() {
    JNIEnv *e = nullptr;
    velmora_getJavaVM()->GetEnv(reinterpret_cast<void **>(&e), JNI_VERSION_1_6);
    return e;
}

jobject globalClass(const char *name) {
    jclass local = jni()->FindClass(name);
    jobject global = jni()->NewGlobalRef(local);
    jni()->DeleteLocalRef(local);
    return global;
}

// How a host points an exported reference elsewhere while calls may run.
void point(void *&slot, void *value) { std::atomic_ref(slot).store(value); }

using Journal = std::vector<std::string>;

TEST_F(PeachBridge, EachCallUsesTheMethodOfTheCurrentClassReference) {
    sdk::script("getResultFileCount", {"3"});
    const jobject object = globalClass("java/lang/Object");  // has none of the methods
    struct Case {
        const char *what;
        void **classSlot;
        jobject sameClassAgain;  // another reference to the class the slot names
        std::function<int()> call;
        int result;
        Journal journal;
    };
    const Case cases[] = {
        {"management", &cls, globalClass("velmora/user/ManagementImpl"), [] { return velmora_ready(4); }, 0,
         {"ready(I)I 4"}},
        {"indexed name", &cls, globalClass("velmora/user/ManagementImpl"),
         [] {
             int index = -1;
             size_t len = 0;
             return velmora_getResultFiles(2, &index, nullptr, &len);
         },
         -24, {"getResultFileCount(I)I 2"}},
        {"peach", &pwcls, globalClass("velmora/user/PeachWrapper"), [this] { return velmora_peach_setJobs(handle, 9); },
         0, {"setJobs(II)V 5, 9"}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        void *const original = *c.classSlot;
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(sdk::journal(), c.journal);

        point(*c.classSlot, object);  // the method is missing: -12 on every call
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(c.call(), VELMORA_STATUS_METHOD_NOT_FOUND);
            EXPECT_FALSE(jni()->ExceptionCheck());
        }
        EXPECT_EQ(sdk::journal(), Journal{});

        point(*c.classSlot, c.sameClassAgain);  // and present again, under another reference
        EXPECT_EQ(c.call(), c.result);
        point(*c.classSlot, original);
        EXPECT_EQ(c.call(), c.result);
        EXPECT_EQ(sdk::journal(), (Journal{c.journal[0], c.journal[0]}));
        jni()->DeleteGlobalRef(c.sameClassAgain);
    }
    jni()->DeleteGlobalRef(object);
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
    jni()->DeleteGlobalRef(object);

    sdk::script("get", {"6"});
    EXPECT_EQ(velmora_peach_handle(), 6);
    EXPECT_EQ(velmora_peach_setJobs(6, 3), 0);
    EXPECT_EQ(sdk::journal(), (Journal{"setJobs(II)V 5, 1", "unload(Z)I false", "getPeachWrapper()Lvelmora/user/PeachWrapper;", "get()I",
                                     "setJobs(II)V 6, 3"}));
}

// Host threads call while another points the class reference back and forth
// between the class (under two references) and one without the method: every
// call either reaches the method or finds it missing.
TEST_F(Bridge, ConcurrencyCallsRacingAClassChange) {
    sdk::script("ready", {"7"});
    void *const original = cls;
    const jobject again = globalClass("velmora/user/ManagementImpl");
    const jobject object = globalClass("java/lang/Object");
    void *const targets[] = {object, again, original};

    std::atomic<bool> stop{false};
    std::atomic<int> unexpected{0}, reached{0};
    std::vector<std::thread> hosts;
    for (int t = 0; t < 3; ++t) {
        hosts.emplace_back([&] {
            while (!stop.load()) {
                const int result = velmora_ready(1);
                if (result == 7) ++reached;
                else if (result != VELMORA_STATUS_METHOD_NOT_FOUND) ++unexpected;
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
    jni()->DeleteGlobalRef(again);
    jni()->DeleteGlobalRef(object);
}

}  // namespace
