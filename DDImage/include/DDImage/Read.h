#pragma once

#include "DDImage/PlanarIop.h"
#include "DDImage/Substitute/ReadSource.h"

#include <memory>
#include <mutex>
#include <string>

namespace DD {
namespace Image {

/// A clip from disk. Its pixels and metadata come from a ReadSource; what a source throws becomes this op's error.
class Read : public PlanarIop {
public:
    explicit Read(Node* = nullptr);

    const char* Class() const override;
    const char* node_help() const override;

    /// The clip's path as the user gave it; null if there is none.
    const char* filename() const { return m_filename.empty() ? nullptr : m_filename.c_str(); }
    const char* getFilename() const { return filename(); }
    int frame_for_reader() const;
    void append(Hash&) override;

    /// Substitute only: the clip's source. To be set before validation, not during a render.
    void setSource(std::shared_ptr<ReadSource>);
    void setFilename(std::string);

    /// Fills exactly the requested plane, without an intermediate copy.
    void renderStripe(ImagePlane& plane) override;
    /// All metadata of the frame, whatever the key; read once per frame.
    const MetaData::Bundle& _fetchMetaData(const char* key) override;

    static const Iop::Description d;

protected:
    void _validate(bool for_real) override;
    void doFetchPlane(ImagePlane&) override;

private:
    template <class Action>
    void callSource(Action);

    std::shared_ptr<ReadSource> m_source;
    int m_sourceChanges = 0;
    std::string m_filename;
    std::mutex m_metaDataAccess;
    bool m_metaDataIsRead = false;
    double m_metaDataFrame = 0;
    MetaData::Bundle m_metaData;
};

} // namespace Image
} // namespace DD
