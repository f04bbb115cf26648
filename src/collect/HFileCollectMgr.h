#pragma once

#include "collect/HFileCollectBase.h"
#include "collect/HFileCollectDNANode.h"
#include "collect/HFileCollectFeatureNode.h"
#include "host/HString.h"
#include "host/HTessarineResult.h"
#include "host/export.h"

/// Fills the agent's records about one file: base information, words, or digest and DNA. Where the
/// records go is the agent's matter.
///
/// A record is a plain object of the caller. No operation throws on a bad file. From one thread at
/// a time.
class MORVA_EXPORT HFileCollectMgr {
 public:
  /// The instance; null until the first `pins`.
  static HFileCollectMgr* pcollect;

  /// The agent's identifier is known.
  bool mb_init = false;
  /// The identifier, as `init` last found it; empty before.
  HString mstr_agent_id;

  HFileCollectMgr();
  ~HFileCollectMgr();

  /// The instance, which asks for the agent's identifier as long as there is none. It lives as long
  /// as the process.
  static HFileCollectMgr* pins();
  /// Asks for the agent's identifier anew. One log line.
  void init();

  /// Where the segmenter's dictionary lies. False, with nothing changed, when there is no such
  /// directory. Every extraction of words or DNA sets the directory of `Orlec::LocateMgr` again.
  bool set_dict_path(HString const& directory) const;
  /// The whole kilobytes of the file and one more: 1 for an empty or missing file, 2 for 1024
  /// bytes.
  long long get_file_kb_size(HString const& path) const;
  /// The identifier as `init` last found it; empty before.
  HString get_agent_id() const;
  /// MD5 of the file's content as `HFileMD5` gives it; empty for a file that cannot be read.
  HString get_file_md5(HString const& path) const;
  /// Fills what all records have in common. Always true, also for a file that is missing; `node` is
  /// not to be null.
  bool get_file_base_info(HString const& path, HFileCollectBase* node) const;
  /// Fills the base information and the words. Always false: a caller learns of success from lists
  /// that are not empty. Where no words can be had, the lists stay as they were.
  bool get_file_feature(HString const& path, HFileCollectFeatureNode& node) const;
  /// Fills the base information, the digest and the DNA, of the length in force in `HFileDNA`.
  /// False, with an empty DNA, when none can be made.
  bool get_file_dna(HString const& path, HFileCollectDNANode& node) const;
  /// Does nothing.
  void check_file_stat(HFileCollectDNANode& node, HTessarineResult const& result) const;
};
