#pragma once

#include <memory>
#include <string>

namespace Core {

/// The texts of the last failure at one facade, for each thread its own: no thread sees, replaces or waits for those of
/// another.
///
/// They are gone with the facade, in other threads at the latest when those use a facade again.
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

    /// Replaces the calling thread's texts. Out of memory, there are none.
    void keep(Texts texts);

    void forget() noexcept;

    /// The calling thread's, until it keeps or forgets some; null when there are none.
    const Texts* texts() const noexcept;

private:
    /// Stands for this facade; an address alone could come back as another facade's.
    const std::shared_ptr<const char> m_facade;
};

} // namespace Core
