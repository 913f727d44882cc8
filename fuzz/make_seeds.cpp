// Writes the seeds of the fuzzers: small, valid files of every form, in the format of each target's input.
//
//   make_seeds FOLDER        writes FOLDER/walker/cd and so on
#include <filesystem>
#include <memory>

#include "compress/cso.h"
#include "compress/dax.h"
#include "compress/lz4_encoder.h"
#include "files/byte_order.h"
#include "files/path.h"
#include "fuzz/input_parts.h"
#include "fuzz/patched_image.h"
#include "iml/export/export.h"
#include "iml/layout/layout_names.h"
#include "raw/sector.h"
#include "tests/support/image_builder.h"
#include "tests/support/layout_builder.h"

namespace vantrel::fuzz {

namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;
using test::CTestFolder;
using test::EImageKind;
using test::SImageDescription;
using test::SImageFile;

struct SNamedImage {
    std::string name;
    SImageDescription description;
};

std::string g_folder;

void WriteSeed(const std::string& target, const std::string& name, std::span<const std::uint8_t> content) {
    fs::create_directories(g_folder + target);
    test::WriteWhole(g_folder + target + '/' + name, {content.begin(), content.end()});
}

void WriteSeed(const std::string& target, const std::string& name, std::string_view text) {
    WriteSeed(target, name, std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

/// Content that is short as a list of patches: only the first and last bytes are not zero.
Bytes Sparse(std::size_t size) {
    Bytes content(size);
    for (std::size_t i = 0; i < std::min<std::size_t>(size, 5); ++i) {
        content[i] = static_cast<std::uint8_t>('A' + i);
        content[size - 1 - i] = static_cast<std::uint8_t>('z' - i);
    }
    return content;
}

std::vector<SImageFile> FewFiles() {
    return {{"SYSTEM.CNF", Sparse(20)},       {"EMPTY.DAT", {}},
            {"DATA/ONE.BIN", Sparse(2048)},   {"DATA/SUB/TWO.BIN", Sparse(2049), 2},
            {"DATA/SUB/DEEP/A.;", Sparse(1)}, {"NOTHING.DAT", {}, 0, test::EEmptyFile::SharesSector}};
}

/// Enough files to fill several sectors of a directory.
std::vector<SImageFile> ManyEmptyFiles() {
    std::vector<SImageFile> files = {{"FIRST.DAT", Sparse(3000)}};
    for (int i = 0; i < 60; ++i) {
        files.push_back({"MANY/A_LONG_NAME_" + std::to_string(100 + i), {}, 0, test::EEmptyFile::SharesSector});
    }
    return files;
}

SImageDescription Image(EImageKind kind, std::vector<SImageFile> files) {
    SImageDescription description;
    description.kind = kind;
    description.files = std::move(files);
    return description;
}

std::vector<SNamedImage> Images() {
    std::vector<SNamedImage> images = {
        {"cd", Image(EImageKind::Cd, FewFiles())},
        {"dvd", Image(EImageKind::Dvd, FewFiles())},
        {"umd", Image(EImageKind::Umd, FewFiles())},
        {"cd-many", Image(EImageKind::Cd, ManyEmptyFiles())},
        {"umd-many", Image(EImageKind::Umd, ManyEmptyFiles())},
    };
    SImageDescription special = Image(EImageKind::Cd, FewFiles());
    special.xaAttributes = true;
    special.optionalPathTables = false;
    special.postgap = test::EPostgap::Counted;
    special.folders = {"HOLLOW/INNER"};
    images.push_back({"cd-special", special});
    special.postgap = test::EPostgap::Missing;
    special.versions = false;
    special.tailSectors = 2;
    special.holeFill = 1;
    images.push_back({"cd-missing-postgap", special});
    special = Image(EImageKind::Dvd, FewFiles());
    special.udfHoleBeforeEntries = 3;
    special.anchorAt256 = false;
    images.push_back({"dvd-bridge", special});
    special = Image(EImageKind::Dvd, FewFiles());
    special.udf = test::EUdf::Volume;
    images.push_back({"dvd-udf", special});
    return images;
}

void MakeImageSeeds() {
    for (const SNamedImage& image : Images()) {
        const Bytes bytes = test::BuildImage(image.description).bytes;
        const auto seed = [&bytes](std::size_t choice) {
            return CPartWriter().Byte(static_cast<std::uint8_t>(choice)).Raw(PatchesOf(bytes)).Bytes();
        };
        for (std::size_t choice = 0; choice < 3; ++choice) {
            WriteSeed("walker", image.name + "-" + std::to_string(choice), seed(choice));
        }
        for (std::size_t choice = 0; choice < 6; ++choice) {
            WriteSeed("image", image.name + "-" + std::to_string(choice), seed(choice));
        }
    }
}

/// The image with a boot record in place of the terminator, and behind its end a catalogue that names two files.
Bytes WithBootCatalogue(const test::SBuiltImage& image) {
    Bytes bytes = image.bytes;
    const std::size_t catalogue = bytes.size();
    const std::size_t record = std::size_t{17} * test::kImageSector;
    bytes.resize(catalogue + test::kImageSector);
    bytes[record] = 0;
    const std::string_view identifier = "EL TORITO SPECIFICATION";
    std::copy(identifier.begin(), identifier.end(), bytes.begin() + static_cast<std::ptrdiff_t>(record + 7));
    test::Write32(bytes, record + 71, static_cast<std::uint32_t>(catalogue / test::kImageSector));
    bytes[catalogue] = 1;
    bytes[catalogue + 30] = 0x55;
    bytes[catalogue + 31] = 0xAA;
    bytes[catalogue + 38] = 4;
    test::Write32(bytes, catalogue + 40, image.files[0].sector);
    bytes[catalogue + 64] = 0x91;
    bytes[catalogue + 66] = 1;
    bytes[catalogue + 102] = 1;
    test::Write32(bytes, catalogue + 104, image.files[1].sector);
    return bytes;
}

/// Edits that stay in place, move files, empty and fill them.
void MakeEditSeeds() {
    for (const SNamedImage& image : Images()) {
        const test::SBuiltImage built = test::BuildImage(image.description);
        const Bytes patches = PatchesOf(built.bytes);
        WriteSeed("edit", image.name + "-boot",
                  CPartWriter()
                      .Byte(2)
                      .Byte(0)
                      .Number(2000)
                      .Byte(1)
                      .Number(700)
                      .Raw(PatchesOf(WithBootCatalogue(built)))
                      .Bytes());
        WriteSeed("edit", image.name + "-place", CPartWriter().Byte(1).Byte(0).Number(3).Raw(patches).Bytes());
        WriteSeed("edit", image.name + "-move",
                  CPartWriter().Byte(2).Byte(0).Number(2000).Byte(1).Number(700).Raw(patches).Bytes());
        WriteSeed("edit", image.name + "-empty",
                  CPartWriter().Byte(3).Byte(2).Number(0).Byte(1).Number(5).Byte(4).Number(900).Raw(patches).Bytes());
        WriteSeed("edit", image.name + "-keep", CPartWriter().Byte(5).Byte(3).Number(1400).Raw(patches).Bytes());
    }
}

/// UDF volumes with every kind of allocation, without ISO 9660.
void MakeUdfSeeds() {
    using test::EUdfAllocation;
    constexpr std::uint32_t kSectors = 300;
    for (const auto allocation : {EUdfAllocation::Short, EUdfAllocation::Long, EUdfAllocation::Embedded}) {
        test::SUdfDescription udf;
        udf.start = 66;
        udf.lastSector = kSectors - 1;
        udf.folderAllocation = allocation;
        udf.files = {{"A/B/ONE", {{280, 2048}, {282, 2048}, {284, 5}}, allocation},
                     {"\xE6\x97\xA5/TWO", {{285, 6000}}, allocation, {}, 0, true},
                     {"CHAIN", {{280, 2048}, {282, 2048}, {284, 5}}, EUdfAllocation::Short, {}, 1}};
        if (allocation == EUdfAllocation::Embedded) {
            udf.files[0].embedded = udf.files[1].embedded = Sparse(20);
        }
        udf.files.push_back({"A/LINK"});
        udf.files.back().sharesEntryOf = "CHAIN";
        Bytes image(kSectors * std::size_t{test::kImageSector});
        for (const std::size_t sector : {16U, 17U}) {
            std::copy_n("CD001", 5, image.begin() + static_cast<std::ptrdiff_t>(sector * test::kImageSector + 1));
        }
        test::WriteUdfVolume(image, udf);
        for (const std::uint8_t choice : {std::uint8_t{3}, std::uint8_t{5}}) {
            const auto seed = CPartWriter().Byte(choice).Byte(choice).Number(5000).Raw(PatchesOf(image));
            WriteSeed("udf", std::to_string(static_cast<int>(allocation)) + "-" + std::to_string(choice), seed.Bytes());
        }
    }
}

/// The input of the rebuild target for an export of the image.
void MakeRebuildSeed(const SNamedImage& image, std::uint8_t flags) {
    CTestFolder folder;
    test::WriteWhole(folder / "game.iso", test::BuildImage(image.description).bytes);
    COperation operation;
    SExportRequest request;
    request.imagePath = folder / "game.iso";
    request.layoutPath = folder / "game.iml";
    request.extractionFolder = folder.Path();
    request.clock = [] { return LayoutTimeOf({}); };
    ExportImage(request, operation);
    CPartWriter seed;
    seed.Byte(flags)
        .Part(test::ReadText(request.layoutPath))
        .Part(PatchesOf(test::ReadWhole(LeadingPathOf(request.layoutPath))))
        .Part(test::ReadWhole(GapPathOf(request.layoutPath)));
    for (const SImageFile& file : image.description.files) {
        const std::string path = file.path.substr(0, file.path.find(';'));
        seed.Part(path).Part(file.content);
    }
    WriteSeed("rebuild", image.name + "-" + std::to_string(flags), seed.Bytes());
}

/// A layout with line feeds as line ends, and with leading structures that consist of the marks.
void MakeLayoutSeed(const std::string& name, test::ELayoutMedia media) {
    test::SLayoutDescription layout;
    layout.media = media;
    layout.entries = {{18, 18, "A"}, {20, 21, "B"}, {20, 21, "B"}, {30, 30, "DIR\\C"}};
    layout.volumeLast = 40;
    layout.lineEnd = "\n";
    Bytes leading = test::LeadingBytes(layout);
    for (std::size_t i = 0; i < leading.size(); ++i) {
        const bool isMark = (i >= 0x8008 && i < 0x8013) || (i >= 0x8400 && i < 0x8408) || i >= 18 * 2048;
        leading[i] = isMark ? leading[i] : std::uint8_t{0};
    }
    CPartWriter seed;
    seed.Byte(2).Part(test::LayoutText(layout)).Part(PatchesOf(leading)).Part("");
    seed.Part("A").Part("content").Part("B").Part(Sparse(3000)).Part("dir/c").Part(Sparse(2048));
    WriteSeed("rebuild", name, seed.Bytes());
}

void MakeRebuildSeeds() {
    for (const SNamedImage& image : Images()) {
        MakeRebuildSeed(image, 0);
        MakeRebuildSeed(image, 1);
        MakeRebuildSeed(image, 4);
        MakeRebuildSeed(image, 8);
        MakeRebuildSeed(image, 10);
    }
    MakeLayoutSeed("plain-cd", test::ELayoutMedia::Cd);
    MakeLayoutSeed("plain-umd", test::ELayoutMedia::Umd);
    MakeLayoutSeed("plain-dvd", test::ELayoutMedia::Dvd);
}

void MakeCompressedSeeds() {
    SImageDescription image = Image(EImageKind::Umd, FewFiles());
    image.files.push_back({"NOISE.DAT", test::RandomBytes(2048, 1)});  // stays uncompressed
    CTestFolder folder;
    test::WriteWhole(folder / "game.iso", test::BuildImage(image).bytes);
    for (const int level : {1, 9}) {
        COperation operation;
        const std::string cso = folder / "game.cso";
        const std::string dax = folder / "game.dax";
        IsoToCso(DirectConversion(folder / "game.iso", cso, EOutputManner::CommitReplace, 1, level), operation);
        IsoToDax(DirectConversion(folder / "game.iso", dax, EOutputManner::CommitReplace, 1, level), operation);
        WriteSeed("compressed", "cso-" + std::to_string(level), test::ReadWhole(cso));
        SCompressionRequest toZso =
            DirectConversion(folder / "game.iso", folder / "game.zso", EOutputManner::CommitReplace, 1, level);
        toZso.magic = kZsoMagic;
        toZso.blockSize = level == 1 ? 2048 : 16384;
        ImageToCso(toZso, operation);
        WriteSeed("compressed", "zso-" + std::to_string(level), test::ReadWhole(toZso.outputPath));
        WriteSeed("compressed", "dax-" + std::to_string(level), test::ReadWhole(dax));
    }
}

void MakeLz4Seeds() {
    const auto encoder = std::make_unique<CLz4Encoder>();
    Bytes mixed = test::TextLikeBytes(300, 1);
    mixed.resize(600);
    const Bytes noise = test::RandomBytes(100, 2);
    mixed.insert(mixed.end(), noise.begin(), noise.end());
    const std::pair<const char*, Bytes> contents[] = {{"empty", {}},
                                                      {"zeros", Bytes(400)},
                                                      {"text", test::TextLikeBytes(1000, 2)},
                                                      {"noise", noise},
                                                      {"mixed", mixed}};
    for (const auto& [name, content] : contents) {
        Bytes block(content.size() + 16);
        block.resize(encoder->Encode(content, block));
        WriteSeed("lz4", name, block);
        WriteSeed("lz4", std::string(name) + "-plain", content);
    }
}

Bytes RawImage(ESectorMode mode, const Bytes& image) {
    Bytes bin(image.size() / kUserDataSize * kRawSectorSize);
    for (std::size_t i = 0; i < bin.size() / kRawSectorSize; ++i) {
        EncodeSector(mode, static_cast<std::uint32_t>(i),
                     std::span(image).subspan(i * kUserDataSize).first<kUserDataSize>(),
                     std::span(bin).subspan(i * kRawSectorSize).first<kRawSectorSize>());
    }
    return bin;
}

void MakeBinSeeds() {
    Bytes image = test::BuildImage(Image(EImageKind::Cd, FewFiles())).bytes;
    image.resize(22 * kUserDataSize);
    WriteSeed("bin", "image", RawImage(ESectorMode::Mode2Form1, image));
    image.assign(2 * kUserDataSize, 7);
    WriteSeed("bin", "mode1", RawImage(ESectorMode::Mode1, image));
    Bytes form2 = RawImage(ESectorMode::Mode2Form1, image);
    form2[kSubHeaderOffset + 2] = form2[kSubHeaderOffset + 6] = 0x28;
    WriteSeed("bin", "form2", form2);
    form2.resize(kRawSectorSize + 100);
    WriteSeed("bin", "cut", form2);
    std::string sheet =
        "REM x\nFILE \"game.bin\" BINARY\r\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n  TRACK 02 MODE1/2048\n"
        "    PREGAP 00:02:00\n    INDEX 00 00:00:00\n    INDEX 01 00:00:01\n";
    sheet.resize(3 * kRawSectorSize, ' ');
    WriteSeed("bin", "sheet", Bytes(sheet.begin(), sheet.end()));
}

/// DISC_ID and TITLE, with their keys and values behind the index.
Bytes ParamSfo() {
    constexpr std::string_view kKeys = "DISC_ID\0TITLE\0"sv;
    constexpr std::string_view kValues = "ULUS10041\0A game\0"sv;
    CPartWriter file;
    const auto raw = [&file](std::string_view text) { file.Raw(Bytes(text.begin(), text.end())); };
    raw("\0PSF\1\1\0\0"sv);
    for (const std::uint32_t value : {52U, 66U, 2U, 0x02040000U, 10U, 10U, 0U, 0x02040008U, 7U, 7U, 10U}) {
        file.Raw(Le32(value));
    }
    raw(kKeys);
    raw(kValues);
    return file.Bytes();
}

void MakeFactSeeds() {
    WriteSeed("facts", "settings", "\0BOOT2 = cdrom0:\\SLUS_200.62;1\r\nVER = 1.00\r\n"sv);
    Bytes sfo = ParamSfo();
    sfo.insert(sfo.begin(), 1);
    WriteSeed("facts", "sfo", sfo);
    WriteSeed("facts", "database",
              "\2<?xml version=\"1.0\"?><!DOCTYPE datafile><datafile><header><name>x</name></header>"
              "<game name=\"One &amp; two\"><rom name=\"one.bin\" size=\"4096\" crc=\"C71C0011\" md5=\"AB\" "
              "sha1=\"CD\"/></game></datafile>"sv);
    for (const auto& [name, media] :
         {std::pair("cd", test::ELayoutMedia::Cd), std::pair("umd", test::ELayoutMedia::Umd),
          std::pair("dvd", test::ELayoutMedia::Dvd)}) {
        test::SLayoutDescription layout;
        layout.media = media;
        layout.entries = {{18, 19, "A.BIN"}, {20, 20, "DIR\\B.BIN"}};
        WriteSeed("facts", std::string("layout-") + name, '\3' + test::LayoutText(layout));
    }
}

/// A WAV file of 8-bit samples with other chunks around them.
Bytes Sound(std::string_view chunkBefore, std::uint32_t claimed) {
    const auto tag = [](std::string_view text) { return Bytes(text.begin(), text.end()); };
    CPartWriter file;
    file.Raw(tag("RIFF")).Raw(Le32(100)).Raw(tag("WAVEfmt ")).Raw(Le32(16));
    file.Number(1).Number(1).Raw(Le32(11025)).Raw(Le32(11025)).Number(1).Number(8);
    file.Raw(tag(chunkBefore)).Raw(tag("data")).Raw(Le32(claimed)).Raw(test::TextLikeBytes(50, 1));
    return file.Bytes();
}

void MakeSoundSeeds() {
    WriteSeed("wav", "plain", Sound("", 50));
    WriteSeed("wav", "chunks", Sound("LIST\4\0\0\0infoodd \3\0\0\0abc\0"sv, 50));
    WriteSeed("wav", "unpadded", Sound("odd \3\0\0\0abc"sv, 50));
    WriteSeed("wav", "claims", Sound("", 0xFFFFFFFFU));
}

void MakeWordSeeds() {
    const std::pair<const char*, const char*> seeds[] = {
        {"help", "c--help"},
        {"version", "c--version"},
        {"cso", "ciso2cso\n-l\n6\n-o\n/disc/game.cso\n/disc/game.iso"},
        {"dax", "cdax2iso\n--output-dir=/disc\n-k\n-q\n--\na.dax\nb.dax"},
        {"bin", "ciso2bin\n-f\ngame.iso"},
        {"verify", "cverify\ngame.bin\n--against\ngame.iso\n--json"},
        {"info", "cinfo\n--json\n*.iso"},
        {"list", "clist\n--help"},
        {"extract", "cextract\ngame.iso\nDIR/FILE\n-C\nfolder\n--force"},
        {"export", "ciso2iml\ngame.iso\n--path\n/games/\n--extract=out"},
        {"rebuild", "ciml2iso\n--exact\n--files\n/disc\ngame.iml"},
        {"replace", "creplace\ngame.iso\nDIR/FILE=new\n-o\nnew.iso\n--keep-places\n--dry-run"},
        {"postgap", "cadd-postgap\n--count\n3\ngame.iso"},
        {"dry", "ccheck-postgap\n--dry-run\ngame.iso"},
        {"converter", "n/disc/in\n/disc/out\n/Mode2\n/POSTGAP"},
        {"converter-same", "n/disc/in\n/disc/./in"},
        {"batch", "nC:\\games and more\\\ngame.iso\ngame.bin"},
        {"batch-danger", "n\\\\server\\share\\\na&b.iso\n100%.bin"},
        {"quotes", "na\"b\\\nc\\\\\"d e\nend\\"},
        {"script", "n\xD0\x98\xD0\xB3\xD1\x80\xD0\xB0.iso\n\xFF\xED\xA0\x80\n\xF0\x9F\x92\xBF"},
    };
    for (const auto& [name, words] : seeds) {
        WriteSeed("words", name, words);
    }
}

}  // namespace

}  // namespace vantrel::fuzz

int main(int argc, char* argv[]) {
    using namespace vantrel::fuzz;
    if (argc != 2) {
        std::fputs("usage: make_seeds FOLDER\n", stderr);
        return 2;
    }
    g_folder = vantrel::WithSeparator(argv[1]);
    MakeImageSeeds();
    MakeEditSeeds();
    MakeUdfSeeds();
    MakeRebuildSeeds();
    MakeCompressedSeeds();
    MakeLz4Seeds();
    MakeBinSeeds();
    MakeFactSeeds();
    MakeSoundSeeds();
    MakeWordSeeds();
    return 0;
}
