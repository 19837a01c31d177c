#pragma once

#include <atomic>
#include <cstddef>
#include <functional>

namespace Image {

/// The indices 0 … count-1, handed out once each, in order, to whoever asks; none after stop().
class WorkQueue {
public:
    explicit WorkQueue(std::size_t count) : m_count(count) {}
    /// Puts the next index into `index`; false if none is left.
    bool next(std::size_t& index) {
        index = m_next.fetch_add(1, std::memory_order_relaxed);
        return index < m_count && !m_stopped.load(std::memory_order_acquire);
    }
    void stop() { m_stopped.store(true, std::memory_order_release); }
    bool stopped() const { return m_stopped.load(std::memory_order_acquire); }

private:
    std::size_t m_count;
    std::atomic<std::size_t> m_next{0};
    std::atomic<bool> m_stopped{false};
};

/// Runs `worker(queue)` on up to `threads` threads, the caller's included, no more than there are items; returns when
/// all have returned. The first exception stops the queue and is thrown again here.
void parallelFor(unsigned threads, std::size_t count, const std::function<void(WorkQueue&)>& worker);

} // namespace Image
