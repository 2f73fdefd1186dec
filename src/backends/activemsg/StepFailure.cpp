#include "backends/activemsg/StepFailure.h"

#include "backends/activemsg/ActiveMessagingErrorText.h"

namespace quillon {

MailResult RunOperation(const Diagnostic& diagnostic, const MailRequest& request,
                        const std::string& context, const std::function<void()>& operation) {
  try {
    operation();
    return {};
  } catch (const UserAbort&) {
    return {active_messaging::kUserAbort, ActiveMessagingErrorText(active_messaging::kUserAbort)};
  } catch (const StepFailure& failure) {
    return diagnostic.Fail(request, failure.what(), failure.Number());
  } catch (const AutomationError& error) {
    return diagnostic.Fail(request, context, ActiveMessagingNumber(error.Number()));
  }
}

}  // namespace quillon
