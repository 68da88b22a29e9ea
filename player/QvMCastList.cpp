#include "player/QvMCastList.h"

#include "toolbox/QvPlatform.h"

QvMCastList::QvMCastList() : head(nullptr), found(nullptr), iter(nullptr) {}

QvMCastList::~QvMCastList() { DelAll(); }

char QvMCastList::Reg(QvMCast* cast, std::int16_t id) {
  QvMCastID* last = nullptr;
  for (QvMCastID* entry = head; entry != nullptr; entry = entry->next) {
    if (entry->cast == cast && entry->id == id) return 1;
    last = entry;
  }
  QvMCastID* entry = QvNew<QvMCastID>();
  if (entry == nullptr) return 0;
  entry->cast = cast;
  entry->id = id;
  entry->prev = last;
  entry->next = nullptr;
  if (last == nullptr) {
    head = entry;
  } else {
    last->next = entry;
  }
  return 1;
}

char QvMCastList::Del(QvMCast* cast, std::int16_t id) {
  QvMCastID* entry = localSearch(cast, id);
  if (entry == nullptr) return 0;
  if (entry->prev != nullptr) {
    entry->prev->next = entry->next;
  } else {
    head = entry->next;
  }
  if (entry->next != nullptr) entry->next->prev = entry->prev;
  // A walk standing on the removed entry goes on with the one after it.
  if (iter == entry) iter = entry->next;
  getEntry = nullptr;
  delete entry;
  found = head;
  return 1;
}

void QvMCastList::DelAll() {
  QvMCastID* entry = head;
  while (entry != nullptr) {
    QvMCastID* next = entry->next;
    delete entry;
    entry = next;
  }
  head = nullptr;
  // Nothing is left to point at: a walk in progress ends.
  found = nullptr;
  iter = nullptr;
  getEntry = nullptr;
}

char QvMCastList::Get(std::int16_t index, QvMCast** cast, std::int16_t* id) {
  if (index < 0) return 0;
  QvMCastID* entry = head;
  std::int16_t i = 0;
  if (getEntry != nullptr && getIndex <= index) {
    entry = getEntry;
    i = getIndex;
  }
  for (; entry != nullptr && i < index; ++i) entry = entry->next;
  if (entry == nullptr) return 0;
  // A walk by successive indices reads the next entry soon: ask for it now.
  if (entry->next != nullptr) __builtin_prefetch(entry->next);
  getEntry = entry;
  getIndex = index;
  if (cast != nullptr) *cast = entry->cast;
  if (id != nullptr) *id = entry->id;
  return 1;
}

char QvMCastList::GetFirst(QvMCast** cast, std::int16_t* id) {
  iter = head;
  return GetNext(cast, id);
}

char QvMCastList::GetNext(QvMCast** cast, std::int16_t* id) {
  if (iter == nullptr) return 0;
  if (cast != nullptr) *cast = iter->cast;
  if (id != nullptr) *id = iter->id;
  iter = iter->next;
  return 1;
}

QvMCastID* QvMCastList::localSearch(QvMCast* cast, std::int16_t id) {
  found = nullptr;
  for (QvMCastID* entry = head; entry != nullptr; entry = entry->next) {
    if (entry->cast == cast && entry->id == id) {
      found = entry;
      break;
    }
  }
  return found;
}
