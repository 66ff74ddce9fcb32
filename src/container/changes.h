// The changes of one descriptor against a loaded one, on their way into a file.
#pragma once

#include <functional>
#include <type_traits>
#include <vector>

#include "src/container/groupwriting.h"
#include "src/container/matching.h"

namespace utdata::container {

/// Writes descriptors as modifications of the loaded ones that they match, or whole where they
/// match none. A data group without a match may leave a copy in the loaded descriptor, the base of
/// later writes; the copies are taken back unless the changes are settled.
class Changes {
 public:
  /// @param writeFlag handed to the data groups' writer; 0 leaves copies
  Changes(CFContTypeFileDescr& loadedDescriptor, int flag)
      : m_loaded(loadedDescriptor), m_writeFlag(flag) {}
  Changes(const Changes&) = delete;
  Changes& operator=(const Changes&) = delete;
  ~Changes() {
    for (const POSITION copy : m_copies) {
      if (!copy) continue;
      gdata_Delete(m_loaded.data.GetAt(copy), 1);
      m_loaded.data.RemoveAt(copy);
    }
  }

  /// Writes the descriptors of one type into a top group, in order.
  template <class Descriptor>
  void Write(SCFile::GroupHandle top,
             const GroupType<Descriptor>& type,
             const CList<Descriptor*>& descriptors) {
    if (descriptors.IsEmpty()) return;
    Matching<Descriptor> matching(m_loaded.*type.list);
    for (Descriptor* descriptor : descriptors) {
      Descriptor* const base = matching.Find(*descriptor);
      const SCFile::GroupHandle group = CreateGroup(top, type.modifierCode, type.modifierName);
      if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>)
        if (base) descriptor->cellSize = base->cellSize;
      Family<Descriptor>::Write(
          group, type.HasModifierCode() ? base : nullptr, descriptor, m_writeFlag);
      if (base && type.HasModifierCode()) {
        m_settling.emplace_back([group, base] { ReadModification(group, base); });
      } else if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>) {
        if (m_writeFlag == 0) matching.Add(LeaveCopy(group, *descriptor));
      }
    }
  }

  /// Once the changes are on the medium: the loaded descriptors take over what their modifications
  /// say, so that the next changes are told against the file as it now is, and the copies stay.
  void Settle() {
    m_copies.clear();
    for (const auto& settle : m_settling) settle();
  }

 private:
  /// The copy refers to its samples in the file, not in memory that is the host's and may be gone
  /// by the next write.
  CGDataTypeFDD* LeaveCopy(SCFile::GroupHandle group, const CGDataTypeFDD& data);

  CFContTypeFileDescr& m_loaded;
  int m_writeFlag;
  std::vector<POSITION> m_copies;  ///< in the loaded data list; null while one is being made
  std::vector<std::function<void()>> m_settling;
};

}  // namespace utdata::container
