#include "CorrectionData/Container/ManagedContainerDataSource.h"

namespace CorrectionData {

ManagedContainerDataSource::~ManagedContainerDataSource() = default;

} // namespace CorrectionData
