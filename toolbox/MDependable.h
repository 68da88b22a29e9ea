/// \file MDependable.h
/// \brief MDependable, an observable object with a list of dependents.
#pragma once

#include "toolbox/CPtrList.h"

/// An observable object: it keeps a list of dependents (other MDependable
/// objects, not owned) and tells them of changes through their DoUpdate().
/// Offered to hosts as a utility; the engine itself does not use it.
class MDependable {
 public:
  /// An object without dependents; the list grows in blocks of 10 entries.
  MDependable();
  MDependable(const MDependable&) = delete;
  MDependable& operator=(const MDependable&) = delete;
  /// Forgets the dependents (they are not told and not freed).
  virtual ~MDependable();

  /// \return The dependents' list (a CPtrList, owned by this object).
  virtual void* GetDependencySpace();
  /// Tells every dependent of a change by calling its DoUpdate(what, this,
  /// data, nullptr), in the order they were added. A dependent may remove
  /// itself while being told.
  ///
  /// \param what A code chosen by the caller.
  /// \param data Passed through unchanged; not owned.
  virtual void Changed(int what, void* data);
  /// Receives a change of an object this one depends on. Does nothing here;
  /// derived classes override it.
  ///
  /// \param what The code given to Changed().
  /// \param sender The object that changed.
  /// \param data The data given to Changed().
  /// \param extra Null when called by Changed().
  virtual void DoUpdate(int what, MDependable* sender, void* data, void* extra);
  /// Sets the object's mark, a value for the caller's own use.
  ///
  /// \param mark The new mark (0 after construction).
  virtual void SetMark(int mark);
  /// \return The mark set last with SetMark().
  virtual int IsMarked();

  /// Adds a dependent unless it is there already.
  ///
  /// \param dependent The object to tell of changes; not owned, and it must
  ///        be removed before it is destroyed.
  /// \return true when it is in the list afterwards; false for null or when
  ///         memory is short.
  bool AddDependent(MDependable* dependent);
  /// Removes a dependent.
  ///
  /// \param dependent The object to forget.
  /// \return true when it was in the list.
  bool RemoveDependent(MDependable* dependent);
  /// \return The list of dependents, read only.
  const CPtrList& Dependents() const { return dependents; }

 private:
  CPtrList dependents{10};
  int mark = 0;
};
