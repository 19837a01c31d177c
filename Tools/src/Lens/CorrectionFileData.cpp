#include "Lens/CorrectionFileData.h"

#include <fmt/format.h>

#include <boost/lexical_cast/bad_lexical_cast.hpp>
#include <utility>

#include "CorrectionData/Container/ManagedContainerDataSource.h"
#include "CorrectionFile/Parser/InvalidFormatException.h"
#include "CorrectionFile/Parser/Parser.h"
#include "CorrectionFile/Reader/Reader.h"
#include "Report/Failure.h"

namespace Tools {
namespace {

using CorrectionData::Content;

// Gives a container content that was read already.
class GivenContent : public CorrectionData::ManagedContainerDataSource {
public:
    explicit GivenContent(std::shared_ptr<Content> content) : m_content(std::move(content)) {}
    void shareContent(const std::string&, std::shared_ptr<Content>& content) override { content = m_content; }
    void shareContent(const std::string&, const std::string&, std::shared_ptr<Content>& content) override {
        content = m_content;
    }

private:
    const std::shared_ptr<Content> m_content;
};

} // namespace

CorrectionFileData CorrectionFileData::read(const std::string& path) {
    const auto content = std::make_shared<Content>();
    try {
        std::string text;
        CorrectionFile::Reader().readFile(path, text);
        CorrectionFile::Parser().parse(text, *content);
    } catch (const CorrectionFile::NotReadableException&) {
        refuse(fmt::format("{}: the correction file could not be read; it must be a regular file with read permission.",
                           path));
    } catch (const CorrectionFile::InvalidFormatException& exception) {
        refuse(fmt::format("{}: {}Run \"lenscorrect check\" on it to list every defect.", path,
                           exception.detailedDescription()));
    } catch (const boost::bad_lexical_cast&) {
        refuse(
            fmt::format("{}: a frame line has text where a number belongs. Run "
                        "\"lenscorrect check\" on it to list every defect.",
                        path));
    }
    CorrectionFileData data = correctionFileDataOf(content);
    data.path = path;
    return data;
}

CorrectionFileData correctionFileDataOf(std::shared_ptr<Content> content) {
    Core::ExtendedManagedContainer container("clip", std::make_shared<GivenContent>(content));
    CorrectionFileData data;
    data.content = std::move(content);
    data.recordingFormat = container.recordingFormat();
    data.recordingFormatOrigin = container.recordingFormatOrigin();
    return data;
}

namespace {

std::string name(const std::string& maker, const std::string& product) {
    return maker + (maker.empty() || product.empty() ? "" : " ") + product;
}

} // namespace

std::string lensName(const CorrectionData::Header& header) {
    return name(header.lensManufacturer, header.lensTypeName);
}

std::string cameraName(const CorrectionData::Header& header) {
    return name(header.cameraManufacturer, header.cameraModel);
}

std::string focalLengthText(const CorrectionData::Header& header) {
    return header.lensMinFocalLength == header.lensMaxFocalLength
               ? fmt::format("{} mm", header.lensMinFocalLength)
               : fmt::format("{}-{} mm", header.lensMinFocalLength, header.lensMaxFocalLength);
}

} // namespace Tools
