#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace Tools {

/// Hands items from the threads of one stage to those of the next, in order; any thread may call. It is unbounded:
/// whoever produces items limits how many there are.
template <typename Item>
class Queue {
public:
    Queue() = default;
    Queue(const Queue&) = delete;
    Queue& operator=(const Queue&) = delete;

    /// Appends an item; once closed, drops it.
    void push(Item item) {
        const std::lock_guard lock(m_mutex);
        if (m_isClosed) return;
        m_items.push_back(std::move(item));
        m_hasItem.notify_one();
    }

    /// Takes the oldest item, waiting for one. None when the queue is closed and empty.
    std::optional<Item> pop() {
        std::unique_lock lock(m_mutex);
        m_hasItem.wait(lock, [&] { return m_isClosed || !m_items.empty(); });
        if (m_items.empty()) return std::nullopt;
        std::optional<Item> front = std::move(m_items.front());
        m_items.pop_front();
        return front;
    }

    /// No more items will come; those in the queue are still handed out.
    void close() {
        const std::lock_guard lock(m_mutex);
        m_isClosed = true;
        m_hasItem.notify_all();
    }

private:
    bool m_isClosed = false;
    std::deque<Item> m_items;
    std::mutex m_mutex;
    std::condition_variable m_hasItem;
};

} // namespace Tools
