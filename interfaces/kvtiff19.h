// The file-format layer: inspection files as trees of groups and items, and the families of group
// descriptors.
//
// A file is read-only in memory once it is open: groups and items of what was committed never
// change under their handles. Writing gathers new top groups beside them and file_Commit makes
// those visible in one step, or not at all. Nothing written is ever rewritten. A file handle and
// the groups under it may be used by one thread at a time; different file handles are independent.
//
// Every function that returns int returns 0 (status_Ok) or one of the statuses below and never
// throws; lack of memory is status_TooLarge. file_LastError says in words what went wrong last. It
// and the other functions that give a text or a list may let std::bad_alloc pass.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "export.h"
#include "kvtiff19_types.h"

namespace SCFile {

enum Status : int {
  status_Ok = 0,
  status_BadArgument,     ///< null or unknown handle, index, key or type; a call out of order
  status_NotFound,        ///< no such file
  status_Exists,          ///< the name is taken
  status_AccessDenied,    ///< permission, or a read-only medium
  status_NotAFile,        ///< a directory, a device
  status_DiskFull,        ///< no room for what was written
  status_InputOutput,     ///< the operating system reported an error
  status_NotInspection,   ///< not an inspection file, or an empty one
  status_NewerVersion,    ///< written in a version of the format that this reader does not know
  status_Damaged,         ///< a checksum or a structural rule does not hold
  status_Locked,          ///< another writer has the file
  status_MovedOn,         ///< the file was changed by another writer since it was opened
  status_ReadOnly,        ///< the file was opened for reading only
  status_BadText,         ///< a text holds something that is not a character
  status_BufferTooSmall,  ///< the caller's buffer does not hold the value
  status_TooLarge,        ///< a limit of the format (depth, name, count, size), or more than the
                          ///< machine's memory
  status_Stopped,         ///< the caller's progress function asked to stop
  status_InTheWay,        ///< what stands at the name with ".part" is not an unfinished file
  status_NotDurable       ///< all is written and stands under its name, but the name may not
                          ///< outlive a power cut: its directory could not be synced
};

/// A few English words for a status.
[[nodiscard]] UTDATA_API const char* file_StatusText(int status) noexcept;

/// What went wrong in the last call of this thread that failed: the file, what failed and why, in
/// one line of UTF-8.
[[nodiscard]] UTDATA_API std::string file_LastError();
/// For a layer above: notes why a call of its own failed, "PATH: WHY", for file_LastError. Returns
/// `status`.
UTDATA_API int file_Fail(int status, const std::wstring& path, std::string_view why) noexcept;

/// The same of a failure without a file. @param what a line of UTF-8
UTDATA_API int file_Fail(int status, const char* what) noexcept;

/// Value types of items.
enum ValueType : std::uint8_t {
  value_Int8 = 2,
  value_UInt8 = 3,
  value_Int16 = 4,
  value_UInt16 = 5,
  value_Int32 = 6,
  value_UInt32 = 7,
  value_Int64 = 8,
  value_UInt64 = 9,
  value_Float = 10,  ///< 32-bit
  value_Double = 11,
  value_Text = 12,  ///< wide text; counts are wide characters with the terminator
  value_Block = 13  ///< a large value outside the metadata, page-aligned; counts are bytes
};

/// Kinds of items.
enum ItemKind : std::uint32_t { kind_Group = 0, kind_Value = 1 };

/// Called by CFCont once per process, and needed by nothing else. This layer calls nobody back: all
/// callbacks must be null, else status_BadArgument.
UTDATA_API int file_Init(LockCallback lock,
                         LockCallback unlock,
                         AllocCallback alloc,
                         FreeCallback free,
                         ErrorCallback error,
                         ProgressCallback progress);

/// Opens an existing file for reading and, where the file allows it, later writing: the first write
/// opens the same file once more. Reads and checks all metadata; sample blocks are not touched.
/// `file` is set only on success and is closed with file_Close.
UTDATA_API int file_Open(const wchar_t* path, FileHandle* file);
/// As file_Open, but never for writing: a write answers status_ReadOnly.
UTDATA_API int file_OpenReadOnly(const wchar_t* path, FileHandle* file);

/// A new empty file; status_Exists when the name is taken, now or when the first commit comes. The
/// file is written beside its name (with ".part" added) and takes the name with its first commit. A
/// second creation of the same name before then answers status_Locked. An unfinished file that a
/// killed writer left is removed; anything else at the name with ".part", a link too, stays as it
/// is and answers status_InTheWay.
UTDATA_API int file_Create(const wchar_t* path, FileHandle* file);
/// As file_Create, but an existing file of that name is replaced, in one step, by the first commit;
/// until then it is untouched. The new file is as open to others as the one it replaces.
UTDATA_API int file_CreateEx(const wchar_t* path, FileHandle* file);

/// Makes everything written since the last commit part of the file: data first, then the commit
/// record, each on the medium before the next, so that a crash leaves the file with all of it or
/// none. Fails without changing the file when any write since the last commit failed; what was
/// gathered is then dropped. Nothing to do is a success. Groups made before the commit stay
/// readable. status_NotDurable: the commit holds.
UTDATA_API int file_Commit(FileHandle file);

/// Drops everything written since the last commit and gives the writer's lock up; the groups made
/// since then are empty from now on. Of a new file its creation is dropped too: unless it is
/// written to again, nothing is left of it once it is closed. Nothing to drop is a success.
UTDATA_API int file_Discard(FileHandle file);

/// Commits what was not committed yet, then closes the file, its groups and the views mapped from
/// it; a file that was created exists from then on, though nothing was written to it. The answer is
/// that of file_Commit: after any other than status_Ok and status_NotDurable the file is as it was
/// committed last, and one that never was leaves nothing behind. Who must not commit calls
/// file_Discard first. Null is status_BadArgument.
UTDATA_API int file_Close(FileHandle file);

/// Text coding of the file: 1 (Unicode) is the only one, and the default. Others answer
/// status_BadArgument.
UTDATA_API int file_SetCharacterFormat(FileHandle file, int format);

/// Number of items of a file (its top groups) or a group; 0 for a null handle. Uncommitted groups
/// count in their parent from their creation on.
[[nodiscard]] UTDATA_API std::uint32_t file_ItemNbrGet(const Node* parent);

/// One item of a file or group. Out pointers may be null.
/// @param type   the item's code (of a child group: its type code)
/// @param kind   kind_Group or kind_Value
/// @param count  elements of a value (text: wide characters with terminator; block: bytes, at most
///   2^32-1); items of a child group
/// @param key    what file_GroupOpen takes
/// @param name   receives a child group's name, cut to length - 1 characters and terminated; empty
///   for a value
/// @param length wide characters that `name` holds
UTDATA_API int file_ItemInfo(const Node* parent,
                             std::uint32_t index,
                             std::uint32_t* type,
                             std::uint32_t* kind,
                             std::uint32_t* count,
                             std::uint32_t* key,
                             wchar_t* name,
                             std::uint32_t length);

/// The value type of an item, 0 for a child group.
UTDATA_API int file_ItemValueType(const Node* parent,
                                  std::uint32_t index,
                                  std::uint32_t* valueType);

/// Opens a child group; the same child gives the same handle. A group of a known type whose items
/// do not fit that type is refused with status_Damaged.
UTDATA_API int file_GroupOpen(Node* parent, GroupHandle* group, std::uint32_t key);

/// Appends a new child group to a file or to an uncommitted group. The first one after opening or a
/// commit takes the writer's lock: status_Locked, status_MovedOn or status_ReadOnly when that
/// cannot be. status_MovedOn also when the path leads to another file by now.
/// @param typeCode 16-bit group type code
/// @param name     null or empty for no name
UTDATA_API int file_GroupCreate(Node* parent,
                                GroupHandle* group,
                                std::uint32_t typeCode,
                                const wchar_t* name);
/// Names an uncommitted group. @param length wide characters with the terminator
UTDATA_API int file_GroupNameSet(GroupHandle group, const wchar_t* name, std::uint32_t length);

/// Reads a value of a committed group. @param count in: elements that `buffer` holds; out: elements
/// read (text: with terminator). The type must be the item's own; blocks are read with
/// file_BlockRead.
UTDATA_API int file_IndexValueRead(const Node* group,
                                   std::uint32_t index,
                                   std::uint32_t valueType,
                                   void* buffer,
                                   std::uint32_t* count);

/// Appends a value to an uncommitted group. @param count elements; of a text with its terminator
UTDATA_API int file_ItemValueWrite(GroupHandle group,
                                   std::uint32_t itemCode,
                                   std::uint32_t valueType,
                                   std::uint32_t count,
                                   const void* data);

/// Appends a block of any size to an uncommitted group. The bytes go to the disk at once, in chunks
/// with a checksum each.
/// @param data read during the call only; whole chunks of zeros become holes
UTDATA_API int file_BlockWrite(GroupHandle group,
                               std::uint32_t itemCode,
                               std::uint64_t size,
                               const void* data);

/// Where a block lies: bytes from the start of its file, and its size in bytes.
UTDATA_API int file_BlockInfo(const Node* group,
                              std::uint32_t index,
                              std::uint64_t* offset,
                              std::uint64_t* size);
/// Reads part of a block into memory, without verifying checksums of the parts that are not read
/// whole; chunks that are read whole are verified.
UTDATA_API int file_BlockRead(const Node* group,
                              std::uint32_t index,
                              std::uint64_t from,
                              std::uint64_t size,
                              void* buffer);
/// A private copy-on-write view of a whole block, valid until file_BlockUnmap or file_Close. Costs
/// the same whatever the size; nothing is verified. The same block may be mapped several times.
UTDATA_API int file_BlockMap(Node* group, std::uint32_t index, void** data);
/// Ends a view. @param data as file_BlockMap gave it
UTDATA_API int file_BlockUnmap(FileHandle file, void* data);
/// The size in bytes of a view that file_BlockMap gave, of any file. False, and `size` is left
/// alone, for an address at which no view starts; it is not read. Any thread.
[[nodiscard]] UTDATA_API bool file_ViewSize(const void* data, std::uint64_t* size) noexcept;

/// The checksums of a block's chunks, to hold the block's bytes against wherever they are by now.
struct BlockChunks {
  std::uint64_t size = 0;   ///< bytes of the block
  std::uint64_t chunk = 0;  ///< bytes under one checksum, a power of two; the last may have fewer
  std::vector<std::uint64_t> checksums;
};
/// Reads the checksums of a block's chunks. Those of a damaged table are read too: a chunk that
/// matches its checksum is whole, whatever became of the others.
UTDATA_API int file_BlockChunks(const Node* group, std::uint32_t index, BlockChunks* chunks);
/// Whether one chunk of a block is as it was written. Any thread.
/// @param block the first byte of the block, mapped or in memory
[[nodiscard]] UTDATA_API bool file_IsChunkWhole(const BlockChunks& chunks,
                                                std::uint64_t index,
                                                const void* block) noexcept;

/// The file that a group belongs to; a file itself for a file. Null for null.
[[nodiscard]] UTDATA_API FileHandle file_OfGroup(Node* group);
/// The path that the file was opened or created with.
[[nodiscard]] UTDATA_API const wchar_t* file_Path(const Node* file);
/// The number of commits that the file holds.
[[nodiscard]] UTDATA_API std::uint64_t file_CommitNumber(const Node* file);
/// Where the committed bytes of the file end. What stands behind is the tail of a writer that is at
/// work, or was interrupted; readers ignore it.
[[nodiscard]] UTDATA_API std::uint64_t file_CommittedSize(const Node* file);

/// Sixteen random bytes that a file gets when it is made. Copies of a file keep them.
using FileIdentity = std::array<std::uint8_t, 16>;

/// What a file was at one time: its identity, and the commit that counted.
struct FileState {
  FileIdentity identity{};
  std::uint64_t commitNumber = 0;
  std::uint64_t commitChecksum = 0;  ///< of the commit record
  friend bool operator==(const FileState&, const FileState&) = default;
};

/// What a file says of itself for as long as it exists: which one it is, and of a companion, the
/// numbered file of later changes beside another file, what it belongs to.
struct FileOrigin {
  FileIdentity identity{};
  std::uint32_t number = 0;  ///< of a companion, 1 to 99; 0: no companion, and zeros from here on
  FileIdentity base{};       ///< the file that it stands beside
  FileState predecessor;     ///< the companion before it, or the base, as it was written on

  [[nodiscard]] bool IsCompanion() const { return number != 0; }
  friend bool operator==(const FileOrigin&, const FileOrigin&) = default;
};

/// REQUIRES: a file.
[[nodiscard]] UTDATA_API FileOrigin file_Origin(const Node* file);
/// As it was committed last through this handle, or loaded. REQUIRES: a file.
[[nodiscard]] UTDATA_API FileState file_State(const Node* file);
/// Whether a file as it was opened is the one that was once in `state`: that state counts, or what
/// was committed by then is where it was.
[[nodiscard]] UTDATA_API bool file_Contains(const Node* file, const FileState& state);
/// The origin and, where `state` is not null, the state of the file at `path`, without reading its
/// groups.
UTDATA_API int file_ReadOrigin(const wchar_t* path, FileOrigin* origin, FileState* state);
/// Makes a new file a companion; status_BadArgument once it was committed.
UTDATA_API int file_MakeCompanion(FileHandle file,
                                  std::uint32_t number,
                                  const FileIdentity& base,
                                  const FileState& predecessor);

/// What a write says of itself in its top group: items of these codes, behind the groups.
enum SignatureItem : std::uint32_t {
  sign_When = 1,  ///< value_Int64: microseconds since the start of 1970, UTC
  sign_Program,   ///< value_Text, as those that follow
  sign_Version,
  sign_Author,
  sign_Reason
};

/// "when", "program", ...; empty for another code.
[[nodiscard]] UTDATA_API const char* file_SignatureItemName(std::uint32_t itemCode) noexcept;

/// By what, by whom and why a file is written; what is empty is not said, and without a program it
/// is this library.
struct Signature {
  std::wstring program;
  std::wstring version;
  std::wstring author;
  std::wstring reason;
};

/// While it stands, what this thread writes is signed with it, also by a layer above that takes no
/// signature. Scopes end in the reverse of the order in which they were made, on the same thread.
class UTDATA_API SigningScope {
 public:
  explicit SigningScope(Signature signature);
  SigningScope(const SigningScope&) = delete;
  SigningScope& operator=(const SigningScope&) = delete;
  ~SigningScope();

 private:
  Signature m_signature;
  const Signature* m_before;
};

/// What was found about a write.
struct WriteSignature {
  std::optional<std::int64_t> when;  ///< as sign_When; any number at all
  Signature by;
};

/// Appends the items of the signature that stands to an uncommitted top group, with the time.
UTDATA_API int file_Sign(GroupHandle top);
/// What a committed top group says of its write: of each code the first item of the right type.
UTDATA_API int file_ReadSignature(const Node* top, WriteSignature* signature);

/// Receives how far file_Verify has read the sample blocks: bytes done and in all. Returns false to
/// stop.
using VerifyProgress = bool (*)(void* context, std::uint64_t done, std::uint64_t total);

/// Checks every byte of an inspection file: what file_Open checks, every known group's items
/// against its type, and the checksums of all sample blocks.
/// @param problem receives one line per problem found, null if not wanted
/// @return status_Ok when all is well, status_Stopped, else the status of the first problem
UTDATA_API int file_Verify(const wchar_t* path,
                           std::string* problem,
                           VerifyProgress progress = nullptr,
                           void* context = nullptr);

/// What file_Rescue found, each a line of UTF-8.
struct RescueFindings {
  std::vector<std::string> mended;  ///< damage that cost nothing
  std::vector<std::string>
      unchecked;                  ///< what is taken, though no checksum is left to say it is whole
  std::vector<std::string> lost;  ///< what the file held, and the new one does not
};

/// Writes what is whole of a damaged inspection file as a new one: the top groups that match the
/// checksum they are named with, in their order, with their blocks. A companion stays the companion
/// that it is (FileOrigin) unless its header is lost; any other file gets an identity of its own.
/// One wrong byte of the header or of a small group is mended. A group that nothing names any more
/// is taken when its structure is right, and said to be unchecked. A modification whose group is
/// lost is left out, since it would be read as a group of its own. Samples that are damaged are
/// left out cell by cell: their data group is then stored with an offset for each cell. Other
/// blocks hold zeros where they are damaged, and are left out where nothing of them is whole.
/// status_Damaged, and no new file, when nothing is left.
/// @param replace an existing file at `to`
UTDATA_API int file_Rescue(const wchar_t* from,
                           const wchar_t* to,
                           bool replace,
                           RescueFindings* findings);

}  // namespace SCFile

#include "kvtiff19_families.h"
