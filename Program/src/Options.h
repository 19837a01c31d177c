#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Chain/ChainSettings.h"
#include "Clip/DecodingOptions.h"
#include "Lens/LensGeometry.h"
#include "Render/RenderOptions.h"

namespace CLI {
class App;
}

// Options that several commands share, as a command line gives them.
namespace Program {

/// Reads LensDataOptions from a command line.
class LensDataOptionsReader {
public:
    /// Declares the options; the reader outlives the parse.
    void declareOptions(CLI::App& app);

    /// The options of the last parse. Throws Failure (WrongUse) for what cannot be combined, is not understood, or is
    /// beyond the nodes' controls.
    Tools::LensDataOptions read() const;

private:
    std::string m_correctionFile, m_imageArea, m_clipResolution, m_pixelAspect; ///< as written; empty: not given
    std::optional<float> m_overscan;
};

/// Reads DecodingOptions from a command line.
class DecodingOptionsReader {
public:
    /// Declares the options; the reader outlives the parse.
    void declareOptions(CLI::App& app);

    /// The options of the last parse. Throws Failure (WrongUse).
    Tools::DecodingOptions read() const;

private:
    std::string m_maxImage, m_sandbox = "auto", m_memory; ///< as written
    std::optional<unsigned int> m_seconds;
};

/// Declares --device, which names the OpenCL device that renders (RenderingDevice). `name` outlives the parse and is
/// empty if the option is not given.
void declareDevice(CLI::App& app, std::string& name);

/// Reads LensOptions from a command line.
class LensOptionsReader {
public:
    LensOptionsReader();
    ~LensOptionsReader();
    LensOptionsReader(const LensOptionsReader&) = delete;
    LensOptionsReader& operator=(const LensOptionsReader&) = delete;

    /// Declares the options; the reader outlives the parse.
    void declareOptions(CLI::App& app);

    /// The options of the last parse. Throws Failure (WrongUse) for what cannot be combined or is not understood.
    Tools::LensOptions read() const;

private:
    struct Texts;
    std::unique_ptr<Texts> m_texts; ///< the options as written
};

/// Reads RenderOptions from a command line.
class RenderOptionsReader {
public:
    RenderOptionsReader();
    ~RenderOptionsReader();
    RenderOptionsReader(const RenderOptionsReader&) = delete;
    RenderOptionsReader& operator=(const RenderOptionsReader&) = delete;

    /// Declares the options; the reader outlives the parse.
    void declareOptions(CLI::App& app);

    /// The options of the last parse. Throws Failure (WrongUse) for what cannot be combined or is not understood.
    Tools::RenderOptions read() const;

    /// How the last parse wants progress to be shown, as written (Progress).
    const std::string& progress() const;

    /// The device that is to render, as written; empty: not given.
    const std::string& device() const;

private:
    struct Texts;
    std::unique_ptr<Texts> m_texts; ///< the options as written
};

} // namespace Program
