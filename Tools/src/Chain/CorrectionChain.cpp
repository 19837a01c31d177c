#include "Chain/CorrectionChain.h"

#include <cstring>
#include <exception>
#include <memory>
#include <string_view>

#include "Chain/InputSpace.h"
#include "Chain/PlaneTransfer.h"
#include "Chain/ShadedChannels.h"
#include "DataSource.h"
#include "DataSourceHelper.h"
#include "Exception/Exception.h"
#include "LensCorrection.h"
#include "Report/Failure.h"
#include "System/Interruption.h"

namespace Tools {
namespace {

using DD::Image::Op;

constexpr const char* distortionClass = "OrvexLensDistortionCorrection";
constexpr const char* shadingClass = "OrvexLensShadingCorrection";

Steps stepsOf(const ChainSettings& settings) {
    if (settings.shading == ChainSettings::Shading::None) return Steps::Distortion;
    if (settings.distortion == ChainSettings::Distortion::None) return Steps::Shading;
    return settings.shading == ChainSettings::Shading::Remove ? Steps::ShadingThenDistortion
                                                              : Steps::DistortionThenShading;
}

/// A node's own answers before the node is validated: for a frame as large as the format, without overscan, and the
/// corrections that the settings want. The node's reader must be valid.
class NodeFrameSource : public DataSource {
public:
    /// `format` is read whenever the core asks; it and the settings outlive this object.
    NodeFrameSource(LensCorrection* node, const ChainSettings& settings, const PixelSize& format)
        : DataSource(node), m_settings(settings), m_format(format) {}

    bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter& parameter) const override {
        parameter.addShading = m_settings.shading == ChainSettings::Shading::Add;
        parameter.renderMap = m_settings.renderMap;
        return m_settings.shading != ChainSettings::Shading::None;
    }

    bool shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter& parameter) const override {
        parameter.distort = m_settings.distortion == ChainSettings::Distortion::Distort;
        parameter.renderMap = m_settings.renderMap;
        return m_settings.distortion != ChainSettings::Distortion::None;
    }

    bool frameData(Core::FrameData& frameData) const override {
        unsigned int frameNumber = 0;
        std::string timecode;
        if (!DataSourceHelper::frameNumberAndTimecode(m_op, frameNumber, timecode)) return false;
        frameData = {};
        if (timecode.length() >= sizeof frameData.timecode) return false;
        frameData.frameNumber = frameNumber;
        std::memcpy(frameData.timecode, timecode.c_str(), timecode.length() + 1);
        frameData.width = m_format.width;
        frameData.height = m_format.height;
        return true;
    }

private:
    const ChainSettings& m_settings;
    const PixelSize& m_format;
};

Failure failure(const std::string& brief, const std::string& details = {}) {
    return Failure(Failure::Kind::Correction, brief, details);
}

} // namespace

CorrectionChain::CorrectionChain(const ChainSettings& settings, unsigned int threads, const InputSpace* space)
    : m_settings(settings),
      m_threads(threads),
      m_space(space),
      m_imageRead(m_graph.createRead()),
      m_plateRead(settings.hasPlate ? m_graph.createRead() : m_imageRead),
      m_end(m_imageRead) {
    const bool isDistortionInverse = settings.distortion == ChainSettings::Distortion::Distort;
    const bool isShadingInverse = settings.shading == ChainSettings::Shading::Add;
    if (settings.shading != ChainSettings::Shading::None) m_shading = makeNode(shadingClass, isShadingInverse);
    if (settings.distortion != ChainSettings::Distortion::None)
        m_distortion = makeNode(distortionClass, isDistortionInverse);
    if (m_shading && !settings.renderMap)
        m_shadedChannels = dynamic_cast<ShadedChannels*>(m_graph.create(ShadedChannels::description.name));
    wire(stepsOf(settings));
    m_preparation = std::make_unique<Core::FramePreparation>(
        std::make_unique<NodeFrameSource>(m_nodes.back(), m_settings, m_format));
}

CorrectionChain::~CorrectionChain() = default;

LensCorrection* CorrectionChain::makeNode(const char* className, bool isInverse) {
    Op* const node = m_graph.create(className);
    m_graph.connect(node, LensCorrection::imageInputIndex(), m_imageRead);
    m_graph.connect(node, LensCorrection::metadataInputIndex(), m_plateRead);
    m_graph.userChange(node, "correctionMode", isInverse ? 1.0 : 0.0);
    m_graph.userChange(node, "outputType", m_settings.renderMap ? 1.0 : 0.0);
    if (m_settings.correctionFile) m_graph.userChange(node, "correctionFile::path", *m_settings.correctionFile);
    return dynamic_cast<LensCorrection*>(node);
}

void CorrectionChain::wire(Steps steps) {
    // The lens shades the distorted picture: its shading goes before its distortion and comes back after it.
    std::vector<LensCorrection*> nodes;
    if (steps == Steps::Shading || steps == Steps::ShadingThenDistortion) nodes.push_back(m_shading);
    if (steps != Steps::Shading) nodes.push_back(m_distortion);
    if (steps == Steps::DistortionThenShading) nodes.push_back(m_shading);
    if (nodes == m_nodes) return;
    m_nodes = nodes;
    m_end = m_imageRead;
    for (LensCorrection* const node : m_nodes) {
        DD::Image::Iop* const image = m_end;
        m_graph.connect(node, LensCorrection::imageInputIndex(), image);
        m_end = node;
        if (node != m_shading || !m_shadedChannels) continue;
        m_graph.connect(m_shadedChannels, 0, node);
        m_graph.connect(m_shadedChannels, 1, image);
        m_end = m_shadedChannels;
    }
}

/// The controls that the node computes with need its inputs: they are set once the first frame is there.
void CorrectionChain::setControls(Op* node) {
    if (m_settings.overscan) {
        m_graph.userChange(node, "inputOverscan::location", static_cast<double>(LensCorrection::Format));
        m_graph.userChange(node, "inputOverscan::amount", static_cast<double>(*m_settings.overscan));
    }
    if (!m_settings.imageArea) return;
    m_graph.userChange(node, "recordingFormat::manualSelection", 1.0);
    m_graph.userChange(node, "recordingFormat::imageAreaSize::width", static_cast<double>(m_settings.imageArea->width));
    m_graph.userChange(node, "recordingFormat::imageAreaSize::height",
                       static_cast<double>(m_settings.imageArea->height));
    m_graph.userChange(node, "recordingFormat::clipResolution::width", m_settings.clipResolution->width);
    m_graph.userChange(node, "recordingFormat::clipResolution::height", m_settings.clipResolution->height);
    // The image diameter follows from them in the open panel only.
    m_graph.openPanel(node);
    m_graph.closePanel(node);
}

void CorrectionChain::setImage(std::optional<DD::Image::Box> box) {
    const auto source = std::make_shared<ClipSource>(
        *m_image.frame, m_part, *m_image.metadata, m_image.range,
        ClipSource::Settings{.threads = m_threads,
                             .isMap = m_settings.renderMap,
                             .space = m_space,
                             .isDataPart = ShadingLayers::isDataPart(*m_image.frame, m_part),
                             .box = box});
    m_channels = source->channels();
    m_imageRead->setSource(source);
    m_imageRead->setFilename(m_image.path);
    if (!m_shadedChannels) return;
    const std::vector<bool> isShaded = m_settings.shadingLayers.shadedChannels(*m_image.frame, m_part);
    DD::Image::ChannelSet shaded, unshaded;
    for (std::size_t i = 0; i < m_channels.size(); ++i) {
        // The node leaves alpha as it is: fetching it apart would cost a copy of every picture.
        const bool isAlpha = std::string_view(DD::Image::getName(m_channels[i])).ends_with(".alpha");
        if (isShaded[i] || !isAlpha) (isShaded[i] ? shaded : unshaded) += m_channels[i];
    }
    m_shadedChannels->setChannels(shaded, unshaded);
}

void CorrectionChain::setFrame(std::int32_t frame, const ClipFrame& image, std::size_t part, const ClipFrame& plate) {
    m_image = image;
    m_part = part;
    setImage(std::nullopt);
    if (m_settings.hasPlate) {
        m_plateRead->setSource(
            std::make_shared<ClipSource>(*plate.frame, 0, *plate.metadata, plate.range, ClipSource::Settings{}));
        m_plateRead->setFilename(plate.path);
    }
    m_graph.setFrame(frame);
    if (m_hasControls) return;
    for (LensCorrection* const node : {m_shading, m_distortion})
        if (node) setControls(node);
    m_hasControls = true;
}

PictureShape CorrectionChain::shape() const {
    const Image::Part& part = m_image.frame->parts.at(m_part);
    return {{static_cast<std::uint32_t>(part.displayWindow.width()),
             static_cast<std::uint32_t>(part.displayWindow.height())},
            hostBox(part.dataWindow, part.displayWindow),
            m_settings.overscan};
}

Core::FramePreparation& CorrectionChain::preparation() {
    m_format = shape().format;
    return *m_preparation;
}

FramePlan CorrectionChain::plan() {
    const PictureShape picture = shape();
    // Frame numbers count from the reader's first frame.
    if (!m_graph.validate(m_plateRead)) throw failure(m_graph.errorText(m_plateRead));
    try {
        return planFrame(picture, stepsOf(m_settings), preparation());
    } catch (const Exception& exception) {
        throw failure(exception.what(), exception.detailedDescription());
    }
}

FramePlan CorrectionChain::validate() {
    std::optional<FramePlan> planned;
    std::exception_ptr reason;
    try {
        planned = plan();
        setImage(planned->shown);
        wire(planned->steps);
    } catch (const std::exception&) {
        // The nodes meet the same, and tell it as they do in a host.
        reason = std::current_exception();
    }
    if (planned && !planned->isAccepted) throw failure(shapeRefusal(*planned, shape()));
    if (!m_graph.validate(m_end)) fail();
    if (reason) std::rethrow_exception(reason);
    planned->box = m_nodes.back()->info().box();
    return *planned;
}

void CorrectionChain::render(const Store& store) {
    if (m_settings.renderMap) {
        DD::Image::ImagePlane map(m_nodes.back()->info().box(), true, DD::Image::Mask_RGBA);
        fetch(map);
        store(map, {DD::Image::Chan_Alpha, DD::Image::Chan_Blue, DD::Image::Chan_Green, DD::Image::Chan_Red});
        return;
    }
    std::vector<DD::Image::ImagePlane> planes = m_graph.planes(m_end);
    for (DD::Image::ImagePlane& plane : planes) {
        fetch(plane);
        if (m_space && m_space->isConverting()) {
            plane.makeUnique();
            m_space->fromSceneLinear(plane, m_threads, ShadingLayers::isDataPart(*m_image.frame, m_part));
        }
        store(plane, m_channels);
        plane = DD::Image::ImagePlane(); // one layer's floats at a time
    }
}

void CorrectionChain::fetch(DD::Image::ImagePlane& plane) {
    const bool isRendered = m_graph.fetch(m_end, plane);
    Interruption::takeBack();
    if (!isRendered) fail();
}

void CorrectionChain::fail() const {
    const std::string brief = m_graph.errorText(m_end);
    std::string details;
    for (const LensCorrection* const node : m_nodes) {
        details = node->lastErrorDetails();
        if (node->hasError()) break;
    }
    throw failure(brief.empty() ? "The frame could not be corrected." : brief, details);
}

} // namespace Tools
