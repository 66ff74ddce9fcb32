// The framework that the exported classes stand on: a root object class with run-time class records
// and diagnostics, an ordered list with stable positions, and the plain debug assertion.
//
// Objects and lists take no lock: an object may be used by one thread at a time unless its own
// class says more. The report functions may be called from any thread.
#pragma once

#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "export.h"

class CObject;
class CArchive;

/// What is known of a class at run time. One constant record per class; records are compared by
/// address.
struct CRuntimeClass {
  const char* className;       ///< name as written in the source
  std::size_t objectSize;      ///< bytes of one object
  CObject* (*createObject)();  ///< makes a default object on the heap, owned by the caller; null
                               ///< when the class offers none
  const CRuntimeClass* baseClass;  ///< record of the base class; null for CObject

  /// Whether this is `other`'s record or that of a class derived from it.
  [[nodiscard]] UTDATA_API bool IsDerivedFrom(const CRuntimeClass* other) const noexcept;
  /// A new default object owned by the caller, or null when the class cannot be created at run
  /// time.
  [[nodiscard]] UTDATA_API CObject* CreateObject() const;
};

/// Where `Dump` writes: a text that grows. Not shared between threads.
class UTDATA_API CDumpContext {
 public:
  CDumpContext& operator<<(std::wstring_view text);
  CDumpContext& operator<<(const char* text);  ///< UTF-8, null-terminated; null writes nothing
  [[nodiscard]] const std::wstring& Text() const noexcept { return m_text; }

 private:
  std::wstring m_text;
};

/// Root of every class that carries a run-time class record. The order of the virtual operations is
/// fixed: run-time class, destructor, serialisation, AssertValid, Dump.
class UTDATA_API CObject {
 public:
  static const CRuntimeClass classCObject;

  virtual const CRuntimeClass* GetRuntimeClass() const;
  virtual ~CObject();
  virtual void Serialize(CArchive& archive);  ///< does nothing, in every class of this library
  virtual void AssertValid()
      const;  ///< reports an assertion for every invariant that is broken; the root has none
  virtual void Dump(CDumpContext& context)
      const;  ///< writes the class and, in derived classes, the fields worth seeing

  /// Whether the object's class is `runtimeClass` or derives from it.
  [[nodiscard]] bool IsKindOf(const CRuntimeClass* runtimeClass) const;

 protected:
  CObject() = default;
  CObject(const CObject&) = default;
  CObject& operator=(const CObject&) = default;
};

/// The run-time class record of `Class`.
#define RUNTIME_CLASS(Class) (&Class::class##Class)

/// Inside a class derived from CObject: declares its run-time class record.
#define DECLARE_DYNAMIC(Class)             \
 public:                                   \
  static const CRuntimeClass class##Class; \
  const CRuntimeClass* GetRuntimeClass() const override;

/// In the class's source file: defines the record. DYNCREATE also lets the class be created through
/// it.
#define IMPLEMENT_RUNTIMECLASS(Class, Base, create)                                               \
  const CRuntimeClass Class::class##Class = {#Class, sizeof(Class), create, RUNTIME_CLASS(Base)}; \
  const CRuntimeClass* Class::GetRuntimeClass() const { return RUNTIME_CLASS(Class); }
#define IMPLEMENT_DYNAMIC(Class, Base) IMPLEMENT_RUNTIMECLASS(Class, Base, nullptr)
#define IMPLEMENT_DYNCREATE(Class, Base) \
  IMPLEMENT_RUNTIMECLASS(                \
      Class, Base, +[]() -> CObject* { return new Class; })

// -------------------------------------------------------------------------------------------------
// reports

namespace utdata {

enum class ReportKind {
  Assertion,  ///< a check failed; the program goes on
  Trace       ///< a debug message
};

struct Report {
  ReportKind kind;
  const char* file;        ///< source file of the check; empty for a trace
  unsigned line;           ///< line of the check; 0 for a trace
  std::wstring_view text;  ///< a message, possibly empty; valid during the call only
};

enum class ReportAnswer {
  Continue,
  Break  ///< stop in the debugger; without an attached debugger, or in a build without checks, the
         ///< program goes on
};

/// Receives reports; called by the thread that reports, without any lock, so that it may wait for
/// other threads that report: several threads may be in it at once. What is reported while a sink
/// runs, by that same thread, goes to the default receiver, and so does a report whose sink throws.
using ReportSink = std::function<ReportAnswer(const Report&)>;

/// Replaces the receiver of reports and returns the one before, once no other thread is in it
/// (without waiting when a sink calls this). An empty sink restores the default, which writes one
/// line to the standard error stream in checked builds (UTDATA_CHECKED) and nothing otherwise.
UTDATA_API ReportSink SetReportSink(ReportSink sink);

/// While one exists, reports of its thread go nowhere: those of a record that is being normalised
/// are for developers, not for hosts.
class UTDATA_API QuietReports {
 public:
  QuietReports() noexcept;
  QuietReports(const QuietReports&) = delete;
  QuietReports& operator=(const QuietReports&) = delete;
  ~QuietReports();
};

/// Raises a plain assertion report. Never throws, never stops the program.
UTDATA_API void ReportAssertion(const char* file,
                                unsigned line,
                                std::wstring_view text = {}) noexcept;

/// Sends a debug message to the receiver of reports.
UTDATA_API void DebugTrace(std::wstring_view message) noexcept;

/// Wide text from narrow text that is meant to be UTF-8: each byte that is not part of a character
/// becomes U+FFFD. Null gives an empty text.
[[nodiscard]] UTDATA_API std::wstring WideFromNarrow(const char* text);
/// UTF-8 of a wide text; what is not a character becomes U+FFFD.
[[nodiscard]] UTDATA_API std::string NarrowFromWide(std::wstring_view text);

}  // namespace utdata

/// The plain debug assertion: reports the place of a condition that does not hold, then goes on.
#define UTDATA_ASSERT(condition) \
  ((condition) ? static_cast<void>(0) : ::utdata::ReportAssertion(__FILE__, __LINE__))

// -------------------------------------------------------------------------------------------------
// list

/// A place in a CList; stays valid while other elements come and go. Null means "no place".
struct CListPosition;
using POSITION = CListPosition*;

/// Ordered, doubly linked list of values, usually pointers it does not own. Nodes are allocated in
/// blocks of `blockSize`; the blocks are kept for reuse until the list is destroyed or cleared.
/// Without memory an addition lets std::bad_alloc pass and changes nothing.
/// Copying a list is forbidden; moving is too, so that positions never change their list.
template <class Value>
class CList {
  struct Node {
    Node* next = nullptr;
    Node* previous = nullptr;
    Value value{};
  };

  template <bool IsConst>
  class Iterator {
   public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = Value;
    using difference_type = std::ptrdiff_t;
    using reference = std::conditional_t<IsConst, const Value&, Value&>;
    using pointer = std::conditional_t<IsConst, const Value*, Value*>;

    Iterator() = default;
    Iterator(const CList* list, Node* node) : m_list(list), m_node(node) {}
    reference operator*() const { return m_node->value; }
    pointer operator->() const { return &m_node->value; }
    Iterator& operator++() {
      m_node = m_node->next;
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++*this;
      return before;
    }
    Iterator& operator--() {
      m_node = m_node ? m_node->previous : m_list->m_tail;
      return *this;
    }
    Iterator operator--(int) {
      Iterator before = *this;
      --*this;
      return before;
    }
    friend bool operator==(const Iterator& a, const Iterator& b) { return a.m_node == b.m_node; }

   private:
    const CList* m_list = nullptr;
    Node* m_node = nullptr;
  };

 public:
  using value_type = Value;
  using iterator = Iterator<false>;
  using const_iterator = Iterator<true>;

  /// REQUIRES: blockSize > 0.
  explicit CList(std::ptrdiff_t blockSize = 10)
      : m_blockSize(blockSize > 0 ? static_cast<std::size_t>(blockSize) : 10) {}
  CList(const CList&) = delete;
  CList& operator=(const CList&) = delete;
  ~CList() { RemoveAll(); }

  [[nodiscard]] std::ptrdiff_t GetCount() const noexcept { return m_count; }
  [[nodiscard]] bool IsEmpty() const noexcept { return m_count == 0; }

  /// REQUIRES: the list is not empty.
  [[nodiscard]] Value& GetHead() { return m_head->value; }
  [[nodiscard]] const Value& GetHead() const { return m_head->value; }
  [[nodiscard]] Value& GetTail() { return m_tail->value; }
  [[nodiscard]] const Value& GetTail() const { return m_tail->value; }

  POSITION AddHead(Value value) { return Link(nullptr, m_head, std::move(value)); }
  POSITION AddTail(Value value) { return Link(m_tail, nullptr, std::move(value)); }
  /// Inserts beside `position`; a null position means before the head, or after the tail.
  POSITION InsertBefore(POSITION position, Value value) {
    return position ? Link(ToNode(position)->previous, ToNode(position), std::move(value))
                    : AddHead(std::move(value));
  }
  POSITION InsertAfter(POSITION position, Value value) {
    return position ? Link(ToNode(position), ToNode(position)->next, std::move(value))
                    : AddTail(std::move(value));
  }

  /// Lets the next `count` additions take no memory.
  void Reserve(std::ptrdiff_t count) {
    for (const Node* node = m_free; node && count > 0; node = node->next) --count;
    for (; count > 0; count -= static_cast<std::ptrdiff_t>(m_blockSize)) Grow();
  }

  /// Removes one element. REQUIRES: `position` is a place of this list.
  void RemoveAt(POSITION position) {
    Node* node = ToNode(position);
    (node->previous ? node->previous->next : m_head) = node->next;
    (node->next ? node->next->previous : m_tail) = node->previous;
    node->value = Value{};
    node->next = m_free;
    m_free = node;
    --m_count;
  }
  /// Removes the head and returns it. REQUIRES: the list is not empty.
  Value RemoveHead() {
    Value value = std::move(m_head->value);
    RemoveAt(ToPosition(m_head));
    return value;
  }
  /// Empties the list and gives its memory back. Elements that are pointers are not deleted.
  void RemoveAll() noexcept {
    m_head = m_tail = m_free = nullptr;
    m_count = 0;
    while (m_blocks) m_blocks = std::move(m_blocks->before);
  }

  [[nodiscard]] POSITION GetHeadPosition() const noexcept { return ToPosition(m_head); }
  [[nodiscard]] POSITION GetTailPosition() const noexcept { return ToPosition(m_tail); }
  /// The element at `position`, which moves on to the next (or previous) place. REQUIRES:
  /// `position` is not null.
  [[nodiscard]] Value& GetNext(POSITION& position) { return Step(position, &Node::next)->value; }
  [[nodiscard]] const Value& GetNext(POSITION& position) const {
    return Step(position, &Node::next)->value;
  }
  [[nodiscard]] Value& GetPrev(POSITION& position) {
    return Step(position, &Node::previous)->value;
  }
  [[nodiscard]] const Value& GetPrev(POSITION& position) const {
    return Step(position, &Node::previous)->value;
  }
  [[nodiscard]] Value& GetAt(POSITION position) { return ToNode(position)->value; }
  [[nodiscard]] const Value& GetAt(POSITION position) const { return ToNode(position)->value; }

  /// The place of the first element equal to `value`, searched from the head or from after
  /// `startAfter`; null when there is none.
  [[nodiscard]] POSITION Find(const Value& value, POSITION startAfter = nullptr) const {
    for (Node* node = startAfter ? ToNode(startAfter)->next : m_head; node; node = node->next)
      if (node->value == value) return ToPosition(node);
    return nullptr;
  }

  iterator begin() { return {this, m_head}; }
  iterator end() { return {this, nullptr}; }
  const_iterator begin() const { return {this, m_head}; }
  const_iterator end() const { return {this, nullptr}; }

 private:
  struct Block {
    std::unique_ptr<Node[]> nodes;
    std::unique_ptr<Block> before;
  };

  static Node* ToNode(POSITION position) { return reinterpret_cast<Node*>(position); }
  static POSITION ToPosition(Node* node) { return reinterpret_cast<POSITION>(node); }
  static Node* Step(POSITION& position, Node* Node::*direction) {
    Node* node = ToNode(position);
    position = ToPosition(node->*direction);
    return node;
  }

  POSITION Link(Node* previous, Node* next, Value value) {
    if (!m_free) Grow();
    Node* node = m_free;
    m_free = node->next;
    node->value = std::move(value);
    node->previous = previous;
    node->next = next;
    (previous ? previous->next : m_head) = node;
    (next ? next->previous : m_tail) = node;
    ++m_count;
    return ToPosition(node);
  }

  void Grow() {
    auto block = std::make_unique<Block>();
    block->nodes = std::make_unique<Node[]>(m_blockSize);
    for (std::size_t index = m_blockSize; index-- > 0;) {
      block->nodes[index].next = m_free;
      m_free = &block->nodes[index];
    }
    block->before = std::move(m_blocks);
    m_blocks = std::move(block);
  }

  Node* m_head = nullptr;
  Node* m_tail = nullptr;
  Node* m_free = nullptr;
  std::ptrdiff_t m_count = 0;
  std::size_t m_blockSize;
  std::unique_ptr<Block> m_blocks;
};
