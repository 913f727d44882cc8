#include "image/inspect/file_sums.h"

#include <algorithm>
#include <chrono>

#include "files/native_file.h"
#include "files/refused.h"
#include "image/forms.h"
#include "image/inspect/whole_reading.h"

namespace vantrel {

namespace {

/// Ends the reading; never leaves this file.
class CStopped {};

}  // namespace

CFileSums::CFileSums(std::vector<std::string> files) : m_files(std::move(files)) {
    for (const std::string& file : m_files) {
        m_totalBytes += std::max<std::int64_t>(FileSizeOf(file), 0);
    }
    m_results = std::async(std::launch::async | std::launch::deferred, [this] { return ReadAll(); });
}

CFileSums::~CFileSums() {
    m_isStopped = true;
    if (m_results.valid()) {
        m_results.wait();
    }
}

std::vector<SFileSums> CFileSums::Wait(const std::function<void()>& meanwhile) {
    constexpr std::chrono::milliseconds kPause{50};
    while (true) {
        const std::future_status status = m_results.wait_for(kPause);
        if (status == std::future_status::deferred) {
            m_meanwhile = meanwhile;
        }
        if (status != std::future_status::timeout) {
            return m_results.get();
        }
        meanwhile();
    }
}

std::vector<SFileSums> CFileSums::ReadAll() {
    std::vector<SFileSums> results;
    for (const std::string& file : m_files) {
        results.push_back(Read(file));
    }
    return results;
}

SFileSums CFileSums::Read(const std::string& path) {
    const std::int64_t before = m_doneBytes;
    try {
        const std::unique_ptr<CImageSource> file = OpenPlainImage(path);
        SReading reading = ReadWhole(*file->Chunks(), file->BlockNoun(), [&](std::int64_t bytes) {
            m_doneBytes = before + bytes;
            if (m_isStopped) {
                throw CStopped();
            }
            if (m_meanwhile) {
                m_meanwhile();
            }
        });
        RefuseDamaged(*file, path);
        return {path, std::move(reading.sums), std::move(reading.problems)};
    } catch (const CRefused& refused) {
        return {path, std::nullopt, {refused.what()}};
    }
}

}  // namespace vantrel
