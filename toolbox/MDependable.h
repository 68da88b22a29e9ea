#pragma once

#include "toolbox/CPtrList.h"

// An observable object: it keeps a list of dependents and tells them of
// changes.
class MDependable {
 public:
  MDependable();
  MDependable(const MDependable&) = delete;
  MDependable& operator=(const MDependable&) = delete;
  virtual ~MDependable();

  virtual void* GetDependencySpace();
  // Tells every dependent of a change (DoUpdate on each, this as the sender).
  virtual void Changed(int what, void* data);
  virtual void DoUpdate(int what, MDependable* sender, void* data, void* extra);
  virtual void SetMark(int mark);
  virtual int IsMarked();

  bool AddDependent(MDependable* dependent);
  bool RemoveDependent(MDependable* dependent);
  const CPtrList& Dependents() const { return dependents; }

 private:
  CPtrList dependents{10};
  int mark = 0;
};
