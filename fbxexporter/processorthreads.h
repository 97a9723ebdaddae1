#pragma once

// The processor threads the host's process may run on: those its CPU affinity allows (a host
// pinned to one core has one), else those of the machine; at least 1.
unsigned processorThreads();
