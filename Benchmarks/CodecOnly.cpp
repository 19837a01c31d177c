// Decodes frames and encodes them again, with OpenEXR as it comes and on one thread: the processor time that a job
// spends on the stock codec alone. Prints one JSON object.
#include <CLI/CLI.hpp>
#include <ctime>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ExrClip.h"

namespace {

double processorMilliseconds() {
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

} // namespace

int main(int argumentCount, char** arguments) {
    std::vector<std::string> files;
    std::string output, compression = "zip";
    CLI::App app("Decodes half-float frames and encodes them again; prints the processor time of both as JSON.");
    app.add_option("files", files)->required();
    app.add_option("--output", output, "file that every frame is written to")->required();
    app.add_option("--compression", compression);
    CLI11_PARSE(app, argumentCount, arguments);
    try {
        const Imf::Compression method = ExrClip::compression(compression);
        std::vector<double> decode, encode;
        ExrClip::Frame frame;
        ExrClip::read(files.front(), frame); // touches the frame's pages, which a program keeps
        for (const std::string& file : files) {
            const double begin = processorMilliseconds();
            ExrClip::read(file, frame);
            const double middle = processorMilliseconds();
            ExrClip::write(output, frame, method);
            decode.push_back(middle - begin);
            encode.push_back(processorMilliseconds() - middle);
        }
        std::cout << nlohmann::json{{"decode", decode}, {"encode", encode}}.dump() << '\n';
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << '\n';
        return 4;
    }
}
