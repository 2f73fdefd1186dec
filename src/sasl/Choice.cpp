#include "sasl/Choice.h"

#include <algorithm>
#include <iterator>

#include "core/ServerWords.h"
#include "core/Text.h"
#include "sasl/BearerMechanism.h"
#include "sasl/CramMd5Mechanism.h"
#include "sasl/GssapiMechanism.h"
#include "sasl/LoginMechanism.h"
#include "sasl/NtlmMechanism.h"
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
  std::optional<SystemPackage> package = {};  // that the system has to have
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

// In the order of an automatic choice: the strongest first. What the system does comes behind what
// is known to work with the name and password as they are, since its names are other ones and a
// domain may have forbidden it.
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
    {"GSSAPI", Secret::kPassword, false, false, MakeSimple<GssapiMechanism>,
     SystemPackage::kNegotiate},
    {"NTLM", Secret::kPassword, false, false, MakeSimple<NtlmMechanism>, SystemPackage::kNtlm},
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

// Why the system cannot do it, as the end of a sentence that begins with its name; empty when it
// can. Without name and password it is the account of this process that logs in, which has to be
// asked for by name. So has a login without encryption, which whoever is in between could pass on
// to any other service of the domain.
std::string_view SystemObjection(SystemPackage package, const LoginRules& rules,
                                 const LoginContext& context) {
  const Credentials& credentials = context.credentials;
  if (context.system == nullptr || !context.system->Knows(package)) {
    return "is not known to this system";
  }
  if (rules.wanted.empty() && !context.connection.encrypted) {
    return "needs an encrypted connection, or Authentication";
  }
  const bool ownAccount = credentials.loginName.empty() && credentials.password.empty();
  if (rules.wanted.empty() && ownAccount) return "needs a login name, or Authentication";
  if (ownAccount) return {};
  if (credentials.loginName.empty()) return "needs a login name";
  return credentials.password.empty() ? "needs a password" : "";
}

// The same for any mechanism.
std::string_view Objection(const KnownMechanism& known, const LoginRules& rules,
                           const LoginContext& context) {
  const Credentials& credentials = context.credentials;
  if (known.package) return SystemObjection(*known.package, rules, context);
  const bool hasSecret = known.secret == Secret::kToken ? !credentials.accessToken.empty()
                                                        : !credentials.password.empty();
  if (!hasSecret) {
    return known.secret == Secret::kToken ? "needs an access token" : "needs a password";
  }
  if (credentials.loginName.empty()) return "needs a login name";
  if (known.bindsChannel && context.connection.binding.type.empty()) {
    return "needs a channel binding, which this connection does not give";
  }
  if (known.tellsSecret && !context.connection.encrypted && !rules.plainTextLogin) {
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

bool NamesSystemLogin(const std::vector<std::string>& names) {
  return std::any_of(names.begin(), names.end(), [](const std::string& name) {
    const auto* const known = FindKnown(name);
    return known != nullptr && known->package;
  });
}

LoginChoice ChooseMechanism(const std::vector<std::string>& offered, const LoginRules& rules,
                            const LoginContext& context) {
  const bool automatic = rules.wanted.empty();
  std::vector<std::string> names = rules.wanted;
  if (automatic) {
    for (const auto& known : kKnown) {
      if (!known.package || !rules.avoidSystem) names.emplace_back(known.name);
    }
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
    } else if (const auto objection = Objection(*known, rules, context); !objection.empty()) {
      AddSentence(choice.reason, known->name, objection);
    } else {
      return {known->make(context, OffersBinding(offered)), {}};
    }
  }
  return choice;
}

}  // namespace quillon
