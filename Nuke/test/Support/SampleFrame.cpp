#include "Support/SampleFrame.h"

#include <cstdint>
#include <exception>
#include <memory>

#include "DDImage/Substitute/Graph.h"
#include "Support/CorrectionFile.h"
#include "Support/TestClip.h"

using namespace DD::Image;

std::vector<float> renderSampleFrame(const std::string& pluginFolder, const std::string& className,
                                     const std::string& clipPath, std::string& error) {
    Graph graph;
    graph.addPluginPath(pluginFolder);
    Op* node = nullptr;
    try {
        node = graph.create(className);
    } catch (const std::exception& exception) {
        error = exception.what();
        return {};
    }
    const auto clip = std::make_shared<TestClip>(64, 36);
    clip->metaData.setData("input/frame", std::int64_t{1});
    clip->pixel = [](int x, int y, Channel channel) {
        return static_cast<float>((x * 7 + y * 13 + static_cast<int>(channel) * 5) % 32) / 32.0f;
    };
    Read* const read = graph.createRead();
    read->setFilename(clipPath);
    read->setSource(clip);
    graph.connect(node, 0, read);
    graph.connect(node, 1, read);

    if (!graph.validate(node)) {
        error = graph.errorText(node);
        return {};
    }
    ImagePlane plane = graph.planes(node).front();
    if (!graph.fetch(node, plane)) {
        error = graph.errorText(node);
        return {};
    }
    const Box box = plane.bounds();
    std::vector<float> result;
    for (const int edge : {box.x(), box.y(), box.r(), box.t()}) result.push_back(static_cast<float>(edge));
    result.insert(result.end(), plane.readable(), plane.readable() + plane.usage() / sizeof(float));
    return result;
}

std::string sampleCorrectionFile(const std::string& clipName) {
    CorrectionFile file;
    file.videoFileName = clipName;
    return file.text();
}
