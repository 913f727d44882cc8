// What the disk in memory holds, and the record of what happened to it, from which fuzz/power_cut.h derives what a
// power cut leaves.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vantrel::fuzz {

using Bytes = std::vector<std::uint8_t>;

/// The number of a file or folder, independent of its names.
using Node = std::int64_t;
inline constexpr Node kNothing = 0;
inline constexpr Node kRoot = 1;

struct SDiskTree {
    std::map<Node, std::shared_ptr<Bytes>> files;
    std::map<Node, std::map<std::string, Node>> folders = {{kRoot, {}}};
};

/// Files with their contents by path, and folders with a '/' at the end.
std::map<std::string, Bytes> ContentsOf(const SDiskTree& tree);

/// A name in a folder now stands for something else.
struct SNameChange {
    Node folder;
    std::string name;
    Node node;  ///< kNothing: the name is removed.
};

enum class EDiskOperation { Write, Resize, ChangeNames, FlushFile, FlushFolder };

struct SDiskOperation {
    EDiskOperation kind;
    Node node = kNothing;                 ///< The file or folder; of ChangeNames, the folder that it makes or removes.
    std::int64_t position = 0;            ///< of Write; the length of Resize
    Bytes bytes = {};                     ///< of Write
    std::vector<SNameChange> names = {};  ///< of ChangeNames: changed at once
};

}  // namespace vantrel::fuzz
