#pragma once

#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "DDImage/Substitute/Graph.h"
#include "LensCorrection.h"

/// Answers the core with what a test sets; wants no correction and knows nothing unless told otherwise.
class TestDataSource : public Core::CoreDataSource {
public:
    std::function<void()> onQuestion = [] {}; ///< run at the beginning of every operation of the core
    bool wantsDistortion = false;
    std::function<std::string()> record = [] { return std::string(); }; ///< the frame's own; empty: none
    std::optional<Core::FrameData> frame;

    bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter&) const override {
        onQuestion();
        return false;
    }
    bool shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter&) const override {
        return wantsDistortion;
    }
    bool frameMetadata(char* metadata, unsigned long capacity) const override {
        const std::string text = record();
        if (text.empty() || text.size() + 1 > capacity) return false;
        std::memcpy(metadata, text.c_str(), text.size() + 1);
        return true;
    }
    bool correctionFilePath(char*, unsigned long) const override { return false; }
    bool clipFileName(char*, unsigned long) const override { return false; }
    bool clipFilePath(char*, unsigned long) const override { return false; }
    bool frameData(Core::FrameData& data) const override {
        if (frame) data = *frame;
        return frame.has_value();
    }
    bool recordingFormat(RecordingFormatDatabase::RecordingFormat&) const override { return false; }
};

/// The nodes' common base with a data source and a log file of the test's.
class TestNode : public LensCorrection {
public:
    static TestNode* create(DD::Image::Graph& graph, const std::string& logFilePath = "/dev/null");
    TestDataSource& dataSource() { return *m_dataSource; }

    const char* Class() const override { return "TestLensCorrection"; }
    const char* node_help() const override { return ""; }

    using LensCorrection::calculateFrameSizeWithOriginalAspectRatio;
    using LensCorrection::reportCoreError;
    using LensCorrection::retrieveCoreErrorDescription;

protected:
    const char* const* correctionModeEntries() const override;
    const char* const* outputTypeEntries() const override { return correctionModeEntries(); }
    bool shouldOutputTypeKnobBeHidden() const override { return false; }
    std::map<std::string, std::string> tooltipsForKnobIds() const override {
        return {{"correctionMode", "mode"}, {"outputType", "output"}};
    }

private:
    TestNode(DD::Image::Node* node, TestDataSource* dataSource, const std::string& logFilePath);
    static DD::Image::Op* make(DD::Image::Node* node);
    static const DD::Image::Op::Description s_description;

    TestDataSource* m_dataSource;
};
