/// \file CPtrList.h
/// \brief CPtrList, a growing list of untyped pointers.
#pragma once

/// A list of untyped pointers that grows in blocks of a fixed number of
/// entries. The list owns its storage, never the objects the pointers name.
class CPtrList {
 public:
  /// An empty list.
  ///
  /// \param blockSize Number of entries the storage grows by; values below 1
  ///        give 1.
  explicit CPtrList(int blockSize = 10);
  CPtrList(const CPtrList&) = delete;
  CPtrList& operator=(const CPtrList&) = delete;
  /// Frees the storage; the pointed-to objects are left alone.
  virtual ~CPtrList();

  /// \return The number of entries.
  int GetCount() const { return count; }
  /// \return The number of entries the storage grows by.
  int GetBlockSize() const { return blockSize; }
  /// \return true when the list has no entry.
  bool IsEmpty() const { return count == 0; }
  /// Appends a pointer (duplicates and null are allowed).
  ///
  /// \param p The pointer; not owned.
  /// \return true on success; false when the storage cannot grow (memory
  ///         short; one allocation attempt each time a block is added), the
  ///         list then unchanged.
  bool AddTail(void* p);
  /// Removes the first entry equal to a pointer; later entries move up.
  ///
  /// \param p The pointer to look for.
  /// \return true when an entry was removed; false when there is none.
  bool Remove(void* p);
  /// \param index Position, counted from 0.
  /// \return The entry at `index`; null when `index` is not below
  ///         GetCount() or is negative.
  void* GetAt(int index) const;
  /// Removes every entry and frees the storage.
  void RemoveAll();

 private:
  void** items = nullptr;
  int count = 0;
  int capacity = 0;
  int blockSize;
};
