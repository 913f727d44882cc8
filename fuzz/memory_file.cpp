// Defines all of files/native_file.h, so that the linker takes nothing from the room's own implementation.
#include "fuzz/memory_file.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "files/native_console.h"
#include "files/native_file.h"

namespace vantrel {

namespace {

using fuzz::Bytes;
using fuzz::EDiskOperation;
using fuzz::kNothing;
using fuzz::kRoot;
using fuzz::Node;
using fuzz::SDiskTree;
using fuzz::SNameChange;

struct SHandle {
    Node node = kNothing;
    std::shared_ptr<Bytes> content;
    std::int64_t position = 0;
    bool writable = false;
};

/// Guarded by a mutex, because conversions read and write on several threads.
struct SDisk {
    std::mutex mutex;
    SDiskTree tree;
    std::map<std::intptr_t, SHandle> handles;
    std::intptr_t nextHandle = 0;
    Node nextNode = kRoot + 1;
    std::int64_t free = 0;  ///< Bytes left.
    bool hasUnnamedAndLinked = true;
    std::optional<std::vector<fuzz::SDiskOperation>> record;
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

/// A path on the disk.
struct SPlace {
    Node folder = kNothing;  ///< kNothing if it does not exist, and for the root
    std::string name;
    Node node = kNothing;
};

Node NodeIn(const SDisk& disk, Node folder, const std::string& name) {
    const auto found = disk.tree.folders.find(folder);
    if (found == disk.tree.folders.end()) {
        return kNothing;
    }
    const auto entry = found->second.find(name);
    return entry == found->second.end() ? kNothing : entry->second;
}

/// The names of a path without empty ones, "." and "..".
std::vector<std::string> NamesOf(const std::string& path) {
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
    return names;
}

SPlace PlaceOf(const SDisk& disk, const std::string& path) {
    SPlace place = {kNothing, "", kRoot};
    for (const std::string& name : NamesOf(path)) {
        place.folder = disk.tree.folders.contains(place.node) ? place.node : kNothing;
        place.name = name;
        place.node = NodeIn(disk, place.folder, name);
    }
    return place;
}

/// Names have at most 255 bytes, as on most file systems.
bool CanBeCreated(const std::string& path, const SPlace& place) {
    constexpr std::size_t kLongestName = 255;
    return !path.empty() && path.back() != '/' && path.find('\0') == std::string::npos &&
           place.name.size() <= kLongestName && place.folder != kNothing;
}

EFileKind KindOf(const SDisk& disk, Node node) {
    if (disk.tree.folders.contains(node)) {
        return EFileKind::Folder;
    }
    return node == kNothing ? EFileKind::Missing : EFileKind::File;
}

void Record(SDisk& disk, fuzz::SDiskOperation operation) {
    if (disk.record) {
        disk.record->push_back(std::move(operation));
    }
}

/// Frees a file that has neither a name nor a handle.
void FreeUnused(SDisk& disk, Node node) {
    const auto found = disk.tree.files.find(node);
    const auto isNamedIn = [node](const auto& folder) {
        return std::any_of(folder.second.begin(), folder.second.end(),
                           [node](const auto& entry) { return entry.second == node; });
    };
    if (found == disk.tree.files.end() || found->second.use_count() > 1 ||
        std::any_of(disk.tree.folders.begin(), disk.tree.folders.end(), isNamedIn)) {
        return;
    }
    disk.free += static_cast<std::int64_t>(found->second->size());
    disk.tree.files.erase(found);
}

/// `folder` is made or removed with that.
void ChangeNames(SDisk& disk, std::vector<SNameChange> changes, Node folder = kNothing) {
    std::vector<Node> replaced;
    for (const SNameChange& change : changes) {
        auto& names = disk.tree.folders[change.folder];
        replaced.push_back(NodeIn(disk, change.folder, change.name));
        if (change.node == kNothing) {
            names.erase(change.name);
        } else {
            names[change.name] = change.node;
        }
    }
    Record(disk, {EDiskOperation::ChangeNames, folder, 0, {}, std::move(changes)});
    for (const Node node : replaced) {
        FreeUnused(disk, node);
    }
}

/// Gives a file a name, which replaces a file of that name.
void SetName(SDisk& disk, const SPlace& place, Node node) {
    ChangeNames(disk, {{place.folder, place.name, node}});
}

void Rename(SDisk& disk, const SPlace& from, const SPlace& to) {
    if (from.node != to.node) {  // two names of one file both stay
        ChangeNames(disk, {{from.folder, from.name, kNothing}, {to.folder, to.name, from.node}});
    }
}

Node MakeFile(SDisk& disk) {
    const Node node = disk.nextNode++;
    disk.tree.files[node] = std::make_shared<Bytes>();
    return node;
}

std::intptr_t OpenNode(SDisk& disk, Node node, bool writable) {
    disk.handles[disk.nextHandle] = {node, disk.tree.files[node], 0, writable};
    return disk.nextHandle++;
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

}  // namespace

bool CNativeFile::Open(const std::string& path, EOpenMode mode, ESharing /*sharing*/) {
    Close();
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    SPlace place = PlaceOf(disk, path);
    const EFileKind kind = path.empty() ? EFileKind::Missing : KindOf(disk, place.node);
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
        place.node = MakeFile(disk);
        SetName(disk, place, place.node);
    } else if (mode == EOpenMode::CreateTruncate) {
        ChangeLength(disk, *disk.tree.files[place.node], 0);
        Record(disk, {EDiskOperation::Resize, place.node});
    }
    m_handle = OpenNode(disk, place.node, mode != EOpenMode::Read);
    return true;
}

bool CNativeFile::OpenTemporary(const std::string& path, ESharing /*sharing*/) {
    Close();
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const SPlace place = PlaceOf(disk, path);
    if (!CanBeCreated(path, place) || place.node != kNothing) {
        return Refuse("No such file or directory");
    }
    const Node node = MakeFile(disk);
    if (!disk.hasUnnamedAndLinked) {
        SetName(disk, place, node);
    }
    m_temporary = disk.hasUnnamedAndLinked ? ETemporary::Vanishing : ETemporary::Staying;
    m_handle = OpenNode(disk, node, true);
    return true;
}

bool CNativeFile::CompleteWrites() {
    return true;
}

ELock CNativeFile::TakeLock() {
    return ELock::Taken;
}

bool CNativeFile::FlushToDisk() {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    Record(disk, {EDiskOperation::FlushFile, disk.handles[m_handle].node});
    return true;
}

std::string CNativeFile::PathToRead(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    if (m_temporary == ETemporary::Vanishing) {
        SetName(disk, PlaceOf(disk, path), disk.handles[m_handle].node);
        m_temporary = ETemporary::Readable;
    }
    return path;
}

bool CNativeFile::GiveName(const std::string& path, const std::string& name, bool replace) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const SPlace place = PlaceOf(disk, name);
    const EFileKind kind = KindOf(disk, place.node);
    if (kind == EFileKind::Folder || (kind == EFileKind::File && !replace)) {
        return Refuse("File exists");
    }
    if (!CanBeCreated(name, place)) {
        return Refuse("No such file or directory");
    }
    const Node node = disk.handles[m_handle].node;
    if (m_temporary != ETemporary::Vanishing || kind == EFileKind::File) {
        if (m_temporary == ETemporary::Vanishing) {
            SetName(disk, PlaceOf(disk, path), node);  // only a new name can be given in one step
        }
        Rename(disk, PlaceOf(disk, path), place);
    } else {
        SetName(disk, place, node);
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
        const Node node = disk.handles[m_handle].node;
        disk.handles.erase(m_handle);
        FreeUnused(disk, node);
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
    if (disk.record) {
        Record(disk, {EDiskOperation::Write, handle.node, handle.position, {bytes.begin(), bytes.end()}});
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
    if (!ChangeLength(disk, *found->second.content, length)) {
        return false;
    }
    Record(disk, {EDiskOperation::Resize, found->second.node, length});
    return true;
}

std::string LastFileError() {
    return t_lastError;
}

EFileKind FileKindOf(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    return path.empty() ? EFileKind::Missing : KindOf(disk, PlaceOf(disk, path).node);
}

std::int64_t FileSizeOf(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const auto found = disk.tree.files.find(PlaceOf(disk, path).node);
    return found == disk.tree.files.end() ? -1 : static_cast<std::int64_t>(found->second->size());
}

bool IsSameFile(const std::string& first, const std::string& second) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const Node node = PlaceOf(disk, first).node;
    return node == PlaceOf(disk, second).node && KindOf(disk, node) == EFileKind::File;
}

bool RemoveFile(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const SPlace place = PlaceOf(disk, path);
    if (KindOf(disk, place.node) != EFileKind::File) {
        return Refuse("No such file or directory");
    }
    SetName(disk, place, kNothing);
    return true;
}

bool RenameFile(const std::string& from, const std::string& to, bool replace) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const SPlace source = PlaceOf(disk, from);
    const SPlace target = PlaceOf(disk, to);
    const EFileKind moved = KindOf(disk, source.node);
    const EFileKind replaced = KindOf(disk, target.node);
    if (moved == EFileKind::Missing || source.folder == kNothing || !CanBeCreated(to, target)) {
        return Refuse("No such file or directory");
    }
    const bool isRefused = !replace || moved == EFileKind::Folder || replaced == EFileKind::Folder;
    if (replaced != EFileKind::Missing && isRefused) {
        return Refuse("File exists");
    }
    Rename(disk, source, target);
    return true;
}

void RemoveUnused(const std::string& path) {
    RemoveFile(path);
}

bool FlushFolder(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const Node node = PlaceOf(disk, path).node;
    if (KindOf(disk, node) != EFileKind::Folder) {
        return Refuse("No such file or directory");
    }
    Record(disk, {EDiskOperation::FlushFolder, node});
    return true;
}

bool LinkFile(const std::string& existing, const std::string& added) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const SPlace place = PlaceOf(disk, added);
    const Node node = PlaceOf(disk, existing).node;
    if (!disk.hasUnnamedAndLinked) {
        return Refuse("Operation not permitted");
    }
    if (KindOf(disk, node) != EFileKind::File || place.node != kNothing || !CanBeCreated(added, place)) {
        return Refuse("File exists");
    }
    SetName(disk, place, node);
    return true;
}

bool MakeFolder(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const SPlace place = PlaceOf(disk, path);
    if (place.node != kNothing || place.folder == kNothing) {
        return KindOf(disk, place.node) == EFileKind::Folder || Refuse("No such file or directory");
    }
    const Node node = disk.nextNode++;
    disk.tree.folders[node];
    ChangeNames(disk, {{place.folder, place.name, node}}, node);
    return true;
}

bool RemoveFolder(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const SPlace place = PlaceOf(disk, path);
    const auto found = disk.tree.folders.find(place.node);
    if (found == disk.tree.folders.end() || place.folder == kNothing) {
        return Refuse("No such file or directory");
    }
    if (!found->second.empty()) {
        return Refuse("Directory not empty");
    }
    disk.tree.folders.erase(found);
    ChangeNames(disk, {{place.folder, place.name, kNothing}}, place.node);
    return true;
}

std::vector<std::string> ListFolder(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    std::vector<std::string> names;
    const auto found = disk.tree.folders.find(PlaceOf(disk, path).node);
    if (found != disk.tree.folders.end()) {
        for (const auto& [name, node] : found->second) {
            names.push_back(name);
        }
    }
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

namespace {

SDiskTree CopyOf(const SDiskTree& tree) {
    SDiskTree copy = {{}, tree.folders};
    for (const auto& [node, content] : tree.files) {
        copy.files[node] = std::make_shared<Bytes>(*content);
    }
    return copy;
}

void AddContents(const SDiskTree& tree, Node folder, const std::string& path, std::map<std::string, Bytes>& contents) {
    contents[path];
    for (const auto& [name, node] : tree.folders.at(folder)) {
        if (tree.folders.contains(node)) {
            AddContents(tree, node, path + name + '/', contents);
        } else {
            contents[path + name] = *tree.files.at(node);
        }
    }
}

}  // namespace

std::map<std::string, Bytes> ContentsOf(const SDiskTree& tree) {
    std::map<std::string, Bytes> contents;
    AddContents(tree, kRoot, "/", contents);
    return contents;
}

void ClearDisk(std::int64_t capacity) {
    {
        SDisk& disk = Disk();
        const std::lock_guard lock(disk.mutex);
        disk.tree = {};
        disk.free = capacity;
    }
    MakeFolder(kFolder);
}

void SupportUnnamedAndLinkedFiles(bool isSupported) {
    Disk().hasUnnamedAndLinked = isSupported;
}

void PutFile(const std::string& path, std::span<const std::uint8_t> content) {
    for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        MakeFolder(path.substr(0, end));
    }
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const Node node = MakeFile(disk);
    disk.free -= static_cast<std::int64_t>(content.size());
    disk.tree.files[node]->assign(content.begin(), content.end());
    SetName(disk, PlaceOf(disk, path), node);
}

const Bytes& ContentOf(const std::string& path) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    const auto found = disk.tree.files.find(PlaceOf(disk, path).node);
    if (found == disk.tree.files.end()) {
        std::abort();
    }
    return *found->second;
}

std::map<std::string, Bytes> WholeDisk() {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    return ContentsOf(disk.tree);
}

SDiskTree CopyOfDisk() {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    return CopyOf(disk.tree);
}

void LoadDisk(const SDiskTree& tree) {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    disk.tree = CopyOf(tree);
}

void StartRecording() {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    disk.record.emplace();
}

std::vector<SDiskOperation> StopRecording() {
    SDisk& disk = Disk();
    const std::lock_guard lock(disk.mutex);
    std::vector<SDiskOperation> recorded;
    disk.record.value().swap(recorded);
    disk.record.reset();
    return recorded;
}

}  // namespace fuzz

}  // namespace vantrel
