#include "toolbox/MDependable.h"

MDependable::MDependable() = default;

MDependable::~MDependable() = default;

void* MDependable::GetDependencySpace() { return &dependents; }

void MDependable::Changed(int what, void* data) {
  // Indexing anew on each step keeps this safe when a dependent removes
  // itself while being told.
  for (int i = 0; i < dependents.GetCount(); ++i) {
    auto* d = static_cast<MDependable*>(dependents.GetAt(i));
    if (d) d->DoUpdate(what, this, data, nullptr);
  }
}

void MDependable::DoUpdate(int /*what*/, MDependable* /*sender*/, void* /*data*/, void* /*extra*/) {
}

void MDependable::SetMark(int value) { mark = value; }

int MDependable::IsMarked() { return mark; }

bool MDependable::AddDependent(MDependable* dependent) {
  if (!dependent) return false;
  for (int i = 0; i < dependents.GetCount(); ++i) {
    if (dependents.GetAt(i) == dependent) return true;
  }
  return dependents.AddTail(dependent);
}

bool MDependable::RemoveDependent(MDependable* dependent) {
  return dependent && dependents.Remove(dependent);
}
