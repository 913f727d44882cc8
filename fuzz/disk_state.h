// The state of the disk in memory: files and folders by number, their names, open handles, free space and the record.
// Its files (fuzz/memory_file.cpp) and those who set it up (fuzz/memory_disk.cpp) share it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "files/native_file.h"
#include "fuzz/disk_tree.h"

namespace vantrel::fuzz {

struct SHandle {
    Node node = kNothing;
    std::shared_ptr<Bytes> content;
    std::int64_t position = 0;
    bool writable = false;
};

struct SDisk {
    SDiskTree tree;
    std::map<std::intptr_t, SHandle> handles;
    std::intptr_t nextHandle = 0;
    Node nextNode = kRoot + 1;
    std::int64_t free = 0;  ///< Bytes left.
    bool hasUnnamedAndLinked = true;
    std::optional<std::vector<SDiskOperation>> record;
};

/// The disk, for one thread at a time: conversions read and write on several.
class CLockedDisk {
public:
    CLockedDisk();

    SDisk* operator->() const;
    SDisk& operator*() const { return *operator->(); }

private:
    std::unique_lock<std::mutex> m_lock;
};

/// Notes why an operation of this thread fails; returns false.
bool Refuse(const char* reason);
/// The last reason noted by this thread; empty if there is none.
const char* LastReason();

/// A path on the disk.
struct SPlace {
    Node folder = kNothing;  ///< kNothing if it does not exist, and for the root
    std::string name;
    Node node = kNothing;
};

SPlace PlaceOf(const SDisk& disk, const std::string& path);
/// Names have at most 255 bytes, as on most file systems.
bool CanBeCreated(const std::string& path, const SPlace& place);
EFileKind KindOf(const SDisk& disk, Node node);

/// Adds an operation to the record, if there is one.
void Record(SDisk& disk, SDiskOperation operation);

/// A new file, without a name. It is freed with its last name or handle.
Node MakeFile(SDisk& disk);
std::intptr_t OpenNode(SDisk& disk, Node node, bool writable);
/// Frees a file that has neither a name nor a handle.
void FreeUnused(SDisk& disk, Node node);
/// Changes the length of a file. Returns false and leaves the file unchanged if the disk is full.
bool ChangeLength(SDisk& disk, Bytes& content, std::int64_t length);

/// Changes names at once. `folder` is made or removed with that.
void ChangeNames(SDisk& disk, std::vector<SNameChange> changes, Node folder = kNothing);
/// Gives a file a name, which replaces a file of that name; kNothing removes the name.
void SetName(SDisk& disk, const SPlace& place, Node node);
/// Two names of one file both stay.
void Rename(SDisk& disk, const SPlace& from, const SPlace& to);

}  // namespace vantrel::fuzz
