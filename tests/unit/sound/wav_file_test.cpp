// WAV files of all kinds: with other chunks, padded or not, truncated, or not sounds at all.
#include "app/sound/wav_file.h"

#include <gtest/gtest.h>

#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CTestFolder;

void Append16(Bytes& bytes, unsigned value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
}

void Append32(Bytes& bytes, std::uint32_t value) {
    Append16(bytes, value & 0xFFFF);
    Append16(bytes, value >> 16);
}

void AppendText(Bytes& bytes, std::string_view text) {
    for (const char character : text) {
        bytes.push_back(static_cast<std::uint8_t>(character));
    }
}

/// A chunk with `size` in its header, regardless of its content.
void AppendChunk(Bytes& bytes, std::string_view name, std::uint32_t size, const Bytes& content) {
    AppendText(bytes, name);
    Append32(bytes, size);
    for (const std::uint8_t byte : content) {
        bytes.push_back(byte);
    }
}

Bytes FormatFields(unsigned blockAlign = 1) {
    Bytes fields;
    Append16(fields, 1);
    Append16(fields, 2);
    Append32(fields, 44100);
    Append32(fields, 176400);
    Append16(fields, blockAlign);
    Append16(fields, 16);
    return fields;
}

/// The start of a WAV file, including its format chunk.
Bytes WaveStart(unsigned blockAlign = 1) {
    Bytes wave;
    AppendText(wave, "RIFF");
    Append32(wave, 36);
    AppendText(wave, "WAVE");
    AppendChunk(wave, "fmt ", 16, FormatFields(blockAlign));
    return wave;
}

const Bytes kSamples{128, 140, 160, 140, 128, 100};

class WavFile : public ::testing::Test {
protected:
    bool Load(const Bytes& content) {
        test::WriteWhole(m_folder / "sound.wav", content);
        return m_sound.Load(m_folder / "sound.wav");
    }
    Bytes Samples() const { return {m_sound.Samples().begin(), m_sound.Samples().end()}; }

    CTestFolder m_folder;
    CWaveSound m_sound;
};

TEST_F(WavFile, FormatAndSamplesAreRead) {
    Bytes wave = WaveStart(4);
    AppendChunk(wave, "data", 8, {1, 2, 3, 4, 5, 6, 7, 8});
    ASSERT_TRUE(Load(wave));
    EXPECT_EQ(m_sound.Format().formatTag, 1);
    EXPECT_EQ(m_sound.Format().channels, 2);
    EXPECT_EQ(m_sound.Format().samplesPerSecond, 44100u);
    EXPECT_EQ(m_sound.Format().averageBytesPerSecond, 176400u);
    EXPECT_EQ(m_sound.Format().blockAlign, 4);
    EXPECT_EQ(m_sound.Format().bitsPerSample, 16);
    EXPECT_EQ(Samples(), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(WavFile, ListChunkBetweenIsSkipped) {
    Bytes wave = WaveStart();
    AppendChunk(wave, "LIST", 4, {'I', 'N', 'F', 'O'});
    AppendChunk(wave, "fact", 4, {6, 0, 0, 0});
    AppendChunk(wave, "data", 6, kSamples);
    ASSERT_TRUE(Load(wave));
    EXPECT_EQ(Samples(), kSamples);
}

TEST_F(WavFile, LongFormatChunkIsSkippedToItsEnd) {
    Bytes wave = WaveStart();
    wave[16] = 18;
    Append16(wave, 0);
    AppendChunk(wave, "data", 6, kSamples);
    ASSERT_TRUE(Load(wave));
    EXPECT_EQ(Samples(), kSamples);
}

TEST_F(WavFile, OddChunkWithItsPaddingIsSkipped) {
    Bytes wave = WaveStart();
    AppendChunk(wave, "LIST", 5, {'I', 'N', 'F', 'O', 'x', 0});
    AppendChunk(wave, "data", 6, kSamples);
    ASSERT_TRUE(Load(wave));
    EXPECT_EQ(Samples(), kSamples);
}

TEST_F(WavFile, OddChunkWithoutPaddingIsSkipped) {
    Bytes wave = WaveStart();
    AppendChunk(wave, "LIST", 5, {'I', 'N', 'F', 'O', 'x'});
    AppendChunk(wave, "data", 6, kSamples);
    ASSERT_TRUE(Load(wave));
    EXPECT_EQ(Samples(), kSamples);
}

TEST_F(WavFile, NameOfTheDataChunkIsComparedWithoutCase) {
    Bytes wave = WaveStart();
    AppendChunk(wave, "DaTA", 6, kSamples);
    ASSERT_TRUE(Load(wave));
    EXPECT_EQ(Samples(), kSamples);
}

TEST_F(WavFile, BytesBehindTheDataChunkAreIgnored) {
    Bytes wave = WaveStart();
    AppendChunk(wave, "data", 6, kSamples);
    AppendChunk(wave, "LIST", 4, {'I', 'N', 'F', 'O'});
    ASSERT_TRUE(Load(wave));
    EXPECT_EQ(Samples(), kSamples);
}

TEST_F(WavFile, DataSizeIsLimitedToTheFile) {
    Bytes wave = WaveStart(2);
    AppendChunk(wave, "data", 0xFFFFFFFF, {1, 2, 3, 4, 5});
    ASSERT_TRUE(Load(wave));
    EXPECT_EQ(Samples(), (Bytes{1, 2, 3, 4}));
}

TEST_F(WavFile, FileWithoutDataChunkIsRefused) {
    Bytes wave = WaveStart();
    EXPECT_FALSE(Load(wave));
    AppendChunk(wave, "LIST", 4, {'I', 'N', 'F', 'O'});
    EXPECT_FALSE(Load(wave));
    EXPECT_TRUE(m_sound.Samples().empty());
}

TEST_F(WavFile, EmptyDataChunkIsRefused) {
    Bytes wave = WaveStart();
    AppendChunk(wave, "data", 0, {});
    EXPECT_FALSE(Load(wave));
    Bytes claiming = WaveStart();
    AppendChunk(claiming, "data", 100, {});
    EXPECT_FALSE(Load(claiming));
}

TEST_F(WavFile, LessThanOneSampleIsRefused) {
    Bytes wave = WaveStart(4);
    AppendChunk(wave, "data", 3, {1, 2, 3});
    EXPECT_FALSE(Load(wave));
}

TEST_F(WavFile, SampleSizeOfZeroIsRefused) {
    Bytes wave = WaveStart(0);
    AppendChunk(wave, "data", 6, kSamples);
    EXPECT_FALSE(Load(wave));
}

TEST_F(WavFile, FormatChunkTooSmallForItsFieldsIsRefused) {
    Bytes wave = WaveStart();
    wave[16] = 8;
    AppendChunk(wave, "data", 6, kSamples);
    EXPECT_FALSE(Load(wave));
}

TEST_F(WavFile, ChunkThatEndsBeyondTheFileIsRefused) {
    Bytes wave = WaveStart();
    AppendChunk(wave, "LIST", 0xFFFFFFF8, {});
    AppendChunk(wave, "data", 6, kSamples);
    EXPECT_FALSE(Load(wave));
}

TEST_F(WavFile, EveryTruncationIsHandled) {
    Bytes wave = WaveStart();
    AppendChunk(wave, "LIST", 4, {'I', 'N', 'F', 'O'});
    const std::size_t samplesStart = wave.size() + 8;
    AppendChunk(wave, "data", 6, kSamples);
    for (std::size_t length = 0; length < wave.size(); ++length) {
        CWaveSound sound;
        test::WriteWhole(m_folder / "cut.wav", Bytes(wave.begin(), wave.begin() + static_cast<std::ptrdiff_t>(length)));
        EXPECT_EQ(sound.Load(m_folder / "cut.wav"), length > samplesStart) << "truncated to " << length;
    }
}

TEST_F(WavFile, DamagedFilesAreHandled) {
    Bytes wave = WaveStart();
    AppendChunk(wave, "LIST", 5, {'I', 'N', 'F', 'O', 'x', 0});
    AppendChunk(wave, "data", 6, kSamples);
    const Bytes noise = test::RandomBytes(8 * 2000, 1);
    for (std::size_t round = 0; round < 2000; ++round) {
        Bytes spoiled = wave;
        for (std::size_t i = 0; i < 4; ++i) {
            spoiled[12 + noise[8 * round + 2 * i] % (wave.size() - 12)] = noise[8 * round + 2 * i + 1];
        }
        CWaveSound sound;
        test::WriteWhole(m_folder / "spoiled.wav", spoiled);
        if (sound.Load(m_folder / "spoiled.wav")) {
            EXPECT_GT(sound.Format().blockAlign, 0) << "round " << round;
            EXPECT_GE(sound.Samples().size(), sound.Format().blockAlign) << "round " << round;
            EXPECT_LE(sound.Samples().size(), spoiled.size()) << "round " << round;
            EXPECT_EQ(sound.Samples().size() % sound.Format().blockAlign, 0u) << "round " << round;
        }
    }
}

TEST_F(WavFile, ManyEmptyChunksAreRefusedQuickly) {
    Bytes wave = WaveStart();
    wave.resize(wave.size() + 8u * 1024 * 1024, 0);
    AppendChunk(wave, "data", 6, kSamples);
    EXPECT_FALSE(Load(wave));
}

TEST_F(WavFile, MissingFileAndFolderAreRefused) {
    EXPECT_FALSE(m_sound.Load(m_folder / "@No Sound Selected"));
    EXPECT_FALSE(m_sound.Load(m_folder.Path()));
}

TEST_F(WavFile, FailedLoadKeepsTheSound) {
    Bytes wave = WaveStart();
    AppendChunk(wave, "data", 6, kSamples);
    ASSERT_TRUE(Load(wave));
    EXPECT_FALSE(Load({1, 2, 3}));
    EXPECT_EQ(Samples(), kSamples);
}

}  // namespace
}  // namespace vantrel
