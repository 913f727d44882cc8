// Whether the path tables of a volume describe its directories.
#pragma once

#include "files/byte_source.h"
#include "image/inspect/disc_tree.h"
#include "image/inspect/limited_lines.h"

namespace vantrel {

/// Adds what the type L path table says otherwise than the directories, and where the other tables differ from it
/// (ECMA-119 6.9, 9.4).
void CheckPathTables(CByteSource& image, const SIsoVolume& volume, CLimitedLines& problems);

/// The places of the path tables that the volume has, one to four.
std::vector<SExtent> PathTablePlaces(const SPrimaryVolumeDescriptor& descriptor);

}  // namespace vantrel
