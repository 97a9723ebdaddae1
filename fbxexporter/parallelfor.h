#pragma once

#include <cstddef>
#include <functional>

// Calls work(i) for every i in [0, count), spread over this thread and threads - 1 more, and
// returns when every call has returned. Calls for different i must not touch the same data.
// The first exception a call throws is thrown here once every thread has stopped.
void parallelFor(size_t count, unsigned threads, const std::function<void(size_t)>& work);
