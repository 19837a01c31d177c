#include "CorrectionFile/Finder/Finder.h"

namespace CorrectionFile {

Finder::~Finder() = default;

} // namespace CorrectionFile
