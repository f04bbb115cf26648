#pragma once

#include <memory>

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

namespace morvakit {

enum class SmimeKind {
  unknown,
  signed_content,  ///< a signature with the content that it is about
  encrypted,
};

struct SmimeContent {
  SmimeKind kind = SmimeKind::unknown;
  /// The content of a signed message, which has the form of a mail; else null.
  std::unique_ptr<Orlec::Reader> bytes;
};

/// Opens a cryptographic message (RFC 5652) as S/MIME has it, in BER or DER. The signature is not
/// checked.
SmimeContent open_smime(Orlec::Reader const& message, ReadContext& context);

}  // namespace morvakit
