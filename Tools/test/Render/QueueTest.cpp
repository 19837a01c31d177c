#include "Render/Queue.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

using Tools::Queue;

TEST(Queue, HandsItemsOutInOrder) {
    Queue<int> queue;
    for (int item = 0; item < 3; ++item) queue.push(item);
    EXPECT_EQ(queue.pop(), 0);
    EXPECT_EQ(queue.pop(), 1);
    EXPECT_EQ(queue.pop(), 2);
}

TEST(Queue, HandsOutWhatWaitsAfterItWasClosed) {
    Queue<int> queue;
    queue.push(1);
    queue.close();
    EXPECT_EQ(queue.pop(), 1);
    EXPECT_EQ(queue.pop(), std::nullopt);
}

TEST(Queue, DropsWhatComesAfterItWasClosed) {
    Queue<std::shared_ptr<int>> queue;
    queue.close();
    const auto item = std::make_shared<int>(1);
    queue.push(item);
    EXPECT_EQ(item.use_count(), 1);
    EXPECT_EQ(queue.pop(), std::nullopt);
}

TEST(Queue, HandsEveryItemToOneOfSeveralThreads) {
    constexpr int producers = 4, consumers = 3, itemsEach = 500;
    Queue<int> queue;
    std::vector<std::thread> makers, takers;
    std::vector<std::vector<int>> taken(consumers);
    for (int producer = 0; producer < producers; ++producer)
        makers.emplace_back([&queue, producer] {
            for (int item = 0; item < itemsEach; ++item) queue.push(producer * itemsEach + item);
        });
    for (std::vector<int>& items : taken)
        takers.emplace_back([&queue, &items] {
            while (const std::optional<int> item = queue.pop()) items.push_back(*item);
        });
    for (std::thread& thread : makers) thread.join();
    queue.close();
    for (std::thread& thread : takers) thread.join();
    std::vector<int> times(producers * itemsEach);
    for (const std::vector<int>& items : taken)
        for (const int item : items) ++times[static_cast<std::size_t>(item)];
    EXPECT_EQ(times, std::vector<int>(producers * itemsEach, 1));
}

TEST(Queue, WakesWhoeverWaitsWhenItIsClosed) {
    Queue<int> queue;
    std::thread consumer([&] { EXPECT_EQ(queue.pop(), std::nullopt); });
    queue.close();
    consumer.join();
}
