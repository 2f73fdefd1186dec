// The program's own work when it is started with a command line: a list of KEY=VALUE items that set
// up a Server of the process's own, log it in and show the send dialog. docs/command-line.md lists
// the keys.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ports/MessageBox.h"
#include "server/Server.h"

namespace quillon {

class StartUp {
 public:
  using MakeServer = std::function<std::shared_ptr<Server>()>;

  // `make` is called when the first key needs the Server, and once at most.
  StartUp(MakeServer make, MessageBoxPort& messageBox);

  // Carries out the text, which shows and waits as the members of Server do; returns the exit
  // status: 0 when all went well, 1 when the user was told why not. Does nothing for a text of
  // blanks. Called once.
  int Run(std::string_view commandLine);

  // Lets go of the Server that Run has left when it is to stay.
  void Release() { server_ = nullptr; }

 private:
  Server& TheServer();
  std::vector<std::string> ItemsOf(std::string_view commandLine);
  void CarryOut(std::string_view item);
  void Detect();
  // Whether there is a mail system to go on with.
  bool Prepare(std::string_view commandLine);
  void Tell(const std::string& text, MessageBoxPort::Icon icon);

  const MakeServer make_;
  MessageBoxPort& messageBox_;
  std::shared_ptr<Server> server_;
  bool systemGiven_ = false;
  bool login_ = false;
  bool showDialog_ = false;
  bool keepRunning_ = false;
};

}  // namespace quillon
