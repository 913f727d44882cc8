// The image in a raw file or in the data track of a CUE sheet: the user data of its sectors.
#include <vector>

#include "files/input_file.h"
#include "files/refused.h"
#include "image/block_image.h"
#include "image/forms.h"
#include "raw/raw_disc.h"

namespace vantrel {

namespace {

class CRawImage : public CBlockImage {
public:
    CRawImage(const std::string& path, EForm form)
        : m_form(form), m_track(ReadRawDisc(path).DataTrack()), m_sector(SectorSizeOf(m_track.mode)) {
        if (!m_file.Open(m_track.path)) {
            throw CRefused(m_track.path + ": " + LastFileError());
        }
        RequireDataSectors(m_track, m_file);
        SetGeometry(m_track.sectors * static_cast<std::int64_t>(kUserDataSize), kUserDataSize);
    }

    EForm Form() const override { return m_form; }
    const char* BlockNoun() const override { return "sector"; }

private:
    bool LoadBlock(std::uint64_t number, std::span<const std::uint8_t>& content, std::string& fault) override {
        const auto offset = static_cast<std::int64_t>(number * m_sector.size());
        if (m_file.ReadAt(m_track.position + offset, m_sector) != m_sector.size()) {
            fault = "it cannot be read";
            return false;
        }
        if (const SSectorFaults faults = CheckUserData(m_track.mode, m_sector); faults.Any()) {
            fault = TextOf(faults);
            return false;
        }
        content = UserDataOf(m_track.mode, m_sector);
        return true;
    }

    EForm m_form;
    STrack m_track;
    CInputFile m_file;
    std::vector<std::uint8_t> m_sector;
};

}  // namespace

std::unique_ptr<CImageSource> OpenRawImage(const std::string& path, EForm form) {
    return std::make_unique<CRawImage>(path, form);
}

}  // namespace vantrel
