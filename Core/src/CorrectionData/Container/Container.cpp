#include "CorrectionData/Container/Container.h"

namespace CorrectionData {

Container::~Container() = default;

} // namespace CorrectionData
