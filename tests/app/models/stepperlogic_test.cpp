#include "app/models/stepperlogic.h"

#include <gtest/gtest.h>

using namespace quillet;

TEST(StepperLogic, ClicksLandOnMultiplesAndTheWheelMovesByOne) {
    // increment 10 at 25: up to 30, down to 20; at 30 down gives 20
    EXPECT_EQ(StepperLogic::snapClick(25, 35, 10), 30);
    EXPECT_EQ(StepperLogic::snapClick(25, 15, 10), 20);
    EXPECT_EQ(StepperLogic::snapClick(30, 20, 10), 20);
    EXPECT_EQ(StepperLogic::snapClick(7, 12, 5), 10);
    EXPECT_EQ(StepperLogic::snapClick(7, 2, 5), 5);
    // held at the top limit: rounded up stays on a multiple
    EXPECT_EQ(StepperLogic::snapClick(100, 100, 10), 100);
    EXPECT_EQ(StepperLogic::wheel(25, 3), 26);
    EXPECT_EQ(StepperLogic::wheel(25, -1), 24);
    EXPECT_EQ(StepperLogic::wheel(25, 0), 25);
}
