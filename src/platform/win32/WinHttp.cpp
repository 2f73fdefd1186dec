#include "platform/win32/WinHttp.h"

// clang-format off
// The second needs the first.
#include <windows.h>
#include <winhttp.h>
// clang-format on
#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include "platform/win32/WideText.h"

namespace quillon {
namespace {

// Names that the headers lack.
constexpr DWORD kAutomaticProxy = 4;  // WINHTTP_ACCESS_TYPE_AUTOMATIC_PROXY, Windows 8.1
constexpr DWORD kTls12 = 0x00000800;  // WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2
constexpr DWORD kTls13 = 0x00002000;  // WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_3

struct CloseInternet {
  void operator()(HINTERNET handle) const { ::WinHttpCloseHandle(handle); }
};
using InternetHandle = std::unique_ptr<std::remove_pointer_t<HINTERNET>, CloseInternet>;

struct FaultRow {
  DWORD number;
  const char* text;
};

constexpr const char* kUntrusted = "the server's certificate is not of an issuer that is trusted";
constexpr const char* kOutOfDate = "the server's certificate is not valid at this time";
constexpr const char* kOtherName = "the server's certificate is for another name";
constexpr const char* kRevoked = "the server's certificate has been revoked";
constexpr const char* kNotSecured =
    "the secure connection to the server could not be made, or its certificate is not trusted";
constexpr const char* kBadCertificate = "the server's certificate was refused";

constexpr FaultRow kErrors[] = {
    {ERROR_WINHTTP_TIMEOUT, "the server did not answer in time"},
    {ERROR_WINHTTP_NAME_NOT_RESOLVED, "the server's name is not known"},
    {ERROR_WINHTTP_CANNOT_CONNECT, "there is no connection to the server"},
    {ERROR_WINHTTP_CONNECTION_ERROR, "the connection to the server broke"},
    {ERROR_WINHTTP_INVALID_SERVER_RESPONSE, "the server does not answer as a web server does"},
    {ERROR_WINHTTP_HEADER_SIZE_OVERFLOW, "the server's answer is too long"},
    {ERROR_WINHTTP_INVALID_URL, "its address is not a web address"},
    {ERROR_WINHTTP_UNRECOGNIZED_SCHEME, "its address does not begin with https://"},
    {ERROR_WINHTTP_SECURE_INVALID_CA, kUntrusted},
    {ERROR_WINHTTP_SECURE_CERT_DATE_INVALID, kOutOfDate},
    {ERROR_WINHTTP_SECURE_CERT_CN_INVALID, kOtherName},
    {ERROR_WINHTTP_SECURE_CERT_REVOKED, kRevoked},
    {ERROR_WINHTTP_SECURE_INVALID_CERT, kBadCertificate},
    {ERROR_WINHTTP_SECURE_CERT_WRONG_USAGE, kBadCertificate},
    {ERROR_WINHTTP_SECURE_FAILURE, kNotSecured},
    {ERROR_WINHTTP_SECURE_CHANNEL_ERROR, kNotSecured},
};

constexpr FaultRow kCertificateFaults[] = {
    {WINHTTP_CALLBACK_STATUS_FLAG_INVALID_CA, kUntrusted},
    {WINHTTP_CALLBACK_STATUS_FLAG_CERT_DATE_INVALID, kOutOfDate},
    {WINHTTP_CALLBACK_STATUS_FLAG_CERT_CN_INVALID, kOtherName},
    {WINHTTP_CALLBACK_STATUS_FLAG_CERT_REVOKED, kRevoked},
    {WINHTTP_CALLBACK_STATUS_FLAG_INVALID_CERT, kBadCertificate},
    {WINHTTP_CALLBACK_STATUS_FLAG_CERT_WRONG_USAGE, kBadCertificate},
};

HttpsAnswer Failure(const std::string& text) {
  return {0, {}, text};
}

class Exchange {
 public:
  explicit Exchange(const HttpsForm& form)
      : form_(form), url_(WideFromUtf8(form.url)), deadline_(::GetTickCount64() + form.patience) {}

  HttpsAnswer Run() {
    if (!OpenRequest() || !Send()) return Failed();
    HttpsAnswer answer;
    DWORD status = 0;
    DWORD size = sizeof status;
    if (::WinHttpQueryHeaders(request_.get(), WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                              WINHTTP_HEADER_NAME_BY_INDEX, &status, &size,
                              WINHTTP_NO_HEADER_INDEX) == FALSE) {
      return Failed();
    }
    answer.status = static_cast<int>(status);
    for (;;) {
      std::array<char, 8192> block;
      DWORD count = 0;
      if (::WinHttpReadData(request_.get(), block.data(), block.size(), &count) == FALSE) {
        return Failed();
      }
      if (count == 0) return answer;
      answer.body.append(block.data(), count);
      if (answer.body.size() > kLargestHttpsBody) return Failure("the server's answer is too long");
      if (::GetTickCount64() > deadline_) return Failure("the server did not answer in time");
    }
  }

 private:
  // Each step has the whole patience; the sum is watched by whoever waits.
  bool OpenRequest() {
    URL_COMPONENTS parts{};
    parts.dwStructSize = sizeof parts;
    parts.dwSchemeLength = parts.dwHostNameLength = parts.dwUrlPathLength =
        parts.dwExtraInfoLength = static_cast<DWORD>(-1);
    if (::WinHttpCrackUrl(url_.c_str(), 0, 0, &parts) == FALSE) return false;
    if (parts.nScheme != INTERNET_SCHEME_HTTPS) {
      ::SetLastError(ERROR_WINHTTP_UNRECOGNIZED_SCHEME);
      return false;
    }
    const std::wstring host(parts.lpszHostName, parts.dwHostNameLength);
    std::wstring path(parts.lpszUrlPath, parts.dwUrlPathLength);
    path.append(parts.lpszExtraInfo, parts.dwExtraInfoLength);
    session_.reset(OpenSession());
    if (!session_) return false;
    const auto patience = static_cast<int>(form_.patience);
    ::WinHttpSetTimeouts(session_.get(), patience, patience, patience, patience);
    connection_.reset(::WinHttpConnect(session_.get(), host.c_str(), parts.nPort, 0));
    if (!connection_) return false;
    request_.reset(::WinHttpOpenRequest(connection_.get(), L"POST", path.c_str(), nullptr,
                                        WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
                                        WINHTTP_FLAG_SECURE));
    return request_ && Restrict();
  }

  static HINTERNET OpenSession() {
    for (const DWORD proxy : {kAutomaticProxy, DWORD{WINHTTP_ACCESS_TYPE_DEFAULT_PROXY}}) {
      auto* const session =
          ::WinHttpOpen(L"Quillon", proxy, WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0);
      if (session == nullptr) continue;
      for (DWORD protocols : {kTls12 | kTls13, kTls12}) {
        if (::WinHttpSetOption(session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols,
                               sizeof protocols) != FALSE) {
          return session;
        }
      }
      ::WinHttpCloseHandle(session);
    }
    return nullptr;
  }

  // The form holds secrets: it goes to this server alone, and nothing of the user's goes with it.
  bool Restrict() {
    DWORD off = WINHTTP_DISABLE_REDIRECTS | WINHTTP_DISABLE_COOKIES;
    DWORD logon = WINHTTP_AUTOLOGON_SECURITY_LEVEL_HIGH;
    auto context = reinterpret_cast<DWORD_PTR>(this);
    ::WinHttpSetStatusCallback(request_.get(), &OnStatus, WINHTTP_CALLBACK_FLAG_SECURE_FAILURE, 0);
    return Set(WINHTTP_OPTION_DISABLE_FEATURE, off) &&
           Set(WINHTTP_OPTION_AUTOLOGON_POLICY, logon) &&
           Set(WINHTTP_OPTION_CONTEXT_VALUE, context);
  }

  template <typename Value>
  bool Set(DWORD option, Value& value) {
    return ::WinHttpSetOption(request_.get(), option, &value, sizeof value) != FALSE;
  }

  bool Send() {
    constexpr const wchar_t* kFields =
        L"Content-Type: application/x-www-form-urlencoded\r\nAccept: application/json\r\n";
    const auto size = static_cast<DWORD>(form_.body.size());
    std::string body = form_.body;  // the interface wants it writable
    return ::WinHttpSendRequest(request_.get(), kFields, static_cast<DWORD>(-1), body.data(), size,
                                size, reinterpret_cast<DWORD_PTR>(this)) != FALSE &&
           ::WinHttpReceiveResponse(request_.get(), nullptr) != FALSE;
  }

  static void CALLBACK OnStatus(HINTERNET, DWORD_PTR context, DWORD status, LPVOID information,
                                DWORD) {
    if (status != WINHTTP_CALLBACK_STATUS_SECURE_FAILURE || context == 0) return;
    reinterpret_cast<Exchange*>(context)->certificateFaults_ = *static_cast<DWORD*>(information);
  }

  HttpsAnswer Failed() const {
    const DWORD error = ::GetLastError();
    for (const auto& row : kCertificateFaults) {
      if ((certificateFaults_ & row.number) != 0) return Failure(row.text);
    }
    for (const auto& row : kErrors) {
      if (row.number == error) return Failure(row.text);
    }
    return Failure("the request failed (" + std::to_string(error) + ")");
  }

  const HttpsForm& form_;
  std::wstring url_;
  ULONGLONG deadline_;
  DWORD certificateFaults_ = 0;
  InternetHandle session_;
  InternetHandle connection_;
  InternetHandle request_;
};

}  // namespace

HttpsAnswer PostWithWinHttp(const HttpsForm& form) {
  return Exchange(form).Run();
}

}  // namespace quillon
