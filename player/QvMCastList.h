/// \file QvMCastList.h
/// \brief QvMCastList, an ordered list of references to cast members.
#pragma once

#include <cstdint>

#include "player/QvMCastID.h"

class QvMCast;

/// An ordered list of references to cast members, each the pair (cast store,
/// cast id). Entries stand in the order they were registered and no pair
/// appears twice. The list owns its entries, never the cast stores they
/// name, and never looks inside a cast store.
///
/// Every animation is such a list: its entries are the members that hold a
/// copy of it, kept up to date by the cast store when the animation is
/// registered on or removed from a member; hosts normally only read it. Every
/// layer of a QvMLayer keeps one for the members placed on it.
///
/// The list has one iteration cursor (GetFirst(), GetNext()); Get() by index
/// uses none, so walks by index may nest.
class QvMCastList {
 public:
  /// An empty list.
  QvMCastList();
  QvMCastList(const QvMCastList&) = delete;
  QvMCastList& operator=(const QvMCastList&) = delete;
  /// Frees every entry (DelAll()); the cast stores named are left alone.
  virtual ~QvMCastList();

  /// Appends a reference unless the same pair is there already.
  ///
  /// \param cast The cast store; not owned, may be any pointer (it is only
  ///        compared).
  /// \param id The cast id within that store.
  /// \return 1 when the pair is in the list afterwards (also when it was
  ///         there before); 0 only when the new entry cannot be allocated
  ///         (one attempt), the list then unchanged.
  char Reg(QvMCast* cast, std::int16_t id);
  /// Removes a reference. A GetFirst()/GetNext() walk standing on the removed
  /// entry goes on with the entry after it.
  ///
  /// \param cast The cast store.
  /// \param id The cast id.
  /// \return 1 when the pair was removed; 0 when it is not in the list.
  char Del(QvMCast* cast, std::int16_t id);
  /// Removes every entry; a walk in progress ends (GetNext() gives 0).
  void DelAll();
  /// Reads the entry at a position, without touching the cursor.
  ///
  /// \param index Position counted from 0 in registration order.
  /// \param cast Receives the cast store (may be null).
  /// \param id Receives the cast id (may be null).
  /// \return 1 when the entry exists; 0 when `index` is negative or not below
  ///         the number of entries, nothing stored.
  char Get(std::int16_t index, QvMCast** cast, std::int16_t* id);
  /// Starts a walk: reads the first entry and moves the cursor past it.
  ///
  /// \param cast Receives the cast store (may be null).
  /// \param id Receives the cast id (may be null).
  /// \return 1 when there was an entry; 0 for an empty list, nothing stored.
  char GetFirst(QvMCast** cast, std::int16_t* id);
  /// Goes on with a walk begun by GetFirst(): reads the entry at the cursor
  /// and moves the cursor past it.
  ///
  /// \param cast Receives the cast store (may be null).
  /// \param id Receives the cast id (may be null).
  /// \return 1 when there was an entry; 0 at the end of the list (and on
  ///         every later call until the next GetFirst()), nothing stored.
  char GetNext(QvMCast** cast, std::int16_t* id);

 protected:
  /// Finds an entry and remembers it in `found`.
  ///
  /// \param cast The cast store.
  /// \param id The cast id.
  /// \return The first entry with that pair; null when there is none.
  QvMCastID* localSearch(QvMCast* cast, std::int16_t id);

  /// First entry; null when the list is empty. Owned, with every entry.
  QvMCastID* head;
  /// Entry found by the last localSearch(); null when none.
  QvMCastID* found;
  /// Entry the next GetNext() reads; null at the end of a walk.
  QvMCastID* iter;

  /// The entry Get gave last (null: none), so that a walk by successive
  /// indices steps on from there instead of from the head. Reset whenever an
  /// entry is removed.
  QvMCastID* getEntry = nullptr;
  /// The index of getEntry.
  std::int16_t getIndex = 0;
};
