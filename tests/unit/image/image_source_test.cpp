// Every form of the same image has the same bytes at every position.
#include "image/image_source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "compress/cso.h"
#include "compress/dax.h"
#include "files/refused.h"
#include "image/container_image.h"
#include "image/forms.h"
#include "raw/sector.h"
#include "tests/support/image_builder.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CTestFolder;

Bytes BuiltUmd() {
    test::SImageDescription description;
    description.kind = test::EImageKind::Umd;
    description.files = {{"PSP_GAME/A.BIN", test::RandomBytes(70'000, 1)}, {"B.TXT", test::TextLikeBytes(9'000, 2)}};
    return test::BuildImage(description).bytes;
}

SCompressionRequest Compression(const CTestFolder& folder, const char* output) {
    return DirectConversion(folder / "game.iso", folder / output, EOutputManner::CommitNew, 0, 9);
}

/// Compares ranges that start and end at arbitrary positions with the image.
void ExpectSameBytes(CImageSource& source, const Bytes& image) {
    ASSERT_EQ(source.Size(), static_cast<std::int64_t>(image.size()));
    const std::size_t last = image.size();
    const std::pair<std::size_t, std::size_t> ranges[] = {
        {0, 1},         {0, last}, {2047, 2},           {2048, 2048},  {1, 9000}, {8191, 8193},
        {last - 1, 10}, {last, 5}, {last - 5000, 5000}, {32768, 2048}, {5, 0}};
    for (const auto& [position, length] : ranges) {
        Bytes buffer(length);
        const std::size_t expected = std::min(length, last - position);
        EXPECT_EQ(source.ReadAt(static_cast<std::int64_t>(position), buffer), expected) << position;
        EXPECT_TRUE(std::equal(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(expected),
                               image.begin() + static_cast<std::ptrdiff_t>(position)))
            << position << " " << length;
    }
    Bytes one(1);
    EXPECT_EQ(source.ReadAt(-1, one), 0U);
    EXPECT_EQ(source.Fault(), "");
}

/// Raw sectors of alternating Mode 2 Form 1 and Mode 1.
Bytes RawImage(const Bytes& image) {
    Bytes raw(image.size() / kUserDataSize * kRawSectorSize);
    for (std::size_t i = 0; i * kUserDataSize < image.size(); ++i) {
        EncodeSector(i % 2 == 0 ? ESectorMode::Mode2Form1 : ESectorMode::Mode1, static_cast<std::uint32_t>(i),
                     std::span(image).subspan(i * kUserDataSize).first<kUserDataSize>(),
                     std::span(raw).subspan(i * kRawSectorSize).first<kRawSectorSize>());
    }
    return raw;
}

TEST(ImageSource, EveryFormContainsTheSameImage) {
    const CTestFolder folder;
    const Bytes image = BuiltUmd();
    test::WriteWhole(folder / "game.iso", image);
    COperation operation;
    IsoToCso(Compression(folder, "game.cso"), operation);
    IsoToDax(Compression(folder, "game.dax"), operation);
    test::WriteWhole(folder / "game.bin", RawImage(image));
    Bytes track(20 * kRawSectorSize, 1);
    const Bytes raw = RawImage(image);
    track.insert(track.end(), raw.begin(), raw.end());
    test::WriteWhole(folder / "tracks.bin", track);
    test::WriteText(folder / "game.cue",
                    "FILE tracks.bin BINARY\nTRACK 1 AUDIO\nINDEX 1 00:00:00\nTRACK 2 MODE2/2352\nINDEX 1 00:00:20\n");
    for (const auto& [name, form] :
         {std::pair{"game.iso", EForm::Iso}, std::pair{"game.cso", EForm::Cso}, std::pair{"game.dax", EForm::Dax},
          std::pair{"game.bin", EForm::Bin}, std::pair{"game.cue", EForm::Cue}}) {
        SCOPED_TRACE(name);
        const auto source = OpenImage(folder / name);
        EXPECT_EQ(source->Form(), form);
        ExpectSameBytes(*source, image);
    }
}

TEST(ImageSource, ADamagedBlockEndsAReadAndOthersRemainReadable) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.iso", BuiltUmd());
    COperation operation;
    IsoToCso(Compression(folder, "game.cso"), operation);
    Bytes cso = test::ReadWhole(folder / "game.cso");
    const std::uint32_t third = test::Read32(cso, 24 + 3 * 4) & 0x7FFFFFFFU;
    cso[third] = 0xFF;
    test::WriteWhole(folder / "game.cso", cso);
    const auto source = OpenImage(folder / "game.cso");
    Bytes buffer(5 * 2048);
    EXPECT_EQ(source->ReadAt(0, buffer), 3U * 2048U);
    EXPECT_EQ(source->Fault(), "its stream is damaged");
    EXPECT_STREQ(source->BlockNoun(), "block");
    EXPECT_EQ(source->BlockSize(), 2048U);
    EXPECT_EQ(source->ReadAt(4 * 2048, buffer), buffer.size());
    EXPECT_THAT([&] { RefuseDamaged(*source, "game.cso"); },
                testing::ThrowsMessage<CRefused>("game.cso: damaged block: its stream is damaged"));
}

TEST(ImageSource, ADamagedRawSectorIsUnreadable) {
    const CTestFolder folder;
    Bytes raw = RawImage(BuiltUmd());
    raw[3 * kRawSectorSize + 500] ^= 1;
    std::fill_n(raw.begin() + 5 * kRawSectorSize, kRawSectorSize, std::uint8_t{0});
    test::WriteWhole(folder / "game.bin", raw);
    Bytes buffer(4 * kUserDataSize);
    const auto source = OpenImage(folder / "game.bin");
    EXPECT_EQ(source->ReadAt(0, buffer), 3U * kUserDataSize);
    EXPECT_EQ(source->Fault(), "wrong EDC");
    EXPECT_EQ(source->ReadAt(4 * 2048, buffer), kUserDataSize);
    EXPECT_EQ(source->Fault(), "no data sector, perhaps audio");
    EXPECT_EQ(source->ReadAt(6 * 2048, buffer), buffer.size());
    EXPECT_EQ(source->ReadProblem(), folder / "game.bin" + ": damaged sector 5: no data sector, perhaps audio");
}

TEST(ImageSource, ARawImageThatShrinksEndsARead) {
    const CTestFolder folder;
    const std::string path = folder / "game.bin";
    Bytes image = BuiltUmd();
    image.resize(300 * kUserDataSize);  // more than is read ahead
    test::WriteWhole(path, RawImage(image));
    const auto source = OpenImage(path);
    std::filesystem::resize_file(path, 202 * kRawSectorSize + 100);
    Bytes buffer(5 * kUserDataSize);
    EXPECT_EQ(source->ReadAt(200 * kUserDataSize, buffer), 2U * kUserDataSize);
    EXPECT_EQ(source->ReadProblem(), path + ": damaged sector 202: it cannot be read");
}

void ExpectRefusal(const std::string& content, const std::string& cause) {
    const CTestFolder folder;
    const std::string path = folder / "file";
    test::WriteText(path, content);
    EXPECT_THAT([&] { OpenImage(path); }, testing::ThrowsMessage<CRefused>(path + ": " + cause));
}

TEST(ImageSource, FilesWithoutAnImageAreRefusedWithTheCause) {
    ExpectRefusal("CISO", "CSO header is incomplete: the file has 4 bytes");
    ExpectRefusal("ZISO" + std::string(19, '\0'), "ZSO header is incomplete: the file has 23 bytes");
    ExpectRefusal(std::string("DAX\0", 4), "DAX header is incomplete: the file has 4 bytes");
    ExpectRefusal("DAX" + std::string(29, '\0'), "DAX image size 0 is not supported");
    ExpectRefusal("DAX" + std::string("\0\0\x20\0\0\2", 6) + std::string(23, '\0'), "DAX version 2 is not supported");
    ExpectRefusal("DAX" + std::string("\0\0\x20\0\0\0", 6) + std::string(23, '\0'),
                  "DAX image size 8192 is not supported: the tables of its frames do not fit the file");
    ExpectRefusal("CISO" + std::string(20, '\0'),
                  "CSO block size 0 is not supported: it is not a power of two from 2048 to 1048576");
    ExpectRefusal("CISO" + std::string("\0\0\0\0\0\0\0\0\0\0\0\0\0\x08\0\0\0\0\0\0", 20),
                  "CSO image size 0 is not supported");
    ExpectRefusal("CISO" + std::string(12, '\1') + std::string("\0\x08\0\0\1\0\0\0", 8),
                  "CSO image size 72340172838076673 is not supported: the index of its blocks does not fit the file");
    ExpectRefusal("CISO" + std::string(20, '\1'),
                  "CSO block size 16843009 is not supported: it is not a power of two from 2048 to 1048576");
    ExpectRefusal("CISO" + std::string("\0\0\0\0\0\x08\0\0\0\0\0\0\0\x08\0\0\1\0\0\0", 20) + "1234",
                  "CSO image size 2048 is not supported: the index of its blocks does not fit the file");
    ExpectRefusal("hello", "not a known kind of disc image");
    ExpectRefusal("[SYS]", "this is an IML file, which does not contain an image");
    ExpectRefusal("MComprHD" + std::string(100, '\0'), "this is a CHD file, a form that is not read");
    ExpectRefusal("\x1F\x8B\x08", "this is a GZ file, a form that is not read");
    ExpectRefusal("7z\xBC\xAF\x27\x1C", "this is a 7Z file, a form that is not read");
    ExpectRefusal("MEDIA DESCRIPTOR", "this is an MDF file, a form that is not read");
    ExpectRefusal(std::string("ECM\0", 4), "this is an ECM file, a form that is not read");
    ExpectRefusal(std::string("\0PBP", 4), "this is a PBP file, a form that is not read");
    ExpectRefusal(std::string(100, 'x') + "NER5" + std::string(8, '\1'),
                  "this is an NRG file, a form that is not read");
    ExpectRefusal(std::string(100, 'x') + "NERO" + std::string(4, '\1'),
                  "this is an NRG file, a form that is not read");
    EXPECT_THAT([] { OpenImage("/nowhere/at all"); },
                testing::ThrowsMessage<CRefused>("/nowhere/at all: No such file or directory"));
}

TEST(ImageSource, AFileThatWasReplacedAfterItsFormWasRecognisedIsRefused) {
    const CTestFolder folder;
    const std::string path = folder / "file";
    test::WriteText(path, "ZISO" + std::string(100, '\0'));
    for (const auto open : {OpenCsoImage, OpenDaxImage}) {
        EXPECT_THAT([&] { open(path); }, testing::ThrowsMessage<CRefused>(path + ": the file has another form now"));
    }
}

/// What is unusual in a file.
CReport OdditiesOf(const CTestFolder& folder, const char* name, const Bytes& content) {
    test::WriteWhole(folder / name, content);
    return OpenImage(folder / name)->Facts().value()["oddities"];
}

TEST(ImageSource, UnusualFieldsAreReported) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.iso", BuiltUmd());
    COperation operation;
    IsoToCso(Compression(folder, "game.cso"), operation);
    IsoToDax(Compression(folder, "game.dax"), operation);
    const Bytes cso = test::ReadWhole(folder / "game.cso");
    for (const std::size_t reserved : {22U, 23U}) {
        Bytes odd = cso;
        odd[reserved] = 1;
        EXPECT_EQ(OdditiesOf(folder, "odd.cso", odd), CReport(CReport::List{"reserved bytes are not zero"}));
    }
    Bytes dax = test::ReadWhole(folder / "game.dax");
    test::Write32(dax, 32, test::Read32(dax, 32) - 1);  // the position of the first frame
    EXPECT_EQ(OdditiesOf(folder, "odd.dax", dax),
              CReport(CReport::List{"frames do not follow one another without gaps"}));
}

TEST(RatioPercent, HasOneDecimalPlace) {
    EXPECT_EQ(RatioPercent(1, 3), 33.3);
    EXPECT_EQ(RatioPercent(2, 3), 66.7);
    EXPECT_EQ(RatioPercent(999, 1000), 99.9);
    EXPECT_EQ(RatioPercent(3, 2), 150.0) << "a container may be larger than its image";
    EXPECT_EQ(RatioPercent(0, 7), 0.0);
    EXPECT_EQ(RatioPercent(7, 0), 0.0);
}

}  // namespace
}  // namespace vantrel
