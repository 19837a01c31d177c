#include "Render/CorrectionChain.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include "LensCorrection.h"
#include "Output/Interruption.h"
#include "Render/InputSpace.h"
#include "Render/ShadedChannels.h"

namespace Host {
namespace {

using DD::Image::Op;

constexpr const char* distortionClass = "OrvexLensDistortionCorrection";
constexpr const char* shadingClass = "OrvexLensShadingCorrection";

} // namespace

CorrectionError::CorrectionError(const std::string& brief, const std::string& details)
    : std::runtime_error(brief), m_details(details) {}

CorrectionError::~CorrectionError() = default;

CorrectionChain::CorrectionChain(const RenderOptions& options, unsigned int threads, const InputSpace* space)
    : m_options(options),
      m_threads(threads),
      m_space(space),
      m_imageRead(m_graph.createRead()),
      m_plateRead(options.plate ? m_graph.createRead() : m_imageRead),
      m_end(m_imageRead) {
    const bool isDistortionInverse = options.distortion == RenderOptions::Distortion::Distort;
    const bool isShadingInverse = options.shading == RenderOptions::Shading::Add;
    // The lens shades the distorted picture: its shading goes before its distortion and comes back after it.
    if (options.shading == RenderOptions::Shading::Remove) addNode(shadingClass, isShadingInverse);
    if (options.distortion != RenderOptions::Distortion::None) addNode(distortionClass, isDistortionInverse);
    if (options.shading == RenderOptions::Shading::Add) addNode(shadingClass, isShadingInverse);
}

CorrectionChain::~CorrectionChain() = default;

void CorrectionChain::addNode(const char* className, bool isInverse) {
    Op* const node = m_graph.create(className);
    Op* const image = m_end;
    m_graph.connect(node, LensCorrection::imageInputIndex(), image);
    m_graph.connect(node, LensCorrection::metadataInputIndex(), m_plateRead);
    m_graph.userChange(node, "correctionMode", isInverse ? 1.0 : 0.0);
    m_graph.userChange(node, "outputType", m_options.renderMap ? 1.0 : 0.0);
    if (m_options.correctionFile) m_graph.userChange(node, "correctionFile::path", *m_options.correctionFile);
    m_nodes.push_back(dynamic_cast<LensCorrection*>(node));
    m_end = m_nodes.back();
    if (std::string(className) != shadingClass || m_options.renderMap) return;
    m_shadedChannels = dynamic_cast<ShadedChannels*>(m_graph.create(ShadedChannels::description.name));
    m_graph.connect(m_shadedChannels, 0, node);
    m_graph.connect(m_shadedChannels, 1, image);
    m_end = m_shadedChannels;
}

/// The controls that the node computes with need its inputs: they are set once the first frame is there.
void CorrectionChain::setControls(Op* node) {
    if (m_options.overscan) {
        m_graph.userChange(node, "inputOverscan::location", static_cast<double>(LensCorrection::Format));
        m_graph.userChange(node, "inputOverscan::amount", static_cast<double>(*m_options.overscan));
    }
    if (!m_options.imageArea) return;
    m_graph.userChange(node, "recordingFormat::manualSelection", 1.0);
    m_graph.userChange(node, "recordingFormat::imageAreaSize::width", static_cast<double>(m_options.imageArea->width));
    m_graph.userChange(node, "recordingFormat::imageAreaSize::height",
                       static_cast<double>(m_options.imageArea->height));
    m_graph.userChange(node, "recordingFormat::clipResolution::width", m_options.clipResolution->width);
    m_graph.userChange(node, "recordingFormat::clipResolution::height", m_options.clipResolution->height);
    // The image diameter follows from them in the open panel only.
    m_graph.openPanel(node);
    m_graph.closePanel(node);
}

void CorrectionChain::setImage(int border) {
    const auto source = std::make_shared<ClipSource>(
        *m_image.frame, m_part, *m_image.metadata, m_image.range,
        ClipSource::Settings{.threads = m_threads, .isMap = m_options.renderMap, .space = m_space, .border = border});
    m_channels = source->channels();
    m_imageRead->setSource(source);
    m_imageRead->setFilename(m_image.path);
    if (!m_shadedChannels) return;
    const std::vector<bool> isShaded = m_options.shadingLayers.shadedChannels(*m_image.frame, m_part);
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
    setImage(0);
    if (m_options.plate) {
        m_plateRead->setSource(
            std::make_shared<ClipSource>(*plate.frame, 0, *plate.metadata, plate.range, ClipSource::Settings{}));
        m_plateRead->setFilename(plate.path);
    }
    m_graph.setFrame(frame);
    if (m_hasControls) return;
    for (LensCorrection* const node : m_nodes) setControls(node);
    m_hasControls = true;
}

/// Whether the core would take the boxes that the nodes have now as the frame to render.
bool CorrectionChain::isBoxAccepted() const {
    return std::all_of(m_nodes.begin(), m_nodes.end(),
                       [](LensCorrection* node) { return node->isOutputBoxAccepted(); });
}

DD::Image::Box CorrectionChain::validate() {
    constexpr int widestBorder = 16;
    for (int border = 0;; ++border) {
        if (!m_graph.validate(m_end)) fail();
        if (border == widestBorder || isBoxAccepted()) return m_nodes.back()->info().box();
        setImage(border + 1);
    }
}

void CorrectionChain::render(const Store& store) {
    if (m_options.renderMap) {
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
            m_space->fromSceneLinear(plane, m_threads);
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
    throw CorrectionError(brief.empty() ? "The frame could not be corrected." : brief, details);
}

} // namespace Host
