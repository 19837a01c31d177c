#pragma once

#include <memory>
#include <string>

namespace Core {

/// The texts of the last failure at one facade, kept per thread: no thread sees, replaces or waits for another's.
///
/// They are released with the facade; in other threads, no later than their next use of a facade.
class ErrorTexts {
public:
    struct Texts {
        std::string brief;
        std::string detailed;
    };

    ErrorTexts();
    ~ErrorTexts();
    ErrorTexts(const ErrorTexts&) = delete;
    ErrorTexts& operator=(const ErrorTexts&) = delete;

    /// Replaces the calling thread's texts; if memory runs out, it has none.
    void keep(Texts texts);

    void forget() noexcept;

    /// The calling thread's, valid until it next keeps or forgets texts; null when there are none.
    const Texts* texts() const noexcept;

private:
    /// Identifies this facade; a bare address could be reused by another one.
    const std::shared_ptr<const char> m_facade;
};

} // namespace Core
