#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "CorrectionData/Container/ManagedContainerDataSource.h"
#include "CorrectionData/ContainerManager/ContainerManagerContentCache.h"
#include "CorrectionData/ContainerManager/ContainerManagerDataSource.h"
#include "Exception/Exception.h"

namespace CorrectionData {

/// The correction file selected for a clip belongs to another clip.
class FileMismatchException : public Exception {
public:
    FileMismatchException(const std::string& clipFileName, const std::string& correctionFilePath,
                          const std::string& clipFileNameInCorrectionFile);
};

/// The shared owner of parsed correction files: each is read once and then shared by all containers of its clip.
///
/// Failures of its data source pass through unchanged and are not cached. Threads: one at a time; callers must
/// serialise.
class ContainerManager : public ManagedContainerDataSource {
public:
    /// Keeps the content of at most `capacity` insertions (0: no limit). The data source must not be null.
    ContainerManager(std::unique_ptr<ContainerManagerDataSource> dataSource, std::uint32_t capacity);
    ~ContainerManager() override;

    /// Does not check whether the file found near the clip names that clip.
    void shareContent(const std::string& clipFilePath, std::shared_ptr<Content>& content) override;

    /// Throws FileMismatchException unless the clip's name is the file's `videoFileName` or `clipName`, exactly.
    void shareContent(const std::string& clipFileName, const std::string& correctionFilePath,
                      std::shared_ptr<Content>& content) override;

private:
    const std::unique_ptr<ContainerManagerDataSource> m_dataSource;
    ContainerManagerContentCache m_cache;
};

} // namespace CorrectionData
