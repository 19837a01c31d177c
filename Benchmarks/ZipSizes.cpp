// What ZIP's two goals make of pictures of several kinds, beside the codec of OpenEXR as it comes (zlib, level 4):
// bytes of the file and processor time of writing it, on one thread. Prints one JSON object.
#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfOutputFile.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "FrameWriter.h"
#include "Noise.h"
#include "ProcessorTime.h"

namespace {

/// Where a sample lies: 0 … 1 from left to right and from top to bottom, and the channel's place.
struct Place {
    float x, y;
    int component;
};
using Samples = std::function<float(const Place&, Noise&)>;

struct Kind {
    std::string name;
    std::vector<std::string> channels;
    Image::PixelType type;
    Samples sample;
};

constexpr float pi = 3.14159265f;

float light(const Place& at) {
    const float across = at.x - 0.5f, down = at.y - 0.5f;
    const float tints[] = {0.6f + 0.4f * across, 0.5f, 0.6f + 0.4f * down};
    return (0.9f - 1.5f * (across * across + down * down)) * tints[at.component];
}

Samples grain(float amount) {
    return [amount](const Place& at, Noise& noise) {
        return at.component == 3 ? 1.0f : light(at) * (1.0f + amount * noise.next());
    };
}

/// How far inside a sphere's outline a place is, in parts of its radius; negative outside.
float inSphere(const Place& at) {
    const float x = (at.x - 0.5f) * 16.0f / 9.0f, y = at.y - 0.5f;
    return 1.0f - std::sqrt(x * x + y * y) / 0.4f;
}

float coverage(const Place& at) { return std::clamp(inSphere(at) * 300.0f + 0.5f, 0.0f, 1.0f); }

/// Premultiplied, without noise: the inside of a sphere, and black around it.
float cg(const Place& at, Noise&) {
    const float alpha = coverage(at);
    return at.component == 3 ? alpha : alpha * light(at) * (0.3f + std::max(inSphere(at), 0.0f));
}

/// Metres: a floor that recedes, with a sphere on it.
float depth(const Place& at, Noise&) {
    const float sphere = inSphere(at);
    return sphere > 0.0f ? 4.0f - std::sqrt(sphere) : 2.0f / (at.y + 0.02f);
}

/// White marks on black, their edges a pixel or two wide, such as lettering and IDs leave.
float matte(const Place& at, Noise&) {
    const float strokes = std::sin(at.x * 90.0f * pi) + std::sin(at.y * 60.0f * pi + 3.0f * std::sin(at.x * 20.0f));
    return std::clamp((strokes - 0.8f) * 20.0f, 0.0f, 1.0f);
}

std::vector<Kind> kinds() {
    using Image::PixelType;
    const std::vector<std::string> rgb = {"R", "G", "B"}, rgba = {"R", "G", "B", "A"};
    return {{"grain of 3 %, alpha of ones, half", rgba, PixelType::Half, grain(0.03f)},
            {"grain of 1 %, half", rgb, PixelType::Half, grain(0.01f)},
            {"grain of 0.2 %, half", rgb, PixelType::Half, grain(0.002f)},
            {"grain of 1 %, float", rgb, PixelType::Float, grain(0.01f)},
            {"grain of 0.1 %, float", rgb, PixelType::Float, grain(0.001f)},
            {"smooth gradients, half", rgb, PixelType::Half, grain(0.0f)},
            {"smooth gradients, float", rgb, PixelType::Float, grain(0.0f)},
            {"clean CG with its alpha, half", rgba, PixelType::Half, cg},
            {"clean CG with its alpha, float", rgba, PixelType::Float, cg},
            {"depth, float", {"Z"}, PixelType::Float, depth},
            {"mattes like lettering, half", rgba, PixelType::Half, matte}};
}

Image::Frame pictureOf(const Kind& kind, int width, int height) {
    Image::Frame frame;
    frame.format = "exr";
    Image::Part& part = frame.parts.emplace_back();
    part.displayWindow = part.dataWindow = {0, 0, width - 1, height - 1};
    for (const std::string& name : kind.channels) part.channels.push_back({.name = name, .type = kind.type});
    part.layOutPlanes();
    part.allocatePixels();
    Noise noise(1);
    Image::Plane& plane = part.planes.front();
    std::vector<float> row(plane.width * plane.components);
    for (std::size_t y = 0; y < plane.height; ++y) {
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] = kind.sample(
                {static_cast<float>(i / plane.components) / static_cast<float>(width),
                 static_cast<float>(y) / static_cast<float>(height), static_cast<int>(i % plane.components)},
                noise);
        plane.rowFromFloat(y, row.data());
    }
    return frame;
}

void writeStock(const std::string& path, const Image::Frame& frame) {
    const Image::Part& part = frame.parts.front();
    const Image::Plane& plane = part.planes.front();
    const Imf::PixelType type = plane.type == Image::PixelType::Half ? Imf::HALF : Imf::FLOAT;
    Imf::Header header(static_cast<int>(plane.width), static_cast<int>(plane.height), 1.0f, Imath::V2f(0, 0), 1.0f,
                       Imf::INCREASING_Y, Imf::ZIP_COMPRESSION);
    header.zipCompressionLevel() = 4;
    Imf::FrameBuffer buffer;
    const std::size_t sample = Image::bytesPerSample(plane.type);
    for (const Image::Channel& channel : part.channels) {
        header.channels().insert(channel.name, Imf::Channel(type));
        // The library takes one type of buffer for reading and writing.
        char* const base = reinterpret_cast<char*>(const_cast<std::uint8_t*>(plane.pixels.data()));
        buffer.insert(channel.name,
                      Imf::Slice(type, base + channel.component * sample, plane.components * sample, plane.rowBytes()));
    }
    Imf::OutputFile file(path.c_str(), header, 0);
    file.setFrameBuffer(buffer);
    file.writePixels(static_cast<int>(plane.height));
}

} // namespace

int main(int argumentCount, char** arguments) {
    std::string folder;
    int width = 4096, height = 2160, rounds = 3;
    CLI::App app("Writes pictures of several kinds as ZIP; prints the files' sizes and the processor time as JSON.");
    app.add_option("folder", folder, "for the files; they are removed again")->required();
    app.add_option("--width", width, "px")->check(CLI::Range(1, 16384));
    app.add_option("--height", height, "px")->check(CLI::Range(1, 16384));
    app.add_option("--rounds", rounds)->check(CLI::Range(1, 1000));
    CLI11_PARSE(app, argumentCount, arguments);
    try {
        const std::string path = (std::filesystem::path(folder) / "zip.exr").string();
        nlohmann::ordered_json answer = nlohmann::ordered_json::array();
        for (const Kind& kind : kinds()) {
            const Image::Frame frame = pictureOf(kind, width, height);
            const std::vector<std::pair<std::string, std::function<void()>>> writers = {
                {"stock", [&] { writeStock(path, frame); }},
                {"fast", [&] { Image::writeFrame(path, frame, {.zip = Image::ZipGoal::Fast}); }},
                {"small", [&] { Image::writeFrame(path, frame, {.zip = Image::ZipGoal::Small}); }}};
            nlohmann::ordered_json result = {{"kind", kind.name}};
            for (int round = 0; round < rounds; ++round)
                for (const auto& [name, write] : writers) {
                    const double begin = processorMilliseconds();
                    write();
                    result[name]["milliseconds"].push_back(processorMilliseconds() - begin);
                    result[name]["bytes"] = std::filesystem::file_size(path);
                    std::filesystem::remove(path);
                }
            answer.push_back(std::move(result));
        }
        std::cout << answer.dump() << '\n';
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << '\n';
        return 4;
    }
}
