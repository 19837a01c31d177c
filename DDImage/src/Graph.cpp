#include "DDImage/Substitute/Graph.h"

#include "DDImage/Substitute/Layers.h"
#include "Node.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace DD {
namespace Image {

namespace fs = std::filesystem;

namespace {

void loadLibrary(const fs::path& library) {
    // Never unloaded: the registry points into it.
    if (!dlopen(fs::absolute(library).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE))
        throw std::runtime_error("The plug-in could not be loaded: " + std::string(dlerror()));
}

/// The library that a pointer file names in its line "load <Library>"; empty if there is no such line.
std::string libraryNamedIn(const fs::path& pointerFile) {
    std::ifstream file(pointerFile);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string command, library;
        if (words >> command >> library && command == "load") return library;
    }
    return {};
}

} // namespace

Graph::Graph() {
    const char* folders = std::getenv("ORVEX_PLUGIN_PATH");
    std::istringstream list(folders ? folders : "");
    for (std::string folder; std::getline(list, folder, ':');)
        if (!folder.empty()) addPluginPath(folder);
}

Graph::~Graph() = default;

void Graph::addPluginPath(const std::string& folder) { m_pluginPath.push_back(folder); }

Op* Graph::create(const std::string& className) {
    if (!Op::Description::find(className.c_str())) load(className);
    const Op::Description* description = Op::Description::find(className.c_str());
    if (!description)
        throw std::runtime_error("The plug-in loaded for the node class \"" + className + "\" does not contain it.");

    auto node = std::make_unique<Node>();
    node->description = description;
    Op* op = addOp(*node);
    Knob_Closure make(*node, true);
    op->knobs(make);
    store(*node);
    m_nodes.push_back(std::move(node));
    return op;
}

Read* Graph::createRead() { return static_cast<Read*>(create("Read")); }

Op* Graph::createCopy(Op* op) {
    Op* copy = addOp(*op->m_node);
    copy->m_inputs = op->m_inputs;
    Knob_Closure storing(*op->m_node, false);
    copy->knobs(storing);
    return copy;
}

Op* Graph::addOp(Node& node) {
    node.ops.emplace_back(node.description->constructor(&node));
    Op* op = node.ops.back().get();
    op->m_context.setFrame(m_frame);
    return op;
}

void Graph::load(const std::string& className) {
    for (const fs::path folder : m_pluginPath) {
        if (fs::exists(folder / (className + ".so"))) return loadLibrary(folder / (className + ".so"));
        const fs::path pointerFile = folder / (className + ".tcl");
        if (!fs::exists(pointerFile)) continue;
        const std::string library = libraryNamedIn(pointerFile);
        if (library.empty()) throw std::runtime_error(pointerFile.string() + " has no line \"load <Library>\".");
        for (const fs::path other : m_pluginPath)
            if (fs::exists(other / (library + ".so"))) return loadLibrary(other / (library + ".so"));
        throw std::runtime_error(pointerFile.string() + " names the plug-in \"" + library +
                                 "\", which is not on the plug-in path.");
    }
    std::string path;
    for (const std::string& folder : m_pluginPath) path += (path.empty() ? "" : ":") + folder;
    throw std::runtime_error("The node class \"" + className + "\" is not known: neither " + className + ".so nor " +
                             className + ".tcl is on the plug-in path \"" + path + "\".");
}

bool Graph::connect(Op* op, int input, Op* source) {
    if (input < 0 || input >= op->inputs() || (source && !op->test_input(input, source))) return false;
    for (const auto& each : op->m_node->ops) each->set_input(input, source);
    return true;
}

Knob* Graph::knob(Op* op, const std::string& name) const { return op->m_node->knob(name); }

std::vector<Knob*> Graph::knobs(Op* op) const {
    std::vector<Knob*> knobs;
    for (const auto& knob : op->m_node->knobs) knobs.push_back(knob.get());
    return knobs;
}

void Graph::userChange(Op* op, const std::string& name, double value) {
    Knob* changed = knob(op, name);
    if (!changed) throw std::invalid_argument("There is no control \"" + name + "\".");
    changed->set_value(value);
    userChanged(op, changed);
}

void Graph::userChange(Op* op, const std::string& name, const std::string& text) {
    Knob* changed = knob(op, name);
    if (!changed) throw std::invalid_argument("There is no control \"" + name + "\".");
    if (!changed->from_script(text.c_str()))
        throw std::invalid_argument("The control \"" + name + "\" cannot be set to \"" + text + "\".");
    userChanged(op, changed);
}

void Graph::userChanged(Op* op, Knob* knob) {
    store(*op->m_node);
    callKnobChanged(op, knob);
}

void Graph::callKnobChanged(Op* op, Knob* knob) {
    Node& node = *op->m_node;
    if (node.isInKnobChanged || knob->flag(Knob::NO_KNOB_CHANGED)) return;
    node.isInKnobChanged = true;
    const int isWanted = op->firstOp()->knob_changed(knob);
    node.isInKnobChanged = false;
    // The two special knobs belong to all nodes.
    if (!isWanted && knob->type() != Knob::Special) knob->set_flag(Knob::NO_KNOB_CHANGED);
}

void Graph::store(Node& node) {
    Knob_Closure storing(node, false);
    for (const auto& op : node.ops) op->knobs(storing);
}

void Graph::openPanel(Op* op) {
    op->m_node->panelIsOpen = true;
    op->m_node->wantsUpdateUI = true;
    callKnobChanged(op, &Knob::showPanel);
    updateUI(op);
}

void Graph::closePanel(Op* op) { op->m_node->panelIsOpen = false; }

void Graph::updateUI(Op* op) {
    Node& node = *op->m_node;
    if (node.panelIsOpen && node.wantsUpdateUI) node.wantsUpdateUI = op->firstOp()->updateUI(op->outputContext());
}

void Graph::setFrame(double frame) {
    m_frame = frame;
    for (const auto& node : m_nodes)
        for (const auto& op : node->ops) {
            op->m_context.setFrame(frame);
            op->invalidate();
        }
}

void Graph::prepare(Op* op, std::vector<Op*>& done) {
    if (std::find(done.begin(), done.end(), op) != done.end()) return;
    done.push_back(op);
    Hash hash;
    hash.append(op->Class());
    op->m_context.append(hash);
    for (Op* input : op->m_inputs) {
        if (input) prepare(input, done);
        if (input && !input->m_valid) op->invalidate();
        hash.append(input ? input->m_hash.value() : U64{0});
    }
    Knob_Closure storing(*op->m_node, false);
    op->knobs(storing);
    for (const auto& knob : op->m_node->knobs) {
        if (knob->flag(Knob::NO_RERENDER)) continue;
        hash.append(knob->storedValue());
        hash.append(knob->get_text());
    }
    op->append(hash);
    if (hash != op->m_hash || op->m_aborted || op->m_failed) op->invalidate();
    op->m_hash = hash;
    op->m_aborted = false;
    op->m_failed = false;
    const std::lock_guard<std::mutex> lock(op->m_errorAccess);
    op->m_error.clear();
}

bool Graph::validate(Op* op) {
    std::vector<Op*> done;
    prepare(op, done);
    op->validate();
    return !op->hasError() && !op->aborted();
}

bool Graph::fetch(Op* op, ImagePlane& plane) {
    Iop* iop = dynamic_cast<Iop*>(op);
    if (!iop) return false;
    iop->request(plane.bounds(), plane.channels(), 1);
    iop->fetchPlane(plane);
    return !op->hasError() && !op->aborted() && plane.usage() > 0;
}

bool Graph::render(Op* op, ImagePlane& plane) { return validate(op) && fetch(op, plane); }

std::vector<ImagePlane> Graph::planes(Op* op) const {
    std::vector<ImagePlane> planes;
    const Iop* iop = dynamic_cast<Iop*>(op);
    if (!iop) return planes;
    const ChannelSet channels = expandToLayers(iop->channels(), iop->channels());
    for (const ChannelSet& layer : splitIntoLayers(channels)) planes.emplace_back(iop->info().box(), true, layer);
    return planes;
}

void Graph::abort() {
    for (const auto& node : m_nodes)
        for (const auto& op : node->ops) op->abort();
}

std::string Graph::errorText(Op* op) const {
    for (Op* input : op->m_inputs) {
        const std::string text = input ? errorText(input) : std::string();
        if (!text.empty()) return text;
    }
    const std::lock_guard<std::mutex> lock(op->m_errorAccess);
    return op->m_error;
}

} // namespace Image
} // namespace DD
