// The two lists that a rebuild makes for itself: written once, then read. The window keeps them as files beside the
// layout, the console program in memory, so that it neither replaces anything of the user's nor leaves anything behind.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "files/input_file.h"
#include "files/output_file.h"

namespace vantrel {

enum class ESidePlace { BesideLayout, Memory };

class CSideFile {
public:
    CSideFile(std::string path, ESidePlace place) : m_path(std::move(path)), m_place(place) {}

    const std::string& Path() const { return m_path; }

    /// Creates or empties the file. False, with LastFileError() set, when that fails; never in memory.
    bool Create();
    /// Appends. False when not everything could be written.
    bool Append(std::span<const std::uint8_t> bytes);
    bool Append(std::string_view text);
    /// Closes what was written. False when something of it was lost.
    bool EndWriting();
    /// Why Append or EndWriting returned false, as a text that names the file and the cause; empty when neither did.
    const std::string& FailureText() const { return m_output.FailureText(); }

    /// Opens what was written for reading. False, with LastFileError() set, when that fails; never in memory.
    bool OpenForReading();
    /// Length in bytes, −1 when it cannot be told.
    std::int64_t Size() const;
    /// The number of bytes read, which is smaller than the buffer only at the end or after an error.
    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer);
    void EndReading();
    /// Whether the system ever reported an error (not the mere end of the file) while reading or measuring.
    bool HasFailedReading() const { return m_input.HasFailed(); }

    /// Deletes the file; nothing is left to delete in memory.
    void Remove();

private:
    std::string m_path;
    ESidePlace m_place;
    std::vector<std::uint8_t> m_content;
    COutputFile m_output;
    CInputFile m_input;
};

}  // namespace vantrel
