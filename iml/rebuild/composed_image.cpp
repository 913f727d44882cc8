#include "iml/rebuild/composed_image.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "files/native_file.h"

namespace vantrel {

std::size_t CComposedImage::AddFile(std::int64_t position, std::int64_t length, const std::string& path) {
    m_files.push_back({&path, {}});
    Add(position, length, EPart::File, m_files.size() - 1);
    return m_files.size() - 1;
}

void CComposedImage::AddGaps(CGapFileReader& gaps) {
    m_gaps = &gaps;
    for (std::size_t i = 0; i < gaps.Areas().size(); ++i) {
        Add(gaps.Areas()[i].position, gaps.Areas()[i].length, EPart::Gap, i);
    }
}

void CComposedImage::AddSource(std::int64_t position, std::int64_t length, CByteSource& source) {
    m_sources.push_back(&source);
    Add(position, length, EPart::Source, m_sources.size() - 1);
}

void CComposedImage::AddBytes(std::int64_t position, std::vector<std::uint8_t> bytes) {
    m_bytes.push_back(std::move(bytes));
    Add(position, std::ssize(m_bytes.back()), EPart::Bytes, m_bytes.size() - 1);
}

void CComposedImage::Add(std::int64_t position, std::int64_t length, EPart kind, std::size_t index) {
    const std::int64_t end = std::min(position + length, m_length);
    std::int64_t start = position;
    while (start < end) {
        const auto next = m_parts.upper_bound(start);
        if (next != m_parts.begin() && std::prev(next)->second.end > start) {
            start = std::prev(next)->second.end;
            continue;
        }
        const std::int64_t freeEnd = next == m_parts.end() ? end : std::min(end, next->first);
        m_parts.emplace_hint(next, start, SPart{freeEnd, kind, index, position});
        start = freeEnd;
    }
}

std::size_t CComposedImage::ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) {
    if (position < 0 || position >= m_length) {
        return 0;
    }
    buffer = buffer.first(static_cast<std::size_t>(std::min<std::int64_t>(std::ssize(buffer), m_length - position)));
    std::size_t done = 0;
    auto next = m_parts.upper_bound(position);
    if (next != m_parts.begin() && std::prev(next)->second.end > position) {
        --next;
    }
    while (done < buffer.size()) {
        const std::int64_t start = position + static_cast<std::int64_t>(done);
        const bool isPart = next != m_parts.end() && next->first <= start;
        const std::int64_t partEnd = isPart ? next->second.end : next != m_parts.end() ? next->first : m_length;
        const auto piece = buffer.subspan(
            done, static_cast<std::size_t>(std::min<std::int64_t>(partEnd - start, std::ssize(buffer.subspan(done)))));
        if (isPart && ReadPart(next->second, start, piece) != piece.size()) {
            return done;
        }
        if (!isPart) {
            std::fill(piece.begin(), piece.end(), std::uint8_t{0});
        }
        AddToSums(isPart ? &next->second : nullptr, start, piece);
        done += piece.size();
        if (isPart) {
            ++next;
        }
    }
    return done;
}

std::size_t CComposedImage::ReadPart(const SPart& part, std::int64_t position, std::span<std::uint8_t> buffer) {
    const std::int64_t offset = position - part.origin;
    switch (part.kind) {
        case EPart::File:
            return ReadFile(part.index, offset, buffer);
        case EPart::Gap:
            return m_gaps->ReadAt(part.index, offset, buffer);
        case EPart::Source:
            return m_sources[part.index]->ReadAt(offset, buffer);
        case EPart::Bytes:
            std::copy_n(m_bytes[part.index].begin() + offset, buffer.size(), buffer.begin());
            return buffer.size();
    }
    return 0;
}

std::size_t CComposedImage::ReadFile(std::size_t index, std::int64_t offset, std::span<std::uint8_t> buffer) {
    const std::string& path = *m_files[index].path;
    if (m_openIndex != index || !m_openFile.IsOpen()) {
        if (!m_openFile.Open(path)) {
            m_problem = "Cannot read " + path + ": " + LastFileError();
            return 0;
        }
        m_openIndex = index;
    }
    const std::size_t count = m_openFile.ReadAt(offset, buffer);
    if (count != buffer.size() && m_problem.empty()) {
        m_problem = m_openFile.HasFailed() ? m_openFile.Problem() : "Cannot read all of " + path;
    }
    return count;
}

void CComposedImage::StartSums() {
    m_sums = true;
    m_sum = {};
    for (SFile& file : m_files) {
        file.sum = {};
    }
}

void CComposedImage::AddToSums(const SPart* part, std::int64_t position, std::span<const std::uint8_t> bytes) {
    if (!m_sums) {
        return;
    }
    SChecksum piece;
    piece.Add(bytes);
    if (position == m_sum.length) {
        m_sum.Append(piece);
    }
    if (part != nullptr && part->kind == EPart::File && position - part->origin == m_files[part->index].sum.length) {
        m_files[part->index].sum.Append(piece);
    }
}

}  // namespace vantrel
