#include "MailParameters.h"

#include <algorithm>

#include "Text.h"

namespace mailhost {

namespace {

// A reply, or nothing when the value is good.
using CheckValue = std::string (*)(std::string_view value, const Service& service);

struct Parameter {
  std::string_view name;  // with its "="
  std::string_view
      capability;  // that it belongs to; empty: AUTH, which a list of mechanisms offers
  bool kept;
  CheckValue check;
};

const char* const kWrongValue = "501 the value of a parameter is wrong";

std::string AnyValue(std::string_view value, const Service& /*service*/) {
  return value.empty() ? kWrongValue : "";
}

std::string CheckSize(std::string_view value, const Service& service) {
  const auto size = ParseNumber(value);
  if (!size) return kWrongValue;
  const auto limit = SizeLimit(service);
  return limit && *size > *limit ? "552 the message is too large" : "";
}

std::string CheckBody(std::string_view value, const Service& /*service*/) {
  return EqualIgnoringCase(value, "7BIT") || EqualIgnoringCase(value, "8BITMIME") ? ""
                                                                                  : kWrongValue;
}

std::string CheckReturn(std::string_view value, const Service& /*service*/) {
  return EqualIgnoringCase(value, "FULL") || EqualIgnoringCase(value, "HDRS") ? "" : kWrongValue;
}

// RFC 3461 4.1: NEVER alone, or a list of the others.
std::string CheckNotify(std::string_view value, const Service& /*service*/) {
  if (EqualIgnoringCase(value, "NEVER")) return "";
  std::string list(value);
  std::replace(list.begin(), list.end(), ',', ' ');
  std::string_view rest = list;
  while (!rest.empty()) {
    const std::string word = ToUpper(TakeWord(rest));
    if (word != "SUCCESS" && word != "FAILURE" && word != "DELAY") return kWrongValue;
  }
  return value.empty() ? kWrongValue : "";
}

std::string CheckOriginal(std::string_view value, const Service& /*service*/) {
  const std::size_t end = value.find(';');
  return end != std::string_view::npos && end != 0 && end + 1 != value.size() ? "" : kWrongValue;
}

constexpr Parameter kMail[] = {
    {"SIZE=", "SIZE", false, CheckSize}, {"BODY=", "8BITMIME", false, CheckBody},
    {"RET=", "DSN", true, CheckReturn},  {"ENVID=", "DSN", true, AnyValue},
    {"AUTH=", "", true, AnyValue},
};
constexpr Parameter kRcpt[] = {
    {"NOTIFY=", "DSN", true, CheckNotify},
    {"ORCPT=", "DSN", true, CheckOriginal},
};

template <std::size_t kCount>
const Parameter* Find(const Parameter (&known)[kCount], std::string_view text,
                      const Service& service) {
  for (const Parameter& parameter : known) {
    if (!StartsIgnoringCase(text, parameter.name)) continue;
    const bool offered = parameter.capability.empty()
                             ? !service.mechanisms.empty()
                             : HasCapability(service, parameter.capability);
    return offered ? &parameter : nullptr;
  }
  return nullptr;
}

template <std::size_t kCount>
ReadParameters Read(const Parameter (&known)[kCount], const std::vector<std::string>& parameters,
                    const Service& service) {
  ReadParameters read;
  for (const std::string& text : parameters) {
    const Parameter* const found = Find(known, text, service);
    if (found == nullptr) return {"555 parameter not recognized"};
    const std::string_view value = std::string_view(text).substr(found->name.size());
    if (std::string refusal = found->check(value, service); !refusal.empty()) return {refusal};
    if (found->kept) read.kept.append(" ").append(text);
  }
  return read;
}

const std::string* FindCapability(const Service& service, std::string_view keyword) {
  for (const std::string& capability : service.smtpCapabilities) {
    std::string_view rest = capability;
    if (EqualIgnoringCase(TakeWord(rest), keyword)) return &capability;
  }
  return nullptr;
}

}  // namespace

bool HasCapability(const Service& service, std::string_view keyword) {
  return FindCapability(service, keyword) != nullptr;
}

std::optional<std::uint64_t> SizeLimit(const Service& service) {
  const std::string* const size = FindCapability(service, "SIZE");
  if (size == nullptr) return std::nullopt;
  std::string_view rest = *size;
  TakeWord(rest);
  // RFC 1870 4: 0 and no number at all are no limit.
  const auto limit = ParseNumber(rest);
  return limit && *limit != 0 ? limit : std::nullopt;
}

ReadParameters ReadMailParameters(const std::vector<std::string>& parameters,
                                  const Service& service) {
  return Read(kMail, parameters, service);
}

ReadParameters ReadRcptParameters(const std::vector<std::string>& parameters,
                                  const Service& service) {
  return Read(kRcpt, parameters, service);
}

}  // namespace mailhost
