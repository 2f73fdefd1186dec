// The records of Visual Basic, with the texts that they own.
#pragma once

#include <windows.h>
#include <cstddef>
#include <new>
#include <oleauto.h>
#include <string>
#include <string_view>

#include "platform/win32/MapiRecords.h"
#include "ports/CodePage.h"
#include "ports/SimpleMapi.h"

namespace quillon {

// A counted string of ANSI bytes.
class AnsiBstr {
 public:
  AnsiBstr() = default;
  explicit AnsiBstr(std::string_view bytes);
  AnsiBstr(const AnsiBstr&) = delete;
  AnsiBstr& operator=(const AnsiBstr&) = delete;
  ~AnsiBstr() { SysFreeString(text_); }

  BSTR* Place() noexcept { return &text_; }
  std::string_view Bytes() const noexcept;

 private:
  BSTR text_ = nullptr;
};

// Lays a record out, takes it apart, and lets go of its texts.
void Lay(mapi_record::BasicRecipient& record, const MapiRecipient& recipient, const CodePage& page);
void Lay(mapi_record::BasicFile& record, const MapiFile& file, const CodePage& page);
void Lay(mapi_record::BasicMessage& record, const MapiMessage& message, const CodePage& page);
MapiRecipient Taken(const mapi_record::BasicRecipient& record, const CodePage& page);
MapiFile Taken(const mapi_record::BasicFile& record, const CodePage& page);
MapiMessage Taken(const mapi_record::BasicMessage& record, const CodePage& page);
void Release(mapi_record::BasicRecipient& record) noexcept;
void Release(mapi_record::BasicFile& record) noexcept;
void Release(mapi_record::BasicMessage& record) noexcept;

// One record, which the library may fill.
template <class Record>
class BasicRecord {
 public:
  BasicRecord() = default;
  BasicRecord(const BasicRecord&) = delete;
  BasicRecord& operator=(const BasicRecord&) = delete;
  ~BasicRecord() { Release(record_); }

  Record* Get() noexcept { return &record_; }

 private:
  Record record_;
};

// An array of records, from index 0 on, never quite empty, as the library wants it.
template <class Record>
class BasicArray {
 public:
  explicit BasicArray(std::size_t count) {
    if (FAILED(SafeArrayAllocDescriptor(1, &array_))) throw std::bad_alloc();
    array_->cbElements = sizeof(Record);
    array_->rgsabound[0] = {static_cast<ULONG>(count == 0 ? 1 : count), 0};
    if (FAILED(SafeArrayAllocData(array_))) {
      SafeArrayDestroyDescriptor(array_);
      throw std::bad_alloc();
    }
  }
  BasicArray(const BasicArray&) = delete;
  BasicArray& operator=(const BasicArray&) = delete;
  ~BasicArray() {
    for (ULONG i = 0; i < array_->rgsabound[0].cElements; ++i) Release(At(i));
    SafeArrayDestroy(array_);
  }

  SAFEARRAY** Place() noexcept { return &array_; }
  ULONG Size() const noexcept { return array_->rgsabound[0].cElements; }
  Record& At(std::size_t index) noexcept { return static_cast<Record*>(array_->pvData)[index]; }

 private:
  SAFEARRAY* array_ = nullptr;
};

}  // namespace quillon
