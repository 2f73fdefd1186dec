#include "automation/ComCall.h"

#include <windows.h>
#include <new>
#include <oleauto.h>
#include <string_view>

#include "core/ServerError.h"
#include "mail/BusyGate.h"
#include "platform/win32/Bstr.h"
#include "platform/win32/ComPtr.h"

namespace quillon {
namespace {

constexpr DWORD kPublicErrorBase = 0x80040000;

// Leaves the error object behind that says what went wrong. Without memory for it the number has to
// do.
HRESULT Report(const wchar_t* source, HRESULT number, std::string_view text) noexcept {
  try {
    ComPtr<ICreateErrorInfo> creator;
    if (FAILED(CreateErrorInfo(creator.Put()))) return number;
    creator->SetSource(Bstr(std::wstring_view(source)).Get());
    creator->SetDescription(Bstr(text).Get());
    if (const auto info = QueryFor<IErrorInfo>(creator.Get())) SetErrorInfo(0, info.Get());
  } catch (const std::bad_alloc&) {
    SetErrorInfo(0, nullptr);
  }
  return number;
}

}  // namespace

HRESULT TranslateCurrentException(const wchar_t* errorSource) noexcept {
  try {
    throw;
  } catch (const ServerError& error) {
    const DWORD number = kPublicErrorBase + static_cast<DWORD>(error.Code());
    return Report(errorSource, static_cast<HRESULT>(number), error.Text());
  } catch (const ConversionError& error) {
    const bool overflow = error.Why() == ConversionError::Reason::Overflow;
    return overflow ? Report(errorSource, DISP_E_OVERFLOW, "The value is out of range.")
                    : Report(errorSource, DISP_E_TYPEMISMATCH, "The value has the wrong type.");
  } catch (const MailSystemBusy&) {
    return RPC_E_SERVERCALL_RETRYLATER;
  } catch (const HresultError& error) {
    return error.Number();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const std::exception& error) {
    return Report(errorSource, E_UNEXPECTED, error.what());
  } catch (...) {
    return Report(errorSource, E_UNEXPECTED, "An unknown failure.");
  }
}

}  // namespace quillon
