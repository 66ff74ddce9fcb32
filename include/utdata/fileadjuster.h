// Relocates sample tables: turns what a list of descriptors holds from absolute addresses into
// offsets from a base address, and back.
#pragma once

#include "interfaces/framework.h"
#include "utdata/rdata.h"

/// Keeps no state and takes no lock; the descriptors and their tables are changed.
class UTDATA_API CFileAdjuster {
 public:
  /// For each descriptor with a table, in order: its data pointer becomes the distance of the table
  /// from `base`, and with storage mode 1 the low 32 bits of `base` are subtracted from every
  /// cell's offset that is not 0, modulo 2^32. Descriptors without a table are left alone. Of the
  /// all-ones pointer no offsets are read. A table whose size is too small for its offsets is
  /// reported, and only the offsets that it holds are changed.
  void FileAdjust(CList<CRDataTypeDD*>& descriptors, void* base);
  /// The way back: the data pointer becomes the table's address, and the low 32 bits of `base` are
  /// added to every offset that is not 0.
  void FileUnadjust(CList<CRDataTypeDD*>& descriptors, void* base);
};
