// What the mechanisms have in common that leave a login to the system.
#pragma once

#include <memory>
#include <string>

#include "sasl/LoginContext.h"

namespace quillon {

inline std::unique_ptr<SystemContext> BeginSystemLogin(SystemPackage package,
                                                       const LoginContext& context) {
  const auto& connection = context.connection;
  return context.system->Begin(
      package, connection.service + '/' + connection.host,
      {context.credentials.loginName, context.credentials.password},
      connection.endPoint.empty() ? std::string() : "tls-server-end-point:" + connection.endPoint);
}

}  // namespace quillon
