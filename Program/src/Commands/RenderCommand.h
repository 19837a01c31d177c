#pragma once

#include "Commands/Command.h"
#include "Render/RenderOptions.h"

namespace Program {

/// `lenscorrect render`: corrects the frames of a clip.
class RenderCommand : public Command {
public:
    std::string name() const override { return "render"; }
    std::string summary() const override { return "Correct the frames of a clip"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    RenderOptionsReader m_options;
};

} // namespace Program
