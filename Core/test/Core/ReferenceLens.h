#pragma once

#include <vector>

namespace Support {

/// A lens as a correction file describes it for one frame, and the frame that it is applied to.
struct LensFrame {
    std::vector<float> heights;          ///< mm
    std::vector<float> shading;          ///< %
    std::vector<float> radialDistortion; ///< ‰
    float sensorWidth = 24.0f;           ///< mm
    unsigned int clipWidth = 0;          ///< px, as recorded
    unsigned int clipHeight = 0;         ///< px
    unsigned int width = 0;              ///< px, of the frame that is rendered
    unsigned int height = 0;             ///< px
    float overscan = 0.0f;               ///< %
    bool distort = false;                ///< apply the distortion instead of removing it
    bool addShading = false;             ///< add the shading instead of removing it
};

/// A slow, obvious evaluation of the correction in double precision, written from its formulas and used by tests only:
/// the polynomial in Newton's form instead of by its coefficients, and no rounding on the way.
class ReferenceLens {
public:
    struct Position {
        double x = 0.0;
        double y = 0.0;
    };
    struct Size {
        unsigned int width = 0;
        unsigned int height = 0;
    };

    explicit ReferenceLens(const LensFrame& frame);

    /// Where in the source, in px, a pixel of the rendered frame is sampled.
    Position source(double x, double y) const;

    /// The factor of a pixel's colours.
    double shadingFactor(double x, double y) const;

    /// Size in px of the frame that holds the whole corrected picture.
    Size frameSize() const;

private:
    /// The polynomial through points.
    class Interpolation {
    public:
        Interpolation(std::vector<double> x, std::vector<double> y);
        double at(double x) const;

    private:
        std::vector<double> m_x;
        std::vector<double> m_differences;
    };

    double millimetres(double x, double y, double imageRadius) const;
    double frameFactor(double distance) const;

    LensFrame m_frame;
    Interpolation m_shading;
    Interpolation m_distorted;   ///< height → distorted height
    Interpolation m_undistorted; ///< distorted height → height
    double m_imageRadius;        ///< mm, at the rendered frame's half-diagonal
};

} // namespace Support
