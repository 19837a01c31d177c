#include "Core/ErrorTexts.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Core {

namespace {

struct FacadeTexts {
    std::weak_ptr<const char> facade;
    ErrorTexts::Texts texts;
};

thread_local std::vector<FacadeTexts> textsOfThisThread;

} // namespace

ErrorTexts::ErrorTexts() : m_facade(std::make_shared<const char>()) {}

ErrorTexts::~ErrorTexts() { forget(); }

void ErrorTexts::keep(Texts texts) {
    forget();
    textsOfThisThread.push_back({m_facade, std::move(texts)});
}

void ErrorTexts::forget() noexcept {
    auto& all = textsOfThisThread;
    const auto isToGo = [this](const FacadeTexts& kept) {
        const std::shared_ptr<const char> facade = kept.facade.lock();
        return !facade || facade == m_facade;
    };
    all.erase(std::remove_if(all.begin(), all.end(), isToGo), all.end());
}

const ErrorTexts::Texts* ErrorTexts::texts() const noexcept {
    for (const FacadeTexts& kept : textsOfThisThread) {
        if (kept.facade.lock() == m_facade) return &kept.texts;
    }
    return nullptr;
}

} // namespace Core
