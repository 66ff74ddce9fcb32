// Inspection parameters of data groups, as `edit` lists, changes and gathers them.
#pragma once

#include "utdata/fset.h"
#include "utdata/inspection.h"
#include "utdata/spec.h"

#include <deque>
#include <string>
#include <vector>

namespace utdata::program {

struct DataGroupItems {
  using Item = CIData;
  using Record = CGDataTypeFDD;
  /// The items that have a data group of the document; masters, which have none, are made anew at
  /// each loading.
  static std::vector<Item*> List(Inspection& inspection, fset_enumFilters filter);
  static const Record& Of(const Item& item) { return *item.idata1_GetGInfoRef(); }
  /// Gives the item the record's inspection parameters. Angles are brought within one turn.
  static void Change(Item& item, const Record& record);
};

/// Why an item does not take the parameters of a record that differs from its own; empty when it
/// does.
[[nodiscard]] std::string WhyNot(const CGDataTypeFDD& before, const CGDataTypeFDD& after);

}  // namespace utdata::program
