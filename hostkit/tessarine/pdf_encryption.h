#pragma once

#include "host/Orlec/IFile.h"

namespace tessarine {

/// Whether a PDF cannot be read without a password. One that only its owner protected can. Looks
/// at the first and last 2 MiB, and opens the document only where these tell of encryption. False,
/// because it is not known, when the PDF component is not installed or the file is over 512 MiB.
bool pdf_needs_password(Orlec::Reader const& reader);

}  // namespace tessarine
