// A last-in-first-out stack of objects.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace quillon {

template <typename Object>
class clsStack {
 public:
  std::size_t Count() const noexcept { return objects_.size(); }
  void Push(Object object) { objects_.push_back(std::move(object)); }

  // Removes and returns the top object; there must be one.
  Object Pop() {
    Object top = std::move(objects_.back());
    objects_.pop_back();
    return top;
  }

  // There must be one.
  Object& TopOfStackObject() { return objects_.back(); }
  const Object& TopOfStackObject() const { return objects_.back(); }

  // Counted from the top, which is 0.
  Object& FromTop(std::size_t depth) { return objects_[objects_.size() - 1 - depth]; }

  void Clear() { objects_.clear(); }

 private:
  std::vector<Object> objects_;
};

}  // namespace quillon
