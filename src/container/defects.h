// Defect records: read, written and deleted.
#pragma once

#include <string>

#include "utdata/fcont.h"

namespace utdata::container {

inline constexpr std::uint32_t codeDefectTable = 10045;
inline constexpr std::uint32_t codeDefect = 10044;

/// Reads one record from its open group. The first item that cannot be read ends it; what was read
/// so far stays, and `loss` says why. Items of other codes are skipped, and so are the texts of a
/// sub-entry that no number has begun. A sub-entry counts once its second text is read. Throws
/// std::bad_alloc when it is memory that is short.
void ReadDefect(SCFile::GroupHandle group, stDefectExtern& record);

/// Writes the defect table into a top group: a "Defect" group per record. A failure makes the
/// file's commit fail.
void WriteDefectTable(SCFile::GroupHandle top, const CList<stDefectExtern*>& defects);

/// Why a table may not be written: one of the records is shortened. Empty when all are whole.
[[nodiscard]] std::string LossIn(const CList<stDefectExtern*>& defects);

/// Why a table may not be appended to a file: a record of its last table is shortened, and the rest
/// of that record would be lost behind the new table. Empty when all are whole.
[[nodiscard]] std::string LossInLastTable(SCFile::FileHandle file);

/// Deletes the records and empties the list.
void ReleaseDefects(CList<stDefectExtern*>& defects) noexcept;

}  // namespace utdata::container
