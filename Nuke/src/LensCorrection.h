#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "Core/Core.h"
#include "DDImage/Knobs.h"
#include "DDImage/PlanarIop.h"
#include "Logger/Logger.h"

/// Common base of the two nodes: a planar image operator that hands each layer of a frame to the correction core.
///
/// Input 0 ("src") is the image, input 1 ("plate") the chain that leads to the reader of the camera's clip. The output
/// box is centred on the format and may be larger than it, so that the whole corrected picture is kept.
///
/// Nothing is thrown into the host: a failure of the core shows as the node's error with the core's brief text and goes
/// with all details to the log file; any other exception shows with its own text after the operation that failed, for
/// example "Rendering the frame failed: bad lexical cast: …".
///
/// Threads: the host may render several planes of one node at once. Knobs are touched on the host's main thread only;
/// everything that validation and rendering need is read from the members.
class LensCorrection : public DD::Image::PlanarIop {
public:
    enum OverscanLocation { BoundingBox = 0, Format = 1 };

    static int imageInputIndex() { return 0; }
    static int metadataInputIndex() { return 1; }

    /// The op on the input, which is the host's placeholder when nothing is connected. May be null.
    DD::Image::Iop* imageInput() const;
    DD::Image::Op* metadataInput() const;
    /// True when something other than the host's placeholder is on the input.
    bool isImageInputConnected() const;
    bool isMetadataInputConnected() const;

    // What the controls hold since the host last stored them into this op.
    int correctionMode() const { return m_correctionMode; }
    int outputType() const { return m_outputType; } ///< 0: image; any other: a map
    int overscanLocation() const { return m_overscanLocation; }
    float overscanAmount() const { return m_overscanAmount; } ///< %
    /// The manually selected correction file; empty when there is none.
    std::string correctionFilePath() const;
    bool isRecordingFormatManuallySelected() const { return m_isManuallySelected; }
    float imageAreaWidth() const { return m_imageAreaWidth; }           ///< mm
    float imageAreaHeight() const { return m_imageAreaHeight; }         ///< mm
    int clipResolutionWidth() const { return m_clipResolutionWidth; }   ///< px
    int clipResolutionHeight() const { return m_clipResolutionHeight; } ///< px
    float imageDiameter() const { return m_imageDiameter; }             ///< mm

    /// The frame with the format's aspect ratio that the last validation worked out, in px; it holds the input's box.
    unsigned int frameWidth() const { return m_frameWidth; }
    unsigned int frameHeight() const { return m_frameHeight; }

    /// The text of the last failure as it went to the log file; empty when there was none. Any thread.
    std::string lastErrorDetails() const;

    void knobs(DD::Image::Knob_Callback callback) override;
    int knob_changed(DD::Image::Knob* knob) override;
    bool updateUI(const DD::Image::OutputContext& context) override;
    const char* input_label(int input, char* buffer) const override;
    void getRequests(const DD::Image::Box& box, const DD::Image::ChannelSet& channels, int count,
                     DD::Image::RequestOutput& requests) const override;
    using DD::Image::PlanarIop::renderStripe;
    void renderStripe(DD::Image::ImagePlane& plane) override;
    /// Makes the hash differ on every evaluation: the correction depends on files and metadata that the host's hash
    /// does not see, so a cached result must never be taken for the current one.
    void append(DD::Image::Hash& hash) override;
    PackedPreference packedPreference() const override;
    bool renderFullPlanes() const override;

protected:
    /// The core takes over `dataSource`; the log file is first touched when something fails.
    LensCorrection(DD::Image::Node* node, std::unique_ptr<Core::CoreDataSource> dataSource,
                   const std::string& logFilePath);
    ~LensCorrection() override;

    /// Null-terminated menus of the controls "correctionMode" and "outputType".
    virtual const char* const* correctionModeEntries() const = 0;
    virtual const char* const* outputTypeEntries() const = 0;
    virtual bool shouldOutputTypeKnobBeHidden() const = 0;
    /// Tooltips by knob name; holds at least "correctionMode" and "outputType".
    virtual std::map<std::string, std::string> tooltipsForKnobIds() const = 0;

    void _validate(bool forReal) override;

    /// Shows and enables the controls that depend on `knob`; all of them when it is null.
    void updateVisibilityOfKnobsIfNeeded(DD::Image::Knob* knob);
    /// Keeps overscan amount and remaining resolution describing the same overscan of the image input's format after
    /// `knob` has changed; null counts as a change of the amount. Throws boost::math::rounding_error when a size comes
    /// out not finite.
    void updateValueOfInputOverscanKnobsIfNeeded(DD::Image::Knob* knob);
    /// Shows the core's recording format unless the user enters one, and works out the image diameter.
    void updateValueOfRecordingFormatKnobs();
    /// The smallest frame around the format that holds the output box (FrameSizing::frameAround), in px.
    /// Throws boost::math::rounding_error when a size comes out not finite.
    void calculateFrameSizeWithOriginalAspectRatio(unsigned int& width, unsigned int& height) const;

    /// The core's last failure; where the core has no text, a sentence that says so.
    void retrieveCoreErrorDescription(std::string& brief, std::string& detailed) const;
    /// Shows the core's last failure as the node's error and logs its details.
    void reportCoreError();

private:
    template <typename Operation>
    void guard(const char* activity, Operation operation);
    void reportException(const char* activity, const char* text);
    void log(const std::string& details);

    void validateFrame(bool forReal);
    void setBoxCenteredOnFormat(unsigned int width, unsigned int height);
    void renderPlane(DD::Image::ImagePlane& plane);
    bool renderWithCore(const float* pixels, float* output, unsigned long size);
    /// Runs one operation of the core and reports its failure, unless the node was aborted meanwhile. True if all is
    /// well and the node may go on.
    template <typename Operation>
    bool runCore(Operation operation);

    int m_correctionMode = 0;
    int m_outputType = 0;
    int m_overscanLocation = 0;
    float m_overscanAmount = 0.0f; ///< %
    int m_remainingWidth = 0;      ///< px
    int m_remainingHeight = 0;     ///< px
    const char* m_correctionFilePath = nullptr;
    bool m_isManuallySelected = false;
    float m_imageAreaWidth = 0.0f;  ///< mm
    float m_imageAreaHeight = 0.0f; ///< mm
    int m_clipResolutionWidth = 0;  ///< px
    int m_clipResolutionHeight = 0; ///< px
    float m_imageDiameter = 0.0f;   ///< mm
    unsigned int m_frameWidth = 0;  ///< px
    unsigned int m_frameHeight = 0; ///< px
    Core::Core m_core;
    Core::Logger m_logger;
    std::string m_lastErrorDetails;
    mutable std::mutex m_lastErrorDetailsAccess;
};
