#include "compress/block_stream.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "compress/lz4_decoder.h"
#include "compress/lz4_encoder.h"

namespace vantrel {

namespace {

class CLz4Coder : public CBlockCoder {
public:
    SStreamOutcome Run(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) override {
        SStreamOutcome outcome;
        outcome.produced = m_encoder.Encode(input, output);
        if (outcome.produced == 0) {
            outcome.failedStep = EStreamStep::Work;
            outcome.result = Z_BUF_ERROR;
        }
        return outcome;
    }

private:
    CLz4Encoder m_encoder;
};

/// Compresses blocks of zeros, which fill large parts of many images, once for each size.
class CZeroSavingCoder : public CBlockCoder {
public:
    explicit CZeroSavingCoder(std::unique_ptr<CBlockCoder> coder) : m_coder(std::move(coder)) {}

    SStreamOutcome Run(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) override {
        if (!IsZero(input)) {
            return m_coder->Run(input, output);
        }
        if (input.size() != m_zeros || m_outcome.produced > output.size()) {
            m_outcome = m_coder->Run(input, output);
            m_zeros = input.size();
            m_compressed.assign(output.begin(), output.begin() + static_cast<std::ptrdiff_t>(m_outcome.produced));
        } else {
            std::ranges::copy(m_compressed, output.begin());
        }
        return m_outcome;
    }

private:
    std::unique_ptr<CBlockCoder> m_coder;
    std::size_t m_zeros = 0;  ///< Length of the zeros that m_compressed holds; 0: none.
    SStreamOutcome m_outcome;
    std::vector<std::uint8_t> m_compressed;
};

std::unique_ptr<CBlockCoder> BareCoder(const SStreamSettings& settings, EStreamUse use) {
    if (settings.form == EStreamForm::Lz4) {
        return std::make_unique<CLz4Coder>();
    }
    return std::make_unique<CBlockStream>(settings, use);
}

}  // namespace

bool IsZero(std::span<const std::uint8_t> bytes) {
    return bytes.empty() || (bytes[0] == 0 && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0);
}

std::unique_ptr<CBlockCoder> NewCoder(const SStreamSettings& settings, EStreamUse use) {
    std::unique_ptr<CBlockCoder> coder = BareCoder(settings, use);
    const bool savesZeros = settings.level && use == EStreamUse::Reused;
    return savesZeros ? std::make_unique<CZeroSavingCoder>(std::move(coder)) : std::move(coder);
}

SStreamOutcome ExpandLz4(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) {
    SStreamOutcome outcome;
    if (const std::optional<std::size_t> produced = DecodeLz4(input, output)) {
        outcome.produced = *produced;
    } else {
        outcome.failedStep = EStreamStep::Work;
        outcome.result = Z_DATA_ERROR;
        outcome.message = "invalid LZ4 data";
    }
    return outcome;
}

CBlockStream::~CBlockStream() {
    if (m_isOpen) {
        End();
    }
}

SStreamOutcome CBlockStream::Run(std::span<const std::uint8_t> input, std::span<std::uint8_t> output) {
    SStreamOutcome outcome;
    if (!Check(EStreamStep::Begin, Begin(), Z_OK, outcome)) {
        return outcome;
    }
    m_stream.next_in = const_cast<Bytef*>(input.data());
    m_stream.avail_in = static_cast<uInt>(input.size());
    m_stream.next_out = output.data();
    m_stream.avail_out = static_cast<uInt>(output.size());
    Check(EStreamStep::Work, Work(), Z_STREAM_END, outcome);
    outcome.produced = output.size() - m_stream.avail_out;
    if (m_use == EStreamUse::Fresh) {
        Check(EStreamStep::End, End(), Z_OK, outcome);
    }
    return outcome;
}

int CBlockStream::Begin() {
    if (m_isOpen) {
        return Reset();
    }
    m_stream = m_memory.NewStream();
    const int result = Init();
    m_isOpen = result == Z_OK;
    return result;
}

int CBlockStream::Init() {
    constexpr int kMemoryLevel = 8;
    const int windowBits = static_cast<int>(m_settings.form);
    return Deflates()
               ? deflateInit2(&m_stream, *m_settings.level, Z_DEFLATED, windowBits, kMemoryLevel, Z_DEFAULT_STRATEGY)
               : inflateInit2(&m_stream, windowBits);
}

int CBlockStream::Reset() {
    return Deflates() ? deflateReset(&m_stream) : inflateReset(&m_stream);
}

int CBlockStream::Work() {
    return Deflates() ? deflate(&m_stream, Z_FINISH) : inflate(&m_stream, Z_FULL_FLUSH);
}

int CBlockStream::End() {
    m_isOpen = false;
    return Deflates() ? deflateEnd(&m_stream) : inflateEnd(&m_stream);
}

/// Records the first failure of a block. Returns false if this step failed.
bool CBlockStream::Check(EStreamStep step, int result, int wanted, SStreamOutcome& outcome) const {
    if (result != wanted && !outcome.failedStep) {
        outcome.failedStep = step;
        outcome.result = result;
        outcome.message = m_stream.msg != nullptr ? m_stream.msg : "error";
    }
    return result == wanted;
}

}  // namespace vantrel
