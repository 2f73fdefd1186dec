#include "sasl/Choice.h"

#include <algorithm>
#include <iterator>

#include "core/ServerWords.h"
#include "core/Text.h"
#include "sasl/BearerMechanism.h"
#include "sasl/CramMd5Mechanism.h"
#include "sasl/LoginMechanism.h"
#include "sasl/PlainMechanism.h"
#include "sasl/ScramMechanism.h"

namespace quillon {
namespace {

enum class Secret { kPassword, kToken };

struct KnownMechanism {
  std::string_view name;
  Secret secret;
  bool tellsSecret;
  bool bindsChannel;
  std::unique_ptr<Mechanism> (*make)(const LoginContext& context, bool serverBinds);
};

template <class Made>
std::unique_ptr<Mechanism> MakeSimple(const LoginContext& context, bool) {
  return std::make_unique<Made>(context);
}

template <BearerForm kForm>
std::unique_ptr<Mechanism> MakeBearer(const LoginContext& context, bool) {
  return std::make_unique<BearerMechanism>(kForm, context);
}

template <HashAlgorithm kHash, bool kBinds>
std::unique_ptr<Mechanism> MakeScram(const LoginContext& context, bool serverBinds) {
  auto binding = ScramBinding::kNotUsed;
  if (kBinds) {
    binding = ScramBinding::kUsed;
  } else if (!context.connection.binding.type.empty() && !serverBinds) {
    binding = ScramBinding::kServerHasNone;
  }
  return std::make_unique<ScramMechanism>(kHash, binding, context);
}

// The strongest first.
constexpr KnownMechanism kKnown[] = {
    {"OAUTHBEARER", Secret::kToken, true, false, MakeBearer<BearerForm::kOAuthBearer>},
    {"XOAUTH2", Secret::kToken, true, false, MakeBearer<BearerForm::kXOAuth2>},
    {"SCRAM-SHA-256-PLUS", Secret::kPassword, false, true, MakeScram<HashAlgorithm::kSha256, true>},
    {"SCRAM-SHA-1-PLUS", Secret::kPassword, false, true, MakeScram<HashAlgorithm::kSha1, true>},
    {"SCRAM-SHA-256", Secret::kPassword, false, false, MakeScram<HashAlgorithm::kSha256, false>},
    {"SCRAM-SHA-1", Secret::kPassword, false, false, MakeScram<HashAlgorithm::kSha1, false>},
    {"CRAM-MD5", Secret::kPassword, false, false, MakeSimple<CramMd5Mechanism>},
    {"PLAIN", Secret::kPassword, true, false, MakeSimple<PlainMechanism>},
    {"LOGIN", Secret::kPassword, true, false, MakeSimple<LoginMechanism>},
};

// Logins that POP3 has beside those of AUTH (RFC 1939, 7).
constexpr std::string_view kPopLogins[] = {"APOP", "USER"};

bool Holds(const std::vector<std::string>& names, std::string_view name) {
  return std::any_of(names.begin(), names.end(),
                     [&](const std::string& one) { return EqualsIgnoreCase(one, name); });
}

bool OffersBinding(const std::vector<std::string>& offered) {
  return std::any_of(offered.begin(), offered.end(),
                     [](const std::string& one) { return UpperAscii(one).ends_with("-PLUS"); });
}

// Why this one cannot be used, as the end of a sentence that begins with its name; empty when it
// can.
std::string_view Objection(const KnownMechanism& known, bool plainTextLogin,
                           const LoginContext& context) {
  const Credentials& credentials = context.credentials;
  const bool hasSecret = known.secret == Secret::kToken ? !credentials.accessToken.empty()
                                                        : !credentials.password.empty();
  if (!hasSecret) {
    return known.secret == Secret::kToken ? "needs an access token" : "needs a password";
  }
  if (credentials.loginName.empty()) return "needs a login name";
  if (known.bindsChannel && context.connection.binding.type.empty()) {
    return "needs a channel binding, which this connection does not give";
  }
  if (known.tellsSecret && !context.connection.encrypted && !plainTextLogin) {
    return "needs an encrypted connection, or PlainTextLogin";
  }
  return {};
}

const KnownMechanism* FindKnown(std::string_view name) {
  const auto* const found =
      std::find_if(std::begin(kKnown), std::end(kKnown),
                   [&](const KnownMechanism& known) { return EqualsIgnoreCase(known.name, name); });
  return found == std::end(kKnown) ? nullptr : found;
}

bool IsName(std::string_view name) {
  return FindKnown(name) != nullptr ||
         std::find(std::begin(kPopLogins), std::end(kPopLogins), name) != std::end(kPopLogins);
}

std::string OfferText(const std::vector<std::string>& offered) {
  if (offered.empty()) return "The server offers no login method.";
  return "The server offers " + ServerWords(Join(offered, " ")) + ".";
}

void AddSentence(std::string& text, std::string_view name, std::string_view rest) {
  text.append(" ").append(name).append(" ").append(rest).append(".");
}

}  // namespace

std::optional<std::vector<std::string>> ReadMechanismNames(std::string_view text) {
  constexpr std::string_view kSeparators = " \t,";
  std::vector<std::string> names;
  for (auto at = text.find_first_not_of(kSeparators); at != std::string_view::npos;) {
    const auto end = std::min(text.find_first_of(kSeparators, at), text.size());
    names.push_back(UpperAscii(text.substr(at, end - at)));
    if (!IsName(names.back())) return std::nullopt;
    at = text.find_first_not_of(kSeparators, end);
  }
  return names;
}

LoginChoice ChooseMechanism(const std::vector<std::string>& offered, const LoginRules& rules,
                            const LoginContext& context) {
  const bool automatic = rules.wanted.empty();
  std::vector<std::string> names = rules.wanted;
  if (automatic) {
    for (const auto& known : kKnown) names.emplace_back(known.name);
  }
  LoginChoice choice;
  choice.reason = OfferText(offered);
  for (const std::string& name : names) {
    const KnownMechanism* const known = FindKnown(name);
    if (known == nullptr) {
      AddSentence(choice.reason, ServerWords(name), "is not known here");
    } else if (!Holds(offered, name)) {
      // An automatic choice looks at what is offered, so the rest needs no words.
      if (!automatic) AddSentence(choice.reason, known->name, "is not offered");
    } else if (const auto objection = Objection(*known, rules.plainTextLogin, context);
               !objection.empty()) {
      AddSentence(choice.reason, known->name, objection);
    } else {
      return {known->make(context, OffersBinding(offered)), {}};
    }
  }
  return choice;
}

}  // namespace quillon
