#include "bench/support/Program.h"

#include <cerrno>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/support/Table.h"

namespace quillon::bench {

namespace {

pid_t Start(const std::vector<std::string>& words, const std::string& input) {
  std::vector<std::string> copies = words;
  std::vector<char*> arguments;
  arguments.reserve(copies.size() + 1);
  for (auto& word : copies) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, input.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t process = 0;
  const int error =
      ::posix_spawnp(&process, words[0].c_str(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error(words[0] + " does not start");
  return process;
}

}  // namespace

ProgramRun RunProgram(const std::vector<std::string>& words, const std::string& input) {
  int status = 0;
  rusage usage{};
  const double seconds = Seconds([&] {
    const pid_t process = Start(words, input);
    while (::wait4(process, &status, 0, &usage) < 0 && errno == EINTR) {
    }
  });
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw std::runtime_error(words[0] + " fails");
  }
  return {seconds, static_cast<double>(usage.ru_maxrss) / 1024};
}

}  // namespace quillon::bench
