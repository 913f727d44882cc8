// The options of commands that compress: level and number of threads.
#pragma once

#include <cstdint>

#include "console/option_set.h"

namespace vantrel {

class CEffortOptions {
public:
    void Declare(COptionSet& options);

    int Level() const { return m_level; }
    std::uint32_t Workers() const { return static_cast<std::uint32_t>(m_workers); }

private:
    int m_level = 9;
    int m_workers = DefaultWorkers();

    static int DefaultWorkers();
};

}  // namespace vantrel
