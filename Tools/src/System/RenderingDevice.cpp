#include "System/RenderingDevice.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "Exception/Exception.h"
#include "Renderer/DistortionRenderer.h"
#include "Renderer/OpenCL/OpenCLKernelHelper.h"
#include "Renderer/ShadingRenderer.h"
#include "Report/Failure.h"
#include "Report/PrintableText.h"

namespace Tools {
namespace {

/// The environment of this process, with one variable replaced or added when a folder is given.
std::vector<std::string> environmentWith(const std::string& cacheFolder) {
    static const std::string name = "POCL_CACHE_DIR=";
    std::vector<std::string> environment;
    for (char** variable = environ; variable && *variable; ++variable) {
        if (cacheFolder.empty() || std::strncmp(*variable, name.c_str(), name.size()) != 0)
            environment.emplace_back(*variable);
    }
    if (!cacheFolder.empty()) environment.push_back(name + cacheFolder);
    return environment;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

std::string readAll(int descriptor) {
    std::string text;
    char buffer[4096];
    for (;;) {
        const ssize_t count = read(descriptor, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return text;
        text.append(buffer, static_cast<std::size_t>(count));
    }
}

/// The last lines of a text, without the line feed at its end.
std::string tail(std::string text, std::size_t lines) {
    text = withoutLastLineFeeds(std::move(text));
    std::size_t begin = text.size();
    for (std::size_t line = 0; line < lines && begin != std::string::npos && begin > 0; ++line) {
        begin = text.rfind('\n', begin - 1);
    }
    return begin == std::string::npos || begin == 0 ? text : text.substr(begin + 1);
}

} // namespace

RenderProbe RenderProbe::run(const std::string& cacheFolder) {
    RenderProbe result;
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        result.reason = fmt::format("the test render could not be started: {}", std::strerror(errno));
        return result;
    }
    std::vector<std::string> arguments = {"lenscorrect", "devices", "--probe"};
    std::vector<std::string> environment = environmentWith(cacheFolder);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    pid_t process = 0;
    const int error = posix_spawn(&process, "/proc/self/exe", &actions, nullptr, pointers(arguments).data(),
                                  pointers(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    const std::string output = error == 0 ? readAll(ends[0]) : std::string();
    close(ends[0]);
    if (error != 0) {
        result.reason = fmt::format("the test render could not be started: {}", std::strerror(error));
        return result;
    }
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    result.isRendering = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (result.isRendering) return result;
    result.reason = WIFSIGNALED(status) ? fmt::format("the driver crashed: {}", strsignal(WTERMSIG(status)))
                                        : fmt::format("the test render ended with status {}", WEXITSTATUS(status));
    const std::string lastLines = tail(output, 4);
    if (!lastLines.empty()) result.reason += "\n" + lastLines;
    return result;
}

void RenderProbe::renderHere() {
    constexpr std::uint32_t width = 67, height = 31;
    std::vector<float> input(width * height * 4u);
    for (std::size_t index = 0; index < input.size(); ++index) input[index] = static_cast<float>(index % 251) / 16.0f;
    std::vector<float> output(input.size());
    const unsigned long bytes = input.size() * sizeof(float);
    const auto check = [&](const char* what) {
        if (output != input) {
            throw Failure(Failure::Kind::Environment,
                          fmt::format("The OpenCL device renders wrong pixels ({}).", what));
        }
    };

    // Distances stay as they are and nothing falls off: both corrections must reproduce the picture.
    Renderer::DistortionRenderer distortion;
    distortion.parameter.currentWidth = distortion.parameter.originalWidth = width;
    distortion.parameter.currentHeight = distortion.parameter.originalHeight = height;
    distortion.parameter.imageRadius = distortion.parameter.frameImageRadius = 15.0f;
    distortion.parameter.a1 = distortion.parameter.b1 = 1.0f;
    distortion.render(input.data(), output.data(), bytes);
    // A factor that is off by its last bit moves the sampled place by a few millionths of a pixel.
    for (std::size_t index = 0; index < input.size(); ++index) {
        if (std::abs(output[index] - input[index]) <= 1e-3f) output[index] = input[index];
    }
    check("distortion");

    Renderer::ShadingRenderer shading;
    shading.parameter.currentWidth = shading.parameter.originalWidth = width;
    shading.parameter.currentHeight = shading.parameter.originalHeight = height;
    shading.parameter.imageRadius = 15.0f;
    shading.parameter.a0 = 100.0f;
    shading.parameter.gamma = 1.0f;
    shading.render(input.data(), output.data(), bytes);
    check("shading");
}

RenderingDevice::RenderingDevice(const std::string& name) {
    if (!name.empty()) ::setenv(Renderer::OpenCLKernelHelper::deviceVariable, name.c_str(), 1);
}

void RenderingDevice::check() const {
    try {
        Renderer::OpenCLKernelHelper::idOfMostPowerfulDevice();
    } catch (const Exception& exception) {
        const char* const wanted = std::getenv(Renderer::OpenCLKernelHelper::deviceVariable);
        const char* const advice =
            wanted && *wanted ? "" : " Install a driver (without a GPU: apt-get install pocl-opencl-icd);";
        throw Failure(Failure::Kind::Environment,
                      fmt::format("There is no OpenCL device to render on: {}{} \"lenscorrect devices\" lists what is "
                                  "installed.",
                                  exception.what(), advice));
    }
}

} // namespace Tools
