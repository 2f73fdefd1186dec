#include "net/Certificate.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <iterator>

#include "core/Utf8.h"
#include "net/DerReader.h"

namespace quillon {

namespace {

using namespace std::string_view_literals;

// Object identifiers, as they stand behind their length.
constexpr auto kCommonName = "\x55\x04\x03"sv;
constexpr auto kOrganization = "\x55\x04\x0A"sv;
constexpr auto kSubjectAltName = "\x55\x1D\x11"sv;
constexpr auto kRsaKey = "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x01"sv;
constexpr auto kRsaPss = "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0A"sv;
constexpr auto kEcKey = "\x2A\x86\x48\xCE\x3D\x02\x01"sv;
constexpr auto kEd25519 = "\x2B\x65\x70"sv;
constexpr auto kEd448 = "\x2B\x65\x71"sv;

struct CurveRow {
  std::string_view id;
  int bits;
};

constexpr CurveRow kCurves[] = {
    {"\x2A\x86\x48\xCE\x3D\x03\x01\x01"sv, 192},  // prime192v1
    {"\x2B\x81\x04\x00\x21"sv, 224},              // secp224r1
    {"\x2A\x86\x48\xCE\x3D\x03\x01\x07"sv, 256},  // prime256v1
    {"\x2B\x81\x04\x00\x0A"sv, 256},              // secp256k1
    {"\x2B\x81\x04\x00\x22"sv, 384},              // secp384r1
    {"\x2B\x81\x04\x00\x23"sv, 521},              // secp521r1
};

struct DigestRow {
  std::string_view id;
  SignatureDigest digest;
};

// Signature algorithms with the digest in their name, and digests as RSA-PSS names them.
constexpr DigestRow kDigests[] = {
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x02"sv, SignatureDigest::Md5},     // MD2 with RSA
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x03"sv, SignatureDigest::Md5},     // MD4 with RSA
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x04"sv, SignatureDigest::Md5},     // MD5 with RSA
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x05"sv, SignatureDigest::Sha1},    // SHA-1 with RSA
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0B"sv, SignatureDigest::Sha256},  // SHA-256 with RSA
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0C"sv, SignatureDigest::Sha384},
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0D"sv, SignatureDigest::Sha512},
    {"\x2B\x0E\x03\x02\x1D"sv, SignatureDigest::Sha1},                // SHA-1 with RSA, OIW
    {"\x2A\x86\x48\xCE\x38\x04\x03"sv, SignatureDigest::Sha1},        // SHA-1 with DSA
    {"\x2A\x86\x48\xCE\x3D\x04\x01"sv, SignatureDigest::Sha1},        // SHA-1 with ECDSA
    {"\x2A\x86\x48\xCE\x3D\x04\x03\x02"sv, SignatureDigest::Sha256},  // SHA-256 with ECDSA
    {"\x2A\x86\x48\xCE\x3D\x04\x03\x03"sv, SignatureDigest::Sha384},
    {"\x2A\x86\x48\xCE\x3D\x04\x03\x04"sv, SignatureDigest::Sha512},
    {kEd25519, SignatureDigest::None},
    {kEd448, SignatureDigest::None},
    {"\x2B\x0E\x03\x02\x1A"sv, SignatureDigest::Sha1},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x01"sv, SignatureDigest::Sha256},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x02"sv, SignatureDigest::Sha384},
    {"\x60\x86\x48\x01\x65\x03\x04\x02\x03"sv, SignatureDigest::Sha512},
};

SignatureDigest DigestOf(std::string_view id) {
  const auto* const found = std::find_if(std::begin(kDigests), std::end(kDigests),
                                         [id](const auto& row) { return row.id == id; });
  return found != std::end(kDigests) ? found->digest : SignatureDigest::Unknown;
}

// A text of a name, whatever type it has there, fit for a sentence: control characters are blanks,
// and what is too long is cut.
std::string NameText(const DerElement& element) {
  constexpr unsigned kUtf8String = 0x0C;
  constexpr unsigned kBmpString = 0x1E;
  constexpr std::size_t kMaxText = 100;
  const auto bytes = element.content;
  std::string text;
  if (element.tag == kBmpString) {
    std::u16string units;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      units += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) << 8 |
                                     static_cast<unsigned char>(bytes[i + 1]));
    }
    text = Utf8FromUtf16(units);
  } else if (element.tag == kUtf8String) {
    text = bytes;
  } else {
    for (const char c : bytes) AppendUtf8(text, static_cast<unsigned char>(c));
  }
  std::string shown;
  for (std::string_view rest = text; !rest.empty();) {
    if (shown.size() >= kMaxText) return shown + "...";
    const auto character = TakeUtf8(rest);
    const bool control = character < 0x20 || (character >= 0x7F && character < 0xA0);
    const bool half = character >= 0xD800 && character < 0xE000;  // of a pair of UTF-16
    AppendUtf8(shown, control ? U' ' : half ? U'\uFFFD' : character);
  }
  return shown;
}

// The last common name, or organization, of a Name.
bool ReadName(std::string_view content, std::string& shown) {
  std::string organization;
  for (DerReader sets(content); !sets.AtEnd();) {
    DerElement set;
    if (!sets.Take(der::kSet, set)) return false;
    for (DerReader pairs(set.content); !pairs.AtEnd();) {
      DerElement pair;
      DerElement type;
      DerElement value;
      if (!pairs.Take(der::kSequence, pair)) return false;
      DerReader fields(pair.content);
      if (!fields.Take(der::kObjectId, type) || !fields.Take(value)) return false;
      if (type.content == kCommonName) shown = NameText(value);
      if (type.content == kOrganization) organization = NameText(value);
    }
  }
  if (shown.empty()) shown = organization;
  return true;
}

// Days since 1970 of a date of the Gregorian calendar.
std::int64_t DayNumber(int year, int month, int day) {
  // Years begin in March, so that the day that comes and goes is the last.
  const int shifted = month > 2 ? year : year - 1;
  const int era = shifted / 400;
  const int yearOfEra = shifted - era * 400;
  const int dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return static_cast<std::int64_t>(era) * 146097 + dayOfEra - 719468;
}

bool TakeNumber(std::string_view& digits, std::size_t count, int& number) {
  if (digits.size() < count) return false;
  number = 0;
  for (const char c : digits.substr(0, count)) {
    if (c < '0' || c > '9') return false;
    number = number * 10 + (c - '0');
  }
  digits.remove_prefix(count);
  return true;
}

// RFC 5280, section 4.1.2.5: with seconds, in UTC.
bool ReadTime(const DerElement& element, std::int64_t& seconds) {
  auto text = element.content;
  int year = 0;
  if (element.tag == der::kUtcTime) {
    if (!TakeNumber(text, 2, year)) return false;
    year += year < 50 ? 2000 : 1900;
  } else if (element.tag != der::kGeneralizedTime || !TakeNumber(text, 4, year)) {
    return false;
  }
  std::array<int, 5> parts{};  // month, day, hour, minute, second
  for (int& part : parts) {
    if (!TakeNumber(text, 2, part)) return false;
  }
  const auto [month, day, hour, minute, second] = parts;
  if (text != "Z" || month < 1 || month > 12 || day < 1 || day > 31) return false;
  if (hour > 23 || minute > 59 || second > 59) return false;
  seconds = ((DayNumber(year, month, day) * 24 + hour) * 60 + minute) * 60 + second;
  return true;
}

bool ReadValidity(std::string_view content, Certificate& certificate) {
  DerReader times(content);
  DerElement from;
  DerElement to;
  return times.Take(from) && times.Take(to) && times.AtEnd() &&
         ReadTime(from, certificate.notBefore) && ReadTime(to, certificate.notAfter);
}

// The content of a BIT STRING of whole bytes.
bool WholeBytes(const DerElement& bits, std::string_view& bytes) {
  if (bits.content.empty() || bits.content.front() != '\0') return false;
  bytes = bits.content.substr(1);
  return true;
}

bool ReadRsaBits(std::string_view key, int& bits) {
  DerElement sequence;
  DerElement modulus;
  DerReader outer(key);
  if (!outer.Take(der::kSequence, sequence)) return false;
  DerReader numbers(sequence.content);
  if (!numbers.Take(der::kInteger, modulus) || numbers.NextTag() != der::kInteger) return false;
  auto number = modulus.content;
  if (!number.empty() && number.front() == '\0') number.remove_prefix(1);
  if (number.empty() || number.size() > 8192) return false;
  bits = static_cast<int>(number.size() * 8) -
         std::countl_zero(static_cast<unsigned char>(number.front()));
  return true;
}

bool ReadKey(const DerElement& info, Certificate& certificate) {
  DerReader fields(info.content);
  DerElement algorithm;
  DerElement bits;
  DerElement id;
  std::string_view key;
  if (!fields.Take(der::kSequence, algorithm) || !fields.Take(der::kBitString, bits) ||
      !WholeBytes(bits, key)) {
    return false;
  }
  DerReader names(algorithm.content);
  if (!names.Take(der::kObjectId, id)) return false;
  certificate.publicKey = info.whole;
  if (id.content == kRsaKey || id.content == kRsaPss) {
    certificate.keyType = KeyType::Rsa;
    return ReadRsaBits(key, certificate.keyBits);
  }
  if (id.content == kEcKey) {
    certificate.keyType = KeyType::EllipticCurve;
    DerElement curve;
    if (!names.Take(der::kObjectId, curve)) return true;  // explicit parameters: unknown bits
    const auto* const found =
        std::find_if(std::begin(kCurves), std::end(kCurves),
                     [&](const auto& row) { return row.id == curve.content; });
    if (found != std::end(kCurves)) certificate.keyBits = found->bits;
  } else if (id.content == kEd25519 || id.content == kEd448) {
    certificate.keyType = KeyType::Edwards;
    certificate.keyBits = id.content == kEd25519 ? 256 : 456;
  }
  return true;
}

// RSA-PSS names its digest in its parameters, and means SHA-1 when it does not (RFC 4055, section
// 3.1).
SignatureDigest PssDigest(DerReader fields) {
  DerElement parameters;
  DerElement tagged;
  DerElement algorithm;
  DerElement id;
  if (!fields.Take(der::kSequence, parameters)) return SignatureDigest::Sha1;
  DerReader options(parameters.content);
  if (!options.Take(der::Constructed(0), tagged)) return SignatureDigest::Sha1;
  if (!DerReader(tagged.content).Take(der::kSequence, algorithm) ||
      !DerReader(algorithm.content).Take(der::kObjectId, id)) {
    return SignatureDigest::Unknown;
  }
  return DigestOf(id.content);
}

bool ReadSignatureAlgorithm(std::string_view content, SignatureDigest& digest) {
  DerReader fields(content);
  DerElement id;
  if (!fields.Take(der::kObjectId, id)) return false;
  digest = id.content == kRsaPss ? PssDigest(fields) : DigestOf(id.content);
  return true;
}

bool ReadAlternativeNames(std::string_view value, Certificate& certificate) {
  DerReader outer(value);
  DerElement names;
  if (!outer.Take(der::kSequence, names) || !outer.AtEnd()) return false;
  for (DerReader each(names.content); !each.AtEnd();) {
    DerElement name;
    if (!each.Take(name)) return false;
    if (name.tag == der::Context(2)) certificate.dnsNames.emplace_back(name.content);
    if (name.tag == der::Context(7)) certificate.addresses.emplace_back(name.content);
  }
  return true;
}

bool ReadExtensions(std::string_view content, Certificate& certificate) {
  DerReader outer(content);
  DerElement list;
  if (!outer.Take(der::kSequence, list) || !outer.AtEnd()) return false;
  bool named = false;
  for (DerReader each(list.content); !each.AtEnd();) {
    DerElement extension;
    DerElement id;
    DerElement value;
    if (!each.Take(der::kSequence, extension)) return false;
    DerReader fields(extension.content);
    if (!fields.Take(der::kObjectId, id) || !fields.Skip(der::kBoolean) ||
        !fields.Take(der::kOctetString, value) || !fields.AtEnd()) {
      return false;
    }
    if (id.content != kSubjectAltName) continue;
    // A second one would be read by others in the place of the first.
    if (named || !ReadAlternativeNames(value.content, certificate)) return false;
    named = true;
  }
  return true;
}

// RFC 5280, section 4.1: TBSCertificate.
bool ReadBody(std::string_view content, Certificate& certificate, std::string_view& algorithm) {
  DerReader fields(content);
  DerElement number;
  DerElement signature;
  DerElement issuer;
  DerElement validity;
  DerElement subject;
  DerElement key;
  DerElement extensions;
  const bool whole = fields.Skip(der::Constructed(0)) && fields.Take(der::kInteger, number) &&
                     fields.Take(der::kSequence, signature) &&
                     fields.Take(der::kSequence, issuer) && fields.Take(der::kSequence, validity) &&
                     fields.Take(der::kSequence, subject) && fields.Take(der::kSequence, key) &&
                     fields.Skip(der::Context(1)) && fields.Skip(der::Context(2)) &&
                     ReadName(issuer.content, certificate.issuer) &&
                     ReadName(subject.content, certificate.subject) &&
                     ReadValidity(validity.content, certificate) && ReadKey(key, certificate);
  if (!whole) return false;
  algorithm = signature.whole;
  if (fields.AtEnd()) return true;
  return fields.Take(der::Constructed(3), extensions) && fields.AtEnd() &&
         ReadExtensions(extensions.content, certificate);
}

}  // namespace

std::optional<Certificate> ReadCertificate(std::string_view encoded) {
  DerReader outer(encoded);
  DerElement whole;
  if (!outer.Take(der::kSequence, whole) || !outer.AtEnd()) return std::nullopt;
  DerReader parts(whole.content);
  DerElement body;
  DerElement algorithm;
  DerElement signature;
  if (!parts.Take(der::kSequence, body) || !parts.Take(der::kSequence, algorithm) ||
      !parts.Take(der::kBitString, signature) || !parts.AtEnd()) {
    return std::nullopt;
  }
  Certificate certificate;
  std::string_view signedAlgorithm;
  if (!ReadBody(body.content, certificate, signedAlgorithm) ||
      // What is signed and what is used must be the same (section 4.1.1.2).
      signedAlgorithm != algorithm.whole ||
      !ReadSignatureAlgorithm(algorithm.content, certificate.signatureDigest)) {
    return std::nullopt;
  }
  return certificate;
}

}  // namespace quillon
