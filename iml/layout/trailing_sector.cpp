#include "iml/layout/trailing_sector.h"

#include "files/byte_order.h"

namespace vantrel {

namespace {

constexpr std::size_t kTagLocation = 12;

}  // namespace

TrailingSector ReadTrailingSector(CInputFile& leading) {
    TrailingSector sector = {};
    leading.ReadAt(leading.Size() - kSectorSize, sector);
    return sector;
}

std::uint32_t TagLocationOf(const TrailingSector& sector) {
    return LoadLe32(std::span(sector).subspan<kTagLocation, 4>());
}

}  // namespace vantrel
