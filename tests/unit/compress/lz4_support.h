// Blocks to compress, and a reader of LZ4 sequences that checks what the decoder does not care about.
#pragma once

#include <cstddef>
#include <ostream>
#include <span>
#include <vector>

#include "tests/support/test_folder.h"

namespace vantrel::test {

struct SLz4Data {
    const char* name;
    Bytes (*make)();  ///< Always gives the same 1 MiB, except for code.
};

/// Names the tests of each kind of data.
inline void PrintTo(const SLz4Data& data, std::ostream* out) {
    *out << data.name;
}

/// Text, machine code, data as games have it, noise, and repetitions of many kinds.
std::span<const SLz4Data> Lz4Corpus();

struct SLz4Sequence {
    std::size_t position;  ///< Of the match, or the end of the content.
    std::size_t literals;
    std::size_t length;  ///< Of the match; 0 in the last sequence.
    std::size_t offset;
};

/// The sequences of a block; throws if it ends early.
std::vector<SLz4Sequence> SequencesOf(const Bytes& block);

}  // namespace vantrel::test
