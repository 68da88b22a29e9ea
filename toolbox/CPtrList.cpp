#include "toolbox/CPtrList.h"

#include "toolbox/QvPlatform.h"

CPtrList::CPtrList(int blockSize) : blockSize(blockSize > 0 ? blockSize : 1) {}

CPtrList::~CPtrList() { RemoveAll(); }

bool CPtrList::AddTail(void* p) {
  if (count == capacity) {
    if (capacity > 0x7fffffff - blockSize) return false;
    const int grown = capacity + blockSize;
    void** larger = QvNewArray<void*>(grown);
    if (!larger) return false;
    for (int i = 0; i < count; ++i) larger[i] = items[i];
    delete[] items;
    items = larger;
    capacity = grown;
  }
  items[count++] = p;
  return true;
}

bool CPtrList::Remove(void* p) {
  for (int i = 0; i < count; ++i) {
    if (items[i] != p) continue;
    for (int j = i + 1; j < count; ++j) items[j - 1] = items[j];
    --count;
    return true;
  }
  return false;
}

void* CPtrList::GetAt(int index) const {
  if (index < 0 || index >= count) return nullptr;
  return items[index];
}

void CPtrList::RemoveAll() {
  delete[] items;
  items = nullptr;
  count = 0;
  capacity = 0;
}
