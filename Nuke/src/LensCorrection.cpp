#include "LensCorrection.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>
#include <vector>

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include "DDImage/Hash.h"
#include "DDImage/ImagePlane.h"
#include "DDImage/Knob.h"
#include "DDImage/OutputContext.h"
#include "DDImage/RequestOutput.h"
#include "FrameSizing.h"
#include "PackedPlane.h"
#include "Rounding.h"

using DD::Image::Box;
using DD::Image::Knob;

namespace {

constexpr unsigned long c_briefDescriptionCapacity = 4096;
constexpr unsigned long c_detailedDescriptionCapacity = 16384;

const char* const c_inputOverscanLocationEntries[] = {"Bounding Box", "Format", nullptr};

const char* const c_inputOverscanLocationTooltip =
    "Select the location of the overscan which is present in the input image.\n\n"
    "Choose <b>Bounding Box</b> if the overscan area is represented by the BBox of the input image.\n\n"
    "Choose <b>Format</b> if the overscan area is present in the format of the input image.";

const char* const c_inputOverscanAmountTooltip =
    "Set the amount of the overscan.\n\n"
    "Both the width and height of the remaining resolution will be automatically updated.\n\n"
    "<b>Please note</b> that the remaining resolution will be calculated as follows:\n"
    "  Remaining_Width = Format_Width / (1 + Overscan_Amount / 100)\n"
    "  Remaining_Height = Format_Height / (1 + Overscan_Amount / 100)";

const char* const c_remainingWidthTooltip =
    "Set the width of the remaining resolution without overscan.\n\n"
    "The corresponding height will be automatically updated to retain the aspect ratio of the recording format.";

const char* const c_remainingHeightTooltip =
    "Set the height of the remaining resolution without overscan.\n\n"
    "The corresponding width will be automatically updated to retain the aspect ratio of the recording format.";

const char* const c_correctionFilePathTooltip =
    "Select the path of the ORVEX lens correction file manually if the plug-in is not able to find it automatically by "
    "itself.\n\n"
    "<b>General Information</b>\n"
    "In order to get access to the metadata stored in the ORVEX lens correction file with the extension <b>olcf</b>, "
    "the plug-in needs to know the location of the file. The plug-in is capable of finding the location of the file "
    "automatically by itself, but only if it is stored at one of the expected locations. If the file is stored at "
    "another location, the user needs to manually select the correction file to provide its location to the "
    "plug-in.\n\n"
    "For the plug-in to automatically find the location, the correction file is expected to be at one of the following "
    "locations:\n\n"
    "1. File is located directly in the same directory as the video file.\n"
    "2. File is located in one of the subdirectories contained in the same directory as the video file. Please note "
    "that the subdirectory depth for this case is limited to one.\n"
    "3. File is located directly in one of the parent directories. Please note that the number of parent directories "
    "is limited to five.\n"
    "4. File is located in one of the subdirectories contained in one of the parent directories. Please note that the "
    "subdirectory depth for this case is limited to two.";

const char* const c_manualSelectionTooltip =
    "The plug-in provides information about the sub-area of the sensor covered by the recording format, along with its "
    "size and resolution. This information is stored in the ORVEX lens correction file and usually only displayed to "
    "the user.\n\n"
    "If the recording format information is missing, however, you will be asked to provide the information by "
    "yourself. To do that, please set the checkmark for manual selection of the format and fill in the required data.";

// The diagonal of 36 × 24 mm.
constexpr double c_maximumImageDiameter = 43.26661682128906;

/// Microseconds since 1970-01-01 00:00 local time. Two calls never get the same value, even within one microsecond or
/// while clocks are put back.
std::int64_t uniqueLocalTime() {
    static std::atomic<std::int64_t> lastTime(0);
    const boost::posix_time::ptime epoch(boost::gregorian::date(1970, 1, 1));
    const std::int64_t now = (boost::posix_time::microsec_clock::local_time() - epoch).total_microseconds();
    std::int64_t last = lastTime.load();
    std::int64_t time = 0;
    do {
        time = std::max(now, last + 1);
    } while (!lastTime.compare_exchange_weak(last, time));
    return time;
}

} // namespace

LensCorrection::LensCorrection(DD::Image::Node* node, std::unique_ptr<Core::CoreDataSource> dataSource,
                               const std::string& logFilePath)
    : DD::Image::PlanarIop(node), m_core(std::move(dataSource)), m_logger(logFilePath) {
    inputs(2);
}

LensCorrection::~LensCorrection() = default;

DD::Image::Iop* LensCorrection::imageInput() const { return input(imageInputIndex()); }

DD::Image::Op* LensCorrection::metadataInput() const { return Op::input(metadataInputIndex()); }

bool LensCorrection::isImageInputConnected() const {
    const DD::Image::Op* const op = Op::input(imageInputIndex());
    return op && op != default_input(imageInputIndex());
}

bool LensCorrection::isMetadataInputConnected() const {
    const DD::Image::Op* const op = metadataInput();
    return op && op != default_input(metadataInputIndex());
}

std::string LensCorrection::correctionFilePath() const { return m_correctionFilePath ? m_correctionFilePath : ""; }

// The members below that the host calls let no exception out.
template <typename Operation>
void LensCorrection::guard(const char* activity, Operation operation) {
    try {
        operation();
    } catch (const std::exception& exception) {
        reportException(activity, exception.what());
    } catch (...) {
        reportException(activity, "Unknown exception.");
    }
}

template <typename Operation>
bool LensCorrection::runCore(Operation operation) {
    const bool isSuccessful = operation();
    if (aborted()) return false;
    if (!isSuccessful) reportCoreError();
    return isSuccessful;
}

// --- Controls ---

void LensCorrection::knobs(DD::Image::Knob_Callback callback) {
    using namespace DD::Image;

    guard("Declaring the controls", [&] {
        std::map<std::string, std::string> tooltips = tooltipsForKnobIds();

        Enumeration_knob(callback, &m_correctionMode, correctionModeEntries(), "correctionMode", "Correction Mode");
        Tooltip(callback, tooltips["correctionMode"]);
        Enumeration_knob(callback, &m_outputType, outputTypeEntries(), "outputType", "Output Type");
        if (shouldOutputTypeKnobBeHidden()) SetFlags(callback, Knob::HIDDEN);
        Tooltip(callback, tooltips["outputType"]);

        Enumeration_knob(callback, &m_overscanLocation, c_inputOverscanLocationEntries, "inputOverscan::location",
                         "Input Overscan Location");
        SetFlags(callback, Knob::NO_ANIMATION);
        Tooltip(callback, c_inputOverscanLocationTooltip);
        Float_knob(callback, &m_overscanAmount, IRange(0, 20), "inputOverscan::amount", "Overscan Amount [%]");
        SetFlags(callback, Knob::HIDDEN | Knob::NO_ANIMATION);
        Tooltip(callback, c_inputOverscanAmountTooltip);
        Int_knob(callback, &m_remainingWidth, IRange(0, 0), "inputOverscan::remainingResolution::width",
                 "Resolution w/o Overscan [px]");
        SetFlags(callback, Knob::HIDDEN | Knob::NO_ANIMATION);
        Tooltip(callback, c_remainingWidthTooltip);
        Int_knob(callback, &m_remainingHeight, IRange(0, 0), "inputOverscan::remainingResolution::height", "");
        SetFlags(callback, Knob::HIDDEN | Knob::NO_ANIMATION);
        Tooltip(callback, c_remainingHeightTooltip);

        BeginGroup(callback, "correctionFile", "Correction File");
        File_knob(callback, &m_correctionFilePath, "correctionFile::path", "Manually Selected File");
        Tooltip(callback, c_correctionFilePathTooltip);
        EndGroup(callback);

        BeginGroup(callback, "recordingFormat", "Recording Format");
        Bool_knob(callback, &m_isManuallySelected, "recordingFormat::manualSelection", "Manual Selection");
        SetFlags(callback, Knob::STARTLINE | Knob::NO_ANIMATION);
        Tooltip(callback, c_manualSelectionTooltip);

        BeginGroup(callback, "recordingFormat::imageAreaSize", "Image Area Size");
        Float_knob(callback, &m_imageAreaWidth, IRange(0, 36), "recordingFormat::imageAreaSize::width", "Width [mm]");
        SetFlags(callback, Knob::FORCE_RANGE | Knob::LOG_SLIDER | Knob::NO_ANIMATION);
        Tooltip(callback, "This is the physical width of the sub-area of the sensor covered by the recording format.");
        Float_knob(callback, &m_imageAreaHeight, IRange(0, 24), "recordingFormat::imageAreaSize::height",
                   "Height [mm]");
        SetFlags(callback, Knob::FORCE_RANGE | Knob::NO_ANIMATION);
        Tooltip(callback, "This is the physical height of the sub-area of the sensor covered by the recording format.");
        EndGroup(callback);

        BeginGroup(callback, "recordingFormat::clipResolution", "Clip Resolution");
        Int_knob(callback, &m_clipResolutionWidth, IRange(0, 7680), "recordingFormat::clipResolution::width",
                 "Width [px]");
        SetFlags(callback, Knob::FORCE_RANGE | Knob::NO_ANIMATION);
        Tooltip(callback, "This is the width of the clip resolution captured in the recording format.");
        Int_knob(callback, &m_clipResolutionHeight, IRange(0, 4320), "recordingFormat::clipResolution::height",
                 "Height [px]");
        SetFlags(callback, Knob::FORCE_RANGE | Knob::NO_ANIMATION);
        Tooltip(callback, "This is the height of the clip resolution captured in the recording format.");
        EndGroup(callback);

        Float_knob(callback, &m_imageDiameter, IRange(0, c_maximumImageDiameter), "recordingFormat::imageDiameter",
                   "Image Diameter [mm]");
        SetFlags(callback, Knob::FORCE_RANGE | Knob::DISABLED | Knob::NO_ANIMATION);
        Tooltip(callback,
                "This is the physical diameter of the sub-area of the sensor covered by the recording format.");
        EndGroup(callback);

        if (!callback.makeKnobs()) updateVisibilityOfKnobsIfNeeded(nullptr);
    });
}

int LensCorrection::knob_changed(Knob* knob) {
    guard("Updating the controls", [&] {
        updateVisibilityOfKnobsIfNeeded(knob);
        updateValueOfInputOverscanKnobsIfNeeded(knob);
    });
    return 1;
}

bool LensCorrection::updateUI(const DD::Image::OutputContext&) {
    guard("Updating the controls", [&] {
        updateValueOfInputOverscanKnobsIfNeeded(nullptr);
        updateValueOfRecordingFormatKnobs();
    });
    return true;
}

void LensCorrection::updateVisibilityOfKnobsIfNeeded(Knob* changedKnob) {
    if (!changedKnob || changedKnob->is("inputOverscan::location")) {
        const bool isFormat = static_cast<int>(knob("inputOverscan::location")->get_value()) == Format;
        for (const char* const name : {"inputOverscan::amount", "inputOverscan::remainingResolution::width",
                                       "inputOverscan::remainingResolution::height"}) {
            knob(name)->visible(isFormat);
        }
    }
    if (!changedKnob || changedKnob->is("recordingFormat::manualSelection")) {
        const bool isManual = knob("recordingFormat::manualSelection")->get_value() != 0.0;
        for (const char* const name :
             {"recordingFormat::imageAreaSize::width", "recordingFormat::imageAreaSize::height",
              "recordingFormat::clipResolution::width", "recordingFormat::clipResolution::height"}) {
            knob(name)->enable(isManual);
        }
    }
}

void LensCorrection::updateValueOfInputOverscanKnobsIfNeeded(Knob* changedKnob) {
    Knob* const amountKnob = knob("inputOverscan::amount");
    Knob* const widthKnob = knob("inputOverscan::remainingResolution::width");
    Knob* const heightKnob = knob("inputOverscan::remainingResolution::height");
    if (!isImageInputConnected()) {
        widthKnob->set_value(0);
        heightKnob->set_value(0);
        return;
    }
    // Only a validated input knows its format.
    imageInput()->validate(false);
    const DD::Image::Format& format = imageInput()->format();
    const float formatWidth = static_cast<float>(format.w());
    const float formatHeight = static_cast<float>(format.h());
    if (changedKnob && changedKnob->is("inputOverscan::remainingResolution::width")) {
        const float width = static_cast<float>(widthKnob->get_value());
        heightKnob->set_value(roundToInteger(formatHeight / formatWidth * width));
        amountKnob->set_value(static_cast<double>((formatWidth - width) / width * 100.0f));
    } else if (changedKnob && changedKnob->is("inputOverscan::remainingResolution::height")) {
        const float height = static_cast<float>(heightKnob->get_value());
        widthKnob->set_value(roundToInteger(formatWidth / formatHeight * height));
        amountKnob->set_value(static_cast<double>((formatHeight - height) / height * 100.0f));
    } else if (!changedKnob || changedKnob->is("inputOverscan::amount")) {
        const float factor = 1.0f / (static_cast<float>(amountKnob->get_value()) / 100.0f + 1.0f);
        widthKnob->set_value(roundToInteger(formatWidth * factor));
        heightKnob->set_value(roundToInteger(formatHeight * factor));
    }
}

void LensCorrection::updateValueOfRecordingFormatKnobs() {
    Knob* const areaWidthKnob = knob("recordingFormat::imageAreaSize::width");
    Knob* const areaHeightKnob = knob("recordingFormat::imageAreaSize::height");
    Knob* const resolutionWidthKnob = knob("recordingFormat::clipResolution::width");
    Knob* const resolutionHeightKnob = knob("recordingFormat::clipResolution::height");

    const bool isManual = knob("recordingFormat::manualSelection")->get_value() != 0.0;
    if (isMetadataInputConnected() && !isManual) {
        RecordingFormatDatabase::RecordingFormat recordingFormat;
        if (!m_core.recordingFormat(recordingFormat)) {
            reportCoreError();
            return;
        }
        areaWidthKnob->set_value(static_cast<double>(roundToTwoDecimals(recordingFormat.imageAreaWidth)));
        areaHeightKnob->set_value(static_cast<double>(roundToTwoDecimals(recordingFormat.imageAreaHeight)));
        resolutionWidthKnob->set_value(recordingFormat.clipResolutionWidth);
        resolutionHeightKnob->set_value(recordingFormat.clipResolutionHeight);
    }

    double width = areaWidthKnob->get_value();
    double height = areaHeightKnob->get_value();
    const double resolutionWidth = resolutionWidthKnob->get_value();
    const double resolutionHeight = resolutionHeightKnob->get_value();
    const bool isResolutionKnown = resolutionWidth != 0.0 && resolutionHeight != 0.0;
    // A missing side is worked out for the diameter only; its own control keeps its 0.
    if (height == 0.0 && width != 0.0 && isResolutionKnown) {
        height = resolutionHeight / resolutionWidth * width;
    } else if (width == 0.0 && height != 0.0 && isResolutionKnown) {
        width = resolutionWidth / resolutionHeight * height;
    }
    double diameter = 0.0;
    if (width != 0.0 && height != 0.0) diameter = roundToTwoDecimals(std::sqrt(width * width + height * height));
    knob("recordingFormat::imageDiameter")->set_value(diameter);
}

const char* LensCorrection::input_label(int input, char*) const {
    if (input == imageInputIndex()) return "src";
    if (input == metadataInputIndex()) return "plate";
    return nullptr;
}

// --- Validation ---

void LensCorrection::_validate(bool forReal) {
    guard("Validating the frame", [&] { validateFrame(forReal); });
}

void LensCorrection::validateFrame(bool forReal) {
    PlanarIop::_validate(forReal);
    if (aborted()) return;
    if (!isImageInputConnected()) {
        abort();
        return;
    }
    copy_info(imageInputIndex());

    calculateFrameSizeWithOriginalAspectRatio(m_frameWidth, m_frameHeight);
    // The core asks for the output box while it works out its own frame size.
    setBoxCenteredOnFormat(m_frameWidth, m_frameHeight);

    unsigned int coreWidth = 0;
    unsigned int coreHeight = 0;
    if (!runCore([&] { return m_core.frameSize(coreWidth, coreHeight); })) return;
    setBoxCenteredOnFormat(std::max(coreWidth, m_frameWidth), std::max(coreHeight, m_frameHeight));
}

void LensCorrection::calculateFrameSizeWithOriginalAspectRatio(unsigned int& width, unsigned int& height) const {
    const FrameSizing::Size frame = FrameSizing::frameAround(getOutputBox(), format());
    width = static_cast<unsigned int>(frame.width);
    height = static_cast<unsigned int>(frame.height);
}

void LensCorrection::setBoxCenteredOnFormat(unsigned int width, unsigned int height) {
    const Box box = FrameSizing::boxCenteredOn(FrameSizing::sizeOf(format()), {width, height});
    info_.set(box.x(), box.y(), box.r(), box.t());
}

// --- Rendering ---

DD::Image::PlanarI::PackedPreference LensCorrection::packedPreference() const { return ePackedPreferencePacked; }

bool LensCorrection::renderFullPlanes() const { return true; }

void LensCorrection::getRequests(const Box& box, const DD::Image::ChannelSet& channels, int count,
                                 DD::Image::RequestOutput& requests) const {
    // Nothing of ours that could throw.
    requests.request(imageInput(), box, channels, count);
}

void LensCorrection::renderStripe(DD::Image::ImagePlane& plane) {
    guard("Rendering the frame", [&] { renderPlane(plane); });
}

void LensCorrection::renderPlane(DD::Image::ImagePlane& plane) {
    if (aborted()) return;
    if (!isImageInputConnected()) {
        abort();
        return;
    }
    imageInput()->fetchPlane(plane);
    if (aborted() || plane.usage() == 0) return;

    // The core renders frames of the output box's size in packed RGBA, whatever the layer is.
    const Box box = getOutputBox();
    const std::size_t floatCount = static_cast<std::size_t>(box.w()) * static_cast<std::size_t>(box.h()) * 4;
    // Left uninitialised: the core writes all of it.
    const std::unique_ptr<float[]> output(new float[floatCount]);
    if (aborted()) return;

    if (PackedPlane::isPacked(plane, box)) {
        if (!renderWithCore(plane.readable(), output.get(), floatCount * sizeof(float))) return;
        // The buffer may be shared with the input's cache.
        plane.makeUnique();
        plane.makeWritable();
        std::memcpy(plane.writable(), output.get(), floatCount * sizeof(float));
        return;
    }
    for (int component = 0; component < plane.nComps();) {
        const PackedPlane packedPlane(plane, box, component);
        component += packedPlane.componentCount();
        if (!renderWithCore(packedPlane.pixels(), output.get(), floatCount * sizeof(float))) return;
        plane.makeUnique();
        plane.makeWritable();
        packedPlane.unpack(output.get(), plane);
    }
}

bool LensCorrection::renderWithCore(const float* pixels, float* output, unsigned long size) {
    // A map does not depend on the pixels.
    const float* const input = m_outputType == 0 ? pixels : nullptr;
    // The frame may have waited for those of other threads and nodes. What the core was told counts, since the host may
    // take an abort back at any time.
    bool wasAborted = false;
    const auto isAborted = [&] { return wasAborted = aborted(); };
    return runCore([&] { return m_core.render(input, output, size, isAborted); }) && !wasAborted;
}

void LensCorrection::append(DD::Image::Hash& hash) {
    guard("Updating the hash", [&] {
        const std::string text = std::to_string(uniqueLocalTime());
        hash.append(static_cast<const void*>(text.c_str()), text.length() + 1);
    });
}

// --- Errors ---

void LensCorrection::reportException(const char* activity, const char* text) {
    error("%s failed: %s", activity, text);
    try {
        log(std::string(activity) + " failed: " + text + "\n");
    } catch (const std::exception&) {
        // Out of memory: the node shows the error all the same.
    }
}

void LensCorrection::retrieveCoreErrorDescription(std::string& brief, std::string& detailed) const {
    std::vector<char> description(c_detailedDescriptionCapacity);
    brief = m_core.briefErrorDescription(description.data(), c_briefDescriptionCapacity)
                ? description.data()
                : "An issue did occur, but the issue description could not be retrieved. Please contact the developer.";
    detailed = m_core.detailedErrorDescription(description.data(), c_detailedDescriptionCapacity)
                   ? description.data()
                   : "An issue did occur, but the detailed issue description could not be retrieved. Please contact "
                     "the developer.";
}

void LensCorrection::reportCoreError() {
    std::string brief;
    std::string detailed;
    retrieveCoreErrorDescription(brief, detailed);
    log(detailed);
    error("%s", brief.c_str());
}

void LensCorrection::log(const std::string& details) {
    {
        const std::lock_guard<std::mutex> lock(m_lastErrorDetailsAccess);
        m_lastErrorDetails = details;
    }
    m_logger.log(details);
}

std::string LensCorrection::lastErrorDetails() const {
    const std::lock_guard<std::mutex> lock(m_lastErrorDetailsAccess);
    return m_lastErrorDetails;
}
