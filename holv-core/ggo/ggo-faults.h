// Runs a piece of arithmetic and tells which floating-point faults it met.

#pragma once

// Runs `work` with all faults masked and none pending. Gives whether one was met: underflow, overflow,
// division by zero, invalid operation, denormal operand. The control word is then as before, with no fault
// pending.
bool ggo_run_watched(void (*work)(void* context), void* context);
