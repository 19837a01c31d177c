#pragma once

#include "DDImage/Description.h"
#include "DDImage/Hash.h"
#include "DDImage/Knobs.h"
#include "DDImage/MetaData.h"
#include "DDImage/OutputContext.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace DD {
namespace Image {

class Graph;
class Iop;
class Node;

/// One operation of a node, for one output context. Several ops of one node share its knobs.
///
/// Threads: after validation, several threads may request pixels and metadata at once; abort and error states may be
/// set and read at any time. Everything else, knobs above all, belongs to one thread.
class Op {
public:
    class Description;

    explicit Op(Node*);
    Op(const Op&) = delete;
    Op& operator=(const Op&) = delete;
    virtual ~Op();

    virtual const char* Class() const = 0;
    virtual const char* node_help() const = 0;

    /// The number of inputs: set once, in the constructor, unless minimum and maximum differ.
    void inputs(int count);
    int inputs() const { return static_cast<int>(m_inputs.size()); }
    virtual int minimum_inputs() const { return inputs(); }
    virtual int maximum_inputs() const { return inputs(); }
    virtual const char* input_label(int input, char* buffer) const;
    virtual bool test_input(int input, Op*) const;
    /// The op that stands in for an unconnected input; may be null.
    virtual Op* default_input(int input) const;
    /// The op connected to an input, or the default input; null outside 0 .. inputs() - 1.
    Op* input(int input) const;
    /// The op actually connected, or null.
    Op* node_input(int input) const;
    void set_input(int input, Op*);

    /// Runs _validate unless it ran since the last change; with `for_real` false it may do less and runs again later.
    void validate(bool for_real = true);
    virtual void force_validate(bool for_real = true);
    /// Makes the next validate run again.
    void invalidate() { m_valid = false; }

    /// Adds state that is not in the knobs to the op's hash.
    virtual void append(Hash&) {}
    /// The hash of the last evaluation: class, context, inputs, knobs, then append.
    const Hash& hash() const { return m_hash; }

    /// Metadata of the op's frame: at least that key; with a null key, all. The reference is valid until the op is
    /// evaluated for another frame or other values.
    const MetaData::Bundle& fetchMetaData(const char* key) { return _fetchMetaData(key); }
    /// By default, the metadata of input 0.
    virtual const MetaData::Bundle& _fetchMetaData(const char* key);

    /// Whether this op or one upstream was aborted, or one upstream is in error, so that there is no input to work on.
    /// Remains set until the next evaluation from the top (Graph::validate, Graph::render).
    bool aborted() const;
    bool cancelled() const { return aborted(); }
    void abort() const { m_aborted = true; }

    /// Puts the op into error, with a printf-style text that replaces an earlier one, until the next evaluation from
    /// the top.
    void error(const char* format, ...) __attribute__((format(printf, 2, 3)));
    /// Substitute only: whether this op or one upstream is in error.
    bool hasError() const;

    /// The node's knob of that name, or null.
    Knob* knob(const char* name) const;
    virtual void knobs(Knob_Callback) {}
    /// Called after a user changes a knob. Returning 0 ends the calls for that knob.
    virtual int knob_changed(Knob*) { return 0; }
    /// Called while the panel is open. Returning false ends the calls.
    virtual bool updateUI(const OutputContext&) { return false; }

    const OutputContext& outputContext() const { return m_context; }
    /// The node's first op.
    Op* firstOp();

protected:
    /// Validates the connected inputs.
    virtual void _validate(bool for_real);

private:
    friend class Graph;

    // The node of an op that was created without one.
    std::unique_ptr<Node> m_ownNode;
    Node* m_node;
    std::vector<Op*> m_inputs;
    OutputContext m_context;
    Hash m_hash;
    std::recursive_mutex m_validation;
    std::atomic<bool> m_valid{false};
    bool m_validating = false;
    mutable std::atomic<bool> m_aborted{false};
    std::atomic<bool> m_failed{false};
    mutable std::mutex m_errorAccess;
    std::string m_error;
};

/// Registers a class of ops: constructing a static object of it is the whole registration.
class Op::Description : public DD::Image::Description {
protected:
    typedef Op* (*OpConstructor)(Node*);
    typedef Iop* (*IopConstructor)(Node*);
    typedef void (*NodeBuilder)(Node*);

public:
    const char* name;

    Description(const char* className, OpConstructor c, License* l = nullptr) : name(className), m_op(c) {
        license = l;
        ctor(add);
    }
    /// The node builder is not used.
    Description(const char* className, OpConstructor c, NodeBuilder) : name(className), m_op(c) { ctor(add); }
    /// The menu text is not used.
    Description(const char* className, const char*, OpConstructor c) : name(className), m_op(c) { ctor(add); }
    Description(const char* className, const char*, IopConstructor c) : name(className), m_iop(c) { ctor(add); }

    /// Creates an op of the class.
    Op* constructor(Node*) const;

    /// The i-th class registered, from 0; null past the last.
    static const Description* find(int i);
    /// Substitute only: the class of that name, the first one registered; null if there is none.
    static const Description* find(const char* className);

protected:
    static void add(DD::Image::Description*);

private:
    OpConstructor m_op = nullptr;
    IopConstructor m_iop = nullptr;
};

} // namespace Image
} // namespace DD
