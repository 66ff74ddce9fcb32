// One inspection: opened with its companions, its data groups listed, edited, gated, and saved.
//
// An inspection does what every host of the given classes has to do: it is the document that they
// call back, gives its volume base units before the first data item is made, attaches the sample
// tables, keeps alive what items refer to, and distinguishes data groups that are added from those
// that are there already. The given classes stay reachable.
//
// Texts and paths are UTF-8. What cannot be done is thrown as utdata::Error, lack of memory as that
// or as std::bad_alloc; no operation here answers a failure in another way. One that fails has
// changed nothing, here or in a file, unless it says so. An inspection is used by one thread at a
// time, except that reading samples (DataGroup, Samples) may run in several threads as long as no
// other thread changes the inspection.
//
// Samples from a file are held against their checksums when they are first read, a chunk at a time
// and each chunk once, and reading damaged ones throws (OpenOptions::acceptDamage). A host that
// changes samples in a table of its own accord reads them here first.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "interfaces/kvtiff19.h"
#include "utdata/datagroup.h"
#include "utdata/failure.h"
#include "utdata/fcont.h"

class CFSet;
class CIGate;
class CSpec;
class CVolumeSet;
class IGDataSupplier;

namespace utdata {

struct InspectionState;

/// Where sample tables are while an inspection is open.
enum class SampleTables {
  Mapped,   ///< in the file, of which the operating system brings what is read
  InMemory  ///< in memory, whole
};

struct OpenOptions {
  SampleTables tables = SampleTables::Mapped;
  /// How long a thread waits for a table that another thread is bringing into memory.
  std::chrono::milliseconds tableTimeout = std::chrono::minutes(5);
  /// Called while tables are brought into memory.
  Watch watch = {};
  /// Cells whose samples are damaged count as cells without samples; else reading them throws.
  bool acceptDamage = false;
};

/// Samples of a data group that are not as they were written: bytes of its file that do not match
/// their checksum.
struct DamagedSamples {
  std::size_t group = 0;        ///< DataGroup::Index
  std::string file;             ///< that holds them
  std::uint64_t offset = 0;     ///< in bytes from the start of the file
  std::uint64_t size = 0;       ///< bytes
  std::uint64_t cells = 0;      ///< how many of the cells have samples there
  std::uint64_t firstCell = 0;  ///< of these
  std::uint64_t lastCell = 0;
  std::string why;  ///< all that as a failure says it
};

/// Chooses data groups; what is not given matches any.
struct DataQuery {
  std::optional<gdata_enumDataClass> dataClass = {};
  std::optional<std::uint32_t> channel = {};
  std::optional<std::uint32_t> subChannel = {};
  std::optional<std::uint32_t> gate = {};
  std::optional<std::uint32_t> patch = {};
};

/// By whom and why something is saved, and by what program; what is empty is not said, and without
/// a program it is the library. Every write carries it, with the time (utdata::HistoryOf).
struct Signature {
  std::string author = {};
  std::string reason = {};
  std::string program = {};
  std::string version = {};  ///< of the program
};

/// Moved, never copied. Handles to its parts (DataGroup, GateHandle) are good while it lives.
class UTDATA_API Inspection {
 public:
  /// An inspection file with the numbered companions beside it that belong to it (CheckCompanions);
  /// what is odd about others is among Warnings(). A companion opened by its own name comes alone,
  /// and can be saved as a new file only. Sub-channels that the file
  /// describes count from 1, whatever it calls them (CFCont::UpdateSubChannelList); what is saved
  /// keeps the file's own ids.
  [[nodiscard]] static Inspection Open(const std::string& path, const OpenOptions& options = {});
  /// An inspection without groups, to be filled and saved at `path`.
  [[nodiscard]] static Inspection New(const std::string& path);

  Inspection(Inspection&&) noexcept;
  Inspection& operator=(Inspection&&) noexcept;
  Inspection(const Inspection&) = delete;
  Inspection& operator=(const Inspection&) = delete;
  /// Closes the files. What was changed and not saved is gone.
  ~Inspection();

  [[nodiscard]] const std::string& Path() const;
  /// The files that it was read from and written to, the named one first.
  [[nodiscard]] std::vector<std::string> Files() const;
  /// What is odd about the inspection but did not keep it from being opened, a line each.
  [[nodiscard]] const std::vector<std::string>& Warnings() const;
  /// The damaged samples that were found so far, by data group and place. Samples are checked when
  /// they are first read: through a DataGroup, Samples or a gate, or when a save copies them.
  [[nodiscard]] std::vector<DamagedSamples> Damage() const;

  // ---- data groups

  /// The data groups in the order of the file, those that were added at the end.
  [[nodiscard]] const std::vector<DataGroup>& Data() const;
  /// The one data group that a query matches. Throws when it matches none or several.
  [[nodiscard]] DataGroup Data(const DataQuery& query) const;
  /// The multi-channel masters that the file set has made, in its order.
  [[nodiscard]] std::vector<DataGroup> Masters() const;
  /// The data groups of one channel by sub-channel, then by the display order of their gates.
  [[nodiscard]] std::vector<DataGroup> DataOfChannel(std::uint32_t channel) const;
  /// Those of each channel that the file set holds data groups of, by the channel's id.
  [[nodiscard]] std::map<std::uint32_t, std::vector<DataGroup>> DataByChannel() const;
  /// The data group or master of an item; none for an item of another inspection.
  [[nodiscard]] std::optional<DataGroup> DataOf(const CIData* item) const;

  /// Adds a data group with samples in memory.
  /// @param record  its layout and scaling; its ids must not be there already
  /// @param samples taken over; as many bytes as the record lays out
  DataGroup AddData(const CGDataTypeFDD& record, std::vector<std::byte> samples);
  /// The same with samples that stay where they are and must live as long as the inspection.
  DataGroup AddData(const CGDataTypeFDD& record, std::span<std::byte> samples);

  // ---- groups of other types: those of a new inspection are added to the lists of Descriptor(),
  // which owns them, before it is saved

  /// How many groups of each type there are, as (key, quantity) in the order of the file
  /// descriptor's lists; of types that a file set holds, how many items it has.
  [[nodiscard]] std::vector<std::pair<std::string, std::size_t>> CountGroups() const;

  /// A gate of a channel. Throws when there is none.
  [[nodiscard]] class GateHandle Gate(std::uint32_t channel, std::uint32_t gate) const;

  // ---- saving: what was changed and added since the inspection was opened or last saved. Changed
  // general information is written by SaveAs only; the other two throw.

  /// Whether there is anything to save.
  [[nodiscard]] bool IsModified() const;
  /// Writes the changes into the next numbered companion, which joins Files(). Throws when a
  /// companion is missing or was not read. @return its path
  std::string SaveCompanion(const Signature& signature = {});
  /// Writes the changes at the end of the last of Files(). Throws when a companion of this
  /// inspection is missing or was not read. @return its path
  std::string SaveAppended(const Signature& signature = {});
  /// Writes everything, changes included, as a new file; this inspection stays as it is.
  /// @param replace an existing file; else it stays and the save fails
  void SaveAs(const std::string& path, bool replace = false, const Signature& signature = {});

  // ---- the given classes underneath, owned by the inspection

  [[nodiscard]] CFSet& FileSet() const;
  [[nodiscard]] CSpec& Specimen() const;
  [[nodiscard]] CVolumeSet& VolumeSet() const;
  /// What was loaded: the group lists and open files.
  [[nodiscard]] CFContTypeFileDescr& Descriptor() const;
  /// The document that library objects know.
  [[nodiscard]] IGDataSupplier& Supplier() const;

 private:
  explicit Inspection(std::unique_ptr<InspectionState> state);

  std::unique_ptr<InspectionState> m_state;
};

/// A gate of an inspection, by the names of its settings. Good while the inspection lives.
class UTDATA_API GateHandle {
 public:
  explicit GateHandle(CIGate& gate) : m_gate(&gate) {}
  [[nodiscard]] double Start() const;   ///< s
  [[nodiscard]] double Width() const;   ///< s
  [[nodiscard]] double Level() const;   ///< percent of full scale, of positive half waves
  void SetStart(double seconds) const;  ///< throws when not finite
  void SetWidth(double seconds) const;  ///< throws when not above 0
  void SetLevel(double percent) const;  ///< of both half waves; throws outside 0 to 1000
  [[nodiscard]] CIGate& Item() const { return *m_gate; }

 private:
  CIGate* m_gate;
};

/// Fails when a new inspection file cannot stand at `path`: a file of that name unless `replace` is
/// true, a companion of another inspection that would stand beside it, or a folder that is missing.
/// Cheap, for a check before long work.
UTDATA_API void CheckNewInspection(const std::string& path, bool replace);

}  // namespace utdata
