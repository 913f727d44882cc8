// The date and time of layouts, formatted by the system.
#pragma once

#include "iml/export/local_time.h"

namespace vantrel {

/// The local time in the time zone of the system, formatted by its default locale. The environment variable TZ, which
/// the C runtime would follow, has no influence.
SLayoutTime SystemLayoutTime();

}  // namespace vantrel
