#pragma once

/// Starts the program once more with OMP_WAIT_POLICY=passive, unless the user has set a policy or the run has
/// one thread; call it before anything is printed or written. Idle threads of the OpenMP runtime spin by
/// default, which on busy cores makes two threads slower than one, and the runtime takes its policy from the
/// environment before main. Where the restart is not possible, the run goes on as it is. It costs as much as
/// a start: for runs with many parallel regions.
void RestartWithPassiveWaiting(char** argv);
