#include "InterleavedRun.h"

#include <algorithm>
#include <chrono>
#include <numeric>
#include <random>
#include <utility>

void InterleavedRun::add(const std::string& name, std::function<void()> operation) {
    m_candidates.push_back({name, std::move(operation)});
}

std::vector<InterleavedRun::Result> InterleavedRun::run(unsigned int warmUpRounds, unsigned int rounds) const {
    std::vector<Result> results;
    for (const Candidate& candidate : m_candidates) results.push_back({candidate.name, {}});
    std::vector<std::size_t> order(m_candidates.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::mt19937 random(1);
    for (unsigned int round = 0; round < warmUpRounds + rounds; round++) {
        // What ran just before leaves its data in the caches; nobody shall always follow the same neighbour.
        std::shuffle(order.begin(), order.end(), random);
        for (const std::size_t index : order) {
            const auto begin = std::chrono::steady_clock::now();
            m_candidates[index].operation();
            const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - begin;
            if (round >= warmUpRounds) results[index].milliseconds.push_back(elapsed.count());
        }
    }
    return results;
}
