// Modifications applied to what a file holds, and numbers for its sub-channels.
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "src/container/matching.h"
#include "src/container/subchannels.h"
#include "utdata/fcont.h"
#include "utdata/newdata.h"

namespace utdata::container {
namespace {

/// Applies the modifiers of one type in order and empties their list. One that matches nothing
/// joins the descriptor's list and is handed to `joined`; the others are deleted. False when one
/// cannot be read; the rest is then left in its list.
template <class Descriptor, class Joined>
bool ApplyModifiers(CList<Descriptor*>& list, CList<Descriptor*>& modifiers, Joined joined) {
  if (modifiers.IsEmpty()) return true;
  Matching<Descriptor> matching(list);
  while (!modifiers.IsEmpty()) {
    auto modifier = Hold(modifiers.RemoveHead());
    int status = SCFile::status_Ok;
    const auto apply = [&](Descriptor* match) {
      status = ReadModification(GetGroupHandle(*modifier), match);
      if constexpr (std::is_same_v<Descriptor, CGDataTypeFDD>) NoteModified(*match, *modifier);
    };
    const bool isMatched = matching.ChangeMatch(*modifier, apply) != nullptr;
    if (status != SCFile::status_Ok) return false;
    if (isMatched) continue;
    list.AddTail(modifier.get());
    Descriptor* const added = modifier.release();
    matching.Add(added);
    joined(added);
  }
  return true;
}

}  // namespace
}  // namespace utdata::container

using namespace utdata::container;

bool CFCont::UpdateModifierGroup(CFContTypeFileDescr* descriptor,
                                 fcontsec_typeFileDescriptor* work,
                                 const wchar_t* path,
                                 CDataNewGroup* newGroups) {
  bool areRead = true;
  const auto apply = [&](const auto& type) {
    const auto joined = [&]([[maybe_unused]] auto* added) {
      if constexpr (std::is_same_v<decltype(added), CGDataTypeFDD*>)
        if (newGroups) newGroups->AddGData(added, path);
    };
    areRead = areRead && ApplyModifiers(descriptor->*type.list, work->*type.modifiers, joined);
  };
  ForEach(Modified(), apply);
  ForEach(Dropped(), [&](const auto& type) { Release(work->*type.modifiers); });
  return areRead;
}

void CFCont::UpdateSubChannelList(CFContTypeFileDescr* descriptor) {
  try {
    auto numbering = descriptor->m_numbering ? nullptr : std::make_unique<Numbering>();
    NumberSubChannels(*descriptor, numbering == nullptr);
    if (numbering) descriptor->m_numbering = std::move(numbering);
  } catch (const std::bad_alloc&) {
    utdata::ReportAssertion(__FILE__, __LINE__, L"no memory to number the sub-channels");
  }
}
