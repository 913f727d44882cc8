#include "compress/sharing.h"

#include <algorithm>

namespace vantrel {

namespace {

/// Bytes of the image in a piece: some milliseconds of compressing, little enough for the caches.
constexpr std::uint32_t kPieceSize = 128U * 1024U;
constexpr std::uint32_t kMostBlocksPerPiece = 64;
/// What the places of all pieces and the streams of all workers may take together.
constexpr std::uint64_t kMemory = 48U << 20U;
/// A stream that deflates takes 268 KiB; the rest is for its thread.
constexpr std::uint64_t kWorkerMemory = 320U << 10U;

}  // namespace

SSharing SharingOf(const SCompressionRequest& request, const SBlockSizes& sizes) {
    if (request.manner == EOutputManner::InPlace) {
        return {};
    }
    SSharing sharing;
    sharing.streams = EStreamUse::Kept;
    sharing.blocksPerPiece = std::clamp(kPieceSize / sizes.block, 1U, kMostBlocksPerPiece);
    const std::uint64_t place = std::uint64_t{sharing.blocksPerPiece} * (std::uint64_t{sizes.block} + sizes.storedRoom);
    const auto most = static_cast<std::uint32_t>(kMemory / (2 * place + kWorkerMemory));
    sharing.workers = std::min(request.workers, std::max(most, 1U));
    return sharing;
}

}  // namespace vantrel
