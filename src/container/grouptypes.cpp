#include "src/container/grouptypes.h"

#include "src/container/defects.h"

namespace utdata::container {

void ReleaseAll(fcontsec_typeFileDescriptor& work) noexcept {
  ForEachType([&](const auto& type) {
    Release(work.*type.primaries);
    if (type.modifiers) Release(work.*type.modifiers);
  });
  ReleaseDefects(work.defects);
}

}  // namespace utdata::container
