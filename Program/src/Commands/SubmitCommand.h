#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Commands/Command.h"
#include "Farm/FarmJob.h"
#include "Render/RenderOptions.h"

namespace Program {

/// `submit`: hands what `render` would do to a render farm. Takes the options of `render` and some of its own.
class SubmitCommand : public Command {
public:
    std::string name() const override { return "submit"; }
    std::string summary() const override { return "Render a clip on a farm"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    FarmJob makeJob() const;
    std::string newFolder() const;

    RenderOptionsReader m_render;
    CLI::App* m_app = nullptr;
    std::string m_engine = "slurm";
    std::string m_name;
    std::string m_folder;
    std::string m_program;
    std::string m_show;
    std::string m_shot;
    std::vector<std::string> m_engineOptions;
    unsigned int m_framesPerChunk = 10;
    unsigned int m_cores = 0;
    unsigned int m_tasksAtOnce = 0;
    bool m_wait = false;
};

} // namespace Program
