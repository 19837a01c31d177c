#include "Pipeline/BoundedQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

using Host::BoundedQueue;

TEST(BoundedQueue, HandsItemsOutInOrder) {
    BoundedQueue<int> queue(100);
    for (int item = 0; item < 3; ++item) EXPECT_TRUE(queue.push(item, 10));
    EXPECT_EQ(queue.pop(), 0);
    EXPECT_EQ(queue.pop(), 1);
    EXPECT_EQ(queue.pop(), 2);
}

TEST(BoundedQueue, HandsOutWhatWaitsAfterItWasClosed) {
    BoundedQueue<int> queue(100);
    queue.push(1, 10);
    queue.close();
    EXPECT_EQ(queue.pop(), 1);
    EXPECT_EQ(queue.pop(), std::nullopt);
    EXPECT_FALSE(queue.push(2, 10));
}

TEST(BoundedQueue, DropsWhatWaitsWhenCancelled) {
    BoundedQueue<std::shared_ptr<int>> queue(100);
    const auto item = std::make_shared<int>(1);
    queue.push(item, 10);
    queue.cancel();
    EXPECT_EQ(queue.pop(), std::nullopt);
    EXPECT_EQ(item.use_count(), 1);
}

TEST(BoundedQueue, AlwaysTakesOneItemHoweverLarge) {
    BoundedQueue<int> queue(100);
    EXPECT_TRUE(queue.push(1, 1000));
    EXPECT_EQ(queue.pop(), 1);
}

TEST(BoundedQueue, NeverHoldsMoreBytesThanAllowed) {
    // Four producers push items of 30 bytes into a queue of 100: three fit. One more may be out of the queue already
    // and not yet counted as such.
    constexpr int producers = 4;
    constexpr int itemsEach = 500;
    BoundedQueue<int> queue(100);
    std::atomic<int> inside{0};
    std::atomic<int> most{0};
    std::vector<std::thread> threads;
    for (int producer = 0; producer < producers; ++producer) {
        threads.emplace_back([&] {
            for (int item = 0; item < itemsEach; ++item) {
                queue.push(item, 30);
                const int now = ++inside;
                for (int seen = most; seen < now && !most.compare_exchange_weak(seen, now);) {
                }
            }
        });
    }
    int received = 0;
    while (received < producers * itemsEach) {
        ASSERT_TRUE(queue.pop());
        --inside;
        ++received;
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_LE(most, 3 + 1);
    EXPECT_EQ(received, producers * itemsEach);
}

TEST(BoundedQueue, WakesWhoeverWaitsWhenItIsClosed) {
    BoundedQueue<int> queue(10);
    queue.push(1, 10);
    std::thread producer([&] { EXPECT_FALSE(queue.push(2, 10)); });
    BoundedQueue<int> empty(10);
    std::thread consumer([&] { EXPECT_EQ(empty.pop(), std::nullopt); });
    queue.close();
    empty.close();
    producer.join();
    consumer.join();
}
