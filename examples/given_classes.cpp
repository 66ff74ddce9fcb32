// A host on the given classes directly: loads an inspection with its companions, makes data items
// of its data groups, attaches their samples, and lists them in millimetres.
//   given_classes FILE
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "utdata/fcont.h"
#include "utdata/fset.h"
#include "utdata/idata.h"
#include "utdata/idatalst.h"
#include "utdata/supplier.h"
#include "utdata/tablefactory.h"
#include "utdata/vset.h"

// One opened inspection. Members are declared after what they refer to, so that they go first.
class Document final : public IGDataSupplier {
 public:
  explicit Document(CFContTypeFileDescr& groups) : m_groups(groups) {
    m_volumes.vol_FillBaseUnits();
    for (CGDataTypeFDD* group : groups.data) Add(*group);
  }
  CFSet* GetFileSet() override { return &m_set; }
  CTableFactory* GetTableFactory() override { return &m_tables; }
  CVolumeSet* GetVolumeSet() override { return &m_volumes; }
  CFContTypeFileDescr* GetFileDescriptor() override { return &m_groups; }
  void OnDataGroupAdded(std::int32_t) override {}
  void HandleParameterRequest(PellamServiceParam&, std::int32_t) override {
  }  // no parameter database: presets stay
  void OnParametersChanged() override {}

 private:
  void Add(CGDataTypeFDD& group) {
    bool isAdded = false;  // else the item, if any, is another group's, with samples of its own
    CIData* item = m_set.fset_AddGData(&group, nullptr, &m_volumes, 0, &isAdded);
    void* samples = nullptr;
    std::uint64_t size = 0;  // the mapping is the file's, and ends when that is closed
    if (isAdded && gdata_SamplesMap(&group, &samples, &size) == SCFile::status_Ok)
      item->AttachTable(static_cast<char*>(samples), true, size);
  }

  CFContTypeFileDescr& m_groups;
  CTableFactory m_tables;
  CVolumeSet m_volumes{this, unit_Length, L"", unit_Length, L""};
  CFSet m_set{static_cast<IGDataSupplier*>(this)};
};

static void List(CIData& item) {
  std::wstring label, idLabel;
  item.idata3_GetChannelIdName(&label, &idLabel, 0);
  const CUnit* millimetres = item.idata3_GetUnit(kvt_AxisColumn, unit_Length, unit_Millimetre);
  const double last =
      item.idata3_GetColOffs() + (item.idata3_GetColQty() - 1) * item.idata3_GetColResol();
  std::printf("%s class %u: %u columns up to %g mm, %u rows, samples %s\n",
              utdata::NarrowFromWide(label).c_str(),
              static_cast<unsigned>(item.idata3_GetDataId()),
              static_cast<unsigned>(item.idata3_GetColQty()),
              millimetres ? millimetres->ConvertFromBase(last) : last,
              static_cast<unsigned>(item.idata3_GetRowQty()),
              item.Descriptor()->IsDataLoaded() ? "attached" : "missing");
}

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: given_classes FILE\n");
    return 2;
  }
  CFCont container;
  const std::wstring path = utdata::WideFromNarrow(argv[1]);  // UTF-8
  const int options[8] = {0, 0, 0, 0, 1, 1, 0, 0};            // read the companions too
  std::unique_ptr<CFContTypeFileDescr> file(container.FileLoad(path.c_str(), nullptr, nullptr));
  if (!file || container.FileUpdate(path.c_str(), file.get(), options, nullptr, nullptr) != 0) {
    file.release();  // a failed update has deleted it
    std::fprintf(stderr, "%s\n", SCFile::file_LastError().c_str());
    return 1;
  }
  {
    Document document(*file);
    CIDataLst items;
    document.GetFileSet()->fset_GetIDataLst(&items);
    for (CIData* item : items) List(*item);
  }
  utdata::DeleteGroups(*file);
  container.FileClose(file.get());
}
