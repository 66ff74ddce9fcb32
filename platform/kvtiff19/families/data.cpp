// Data groups: the record, and its operations except those on samples.
#include <algorithm>
#include <cmath>
#include <cwchar>
#include <limits>

#include "platform/kvtiff19/families/data_samples.h"
#include "platform/kvtiff19/families/data_table.h"
#include "platform/kvtiff19/families/record_operations.h"

using namespace utdata::kvtiff19;

static_assert(IsWellFormedTable<CGDataTypeFDD>());

namespace {

/// As many characters as fit; the place is terminated and holds nothing behind the terminator.
void SetText(wchar_t (&place)[CGDataTypeFDD::nameSize], const wchar_t* text) {
  const std::size_t length = text ? std::wcslen(text) : 0;
  const std::size_t kept = std::min(length, CGDataTypeFDD::nameSize - 1);
  std::fill(std::copy_n(text, kept, place), std::end(place), L'\0');
}

/// False, and `product` is left alone, when the result does not fit.
bool Multiply(std::uint64_t& product, std::uint64_t factor) {
  if (factor != 0 && product > std::numeric_limits<std::uint64_t>::max() / factor) return false;
  product *= factor;
  return true;
}

}  // namespace

double NormalizeAngle(double degrees) {
  const double remainder = std::fmod(degrees, 360.0);
  const double angle = remainder < 0 ? remainder + 360 : remainder;
  return static_cast<float>(angle) < 360.0f
             ? angle
             : 0.0;  // records hold angles as floats; NaN is not less
}

void CGDataTypeFDD::InitializeData() { *this = CGDataTypeFDD(); }

std::uint64_t CGDataTypeFDD::GetPatchIDName(const wchar_t** name) const {
  const std::uint64_t length = std::wcslen(m_patchName);
  if (length != 0 && name) *name = m_patchName;
  return length;
}

void CGDataTypeFDD::SetPatchIDName(const wchar_t* name) { SetText(m_patchName, name); }

bool CGDataTypeFDD::LayoutSize(std::uint64_t& size) const {
  std::uint64_t product =
      std::uint64_t{sampleSize} * (gdata_HoldsOneValuePerCell(dataClass) ? 1 : sampleQuantity);
  product = std::max<std::uint64_t>(product, cellSize);
  if (storageMode != kvt_StorCells || !Multiply(product, columnQuantity) ||
      !Multiply(product, rowQuantity))
    return false;
  size = product;
  return true;
}

int gdata_Init() { return SCFile::status_Ok; }

CGDataTypeFDD* gdata_Allocate(int, const wchar_t* name) {
  auto* const record = new (std::nothrow) CGDataTypeFDD;
  if (record) SetText(record->dataName, name);
  return record;
}

void gdata_Delete(CGDataTypeFDD*& descriptor, int whole) {
  DeleteRecord(descriptor, whole);
  descriptor = nullptr;
}

int gdata_ReadGroupInfo(SCFile::GroupHandle group, CGDataTypeFDD* descriptor) {
  if (!group || !descriptor)
    return Fail(SCFile::status_BadArgument, "no group to read, or no descriptor to fill");
  gdata_typeSampleRef samples = descriptor->samples;
  const int status =
      ReadRecord(group, *descriptor, *descriptor, [&](const StoredItem& item, std::uint32_t index) {
        return item.code != sampleBlockCode || ReferToBlock(group, item, index, samples);
      });
  if (status == SCFile::status_Ok) descriptor->samples = samples;
  return status;
}

int gdata_WriteGroupInfo(SCFile::GroupHandle group,
                         const CGDataTypeFDD* base,
                         const CGDataTypeFDD* descriptor,
                         int) {
  const int status = WriteRecord(group, base, descriptor);
  if (status != SCFile::status_Ok) return status;
  return Guarded([&] { return WriteSamples(*group, base, *descriptor); }, group->file);
}

int gdata_Duplicate(CGDataTypeFDD* target, const CGDataTypeFDD* source) {
  return DuplicateRecord(target, source);
}

bool operator==(const CGDataTypeFDD& a, const CGDataTypeFDD& b) { return SameFields(a, b); }

SCFile::GroupIdentity SCFile::file_Identity(const CGDataTypeFDD& descriptor) {
  return IdentityOf(descriptor);
}
