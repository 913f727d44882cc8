// Compresses or expands whole blocks, one after the other: zlib streams, and the encoder of LZ4 blocks.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "compress/stream_memory.h"

namespace vantrel {

/// Raw deflate data (RFC 1951), deflate data with zlib's header and check value (RFC 1950), or an LZ4 block. The values
/// of the first two are zlib's windowBits for a window of 32 KiB.
enum class EStreamForm : int { Raw = -15, Zlib = 15, Lz4 = 0 };

/// Whether each block gets a new stream or the first stream is reset. The output is the same.
enum class EStreamUse { Fresh, Reused };

struct SStreamSettings {
    EStreamForm form;
    std::optional<int> level;  ///< Compression level, 1 to 9; a stream without a level inflates.
};

enum class EStreamStep { Begin, Work, End };

/// The result of one block.
struct SStreamOutcome {
    std::size_t produced = 0;               ///< Bytes of output, also after a failure.
    std::optional<EStreamStep> failedStep;  ///< The first step that failed.
    int result = Z_OK;                      ///< zlib's return code in that step.
    const char* message = "";               ///< zlib's message in that step; "error" if it gave none.

    bool FailedIn(EStreamStep step) const { return failedStep == step; }
    /// The output counts as intact even if only ending the stream fails.
    bool HasAllOutput() const { return !failedStep || failedStep == EStreamStep::End; }
};

/// Compresses or expands one block at a time.
class CBlockCoder {
public:
    virtual ~CBlockCoder() = default;

    /// Processes a block in one call. Fails unless all of the input is processed and the output has room for the
    /// result.
    virtual SStreamOutcome Run(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) = 0;
};

/// The coder for these settings. An LZ4 block is always compressed, at one level.
std::unique_ptr<CBlockCoder> NewCoder(const SStreamSettings& settings, EStreamUse use);

/// Whether all bytes are zero.
bool IsZero(std::span<const std::uint8_t> bytes);

/// Expands an LZ4 block.
SStreamOutcome ExpandLz4(std::span<const std::uint8_t> input, std::span<std::uint8_t> output);

/// A zlib stream. Deflating uses the default memory level and strategy, as zlib's one-call routine does.
class CBlockStream : public CBlockCoder {
public:
    CBlockStream(const SStreamSettings& settings, EStreamUse use) : m_settings(settings), m_use(use) {}
    CBlockStream(const CBlockStream&) = delete;
    CBlockStream& operator=(const CBlockStream&) = delete;
    ~CBlockStream() override;

    SStreamOutcome Run(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) override;

private:
    int Begin();
    int Init();
    int Reset();
    int Work();
    int End();

    bool Deflates() const { return m_settings.level.has_value(); }
    bool Check(EStreamStep step, int result, int wanted, SStreamOutcome& outcome) const;

    const SStreamSettings m_settings;
    const EStreamUse m_use;
    CStreamMemory m_memory;
    z_stream m_stream = {};
    bool m_isOpen = false;
};

}  // namespace vantrel
