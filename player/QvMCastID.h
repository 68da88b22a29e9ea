/// \file QvMCastID.h
/// \brief QvMCastID, one entry of a QvMCastList.
#pragma once

#include <cstdint>

class QvMCast;

/// One reference to a cast member, an entry of a QvMCastList: the cast store
/// and the cast id within it, linked to its neighbours. The list that holds
/// the entry owns it; hosts read entries through QvMCastList::Get() and
/// never see this record.
struct QvMCastID {
  QvMCast* cast = nullptr;    ///< The member's cast store; not owned.
  std::int16_t id = 0;        ///< The cast id within that store.
  QvMCastID* prev = nullptr;  ///< The previous entry; null for the first.
  QvMCastID* next = nullptr;  ///< The next entry; null for the last.
};
