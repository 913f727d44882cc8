#include "fuzz/disk_state.h"

#include <algorithm>
#include <utility>

namespace vantrel::fuzz {

namespace {

thread_local const char* t_lastReason = "";

std::mutex& Mutex() {
    static std::mutex mutex;
    return mutex;
}

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

}  // namespace

CLockedDisk::CLockedDisk() : m_lock(Mutex()) {}

SDisk* CLockedDisk::operator->() const {
    static SDisk disk;
    return &disk;
}

bool Refuse(const char* reason) {
    t_lastReason = reason;
    return false;
}

const char* LastReason() {
    return t_lastReason;
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

void Record(SDisk& disk, SDiskOperation operation) {
    if (disk.record) {
        disk.record->push_back(std::move(operation));
    }
}

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

void ChangeNames(SDisk& disk, std::vector<SNameChange> changes, Node folder) {
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

void SetName(SDisk& disk, const SPlace& place, Node node) {
    ChangeNames(disk, {{place.folder, place.name, node}});
}

void Rename(SDisk& disk, const SPlace& from, const SPlace& to) {
    if (from.node != to.node) {
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

bool ChangeLength(SDisk& disk, Bytes& content, std::int64_t length) {
    const std::int64_t more = length - static_cast<std::int64_t>(content.size());
    if (more > disk.free) {
        return Refuse("No space left on device");
    }
    disk.free -= more;
    content.resize(static_cast<std::size_t>(length));
    return true;
}

}  // namespace vantrel::fuzz
