#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Lens/CorrectionFileData.h"
#include "Lens/LensCurves.h"
#include "Plot/LineChart.h"

namespace Tools {

/// What a lens report draws of a clip: the curves of three of its frames, and values of frames spaced over the whole of
/// it. A frame whose curves cannot be fitted is left out.
class ClipCurves {
public:
    /// Parts of the way from the image centre to its corner at which values over the clip are taken.
    struct PartHeight {
        float part;
        const char* name;
    };
    static constexpr std::array<PartHeight, 4> partHeights = {
        {{0.25f, "25 %"}, {0.5f, "50 %"}, {0.75f, "75 %"}, {1.0f, "corner"}}};

    static constexpr std::size_t mostSamples = 400;

    /// A frame's values. Lengths are in lengthUnit().
    struct Sample {
        std::uint32_t frameNumber = 0;
        std::vector<double> illumination; ///< % at each of the part heights
        std::vector<double> distortion;   ///< ‰ at each of the part heights
        double forwardResidual = 0.0;
        double inverseResidual = 0.0;
        double roundTrip = 0.0;
        double illuminationResidual = 0.0; ///< %
    };

    /// `file` must outlive this. Throws Failure (WrongUse) when no frame of the file can be fitted.
    explicit ClipCurves(const CorrectionFileData& file);

    /// Of the first, the middle and the last frame; of those with equal values only one. Never empty.
    const std::vector<LensCurves>& drawn() const { return m_drawn; }

    /// Of at most mostSamples frames, evenly spaced, with the first and the last.
    const std::vector<Sample>& samples() const { return m_samples; }

    /// One frame's values; the frame number is left 0.
    Sample sample(const LensCurves& curves) const;

    /// "frame 7", or "all frames" when no frame differs from another.
    std::string frameName(const LensCurves& curves) const;

    std::size_t failedCount() const { return m_failedCount; }   ///< frames without curves
    std::uint32_t firstFailed() const { return m_firstFailed; } ///< frame number of the first of them

    bool isFormatKnown() const { return m_isFormatKnown; }
    const RecordingFormatDatabase::RecordingFormat& format() const { return m_file.recordingFormat; }

    float radius() const { return m_radius; } ///< mm to the image's corner; to the last point if the format is unknown
    float end() const { return m_end; }       ///< mm where curves end: the corner or the last point, which is farther

    /// How lengths on the sensor are shown: in px of the clip, or in µm if the format is unknown.
    double lengthFactor() const { return m_lengthFactor; } ///< by which a length in mm is multiplied
    const std::string& lengthUnit() const { return m_lengthUnit; }

private:
    std::vector<const CorrectionData::Frame*> fittedFrames();
    void chooseDrawn(const std::vector<const CorrectionData::Frame*>& fitted);
    void sampleClip(const std::vector<const CorrectionData::Frame*>& fitted);

    const CorrectionFileData& m_file;
    std::vector<LensCurves> m_drawn;
    std::vector<Sample> m_samples;
    bool m_areAllEqual = false;
    std::size_t m_failedCount = 0;
    std::uint32_t m_firstFailed = 0;
    bool m_isFormatKnown = false;
    float m_radius = 0.0f;
    float m_end = 0.0f;
    double m_lengthFactor = 1000.0;
    std::string m_lengthUnit = "µm";
};

/// A lens report's charts, in its order: shading, distortion and shift over the image height, the first two over the
/// clip, the round trip over the image height, and the residuals over the clip.
std::vector<LineChart> lensCharts(const ClipCurves& clip);

} // namespace Tools
