#pragma once

namespace quillet {

// How the window's steppers move: a click lands on a multiple of the
// increment, the scroll wheel moves by one whatever the increment.
namespace StepperLogic {

// The value after a click that took the stepper from `before` to `after`:
// rounded down to a multiple of `increment` when it rose, else rounded up
// (so from 7 with increment 5, up gives 10 and down gives 5). Division
// truncates toward zero, as the platform's integer division does.
int snapClick(int before, int after, int increment);

// The value after a wheel turn: one more for a positive delta, one less for a
// negative one, the limits not checked; a delta of 0 leaves it.
int wheel(int value, int delta);

} // namespace StepperLogic

} // namespace quillet
