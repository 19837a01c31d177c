#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace Host {

/// Hands items from the threads of one stage to those of the next, in order, and makes the earlier stage wait while the
/// items in between hold more memory than allowed. A frame may take half a gigabyte, so the bound is bytes, not a
/// count.
template <typename Item>
class BoundedQueue {
public:
    /// `capacity` in bytes. One item may always wait, whatever its size, so that a large frame cannot block the job.
    explicit BoundedQueue(std::uint64_t capacity) : m_capacity(capacity) {}
    BoundedQueue(const BoundedQueue&) = delete;
    BoundedQueue& operator=(const BoundedQueue&) = delete;

    /// Appends an item that holds so many bytes, waiting for room. False, with the item dropped, once closed or
    /// cancelled.
    bool push(Item item, std::uint64_t bytes) {
        std::unique_lock lock(m_mutex);
        m_hasRoom.wait(lock, [&] { return m_isClosed || m_items.empty() || fits(bytes); });
        if (m_isClosed) return false;
        m_items.emplace_back(std::move(item), bytes);
        m_bytes += bytes;
        m_hasItem.notify_one();
        return true;
    }

    /// Takes the oldest item, waiting for one. None when the queue is closed and empty, or cancelled.
    std::optional<Item> pop() {
        std::unique_lock lock(m_mutex);
        m_hasItem.wait(lock, [&] { return m_isClosed || !m_items.empty(); });
        if (m_items.empty()) return std::nullopt;
        std::pair<Item, std::uint64_t> front = std::move(m_items.front());
        m_items.pop_front();
        m_bytes -= front.second;
        // All of them: which of several waiting items fits is not known here.
        m_hasRoom.notify_all();
        return std::move(front.first);
    }

    /// No more items will come; those that wait are still handed out.
    void close() {
        const std::lock_guard lock(m_mutex);
        m_isClosed = true;
        m_hasItem.notify_all();
        m_hasRoom.notify_all();
    }

    /// Closes and drops the items that wait.
    void cancel() {
        std::deque<std::pair<Item, std::uint64_t>> dropped; // destroyed outside the lock: frames are large
        {
            const std::lock_guard lock(m_mutex);
            m_isClosed = true;
            dropped.swap(m_items);
            m_bytes = 0;
            m_hasItem.notify_all();
            m_hasRoom.notify_all();
        }
    }

private:
    bool fits(std::uint64_t bytes) const { return bytes <= m_capacity && m_bytes <= m_capacity - bytes; }

    const std::uint64_t m_capacity;
    std::uint64_t m_bytes = 0;
    bool m_isClosed = false;
    std::deque<std::pair<Item, std::uint64_t>> m_items;
    std::mutex m_mutex;
    std::condition_variable m_hasItem;
    std::condition_variable m_hasRoom;
};

} // namespace Host
