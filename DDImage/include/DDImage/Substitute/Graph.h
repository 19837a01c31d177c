#pragma once

#include "DDImage/Read.h"

#include <memory>
#include <string>
#include <vector>

namespace DD {
namespace Image {

/// A miniature host: creates nodes, connects them, changes their knobs as a user does, and renders.
///
/// A graph owns its nodes. One thread at a time, except for `fetch` and `abort`, which any number of threads may call
/// between one `validate` and the next; different graphs are independent of each other.
class Graph {
public:
    /// The plug-in path begins with the folders of the environment variable ORVEX_PLUGIN_PATH, separated by ":".
    Graph();
    ~Graph();
    Graph(const Graph&) = delete;
    Graph& operator=(const Graph&) = delete;

    /// Adds a folder to the end of the plug-in path.
    void addPluginPath(const std::string& folder);

    /// Creates a node of a class. A class that is not registered yet is searched for on the plug-in path; the first hit
    /// wins: `<Class>.so` is loaded; in `<Class>.tcl` a line `load <Library>` names another library of the path to
    /// load. Throws std::runtime_error, with a text for users, if the class is not found or does not load.
    Op* create(const std::string& className);
    Read* createRead();
    /// Another op of the same node, with the same knobs, inputs and frame (the host has one per frame and view).
    /// A Read's copy needs a source of its own.
    Op* createCopy(Op*);

    /// Connects source (null: disconnects) to an input. Returns false, changing nothing, if the op refuses it or has no
    /// such input.
    bool connect(Op* op, int input, Op* source);

    /// The knob of that name or null; all knobs in order of declaration, groups and their ends included.
    Knob* knob(Op*, const std::string& name) const;
    std::vector<Knob*> knobs(Op*) const;

    /// A change by the user: sets the knob, stores, and calls knob_changed (once: changes made in that call trigger
    /// none; never again after it returned 0 for that knob). A text is read as by Knob::from_script. Throws
    /// std::invalid_argument if there is no such knob or it cannot take the text.
    void userChange(Op*, const std::string& name, double value);
    void userChange(Op*, const std::string& name, const std::string& text);

    /// Opens the panel: knob_changed(&Knob::showPanel), then updateUI.
    void openPanel(Op*);
    void closePanel(Op*);
    /// Calls the op's updateUI if its panel is open and the last call returned true.
    void updateUI(Op*);

    /// The frame for which all ops work.
    void setFrame(double frame);

    /// Evaluates from the top: clears abort and error states upstream, stores knobs, hashes, and validates what
    /// changed. False if the op is in error or aborted after that.
    bool validate(Op*);
    /// After validate: requests and fetches one plane. False if the op is in error, aborted or produced nothing.
    bool fetch(Op*, ImagePlane&);
    /// validate, then fetch.
    bool render(Op*, ImagePlane&);
    /// After validate: one empty packed plane over the op's box for each layer of its image.
    std::vector<ImagePlane> planes(Op*) const;

    /// Aborts every op, until the next validate or render. Any thread.
    void abort();

    /// The error of the op furthest upstream that has one (the cause comes first), or "".
    std::string errorText(Op*) const;

private:
    Op* addOp(Node&);
    void prepare(Op*, std::vector<Op*>& done);
    void store(Node&);
    void callKnobChanged(Op*, Knob*);
    void userChanged(Op*, Knob*);
    void load(const std::string& className);

    std::vector<std::string> m_pluginPath;
    std::vector<std::unique_ptr<Node>> m_nodes;
    double m_frame = 0;
};

} // namespace Image
} // namespace DD
