#include "src/container/grouptypes.h"

#include "src/container/defects.h"

namespace utdata::container {

void ReleaseAll(fcontsec_typeFileDescriptor& work) noexcept {
  ForEach(allTypes, [&](const auto& type) {
    Release(type, work.*type.primaries);
    Release(type, work.*type.modifiers);
  });
  ReleaseDefects(work.defects);
}

}  // namespace utdata::container
