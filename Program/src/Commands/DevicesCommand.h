#pragma once

#include "Commands/Command.h"

namespace Program {

/// `devices`: the OpenCL devices, which one renders and why, and whether it does.
class DevicesCommand : public Command {
public:
    std::string name() const override { return "devices"; }
    std::string summary() const override { return "List the OpenCL devices and test the one that will render"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    bool m_asJson = false;
    bool m_isProbe = false; ///< this process is the test
};

} // namespace Program
