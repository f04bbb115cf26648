#pragma once

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"
#include "morvakit/spool.h"

namespace morvakit {

/// Unpacks the RTF of a message ([MS-OXRTFCP], forms "LZFu" and "MELA") to `rtf`. What is broken
/// about it is noted; what was unpacked up to there stays.
void unpack_mail_rtf(Orlec::Reader const& packed, Spool& rtf, ReadContext& context);

}  // namespace morvakit
