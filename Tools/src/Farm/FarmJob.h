#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Tools {

/// A word that a POSIX shell reads as exactly this text, whatever is in it.
std::string shellQuoted(const std::string& text);

/// Several of them, separated by blanks.
std::string shellQuoted(const std::vector<std::string>& texts);

/// A render job as a farm runs it: its frames in chunks, and a folder with all that its tasks share.
///
/// The folder lies on a disk that every machine of the farm sees under the same path:
///
/// - `job.sh`: every step (`warm`, `chunk [NUMBER]`, `frames LIST`, `summary`); an engine only calls it
/// - `frames.txt`: all frames, as a list
/// - `work.txt`: the folder in which relative paths begin
/// - `chunks.txt`: the frames of chunk 0, 1 …, one list per line
/// - `report/NAME.ATTEMPT.jsonl`: what the renderer reported about a chunk's frames, for each start of the chunk
/// - `report/NAME.status`: exit status of the chunk's last start; missing while it runs and if it was killed
/// - `log/NAME.log`: what a chunk wrote to the error stream
///
/// Since finished frames are skipped and files appear complete or not at all, a step may be stopped and restarted at
/// any time; on SIGTERM it completes the frames in flight and ends with 143.
struct FarmJob {
    std::string name;                         ///< three or more letters, digits and "_"
    std::string folder;                       ///< absolute; does not exist yet
    std::string workingFolder;                ///< absolute; where relative paths of the arguments begin
    std::string program;                      ///< lenscorrect, as the farm's machines find it
    std::vector<std::string> renderArguments; ///< after `render`, without those that differ between chunks
    std::vector<std::int32_t> frames;         ///< not empty
    std::size_t framesPerChunk = 1;
    unsigned int cores = 0; ///< for each task; 0: as the engine decides

    /// The frames of each chunk as a list; all but the last one have framesPerChunk.
    std::vector<std::string> chunks() const;

    /// Makes the folder and its files. Throws Failure (WrongUse) if the folder exists, or (Output).
    void write() const;

    std::string scriptPath() const { return folder + "/job.sh"; }
    std::string summaryPath() const { return folder + "/summary.txt"; }

    /// A name for a job from any text.
    static std::string nameFrom(const std::string& text);
};

} // namespace Tools
