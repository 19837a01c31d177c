#pragma once

#include <memory>
#include <string>

#include "Core/Core.h"
#include "Core/FakeCoreDataSource.h"
#include "Core/Image.h"
#include "Support/JsonRecord.h"

namespace Support {

/// A facade with a small frame whose OpenCL calls may fail.
struct FaultyFacade {
    static constexpr std::uint32_t width = 64;
    static constexpr std::uint32_t height = 34; // of 4096 × 2160

    HostFrame host;
    Core::Core core{std::make_unique<FakeCoreDataSource>(host)};
    Image input = noise(width, height, 1);
    Image output;

    FaultyFacade() {
        host.frameMetadata = jsonRecord;
        host.frameData = frameOf(width, height);
    }

    bool render() {
        output.assign(input.size(), -1.0f);
        const bool isMap = (host.shading && host.shading->renderMap) || (host.distortion && host.distortion->renderMap);
        return core.render(isMap ? nullptr : input.data(), output.data(), bytes(output));
    }

    std::string brief() const { return briefErrorOf(core); }
    std::string detailed() const { return detailedErrorOf(core); }
};

} // namespace Support
