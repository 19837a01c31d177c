#include "Farm/OpenCueJob.h"

#include <fmt/format.h>

#include "Clip/FrameRange.h"
#include "Farm/FarmJob.h"

namespace Tools {
namespace {

std::string escaped(const std::string& text) {
    std::string result;
    for (const char character : text) {
        switch (character) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += character;
        }
    }
    return result;
}

std::string layer(const FarmJob& job, const char* name, const char* type, const std::string& step,
                  const std::string& range, std::size_t chunk) {
    const std::string cores =
        job.cores == 0 ? ""
                       : fmt::format("        <cores>{}</cores>\n        <threadable>True</threadable>\n", job.cores);
    return fmt::format(
        "      <layer name=\"{}\" type=\"{}\">\n"
        "        <cmd>{}</cmd>\n"
        "        <range>{}</range>\n"
        "        <chunk>{}</chunk>\n"
        "{}"
        "        <services>\n          <service>shell</service>\n        </services>\n"
        "      </layer>\n",
        name, type, escaped("bash " + shellQuoted(job.scriptPath()) + " " + step), range, chunk, cores);
}

} // namespace

std::string OpenCueJob::xml(const FarmJob& job) const {
    const std::string name = escaped(job.name);
    return "<?xml version=\"1.0\"?>\n"
           // The server knows the layout by this address and fetches nothing.
           "<!DOCTYPE spec SYSTEM \"http://localhost:8080/spcue/dtd/cjsl-1.15.dtd\">\n"
           "<spec>\n" +
           fmt::format(
               "  <show>{}</show>\n  <shot>{}</shot>\n  <user>{}</user>\n"
               "  <job name=\"{}\">\n    <layers>\n",
               escaped(show), escaped(shot), escaped(user), name) +
           layer(job, "warm", "Util", "warm", "1", 1) +
           layer(job, "render", "Render", "frames #FRAMESPEC#", FrameRange::string(job.frames), job.framesPerChunk) +
           layer(job, "summary", "Post", "summary", "1", 1) +
           fmt::format(
               "    </layers>\n  </job>\n"
               "  <depends>\n    <depend type=\"LAYER_ON_LAYER\">\n"
               "      <depjob>{0}</depjob>\n      <deplayer>render</deplayer>\n"
               "      <onjob>{0}</onjob>\n      <onlayer>warm</onlayer>\n"
               "    </depend>\n  </depends>\n</spec>\n",
               name);
}

} // namespace Tools
