// Keeps the look-up tables of a document and shares them between data groups.
//
// One factory per document, owned by the host. No lock: a factory and its tables are used by one
// thread at a time.
#pragma once

#include "utdata/lut.h"

class UTDATA_API CTableFactory : public CObject {
  DECLARE_DYNAMIC(CTableFactory)

 public:
  CTableFactory();
  CTableFactory(const CTableFactory&) = delete;
  CTableFactory& operator=(const CTableFactory&) = delete;
  /// Raises an assertion when tables are left. They are not destroyed: whoever holds one may still
  /// read it.
  ~CTableFactory() override;

  /// The first table that serves the descriptor and identity (CLookUpTable::Compare), its count
  /// raised, or a new one with count 1.
  /// @param created  receives 1 for a new table, else 0; may be null
  /// @param identity copied; may be null
  /// @return given back with ReleaseLUT; null without memory and, with an assertion, for a null
  ///   descriptor
  [[nodiscard]] CLookUpTable* ObtainLUT(const CRDataTypeDD* descriptor,
                                        int* created,
                                        const vset_groupId* identity);
  /// Gives back one reference; the table is destroyed with its last one. A table that is not this
  /// factory's is ignored.
  void ReleaseLUT(CLookUpTable* table);

  [[nodiscard]] std::ptrdiff_t GetTableQty() const;

 private:
  CList<CLookUpTable*> m_tables;
};
