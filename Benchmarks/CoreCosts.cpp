// Times what a frame costs beside its rendering: start-up, correction files of any length, the first frame.
// Each command prints one JSON object; peak memory is the process's, so each measurement is a process of its own.
#include <CLI/CLI.hpp>
#include <chrono>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "BenchmarkClip.h"
#include "Core/Core.h"
#include "Core/CoreDataSource.h"
#include "CorrectionData/Container/ManagedContainer.h"
#include "CorrectionFile/Parser/Parser.h"
#include "CorrectionFile/Reader/Reader.h"
#include "MetadataDatabase/CsvStringBasedMetadataDatabase.h"
#include "RecordingFormatDatabase/CsvStringBasedRecordingFormatDatabase.h"

namespace {

template <typename Operation>
double milliseconds(const Operation& operation) {
    const auto begin = std::chrono::steady_clock::now();
    operation();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

/// Of this program alone; getrusage would begin with what its parent used.
long peakKibibytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (long peak = 0; word == "VmHWM:" && status >> peak) return peak;
    throw std::runtime_error("/proc/self/status names no peak memory.");
}

nlohmann::json startUp(const std::string& path) {
    nlohmann::json result;
    result["recordingFormats"] =
        milliseconds([] { RecordingFormatDatabase::CsvStringBasedRecordingFormatDatabase::sharedInstance(); });
    result["metadataKeys"] = milliseconds([] { MetadataDatabase::CsvStringBasedMetadataDatabase::sharedInstance(); });
    result["correctionFile"] = milliseconds([&] {
        std::string text;
        CorrectionData::Content content;
        CorrectionFile::Reader().readFile(path, text);
        CorrectionFile::Parser().parse(text, content);
    });
    return result;
}

class ParsedFile : public CorrectionData::ManagedContainerDataSource {
public:
    explicit ParsedFile(std::shared_ptr<CorrectionData::Content> content) : m_content(std::move(content)) {}

    void shareContent(const std::string&, std::shared_ptr<CorrectionData::Content>& content) override {
        content = m_content;
    }

    void shareContent(const std::string&, const std::string&,
                      std::shared_ptr<CorrectionData::Content>& content) override {
        content = m_content;
    }

private:
    std::shared_ptr<CorrectionData::Content> m_content;
};

nlohmann::json correctionFile(const std::string& path) {
    nlohmann::json result;
    const long before = peakKibibytes();
    auto content = std::make_shared<CorrectionData::Content>();
    result["milliseconds"] = milliseconds([&] {
        std::string text;
        CorrectionFile::Reader().readFile(path, text);
        CorrectionFile::Parser().parse(text, *content);
    });
    result["bytes"] = std::filesystem::file_size(path);
    result["peakBytes"] = (peakKibibytes() - before) * 1024;
    const auto frames = static_cast<unsigned int>(content->frames.size());
    result["frames"] = frames;

    CorrectionData::ManagedContainer container("/clip/A001C001.exr", std::make_shared<ParsedFile>(content));
    std::mt19937 random(1);
    CorrectionData::Frame frame;
    constexpr int lookUps = 2000;
    result["lookUpByNumberMicroseconds"] =
        milliseconds([&] {
            for (int i = 0; i < lookUps; i++) container.frameData(static_cast<unsigned int>(random() % frames), frame);
        }) *
        1e3 / lookUps;
    result["lookUpByTimecodeMicroseconds"] =
        milliseconds([&] {
            for (int i = 0; i < lookUps; i++) {
                // Timecodes go round after a day.
                Timecode::Timecode timecode("00:00:00:00", 24.0f);
                timecode += static_cast<unsigned int>(random() % std::min(frames, 2073600u));
                container.frameData(timecode, frame);
            }
        }) *
        1e3 / lookUps;
    return result;
}

/// A still camera's worth of answers: one frame, its correction file named.
class OneFrame : public Core::CoreDataSource {
public:
    OneFrame(const std::string& correctionFile, unsigned int width, unsigned int height, bool isDistortion)
        : m_correctionFile(correctionFile), m_width(width), m_height(height), m_isDistortion(isDistortion) {}

    bool shouldPerformShadingCorrection(Core::ShadingCorrectionParameter& parameter) const override {
        if (!m_isDistortion) parameter = {};
        return !m_isDistortion;
    }

    bool shouldPerformDistortionCorrection(Core::DistortionCorrectionParameter& parameter) const override {
        if (m_isDistortion) parameter = {};
        return m_isDistortion;
    }

    bool frameMetadata(char*, unsigned long) const override { return false; }

    bool correctionFilePath(char* path, unsigned long capacity) const override {
        return copy(m_correctionFile, path, capacity);
    }

    bool clipFileName(char* name, unsigned long capacity) const override { return copy("A001C001", name, capacity); }

    bool clipFilePath(char*, unsigned long) const override { return false; }

    bool frameData(Core::FrameData& frameData) const override {
        frameData = {};
        frameData.width = m_width;
        frameData.height = m_height;
        return true;
    }

    bool recordingFormat(RecordingFormatDatabase::RecordingFormat&) const override { return false; }

private:
    static bool copy(const std::string& text, char* to, unsigned long capacity) {
        if (text.size() + 1 > capacity) return false;
        std::memcpy(to, text.c_str(), text.size() + 1);
        return true;
    }

    std::string m_correctionFile;
    unsigned int m_width, m_height;
    bool m_isDistortion;
};

nlohmann::json firstFrame(const std::string& path, unsigned int width, unsigned int height) {
    const std::size_t count = std::size_t{width} * height * 4;
    const std::vector<float> input(count, 0.5f);
    std::vector<float> output(count);
    const auto render = [&](bool isDistortion) {
        Core::Core core(std::make_unique<OneFrame>(path, width, height, isDistortion));
        if (core.render(input.data(), output.data(), count * sizeof(float))) return;
        char text[4096] = "The frame could not be rendered.";
        core.briefErrorDescription(text, sizeof(text));
        throw std::runtime_error(text);
    };
    nlohmann::json result;
    result["firstDistortion"] = milliseconds([&] { render(true); });
    result["firstShading"] = milliseconds([&] { render(false); });
    result["nextDistortion"] = milliseconds([&] { render(true); });
    result["nextShading"] = milliseconds([&] { render(false); });
    return result;
}

} // namespace

int main(int argumentCount, char** arguments) {
    std::string path;
    unsigned int frames = 1000;
    int width = 4096, height = 2160;
    CLI::App app("Times what a frame costs beside its rendering; prints JSON.");
    app.require_subcommand(1);
    const auto command = [&](const char* name, const char* description) {
        CLI::App* const added = app.add_subcommand(name, description);
        added->add_option("file", path, "the correction file")->required();
        return added;
    };
    CLI::App* const make = command("make-correction-file", "Write a correction file.");
    make->add_option("--frames", frames)->check(CLI::Range(1, 10000000));
    CLI::App* const start = command("start-up", "Time the databases and the parser in a fresh process.");
    CLI::App* const parse = command("correction-file", "Time reading and looking up.");
    CLI::App* const first = command("first-frame", "Time the first frame of a process.");
    for (CLI::App* const sized : {make, first}) {
        sized->add_option("--width", width, "px")->check(CLI::Range(1, 16384));
        sized->add_option("--height", height, "px")->check(CLI::Range(1, 16384));
    }
    CLI11_PARSE(app, argumentCount, arguments);
    try {
        if (make->parsed()) BenchmarkClip::writeCorrectionFile(path, width, height, frames);
        if (start->parsed()) std::cout << startUp(path).dump() << '\n';
        if (parse->parsed()) std::cout << correctionFile(path).dump() << '\n';
        if (first->parsed())
            std::cout << firstFrame(path, static_cast<unsigned int>(width), static_cast<unsigned int>(height)).dump()
                      << '\n';
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << '\n';
        return 3;
    }
}
