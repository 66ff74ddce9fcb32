// The item lists' walk.
#include "utdata/itemlist.h"

#include "src/items/itemlookup.h"

namespace utdata {

template <class ItemClass, std::size_t idQuantity>
ItemList<ItemClass, idQuantity>::ItemList() : CList<ItemClass*>(10) {}

template <class ItemClass, std::size_t idQuantity>
ItemClass* ItemList<ItemClass, idQuantity>::First(fset_enumFilters filter, const Ids& ids) const {
  ItemClass* first = nullptr;
  Walk(*this, filter, ids, rulesOf<ItemClass>, [&first](POSITION, ItemClass* item) {
    first = item;
    return false;
  });
  return first;
}

template <class ItemClass, std::size_t idQuantity>
void ItemList<ItemClass, idQuantity>::Append(fset_enumFilters filter,
                                             ItemList& out,
                                             const Ids& ids) const {
  Appending appending(out);
  Walk(*this, filter, ids, rulesOf<ItemClass>, [&out](POSITION, ItemClass* item) {
    out.AddTail(item);
    return true;
  });
  appending.Keep();
}

template <class ItemClass, std::size_t idQuantity>
void ItemList<ItemClass, idQuantity>::Move(fset_enumFilters filter, ItemList& out, const Ids& ids) {
  std::ptrdiff_t count = 0;
  Walk(*this, filter, ids, rulesOf<ItemClass>, [&count](POSITION, ItemClass*) {
    ++count;
    return true;
  });
  out.Reserve(count);
  Walk(*this, filter, ids, rulesOf<ItemClass>, [this, &out](POSITION place, ItemClass* item) {
    out.AddTail(item);
    this->RemoveAt(place);
    return true;
  });
}

template class ItemList<CIChan, 1>;
template class ItemList<CIData, 6>;
template class ItemList<CIGate, 2>;
template class ItemList<CIPatch, 1>;
template class ItemList<CIProbe, 1>;
template class ItemList<CISubChan, 2>;

}  // namespace utdata
