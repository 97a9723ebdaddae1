#pragma once

// The cores this process may run on: those of its CPU affinity (a run pinned to one core with
// taskset has one), else those of the machine; at least 1.
int usableCores();
