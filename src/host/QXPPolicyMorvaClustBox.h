#pragma once

#include <cstdint>
#include <vector>

#include "host/HString.h"
#include "host/QXPDBScanNode.h"
#include "host/QXPKMeansNode.h"
#include "host/export.h"

/// A cluster box: the vocabulary and the classes of one clustering. A plain value; copies share
/// nothing.
///
/// A box file holds every field bit for bit: each NaN and -0.0, each 32-bit character value. Equal
/// boxes give equal files. A weight list is stored without its zeros where that is shorter.
class MORVA_EXPORT QXPPolicyMorvaClustBox {
 public:
  /// Belongs to the host: only stored.
  std::int32_t i_box_value = 0;
  /// The vocabulary, to which the weights of all classes belong in this order.
  std::vector<HString> vt_words;
  /// Only stored.
  std::vector<std::int32_t> vt_reserved;
  /// The classes of a K-means box; empty in others.
  std::vector<QXPKMeansNode> vt_kmeans_node;
  /// The classes of a DBSCAN box; empty in others.
  std::vector<QXPDBScanNode> vt_dbscan_node;
  /// 0 K-means, 1 DBSCAN; with any other value the box has no usable classes.
  std::int32_t i_cluster_type = 0;

  QXPPolicyMorvaClustBox();

  /// Loads the whole box. 0, or with the record untouched a negative error number: -EBADMSG for a
  /// file that is no box file, is damaged or has bytes behind its end; -ENOTSUP for one of another
  /// format version; -EFBIG for one of more than 512 MiB, or that would take more than 1 GiB of
  /// memory or out of proportion to its size; what the system says for one that cannot be read.
  ///
  /// Linear in the size of the file and of the box. What the weights take is mostly the memory for
  /// them: each list is dense once it is loaded.
  int from_file(HString const& path);
  /// Saves the whole box, replacing the file atomically; its directory must exist. 0, or with the
  /// old file untouched a negative error number: -EFBIG for a box that `from_file` would refuse.
  int to_file(HString const& path) const;
};
