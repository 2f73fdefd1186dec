#include "ConversationPlaying.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <set>

#include "ConversationFile.h"
#include "InternetWorld.h"
#include "Peers.h"
#include "core/Text.h"
#include "core/WholeFile.h"
#include "internet/InternetErrorText.h"

namespace quillon::testing {
namespace {

using Kind = ConversationStep::Kind;

// What a call may come to when the server breaks off: a number with a text, a reply code, or none
// that has a text (2 for SMTP).
constexpr std::int32_t kThrown = 100000;  // + the code of a ServerError

class Playing {
 public:
  Playing(const Conversation& conversation, const PlaySettings& settings)
      : conversation_(conversation),
        settings_(settings),
        cutOff_(settings.cut.steps != Cut().steps) {
    script_ = std::make_shared<ScriptedPeer>(conversation, settings.shape, settings.cut);
    script_->isOld = settings.secured != nullptr;
    script_->secure = settings.secure;
    if (settings.prepare) settings.prepare(world_);
    world_.network.accept = [this] { return Accept(); };
  }

  // The complaints, if any.
  std::vector<std::string> Play() {
    for (const auto& step : conversation_.steps) {
      line_ = step.line;
      if (step.kind == Kind::Set) Set(step.text);
      if (step.kind == Kind::Call) Call(step.text);
      if (step.kind == Kind::Expect && !cutOff_) Expect(step.text);
    }
    if (!cutOff_) {
      for (const auto& complaint : script_->Complaints()) complaints_.push_back(complaint);
    }
    CheckNextCall();
    return complaints_;
  }

 private:
  std::shared_ptr<FakePeer> Accept();
  void Set(std::string_view text);
  void Call(std::string_view text);
  void Expect(std::string_view text);
  void CheckNextCall();
  std::string AttachmentTexts() const;
  std::string Labels() const;
  std::string MakeFile(std::string_view& text);
  void AddInlineFile(std::string_view text);
  void Attach(std::string_view text);
  void AddAlternative(std::string_view text);
  MailResult Invoke(std::string_view operation, std::string_view argument);
  void Complain(const std::string& what) {
    complaints_.push_back("line " + std::to_string(line_) + ": " + what);
  }
  void Compare(std::string_view what, const std::string& found, const std::string& wanted) {
    if (found != wanted) Complain(std::string(what) + " is \"" + found + "\"");
  }

  const Conversation& conversation_;
  const PlaySettings& settings_;
  bool cutOff_;
  bool deletes_ = false;
  InternetWorld world_;
  TempFolder sources_;  // of attachments and alternatives
  std::shared_ptr<ScriptedPeer> script_;
  bool scriptPlayed_ = false;
  bool refuse_ = false;
  TickCount abortAfter_ = 0;
  std::int32_t result_ = 0;
  std::string error_;  // its text
  std::string detail_;
  TickCount elapsed_ = 0;
  std::int32_t count_ = 0;
  std::string resolved_;
  std::size_t line_ = 0;
  std::vector<std::string> complaints_;
};

std::shared_ptr<FakePeer> Playing::Accept() {
  if (refuse_) return nullptr;
  std::shared_ptr<FakePeer> peer = script_;
  if (std::exchange(scriptPlayed_, true))
    peer = std::make_shared<ObligingPeer>(conversation_.isPop);
  if (settings_.secured) peer->SetFilter(settings_.secured());
  return peer;
}

void Playing::Set(std::string_view text) {
  const auto word = TakeWord(text);
  const auto value = Unescape(text);
  const auto number = [&] { return std::stoi(value); };
  auto& message = world_.shared.message;
  auto& instance = world_.instance;
  auto& internet = world_.shared.internet;
  auto& access = instance.access;
  const auto small = [&] { return static_cast<std::int16_t>(number()); };
  const std::map<std::string_view, std::function<void()>> settings = {
      {"smtpsecurity", [&] { access.smtpSecurity = small(); }},
      {"popsecurity", [&] { access.popSecurity = small(); }},
      {"smtploginname", [&] { access.smtpLoginName = value; }},
      {"smtppassword", [&] { access.smtpPassword = value; }},
      {"authentication", [&] { access.authentication = value; }},
      {"accesstoken", [&] { access.accessToken = value; }},
      {"pin", [&] { access.pinnedCertificate = value; }},
      {"extensions", [&] { access.extensions = ToShortBool(number() != 0); }},
      {"charset", [&] { access.charset = value; }},
      {"modern", [&] { access.modernHeaders = ToShortBool(number() != 0); }},
      {"subject", [&] { message.subject = value; }},
      {"replyto", [&] { message.replyTo = value; }},
      {"header",
       [&] {
         message.headers.push_back(
             {value.substr(0, value.find(' ')), value.substr(value.find(' ') + 1)});
       }},
      {"from", [&] { message.from = value; }},
      {"to", [&] { message.to = value.empty() ? std::vector<std::string>() : std::vector{value}; }},
      {"cc", [&] { message.cc.push_back(value); }},
      {"bcc", [&] { message.bcc.push_back(value); }},
      {"body", [&] { message.body = value; }},
      {"bodysize", [&] { message.body.assign(static_cast<std::size_t>(number()), 'x'); }},
      {"html", [&] { message.html = value; }},
      {"attachment", [&] { Attach(value); }},
      {"inline", [&] { AddInlineFile(value); }},
      {"alternative", [&] { AddAlternative(value); }},
      {"encoding", [&] { instance.attachmentEncoding = static_cast<std::int16_t>(number()); }},
      {"lose", [&] { world_.files->RemoveFile(sources_.Path(value)); }},
      {"writable", [&] { world_.disk.writeBudget = std::stoul(value); }},
      {"readable", [&] { world_.disk.readBudget = std::stoul(value); }},
      {"override", [&] { world_.shared.switches.envelopeRecipient = value; }},
      {"greetwithhelo", [&] { world_.shared.switches.greetWithHelo = number() != 0; }},
      {"bodylines", [&] { world_.shared.switches.maximumBodyLines = number(); }},
      {"loginname", [&] { instance.loginName = value; }},
      {"password", [&] { instance.password = value; }},
      {"maximum", [&] { instance.maximumHeaders = number(); }},
      {"unreadonly", [&] { instance.unreadOnly = ToShortBool(number() != 0); }},
      {"attachmentdirectory", [&] { instance.attachmentDirectory = world_.received.Path(value); }},
      {"suppressattachments", [&] { instance.suppressAttachments = ToShortBool(number() != 0); }},
      {"headersinmessage", [&] { instance.headersInMessage = ToShortBool(number() != 0); }},
      {"peekonly", [&] { instance.peekOnly = ToShortBool(number() != 0); }},
      {"trackunread", [&] { access.trackUnread = ToShortBool(number() != 0); }},
      {"rawheaders", [&] { access.rawHeaders = ToShortBool(number() != 0); }},
      {"timeoutprotocol", [&] { internet.timeoutProtocol = number(); }},
      {"index", [&] { instance.messageIndex = number(); }},
      {"refuse", [&] { refuse_ = number() != 0; }},
      {"abortafter", [&] { abortAfter_ = static_cast<TickCount>(number()); }},
      {"appetite", [&] { script_->appetite = static_cast<std::size_t>(number()); }},
      {"hearsanything", [&] { script_->hearsAnything = number() != 0; }},
      {"perturn", [&] { script_->perTurn = static_cast<std::size_t>(number()); }},
  };
  const auto found = settings.find(word);
  if (found == settings.end()) return Complain("unknown setting");
  found->second();
}

// "NAME CONTENT", or "NAME size BYTES" for that many of them.
std::string Playing::MakeFile(std::string_view& text) {
  auto path = sources_.Path(TakeWord(text));
  std::string content(text);
  if (text.starts_with("size ")) {
    content.clear();
    for (int size = std::stoi(std::string(text.substr(5))); size > 0; --size) {
      content += static_cast<char>(size * 7);
    }
  }
  WriteWholeFile(*world_.files, path, BytesOf(content));
  return path;
}

void Playing::Attach(std::string_view text) {
  const std::string name(text.substr(0, text.find(' ')));
  world_.shared.message.attachments.push_back({MakeFile(text), name});
}

// "ID NAME CONTENT".
void Playing::AddInlineFile(std::string_view text) {
  const std::string id(TakeWord(text));
  Attach(text);
  auto& added = world_.shared.message.attachments.back();
  added.label.contentId = id;
  added.isInline = true;
}

// "TYPE NAME CONTENT".
void Playing::AddAlternative(std::string_view text) {
  const std::string type(TakeWord(text));
  world_.shared.message.alternatives.push_back({MakeFile(text), type});
}

MailResult Playing::Invoke(std::string_view operation, std::string_view argument) {
  auto& request = world_.request;
  auto& backEnd = world_.backEnd;
  if (operation == "login") {
    world_.instance.mailSystem = conversation_.isPop ? mail_system::kPop3 : mail_system::kSmtp;
    auto result = backEnd.Login(request);
    world_.instance.mailSystem = mail_system::kInternet;
    return result;
  }
  if (operation == "logout") return backEnd.Logout(request);
  if (operation == "send") return backEnd.Send(request);
  if (operation == "resolve") {
    return backEnd.ResolveName(request, std::string(argument), false, resolved_);
  }
  if (operation == "headers") return backEnd.LoadMessageHeaders(request);
  if (operation == "identifiers") return backEnd.LoadMessageIdentifiers(request);
  if (operation == "unread") return backEnd.UnreadCount(request, count_);
  if (operation == "load") return backEnd.LoadMessage(request);
  if (operation == "delete") return backEnd.DeleteMessage(request);
  throw std::logic_error("unknown call");
}

// However the server behaves, a call ends in the time that the time-outs allow, with a number that
// has a meaning.
void Playing::Call(std::string_view text) {
  const auto operation = TakeWord(text);
  // Without headers there is nothing to load.
  const bool hasHeader = !world_.shared.headers.empty();
  deletes_ = deletes_ || operation == "delete";
  if (cutOff_ && !hasHeader && (operation == "load" || operation == "delete")) return;
  const auto filesBefore = world_.received.Names();
  Timer abort(world_.network, [this] { world_.backEnd.AsynchAbort(); });
  if (abortAfter_ != 0) abort.Start(abortAfter_);
  const auto start = world_.network.Now();
  try {
    auto result = Invoke(operation, text);
    result_ = result.number;
    error_ = std::move(result.text);
    detail_ = std::move(result.detail);
  } catch (const ServerError& error) {
    result_ = kThrown + error.Code();
    error_ = error.Text();
  }
  elapsed_ = world_.network.Now() - start;
  if (result_ != kBackEndSuccess && result_ < 500 && error_.empty()) {
    Complain("result " + std::to_string(result_) + " means nothing");
  }
  if (result_ != kBackEndSuccess && world_.received.Names() != filesBefore) {
    Complain("files of a message that failed were left");
  }
  if (!world_.temporary.Names().empty()) Complain("temporary files were left");
  if (cutOff_ && elapsed_ > 100000) Complain("took " + std::to_string(elapsed_) + " ms");
}

void Playing::Expect(std::string_view text) {
  const auto word = TakeWord(text);
  const auto value = Unescape(text);
  const auto& message = world_.shared.message;
  const auto& headers = world_.shared.headers;
  const auto refused = [&] {
    std::string all;
    for (const auto& recipient : message.refusedRecipients) all += recipient + " ";
    return all.substr(0, all.empty() ? 0 : all.size() - 1);
  };
  const auto header = [&](std::string HeaderRecord::*member) {
    std::string all;
    for (const auto& record : headers) all += record.*member + "|";
    return all.substr(0, all.empty() ? 0 : all.size() - 1);
  };
  const std::map<std::string_view, std::function<std::string()>> found = {
      {"thrown", [&] { return std::to_string(result_ - kThrown); }},
      {"error", [&] { return error_; }},
      {"detail", [&] { return detail_; }},
      {"tlsversion", [&] { return world_.shared.connection.tlsVersion; }},
      {"lastreply", [&] { return world_.shared.connection.lastServerReply; }},
      {"elapsed", [&] { return std::to_string(elapsed_); }},
      {"refused", refused},
      {"resolved", [&] { return resolved_; }},
      {"unread", [&] { return std::to_string(count_); }},
      {"data", [&] { return script_->data.substr(script_->data.find("\n\n") + 2); }},
      {"numbers", [&] { return header(&HeaderRecord::number); }},
      {"identifiers", [&] { return header(&HeaderRecord::uniqueId); }},
      {"subjects", [&] { return header(&HeaderRecord::subject); }},
      {"subject", [&] { return message.subject; }},
      {"from", [&] { return message.from; }},
      {"body", [&] { return message.body; }},
      {"bodysize", [&] { return std::to_string(message.body.size()); }},
      {"html", [&] { return message.receivedHtml; }},
      {"labels", [&] { return Labels(); }},
      {"attachments", [&] { return AttachmentTexts(); }},
      {"recipients", [&] { return Join(message.to, "|"); }},
      {"originators", [&] { return header(&HeaderRecord::originator); }},
      {"tocount", [&] { return std::to_string(message.to.size()); }},
  };
  const auto row = found.find(word);
  if (row != found.end()) return Compare(word, row->second(), value);
  Compare("result", std::to_string(result_), std::string(word));
}

// "[file|name] content" of each attachment of the loaded message.
std::string Playing::AttachmentTexts() const {
  std::string all;
  for (const auto& attachment : world_.shared.message.attachments) {
    all += "[";
    all += FileNameOf(attachment.file);
    all += "|" + attachment.displayName + "] " + ContentOf(*world_.files, attachment.file);
  }
  return all;
}

// "[content type|content id]" of each.
std::string Playing::Labels() const {
  std::string all;
  for (const auto& attachment : world_.shared.message.attachments) {
    all += "[" + attachment.label.contentType + "|" + attachment.label.contentId + "]";
  }
  return all;
}

// The conversation's server is gone; the next one is friendly.
void Playing::CheckNextCall() {
  line_ = 0;
  refuse_ = false;
  if (std::exchange(scriptPlayed_, true)) script_->Hangup();
  world_.instance.messageIndex = 0;
  world_.instance.loginName = "joe";
  world_.instance.password = "secret";
  world_.shared.switches.envelopeRecipient.clear();
  world_.shared.message.attachments.clear();
  world_.shared.message.alternatives.clear();
  world_.disk.writeBudget = world_.disk.readBudget = std::numeric_limits<uint64_t>::max();
  world_.shared.message.from = "joe@example.org";
  world_.shared.message.to = {"ann@example.org"};
  world_.shared.message.cc.clear();
  world_.shared.message.bcc.clear();
  world_.shared.internet = {};
  world_.instance.access = {};
  if (settings_.prepare) settings_.prepare(world_);
  abortAfter_ = 0;
  Call(conversation_.isPop ? "headers" : "send");
  // Deletions that have not become final are told, once.
  if (deletes_ && result_ == internet_error::kQuitFailed) Call("headers");
  if (result_ != kBackEndSuccess) {
    Complain("the next call came to " + std::to_string(result_));
  }
}

}  // namespace

std::vector<std::string> PlayConversation(const Conversation& conversation,
                                          const PlaySettings& settings) {
  return Playing(conversation, settings).Play();
}

std::vector<std::filesystem::path> ConversationFiles(const std::string& folder) {
  std::vector<std::filesystem::path> files;
  const auto place = std::filesystem::path(QUILLON_TESTS_DIR) / folder;
  for (const auto& entry : std::filesystem::directory_iterator(place)) {
    if (entry.path().extension() == ".txt") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string ConversationName(const ::testing::TestParamInfo<std::filesystem::path>& info) {
  auto name = info.param.stem().string();
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

}  // namespace quillon::testing
