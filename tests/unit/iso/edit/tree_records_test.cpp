// Names in the directories of a Joliet volume.
#include "iso/edit/tree_records.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>

#include "tests/unit/iso/edit/memory_image.h"

namespace vantrel {
namespace {

using testing::ElementsAre;

constexpr std::uint32_t kOneSector = 2048;

/// A directory record of one sector; `name` as it is recorded.
test::Bytes Record(std::uint32_t sector, std::uint8_t flags, std::string_view name) {
    test::Bytes record(sizeof(SDirectoryRecord) + name.size() + (name.size() + 1) % 2);
    record[0] = static_cast<std::uint8_t>(record.size());
    test::SetRecord(record, 0, sector, kOneSector);
    record[25] = flags;
    record[32] = static_cast<std::uint8_t>(name.size());
    std::copy(name.begin(), name.end(), record.begin() + sizeof(SDirectoryRecord));
    return record;
}

/// UCS-2 in big-endian order (ECMA-119 escape sequence 2/5, 2/15, 4/5).
std::string Recorded(std::u16string_view name) {
    std::string recorded;
    for (const char16_t unit : name) {
        recorded += static_cast<char>(unit >> 8U);
        recorded += static_cast<char>(unit & 0xFFU);
    }
    return recorded;
}

/// An image of directories, each in a sector of its own.
test::Bytes ImageOf(const std::vector<std::vector<test::Bytes>>& directories) {
    test::Bytes image(directories.size() * kOneSector);
    for (std::size_t i = 0; i < directories.size(); ++i) {
        auto next = image.begin() + static_cast<std::ptrdiff_t>(i * kOneSector);
        for (const test::Bytes& record : directories[i]) {
            next = std::copy(record.begin(), record.end(), next);
        }
    }
    return image;
}

TEST(TreeRecords, NamesOfJolietAreUtf8) {
    const std::string self(1, '\0');
    const std::string parent(1, '\1');
    test::CMemoryImage image(ImageOf({{Record(0, kFileFlagDirectory, self), Record(0, kFileFlagDirectory, parent),
                                       Record(1, kFileFlagDirectory, Recorded(u"\u00DCbung"))},
                                      {Record(1, kFileFlagDirectory, self), Record(0, kFileFlagDirectory, parent),
                                       Record(0, kFileFlagsPlain, Recorded(u"\u65E5\u672C.bin;1")),
                                       Record(1, kFileFlagsPlain, Recorded(u"Long name\n.bin"))}}));
    std::array<std::uint8_t, sizeof(SDirectoryRecord)> root = {};
    std::copy_n(image.m_bytes.begin(), root.size(), root.begin());
    const STreeRecords tree = ReadTreeRecords(image, std::bit_cast<SDirectoryRecord>(root), ENameCoding::Ucs2);
    std::vector<std::string> paths;
    for (const STreeFile& file : tree.files) {
        paths.push_back(file.path);
    }
    EXPECT_THAT(paths, ElementsAre("\u00DCbung/\u65E5\u672C.bin", "\u00DCbung/Long name_.bin"));
}

}  // namespace
}  // namespace vantrel
