// Start-up under conditions a host can create: the start-up thread ends
// before a failing initialiser destroys the machine. A hang ends the process
// through alarm().
#include <unistd.h>

#include <thread>

#include "scenario.hpp"

namespace {

constexpr unsigned kHangSeconds = 60;

TEST(HostConditions, NoConstructorAfterTheStartupThreadEnded) {
    Scenario s(variantJar("no-constructor"));
    int started = -1;
    std::thread([&] { started = VELMORA_FN(s, velmora_initJava)(); }).join();
    ASSERT_EQ(started, 0);
    alarm(kHangSeconds);
    EXPECT_EQ(VELMORA_FN(s, velmora_init)(), VELMORA_STATUS_NO_CONSTRUCTOR);
    alarm(0);
}

}  // namespace
