#include "ParallelFor.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace Image {

void parallelFor(unsigned threads, std::size_t count, const std::function<void(WorkQueue&)>& worker) {
    WorkQueue queue(count);
    std::mutex mutex;
    std::exception_ptr failure;
    const auto run = [&] {
        try {
            worker(queue);
        } catch (...) {
            queue.stop();
            const std::lock_guard<std::mutex> lock(mutex);
            if (!failure) failure = std::current_exception();
        }
    };
    std::vector<std::thread> helpers;
    const std::size_t wanted = std::min<std::size_t>(std::max(threads, 1u), count);
    try {
        while (helpers.size() + 1 < wanted) helpers.emplace_back(run);
    } catch (const std::system_error&) {
        // The threads that the system grants do.
    }
    run();
    for (std::thread& helper : helpers) helper.join();
    if (failure) std::rethrow_exception(failure);
}

} // namespace Image
