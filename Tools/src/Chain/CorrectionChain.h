#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Chain/ChainSettings.h"
#include "Chain/ClipSource.h"
#include "Chain/FramePlan.h"
#include "DDImage/Substitute/Graph.h"
#include "Frame.h"
#include "HostMetadata.h"

class LensCorrection;

namespace Tools {

class InputSpace;
class ShadedChannels;

/// A frame's header or the whole frame, with what the host's reader would know about it.
struct ClipFrame {
    const Image::Frame* frame = nullptr;
    const Image::Metadata* metadata = nullptr;
    std::string path; ///< under which the reader shows it; the correction file is searched around it
    ClipRange range;
};

/// The two nodes behind a reader node, set up as the settings say: Read → Shading → Distortion when the lens is
/// removed, Read → Distortion → Shading when it is applied. Channels that the shading must not change bypass it.
///
/// One thread at a time.
class CorrectionChain {
public:
    /// `threads`: how many convert pixels from and to the file's type. `space`: of the picture's pixels; without it
    /// they are linear light.
    CorrectionChain(const ChainSettings& settings, unsigned int threads, const InputSpace* space = nullptr);
    ~CorrectionChain();

    /// Chooses the frame, one of its parts, and the frame of the plate from which the lens data come (the same one when
    /// there is no plate). All must live until the next call.
    void setFrame(std::int32_t frame, const ClipFrame& image, std::size_t part, const ClipFrame& plate);

    /// The node at the end of the chain.
    LensCorrection& lastNode() const { return *m_nodes.back(); }

    /// How the nodes will frame the picture, from headers alone and without a device. Throws Failure (Correction) with
    /// the core's texts, std::runtime_error for windows that are too far away.
    FramePlan plan();

    /// Shows the nodes the picture as planned and lets them work out their boxes. Needs headers only. Throws
    /// Failure (Correction) with the nodes' texts.
    FramePlan validate();

    /// What the core knows of the frame before any node is validated: for a frame as large as the part's format, and
    /// the corrections that the settings want.
    Core::FramePreparation& preparation();

    /// The shape of the part that was chosen. Throws std::runtime_error when its data window is too far away.
    PictureShape shape() const;

    /// Takes a layer's pixels and the host's channels of the part's channels; for a map, of A, B, G and R. Nothing more
    /// is read then of the image's pixels of that layer.
    using Store = std::function<void(const DD::Image::ImagePlane&, const std::vector<DD::Image::Channel>&)>;
    /// After validate: renders layer after layer and hands each to `store`. Throws Failure (Correction).
    void render(const Store& store);

private:
    LensCorrection* makeNode(const char* className, bool isInverse);
    void setControls(DD::Image::Op* node);
    void setImage(std::optional<DD::Image::Box> box);
    void wire(Steps steps);
    void fetch(DD::Image::ImagePlane& plane);
    [[noreturn]] void fail() const;

    const ChainSettings& m_settings;
    unsigned int m_threads;
    const InputSpace* m_space;
    DD::Image::Graph m_graph;
    DD::Image::Read* m_imageRead;
    DD::Image::Read* m_plateRead;
    LensCorrection* m_shading = nullptr;
    LensCorrection* m_distortion = nullptr;
    ShadedChannels* m_shadedChannels = nullptr; ///< behind m_shading, but for a map
    std::vector<LensCorrection*> m_nodes;       ///< those that correct this frame, in the order of the chain
    DD::Image::Iop* m_end;                      ///< of the chain
    PixelSize m_format;                         ///< for m_preparation
    std::unique_ptr<Core::FramePreparation> m_preparation;
    std::vector<DD::Image::Channel> m_channels;
    ClipFrame m_image;
    std::size_t m_part = 0;
    bool m_hasControls = false;
};

} // namespace Tools
