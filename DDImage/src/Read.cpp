#include "DDImage/Read.h"

#include <cmath>
#include <exception>

namespace DD {
namespace Image {

namespace {

Iop* build(Node* node) { return new Read(node); }

} // namespace

const Iop::Description Read::d("Read", "Image/Read", build);

Read::Read(Node* node) : PlanarIop(node) { inputs(0); }

const char* Read::Class() const { return "Read"; }

const char* Read::node_help() const { return "Reads a clip."; }

int Read::frame_for_reader() const { return static_cast<int>(std::lround(outputContext().frame())); }

void Read::append(Hash& hash) {
    hash.append(m_filename);
    hash.append(m_sourceChanges);
}

void Read::setSource(std::shared_ptr<ReadSource> source) {
    m_source = std::move(source);
    ++m_sourceChanges;
    m_metaDataIsRead = false;
    invalidate();
}

void Read::setFilename(std::string filename) {
    m_filename = std::move(filename);
    invalidate();
}

template <class Action>
void Read::callSource(Action action) {
    if (!m_source) return error("The reader has no clip.");
    try {
        action(*m_source, outputContext().frame());
    } catch (const std::exception& exception) {
        error("%s", exception.what());
    } catch (...) {
        error("The clip could not be read.");
    }
}

void Read::_validate(bool) {
    Info info;
    callSource([&](ReadSource& source, double frame) { source.fillInfo(frame, info); });
    info.full_size_format(info.format());
    info_ = info;
    set_out_channels(info_.channels());
}

const MetaData::Bundle& Read::_fetchMetaData(const char*) {
    const std::lock_guard<std::mutex> lock(m_metaDataAccess);
    const double frame = outputContext().frame();
    if (m_metaDataIsRead && m_metaDataFrame == frame) return m_metaData;
    MetaData::Bundle read;
    callSource([&](ReadSource& source, double sourceFrame) { source.fillMetaData(sourceFrame, read); });
    m_metaData = std::move(read);
    m_metaDataFrame = frame;
    m_metaDataIsRead = true;
    return m_metaData;
}

void Read::renderStripe(ImagePlane& plane) {
    callSource([&](ReadSource& source, double frame) {
        if (!source.fillsWholePlanes()) {
            blacken(plane);
        } else if (plane.memory().refCount() != 1) {
            // Floats that others read as well are left to them.
            RefCountedFloatBuffer own = RefCountedFloatBuffer::allocateUninitialised(plane.bounds(), plane.nComps());
            plane.setMemory(own);
            own.reset();
        }
        source.fillPlane(frame, plane);
    });
}

void Read::doFetchPlane(ImagePlane& plane) { renderStripe(plane); }

} // namespace Image
} // namespace DD
