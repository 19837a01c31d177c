#include "Commands.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "RecordingFormatDatabase/CsvStringBasedRecordingFormatDatabase.h"
#include "RecordingFormatDatabase/RecordingFormatDatabase.h"
#include "Report/Failure.h"
#include "Report/Json.h"
#include "Report/PrintableText.h"

namespace Program {

using namespace Tools;

namespace {

using Database = RecordingFormatDatabase::RecordingFormatDatabase;
using Formats = std::map<std::string, RecordingFormatDatabase::RecordingFormat>;
using nlohmann::ordered_json;

/// Width of a column of text; names may hold multi-byte characters no more than the table does: none.
std::size_t widthOf(const std::vector<std::string>& names) {
    std::size_t width = 0;
    for (const std::string& name : names) width = std::max(width, name.size());
    return width;
}

Formats formatsOf(const Database& database, const std::string& maker, const std::string& model) {
    Formats formats;
    database.recordingFormats(maker, model, formats);
    return formats;
}

std::vector<std::string> modelsOf(const Database& database, const std::string& maker) {
    std::vector<std::string> models;
    database.cameraModels(maker, models);
    return models;
}

/// Numbers as the shortest text that reads back to the same float: 13.2, not 13.199999809265137.
double shortest(float value) { return std::stod(fmt::format("{}", value)); }

ordered_json toJson(const Formats& formats) {
    ordered_json list = ordered_json::array();
    for (const auto& [name, format] : formats) {
        list.push_back({{"name", name},
                        {"imageAreaWidth", shortest(format.imageAreaWidth)},
                        {"imageAreaHeight", shortest(format.imageAreaHeight)},
                        {"clipResolutionWidth", format.clipResolutionWidth},
                        {"clipResolutionHeight", format.clipResolutionHeight},
                        {"imageRadius", shortest(format.imageRadius)}});
    }
    return list;
}

/// The same layout for a model, a maker and the whole table.
void printMakers(const ordered_json& makers) { fmt::print("{}\n", jsonText({{"version", 1}, {"makers", makers}})); }

/// As the table spells it; the look-up minds no letter case.
std::string tableSpelling(const std::vector<std::string>& names, const std::string& name) {
    const auto found =
        std::find_if(names.begin(), names.end(), [&](const std::string& known) { return boost::iequals(known, name); });
    return found == names.end() ? name : *found;
}

void printFormats(const Formats& formats) {
    std::vector<std::string> names;
    for (const auto& [name, format] : formats) names.push_back(name);
    const std::size_t width = std::max<std::size_t>(widthOf(names), 6);
    fmt::print("{:<{}}  {:>17}  {:>15}  {:>12}\n", "Format", width, "Image area [mm]", "Clip [px]", "Radius [mm]");
    for (const auto& [name, format] : formats) {
        fmt::print("{:<{}}  {:>17}  {:>15}  {:>12}\n", name, width,
                   fmt::format("{} x {}", format.imageAreaWidth, format.imageAreaHeight),
                   fmt::format("{} x {}", format.clipResolutionWidth, format.clipResolutionHeight),
                   fmt::format("{:.3f}", format.imageRadius));
    }
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

/// `formats`: the built-in recording format table.
class FormatsCommand : public Command {
public:
    std::string name() const override { return "formats"; }
    std::string summary() const override { return "List the built-in camera recording formats"; }
    std::string example() const override;
    void declareOptions(CLI::App& app) override;
    ExitCode run() override;

private:
    std::string m_maker; ///< empty: all makers
    std::string m_model; ///< empty: all models of the maker
    bool m_asJson = false;
};

} // namespace

std::string FormatsCommand::example() const {
    return "  lenscorrect formats                          manufacturers\n"
           "  lenscorrect formats ARRI                     models of a manufacturer\n"
           "  lenscorrect formats ARRI \"ALEXA Mini\"        formats of a model";
}

void FormatsCommand::declareOptions(CLI::App& app) {
    app.add_option("MAKER", m_maker, "Camera manufacturer, not case-sensitive");
    app.add_option("MODEL", m_model, "Camera model, not case-sensitive");
    app.add_flag("--json", m_asJson, "Print JSON (Docs/schemas/formats.json), always down to the formats");
}

ExitCode FormatsCommand::run() {
    const Database& database = RecordingFormatDatabase::CsvStringBasedRecordingFormatDatabase::sharedInstance();
    std::vector<std::string> knownMakers;
    database.cameraManufacturers(knownMakers);
    try {
        if (!m_model.empty()) {
            const Formats formats = formatsOf(database, m_maker, m_model);
            if (m_asJson) {
                const std::string model = tableSpelling(modelsOf(database, m_maker), m_model);
                printMakers({{tableSpelling(knownMakers, m_maker), {{model, toJson(formats)}}}});
            } else {
                printFormats(formats);
            }
            return ExitCode::Done;
        }
        const std::vector<std::string> makers = m_maker.empty() ? knownMakers : std::vector<std::string>{m_maker};
        ordered_json everything = ordered_json::object();
        for (const std::string& maker : makers) {
            const std::vector<std::string> models = modelsOf(database, maker);
            std::size_t formatCount = 0;
            for (const std::string& model : models) {
                const Formats formats = formatsOf(database, maker, model);
                formatCount += formats.size();
                if (m_asJson) {
                    everything[tableSpelling(knownMakers, maker)][model] = toJson(formats);
                } else if (!m_maker.empty()) {
                    fmt::print("{:<{}}  {}\n", model, widthOf(models), counted(formats.size(), "format"));
                }
            }
            if (!m_asJson && m_maker.empty()) {
                fmt::print("{:<{}}  {}, {}\n", maker, widthOf(makers), counted(models.size(), "model"),
                           counted(formatCount, "format"));
            }
        }
        if (m_asJson) printMakers(everything);
        return ExitCode::Done;
    } catch (const RecordingFormatDatabase::CameraManufacturerNotFoundException&) {
        refuse(fmt::format("Camera maker \"{}\" is not in the table; known are {}.", m_maker, joined(knownMakers)));
    } catch (const RecordingFormatDatabase::CameraManufacturerModelMismatchException&) {
        refuse(fmt::format("Camera model \"{}\" of {} is not in the table; known are {}.", m_model, m_maker,
                           joined(modelsOf(database, m_maker))));
    }
}

std::unique_ptr<Command> makeFormatsCommand() { return std::make_unique<FormatsCommand>(); }

} // namespace Program
