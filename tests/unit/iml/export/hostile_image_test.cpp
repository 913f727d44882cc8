// Walks through images with wrong structures. Every walk ends, with the files that exist or with a message.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "iml/export/walker.h"
#include "tests/support/image_builder.h"
#include "tests/support/recording_operation.h"

namespace vantrel::test {
namespace {

class HostileImageTest : public testing::Test {
protected:
    HostileImageTest() {
        SImageDescription description;
        description.files = {{"A.BIN", Bytes(3000, 1)}, {"DIR/B.BIN", Bytes(10, 2)}, {"DIR/SUB/C.BIN", Bytes(5, 3)}};
        m_image = BuildImage(description);
    }

    /// The list, or the text of the failure.
    std::string Outcome() {
        WriteWhole(m_folder / "game.iso", m_image.bytes);
        const SWalkFilePaths sideFiles = WindowWalkFiles(m_folder.Path(), "game.iso");
        CRecordingOperation operation;
        const std::string failure = FailureOf([&] { WalkIsoImage({m_folder / "game.iso", sideFiles}, operation); });
        return failure == "did not fail" ? ReadText(sideFiles.fileList) : failure;
    }
    /// The listed paths of a strict walk, or the text of the failure.
    std::string Strict() {
        WriteWhole(m_folder / "game.iso", m_image.bytes);
        CRecordingOperation operation;
        std::string paths;
        const std::string failure = FailureOf([&] {
            const SWalkedImage walked = WalkIsoImage({m_folder / "game.iso", std::nullopt, true}, operation);
            m_notices = walked.notices;
            for (const SWalkedFile& file : walked.files) {
                paths += file.path + "\n";
            }
        });
        return failure == "did not fail" ? paths : failure;
    }

    std::string Refusal() const { return "Code 9999 - invalid file header " + (m_folder / "game.iso"); }
    std::size_t RecordOf(std::string_view path) const { return m_image.File(path).recordOffset; }

    CTestFolder m_folder;
    SBuiltImage m_image;
    std::vector<std::string> m_notices;
};

constexpr const char* kAllFiles =
    "00000019|00000BB8|00000002|\\A.BIN\r\n0000001B|0000000A|00000001|\\DIR\\B.BIN\r\n"
    "0000001C|00000005|00000001|\\DIR\\SUB\\C.BIN\r\n";

TEST_F(HostileImageTest, StartsWithASoundImage) {
    EXPECT_EQ(Outcome(), kAllFiles);
}

TEST_F(HostileImageTest, CyclicParents) {
    m_image.bytes[m_image.directories[1].pathTableOffset + 6] = 3;
    EXPECT_NE(Outcome().find("|\\SUB\\DIR\\B.BIN\r\n"), std::string::npos) << Outcome();
}

TEST_F(HostileImageTest, DanglingParents) {
    m_image.bytes[m_image.directories[2].pathTableOffset + 7] = 0xFF;
    EXPECT_NE(Outcome().find("|\\SUB\\C.BIN\r\n"), std::string::npos) << Outcome();
}

TEST_F(HostileImageTest, ADirectoryThatContainsItself) {
    Write32(m_image.bytes, m_image.directories[2].pathTableOffset + 2, m_image.directories[1].sector);
    EXPECT_EQ(Outcome(), "00000019|00000BB8|00000002|\\A.BIN\r\n0000001B|0000000A|00000001|\\DIR\\B.BIN\r\n");
}

TEST_F(HostileImageTest, DirectoriesBeyondTheImage) {
    Write32(m_image.bytes, m_image.directories[2].pathTableOffset + 2, 0xFFFFFFFF);
    EXPECT_EQ(Outcome(), "00000019|00000BB8|00000002|\\A.BIN\r\n0000001B|0000000A|00000001|\\DIR\\B.BIN\r\n");
    EXPECT_EQ(m_notices.size(), 0U);
    Strict();
    EXPECT_EQ(m_notices, std::vector<std::string>{
                             "The path table of " + (m_folder / "game.iso") +
                             " disagrees with its directories: it names 2 of 3 directories, and 1 others; the "
                             "layout follows the directories"});
    // The record of SUB follows that of B.BIN.
    const std::size_t file = RecordOf("\\DIR\\B.BIN");
    Write32(m_image.bytes, file + m_image.bytes[file] + 2, 0xFFFFFFFF);
    EXPECT_EQ(Strict(), (m_folder / "game.iso") + " ends at sector 29, before its directory at sector 4294967295");
}

TEST_F(HostileImageTest, AStrictWalkDoesNotNeedThePathTable) {
    const std::string all = "A.BIN\nDIR\\B.BIN\nDIR\\SUB\\C.BIN\n";
    EXPECT_EQ(Strict(), all);
    EXPECT_TRUE(m_notices.empty());
    const std::size_t table = std::size_t{m_image.pathTableSector} * 2048;
    std::fill_n(m_image.bytes.begin() + static_cast<std::ptrdiff_t>(table), 2048, std::uint8_t{0});
    EXPECT_EQ(Strict(), all);
    ASSERT_EQ(m_notices.size(), 1U);
    EXPECT_NE(m_notices[0].find("it names 0 of 3 directories"), std::string::npos) << m_notices[0];
}

TEST_F(HostileImageTest, AStrictWalkNamesFilesThatALayoutCannotList) {
    m_image.bytes[RecordOf("\\A.BIN") + 25] = 4;
    m_image.bytes[RecordOf("\\DIR\\B.BIN") + 25] = 1;
    EXPECT_EQ(Strict(), "DIR\\B.BIN\nDIR\\SUB\\C.BIN\n");
    EXPECT_EQ(m_notices,
              (std::vector<std::string>{
                  "1 files are not in the layout, which cannot represent them: A.BIN (associated)",
                  "1 files have properties that the layout does not record; the leading structures keep them: "
                  "DIR\\B.BIN (hidden)"}));
}

TEST_F(HostileImageTest, AStrictWalkNamesTenFilesAndCountsTheOthers) {
    SImageDescription description;
    std::string names;
    for (const char digit : std::string("0123456789AB")) {
        description.files.push_back({std::string("F") + digit, Bytes(1, 1)});
        names += digit > '9' ? "" : std::string("F") + digit + " (associated), ";
    }
    m_image = BuildImage(description);
    for (const SBuiltFile& file : m_image.files) {
        m_image.bytes[file.recordOffset + 25] = 4;
    }
    EXPECT_EQ(Strict(), "");
    EXPECT_EQ(m_notices, std::vector{"12 files are not in the layout, which cannot represent them: " +
                                     names.substr(0, names.size() - 2) + " and 2 more"});
}

TEST_F(HostileImageTest, AStrictWalkNamesFilesWithoutAName) {
    m_image.bytes[RecordOf("\\A.BIN") + 33] = ';';
    EXPECT_EQ(Strict(), "DIR\\B.BIN\nDIR\\SUB\\C.BIN\n");
    EXPECT_EQ(m_notices, std::vector<std::string>{
                             "1 files are not in the layout, which cannot represent them:  (without a name)"});
}

TEST_F(HostileImageTest, ADirectoryThatClaimsFourGigabytes) {
    Write32(m_image.bytes, std::size_t{m_image.directories[2].sector} * 2048 + 10, 0xFFFFFFFF);
    EXPECT_EQ(Outcome(), kAllFiles);
    EXPECT_EQ(ReadWhole(m_folder / "temp1.tmp"), m_image.bytes) << "the header ends with the image";
}

TEST_F(HostileImageTest, FilesBeyondTheImageAreListed) {
    Write32(m_image.bytes, RecordOf("\\A.BIN") + 2, 0xFFFFFFF0);
    Write32(m_image.bytes, RecordOf("\\A.BIN") + 10, 0xFFFFFFFF);
    EXPECT_EQ(Outcome(),
              "0000001B|0000000A|00000001|\\DIR\\B.BIN\r\n0000001C|00000005|00000001|\\DIR\\SUB\\C.BIN\r\n"
              "FFFFFFF0|FFFFFFFF|00200000|\\A.BIN\r\n");
}

TEST_F(HostileImageTest, APathTableLargerThanTheImage) {
    Write32(m_image.bytes, 32912, 0xFFFFFFFF);
    EXPECT_EQ(Outcome(), kAllFiles);
    EXPECT_LE(ReadWhole(m_folder / "tmp.tmp").size(), m_image.bytes.size());
    Write32(m_image.bytes, 32912, 0);
    Write32(m_image.bytes, 32900, 0xFFFFFFFF);
    EXPECT_EQ(Outcome(), kAllFiles);
}

TEST_F(HostileImageTest, APathTableBeyondTheImageLeavesTheRoot) {
    Write32(m_image.bytes, 32908, 0xFFFFFFF0);
    EXPECT_EQ(Outcome(), "00000019|00000BB8|00000002|\\A.BIN\r\n");
}

TEST_F(HostileImageTest, WithoutAnyDirectoryTheImageIsRefused) {
    Write32(m_image.bytes, 32908, 0xFFFFFFF0);
    Write32(m_image.bytes, 32926, 0xFFFFFFF0);
    EXPECT_EQ(Outcome(), Refusal());
}

TEST_F(HostileImageTest, EmptyNames) {
    m_image.bytes[RecordOf("\\A.BIN") + 33] = ';';
    m_image.bytes[RecordOf("\\DIR\\B.BIN") + 32] = 0;
    EXPECT_EQ(Outcome(),
              "00000019|00000BB8|00000002|\\\r\n0000001B|0000000A|00000001|\\DIR\\\r\n"
              "0000001C|00000005|00000001|\\DIR\\SUB\\C.BIN\r\n");
}

TEST_F(HostileImageTest, NamesWithSeparatorsOfTheList) {
    const auto rename = [&](std::string_view path, std::string_view name) {
        std::copy(name.begin(), name.end(), m_image.bytes.begin() + static_cast<std::ptrdiff_t>(RecordOf(path) + 33));
    };
    rename("\\A.BIN", "\r\n|\"\\");
    rename("\\DIR\\B.BIN", "../..");
    EXPECT_EQ(Outcome(),
              "00000019|00000BB8|00000002|\\__|\"\\\r\n0000001B|0000000A|00000001|\\DIR\\../..\r\n"
              "0000001C|00000005|00000001|\\DIR\\SUB\\C.BIN\r\n");
}

TEST_F(HostileImageTest, PathsBeyondTheLimitAreRefused) {
    // 90 nested folders of 30 characters each
    SImageDescription description;
    std::string path;
    for (int i = 0; i < 90; ++i) {
        path += "FOLDER-WITH-A-NAME-OF-SOME-LEN/";
    }
    description.files = {{path + "A.BIN", Bytes(1, 1)}};
    m_image = BuildImage(description);
    EXPECT_EQ(Outcome(), Refusal());
    // 64 folders are within the limit of 2000 characters, but not with this name.
    description.files[0].path = path.substr(0, std::size_t{64} * 31) + "A-NAME-OF-SOME-LENGTH.BIN";
    m_image = BuildImage(description);
    EXPECT_EQ(Outcome(), Refusal());
    description.files[0].path = path.substr(0, std::size_t{64} * 31) + "A.BIN";
    m_image = BuildImage(description);
    EXPECT_THAT(Outcome(), testing::EndsWith("\\A.BIN\r\n"));
}

TEST_F(HostileImageTest, TruncatedImages) {
    const Bytes whole = m_image.bytes;
    for (std::size_t length = 0; length < whole.size(); length += 509) {
        m_image.bytes.assign(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const std::string outcome = Outcome();
        if (length < 33795) {
            EXPECT_EQ(outcome, Refusal()) << length;
        } else if (length >= std::size_t{m_image.directoryEnd} * 2048) {
            EXPECT_EQ(outcome, kAllFiles) << length;
        }
    }
}

TEST_F(HostileImageTest, DvdsWithoutFilesOrWithFilesBeyondTheImage) {
    SImageDescription description;
    description.kind = EImageKind::Dvd;
    m_image = BuildImage(description);
    EXPECT_EQ(Outcome(), "");
    description.files = {{"A.BIN", Bytes(10, 1)}};
    m_image = BuildImage(description);
    Write32(m_image.bytes, RecordOf("\\A.BIN") + 2, 0xFFFFFFF0);
    EXPECT_EQ(Outcome(), "FFFFFFF0|0000000A|00000001|\\A.BIN\r\n");
}

TEST_F(HostileImageTest, RandomDamage) {
    std::mt19937 random(42);
    const SBuiltImage whole = m_image;
    for (int round = 0; round < 300; ++round) {
        m_image = whole;
        for (int i = 0; i < 12; ++i) {
            const std::size_t at = (16 + random() % 9) * 2048 + random() % 256;
            m_image.bytes[at] = static_cast<std::uint8_t>(random());
        }
        Outcome();
        Strict();
    }
}

}  // namespace
}  // namespace vantrel::test
