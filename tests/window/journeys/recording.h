// The recorded output of the audio device of the tests.
#pragma once

#include "tests/support/test_folder.h"

namespace vantrel::test {

/// A part of the recording, from now on.
class CRecording {
public:
    CRecording();
    /// The recording since then, once it has at least this length. The test fails if it does not reach it.
    Bytes AtLeast(double seconds) const;
    /// How long there was a sound since then, in seconds. A busy machine plays with pauses, but plays everything.
    double LoudSeconds() const;

private:
    std::size_t m_start;
};

/// Whether the recording is silent.
bool IsSilent(const Bytes& recording);

}  // namespace vantrel::test
