#include "DDImage/Substitute/ReadSource.h"

namespace DD {
namespace Image {

ReadSource::~ReadSource() = default;

} // namespace Image
} // namespace DD
