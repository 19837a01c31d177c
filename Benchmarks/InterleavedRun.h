#pragma once

#include <functional>
#include <string>
#include <vector>

/// Times several operations in turn, so that a busy phase of the machine falls on all of them alike.
class InterleavedRun {
public:
    struct Result {
        std::string name;
        std::vector<double> milliseconds; ///< one per repeat, in order of time
    };

    void add(const std::string& name, std::function<void()> operation);

    /// Every round runs each operation once, in an order that changes from round to round; the rounds of warming up
    /// come first and are not in the results.
    std::vector<Result> run(unsigned int warmUpRounds, unsigned int rounds) const;

private:
    struct Candidate {
        std::string name;
        std::function<void()> operation;
    };

    std::vector<Candidate> m_candidates;
};
