#pragma once

// The processor threads this process may run on: those its CPU affinity allows (a host pinned
// to one core has one), else those of the machine; at least 1. Helper threads beyond these
// would only take turns with the host's thread.
unsigned FbxProcessorThreads();
