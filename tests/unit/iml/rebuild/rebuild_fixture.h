// A folder with a layout, its ".ims" file and loose files, and the runs of the rebuild over it.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "iml/rebuild/rebuild.h"
#include "tests/support/layout_builder.h"
#include "tests/support/recording_operation.h"
#include "tests/support/test_folder.h"

namespace vantrel {

class RebuildTest : public testing::Test {
protected:
    static constexpr std::size_t kSector = 2048;

    /// Adds a loose file and its entry. The window uses paths as written, so the layout holds full paths.
    void Add(std::int64_t first, std::int64_t last, const std::string& name, const test::Bytes& content) {
        test::WriteWhole(m_folder / name, content);
        m_layout.entries.push_back({first, last, m_prefix + name});
    }

    void WriteLayout() {
        test::WriteText(m_folder / "game.iml", test::LayoutText(m_layout));
        m_leading = test::LeadingBytes(m_layout);
        test::WriteWhole(m_folder / "game.ims", m_leading);
    }

    SRebuildRequest InPlace() const { return WindowRebuild(m_folder.Path(), "game.iml"); }

    SRebuildRequest Strict() const {
        SRebuildRequest request = InPlace();
        request.sideFiles.reset();
        request.manner = EOutputManner::CommitNew;
        request.filesFolder = m_folder.Path();
        request.strict = true;
        return request;
    }

    /// Writes the layout, rebuilds like the window and returns the image.
    test::Bytes Rebuilt() {
        WriteLayout();
        RebuildImage(InPlace(), m_operation);
        return test::ReadWhole(m_folder / "game.iso");
    }

    std::string Failure(const SRebuildRequest& request) {
        return test::FailureOf([&] { RebuildImage(request, m_operation); });
    }

    /// Checks the texts for an output and side files that cannot be opened.
    void ExpectFailuresOfSideFiles() {
        SRebuildRequest request = InPlace();
        request.sideFiles->entryList = m_folder / "no/game.txt";
        EXPECT_EQ(Failure(request), "Code 202 - Error Opening " + request.sideFiles->entryList);
        request = InPlace();
        request.sideFiles->bounds = m_folder / "no/game.vlt";
        EXPECT_EQ(Failure(request), "Code 2021 - Error Opening " + request.sideFiles->bounds);
        request = InPlace();
        request.outputPath = m_folder / "no/game.iso";
        EXPECT_EQ(Failure(request), "Code 203!!! file not found ==> " + request.outputPath);
        request = InPlace();
        request.leadingPath = m_folder / "no.ims";
        EXPECT_EQ(Failure(request), "Code 204!!! file not found==> " + request.leadingPath);
    }

    /// The bytes of a file with its padding.
    static test::Bytes Padded(test::Bytes content) {
        static constexpr std::uint8_t kMark[] = {0x0B, 0x02, 0x13, 0x06, 0x01, 0x1A, 0x0C, 0x03, 0x15, 0x08};
        const std::size_t sectors = content.empty() ? 1 : (content.size() + kSector - 1) / kSector;
        for (const std::uint8_t byte : kMark) {
            if (content.size() < sectors * kSector) {
                content.push_back(byte);
            }
        }
        content.resize(sectors * kSector);
        return content;
    }

    static void Put(test::Bytes& image, std::size_t sector, const test::Bytes& content) {
        image.resize(std::max(image.size(), sector * kSector + content.size()));
        std::copy(content.begin(), content.end(), image.begin() + static_cast<std::ptrdiff_t>(sector * kSector));
    }

    static void PutVolumeSize(test::Bytes& image) {
        const auto sectors = static_cast<std::uint32_t>(image.size() / kSector);
        for (std::size_t i = 0; i < 4; ++i) {
            image.at(0x8050 + i) = static_cast<std::uint8_t>(sectors >> (8 * i));
            image.at(0x8057 - i) = static_cast<std::uint8_t>(sectors >> (8 * i));
        }
    }

    static void PutPostgap(test::Bytes& image) {
        const std::size_t start = image.size();
        image.resize(start + 150 * kSector);
        const std::string word = "postgap";
        std::copy(word.begin(), word.end(), image.begin() + static_cast<std::ptrdiff_t>(start));
    }

    /// The image of a PlayStation 2 CD with these files: first sector and content.
    test::Bytes CdWith(const std::vector<std::pair<std::size_t, test::Bytes>>& files) const {
        test::Bytes image = m_leading;
        for (const auto& [sector, content] : files) {
            Put(image, sector, Padded(content));
        }
        PutPostgap(image);
        PutVolumeSize(image);
        return image;
    }

    test::CTestFolder m_folder;
    std::string m_prefix = m_folder.Path();
    test::SLayoutDescription m_layout;
    test::Bytes m_leading;
    test::CRecordingOperation m_operation;
};

}  // namespace vantrel
