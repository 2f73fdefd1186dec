#include "codec/CharacterSetName.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "core/Text.h"

namespace quillon {

namespace {

struct NameRow {
  std::string_view name;  // upper case, without hyphens and the like
  int codePage;
};

using namespace code_page;

constexpr NameRow kNames[] = {
    {"UTF8", kUtf8},
    {"UNICODE11UTF8", kUtf8},
    {"USASCII", kAscii},
    {"ASCII", kAscii},
    {"ANSIX341968", kAscii},
    {"ISO646US", kAscii},
    {"ISOIR6", kAscii},
    {"CSASCII", kAscii},
    {"646", kAscii},
    {"LATIN1", kWindows1252},
    {"L1", kWindows1252},
    {"ISOIR100", kWindows1252},
    {"CSISOLATIN1", kWindows1252},
    {"ANSI", kWindows1252},
    {"LATIN2", 28592},
    {"L2", 28592},
    {"CSISOLATIN2", 28592},
    {"LATIN3", 28593},
    {"LATIN4", 28594},
    {"LATIN5", 1254},
    {"LATIN6", 28600},
    {"LATIN7", 28603},
    {"LATIN9", 28605},
    {"LATIN10", 28606},
    {"CYRILLIC", 28595},
    {"CSISOLATINCYRILLIC", 28595},
    {"ARABIC", 28596},
    {"GREEK", 28597},
    {"ELOT928", 28597},
    {"HEBREW", 28598},
    {"VISUAL", 28598},
    {"LOGICAL", 28598},
    {"ISO88598I", 28598},
    {"ISO88598E", 28598},
    {"TIS620", 874},
    {"KOI8R", 20866},
    {"KOI8", 20866},
    {"KOI", 20866},
    {"CSKOI8R", 20866},
    {"KOI8U", 21866},
    {"KOI8RU", 21866},
    {"MACINTOSH", 10000},
    {"MAC", 10000},
    {"GB2312", kGbk},
    {"GB231280", kGbk},
    {"CHINESE", kGbk},
    {"CSGB2312", kGbk},
    {"EUCCN", kGbk},
    {"CNGB", kGbk},
    {"GBK", kGbk},
    {"XGBK", kGbk},
    {"MS936", kGbk},
    {"GB18030", kGb18030},
    {"HZGB2312", 52936},
    {"BIG5", 950},
    {"BIGFIVE", 950},
    {"BIG5HKSCS", 950},
    {"BIG5ETEN", 950},
    {"CNBIG5", 950},
    {"CSBIG5", 950},
    {"XXBIG5", 950},
    {"SHIFTJIS", kShiftJis},
    {"SJIS", kShiftJis},
    {"XSJIS", kShiftJis},
    {"MSKANJI", kShiftJis},
    {"CSSHIFTJIS", kShiftJis},
    {"WINDOWS31J", kShiftJis},
    {"CSWINDOWS31J", kShiftJis},
    {"ISO2022JP", kIso2022Jp},
    {"ISO2022JP1", kIso2022Jp},
    {"ISO2022JP2", kIso2022Jp},
    {"ISO2022JP3", kIso2022Jp},
    {"ISO2022JPMS", kIso2022Jp},
    {"CSISO2022JP", kIso2022Jp},
    {"EUCJP", kEucJp},
    {"XEUCJP", kEucJp},
    {"XEUC", kEucJp},
    {"EUCJPMS", kEucJp},
    {"CSEUCPKDFMTJAPANESE", kEucJp},
    {"EUCKR", 949},
    {"CSEUCKR", 949},
    {"KSC56011987", 949},
    {"KSC5601", 949},
    {"KSX1001", 949},
    {"KOREAN", 949},
    {"UHC", 949},
    {"JOHAB", 1361},
    {"ISO2022KR", kIso2022Kr},
    {"CSISO2022KR", kIso2022Kr},
    {"UTF7", kUtf7},
    {"UNICODE11UTF7", kUtf7},
    {"UTF16", kUtf16Big},
    {"UTF16BE", kUtf16Big},
    {"UTF16LE", kUtf16Little},
};

// What no name is told apart by. A year may follow: "ISO_8859-1:1987".
std::string Bare(std::string_view name) {
  auto bare = UpperAscii(name.substr(0, name.find(':')));
  std::erase_if(bare, [](char c) { return c == '-' || c == '_' || c == ' ' || c == '.'; });
  return bare;
}

// The number behind a prefix; 0 when it is something else.
int NumberBehind(std::string_view name, std::string_view prefix) {
  if (!name.starts_with(prefix)) return 0;
  int number = 0;
  const char* const end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data() + prefix.size(), end, number);
  return error == std::errc() && stop == end && number > 0 ? number : 0;
}

int OfIso8859(int part) {
  switch (part) {
    case 1:
      return kWindows1252;
    case 9:
      return 1254;
    case 11:
      return 874;
    default:
      return part <= 16 ? 28590 + part : kUnknown;
  }
}

// The code pages of DOS and Windows alone: other numbers mean something else to other makers.
int OfNumber(int number) {
  constexpr int kNumbers[] = {437,  708,  720,  737,   775,   850,   852,   855,  857,  858,
                              860,  861,  862,  863,   864,   865,   866,   869,  874,  932,
                              936,  949,  950,  1250,  1251,  1252,  1253,  1254, 1255, 1256,
                              1257, 1258, 1361, 20866, 21866, 54936, 65000, 65001};
  return std::find(std::begin(kNumbers), std::end(kNumbers), number) != std::end(kNumbers)
             ? number
             : kUnknown;
}

}  // namespace

int CodePageOf(std::string_view name) {
  const auto bare = Bare(name);
  for (const auto* const prefix : {"ISO8859", "8859", "CSISO8859"}) {
    if (const int part = NumberBehind(bare, prefix); part != 0) return OfIso8859(part);
  }
  for (const auto* const prefix : {"WINDOWS", "CP", "XCP", "WIN", "MS", "IBM"}) {
    if (const int number = NumberBehind(bare, prefix); number != 0) return OfNumber(number);
  }
  const auto* const row = std::find_if(std::begin(kNames), std::end(kNames),
                                       [&](const NameRow& known) { return known.name == bare; });
  return row == std::end(kNames) ? kUnknown : row->codePage;
}

}  // namespace quillon
