// Which data groups arrived through modifier groups, and from which file each came.
//
// A record never owns its group, and is dead once the group is deleted. No lock: one thread at a
// time. Nothing here throws but std::bad_alloc; of a list, the groups before are then recorded.
#pragma once

#include <string>

#include "interfaces/framework.h"
#include "interfaces/kvtiff19.h"

/// One recorded data group.
struct CNewData {
  CGDataTypeFDD* group = nullptr;  ///< not owned
  std::wstring fileName;           ///< the file it came from
};

/// Records of data groups in the order in which they arrived.
///
/// Files are numbered by their first appearance: each record whose file name differs from the one
/// before starts a new file. With the base file (a name that ends in ".fpd", in upper or lower
/// case) first, it is number 0 and the others follow from 1; files met before any base file count
/// from 1 too.
class UTDATA_API CDataNewGroup {
 public:
  CDataNewGroup() = default;
  CDataNewGroup(const CDataNewGroup&) = delete;
  CDataNewGroup& operator=(const CDataNewGroup&) = delete;

  /// Records one group, at the end.
  void AddGData(CGDataTypeFDD* group, const std::wstring& fileName);
  /// Records the groups of a list (which stays the caller's) in order; a group that is already
  /// recorded moves to the end and gets the new name. Null is an empty list.
  void AddGData(CList<CGDataTypeFDD*>* groups, const std::wstring& fileName);

  /// The name of file number `n`; without such a file that of the last file met, and an empty text
  /// without any record.
  [[nodiscard]] std::wstring GetFileName(int n) const;
  /// Number of files, the base file not counted.
  [[nodiscard]] int GetNbFile() const;
  /// The number of the file that the first record of `group` came from; 0 when it has no record.
  [[nodiscard]] int GetNumMapping(CGDataTypeFDD* group) const;

 private:
  CList<CNewData> m_records;
};
