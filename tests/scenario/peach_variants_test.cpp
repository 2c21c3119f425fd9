// The peach builder against SDKs that lack its classes: a missing
// PeachWrapper keeps the bridge without a wrapper, a missing
// NativeFunctionCaller refuses registrations and keeps the callback.
#include <jni.h>

#include "scenario.hpp"

namespace {

void receive(const char *) {}
void other(const char *) {}

TEST(PeachVariants, MissingWrapperClassKeepsNothing) {
    Scenario s(variantJar("peach-missing"));
    ASSERT_EQ(VELMORA_FN(s, velmora_init)(), 0);
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(VELMORA_FN(s, velmora_peach_handle)(), VELMORA_STATUS_METHOD_NOT_FOUND);
        EXPECT_EQ(*s.symbol<void *>("pwcls"), nullptr);
        EXPECT_EQ(*s.symbol<void *>("pwobj"), nullptr);
        EXPECT_EQ(VELMORA_FN(s, velmora_peach_setName)(0, "x"), VELMORA_STATUS_JAVA_NOT_INITIALIZED);
    }
    // No Java error is left behind for the management calls.
    EXPECT_EQ(VELMORA_FN(s, velmora_open)(), 0);
}

TEST(PeachVariants, MissingHandlerClassKeepsTheCallback) {
    Scenario s(variantJar("handler-missing"));
    ASSERT_EQ(VELMORA_FN(s, velmora_init)(), 0);
    const int handle = VELMORA_FN(s, velmora_peach_handle)();
    ASSERT_GE(handle, 0);
    // As an earlier registration would have left it.
    auto &callback = *s.symbol<velmora_intermediate_callback>("velmora_peach_intermediate_callback_fun");
    callback = receive;
    for (velmora_intermediate_callback wanted : {other, static_cast<velmora_intermediate_callback>(nullptr)}) {
        EXPECT_EQ(VELMORA_FN(s, velmora_peach_setIntermediateResultHandler)(handle, wanted),
                  VELMORA_STATUS_METHOD_NOT_FOUND);
        EXPECT_EQ(callback, receive);
    }
    EXPECT_EQ(VELMORA_FN(s, velmora_peach_done)(handle), 0);
}

}  // namespace
