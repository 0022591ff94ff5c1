/// Senders that do to the channel that they were given what they can.
#include "Connection.h"
#include "Endpoints.h"
#include "Honest.h"
#include "Message.h"
#include "Rows.h"
#include "Scene.h"
#include "messages/MessageIds.h"

#include <sys/socket.h>
#include <cstring>
#include <deque>
#include <random>
#include <string>
#include <vector>

namespace soak {
namespace {

using hwapi::qis::Fd;
using hwapi::qis::WireHeader;

/// Of the daemon.
constexpr rlim_t kDescriptors = 1024;
constexpr unsigned kMinRounds = 1000;
/// Ends that are kept after their connection was closed; the oldest goes.
constexpr std::size_t kKeptEnds = 64;
/// What the daemon may hold when everything is closed, beyond what it held before.
constexpr std::size_t kMaxMoreDescriptors = 4;

/// A message that nobody handles.
constexpr WireHeader kMessage{.order = hwapi::qis::kHostOrderMark,
                              .id = 0x7000,
                              .sender = 0,
                              .receiver = 0x01010000 | HWAPI_TEMPERATURE_SERVICE,
                              .size = 0,
                              .stamp = 0,
                              .senderStamp = 0,
                              .foreign = 0};

/// Sends without waiting, also where nobody receives.
bool Put(const Fd& end, const void* bytes, std::size_t size) {
  return ::send(end.Get(), bytes, size, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0;
}

void Shut(const Fd& end, std::mt19937& random) {
  constexpr int kHow[] = {SHUT_RD, SHUT_WR, SHUT_RDWR};
  ::shutdown(end.Get(), kHow[random() % std::size(kHow)]);
}

void Shrink(const Fd& end, std::mt19937& /*random*/) {
  const int size = 1;
  ::setsockopt(end.Get(), SOL_SOCKET, SO_SNDBUF, &size, sizeof size);
  ::setsockopt(end.Get(), SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
}

void SendGarbage(const Fd& end, std::mt19937& random) {
  std::vector<u8> bytes(1 + random() % 200);
  for (u8& byte : bytes) byte = static_cast<u8>(random());
  Put(end, bytes.data(), bytes.size());
}

void SendHalfTrue(const Fd& end, std::mt19937& random) {
  WireHeader header = kMessage;
  const auto field = static_cast<std::size_t>(random() % (sizeof header / sizeof(u32)));
  const auto value = static_cast<u32>(random());
  std::memcpy(reinterpret_cast<u8*>(&header) + field * sizeof value, &value, sizeof value);
  Put(end, &header, sizeof header);
}

void SendEmpty(const Fd& end, std::mt19937& /*random*/) {
  constexpr int kTimes = 50;
  for (int i = 0; i < kTimes; ++i) Put(end, nullptr, 0);
}

void SendTooLong(const Fd& end, std::mt19937& random) {
  std::vector<u8> bytes(hwapi::qis::kMaxWireSize + 1 + random() % 1000);
  WireHeader header = kMessage;
  header.size = static_cast<u32>(bytes.size() - sizeof header);
  std::memcpy(bytes.data(), &header, sizeof header);
  Put(end, bytes.data(), bytes.size());
}

void Fill(const Fd& end, std::mt19937& /*random*/) {
  while (Put(end, &kMessage, sizeof kMessage)) {
  }
}

void DoNothing(const Fd& /*end*/, std::mt19937& /*random*/) {}

constexpr void (*kActs[])(const Fd&, std::mt19937&) = {&Shut,      &Shrink,      &SendGarbage, &SendHalfTrue,
                                                       &SendEmpty, &SendTooLong, &Fill,        &DoNothing};

/// A sender with bad manners. @return whether it got a channel
bool Misbehave(const std::string& path, std::mt19937& random, std::deque<Fd>& kept) {
  Fd connection = Connect(path);
  if (!connection) return false;
  if (random() % 4 == 0) SendGarbage(connection, random);
  Greeting greeting = ReceiveGreeting(connection.Get());
  if (!greeting.channel) return false;
  for (auto acts = 1 + random() % 3; acts > 0; --acts) {
    const bool onConnection = random() % 8 == 0;
    kActs[random() % std::size(kActs)](onConnection ? connection : greeting.channel, random);
  }
  if (random() % 2 == 0) return true;
  connection.Reset();
  Put(greeting.channel, &kMessage, sizeof kMessage);
  kept.push_back(std::move(greeting.channel));
  if (kept.size() > kKeptEnds) kept.pop_front();
  return true;
}

}  // namespace

void AttackByEnds(const Settings& settings, Report& report) {
  const bench::BenchBoard board(kBoard);
  Scene scene(board, settings, {.descriptors = kDescriptors});
  const std::string path = scene.SocketOf(HWAPI_TEMPERATURE_SERVICE);
  report.Hard("new clients without an answer, before", NewClientIsAnswered() ? 0 : 1, "", 0);
  HonestClient honest;
  Eventually([&] { return honest.Answered() > 0; });
  scene.StartWatching();
  const std::size_t before = scene.Descriptors();

  std::mt19937 random(settings.seed);
  std::deque<Fd> kept;
  unsigned rounds = 0;
  unsigned refused = 0;
  for (const double end = Now() + settings.seconds; rounds < kMinRounds || Now() < end; ++rounds) {
    refused += Misbehave(path, random, kept) ? 0U : 1U;
    if (!scene.IsAlive()) break;
  }
  report.Progress(std::to_string(rounds) + " senders, " + std::to_string(refused) + " of them turned away");
  report.Hard("new clients without an answer", NewClientIsAnswered() ? 0 : 1, "", 0);
  report.Hard("honest requests lost", honest.Finish(), "", 0);
  kept.clear();
  Eventually([&] { return scene.Descriptors() <= before + kMaxMoreDescriptors; });
  report.Hard("descriptors more than before", static_cast<double>(scene.Descriptors()) - static_cast<double>(before),
              "", kMaxMoreDescriptors);
  scene.ReportWatched(report, "");
}

}  // namespace soak
