#include "Watch.h"

#include "CommandError.h"
#include "ServiceNames.h"
#include "Signals.h"
#include "TagObserver.h"
#include "messages/Status.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace clmctl {

void Watch::Add(std::unique_ptr<Source> source) { m_sources.push_back({.source = std::move(source)}); }

void Watch::Start() {
  // Observed first: a daemon that is started again between the answer and the observation would be missed otherwise.
  ObserveTag(commandline::OnlineTagName(m_sources.back().source->Endpoint()), m_client.Address());
  try {
    Begin();
  } catch (const CommandError&) {
    EndQuietly();
    throw;
  }
}

void Watch::Begin() {
  for (Watched& watched : m_sources) {
    watched.source->Begin(m_client);
    ExpectNext(watched);
    ++m_begun;
  }
}

void Watch::End() {
  while (m_begun != 0) m_sources[--m_begun].source->End(m_client);
}

void Watch::EndQuietly() {
  // What was begun is not left running; that the service may not answer is told already.
  try {
    End();
  } catch (const CommandError&) {
  }
}

void Watch::Run(View& view) {
  ForwardSignals(m_client.Address());
  try {
    ReceiveUntilEnded(view);
  } catch (const CommandError&) {
    EndQuietly();
    throw;
  }
  End();
}

void Watch::ReceiveUntilEnded(View& view) {
  while (!m_ended) {
    const Message msg = m_client.ReceiveUntil(NextWakeUp(view));
    if (msg != nullptr) {
      HandleMessage(msg.get(), view);
    } else {
      view.Redraw();
    }
    if (!m_ended) TellOverdue(view);
  }
}

Watch::Deadline Watch::NextWakeUp(const View& view) const {
  Deadline next = view.Ages() ? Client::Clock::now() + std::chrono::seconds(1) : Deadline::max();
  for (const Watched& watched : m_sources) next = std::min(next, watched.due);
  return next;
}

void Watch::ExpectNext(Watched& watched) const {
  // Board time is never slower than the host's.
  watched.due = Client::Clock::now() + watched.source->Interval() + m_settings.timeout;
}

void Watch::TellOverdue(View& view) {
  const auto now = Client::Clock::now();
  for (Watched& watched : m_sources) {
    if (watched.due <= now) HandleOverdue(watched, view);
  }
}

void Watch::HandleMessage(void* msg, View& view) {
  const u32 id = AaSysComMsgGetId(msg);
  if (id == CLMCTL_SIGNAL_IND_MSG) {
    m_ended = IsStopSignal(msg);
    if (!m_ended) view.Redraw();
    return;
  }
  if (id == CLMCTL_TAG_IND_MSG) return HandleOnlineTag(msg, view);
  for (Watched& watched : m_sources) {
    if (watched.source->IndicationId() == id) HandleIndication(watched, msg, view);
  }
}

void Watch::HandleIndication(Watched& watched, void* msg, View& view) {
  const Source::Shown shown = watched.source->Show(msg, view);
  if (shown == Source::Shown::Nothing) return;
  ExpectNext(watched);
  if (&watched == &m_sources.front()) ++m_shown;
  m_ended = shown == Source::Shown::NobodyReads || m_shown == m_settings.count;
}

void Watch::HandleOnlineTag(void* msg, View& view) {
  // The first one tells the value from before the start.
  if (m_onlineTagsSeen++ == 0) return;
  u32 status = 0;
  if (AaSysComMsgGetPayloadSize(msg) < sizeof status) return;
  std::memcpy(&status, AaSysComMsgGetPayload(msg), sizeof status);
  if (status != EStatus_Initialized) {
    view.Note("the climate service has gone offline; waiting for it");
    return;
  }
  try {
    for (Watched& watched : m_sources) {
      watched.source->Resume(m_client);
      ExpectNext(watched);
    }
    view.Note("the climate service was started again; the measurement goes on");
  } catch (const CommandError& error) {
    view.Note(error.what());
  }
}

void Watch::HandleOverdue(Watched& watched, View& view) {
  const auto waited = watched.source->Interval() + m_settings.timeout;
  const std::string text =
      "no indication for " + std::to_string(waited.count()) + "ms; " + watched.source->SilenceText();
  if (m_settings.count && &watched == &m_sources.front()) throw CommandError(ExitCode::Unreachable, text);
  watched.due = Deadline::max();
  view.Note(text);
}

}  // namespace clmctl
