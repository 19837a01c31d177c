#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "DDImage/Substitute/Graph.h"
#include "LensDistortionCorrection.h"
#include "Support/CorrectionFile.h"
#include "Support/ShotFolder.h"
#include "Support/TestClip.h"

using namespace DD::Image;

namespace {

class LensCorrectionKnobs : public testing::Test {
protected:
    LensCorrectionKnobs() {
        read->setSource(clip);
        graph.connect(node, 0, read);
    }

    double value(const char* name) const { return graph.knob(node, name)->get_value(); }
    std::pair<double, double> remaining() const {
        return {value("inputOverscan::remainingResolution::width"),
                value("inputOverscan::remainingResolution::height")};
    }
    bool isVisible(const char* name) const { return graph.knob(node, name)->isVisible(); }
    bool isEnabled(const char* name) const { return graph.knob(node, name)->isEnabled(); }
    void enterFormat(double width, double height, int resolutionWidth, int resolutionHeight) {
        graph.userChange(node, "recordingFormat::manualSelection", 1);
        graph.userChange(node, "recordingFormat::imageAreaSize::width", width);
        graph.userChange(node, "recordingFormat::imageAreaSize::height", height);
        graph.userChange(node, "recordingFormat::clipResolution::width", resolutionWidth);
        graph.userChange(node, "recordingFormat::clipResolution::height", resolutionHeight);
        graph.openPanel(node);
    }

    Graph graph;
    std::shared_ptr<TestClip> clip = std::make_shared<TestClip>(2000, 1000);
    Read* read = graph.createRead();
    Op* node = graph.create("OrvexLensDistortionCorrection");
};

const char* typeName(Knob::Type type) {
    switch (type) {
        case Knob::Enumeration:
            return "menu";
        case Knob::Float:
            return "float";
        case Knob::Int:
            return "int";
        case Knob::Bool:
            return "bool";
        case Knob::File:
            return "file";
        case Knob::Group:
            return "group";
        default:
            return "special";
    }
}

} // namespace

TEST_F(LensCorrectionKnobs, AreDeclaredAsTheTableSays) {
    std::string table;
    for (const Knob* const knob : graph.knobs(node)) {
        // What the host sets by itself and what the state of other controls decides is left out.
        Knob::FlagMask flags =
            knob->flags() & (Knob::HIDDEN | Knob::NO_ANIMATION | Knob::FORCE_RANGE | Knob::LOG_SLIDER);
        if (knob->is("recordingFormat::imageDiameter")) flags |= knob->flags() & Knob::DISABLED;
        if (knob->is("recordingFormat::manualSelection")) flags |= knob->flags() & Knob::STARTLINE;
        char line[300];
        std::snprintf(line, sizeof line, "%s %s \"%s\" %.14g..%.14g 0x%llx\n", typeName(knob->type()),
                      knob->name().c_str(), knob->label().c_str(), knob->minimum(), knob->maximum(),
                      static_cast<unsigned long long>(flags));
        table += std::string(knob->group() ? knob->group()->name() : "-") + ": " + line;
    }
    EXPECT_EQ(table, R"(-: menu correctionMode "Correction Mode" 0..0 0x0
-: menu outputType "Output Type" 0..0 0x40000
-: menu inputOverscan::location "Input Overscan Location" 0..0 0x100
-: float inputOverscan::amount "Overscan Amount [%]" 0..20 0x40100
-: int inputOverscan::remainingResolution::width "Resolution w/o Overscan [px]" 0..0 0x40100
-: int inputOverscan::remainingResolution::height "" 0..0 0x40100
-: group correctionFile "Correction File" 0..0 0x0
correctionFile: file correctionFile::path "Manually Selected File" 0..0 0x0
-: group recordingFormat "Recording Format" 0..0 0x0
recordingFormat: bool recordingFormat::manualSelection "Manual Selection" 0..0 0x1100
recordingFormat: group recordingFormat::imageAreaSize "Image Area Size" 0..0 0x0
recordingFormat::imageAreaSize: float recordingFormat::imageAreaSize::width "Width [mm]" 0..36 0x114
recordingFormat::imageAreaSize: float recordingFormat::imageAreaSize::height "Height [mm]" 0..24 0x110
recordingFormat: group recordingFormat::clipResolution "Clip Resolution" 0..0 0x0
recordingFormat::clipResolution: int recordingFormat::clipResolution::width "Width [px]" 0..7680 0x110
recordingFormat::clipResolution: int recordingFormat::clipResolution::height "Height [px]" 0..4320 0x110
recordingFormat: float recordingFormat::imageDiameter "Image Diameter [mm]" 0..43.266616821289 0x190
)");
}

TEST_F(LensCorrectionKnobs, OfferBothOverscanLocations) {
    EXPECT_EQ(graph.knob(node, "inputOverscan::location")->entries(),
              (std::vector<std::string>{"Bounding Box", "Format"}));
}

TEST_F(LensCorrectionKnobs, KeepTheRemainingHeightOnTheLineOfTheWidth) {
    EXPECT_FALSE(graph.knob(node, "inputOverscan::remainingResolution::height")->flag(Knob::STARTLINE));
}

TEST_F(LensCorrectionKnobs, StartAtZero) {
    for (const Knob* const knob : graph.knobs(node)) {
        EXPECT_EQ(knob->get_value(), 0.0) << knob->name();
        EXPECT_EQ(knob->get_text(), nullptr) << knob->name();
    }
}

TEST_F(LensCorrectionKnobs, ExplainThemselves) {
    const std::pair<const char*, const char*> tooltips[] = {
        {"inputOverscan::location",
         "Select the location of the overscan which is present in the input image.\n\nChoose <b>Bounding Box</b> if "
         "the overscan area is represented by the BBox of the input image.\n\nChoose <b>Format</b> if the overscan "
         "area is present in the format of the input image."},
        {"inputOverscan::amount",
         "Set the amount of the overscan.\n\nBoth the width and height of the remaining resolution will be "
         "automatically updated.\n\n<b>Please note</b> that the remaining resolution will be calculated as follows:\n  "
         "Remaining_Width = Format_Width / (1 + Overscan_Amount / 100)\n  Remaining_Height = Format_Height / (1 + "
         "Overscan_Amount / 100)"},
        {"inputOverscan::remainingResolution::width",
         "Set the width of the remaining resolution without overscan.\n\nThe corresponding height will be "
         "automatically updated to retain the aspect ratio of the recording format."},
        {"inputOverscan::remainingResolution::height",
         "Set the height of the remaining resolution without overscan.\n\nThe corresponding width will be "
         "automatically updated to retain the aspect ratio of the recording format."},
        {"recordingFormat::imageAreaSize::width",
         "This is the physical width of the sub-area of the sensor covered by the recording format."},
        {"recordingFormat::imageAreaSize::height",
         "This is the physical height of the sub-area of the sensor covered by the recording format."},
        {"recordingFormat::clipResolution::width",
         "This is the width of the clip resolution captured in the recording format."},
        {"recordingFormat::clipResolution::height",
         "This is the height of the clip resolution captured in the recording format."},
        {"recordingFormat::imageDiameter",
         "This is the physical diameter of the sub-area of the sensor covered by the recording format."},
    };
    for (const auto& [name, tooltip] : tooltips) EXPECT_EQ(graph.knob(node, name)->tooltip(), tooltip) << name;
}

TEST_F(LensCorrectionKnobs, ExplainWhereCorrectionFilesAreFound) {
    EXPECT_EQ(graph.knob(node, "correctionFile::path")->tooltip(),
              "Select the path of the ORVEX lens correction file manually if the plug-in is not able to find it "
              "automatically by itself.\n\n<b>General Information</b>\nIn order to get access to the metadata stored "
              "in the ORVEX lens correction file with the extension <b>olcf</b>, the plug-in needs to know the "
              "location of the file. The plug-in is capable of finding the location of the file automatically by "
              "itself, but only if it is stored at one of the expected locations. If the file is stored at another "
              "location, the user needs to manually select the correction file to provide its location to the "
              "plug-in.\n\nFor the plug-in to automatically find the location, the correction file is expected to be "
              "at one of the following locations:\n\n1. File is located directly in the same directory as the video "
              "file.\n2. File is located in one of the subdirectories contained in the same directory as the video "
              "file. Please note that the subdirectory depth for this case is limited to one.\n3. File is located "
              "directly in one of the parent directories. Please note that the number of parent directories is limited "
              "to five.\n4. File is located in one of the subdirectories contained in one of the parent directories. "
              "Please note that the subdirectory depth for this case is limited to two.");
}

TEST_F(LensCorrectionKnobs, ExplainWhenToEnterTheRecordingFormat) {
    EXPECT_EQ(graph.knob(node, "recordingFormat::manualSelection")->tooltip(),
              "The plug-in provides information about the sub-area of the sensor covered by the recording format, "
              "along with its size and resolution. This information is stored in the ORVEX lens correction file and "
              "usually only displayed to the user.\n\nIf the recording format information is missing, however, you "
              "will be asked to provide the information by yourself. To do that, please set the checkmark for manual "
              "selection of the format and fill in the required data.");
}

// --- Visibility ---

TEST_F(LensCorrectionKnobs, HideTheOverscanWhileItIsInTheBox) {
    EXPECT_FALSE(isVisible("inputOverscan::amount"));
    EXPECT_FALSE(isVisible("inputOverscan::remainingResolution::width"));
    EXPECT_FALSE(isVisible("inputOverscan::remainingResolution::height"));
}

TEST_F(LensCorrectionKnobs, ShowTheOverscanWhileItIsInTheFormat) {
    graph.userChange(node, "inputOverscan::location", "Format");
    EXPECT_TRUE(isVisible("inputOverscan::amount"));
    EXPECT_TRUE(isVisible("inputOverscan::remainingResolution::width"));
    EXPECT_TRUE(isVisible("inputOverscan::remainingResolution::height"));
}

TEST_F(LensCorrectionKnobs, HideTheOverscanForAnyLocationButTheFormat) {
    for (const double location : {0.0, 2.0, -1.0}) {
        graph.userChange(node, "inputOverscan::location", "Format");
        graph.userChange(node, "inputOverscan::location", location);
        EXPECT_FALSE(isVisible("inputOverscan::amount")) << location;
        EXPECT_FALSE(isVisible("inputOverscan::remainingResolution::width")) << location;
        EXPECT_FALSE(isVisible("inputOverscan::remainingResolution::height")) << location;
    }
}

TEST_F(LensCorrectionKnobs, FollowALocationThatComesFromASavedScript) {
    graph.knob(node, "inputOverscan::location")->from_script("Format");
    graph.validate(node);
    EXPECT_TRUE(isVisible("inputOverscan::amount"));
}

TEST_F(LensCorrectionKnobs, EnableTheFormatOnlyForEntryByHand) {
    const char* const names[] = {"recordingFormat::imageAreaSize::width", "recordingFormat::imageAreaSize::height",
                                 "recordingFormat::clipResolution::width", "recordingFormat::clipResolution::height"};
    for (const char* const name : names) EXPECT_FALSE(isEnabled(name)) << name;
    graph.userChange(node, "recordingFormat::manualSelection", 1);
    for (const char* const name : names) EXPECT_TRUE(isEnabled(name)) << name;
    EXPECT_FALSE(isEnabled("recordingFormat::imageDiameter"));
    graph.userChange(node, "recordingFormat::manualSelection", 0);
    for (const char* const name : names) EXPECT_FALSE(isEnabled(name)) << name;
}

// --- Overscan coupling ---

TEST_F(LensCorrectionKnobs, WorkOutTheRemainingSizeFromTheAmount) {
    graph.userChange(node, "inputOverscan::amount", 10);
    EXPECT_EQ(remaining(), std::make_pair(1818.0, 909.0));
}

TEST_F(LensCorrectionKnobs, WorkOutHeightAndAmountFromTheRemainingWidth) {
    graph.userChange(node, "inputOverscan::remainingResolution::width", 1600);
    EXPECT_EQ(remaining(), std::make_pair(1600.0, 800.0));
    EXPECT_EQ(value("inputOverscan::amount"), 25.0);
}

TEST_F(LensCorrectionKnobs, WorkOutTheAmountInSinglePrecision) {
    graph.userChange(node, "inputOverscan::remainingResolution::width", 1818);
    EXPECT_EQ(value("inputOverscan::amount"), static_cast<double>(182.0f / 1818.0f * 100.0f));
}

TEST_F(LensCorrectionKnobs, WorkOutWidthAndAmountFromTheRemainingHeight) {
    graph.userChange(node, "inputOverscan::remainingResolution::height", 500);
    EXPECT_EQ(remaining(), std::make_pair(1000.0, 500.0));
    EXPECT_EQ(value("inputOverscan::amount"), 100.0);
}

TEST_F(LensCorrectionKnobs, RoundTheRemainingSizeHalfAwayFromZero) {
    clip->format = Format(1001, 1001);
    clip->box = clip->format;
    read->setSource(clip);
    graph.userChange(node, "inputOverscan::amount", 100);
    EXPECT_EQ(remaining(), std::make_pair(501.0, 501.0));
}

TEST_F(LensCorrectionKnobs, LeaveTheOverscanAloneWhenOtherControlsChange) {
    graph.userChange(node, "inputOverscan::amount", 10);
    graph.knob(node, "inputOverscan::remainingResolution::width")->set_value(7);
    graph.userChange(node, "correctionMode", "Distort");
    EXPECT_EQ(value("inputOverscan::remainingResolution::width"), 7.0);
}

TEST_F(LensCorrectionKnobs, FollowTheInputsFormatWhileThePanelIsOpen) {
    graph.userChange(node, "inputOverscan::amount", 25);
    clip->format = Format(1000, 500);
    read->setSource(clip);
    graph.openPanel(node);
    EXPECT_EQ(remaining(), std::make_pair(800.0, 400.0));
    clip->format = Format(500, 250);
    read->setSource(clip);
    graph.updateUI(node);
    EXPECT_EQ(remaining(), std::make_pair(400.0, 200.0)) << "again and again";
}

TEST_F(LensCorrectionKnobs, HaveNoRemainingSizeWithoutAnImage) {
    graph.userChange(node, "inputOverscan::amount", 10);
    graph.connect(node, 0, nullptr);
    graph.userChange(node, "inputOverscan::amount", 20);
    EXPECT_EQ(remaining(), std::make_pair(0.0, 0.0));
    EXPECT_EQ(value("inputOverscan::amount"), 20.0);
    graph.knob(node, "inputOverscan::remainingResolution::width")->set_value(7);
    graph.userChange(node, "correctionMode", "Distort");
    EXPECT_EQ(remaining(), std::make_pair(0.0, 0.0)) << "whichever control changes";
}

TEST_F(LensCorrectionKnobs, ShowARemainingSizeThatIsNotFiniteAsTheNodesError) {
    graph.userChange(node, "inputOverscan::amount", -100);
    EXPECT_EQ(graph.errorText(node),
              "Updating the controls failed: Error in function boost::math::round<float>(float): Value inf can not be "
              "represented in the target integer type.");
}

TEST_F(LensCorrectionKnobs, KeepBeingAskedAfterAChange) {
    graph.userChange(node, "inputOverscan::amount", 10);
    graph.userChange(node, "inputOverscan::amount", 25);
    EXPECT_EQ(remaining(), std::make_pair(1600.0, 800.0));
}

// --- Recording format ---

TEST_F(LensCorrectionKnobs, WorkOutTheDiameterOfTheEnteredFormat) {
    enterFormat(36, 24, 0, 0);
    EXPECT_EQ(value("recordingFormat::imageDiameter"), 43.27);
}

TEST_F(LensCorrectionKnobs, WorkOutTheDiameterWithoutAHeight) {
    enterFormat(36, 0, 3840, 2160);
    EXPECT_EQ(value("recordingFormat::imageDiameter"), 41.3);
    EXPECT_EQ(value("recordingFormat::imageAreaSize::height"), 0.0) << "the control keeps its 0";
}

TEST_F(LensCorrectionKnobs, WorkOutTheDiameterWithoutAWidth) {
    enterFormat(0, 20.25, 3840, 2160);
    EXPECT_EQ(value("recordingFormat::imageDiameter"), 41.3);
    EXPECT_EQ(value("recordingFormat::imageAreaSize::width"), 0.0) << "the control keeps its 0";
}

TEST_F(LensCorrectionKnobs, HaveNoDiameterWithoutTheMissingSide) {
    const double incomplete[][4] = {{36, 0, 3840, 0}, {36, 0, 0, 2160}, {0, 24, 3840, 0}, {0, 24, 0, 2160}};
    for (const auto& format : incomplete) {
        enterFormat(36, 24, 0, 0);
        enterFormat(format[0], format[1], static_cast<int>(format[2]), static_cast<int>(format[3]));
        EXPECT_EQ(value("recordingFormat::imageDiameter"), 0.0);
    }
    EXPECT_EQ(graph.errorText(node), "");
}

TEST_F(LensCorrectionKnobs, ShowTheCorrectionFilesRecordingFormat) {
    const ShotFolder folder;
    CorrectionFile file;
    file.videoFileName = "A001";
    file.clipWidth = "4096";
    file.clipHeight = "2160";
    folder.write("A001.olcf", file.text());
    read->setFilename(folder.path("A001.0001.exr"));
    graph.connect(node, 1, read);
    graph.openPanel(node);
    EXPECT_EQ(graph.errorText(node), "");
    EXPECT_EQ(value("recordingFormat::imageAreaSize::width"), 24.0);
    EXPECT_FLOAT_EQ(static_cast<float>(value("recordingFormat::imageAreaSize::height")), 12.66f);
    EXPECT_EQ(value("recordingFormat::clipResolution::width"), 4096.0);
    EXPECT_EQ(value("recordingFormat::clipResolution::height"), 2160.0);
    EXPECT_EQ(value("recordingFormat::imageDiameter"), 27.13) << "24 and 12.66";
}

TEST_F(LensCorrectionKnobs, KeepTheLastRecordingFormatWithoutAPlate) {
    enterFormat(36, 24, 3840, 2160);
    graph.userChange(node, "recordingFormat::manualSelection", 0);
    graph.knob(node, "recordingFormat::imageDiameter")->set_value(5);
    graph.openPanel(node);
    EXPECT_EQ(graph.errorText(node), "");
    EXPECT_EQ(value("recordingFormat::imageAreaSize::width"), 36.0);
    EXPECT_EQ(value("recordingFormat::imageDiameter"), 43.27);
}

TEST_F(LensCorrectionKnobs, KeepTheEnteredRecordingFormatInSpiteOfACorrectionFile) {
    read->setFilename("/nowhere/A001.0001.exr");
    graph.connect(node, 1, read);
    enterFormat(36, 24, 3840, 2160);
    EXPECT_EQ(graph.errorText(node), "");
    EXPECT_EQ(value("recordingFormat::imageAreaSize::width"), 36.0);
    EXPECT_EQ(value("recordingFormat::imageDiameter"), 43.27);
}

TEST_F(LensCorrectionKnobs, ShowWhyTheRecordingFormatIsNotAvailable) {
    const ShotFolder folder;
    read->setFilename(folder.path("A001.0001.exr"));
    graph.connect(node, 1, read);
    graph.knob(node, "recordingFormat::imageDiameter")->set_value(5);
    graph.openPanel(node);
    EXPECT_EQ(graph.errorText(node), "Header of the metadata is not available. Correction file could not be found.");
    EXPECT_EQ(value("recordingFormat::imageDiameter"), 5.0) << "untouched";
}
