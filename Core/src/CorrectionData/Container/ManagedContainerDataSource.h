#pragma once

#include <memory>
#include <string>

#include "CorrectionData/Content.h"

namespace CorrectionData {

/// Supplies managed containers with the parsed content of correction files. All containers of a clip share it, so it
/// must not be modified.
class ManagedContainerDataSource {
public:
    virtual ~ManagedContainerDataSource() = default;

    /// The content of the correction file that belongs to the clip of this path. `content` is set on success only.
    virtual void shareContent(const std::string& clipFilePath, std::shared_ptr<Content>& content) = 0;

    /// The content of this correction file, which must belong to the clip of this name.
    virtual void shareContent(const std::string& clipFileName, const std::string& correctionFilePath,
                              std::shared_ptr<Content>& content) = 0;
};

} // namespace CorrectionData
