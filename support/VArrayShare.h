// Shared ownership of the plain new[] arrays that an object keeps in pointer fields and shares
// with its member-wise copies (the mesh and the model description).
//
// An object keeps one VArrayShare beside its pointer fields. An array that the object made or was
// given since it was last copied is its own: it is not in the holder, and releasing it frees it.
// When the object is copied it first puts every array of its fields into its holder (hold); the
// copy then takes the holder along, and with it a reference to each array. From then on an array
// is freed when the last holder lets go of it, so copies may be rebuilt, emptied and destroyed in
// any order. Code that replaces an array of such an object releases the old one through the
// holder and never deletes it itself.
#pragma once

#include <memory>
#include <unordered_map>

namespace VCppLib {

class VArrayShare {
 public:
  // Keeps p (made with new T[]) alive for this holder; null and arrays already held are ignored.
  template <typename T>
  void hold(T* p) {
    if (p == nullptr || held.count(p) != 0) return;
    held.emplace(p, std::shared_ptr<void>(p, [](void* q) { delete[] static_cast<T*>(q); }));
  }

  // Lets go of p and sets it to null. A held array is freed when no other holder keeps it; an
  // array that is not held is this object's alone and is freed at once.
  template <typename T>
  void release(T*& p) {
    if (p == nullptr) return;
    auto it = held.find(p);
    if (it == held.end())
      delete[] p;
    else
      held.erase(it);
    p = nullptr;
  }

  // True when another holder keeps p as well: writing into it would change that holder's data.
  bool isShared(const void* p) const {
    auto it = held.find(p);
    return it != held.end() && it->second.use_count() > 1;
  }

  // Lets go of every held array (each is freed when this was its last holder).
  void clear() { held.clear(); }

 private:
  std::unordered_map<const void*, std::shared_ptr<void>> held;
};

}  // namespace VCppLib
