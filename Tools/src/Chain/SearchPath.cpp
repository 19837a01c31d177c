#include "Chain/SearchPath.h"

#include <fmt/format.h>

#include <exception>
#include <memory>

#include "Chain/ChainSettings.h"
#include "Chain/CorrectionChain.h"
#include "DataSourceHelper.h"
#include "LensCorrection.h"

namespace Tools {
namespace {

/// Null: none of the frames can be read. `frame` becomes the one whose header it is.
std::shared_ptr<const Image::Frame> firstHeader(ClipSurvey& survey, const std::vector<std::int32_t>& frames,
                                                std::int32_t& frame) {
    for (const std::int32_t candidate : frames) {
        try {
            frame = candidate;
            return survey.header(candidate);
        } catch (const std::exception&) {
            // Told when the frame's turn comes.
        }
    }
    return nullptr;
}

} // namespace

std::string searchPath(const Clip& clip, ClipSurvey& survey, const std::vector<std::int32_t>& frames) {
    std::int32_t frame = 0;
    const std::shared_ptr<const Image::Frame> header = firstHeader(survey, frames, frame);
    if (!header) return clip.searchPath();
    const Image::Metadata metadata = clip.metadata(frame, *header);
    const ClipFrame shown{header.get(), &metadata, clip.shownPath(frame), clip.range()};
    ChainSettings settings;
    settings.distortion = ChainSettings::Distortion::Undistort; // any node searches
    CorrectionChain chain(settings, 1);
    chain.setFrame(frame, shown, 0, shown);
    std::string path;
    return DataSourceHelper::clipFilePath(&chain.lastNode(), path) ? path : clip.searchPath();
}

std::string nameNote(const Clip& clip, const std::string& searchPath) {
    if (searchPath == clip.searchPath()) return {};
    return fmt::format("The clip's name, \"{}\", is from its metadata; its files are \"{}\".",
                       searchPath.substr(searchPath.rfind('/') + 1), clip.files().pattern.string());
}

} // namespace Tools
