#include "iml/side_file.h"

#include <algorithm>

namespace vantrel {

bool CSideFile::Create() {
    return m_place == ESidePlace::Memory || m_output.Open(m_path, EOutputManner::InPlace);
}

bool CSideFile::Append(std::span<const std::uint8_t> bytes) {
    if (m_place == ESidePlace::Memory) {
        m_content.insert(m_content.end(), bytes.begin(), bytes.end());
        return true;
    }
    return m_output.Write(bytes);
}

bool CSideFile::Append(std::string_view text) {
    return Append(std::vector<std::uint8_t>(text.begin(), text.end()));
}

bool CSideFile::EndWriting() {
    return m_place == ESidePlace::Memory || m_output.Finish();
}

bool CSideFile::OpenForReading() {
    return m_place == ESidePlace::Memory || m_input.Open(m_path);
}

std::int64_t CSideFile::Size() const {
    return m_place == ESidePlace::Memory ? static_cast<std::int64_t>(m_content.size()) : m_input.Size();
}

std::size_t CSideFile::ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) {
    if (m_place == ESidePlace::BesideLayout) {
        return m_input.ReadAt(position, buffer);
    }
    if (position < 0 || position >= Size()) {
        return 0;
    }
    const auto rest = std::span(m_content).subspan(static_cast<std::size_t>(position));
    const std::size_t count = std::min(buffer.size(), rest.size());
    std::copy_n(rest.begin(), count, buffer.begin());
    return count;
}

void CSideFile::EndReading() {
    m_input.Close();
}

void CSideFile::Remove() {
    if (m_place == ESidePlace::BesideLayout) {
        RemoveFile(m_path);
    }
}

}  // namespace vantrel
