#pragma once

#include <string>

#include <boost/filesystem/path.hpp>

#include "DDImage/Read.h"

class LensCorrection;

/// Finds the file reader upstream of a node and draws clip path, clip name, timecode, frame number and the embedded
/// correction record from its metadata of the current frame, by rules per container format and camera maker.
///
/// All functions answer false when the value is not available, and leave the result untouched then; flags are always
/// set. Extensions are normalised ones ("exr", "mov"). A null node or reader is a programming error.
class DataSourceHelper {
public:
    /// The reader that the node's "plate" input leads to, or null. Steps over other nodes by their first input and
    /// over other correction nodes by their "plate" input, so that a chain of them shares one reader. Only the host's
    /// plain reader counts, not classes derived from it.
    static DD::Image::Read* readNode(LensCorrection* op);

    /// The reader's file name.
    static bool clipFilePath(DD::Image::Read* readNode, boost::filesystem::path& path);
    /// Both of the above; the results are untouched unless both are available.
    static bool readNodeAndClipFilePath(LensCorrection* op, DD::Image::Read** readNode, boost::filesystem::path& path);

    /// The extension without dots in lower case: "exr" for "A001.EXR".
    static bool clipFileExtension(const boost::filesystem::path& path, std::string& extension);

    /// "RED", "ARRI" or "Sony", told by which keys are present in the reader's metadata.
    static bool cameraManufacturer(DD::Image::Read* readNode, const std::string& extension, std::string& manufacturer);

    /// The clip's name as the camera gave it. `isFormatUnknown` is set when maker or container are not known, and
    /// clear when they are and the metadata just lack the name, or hold an empty one or no text under its key.
    static bool originalClipFileName(DD::Image::Read* readNode, boost::filesystem::path path, bool& isFormatUnknown,
                                     std::string& name);

    /// The path under which the core searches for the clip's correction file: the reader's folder with the camera's
    /// clip name; without one, for "exr" and "dpx" the folder with the file name up to its first dot
    /// (/shots/A003.0001234.exr: /shots/A003), for others the reader's own path.
    static bool clipFilePath(LensCorrection* op, std::string& path);

    /// The timecode text under the key of the clip's maker and container. `isFormatUnknown` as above.
    static bool timecode(DD::Image::Read* readNode, const std::string& extension, bool& isFormatUnknown,
                         std::string& timecode);

    /// Frames per second of an R3D clip; never negative.
    static bool r3dFramerate(DD::Image::Read* readNode, float& framerate);

    /// R3D clips above 30 and up to 60 frames per second count frame pairs, and the separator tells the first (".")
    /// from the second (":") frame of a pair. Rewrites such a text to count frames: at 48 frames per second
    /// 10:00:00.07 becomes 10:00:00:14 and 10:00:00:07 becomes 10:00:00:15. A text that does not end in two digits
    /// behind a separator is left as it is.
    static void modifyR3dTimecodeIfNeeded(DD::Image::Read* readNode, std::string& timecode);

    /// The current frame counted from the clip's first frame, which is 0.
    static bool frameNumber(DD::Image::Read* readNode, unsigned int& frameNumber);

    /// Either a timecode with frame number 0 (R3D keeps its frame number), or a frame number with an empty timecode.
    static bool frameNumberAndTimecode(LensCorrection* op, unsigned int& frameNumber, std::string& timecode);

    /// The frame's own correction record, which EXR files may carry.
    static bool jsonMetadataString(LensCorrection* op, std::string& json);
};
