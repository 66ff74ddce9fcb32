// Defect records: how they stand in a file, and their ownership.
#pragma once

#include "utdata/fcont.h"

namespace utdata::container {

inline constexpr std::uint32_t codeDefectTable = 10045;
inline constexpr std::uint32_t codeDefect = 10044;

/// Reads one record from its open group. The first item that cannot be read ends it; what was read
/// so far stays. Items of other codes are skipped, and so are the texts of a sub-entry that no
/// number has begun. A sub-entry counts once its second text is read.
void ReadDefect(SCFile::GroupHandle group, stDefectExtern& record);

/// Writes the defect table into a top group: a "Defect" group per record. Failures are the file's
/// to remember.
void WriteDefectTable(SCFile::GroupHandle top, const CList<stDefectExtern*>& defects);

/// Deletes the records and empties the list.
void ReleaseDefects(CList<stDefectExtern*>& defects) noexcept;

}  // namespace utdata::container
