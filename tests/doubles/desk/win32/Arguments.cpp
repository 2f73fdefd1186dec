#include "desk/win32/Arguments.h"

#include <algorithm>

#include "desk/win32/CallErrors.h"

namespace desk {

Arguments::Arguments(const DISPPARAMS& given, std::size_t count, std::size_t required, bool put)
    : values_(count) {
  const UINT named = given.cNamedArgs;
  const bool hasPut = named > 0 && given.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
  if (named > given.cArgs || hasPut != put) throw CallError(DISP_E_BADPARAMCOUNT);
  const UINT positional = given.cArgs - named;
  if (positional > count) throw CallError(DISP_E_BADPARAMCOUNT);
  // Those by position stand in reverse order behind the named ones.
  for (UINT i = 0; i < positional; ++i) Take(given, given.cArgs - 1 - i, values_[i]);
  for (UINT i = 0; i < named; ++i) {
    const DISPID name = given.rgdispidNamedArgs[i];
    const bool value = put && name == DISPID_PROPERTYPUT;
    if (!value && (name < 0 || static_cast<std::size_t>(name) >= count)) {
      throw CallError(DISP_E_PARAMNOTFOUND, i);
    }
    Take(given, i, value ? put_ : values_[static_cast<std::size_t>(name)]);
  }
  const auto missing = [](const Value& value) { return SaysNothing(value.value); };
  if (std::any_of(values_.begin(), values_.begin() + static_cast<std::ptrdiff_t>(required),
                  missing)) {
    throw CallError(DISP_E_PARAMNOTOPTIONAL);
  }
}

void Arguments::Take(const DISPPARAMS& given, UINT index, Value& place) {
  if (place.given) throw CallError(DISP_E_PARAMNOTFOUND, index);
  place = {Dereferenced(given.rgvarg[index]), index, true};
}

template <class Convert>
auto Arguments::At(std::size_t place, Convert convert) const {
  try {
    return convert(values_[place].value);
  } catch (const CallError& e) {
    throw CallError(e.Number(), values_[place].index);
  }
}

std::string Arguments::Text(std::size_t place, std::string_view otherwise) const {
  return Given(place) ? At(place, TextOf) : std::string(otherwise);
}
long Arguments::Number(std::size_t place, long otherwise) const {
  return Given(place) ? At(place, NumberOf) : otherwise;
}
bool Arguments::Flag(std::size_t place, bool otherwise) const {
  return Given(place) ? At(place, FlagOf) : otherwise;
}

}  // namespace desk
