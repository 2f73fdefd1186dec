// The arguments of one call, by the places of the member's parameters.
#pragma once

#include <vector>

#include "desk/win32/Values.h"

namespace desk {

class Arguments {
 public:
  // Puts what is given by position and by name into its place; `required` of the `count` parameters
  // must be there. `value` takes what a property is to become. Throws CallError.
  Arguments(const DISPPARAMS& given, std::size_t count, std::size_t required, bool put);

  bool Given(std::size_t place) const { return !SaysNothing(At(place)); }
  const VARIANT& At(std::size_t place) const { return values_[place].value; }
  const VARIANT& PutValue() const { return put_.value; }

  // A left-out one is the default.
  std::string Text(std::size_t place, std::string_view otherwise = {}) const;
  long Number(std::size_t place, long otherwise) const;
  bool Flag(std::size_t place, bool otherwise) const;

  std::size_t Count() const noexcept { return values_.size(); }

 private:
  struct Value {
    VARIANT value = {};
    UINT index = 0;  // in the caller's array
    bool given = false;
  };
  void Take(const DISPPARAMS& given, UINT index, Value& place);
  template <class Convert>
  auto At(std::size_t place, Convert convert) const;

  std::vector<Value> values_;
  Value put_;
};

}  // namespace desk
