#include "Core/FramePreparation.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>
#include <utility>

#include "Core/AspectRatio.h"
#include "Core/CorrectionPolynomials.h"
#include "CorrectionData/ContainerManager/ContainerManager.h"
#include "CorrectionData/ContainerManager/CorrectionFileBasedContainerManagerDataSource.h"
#include "Exception/Assert.h"
#include "Exception/DetailLines.h"
#include "Exception/Exception.h"
#include "Text/ToString.h"
#include "Timecode/Timecode.h"

namespace Core {

namespace {

using RecordingFormatDatabase::RecordingFormat;

constexpr std::size_t textCapacity = 4096;
constexpr std::uint32_t cachedCorrectionFiles = 100;
constexpr float unsignedLimit = 4294967296.0f;

// The process-wide objects are made on first use and never destroyed: a host thread may still render while static
// objects are torn down.

std::mutex& containerManagerLock() {
    static auto* const lock = new std::mutex;
    return *lock;
}

const std::shared_ptr<CorrectionData::ManagedContainerDataSource>& managedContainerDataSource() {
    static const auto* const dataSource = new std::shared_ptr<CorrectionData::ManagedContainerDataSource>(
        std::make_shared<CorrectionData::ContainerManager>(
            std::make_unique<CorrectionData::CorrectionFileBasedContainerManagerDataSource>(correctionFileSearchDepth),
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
    return Text::toString(width) + 'x' + Text::toString(height) + ' ' + unit;
}

std::string length(float value, const char* unit) { return Text::toString(value) + ' ' + unit; }

void checkAspectRatio(const FrameData& frame, const RecordingFormat& format) {
    const AspectRatio aspectRatio(format);
    if (aspectRatio.isThatOf(frame.width, frame.height)) return;
    throw Exception(
        "Aspect ratio of the current frame is not as expected. Recommended resolution is " +
            size(frame.width, aspectRatio.expectedHeight(frame.width), "px."),
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

Renderer::ShadingParameter shadingParameter(const ShadingCorrectionParameter& wanted, const FrameToCorrect& frame) {
    auto parameter = parameterOf<Renderer::ShadingParameter>(frame.frameData, frame.recordingFormat, wanted.renderMap);
    parameter.imageRadius = renderedImageRadius(frame.recordingFormat, frame.frameData);
    checkImageRadius(parameter.imageRadius, frame.frameData);
    setKernelCoefficients(shadingPolynomial(frame.record), parameter);
    parameter.reverse = wanted.addShading ? 1 : 0;
    parameter.gamma = 1.0f;
    return parameter;
}

Renderer::DistortionParameter distortionParameter(const DistortionCorrectionParameter& wanted,
                                                  const FrameToCorrect& frame) {
    auto parameter =
        parameterOf<Renderer::DistortionParameter>(frame.frameData, frame.recordingFormat, wanted.renderMap);
    const float imageRadius = renderedImageRadius(frame.recordingFormat, frame.frameData);
    checkImageRadius(imageRadius, frame.frameData);
    const DistortionPolynomials polynomials = distortionPolynomials(frame.record);
    const float distortedImageRadius = polynomials.distorted.at(imageRadius);
    checkImageRadius(distortedImageRadius, frame.frameData);
    // Kernel coefficients and image radius belong to the picture that is rendered, the others to the one it comes from.
    setKernelCoefficients(wanted.distort ? polynomials.distorted : polynomials.undistorted, parameter);
    setFrameCoefficients(wanted.distort ? polynomials.undistorted : polynomials.distorted, parameter);
    parameter.imageRadius = wanted.distort ? imageRadius : distortedImageRadius;
    parameter.frameImageRadius = wanted.distort ? distortedImageRadius : imageRadius;
    return parameter;
}

/// What the data source says about clip and correction file, of which one chooses the container.
ContainerSource chosenSource(const CoreDataSource& source) {
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

    if (hasCorrectionFilePath && hasClipFileName)
        return SelectedCorrectionFile{std::move(clipFileName), std::move(correctionFilePath)};
    if (hasFrameMetadata) return FrameMetadata{std::move(frameMetadata)};
    if (hasClipFilePath) return ClipFile{std::move(clipFilePath)};

    DetailLines details;
    if (hasCorrectionFilePath) details.text("Correction File Path", correctionFilePath);
    if (hasClipFileName) details.text("Clip File Name", clipFileName);
    throw Exception("There is some clip and correction file related data missing.", details.string());
}

/// Held while a container may reach correction files. A frame's own record never waits for another's search.
std::unique_lock<std::mutex> lockForFilesIfNeeded(const ContainerSource& source) {
    if (std::holds_alternative<FrameMetadata>(source)) return {};
    return std::unique_lock<std::mutex>(containerManagerLock());
}

struct ContainerMaker {
    std::shared_ptr<ExtendedManagedContainer> operator()(const SelectedCorrectionFile& source) const {
        return std::make_shared<ExtendedManagedContainer>(source.clipFileName, source.correctionFilePath,
                                                          managedContainerDataSource());
    }
    std::shared_ptr<ExtendedManagedContainer> operator()(const FrameMetadata& source) const {
        return std::make_shared<ExtendedManagedContainer>(source.json);
    }
    std::shared_ptr<ExtendedManagedContainer> operator()(const ClipFile& source) const {
        return std::make_shared<ExtendedManagedContainer>(source.path, managedContainerDataSource());
    }
};

} // namespace

FramePreparation::FramePreparation(std::unique_ptr<CoreDataSource> dataSource) : m_dataSource(std::move(dataSource)) {}

FramePreparation::~FramePreparation() = default;

RecordingFormat FramePreparation::recordingFormat() {
    const ContainerSource source = chosenSource(*m_dataSource);
    const auto container = extendedManagedContainer(source);
    const auto lock = lockForFilesIfNeeded(source);
    return container->recordingFormat();
}

std::optional<FrameToCorrect> FramePreparation::retrieveFrameToCorrect() {
    FrameToCorrect frame;
    ShadingCorrectionParameter shading;
    DistortionCorrectionParameter distortion;
    if (m_dataSource->shouldPerformShadingCorrection(shading)) frame.wantedShading = shading;
    if (m_dataSource->shouldPerformDistortionCorrection(distortion)) frame.wantedDistortion = distortion;
    if (!frame.wantedShading && !frame.wantedDistortion) return std::nullopt;
    frame.source = chosenSource(*m_dataSource);
    const FrameAnswers answers = frameAnswers();

    const auto container = extendedManagedContainer(frame.source);
    retrieveRecordingFormat(container, answers, frame);
    frame.frameData = retrieveFrameData(answers);
    retrieveCorrectionFrameData(*container, frame);
    checkAspectRatio(frame.frameData, frame.recordingFormat);
    return frame;
}

FrameParameters FramePreparation::parameters(const FrameToCorrect& frame) const {
    FrameParameters parameters;
    if (frame.wantedShading) parameters.shading = shadingParameter(*frame.wantedShading, frame);
    if (frame.wantedDistortion) parameters.distortion = distortionParameter(*frame.wantedDistortion, frame);
    return parameters;
}

FramePreparation::FrameAnswers FramePreparation::frameAnswers() const {
    FrameAnswers answers;
    RecordingFormat format;
    if (m_dataSource->recordingFormat(format)) answers.recordingFormat = format;
    try {
        FrameData data;
        if (m_dataSource->frameData(data)) answers.frameData = data;
    } catch (...) {
        // Told when its turn comes: what is wrong with the recording format comes first.
        answers.failureOfFrameData = std::current_exception();
    }
    return answers;
}

void FramePreparation::retrieveRecordingFormat(const std::shared_ptr<ExtendedManagedContainer>& extendedContainer,
                                               const FrameAnswers& answers, FrameToCorrect& frame) {
    // Needed even if the user has chosen a format, so that missing clip data fail first.
    ORVEX_ASSERT(extendedContainer);
    RecordingFormat& format = frame.recordingFormat;
    if (answers.recordingFormat) {
        format = *answers.recordingFormat;
        frame.recordingFormatOrigin.kind = RecordingFormatOrigin::Kind::User;
    } else {
        const auto lock = lockForFilesIfNeeded(frame.source);
        format = extendedContainer->recordingFormat();
        frame.recordingFormatOrigin = extendedContainer->recordingFormatOrigin();
    }
    if (format.clipResolutionWidth != 0 && format.clipResolutionHeight != 0 && format.imageRadius > 0.0f &&
        std::isfinite(format.imageRadius)) {
        return;
    }
    throw Exception("There is no valid data available for the recording format.",
                    DetailLines()
                        .number("Image Area Size", size(format.imageAreaWidth, format.imageAreaHeight, "mm"))
                        .number("Clip Resolution", size(format.clipResolutionWidth, format.clipResolutionHeight, "px"))
                        .number("Image Radius", length(format.imageRadius, "mm"))
                        .string());
}

FrameData FramePreparation::retrieveFrameData(const FrameAnswers& answers) {
    constexpr const char* brief = "There is some frame related data missing.";
    if (answers.failureOfFrameData) std::rethrow_exception(answers.failureOfFrameData);
    if (!answers.frameData) throw Exception(brief);
    const FrameData& frameData = *answers.frameData;
    if (frameData.width == 0 || frameData.height == 0) {
        throw Exception(
            brief,
            DetailLines().number("Current Frame Resolution", size(frameData.width, frameData.height, "px")).string());
    }
    return frameData;
}

void FramePreparation::retrieveCorrectionFrameData(ExtendedManagedContainer& container, FrameToCorrect& frame) {
    const FrameData& frameData = frame.frameData;
    const auto lock = lockForFilesIfNeeded(frame.source);
    CorrectionData::Header header;
    container.headerData(header);

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

    const std::string timecode(frameData.timecode, strnlen(frameData.timecode, sizeof(frameData.timecode)));
    if (header.tcFps == 0.0f || timecode.empty()) {
        frame.key = RecordKey::FrameNumber;
        frame.keyText = std::to_string(frameNumber);
        container.frameData(frameNumber, frame.record);
    } else {
        const Timecode::Timecode wanted = Timecode::Timecode(timecode.c_str(), header.tcFps) + frameNumber;
        frame.key = RecordKey::Timecode;
        frame.keyText = wanted.string(false);
        container.frameData(wanted, frame.record);
    }
    if (std::holds_alternative<FrameMetadata>(frame.source)) frame.key = RecordKey::OwnRecord;
}

std::shared_ptr<ExtendedManagedContainer> FramePreparation::extendedManagedContainer(const ContainerSource& source) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_container || !(m_containerSource == source)) {
        ContainerSource newSource = source;
        m_container = std::visit(ContainerMaker(), source);
        // Nothing fails between the two, or the next frame could get this clip's data for another's.
        m_containerSource = std::move(newSource);
    }
    return m_container;
}

} // namespace Core
