#pragma once

#include <cstdint>

// Milliseconds since 1970-01-01 00:00:00 UTC.
using NuTimeStamp = int64_t;

// The current wall-clock time.
NuTimeStamp NuTimeStamp_now();
