#include "agent/save_events.h"

#include <new>

#include "agent/base/bridge_session.h"
#include "agent/events/notices.h"

namespace agent {
namespace {

using bridge::Notice;

/// Of whoever's command runs on this thread; without one the agent saves by itself.
Notice noticeOfWhoSaves(Notice::What what) {
  const BridgeSession* const session = BridgeSession::current();
  return session == nullptr ? noticeOfAgent(what) : noticeOf(what, *session);
}

void publish(Events& events, const SettingsKeeper::SaveOutcome& outcome) noexcept try {
  if (!outcome.failure.empty()) {
    Notice notice = noticeOfWhoSaves(Notice::NotSaved);
    notice.reason = bridge::Reason::SaveRefused;
    notice.text = noticedText(outcome.failure);
    return events.publish(notice);
  }
  events.publish(noticeOfWhoSaves(outcome.written ? Notice::Saved : Notice::NothingToSave));
  if (outcome.endedDegradation) events.publish(noticeOfWhoSaves(Notice::DegradationEnded));
} catch (const std::bad_alloc&) {
  events.lose();
}

}  // namespace

SaveEvents::SaveEvents(SettingsKeeper& keeper, Events& events) : keeper_(keeper) {
  if (const std::string reason = keeper.state().degradedReason; !reason.empty()) {
    Notice notice = noticeOfAgent(Notice::DegradationBegan);
    notice.text = noticedText(reason);
    events.publish(notice);
  }
  keeper_.observeSaves([&events](const auto& outcome) { publish(events, outcome); });
}

SaveEvents::~SaveEvents() { keeper_.observeSaves({}); }

}  // namespace agent
