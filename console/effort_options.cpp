#include "console/effort_options.h"

#include <algorithm>
#include <thread>

namespace vantrel {

namespace {

constexpr int kMaxWorkers = 256;

}  // namespace

void CEffortOptions::Declare(COptionSet& options) {
    options.AddNumber("-l,--level", m_level, 1, 9, "Compression level, 1 (fast) to 9 (small), by default 9");
    options.AddNumber("-j,--jobs", m_workers, 1, kMaxWorkers,
                      "Threads to use, by default one for each core; the output is the same for any number");
}

int CEffortOptions::DefaultWorkers() {
    return static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, unsigned{kMaxWorkers}));
}

}  // namespace vantrel
