#pragma once

#include <optional>
#include <string>

#include "Core/FramePreparation.h"
#include "DDImage/Box.h"
#include "Renderer/DistortionParameter.h"
#include "Report/Dimensions.h"

namespace Tools {

/// A picture's shape, and how much of it was recorded.
struct PictureShape {
    PixelSize format;
    DD::Image::Box data;           ///< in the host's coordinates: the format's left bottom corner is the origin
    std::optional<float> overscan; ///< %, inside the format; without it the whole format was recorded

    DD::Image::Box formatBox() const;
    /// The least that the picture shows: its format, black where it has no data, and its data.
    DD::Image::Box whole() const;
};

/// The order in which the nodes correct a picture.
enum class Steps { Distortion, Shading, ShadingThenDistortion, DistortionThenShading };

/// How the nodes frame a picture, known in advance from its shape and its lens data alone. One rule for every caller:
///
/// - The nodes are shown a picture that at least fills its format, so that a picture with less in its data window is
///   corrected as the whole one.
/// - The nodes centre frames on the format in whole pixels, and the core refuses one whose height is off by 2 px or
///   more. The picture gets the smallest border of black with which none of its frames is refused.
/// - Of the nodes' box, a file keeps what was in the picture's data window, and where that ends up.
///
/// The numbers are the nodes' and the core's own arithmetic.
struct FramePlan {
    DD::Image::Box shown;   ///< the picture's box for the nodes
    DD::Image::Box box;     ///< of the last node
    DD::Image::Box kept;    ///< the data window of the corrected picture's file; inside `box`
    bool isAccepted = true; ///< false: the core refuses a frame on the way, and no border helps
    DD::Image::Box refused; ///< of a plan that is not accepted: the first frame that the core refuses
    /// The frame as the core knows it: when it sizes the distortion node's frame, or the only node's.
    Core::FrameToCorrect frame;
    /// What is rendered for the whole box of the distortion node, if there is one.
    std::optional<Renderer::DistortionParameter> distortion;
    Steps steps = Steps::Distortion; ///< as wanted, but without distortion beside shading if the lens has none

    /// What a file keeps if all of a window of the picture is kept: where its content was, and where it ends up.
    DD::Image::Box keptOf(const DD::Image::Box& window, const PictureShape& shape) const;
};

/// What a user needs to know about a plan that is not accepted: the format's aspect ratio is a rounded one, and the
/// frame around what overhangs the format is so much larger that the rounding comes to 2 px.
std::string shapeRefusal(const FramePlan& plan, const PictureShape& shape);

/// Lets the core prepare the frame and plans it. The preparation's data source must answer frameData for a frame as
/// large as the format, without overscan. A picture that no border helps is planned without one.
///
/// Throws Exception with the core's texts, boost::math::rounding_error for sizes beyond any picture's.
FramePlan planFrame(const PictureShape& shape, Steps steps, Core::FramePreparation& preparation);

} // namespace Tools
