#include "CorrectionData/ContainerManager/ContainerManagerDataSource.h"

namespace CorrectionData {

ContainerManagerDataSource::~ContainerManagerDataSource() = default;

} // namespace CorrectionData
