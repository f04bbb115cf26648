#pragma once

#include "collect/HFileCollectBase.h"
#include "host/HString.h"
#include "host/export.h"

/// The record of a file's digest and fingerprint.
class MORVA_EXPORT HFileCollectDNANode : public HFileCollectBase {
 public:
  /// MD5 of the file's content.
  HString str_md5;
  /// The file's DNA (see `HFileDNA`); empty where there is none.
  HString str_dna;

  HFileCollectDNANode();
};
