#pragma once

#include "DDImage/ddImageVersionNumbers.h"

/// The stamp of a plug-in: its build date and the host version it was built for. Fixed, so that builds are
/// reproducible; define either to override it.
#ifndef DDIMAGE_COMPILED_DATE
#define DDIMAGE_COMPILED_DATE "Jul 31 2020"
#endif
#ifndef DDIMAGE_COMPILED_VERSION
#define DDIMAGE_COMPILED_VERSION kDDImageVersion
#endif

namespace DD {
namespace Image {

class License;

/// The host's record of a class that a plug-in provides. Lives as long as the process.
class Description {
public:
    const char* compiled = nullptr;
    const char* plugin = nullptr;
    License* license = nullptr;

protected:
    Description() = default;
    ~Description() = default;

    /// Inline on purpose: the stamp is the plug-in's, not the library's.
    void ctor(void (*add)(Description*)) {
        compiled = DDIMAGE_COMPILED_DATE " for " DDIMAGE_COMPILED_VERSION;
        add(this);
    }
};

} // namespace Image
} // namespace DD
