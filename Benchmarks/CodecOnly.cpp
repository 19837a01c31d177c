// Decodes frames into floats, does nothing to them and encodes them again as half floats, with OpenEXR as it comes and
// on one thread: the processor time that a job spends on the stock codec alone. Every frame goes into a file of its
// own, as a job's frames do: writing into the same file again and again would spare the system fresh pages for it.
// Prints one JSON object.
#include <CLI/CLI.hpp>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ExrClip.h"
#include "HalfConversion.h"
#include "ProcessorTime.h"

int main(int argumentCount, char** arguments) {
    std::vector<std::string> files;
    std::string output, compression = "zip";
    CLI::App app("Decodes half-float frames and encodes them again; prints the processor time of both as JSON.");
    app.add_option("files", files)->required();
    app.add_option("--output", output, "folder for the frames written")->required();
    app.add_option("--compression", compression);
    CLI11_PARSE(app, argumentCount, arguments);
    try {
        const Imf::Compression method = ExrClip::compression(compression);
        std::vector<double> decode, encode;
        ExrClip::Frame frame;
        std::vector<float> floats;
        const auto toHalf = [&] {
            frame.values.resize(floats.size());
            Image::floatToHalf(floats.data(), reinterpret_cast<std::uint16_t*>(frame.values.data()), floats.size());
        };
        // Touches the pages, which a program keeps.
        ExrClip::read(files.front(), frame, floats);
        toHalf();
        for (const std::string& file : files) {
            const double begin = processorMilliseconds();
            ExrClip::read(file, frame, floats);
            const double middle = processorMilliseconds();
            toHalf();
            ExrClip::write(std::filesystem::path(output) / std::filesystem::path(file).filename(), frame, method);
            decode.push_back(middle - begin);
            encode.push_back(processorMilliseconds() - middle);
        }
        std::cout << nlohmann::json{{"decode", decode}, {"encode", encode}}.dump() << '\n';
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << '\n';
        return 4;
    }
}
