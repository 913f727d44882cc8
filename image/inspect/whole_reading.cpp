#include "image/inspect/whole_reading.h"

#include "image/inspect/digest.h"
#include "pipeline/ordered_pipeline.h"
#include "raw/fault_ranges.h"

namespace vantrel {

namespace {

constexpr std::size_t kSlots = 6;

void Append(std::vector<std::string>& list, const std::vector<std::string>& lines) {
    list.insert(list.end(), lines.begin(), lines.end());
}

void Add(CFaultRanges& ranges, const std::vector<SBlockFault>& faults) {
    for (const SBlockFault& fault : faults) {
        ranges.Add(fault.number, fault.text);
    }
}

}  // namespace

SReading ReadWhole(CImageChunks& chunks, const char* blockNoun, const std::function<void(std::int64_t)>& afterChunk) {
    CImageDigest digest;
    // One worker reads, checks and computes two of the sums, in order. MD5, on this thread, takes as long as all that.
    COrderedPipeline<SImageChunk> pipeline(
        chunks.Count(), 1,
        std::vector<SImageChunk>(kSlots, {std::vector<std::uint8_t>(chunks.BufferSize()), 0, {}, {}}),
        [&](SImageChunk& chunk, std::uint64_t number) {
            chunks.Read(chunk, number);
            digest.UpdateOthers(chunk.Bytes());
        },
        [](SImageChunk&, std::uint64_t, std::uint32_t) {});
    CFaultRanges wrong(blockNoun);
    CFaultRanges unreadable(blockNoun);
    std::int64_t bytes = 0;
    while (const SImageChunk* chunk = pipeline.Next()) {
        digest.UpdateMd5(chunk->Bytes());
        Add(wrong, chunk->wrong);
        Add(unreadable, chunk->unreadable);
        bytes += static_cast<std::int64_t>(chunk->length);
        afterChunk(bytes);
    }
    SReading reading;
    Append(reading.problems, wrong.Lines());
    Append(reading.problems, chunks.Problems());
    Append(reading.problems, unreadable.Lines());
    if (unreadable.IsEmpty()) {
        reading.sums = {bytes, digest.Crc32(), digest.Md5(), digest.Sha1()};
    }
    return reading;
}

}  // namespace vantrel
