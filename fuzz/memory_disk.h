// A disk in memory, so that a fuzzed conversion has a disk of its own, thousands of times a second. Like a real disk,
// it has a limited capacity; it can also record what happens to it. Conversions use it through files/native_file.h.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "fuzz/disk_tree.h"

namespace vantrel::fuzz {

/// The folder in which the targets work, with its separator.
inline constexpr const char* kFolder = "/disc/";

/// Removes everything except one empty folder, and sets the capacity in bytes. Open handles stay usable.
void ClearDisk(std::int64_t capacity);

/// Whether files can be without names, and have several. Otherwise, temporary files have names, and hard links fail.
void SupportUnnamedAndLinkedFiles(bool isSupported);

/// Creates a file and its folders. Its bytes count as used.
void PutFile(const std::string& path, std::span<const std::uint8_t> content);

/// The content of a file; aborts if there is none.
const Bytes& ContentOf(const std::string& path);

/// All files with their contents, and the folders with a '/' at the end: shows what a conversion did to the disk.
std::map<std::string, Bytes> WholeDisk();

/// A copy of what the disk holds.
SDiskTree CopyOfDisk();
/// Makes the disk hold a copy of `tree`. Its capacity stays.
void LoadDisk(const SDiskTree& tree);

/// Records all operations from now on.
void StartRecording();
/// Returns what was recorded, in order.
std::vector<SDiskOperation> StopRecording();

}  // namespace vantrel::fuzz
