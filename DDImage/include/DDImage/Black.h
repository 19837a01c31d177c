#pragma once

#include "DDImage/Iop.h"

namespace DD {
namespace Image {

/// The image of one black pixel that stands in for an unconnected input. No inputs, no metadata.
class Black : public Iop {
public:
    explicit Black(Node*);

    const char* Class() const override;
    const char* node_help() const override;

protected:
    void _validate(bool for_real) override;
};

} // namespace Image
} // namespace DD
