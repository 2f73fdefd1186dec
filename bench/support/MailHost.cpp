#include "bench/support/MailHost.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace quillon::bench {

namespace {

std::uint16_t PortOf(const std::string& line, const std::string& name) {
  const auto prefix = name + " ";
  if (line.compare(0, prefix.size(), prefix) != 0) {
    throw std::runtime_error("mailhost says \"" + line + "\" in place of its " + name + " port");
  }
  return static_cast<std::uint16_t>(std::stoul(line.substr(prefix.size())));
}

std::string ReadLine(std::FILE* stream) {
  std::string line;
  for (int c = std::fgetc(stream); c != EOF && c != '\n'; c = std::fgetc(stream)) {
    line.push_back(static_cast<char>(c));
  }
  return line;
}

}  // namespace

ScratchDirectory::ScratchDirectory(const std::filesystem::path& parent) {
  auto path = (parent / "quillon-bench-XXXXXX").string();
  if (::mkdtemp(path.data()) == nullptr) throw std::runtime_error("no directory for the bench");
  path_ = path;
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path ProgramDirectory() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

MailHost::MailHost(const std::vector<std::string>& options) {
  std::vector<std::string> words{(ProgramDirectory() / "mailhost").string(), "--smtp-port", "0",
                                 "--pop-port", "0"};
  words.insert(words.end(), options.begin(), options.end());
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (auto& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);

  std::array<int, 2> pipe{};
  if (::pipe(pipe.data()) != 0) throw std::runtime_error("no pipe to the mail host");
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
  ::posix_spawn_file_actions_addclose(&actions, pipe[0]);
  ::posix_spawn_file_actions_addclose(&actions, pipe[1]);
  const int error =
      ::posix_spawn(&process_, arguments[0], &actions, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&actions);
  ::close(pipe[1]);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(::fdopen(pipe[0], "r"),
                                                               &std::fclose);
  if (error != 0) throw std::runtime_error("cannot start " + words[0]);

  smtpPort_ = PortOf(ReadLine(output.get()), "smtp");
  popPort_ = PortOf(ReadLine(output.get()), "pop");
  const auto asked = [&](const char* option) {
    return std::find(options.begin(), options.end(), option) != options.end();
  };
  if (asked("--smtps-port")) smtpsPort_ = PortOf(ReadLine(output.get()), "smtps");
  if (asked("--pops-port")) popsPort_ = PortOf(ReadLine(output.get()), "pops");
  if (ReadLine(output.get()) != "ready") throw std::runtime_error("mailhost is not ready");
}

MailHost::~MailHost() {
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}

void FillMaildir(const std::filesystem::path& store, std::size_t count) {
  const auto directory = store / "new";
  std::filesystem::create_directories(directory);
  for (std::size_t index = 1; index <= count; ++index) {
    const auto number = std::to_string(index);
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "%08zu.bench", index);
    std::ofstream(directory / name.data(), std::ios::binary)
        << "Received: from mail.example.org (mail.example.org [192.0.2.25])\r\n"
           "\tby mx.example.com with ESMTP id 4Qx"
        << number
        << "\r\n"
           "\tfor <reader@example.com>; Sat, 21 Nov 2026 10:15:00 +0100\r\n"
           "From: \"A. Correspondent\" <correspondent"
        << number
        << "@example.org>\r\n"
           "To: reader@example.com, \"Somebody Else\" <else@example.com>\r\n"
           "Cc: third@example.net\r\n"
           "Subject: =?iso-8859-1?Q?Gr=FC=DFe?= and the figures of week "
        << number
        << "\r\n"
           "Date: Sat, 21 Nov 2026 10:15:00 +0100\r\n"
           "Message-ID: <"
        << number
        << ".4711@mail.example.org>\r\n"
           "Reply-To: office@example.org\r\n"
           "MIME-Version: 1.0\r\n"
           "Content-Type: text/plain; charset=\"us-ascii\"\r\n"
           "Content-Transfer-Encoding: 7bit\r\n"
           "X-Mailer: Correspondent 3.1\r\n"
           "X-Priority: 3\r\n"
           "Status: O\r\n"
           "\r\n"
           "The figures are in the usual place.\r\n";
  }
}

}  // namespace quillon::bench
