#include <cstdio>
#include <exception>
#include <sys/resource.h>

#include "Host.h"
#include "Options.h"

namespace {

// A connection and a message being received take a descriptor each.
void AllowManyDescriptors() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

int Serve(int argc, char** argv) {
  const mailhost::Options options = mailhost::ParseOptions(argc, argv);
  if (options.help) {
    std::fputs(mailhost::kUsage, stdout);
    return 0;
  }
  AllowManyDescriptors();
  mailhost::Host host(options);
  std::printf("smtp %d\npop %d\n", host.SmtpPort(), host.PopPort());
  if (const auto port = host.SmtpsPort()) std::printf("smtps %d\n", *port);
  if (const auto port = host.PopsPort()) std::printf("pops %d\n", *port);
  std::puts("ready");
  std::fflush(stdout);
  host.Run();
  return host.HadMismatch() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Serve(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "mailhost: %s\n", error.what());
    return 2;
  }
}
