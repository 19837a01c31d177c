#include "OpenCVPeer.h"

#include <memory>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "Renderer/NativeKernels.h"

namespace {

struct Maps {
    explicit Maps(const ComparedFrame& frame) : x(frame.height, frame.width, CV_32F), y(x.size(), CV_32F) {}

    void build(const ComparedFrame& frame) {
        NativeKernels::positions(frame.distortion, x.ptr<float>(), y.ptr<float>(), frame.threads);
    }

    cv::Mat x, y;
};

// OpenCV does not write through its input.
cv::Mat picture(const ComparedFrame& frame, const float* values) {
    return cv::Mat(frame.height, frame.width, CV_32FC4, const_cast<float*>(values));
}

void remap(const ComparedFrame& frame, const Maps& maps) {
    cv::Mat output = picture(frame, frame.output);
    cv::remap(picture(frame, frame.input), output, maps.x, maps.y, cv::INTER_LINEAR, cv::BORDER_CONSTANT);
}

} // namespace

void OpenCVPeer::addTo(InterleavedRun& run, const ComparedFrame& frame) {
    cv::setNumThreads(static_cast<int>(frame.threads));
    auto maps = std::make_shared<Maps>(frame);
    maps->build(frame);
    run.add("OpenCV remap, maps given", [=, &frame] { remap(frame, *maps); });
    run.add("OpenCV remap, maps built by the native loop", [=, &frame] {
        maps->build(frame);
        remap(frame, *maps);
    });
    run.add("OpenCV undistort, its own maps", [=, &frame] {
        const double focal = frame.width;
        const cv::Matx33d camera(focal, 0, frame.width / 2.0 - 0.5, 0, focal, frame.height / 2.0 - 0.5, 0, 0, 1);
        const cv::Vec<double, 5> coefficients(-0.02, 0.01, 0, 0, 0);
        cv::initUndistortRectifyMap(camera, coefficients, cv::noArray(), camera, maps->x.size(), CV_32F, maps->x,
                                    maps->y);
        remap(frame, *maps);
        maps->build(frame); // for those who take them as given
    });
}
