#pragma once

#include "Commands/Command.h"

namespace Program {

/// `formats`: the built-in recording format table.
class FormatsCommand : public Command {
public:
    std::string name() const override { return "formats"; }
    std::string summary() const override { return "List the built-in camera recording formats"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    std::string m_maker; ///< empty: all makers
    std::string m_model; ///< empty: all models of the maker
    bool m_asJson = false;
};

} // namespace Program
