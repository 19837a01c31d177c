#include "DDImage/PlanarIop.h"
#include "DDImage/Read.h"

#include <typeinfo>

using namespace DD::Image;

namespace {

/// Tells by its error text whether the program's Read and placeholder are the plug-in's.
class Identity : public PlanarIop {
public:
    using PlanarIop::PlanarIop;
    const char* node_help() const override { return "Compares identities."; }
    void renderStripe(ImagePlane& plane) override { input0().fetchPlane(plane); }

protected:
    void _validate(bool for_real) override {
        PlanarIop::_validate(for_real);
        const Op* op = Op::input(0);
        if (op == default_input(0)) error("placeholder");
        if (typeid(*op) == typeid(Read) && dynamic_cast<const Read*>(op)) error("reader");
    }
};

class First : public Identity {
public:
    using Identity::Identity;
    const char* Class() const override { return d.name; }
    static const Iop::Description d;
};

class Second : public Identity {
public:
    using Identity::Identity;
    const char* Class() const override { return d.name; }
    static const Iop::Description d;
};

Iop* buildFirst(Node* node) { return new First(node); }
Iop* buildSecond(Node* node) { return new Second(node); }

const Iop::Description First::d("TestPluginFirst", "Test/First", buildFirst);
const Iop::Description Second::d("TestPluginSecond", "Test/Second", buildSecond);

} // namespace
