// Loading of sounds, and their endless repetition.
#include <algorithm>

#include "app/sound/sample_loop.h"
#include "app/sound/wav_file.h"
#include "fuzz/expect.h"
#include "fuzz/memory_disk.h"

namespace vantrel::fuzz {

namespace {

const std::string kSound = std::string(kFolder) + "sound.wav";

void Load(std::span<const std::uint8_t> file) {
    ClearDisk(1 << 20U);
    PutFile(kSound, file);
    CWaveSound sound;
    if (!sound.Load(kSound)) {
        Expect(sound.Samples().empty(), "a refused file leaves the sound unchanged");
        return;
    }
    const std::span<const std::uint8_t> samples = sound.Samples();
    Expect(!samples.empty() && samples.size() < file.size(), "the samples are in the file");
    Expect(samples.size() % sound.Format().blockAlign == 0, "there are only complete samples");
    const std::size_t usable = UsableBufferSize(sound.Format().blockAlign);
    Expect(usable <= kWaveBufferSize, "the usable size fits the buffer");
    Bytes buffer(usable);
    Bytes wanted;
    while (wanted.size() < 2 * usable) {
        wanted.insert(wanted.end(), samples.begin(), samples.end());
    }
    std::size_t position = 0;
    FillFromLoop(samples, position, buffer);
    Expect(std::equal(buffer.begin(), buffer.end(), wanted.begin()), "the samples are played from their start");
    FillFromLoop(samples, position, buffer);
    Expect(std::equal(buffer.begin(), buffer.end(), wanted.begin() + static_cast<std::ptrdiff_t>(usable)),
           "and repeated without a break");
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vantrel::fuzz::Load({data, size});
    return 0;
}
