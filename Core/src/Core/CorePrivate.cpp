#include "Core/CorePrivate.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sstream>
#include <utility>

#include "CorrectionData/ContainerManager/ContainerManager.h"
#include "CorrectionData/ContainerManager/CorrectionFileBasedContainerManagerDataSource.h"
#include "Exception/Assert.h"
#include "Exception/DetailLines.h"
#include "Exception/Exception.h"
#include "Renderer/DistortionRenderer.h"
#include "Renderer/ShadingRenderer.h"
#include "Timecode/Timecode.h"

namespace Core {

namespace {

using RecordingFormatDatabase::RecordingFormat;

constexpr std::size_t textCapacity = 4096;
constexpr std::uint32_t cachedCorrectionFiles = 100;
constexpr float unsignedLimit = 4294967296.0f;

// The process-wide objects are made on first use and never destroyed: a host thread may still render while static
// objects are torn down.

struct SharedRenderers {
    std::mutex rendererAccessLock;
    std::unique_ptr<Renderer::ShadingRenderer> shading;
    std::unique_ptr<Renderer::DistortionRenderer> distortion;
};

SharedRenderers& sharedRenderers() {
    static auto* const renderers = new SharedRenderers;
    return *renderers;
}

std::mutex& containerManagerLock() {
    static auto* const lock = new std::mutex;
    return *lock;
}

const std::shared_ptr<CorrectionData::ManagedContainerDataSource>& managedContainerDataSource() {
    static const auto* const dataSource = new std::shared_ptr<CorrectionData::ManagedContainerDataSource>(
        std::make_shared<CorrectionData::ContainerManager>(
            std::make_unique<CorrectionData::CorrectionFileBasedContainerManagerDataSource>(
                CorrectionFile::LevelOfDepth{1, 5, 2}),
            cachedCorrectionFiles));
    return *dataSource;
}

/// Asks one of the data source's text questions. An empty text counts as none: nothing can be found by it.
template <typename Question>
bool ask(Question question, std::string& text) {
    char buffer[textCapacity] = {};
    if (!question(buffer, sizeof(buffer))) return false;
    text.assign(buffer, strnlen(buffer, sizeof(buffer)));
    return !text.empty();
}

template <typename Width, typename Height>
std::string size(Width width, Height height, const char* unit) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << width << 'x' << height << ' ' << unit;
    return stream.str();
}

std::string length(float value, const char* unit) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << value << ' ' << unit;
    return stream.str();
}

void checkAspectRatio(const FrameData& frame, const RecordingFormat& format) {
    const float aspectRatio =
        static_cast<float>(format.clipResolutionWidth) / static_cast<float>(format.clipResolutionHeight);
    const float roundedUp = std::ceil(static_cast<float>(frame.width) / aspectRatio);
    // A height that no frame has is only shown, as the largest number.
    const std::uint32_t expectedHeight =
        roundedUp < unsignedLimit ? static_cast<std::uint32_t>(roundedUp) : static_cast<std::uint32_t>(-1);
    const std::uint32_t difference =
        expectedHeight > frame.height ? expectedHeight - frame.height : frame.height - expectedHeight;
    if (difference < 2) return;
    throw Exception(
        "Aspect ratio of the current frame is not as expected. Recommended resolution is " +
            size(frame.width, expectedHeight, "px."),
        DetailLines()
            .number("Current Frame Resolution", size(frame.width, frame.height, "px"))
            .number("Recording Format Resolution", size(format.clipResolutionWidth, format.clipResolutionHeight, "px"))
            .string());
}

/// The image radius in mm that belongs to the rendered frame's half-diagonal.
float renderedImageRadius(const RecordingFormat& format, const FrameData& frame) {
    return format.imageRadius * (1.0f + frame.overscan / 100.0f);
}

void checkImageRadius(float imageRadius, const FrameData& frame) {
    if (std::isfinite(imageRadius)) return;
    throw Exception("There is no valid image radius available for the current frame.",
                    DetailLines()
                        .number("Image Radius", length(imageRadius, "mm"))
                        .number("Overscan", length(frame.overscan, "%"))
                        .string());
}

/// Both blocks begin alike.
template <typename Parameter>
Parameter parameterOf(const FrameData& frame, const RecordingFormat& format, bool renderMap) {
    Parameter parameter;
    parameter.currentWidth = frame.width;
    parameter.currentHeight = frame.height;
    parameter.originalWidth = format.clipResolutionWidth;
    parameter.originalHeight = format.clipResolutionHeight;
    parameter.renderMap = renderMap;
    return parameter;
}

template <typename Parameter>
void setKernelCoefficients(const Polynomial& polynomial, Parameter& parameter) {
    const auto& c = polynomial.coefficients;
    parameter.a0 = c[0];
    parameter.a1 = c[1];
    parameter.a2 = c[2];
    parameter.a3 = c[3];
    parameter.a4 = c[4];
    parameter.a5 = c[5];
    parameter.a6 = c[6];
}

void setFrameCoefficients(const Polynomial& polynomial, Renderer::DistortionParameter& parameter) {
    const auto& c = polynomial.coefficients;
    parameter.b0 = c[0];
    parameter.b1 = c[1];
    parameter.b2 = c[2];
    parameter.b3 = c[3];
    parameter.b4 = c[4];
    parameter.b5 = c[5];
    parameter.b6 = c[6];
}

/// A zero-filled image between the two corrections; calloc leaves it untouched until it is written.
class IntermediateImage {
public:
    explicit IntermediateImage(unsigned long size)
        : m_pixels(static_cast<float*>(std::calloc(size / sizeof(float), sizeof(float)))) {
        if (!m_pixels) throw std::bad_alloc();
    }
    ~IntermediateImage() { std::free(m_pixels); }
    IntermediateImage(const IntermediateImage&) = delete;
    IntermediateImage& operator=(const IntermediateImage&) = delete;

    float* pixels() const { return m_pixels; }

private:
    float* m_pixels;
};

} // namespace

Core::CorePrivate::CorePrivate(std::unique_ptr<CoreDataSource> dataSource) : m_dataSource(std::move(dataSource)) {}

Core::CorePrivate::~CorePrivate() = default;

void Core::CorePrivate::frameSize(unsigned int& width, unsigned int& height) {
    const Preparation wanted = prepareRendererIfNeeded();
    if (wanted.shading && wanted.distortion) {
        throw Exception("It is not possible to calculate the frame size for both shading and distortion correction.");
    }
    if (!wanted.shading && !wanted.distortion) return;

    SharedRenderers& renderers = sharedRenderers();
    const std::lock_guard<std::mutex> lock(renderers.rendererAccessLock);
    if (wanted.shading) {
        renderers.shading->parameter = *wanted.shading;
        renderers.shading->frameSize(width, height);
    } else {
        renderers.distortion->parameter = *wanted.distortion;
        renderers.distortion->frameSize(width, height);
    }
}

void Core::CorePrivate::render(const float* input, float* output, unsigned long size) {
    const Preparation wanted = prepareRendererIfNeeded();
    if (!wanted.shading && !wanted.distortion) return;

    const bool isShadingMap = wanted.shading && wanted.shading->renderMap;
    const bool isDistortionMap = wanted.distortion && wanted.distortion->renderMap;
    // A displacement map takes no image, so it cannot follow a shading correction of any kind.
    if (wanted.shading && isDistortionMap) {
        throw Exception("It is not possible to generate a single map for both shading and distortion correction.");
    }
    if ((isShadingMap || isDistortionMap) && input) {
        throw Exception("Input buffer is required to be set to nullptr whenever map rendering is requested.");
    }
    const auto sizeOf = [](const auto& parameter) {
        return static_cast<std::uint64_t>(parameter.currentWidth) * parameter.currentHeight;
    };
    const std::uint64_t pixels = wanted.shading ? sizeOf(*wanted.shading) : sizeOf(*wanted.distortion);
    if (size / (4 * sizeof(float)) < pixels) {
        throw Exception("Image buffer is smaller than the current frame.",
                        DetailLines().number("Data Size", std::to_string(size) + " bytes").string());
    }

    std::optional<IntermediateImage> intermediate;
    if (wanted.shading && wanted.distortion) intermediate.emplace(size);
    SharedRenderers& renderers = sharedRenderers();
    const std::lock_guard<std::mutex> lock(renderers.rendererAccessLock);
    if (wanted.shading) {
        renderers.shading->parameter = *wanted.shading;
        renderers.shading->render(input, intermediate ? intermediate->pixels() : output, size);
    }
    if (wanted.distortion) {
        renderers.distortion->parameter = *wanted.distortion;
        renderers.distortion->render(intermediate ? intermediate->pixels() : input, output, size);
    }
}

RecordingFormat Core::CorePrivate::recordingFormat() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ExtendedManagedContainer* const container = extendedManagedContainer();
    const std::lock_guard<std::mutex> managerLock(containerManagerLock());
    return container->recordingFormat();
}

Core::CorePrivate::Preparation Core::CorePrivate::prepareRendererIfNeeded() {
    ShadingCorrectionParameter shading;
    DistortionCorrectionParameter distortion;
    bool isShadingWanted = false;
    bool isDistortionWanted = false;
    FrameToCorrect frame;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        isShadingWanted = m_dataSource->shouldPerformShadingCorrection(shading);
        isDistortionWanted = m_dataSource->shouldPerformDistortionCorrection(distortion);
        if (!isShadingWanted && !isDistortionWanted) return {};
        frame = retrieveFrameToCorrect();
    }
    checkAspectRatio(frame.frameData, frame.recordingFormat);

    SharedRenderers& renderers = sharedRenderers();
    const std::lock_guard<std::mutex> lock(renderers.rendererAccessLock);
    // Made one after the other, so that one that failed (no device) is tried again by the next call.
    if (!renderers.shading) renderers.shading = std::make_unique<Renderer::ShadingRenderer>();
    if (!renderers.distortion) renderers.distortion = std::make_unique<Renderer::DistortionRenderer>();

    Preparation preparation;
    if (isShadingWanted) {
        preparation.shading = shadingParameter(shading, frame);
        renderers.shading->parameter = *preparation.shading;
    }
    if (isDistortionWanted) {
        preparation.distortion = distortionParameter(distortion, frame);
        renderers.distortion->parameter = *preparation.distortion;
    }
    return preparation;
}

Core::CorePrivate::FrameToCorrect Core::CorePrivate::retrieveFrameToCorrect() {
    FrameToCorrect frame;
    frame.recordingFormat = retrieveRecordingFormat();
    frame.frameData = retrieveFrameData();
    frame.record = retrieveCorrectionFrameData(frame.frameData);
    return frame;
}

RecordingFormat Core::CorePrivate::retrieveRecordingFormat() {
    // Needed even if the user has chosen a format, so that missing clip data fail here first.
    ExtendedManagedContainer* const extendedContainer = extendedManagedContainer();
    ORVEX_ASSERT(extendedContainer);
    RecordingFormat format;
    if (!m_dataSource->recordingFormat(format)) {
        const std::lock_guard<std::mutex> lock(containerManagerLock());
        format = extendedContainer->recordingFormat();
    }
    if (format.clipResolutionWidth != 0 && format.clipResolutionHeight != 0 && format.imageRadius > 0.0f &&
        std::isfinite(format.imageRadius)) {
        return format;
    }
    throw Exception("There is no valid data available for the recording format.",
                    DetailLines()
                        .number("Image Area Size", size(format.imageAreaWidth, format.imageAreaHeight, "mm"))
                        .number("Clip Resolution", size(format.clipResolutionWidth, format.clipResolutionHeight, "px"))
                        .number("Image Radius", length(format.imageRadius, "mm"))
                        .string());
}

FrameData Core::CorePrivate::retrieveFrameData() const {
    constexpr const char* brief = "There is some frame related data missing.";
    FrameData frameData;
    if (!m_dataSource->frameData(frameData)) throw Exception(brief);
    if (frameData.width == 0 || frameData.height == 0) {
        throw Exception(
            brief,
            DetailLines().number("Current Frame Resolution", size(frameData.width, frameData.height, "px")).string());
    }
    return frameData;
}

CorrectionData::Frame Core::CorePrivate::retrieveCorrectionFrameData(const FrameData& frameData) {
    ExtendedManagedContainer* const container = extendedManagedContainer();
    const std::lock_guard<std::mutex> lock(containerManagerLock());
    CorrectionData::Header header;
    container->headerData(header);

    unsigned int frameNumber = frameData.frameNumber;
    if (frameData.frameRate != 0.0f && frameData.frameRate != header.tcFps) {
        const float converted =
            std::trunc(header.tcFps / frameData.frameRate * static_cast<float>(frameData.frameNumber));
        // Written so that a number that is none fails too.
        if (!(converted >= 0.0f && converted < unsignedLimit)) {
            throw Exception("Frame number could not be converted to the frame rate of the correction data.",
                            DetailLines()
                                .number("Frame Number", frameData.frameNumber)
                                .number("Frame Rate", frameData.frameRate)
                                .number("Frame Rate of the Correction Data", header.tcFps)
                                .string());
        }
        frameNumber = static_cast<unsigned int>(converted);
    }

    CorrectionData::Frame record;
    const std::string timecode(frameData.timecode, strnlen(frameData.timecode, sizeof(frameData.timecode)));
    if (header.tcFps == 0.0f || timecode.empty()) {
        container->frameData(frameNumber, record);
    } else {
        container->frameData(Timecode::Timecode(timecode.c_str(), header.tcFps) + frameNumber, record);
    }
    return record;
}

ExtendedManagedContainer* Core::CorePrivate::extendedManagedContainer() {
    const ContainerSource source = containerSource();
    if (m_container && m_containerSource.kind == source.kind && m_containerSource.first == source.first &&
        m_containerSource.second == source.second) {
        return m_container.get();
    }
    switch (source.kind) {
        case ContainerSource::Kind::CorrectionFile:
            m_container =
                std::make_unique<ExtendedManagedContainer>(source.first, source.second, managedContainerDataSource());
            break;
        case ContainerSource::Kind::FrameMetadata:
            m_container = std::make_unique<ExtendedManagedContainer>(source.first);
            break;
        case ContainerSource::Kind::ClipFile:
        case ContainerSource::Kind::None: // containerSource never answers it
            m_container = std::make_unique<ExtendedManagedContainer>(source.first, managedContainerDataSource());
            break;
    }
    m_containerSource = source;
    return m_container.get();
}

Core::CorePrivate::ContainerSource Core::CorePrivate::containerSource() const {
    const CoreDataSource& source = *m_dataSource;
    std::string correctionFilePath, clipFileName, frameMetadata, clipFilePath;
    const auto pathQuestion = [&](char* text, unsigned long capacity) {
        return source.correctionFilePath(text, capacity);
    };
    const auto nameQuestion = [&](char* text, unsigned long capacity) { return source.clipFileName(text, capacity); };
    const auto metadataQuestion = [&](char* text, unsigned long capacity) {
        return source.frameMetadata(text, capacity);
    };
    const auto clipQuestion = [&](char* text, unsigned long capacity) { return source.clipFilePath(text, capacity); };
    const bool hasCorrectionFilePath = ask(pathQuestion, correctionFilePath);
    const bool hasClipFileName = ask(nameQuestion, clipFileName);
    const bool hasFrameMetadata = ask(metadataQuestion, frameMetadata);
    const bool hasClipFilePath = ask(clipQuestion, clipFilePath);

    if (hasCorrectionFilePath && hasClipFileName) {
        return {ContainerSource::Kind::CorrectionFile, clipFileName, correctionFilePath};
    }
    if (hasFrameMetadata) return {ContainerSource::Kind::FrameMetadata, frameMetadata, ""};
    if (hasClipFilePath) return {ContainerSource::Kind::ClipFile, clipFilePath, ""};

    DetailLines details;
    if (hasCorrectionFilePath) details.text("Correction File Path", correctionFilePath);
    if (hasClipFileName) details.text("Clip File Name", clipFileName);
    throw Exception("There is some clip and correction file related data missing.", details.string());
}

Renderer::ShadingParameter Core::CorePrivate::shadingParameter(const ShadingCorrectionParameter& wanted,
                                                               const FrameToCorrect& frame) {
    auto parameter = parameterOf<Renderer::ShadingParameter>(frame.frameData, frame.recordingFormat, wanted.renderMap);
    parameter.imageRadius = renderedImageRadius(frame.recordingFormat, frame.frameData);
    checkImageRadius(parameter.imageRadius, frame.frameData);
    setKernelCoefficients(m_polynomials.shading(frame.record), parameter);
    parameter.reverse = wanted.addShading ? 1 : 0;
    parameter.gamma = 1.0f;
    return parameter;
}

Renderer::DistortionParameter Core::CorePrivate::distortionParameter(const DistortionCorrectionParameter& wanted,
                                                                     const FrameToCorrect& frame) {
    auto parameter =
        parameterOf<Renderer::DistortionParameter>(frame.frameData, frame.recordingFormat, wanted.renderMap);
    const float imageRadius = renderedImageRadius(frame.recordingFormat, frame.frameData);
    checkImageRadius(imageRadius, frame.frameData);
    const DistortionPolynomials polynomials = m_polynomials.distortion(frame.record);
    const float distortedImageRadius = polynomials.distorted.at(imageRadius);
    checkImageRadius(distortedImageRadius, frame.frameData);
    // Kernel coefficients and image radius belong to the picture that is rendered, the others to the one it comes from.
    setKernelCoefficients(wanted.distort ? polynomials.distorted : polynomials.undistorted, parameter);
    setFrameCoefficients(wanted.distort ? polynomials.undistorted : polynomials.distorted, parameter);
    parameter.imageRadius = wanted.distort ? imageRadius : distortedImageRadius;
    parameter.frameImageRadius = wanted.distort ? distortedImageRadius : imageRadius;
    return parameter;
}

} // namespace Core
