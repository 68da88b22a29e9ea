#pragma once

// A list of pointers that grows in blocks of a given number of entries.
class CPtrList {
 public:
  explicit CPtrList(int blockSize = 10);
  CPtrList(const CPtrList&) = delete;
  CPtrList& operator=(const CPtrList&) = delete;
  virtual ~CPtrList();

  int GetCount() const { return count; }
  int GetBlockSize() const { return blockSize; }
  bool IsEmpty() const { return count == 0; }
  // Appends p; false when memory is short.
  bool AddTail(void* p);
  // Removes the first entry equal to p; false when there is none.
  bool Remove(void* p);
  void* GetAt(int index) const;
  void RemoveAll();

 private:
  void** items = nullptr;
  int count = 0;
  int capacity = 0;
  int blockSize;
};
