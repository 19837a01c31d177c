#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "CorrectionData/Container/ManagedContainerDataSource.h"
#include "CorrectionData/ContainerManager/ContainerManagerContentCache.h"
#include "CorrectionData/ContainerManager/ContainerManagerDataSource.h"
#include "Exception/Exception.h"

namespace CorrectionData {

/// The correction file that was named for a clip was made for another one.
class FileMismatchException : public Exception {
public:
    FileMismatchException(const std::string& clipFileName, const std::string& correctionFilePath,
                          const std::string& clipFileNameInCorrectionFile);
};

/// The shared owner of parsed correction files: each is read once and then shared by all containers of its clip.
///
/// Failures of its data source pass through unchanged, and nothing is cached for them.
/// Threads: one at a time; callers must serialise.
class ContainerManager : public ManagedContainerDataSource {
public:
    /// Keeps the content of at most `capacity` insertions (0: all). The data source must not be empty.
    ContainerManager(std::unique_ptr<ContainerManagerDataSource> dataSource, std::uint32_t capacity);
    ~ContainerManager() override;

    /// Does not check that the file found near the clip names the clip.
    void shareContent(const std::string& clipFilePath, std::shared_ptr<Content>& content) override;

    /// Throws FileMismatchException unless the clip's name is the file's `videoFileName` or `clipName`, exactly.
    void shareContent(const std::string& clipFileName, const std::string& correctionFilePath,
                      std::shared_ptr<Content>& content) override;

private:
    const std::unique_ptr<ContainerManagerDataSource> m_dataSource;
    ContainerManagerContentCache m_cache;
};

} // namespace CorrectionData
