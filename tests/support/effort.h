// How often random tests repeat themselves.
#pragma once

namespace utdata::test {

/// `count`, and a tenth of it under a sanitizer, which takes about ten times as long for each.
constexpr int Repetitions(int count) {
#ifdef UTDATA_SANITIZED
  return count / 10;
#else
  return count;
#endif
}

}  // namespace utdata::test
