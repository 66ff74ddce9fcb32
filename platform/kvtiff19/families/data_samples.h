// The samples of a data group: a block item of the record's own group.
#pragma once

#include <cstdint>

#include "platform/kvtiff19/items.h"

namespace utdata::kvtiff19 {

/// Makes `samples` name a group's block. False when the item is none.
/// @param index of the item in its group
[[nodiscard]] bool ReferToBlock(SCFile::GroupHandle group,
                                const StoredItem& item,
                                std::uint32_t index,
                                gdata_typeSampleRef& samples);

/// Appends the samples that a record brings, if any: those at its data pointer, unless the base has
/// them; without a base also those of the block that its reference names. A failure also fails the
/// file's next commit.
[[nodiscard]] int WriteSamples(SCFile::Node& group,
                               const CGDataTypeFDD* base,
                               const CGDataTypeFDD& record);

}  // namespace utdata::kvtiff19
