// The checksums of the files of a raw image, which databases list instead of the image. They are computed beside the
// verification of the image itself, by threads of their own.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <vector>

#include "image/inspect/dat_file.h"

namespace vantrel {

struct SFileSums {
    std::string path;
    std::optional<SSums> sums;  ///< Nullopt if the file cannot be read.
    std::vector<std::string> problems;
};

class CFileSums {
public:
    /// Starts to read the files, one after the other.
    explicit CFileSums(std::vector<std::string> files);
    CFileSums(const CFileSums&) = delete;
    CFileSums& operator=(const CFileSums&) = delete;
    /// Stops reading.
    ~CFileSums();

    std::int64_t TotalBytes() const { return m_totalBytes; }
    std::int64_t DoneBytes() const { return m_doneBytes; }

    /// Waits for the results, in the order of the files; call it once. Calls `meanwhile` every now and then; it may
    /// throw to stop.
    std::vector<SFileSums> Wait(const std::function<void()>& meanwhile);

private:
    std::vector<SFileSums> ReadAll();
    SFileSums Read(const std::string& path);

    std::vector<std::string> m_files;
    std::int64_t m_totalBytes = 0;
    std::atomic<std::int64_t> m_doneBytes = 0;
    std::atomic<bool> m_isStopped = false;
    std::function<void()> m_meanwhile;  ///< If no thread could be started, and Wait() does the work.
    std::future<std::vector<SFileSums>> m_results;
};

}  // namespace vantrel
