// The blocks of one conversion, taken one by one in their order. They are made in pieces of several, on threads where
// there are some.
#pragma once

#include <algorithm>
#include <deque>
#include <vector>

#include "compress/sharing.h"
#include "pipeline/ordered_pipeline.h"

namespace vantrel {

/// The memory for the pieces of a run over `blocks` blocks; nothing when it cannot be had.
template <typename Piece>
std::vector<Piece> PlacesOf(const SSharing& sharing, const SBlockSizes& sizes, std::uint64_t blocks) {
    const std::uint64_t pieces = blocks / sharing.blocksPerPiece + 1;
    std::vector<Piece> places(static_cast<std::size_t>(std::min<std::uint64_t>(PlacesFor(sharing.workers), pieces)));
    for (Piece& place : places) {
        if (!place.Allocate(sizes, sharing.blocksPerPiece)) {
            return {};
        }
    }
    return places;
}

/// A piece names the types Source, Direction and Block, and has Read, for a run of blocks, and Make, with a stream.
template <typename Piece>
class CBlocksAhead {
public:
    using Source = typename Piece::Source;
    using Direction = typename Piece::Direction;
    using Block = typename Piece::Block;

    /// `places` come from PlacesOf. The source is read from here on, and outlives the object.
    CBlocksAhead(const SSharing& sharing, std::uint64_t blocks, std::vector<Piece> places, Source& source,
                 Direction direction)
        : m_blocks(blocks),
          m_perPiece(sharing.blocksPerPiece),
          m_source(source),
          m_pieces((blocks + m_perPiece - 1) / m_perPiece, WithStreams(sharing, direction), std::move(places),
                   [this](Piece& piece, std::uint64_t number) { Read(piece, number * m_perPiece); },
                   [this](Piece& piece, std::uint64_t, std::uint32_t worker) { piece.Make(m_streams[worker]); }) {}

    /// The next block, valid until the next call. There must be one left.
    const Block& Next() {
        if (m_at == m_current.size()) {
            m_current = m_pieces.Next()->Blocks();
            m_at = 0;
        }
        return m_current[m_at++];
    }

private:
    using Stream = CBlockStream<Direction>;

    /// Makes a stream for each worker, or one where there is none; the number of workers.
    std::uint32_t WithStreams(const SSharing& sharing, Direction direction) {
        for (std::uint32_t i = 0; i < std::max(sharing.workers, 1U); ++i) {
            m_streams.emplace_back(direction, sharing.streams);
        }
        return sharing.workers;
    }

    void Read(Piece& piece, std::uint64_t first) {
        piece.Read(m_source, first, static_cast<std::uint32_t>(std::min<std::uint64_t>(m_perPiece, m_blocks - first)));
    }

    const std::uint64_t m_blocks;
    const std::uint32_t m_perPiece;
    Source& m_source;
    std::deque<Stream> m_streams;  ///< A stream cannot be moved.
    CPiecesAhead<Piece> m_pieces;
    std::span<const Block> m_current;
    std::size_t m_at = 0;
};

}  // namespace vantrel
