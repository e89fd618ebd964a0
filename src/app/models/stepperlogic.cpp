#include "app/models/stepperlogic.h"

namespace quillet {

int StepperLogic::snapClick(int before, int after, int increment) {
    if (increment < 1)
        return after;
    if (after > before)
        return after / increment * increment;
    return (after + increment - 1) / increment * increment;
}

int StepperLogic::wheel(int value, int delta) {
    if (delta > 0)
        return value + 1;
    if (delta < 0)
        return value - 1;
    return value;
}

} // namespace quillet
