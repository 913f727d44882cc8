// One zlib stream that serves block after block, in either direction.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <span>

namespace vantrel {

/// A raw deflate stream (RFC 1951), or one with zlib's header and check value (RFC 1950). The value is zlib's for a
/// window of 32 KiB.
enum class EStreamForm : int { Raw = -15, Zlib = 15 };

/// Whether every block gets a new stream, or the first one's, reset. What comes out is the same; with some memory
/// allocators, creating a stream costs as much as using it.
enum class EStreamUse { Fresh, Kept };

enum class EStreamStep { Begin, Work, End };

/// What zlib made of one block.
struct SStreamOutcome {
    std::size_t produced = 0;  ///< Bytes that came out, whole or not.
    bool failed = false;
    EStreamStep failedStep = EStreamStep::Begin;  ///< The first step that failed, and what zlib answered to it.
    int result = Z_OK;
    const char* message = "";  ///< What zlib said then, or "error" when it said nothing.

    bool FailedIn(EStreamStep step) const { return failed && failedStep == step; }
};

/// Deflates a whole block in one call, with the default memory level and strategy: what zlib's one-call routine does.
struct SDeflating {
    EStreamForm form;
    int level;

    int Begin(z_stream& stream) const {
        constexpr int kMemoryLevel = 8;
        return deflateInit2(&stream, level, Z_DEFLATED, static_cast<int>(form), kMemoryLevel, Z_DEFAULT_STRATEGY);
    }
    static int Reset(z_stream& stream) { return deflateReset(&stream); }
    static int Work(z_stream& stream) { return deflate(&stream, Z_FINISH); }
    static int End(z_stream& stream) { return deflateEnd(&stream); }
};

/// Inflates a whole block in one call.
struct SInflating {
    EStreamForm form;

    int Begin(z_stream& stream) const { return inflateInit2(&stream, static_cast<int>(form)); }
    static int Reset(z_stream& stream) { return inflateReset(&stream); }
    static int Work(z_stream& stream) { return inflate(&stream, Z_FULL_FLUSH); }
    static int End(z_stream& stream) { return inflateEnd(&stream); }
};

template <typename Direction>
class CBlockStream {
public:
    CBlockStream(Direction direction, EStreamUse use) : m_direction(direction), m_use(use) {}
    CBlockStream(const CBlockStream&) = delete;
    CBlockStream& operator=(const CBlockStream&) = delete;
    ~CBlockStream() {
        if (m_open) {
            Direction::End(m_stream);
        }
    }

    /// Takes a block through zlib. It fails unless all of it is taken in and all that comes out has room.
    SStreamOutcome Run(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) {
        SStreamOutcome outcome;
        if (!Note(EStreamStep::Begin, Begin(), Z_OK, outcome)) {
            return outcome;
        }
        m_stream.next_in = const_cast<Bytef*>(input.data());
        m_stream.avail_in = static_cast<uInt>(input.size());
        m_stream.next_out = output.data();
        m_stream.avail_out = static_cast<uInt>(output.size());
        Note(EStreamStep::Work, Direction::Work(m_stream), Z_STREAM_END, outcome);
        outcome.produced = output.size() - m_stream.avail_out;
        if (m_use == EStreamUse::Fresh) {
            m_open = false;
            Note(EStreamStep::End, Direction::End(m_stream), Z_OK, outcome);
        }
        return outcome;
    }

private:
    int Begin() {
        if (m_open) {
            return Direction::Reset(m_stream);
        }
        m_stream = {};
        const int result = m_direction.Begin(m_stream);
        m_open = result == Z_OK;
        return result;
    }

    /// Keeps what went wrong first; false when something did now.
    bool Note(EStreamStep step, int result, int wanted, SStreamOutcome& outcome) const {
        if (result != wanted && !outcome.failed) {
            outcome.failed = true;
            outcome.failedStep = step;
            outcome.result = result;
            outcome.message = m_stream.msg != nullptr ? m_stream.msg : "error";
        }
        return result == wanted;
    }

    const Direction m_direction;
    const EStreamUse m_use;
    z_stream m_stream = {};
    bool m_open = false;
};

using CBlockDeflater = CBlockStream<SDeflating>;
using CBlockInflater = CBlockStream<SInflating>;

}  // namespace vantrel
