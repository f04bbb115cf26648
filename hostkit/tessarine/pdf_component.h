#pragma once

#include "host/Orlec/IFile.h"

namespace tessarine {

/// The file of the PDF component. What it needs is large, slow to load and under the GPL: it is
/// loaded when a document asks for it, and may be absent.
inline constexpr char const* pdf_component_file = "libmorvakit-pdf.so";

/// Offered by the component under `pdf_needs_password_symbol`: whether a PDF is encrypted and the
/// empty password does not open it. False for a document that cannot be opened for other reasons.
using PdfNeedsPasswordFunction = bool (*)(Orlec::Reader const& reader);

inline constexpr char const* pdf_needs_password_symbol = "morvakit_pdf_needs_password";

}  // namespace tessarine
