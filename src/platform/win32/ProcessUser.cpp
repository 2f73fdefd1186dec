#include "platform/win32/ProcessUser.h"

namespace quillon {

ProcessUser::ProcessUser() {
  HANDLE token = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) return;
  DWORD size = 0;
  GetTokenInformation(token, TokenUser, nullptr, 0, &size);
  token_.resize(size / sizeof(std::max_align_t) + 1);
  if (GetTokenInformation(token, TokenUser, token_.data(), size, &size) == FALSE) token_.clear();
  CloseHandle(token);
}

PSID ProcessUser::Sid() const noexcept {
  return token_.empty() ? nullptr : reinterpret_cast<const TOKEN_USER*>(token_.data())->User.Sid;
}

}  // namespace quillon
