// The campaign of missing memory: each allocation of an operation fails in turn, alone or with all
// after it, and each time the operation has to be done, or to answer, or to let std::bad_alloc
// pass; without an abort, a leak, or something half done.
//
// A trial sets up what the operation needs, runs it once through Trial::Run, and checks with the
// assertions of GoogleTest what it left behind. It is called for each allocation, in a child
// process, so that an abort is counted and the campaign goes on behind it.
//
// The short form tries some places of a long operation, others each time; the long form
// (UTDATA_CAMPAIGN, tests/support/effort.h) all of them.
#pragma once

#include <exception>
#include <functional>
#include <new>
#include <string>

#include "tests/memory/failing_memory.h"
#include "utdata/failure.h"

namespace utdata::test {

enum class Outcome {
  Done,
  Answered,  ///< the operation said that it failed, in its own way
  Passed     ///< std::bad_alloc left it
};

class Trial {
 public:
  /// @param number of the allocation that fails, from 1; of none: 0
  Trial(long number, Shortage shortage) : m_number(number), m_shortage(shortage) {}

  /// Runs `attempt` while memory is short. It returns whether it has done what it should.
  template <class Attempt>
  Outcome Run(Attempt attempt) {
    ArmMemory(m_number, m_shortage);
    try {
      outcome = attempt() ? Outcome::Done : Outcome::Answered;
    } catch (const std::bad_alloc&) {
      outcome = Outcome::Passed;
    } catch (const Error&) {
      outcome = Outcome::Answered;
    } catch (...) {
      DisarmMemory();
      throw;
    }
    places = DisarmMemory();
    return outcome;
  }

  Outcome outcome = Outcome::Done;
  long places = 0;  ///< allocations of the attempt

 private:
  long m_number;
  Shortage m_shortage;
};

/// Runs the campaign of one operation; the test fails when there is one place with a bad end.
void RunCampaign(const std::string& operation, const std::function<void(Trial&)>& trial);

}  // namespace utdata::test
