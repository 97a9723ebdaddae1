#include "parallelfor.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "fbx/io/fbxhelperthread.h"

void parallelFor(size_t count, unsigned threads, const std::function<void(size_t)>& work) {
    std::atomic<size_t> next = 0;
    std::mutex failureMutex;
    std::exception_ptr failure;
    // Each thread takes the next index when done with one, so a thread slowed by other
    // processes takes fewer.
    const auto drain = [&] {
        try {
            for (size_t i = next++; i < count; i = next++) work(i);
        } catch (...) {
            next = count;
            const std::lock_guard lock(failureMutex);
            if (!failure) failure = std::current_exception();
        }
    };
    std::vector<std::thread> helpers;
    const size_t wanted = std::min<size_t>(std::max(threads, 1u), count);
    try {
        for (size_t t = 1; t < wanted; ++t) helpers.push_back(FbxStartHelperThread(drain));
    } catch (const std::system_error&) {
        // Fewer helpers than asked for only make the work take longer.
    }
    drain();
    for (std::thread& helper : helpers) helper.join();
    if (failure) std::rethrow_exception(failure);
}
