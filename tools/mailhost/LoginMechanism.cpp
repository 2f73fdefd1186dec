#include "LoginMechanism.h"

namespace mailhost {

namespace {

constexpr MechanismRow kRows[] = {
    {"PLAIN", false, false, false, MakePlain},
    {"LOGIN", false, false, false, MakeLogin},
    {"CRAM-MD5", true, false, false, MakeCramMd5},
    {"SCRAM-SHA-1", true, false, false, MakeScramSha1},
    {"SCRAM-SHA-1-PLUS", true, false, true, MakeScramSha1Plus},
    {"SCRAM-SHA-256", true, false, false, MakeScramSha256},
    {"SCRAM-SHA-256-PLUS", true, false, true, MakeScramSha256Plus},
    {"XOAUTH2", false, true, false, MakeXOAuth2},
    {"OAUTHBEARER", false, true, false, MakeOAuthBearer},
};

}  // namespace

const MechanismRow* FindMechanism(std::string_view name) {
  for (const MechanismRow& row : kRows) {
    if (row.name == name) return &row;
  }
  return nullptr;
}

std::optional<std::string> PlainName(std::string_view written) {
  std::string plain;
  for (std::size_t i = 0; i < written.size(); ++i) {
    if (written[i] != '=') {
      plain += written[i];
    } else if (written.substr(i, 3) == "=2C" || written.substr(i, 3) == "=3D") {
      plain += written[i + 1] == '2' ? ',' : '=';
      i += 2;
    } else {
      return std::nullopt;
    }
  }
  return plain;
}

std::vector<std::string> OfferedMechanisms(const Service& service, const TlsSession* tls) {
  std::vector<std::string> offered;
  if (service.requiresTls && tls == nullptr) return offered;
  for (const std::string& name : service.mechanisms) {
    if (tls != nullptr || !FindMechanism(name)->binds) offered.push_back(name);
  }
  return offered;
}

}  // namespace mailhost
