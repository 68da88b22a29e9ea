#pragma once

#include <cstdint>

#include "player/QvMCastID.h"

class QvMCast;

// An ordered list of references (cast store, cast id) to cast members. The
// list owns its entries, never the cast stores they name.
class QvMCastList {
 public:
  QvMCastList();
  QvMCastList(const QvMCastList&) = delete;
  QvMCastList& operator=(const QvMCastList&) = delete;
  virtual ~QvMCastList();

  // Appends the pair unless it is already there. 0 only when memory is short.
  char Reg(QvMCast* cast, std::int16_t id);
  // Removes the pair; 0 when it is not in the list.
  char Del(QvMCast* cast, std::int16_t id);
  // Removes every entry.
  void DelAll();
  // The entry at index (counted from 0); 0 and nothing stored when absent.
  char Get(std::int16_t index, QvMCast** cast, std::int16_t* id);
  // Walk with the list's one cursor.
  char GetFirst(QvMCast** cast, std::int16_t* id);
  char GetNext(QvMCast** cast, std::int16_t* id);

 protected:
  QvMCastID* localSearch(QvMCast* cast, std::int16_t id);

  QvMCastID* head;
  QvMCastID* found;
  QvMCastID* iter;

  // The entry Get gave last and its index (null: none), so that a walk by
  // successive indices steps on from there instead of from the head. Reset
  // whenever an entry is removed.
  QvMCastID* getEntry = nullptr;
  std::int16_t getIndex = 0;
};
