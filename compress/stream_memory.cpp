#include "compress/stream_memory.h"

#include <cstddef>
#include <cstdlib>

namespace vantrel {

/// Stands directly before the memory that zlib uses.
struct alignas(std::max_align_t) CStreamMemory::SPiece {
    SPiece* next;
    std::size_t size;
    bool isUsed;
};

CStreamMemory::~CStreamMemory() {
    while (m_pieces != nullptr) {
        SPiece* const next = m_pieces->next;
        std::free(m_pieces);
        m_pieces = next;
    }
}

z_stream CStreamMemory::NewStream() {
    z_stream stream = {};
    stream.zalloc = &CStreamMemory::Take;
    stream.zfree = &CStreamMemory::GiveBack;
    stream.opaque = this;
    return stream;
}

/// Streams of the same settings ask for the same sizes, so a free piece fits exactly or not at all.
voidpf CStreamMemory::Take(voidpf memory, uInt items, uInt size) {
    auto& self = *static_cast<CStreamMemory*>(memory);
    const std::size_t wanted = std::size_t{items} * size;
    SPiece* piece = self.m_pieces;
    while (piece != nullptr && (piece->isUsed || piece->size != wanted)) {
        piece = piece->next;
    }
    if (piece == nullptr) {
        piece = static_cast<SPiece*>(std::malloc(sizeof(SPiece) + wanted));
        if (piece == nullptr) {
            return nullptr;
        }
        *piece = {self.m_pieces, wanted, false};
        self.m_pieces = piece;
    }
    piece->isUsed = true;
    return piece + 1;
}

void CStreamMemory::GiveBack(voidpf, voidpf content) {
    (static_cast<SPiece*>(content) - 1)->isUsed = false;
}

}  // namespace vantrel
