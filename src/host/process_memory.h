#pragma once

#include "host/export.h"

/// Resident memory in bytes of the process with this id, 0 for the calling one; 0 when there is no
/// such process.
MORVA_EXPORT long long get_process_use_memory_total(unsigned int process_id);
