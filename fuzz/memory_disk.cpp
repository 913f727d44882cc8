#include "fuzz/memory_disk.h"

#include <cstdlib>
#include <memory>

#include "files/native_file.h"
#include "fuzz/disk_state.h"

namespace vantrel::fuzz {

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
        const CLockedDisk disk;
        disk->tree = {};
        disk->free = capacity;
    }
    MakeFolder(kFolder);
}

void SupportUnnamedAndLinkedFiles(bool isSupported) {
    CLockedDisk()->hasUnnamedAndLinked = isSupported;
}

void PutFile(const std::string& path, std::span<const std::uint8_t> content) {
    for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        MakeFolder(path.substr(0, end));
    }
    const CLockedDisk disk;
    const Node node = MakeFile(*disk);
    disk->free -= static_cast<std::int64_t>(content.size());
    disk->tree.files[node]->assign(content.begin(), content.end());
    SetName(*disk, PlaceOf(*disk, path), node);
}

const Bytes& ContentOf(const std::string& path) {
    const CLockedDisk disk;
    const auto found = disk->tree.files.find(PlaceOf(*disk, path).node);
    if (found == disk->tree.files.end()) {
        std::abort();
    }
    return *found->second;
}

std::map<std::string, Bytes> WholeDisk() {
    const CLockedDisk disk;
    return ContentsOf(disk->tree);
}

SDiskTree CopyOfDisk() {
    const CLockedDisk disk;
    return CopyOf(disk->tree);
}

void LoadDisk(const SDiskTree& tree) {
    const CLockedDisk disk;
    disk->tree = CopyOf(tree);
}

void StartRecording() {
    const CLockedDisk disk;
    disk->record.emplace();
}

std::vector<SDiskOperation> StopRecording() {
    const CLockedDisk disk;
    std::vector<SDiskOperation> recorded;
    disk->record.value().swap(recorded);
    disk->record.reset();
    return recorded;
}

}  // namespace vantrel::fuzz
