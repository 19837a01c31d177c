#pragma once

#include <optional>
#include <vector>

#include "Chain/RadialSampling.h"
#include "Core/FramePreparation.h"
#include "Frame.h"
#include "RecordingFormatDatabase/RecordingFormat.h"
#include "Report/Dimensions.h"

namespace Tools {

/// The recorded frame of a plate, against which its renderings are measured.
struct RecordedFrame {
    /// Half the diagonal in px, from corner to corner of the pixels, of what the lens projected onto the recorded area:
    /// of the format, or of what remains when this percentage of the format is overscan.
    double halfDiagonal = 0.0;

    explicit RecordedFrame(PixelSize format, std::optional<float> overscan = std::nullopt);

    /// The scale between the lens's curve and the recorded picture.
    double millimetresPerPixel(const RecordingFormatDatabase::RecordingFormat& recordingFormat) const;
};

/// A position in a picture, px, y downwards; a pixel's centre has whole coordinates.
struct Place {
    double x = 0.0;
    double y = 0.0;
};

/// Which of a frame's two corrections is meant.
enum class Direction {
    Undistort, ///< from the recorded to the corrected picture
    Redistort  ///< back
};

/// The scale between the lens's curve and the pixels.
enum class Geometry {
    /// The node's: the half-diagonal of the frame that is rendered stands for the corner of the corrected picture.
    /// That frame is never smaller than the one that came in, and may be larger than the corner requires (edges that
    /// extend further, whole pixels), so the lens is then evaluated too near the centre or too far from it.
    Node,
    /// Half the diagonal of the recorded frame stands for the recording format's image radius, and a source's distance
    /// from the centre in px times that scale is its distance on the sensor in mm, whatever the rendered frame's size.
    /// The recorded frame is the clip's format, or what remains of it when a part of the format is overscan.
    Ideal
};

/// How the distortion node renders one frame: its frame, its box, and where each pixel comes from.
///
/// Windows are those of picture files: corners inclusive, y downwards, places in the same coordinates.
struct FrameGeometry {
    Image::Window format;  ///< the display window
    Image::Window box;     ///< where a picture that fills the format ends up
    Image::Window picture; ///< the data window of the corrected picture; smaller if the picture had less
    float pixelAspectRatio = 1.0f;
    Direction direction = Direction::Undistort;
    Core::FrameToCorrect lens;              ///< what the node knows about the frame
    Renderer::DistortionParameter node;     ///< what the renderer is told for the whole box
    double idealMillimetresPerPixel = 1.0;  ///< of Geometry::Ideal
    std::vector<Image::Attribute> identity; ///< what tells the frame of a clip from others: timecode, reel, ...

    RadialSampling sampling(Geometry geometry) const;

    /// Position in the source for a position in the rendered picture.
    Place source(const RadialSampling& sampling, Place place) const;

    Place centre() const;

    /// Half the diagonal in px, from corner to corner of the pixels.
    double formatHalfDiagonal() const;

    /// Largest distance in px between where the node samples and where it ideally would, over the box.
    double deviation() const;

    /// Whether both render every pixel alike, whichever frames they are.
    bool isSameMap(const FrameGeometry& other) const;
};

} // namespace Tools
