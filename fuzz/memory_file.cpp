// Defines all of files/native_file.h, so that the linker takes nothing from the room's own implementation.
#include "fuzz/memory_file.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <set>

#include "files/native_console.h"
#include "files/native_file.h"

namespace vantrel {

namespace {

using fuzz::Bytes;

struct SHandle {
    std::shared_ptr<Bytes> content;
    std::int64_t position = 0;
    bool writable = false;
};

/// Guarded by a mutex, because conversions read and write on several threads.
struct SDisk {
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<Bytes>> files;
    std::set<std::string> folders = {"/"};
    std::map<std::intptr_t, SHandle> handles;
    std::intptr_t nextHandle = 0;
    std::int64_t free = 0;  ///< Bytes left.
};

SDisk& Disk() {
    static SDisk disk;
    return disk;
}

thread_local const char* t_lastError = "";

bool Refuse(const char* reason) {
    t_lastError = reason;
    return false;
}

/// The canonical form of a path: absolute, without empty names, "." and "..".
std::string PlaceOf(const std::string& path) {
    std::vector<std::string> names;
    for (std::size_t start = 0; start < path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string name = path.substr(start, end - start);
        if (name == ".." && !names.empty()) {
            names.pop_back();
        } else if (!name.empty() && name != "." && name != "..") {
            names.push_back(name);
        }
        start = end + 1;
    }
    std::string place;
    for (const std::string& name : names) {
        place += '/' + name;
    }
    return place.empty() ? "/" : place;
}

std::string ParentOf(const std::string& place) {
    const std::size_t separator = place.rfind('/');
    return separator == 0 ? "/" : place.substr(0, separator);
}

/// Names have at most 255 bytes, as on most file systems.
bool CanBeCreated(const SDisk& disk, const std::string& path, const std::string& place) {
    constexpr std::size_t kLongestName = 255;
    return !path.empty() && path.back() != '/' && path.find('\0') == std::string::npos &&
           place.size() - place.rfind('/') - 1 <= kLongestName && disk.folders.contains(ParentOf(place));
}

EFileKind KindOfPlace(const SDisk& disk, const std::string& place) {
    if (disk.folders.contains(place)) {
        return EFileKind::Folder;
    }
    return disk.files.contains(place) ? EFileKind::File : EFileKind::Missing;
}

/// Changes the length of a file. Returns false and leaves the file unchanged if the disk is full.
bool ChangeLength(SDisk& disk, Bytes& content, std::int64_t length) {
    const std::int64_t more = length - static_cast<std::int64_t>(content.size());
    if (more > disk.free) {
        return Refuse("No space left on device");
    }
    disk.free -= more;
    content.resize(static_cast<std::size_t>(length));
    return true;
}

std::int64_t PositionOf(std::intptr_t handle) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const auto found = disk.handles.find(handle);
    return found == disk.handles.end() ? 0 : found->second.position;
}

bool IsNameIn(const std::string& place, const std::string& folder) {
    return place != "/" && ParentOf(place) == folder;
}

std::string NameOf(const std::string& place) {
    return place.substr(place.rfind('/') + 1);
}

}  // namespace

bool CNativeFile::Open(const std::string& path, EOpenMode mode, ESharing /*sharing*/) {
    Close();
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const std::string place = PlaceOf(path);
    const EFileKind kind = path.empty() ? EFileKind::Missing : KindOfPlace(disk, place);
    if (kind == EFileKind::Folder) {
        return Refuse("Is a directory");
    }
    const bool creates = mode == EOpenMode::CreateTruncate || mode == EOpenMode::CreateNew;
    if (kind == EFileKind::File && mode == EOpenMode::CreateNew) {
        return Refuse("File exists");
    }
    if (kind == EFileKind::Missing && (!creates || !CanBeCreated(disk, path, place))) {
        return Refuse("No such file or directory");
    }
    std::shared_ptr<Bytes>& content = disk.files[place];
    if (!content) {
        content = std::make_shared<Bytes>();
    }
    if (mode == EOpenMode::CreateTruncate) {
        disk.free += static_cast<std::int64_t>(content->size());
        content->clear();
    }
    m_handle = disk.nextHandle++;
    disk.handles[m_handle] = {content, 0, mode != EOpenMode::Read};
    return true;
}

bool CNativeFile::OpenTemporary(const std::string& path, ESharing /*sharing*/) {
    Close();
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    if (!CanBeCreated(disk, path, PlaceOf(path))) {
        return Refuse("No such file or directory");
    }
    m_temporary = ETemporary::Vanishing;
    m_handle = disk.nextHandle++;
    disk.handles[m_handle] = {std::make_shared<Bytes>(), 0, true};
    return true;
}

bool CNativeFile::CompleteWrites() {
    return true;
}

ELock CNativeFile::TakeLock() {
    return ELock::Taken;
}

bool CNativeFile::FlushToDisk() {
    return true;
}

std::string CNativeFile::PathToRead(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    disk.files[PlaceOf(path)] = disk.handles[m_handle].content;
    m_temporary = ETemporary::Readable;
    return path;
}

bool CNativeFile::GiveName(const std::string& path, const std::string& name, bool replace) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const std::string place = PlaceOf(name);
    const EFileKind kind = KindOfPlace(disk, place);
    if (kind == EFileKind::Folder || (kind == EFileKind::File && !replace)) {
        return Refuse("File exists");
    }
    if (!CanBeCreated(disk, name, place)) {
        return Refuse("No such file or directory");
    }
    disk.files[place] = disk.handles[m_handle].content;
    if (m_temporary == ETemporary::Readable) {
        disk.files.erase(PlaceOf(path));
    }
    m_temporary = ETemporary::No;
    return true;
}

bool CNativeFile::IsOpen() const {
    return m_handle >= 0;
}

bool CNativeFile::Close() {
    if (IsOpen()) {
        SDisk& disk = Disk();
        const std::lock_guard lock(disk.mutex);
        const auto found = disk.handles.find(m_handle);
        if (m_temporary == ETemporary::Vanishing && found != disk.handles.end()) {
            disk.free += static_cast<std::int64_t>(found->second.content->size());
        }
        disk.handles.erase(m_handle);
        m_handle = -1;
        m_temporary = ETemporary::No;
    }
    return true;
}

std::size_t CNativeFile::Read(std::span<std::uint8_t> buffer, bool& failed) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const auto found = disk.handles.find(m_handle);
    if (found == disk.handles.end()) {
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
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const auto found = disk.handles.find(m_handle);
    if (found == disk.handles.end() || !found->second.writable) {
        Refuse("Bad file descriptor");
        return 0;
    }
    SHandle& handle = found->second;
    const std::int64_t end = handle.position + static_cast<std::int64_t>(bytes.size());
    if (end > static_cast<std::int64_t>(handle.content->size()) && !ChangeLength(disk, *handle.content, end)) {
        return 0;
    }
    std::copy(bytes.begin(), bytes.end(), handle.content->begin() + handle.position);
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
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const auto found = disk.handles.find(m_handle);
    if (found == disk.handles.end() || position < 0) {
        return Refuse("Invalid argument");
    }
    found->second.position = position;
    return true;
}

std::int64_t CNativeFile::Size() const {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const auto found = disk.handles.find(m_handle);
    return found == disk.handles.end() ? -1 : static_cast<std::int64_t>(found->second.content->size());
}

bool CNativeFile::Resize(std::int64_t length) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const auto found = disk.handles.find(m_handle);
    if (found == disk.handles.end() || !found->second.writable || length < 0) {
        return Refuse("Invalid argument");
    }
    return ChangeLength(disk, *found->second.content, length);
}

std::string LastFileError() {
    return t_lastError;
}

EFileKind FileKindOf(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    return path.empty() ? EFileKind::Missing : KindOfPlace(disk, PlaceOf(path));
}

std::int64_t FileSizeOf(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const auto found = disk.files.find(PlaceOf(path));
    return found == disk.files.end() ? -1 : static_cast<std::int64_t>(found->second->size());
}

bool IsSameFile(const std::string& first, const std::string& second) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const auto one = disk.files.find(PlaceOf(first));
    const auto two = disk.files.find(PlaceOf(second));
    return one != disk.files.end() && two != disk.files.end() && one->second == two->second;
}

bool RemoveFile(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const auto found = disk.files.find(PlaceOf(path));
    if (found == disk.files.end()) {
        return Refuse("No such file or directory");
    }
    if (found->second.use_count() == 1) {
        disk.free += static_cast<std::int64_t>(found->second->size());
    }
    disk.files.erase(found);
    return true;
}

/// Renames a folder with everything in it.
bool RenameFolder(SDisk& disk, const std::string& from, const std::string& to) {
    if (KindOfPlace(disk, to) != EFileKind::Missing) {
        return Refuse("File exists");
    }
    const std::string beginning = from + '/';
    const auto moved = [&](const std::string& place) { return to + place.substr(from.size()); };
    std::set<std::string> folders;
    for (const std::string& folder : disk.folders) {
        folders.insert(folder == from || folder.starts_with(beginning) ? moved(folder) : folder);
    }
    std::map<std::string, std::shared_ptr<Bytes>> files;
    for (const auto& [place, content] : disk.files) {
        files[place.starts_with(beginning) ? moved(place) : place] = content;
    }
    disk.folders.swap(folders);
    disk.files.swap(files);
    return true;
}

bool RenameFile(const std::string& from, const std::string& to, bool replace) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const std::string place = PlaceOf(to);
    if (disk.folders.contains(PlaceOf(from)) && CanBeCreated(disk, to, place)) {
        return RenameFolder(disk, PlaceOf(from), place);
    }
    const auto found = disk.files.find(PlaceOf(from));
    if (found == disk.files.end()) {
        return Refuse("No such file or directory");
    }
    const EFileKind kind = KindOfPlace(disk, place);
    if (kind == EFileKind::Folder || (kind == EFileKind::File && !replace)) {
        return Refuse("File exists");
    }
    if (!CanBeCreated(disk, to, place)) {
        return Refuse("No such file or directory");
    }
    const std::shared_ptr<Bytes> content = found->second;
    disk.files.erase(found);
    disk.files[place] = content;
    return true;
}

void RemoveUnused(const std::string& path) {
    RemoveFile(path);
}

bool FlushFolder(const std::string& /*path*/) {
    return true;
}

bool LinkFile(const std::string& existing, const std::string& added) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const std::string place = PlaceOf(added);
    const auto found = disk.files.find(PlaceOf(existing));
    if (found == disk.files.end() || KindOfPlace(disk, place) != EFileKind::Missing ||
        !CanBeCreated(disk, added, place)) {
        return Refuse("File exists");
    }
    disk.files[place] = found->second;
    return true;
}

bool MakeFolder(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const std::string place = PlaceOf(path);
    if (!disk.folders.contains(ParentOf(place)) || disk.files.contains(place)) {
        return Refuse("No such file or directory");
    }
    disk.folders.insert(place);
    return true;
}

bool RemoveFolder(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const std::string place = PlaceOf(path);
    const auto isIn = [&place](const std::string& other) { return IsNameIn(other, place); };
    if (std::any_of(disk.folders.begin(), disk.folders.end(), isIn) ||
        std::any_of(disk.files.begin(), disk.files.end(), [&](const auto& file) { return isIn(file.first); })) {
        return Refuse("Directory not empty");
    }
    return disk.folders.erase(place) > 0 || Refuse("No such file or directory");
}

std::vector<std::string> ListFolder(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const std::string place = PlaceOf(path);
    std::vector<std::string> names;
    for (const std::string& folder : disk.folders) {
        if (IsNameIn(folder, place)) {
            names.push_back(NameOf(folder));
        }
    }
    for (const auto& [file, content] : disk.files) {
        if (IsNameIn(file, place)) {
            names.push_back(NameOf(file));
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string CurrentFolder() {
    return "/";
}

void CNativeFile::TakeModeOf(const std::string& /*path*/) {}

std::string ResolveLink(const std::string& path) {
    return path;
}

void SetFileDate(const std::string& /*path*/, std::int64_t /*seconds*/) {}

void UseUtf8Console() {}

void UseBinaryOutput() {}

bool IsTerminal(EStream /*stream*/) {
    return false;
}

int TerminalColumns() {
    return 80;
}

namespace fuzz {

void ClearDisk(std::int64_t capacity) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    disk.files.clear();
    disk.folders = {"/", "/disc"};
    disk.free = capacity;
}

void PutFile(const std::string& path, std::span<const std::uint8_t> content) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const std::string place = PlaceOf(path);
    for (std::string folder = ParentOf(place); disk.folders.insert(folder).second;) {
        folder = ParentOf(folder);
    }
    disk.free -= static_cast<std::int64_t>(content.size());
    disk.files[place] = std::make_shared<Bytes>(content.begin(), content.end());
}

const Bytes& ContentOf(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const auto found = disk.files.find(PlaceOf(path));
    if (found == disk.files.end()) {
        std::abort();
    }
    return *found->second;
}

std::map<std::string, Bytes> WholeDisk() {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    std::map<std::string, Bytes> everything;
    for (const auto& [place, content] : disk.files) {
        everything[place] = *content;
    }
    for (const std::string& folder : disk.folders) {
        everything[folder + '/'];
    }
    return everything;
}

}  // namespace fuzz

}  // namespace vantrel
