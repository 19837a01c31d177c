#include "MetadataSidecar.h"

#include <gtest/gtest.h>

#include "ImageError.h"
#include "Support/RawExr.h"
#include "Support/TemporaryFolder.h"

namespace {

using namespace Image;

class Sidecar : public testing::Test {
protected:
    MetadataSidecar sidecar(const std::string& json) {
        writeBytes(path, json);
        return MetadataSidecar(path);
    }
    std::string complaint(const std::string& json) {
        try {
            sidecar(json);
        } catch (const ImageError& error) {
            return std::string(error.what()).substr(path.size() + 2);
        }
        return "none";
    }
    std::string text(const Metadata& values, const std::string& key) {
        const auto found = values.find(key);
        return found == values.end() ? "(absent)" : metadataText(found->second);
    }

    Support::TemporaryFolder folder;
    const std::string path = folder.path("A001.metadata.json");
};

TEST_F(Sidecar, GivesTextNumbersAndLists) {
    const Metadata values =
        sidecar(R"({"r3d/reel_id_full": "A001", "n": 3, "f": 2.5, "on": true, "l": [1, 2], "m": [1, 2.5]})").values(1);
    EXPECT_EQ(std::get<std::string>(values.at("r3d/reel_id_full")), "A001");
    EXPECT_EQ(std::get<std::int64_t>(values.at("n")), 3);
    EXPECT_EQ(std::get<double>(values.at("f")), 2.5);
    EXPECT_EQ(std::get<std::int64_t>(values.at("on")), 1);
    EXPECT_EQ(std::get<std::vector<int>>(values.at("l")), (std::vector<int>{1, 2}));
    EXPECT_EQ(std::get<std::vector<double>>(values.at("m")), (std::vector<double>{1, 2.5}));
}

TEST_F(Sidecar, LetsAFrameOverrideTheClip) {
    const MetadataSidecar both = sidecar(R"({"a": "clip", "b": "clip", "frames": {"1001": {"a": "frame"}}})");
    EXPECT_EQ(text(both.values(1001), "a"), "frame");
    EXPECT_EQ(text(both.values(1001), "b"), "clip");
    EXPECT_EQ(text(both.values(1002), "a"), "clip");
    EXPECT_EQ(text(both.values(1001), "frames"), "(absent)");
}

TEST_F(Sidecar, NamesTheLineThatIsNotJson) {
    EXPECT_EQ(complaint("{\n\"a\": 1,\n\"b\": }"), "is not valid JSON (line 3); expected {\"maker key\": value, ...}");
}

TEST_F(Sidecar, RefusesANumberThatNoNumberCanHold) {
    EXPECT_EQ(complaint("{\"a\": 1e999}"), "has a number that is too large");
}

TEST_F(Sidecar, MustBeAnObject) { EXPECT_EQ(complaint("[1]"), "must be a JSON object: {\"maker key\": value, ...}"); }

TEST_F(Sidecar, NamesTheKeyWhoseValueIsNeitherTextNorNumbers) {
    EXPECT_EQ(complaint(R"({"a": {"b": 1}})"), "\"a\" must be text, a number, true, false or a list of numbers");
    EXPECT_EQ(complaint(R"({"a": ["b"]})"), "\"a\" must be text, a number, true, false or a list of numbers");
}

TEST_F(Sidecar, NamesAFrameThatIsNoNumber) {
    EXPECT_EQ(complaint(R"({"frames": {"1001a": {}}})"), "\"frames\" has \"1001a\", which is not a frame number");
    EXPECT_EQ(complaint(R"({"frames": [1]})"), "\"frames\" must be an object: {\"1001\": {...}, ...}");
    EXPECT_EQ(complaint(R"({"frames": {"1001": 5}})"), "frame 1001 must be an object of values");
}

TEST_F(Sidecar, SurvivesDeepNesting) {
    EXPECT_NE(complaint("{\"a\": " + std::string(1 << 20, '[') + std::string(1 << 20, ']') + "}"), "none");
}

TEST_F(Sidecar, ThatIsMissingSaysSo) { EXPECT_THROW(MetadataSidecar(folder.path("none.metadata.json")), ImageError); }

TEST_F(Sidecar, LiesBesideItsClip) {
    EXPECT_EQ(MetadataSidecar::pathFor("/d/A001.mov"), "/d/A001.metadata.json");
    EXPECT_EQ(MetadataSidecar::pathFor("/d.x/A001_C002.%04d.exr"), "/d.x/A001_C002.metadata.json");
    EXPECT_EQ(MetadataSidecar::pathFor("A001.####.dpx"), "A001.metadata.json");
    EXPECT_EQ(MetadataSidecar::pathFor("A001_@@@@.dpx"), "A001.metadata.json");
    EXPECT_EQ(MetadataSidecar::pathFor("A001.1001.exr"), "A001.metadata.json");
    EXPECT_EQ(MetadataSidecar::pathFor("A001_1001.exr"), "A001.metadata.json");
    EXPECT_EQ(MetadataSidecar::pathFor("A001.exr"), "A001.metadata.json");
    EXPECT_EQ(MetadataSidecar::pathFor("1001.exr"), "1001.metadata.json");
}

} // namespace
