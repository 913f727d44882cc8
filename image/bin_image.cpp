// The image in a raw file or in the data track of a CUE sheet: the user data of its sectors.
#include <algorithm>
#include <vector>

#include "files/input_file.h"
#include "files/refused.h"
#include "image/block_image.h"
#include "image/forms.h"
#include "image/image_chunks.h"
#include "image/raw_report.h"
#include "operation/text.h"
#include "raw/raw_disc.h"

namespace vantrel {

namespace {

class CRawSectors : public CBlockPiece {
public:
    CRawSectors(const SBlockGeometry& geometry, const STrack& track, CInputFile& file, std::size_t count)
        : CBlockPiece(geometry),
          m_track(track),
          m_file(file),
          m_sectorSize(SectorSizeOf(track.mode)),
          m_stored(count * m_sectorSize) {}

private:
    void LoadBlocks(std::uint64_t first, std::size_t count) override {
        const auto offset = static_cast<std::int64_t>(first * m_sectorSize);
        m_length = m_file.ReadAt(m_track.position + offset, std::span(m_stored).first(count * m_sectorSize));
    }

    bool ExpandBlock(std::size_t index, std::span<std::uint8_t> room, std::string& fault) override {
        if ((index + 1) * m_sectorSize > m_length) {
            fault = "it cannot be read";
            return false;
        }
        const auto sector = std::span(m_stored).subspan(index * m_sectorSize, m_sectorSize);
        if (const SSectorFaults faults = CheckUserData(m_track.mode, sector); faults.Any()) {
            fault = TextOf(faults);
            return false;
        }
        std::ranges::copy(UserDataOf(m_track.mode, sector), room.begin());
        return true;
    }

    const STrack& m_track;
    CInputFile& m_file;
    std::size_t m_sectorSize;
    std::vector<std::uint8_t> m_stored;
    std::size_t m_length = 0;
};

class CRawImage : public CBlockImage {
public:
    CRawImage(const std::string& path, EForm form)
        : m_form(form), m_disc(ReadRawDisc(path)), m_track(m_disc.DataTrack()) {
        if (!m_file.Open(m_track.path)) {
            throw CRefused(m_track.path + ": " + LastFileError());
        }
        RequireDataSectors(m_track, m_file);
        SetGeometry(
            {m_track.path, m_track.sectors * static_cast<std::int64_t>(kUserDataSize), kUserDataSize, "sector"});
    }

    EForm Form() const override { return m_form; }
    std::optional<CReport> Facts() override { return ReportOnRawImage(m_disc); }
    std::unique_ptr<CImageChunks> Chunks() override { return ChunksOf(m_track); }

    std::vector<std::string> MissingParts() const override {
        if (m_track.leftOver == 0) {
            return {};
        }
        return {Format("the file is not a whole number of sectors: %lld bytes are left over",
                       static_cast<long long>(m_track.leftOver))};
    }

    std::vector<std::string> OtherParts() const override {
        std::vector<std::string> texts;
        for (const STrack& track : m_disc.OtherTracks()) {
            texts.push_back(TextOfLeftOut(track));
        }
        return texts;
    }

private:
    std::unique_ptr<CBlockPiece> NewBlocks(std::size_t count) override {
        return std::make_unique<CRawSectors>(Geometry(), m_track, m_file, count);
    }

    EForm m_form;
    SRawDisc m_disc;
    const STrack& m_track;
    CInputFile m_file;
};

}  // namespace

std::unique_ptr<CImageSource> OpenBinImage(const std::string& path) {
    return std::make_unique<CRawImage>(path, EForm::Bin);
}

std::unique_ptr<CImageSource> OpenCueImage(const std::string& path) {
    return std::make_unique<CRawImage>(path, EForm::Cue);
}

}  // namespace vantrel
