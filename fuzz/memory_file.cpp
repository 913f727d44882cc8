// Files in memory: one more implementation of files/native_file.h. Defines all of it, so that the linker takes nothing
// from the room's own implementation.
#include <algorithm>
#include <memory>

#include "files/native_file.h"
#include "fuzz/disk_state.h"

namespace vantrel {

using namespace fuzz;

namespace {

std::int64_t PositionOf(std::intptr_t handle) {
    const CLockedDisk disk;
    const auto found = disk->handles.find(handle);
    return found == disk->handles.end() ? 0 : found->second.position;
}

}  // namespace

bool CNativeFile::Open(const std::string& path, EOpenMode mode, ESharing /*sharing*/) {
    Close();
    const CLockedDisk disk;
    SPlace place = PlaceOf(*disk, path);
    const EFileKind kind = path.empty() ? EFileKind::Missing : KindOf(*disk, place.node);
    if (kind == EFileKind::Folder) {
        return Refuse("Is a directory");
    }
    const bool creates = mode == EOpenMode::CreateTruncate || mode == EOpenMode::CreateNew;
    if (kind == EFileKind::File && mode == EOpenMode::CreateNew) {
        return Refuse("File exists");
    }
    if (kind == EFileKind::Missing) {
        if (!creates || !CanBeCreated(path, place)) {
            return Refuse("No such file or directory");
        }
        place.node = MakeFile(*disk);
        SetName(*disk, place, place.node);
    } else if (mode == EOpenMode::CreateTruncate) {
        ChangeLength(*disk, *disk->tree.files[place.node], 0);
        Record(*disk, {EDiskOperation::Resize, place.node});
    }
    m_handle = OpenNode(*disk, place.node, mode != EOpenMode::Read);
    return true;
}

bool CNativeFile::OpenTemporary(const std::string& path, ESharing /*sharing*/) {
    Close();
    const CLockedDisk disk;
    const SPlace place = PlaceOf(*disk, path);
    if (!CanBeCreated(path, place) || place.node != kNothing) {
        return Refuse("No such file or directory");
    }
    const Node node = MakeFile(*disk);
    if (!disk->hasUnnamedAndLinked) {
        SetName(*disk, place, node);
    }
    m_temporary = disk->hasUnnamedAndLinked ? ETemporary::Vanishing : ETemporary::Staying;
    m_handle = OpenNode(*disk, node, true);
    return true;
}

bool CNativeFile::CompleteWrites() {
    return true;
}

ELock CNativeFile::TakeLock() {
    return ELock::Taken;
}

bool CNativeFile::FlushToDisk() {
    const CLockedDisk disk;
    Record(*disk, {EDiskOperation::FlushFile, disk->handles[m_handle].node});
    return true;
}

std::string CNativeFile::PathToRead(const std::string& path) {
    const CLockedDisk disk;
    if (m_temporary == ETemporary::Vanishing) {
        SetName(*disk, PlaceOf(*disk, path), disk->handles[m_handle].node);
        m_temporary = ETemporary::Readable;
    }
    return path;
}

bool CNativeFile::GiveName(const std::string& path, const std::string& name, bool replace) {
    const CLockedDisk disk;
    const SPlace place = PlaceOf(*disk, name);
    const EFileKind kind = KindOf(*disk, place.node);
    if (kind == EFileKind::Folder || (kind == EFileKind::File && !replace)) {
        return Refuse("File exists");
    }
    if (!CanBeCreated(name, place)) {
        return Refuse("No such file or directory");
    }
    const Node node = disk->handles[m_handle].node;
    if (m_temporary != ETemporary::Vanishing || kind == EFileKind::File) {
        if (m_temporary == ETemporary::Vanishing) {
            SetName(*disk, PlaceOf(*disk, path), node);  // only a new name can be given in one step
        }
        Rename(*disk, PlaceOf(*disk, path), place);
    } else {
        SetName(*disk, place, node);
    }
    m_temporary = ETemporary::No;
    return true;
}

bool CNativeFile::IsOpen() const {
    return m_handle >= 0;
}

bool CNativeFile::Close() {
    if (IsOpen()) {
        const CLockedDisk disk;
        const Node node = disk->handles[m_handle].node;
        disk->handles.erase(m_handle);
        FreeUnused(*disk, node);
        m_handle = -1;
        m_temporary = ETemporary::No;
    }
    return true;
}

std::size_t CNativeFile::Read(std::span<std::uint8_t> buffer, bool& failed) {
    const CLockedDisk disk;
    const auto found = disk->handles.find(m_handle);
    if (found == disk->handles.end()) {
        failed = true;
        return 0;
    }
    SHandle& handle = found->second;
    const auto size = static_cast<std::int64_t>(handle.content->size());
    const std::int64_t left = std::max<std::int64_t>(size - handle.position, 0);
    const std::size_t count = std::min(buffer.size(), static_cast<std::size_t>(left));
    std::copy_n(handle.content->begin() + std::min(handle.position, size), count, buffer.begin());
    handle.position += static_cast<std::int64_t>(count);
    return count;
}

std::size_t CNativeFile::Write(std::span<const std::uint8_t> bytes) {
    const CLockedDisk disk;
    const auto found = disk->handles.find(m_handle);
    if (found == disk->handles.end() || !found->second.writable) {
        Refuse("Bad file descriptor");
        return 0;
    }
    SHandle& handle = found->second;
    const std::int64_t end = handle.position + static_cast<std::int64_t>(bytes.size());
    if (end > static_cast<std::int64_t>(handle.content->size()) && !ChangeLength(*disk, *handle.content, end)) {
        return 0;
    }
    std::copy(bytes.begin(), bytes.end(), handle.content->begin() + handle.position);
    if (disk->record) {
        Record(*disk, {EDiskOperation::Write, handle.node, handle.position, {bytes.begin(), bytes.end()}});
    }
    handle.position = end;
    return bytes.size();
}

/// Copies only whole pages, as some systems do; the caller copies the rest with Read and Write.
std::size_t CNativeFile::CopyFrom(CNativeFile& source, std::size_t length) {
    constexpr std::size_t kPage = 4096;
    const std::int64_t start = PositionOf(source.m_handle);
    Bytes bytes(length / kPage * kPage);
    bool failed = false;
    bytes.resize(source.Read(bytes, failed));
    const std::size_t written = Write(bytes);
    source.Seek(start + static_cast<std::int64_t>(written));
    return written;
}

bool CNativeFile::Seek(std::int64_t position) {
    const CLockedDisk disk;
    const auto found = disk->handles.find(m_handle);
    if (found == disk->handles.end() || position < 0) {
        return Refuse("Invalid argument");
    }
    found->second.position = position;
    return true;
}

std::int64_t CNativeFile::Size() const {
    const CLockedDisk disk;
    const auto found = disk->handles.find(m_handle);
    return found == disk->handles.end() ? -1 : static_cast<std::int64_t>(found->second.content->size());
}

bool CNativeFile::Resize(std::int64_t length) {
    const CLockedDisk disk;
    const auto found = disk->handles.find(m_handle);
    if (found == disk->handles.end() || !found->second.writable || length < 0) {
        return Refuse("Invalid argument");
    }
    if (!ChangeLength(*disk, *found->second.content, length)) {
        return false;
    }
    Record(*disk, {EDiskOperation::Resize, found->second.node, length});
    return true;
}

std::string LastFileError() {
    return fuzz::LastReason();
}

EFileKind FileKindOf(const std::string& path) {
    const CLockedDisk disk;
    return path.empty() ? EFileKind::Missing : KindOf(*disk, PlaceOf(*disk, path).node);
}

std::int64_t FileSizeOf(const std::string& path) {
    const CLockedDisk disk;
    const auto found = disk->tree.files.find(PlaceOf(*disk, path).node);
    return found == disk->tree.files.end() ? -1 : static_cast<std::int64_t>(found->second->size());
}

bool IsSameFile(const std::string& first, const std::string& second) {
    const CLockedDisk disk;
    const Node node = PlaceOf(*disk, first).node;
    return node == PlaceOf(*disk, second).node && KindOf(*disk, node) == EFileKind::File;
}

bool RemoveFile(const std::string& path) {
    const CLockedDisk disk;
    const SPlace place = PlaceOf(*disk, path);
    if (KindOf(*disk, place.node) != EFileKind::File) {
        return Refuse("No such file or directory");
    }
    SetName(*disk, place, kNothing);
    return true;
}

bool RenameFile(const std::string& from, const std::string& to, bool replace) {
    const CLockedDisk disk;
    const SPlace source = PlaceOf(*disk, from);
    const SPlace target = PlaceOf(*disk, to);
    const EFileKind moved = KindOf(*disk, source.node);
    const EFileKind replaced = KindOf(*disk, target.node);
    if (moved == EFileKind::Missing || source.folder == kNothing || !CanBeCreated(to, target)) {
        return Refuse("No such file or directory");
    }
    const bool isRefused = !replace || moved == EFileKind::Folder || replaced == EFileKind::Folder;
    if (replaced != EFileKind::Missing && isRefused) {
        return Refuse("File exists");
    }
    Rename(*disk, source, target);
    return true;
}

void RemoveUnused(const std::string& path) {
    RemoveFile(path);
}

bool FlushFolder(const std::string& path) {
    const CLockedDisk disk;
    const Node node = PlaceOf(*disk, path).node;
    if (KindOf(*disk, node) != EFileKind::Folder) {
        return Refuse("No such file or directory");
    }
    Record(*disk, {EDiskOperation::FlushFolder, node});
    return true;
}

bool LinkFile(const std::string& existing, const std::string& added) {
    const CLockedDisk disk;
    const SPlace place = PlaceOf(*disk, added);
    const Node node = PlaceOf(*disk, existing).node;
    if (!disk->hasUnnamedAndLinked) {
        return Refuse("Operation not permitted");
    }
    if (KindOf(*disk, node) != EFileKind::File || place.node != kNothing || !CanBeCreated(added, place)) {
        return Refuse("File exists");
    }
    SetName(*disk, place, node);
    return true;
}

bool MakeFolder(const std::string& path) {
    const CLockedDisk disk;
    const SPlace place = PlaceOf(*disk, path);
    if (place.node != kNothing || place.folder == kNothing) {
        return KindOf(*disk, place.node) == EFileKind::Folder || Refuse("No such file or directory");
    }
    const Node node = disk->nextNode++;
    disk->tree.folders[node];
    ChangeNames(*disk, {{place.folder, place.name, node}}, node);
    return true;
}

bool RemoveFolder(const std::string& path) {
    const CLockedDisk disk;
    const SPlace place = PlaceOf(*disk, path);
    const auto found = disk->tree.folders.find(place.node);
    if (found == disk->tree.folders.end() || place.folder == kNothing) {
        return Refuse("No such file or directory");
    }
    if (!found->second.empty()) {
        return Refuse("Directory not empty");
    }
    disk->tree.folders.erase(found);
    ChangeNames(*disk, {{place.folder, place.name, kNothing}}, place.node);
    return true;
}

std::vector<std::string> ListFolder(const std::string& path) {
    const CLockedDisk disk;
    std::vector<std::string> names;
    const auto found = disk->tree.folders.find(PlaceOf(*disk, path).node);
    if (found != disk->tree.folders.end()) {
        for (const auto& [name, node] : found->second) {
            names.push_back(name);
        }
    }
    return names;
}

void CNativeFile::TakeModeOf(const std::string& /*path*/) {}

std::string ResolveLink(const std::string& path) {
    return path;
}

void SetFileDate(const std::string& /*path*/, std::int64_t /*seconds*/) {}

}  // namespace vantrel
