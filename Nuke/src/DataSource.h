#pragma once

#include <string>

#include "Core/CoreDataSource.h"

class LensCorrection;

/// Answers the core from the node's controls, from its image geometry, and from the metadata that the host's file
/// reader delivers for the current frame. The two nodes' sources add which correction is wanted.
///
/// Holds no state; runs on whichever host thread validates or renders the node. Nothing is thrown for missing metadata:
/// it is answered with false.
class DataSource : public Core::CoreDataSource {
public:
    /// `op` owns this data source through its core.
    explicit DataSource(LensCorrection* op);

    bool frameMetadata(char* metadata, unsigned long capacity) const override;
    bool correctionFilePath(char* path, unsigned long capacity) const override;
    bool clipFileName(char* name, unsigned long capacity) const override;
    bool clipFilePath(char* path, unsigned long capacity) const override;

    // The same answers as text of any length.
    bool frameMetadata(std::string& metadata) const;
    bool correctionFilePath(std::string& path) const;
    bool clipFileName(std::string& name) const;
    bool clipFilePath(std::string& path) const;

    /// The overscan is that of the node's frame over the format, or over what remains of the format, as the control
    /// "inputOverscan::location" says. False when frame number and timecode are unknown or the timecode has 16
    /// characters or more. Throws boost::math::rounding_error when the remaining size is not finite.
    bool frameData(Core::FrameData& frameData) const override;

    /// Available only while the user enters the format by hand.
    bool recordingFormat(RecordingFormatDatabase::RecordingFormat& recordingFormat) const override;

protected:
    LensCorrection* const m_op;

private:
    float overscan() const;
};
