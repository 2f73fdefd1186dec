// The records of Simple MAPI as Visual Basic programs have them: texts are BSTRs whose bytes are
// ANSI, arrays are SAFEARRAYs of records, and a message has no originator.
#pragma once

#include <windows.h>
#include <cstdint>
#include <memory>
#include <oleauto.h>
#include <string_view>
#include <vector>

#include "deskmapi/Records.h"

namespace vbamap32 {

struct VbFile {
  std::int32_t reserved;
  std::int32_t flags;
  std::int32_t position;
  BSTR path;
  BSTR name;
  BSTR type;
};

struct VbParty {
  std::int32_t reserved;
  std::int32_t kind;
  BSTR name;
  BSTR address;
  std::int32_t entryIdSize;
  BSTR entryId;
};

struct VbMail {
  std::int32_t reserved;
  BSTR subject;
  BSTR text;
  BSTR type;
  BSTR date;
  BSTR conversation;
  std::int32_t flags;
  std::int32_t recipientCount;
  std::int32_t fileCount;
};

static_assert(sizeof(VbFile) == 24 && sizeof(VbParty) == 24 && sizeof(VbMail) == 36);

using CFile = deskmapi::FileRecord<char>;
using CParty = deskmapi::PartyRecord<char>;
using CMail = deskmapi::MailRecord<char>;

// A record of C over the texts of Visual Basic's, and what it points to.
struct NativeMail {
  CMail mail{};
  std::vector<CParty> parties;
  std::vector<CFile> files;
};

// The first `count` records of an array; none when it has fewer, or is no array of such records.
template <class Record>
Record* ArrayOf(SAFEARRAY** array, std::int32_t count) {
  if (array == nullptr || *array == nullptr || SafeArrayGetDim(*array) != 1 || count < 0 ||
      SafeArrayGetElemsize(*array) != sizeof(Record) ||
      (*array)->rgsabound[0].cElements < static_cast<ULONG>(count)) {
    return nullptr;
  }
  return static_cast<Record*>((*array)->pvData);
}

// Null when the arrays do not hold what the message says.
std::unique_ptr<NativeMail> Native(const VbMail& mail, SAFEARRAY** parties, SAFEARRAY** files);

// The bytes up to the first NUL: a text of C. A null text is empty.
const char* Ansi(BSTR text);
// Replaces a text of Visual Basic's.
void Put(BSTR& text, const char* ansi);
void Put(VbParty& party, const CParty& native);
void Put(VbFile& file, const CFile& native);
void Put(VbMail& mail, const CMail& native);

}  // namespace vbamap32
