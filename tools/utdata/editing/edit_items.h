// How each type of item that `edit` changes is listed, read, changed and gathered.
#pragma once

#include "utdata/fset.h"
#include "utdata/inspection.h"
#include "utdata/spec.h"

#include <deque>
#include <memory>
#include <vector>

namespace utdata::program {

struct ChannelItems {
  using Item = CIChan;
  using Record = CGChanTypeDescr;
  static std::vector<Item*> List(Inspection& inspection, fset_enumFilters filter);
  static const Record& Of(const Item& item) { return *item.ichan1_GetInfoRef(); }
  static void Change(Item& item, const Record& record) { item.ichan1_SetInfoCopy(&record); }
};

struct SubChannelItems {
  using Item = CISubChan;
  using Record = CGSubchanTypeDescr;
  static std::vector<Item*> List(Inspection& inspection, fset_enumFilters filter);
  static const Record& Of(const Item& item) { return *item.ischa1_GetInfoRef(); }
  static void Change(Item& item, const Record& record) { item.ischa1_SetInfoCopy(&record); }
};

struct GateItems {
  using Item = CIGate;
  using Record = CGGateTypeDescr;
  static std::vector<Item*> List(Inspection& inspection, fset_enumFilters filter);
  static const Record& Of(const Item& item) { return *item.igate1_GetInfoRef(); }
  /// REQUIRES: the record has the ids of the item.
  static void Change(Item& item, const Record& record);
};

struct ProbeItems {
  using Item = CIProbe;
  using Record = CGProbeTypeDescr;
  static std::vector<Item*> List(Inspection& inspection, fset_enumFilters filter);
  static const Record& Of(const Item& item) { return *item.iprob1_GetInfoRef(); }
  static void Change(Item& item, const Record& record) { item.iprob1_SetInfoCopy(&record); }
};

struct PatchItems {
  using Item = CIPatch;
  using Record = CGPatchTypeDescr;
  static std::vector<Item*> List(Inspection& inspection, fset_enumFilters filter);
  static const Record& Of(const Item& item) { return *item.ipatch1_GetInfoRef(); }
  static void Change(Item& item, const Record& record) { item.ipatch1_SetInfoCopy(&record); }
};

struct InfoItems {
  using Item = CIInfo;
  using Record = CGInfoTypeDescr;
  static std::vector<Item*> List(Inspection& inspection, fset_enumFilters filter);
  static const Record& Of(const Item& item) { return *item.iinfo1_GetInfoRef(); }
  static void Change(Item& item, const Record& record) { item.iinfo1_SetInfoCopy(&record); }
};

struct MaterialItems {
  using Item = CISpecMat;
  using Record = CGSpecmatTypeDescr;
  static std::vector<Item*> List(Inspection& inspection, fset_enumFilters filter);
  static const Record& Of(const Item& item) { return *item.ismat1_GetInfoRef(); }
  static void Change(Item& item, const Record& record) { item.ismat1_SetInfoCopy(&record); }
};

}  // namespace utdata::program
