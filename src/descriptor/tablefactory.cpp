#include "utdata/tablefactory.h"

#include <algorithm>
#include <memory>
#include <new>

IMPLEMENT_DYNAMIC(CTableFactory, CObject)

CTableFactory::CTableFactory() = default;

CTableFactory::~CTableFactory() {
  UTDATA_ASSERT(m_tables.IsEmpty());
  m_tables.RemoveAll();
}

CLookUpTable* CTableFactory::ObtainLUT(const CRDataTypeDD* descriptor,
                                       int* created,
                                       const vset_groupId* identity) {
  UTDATA_ASSERT(descriptor != nullptr);
  if (!descriptor) return nullptr;
  const auto found = std::find_if(m_tables.begin(), m_tables.end(), [&](const CLookUpTable* table) {
    return table->Compare(descriptor, identity) != 0;
  });
  if (created) *created = 0;
  if (found != m_tables.end()) {
    (*found)->AddRef();
    return *found;
  }
  try {
    auto table = std::make_unique<CLookUpTable>(descriptor, identity);
    m_tables.AddTail(table.get());
    if (created) *created = 1;
    return table.release();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void CTableFactory::ReleaseLUT(CLookUpTable* table) {
  const POSITION position = m_tables.Find(table);
  if (position && table->Release() == 0) m_tables.RemoveAt(position);
}

std::ptrdiff_t CTableFactory::GetTableQty() const { return m_tables.GetCount(); }
