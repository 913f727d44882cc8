// Files that exist in memory only: one more implementation of files/native_file.h, so that a fuzzed conversion works on
// a disk of its own, thousands of times a second. The disk's room is limited, as on every real one.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace vantrel::fuzz {

using Bytes = std::vector<std::uint8_t>;

/// The folder in which the targets work, with its separator.
inline constexpr const char* kFolder = "/disc/";

/// Forgets all files and leaves one empty folder, with room for this many bytes. Open handles stay usable.
void ClearDisk(std::int64_t room);

/// Puts a file there, its folders included; its bytes count as used room.
void PutFile(const std::string& path, std::span<const std::uint8_t> content);

/// The content of a file; the target ends when there is none.
const Bytes& ContentOf(const std::string& path);

/// All files with their contents, and the folders with a '/' behind them, to compare what a conversion did to the disk.
std::map<std::string, Bytes> WholeDisk();

}  // namespace vantrel::fuzz
