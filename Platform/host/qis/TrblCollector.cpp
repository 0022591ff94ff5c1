#include "TrblCollector.h"

#include "Access.h"
#include "NamedSocket.h"
#include "PassedFd.h"

#include <dirent.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

namespace hwapi::qis {
namespace {

using SteadyClock = std::chrono::steady_clock;

/// Most files of a process that a collector believes in.
constexpr u32 kMostFiles = 10'000;

struct CloseDir {
  void operator()(DIR* dir) const { ::closedir(dir); }
};

/// @return whether something can be read, or the other end is gone, before the deadline
bool AwaitReadable(int socket, SteadyClock::time_point deadline) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now()).count();
    pollfd watched{.fd = socket, .events = POLLIN, .revents = 0};
    const int result = ::poll(&watched, 1, static_cast<int>(std::clamp<std::int64_t>(left, 0, INT32_MAX)));
    if (result >= 0 || errno != EINTR) {
      return result > 0;
    }
  }
}

bool IsRegularFile(const Fd& file) {
  struct stat status {};
  return file && ::fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode);
}

/// What other processes say may be anything: an answer is made sound before it is used.
void MakeSound(TrblListAnswer& answer) {
  answer.name.back() = '\0';
  answer.path.back() = '\0';
  answer.priority = std::min<u32>(answer.priority, EAaTrblFilePriority_High);
}

void MakeSound(TrblOutcome& outcome) {
  if (outcome.result < EAaTrblCollect_Ok || outcome.result > EAaTrblCollect_Refused) {
    outcome.result = EAaTrblCollect_Failed;
  }
}

EAaTrblCollect WhyNotConnected(int error) {
  switch (error) {
    case EACCES:
    case EPERM:
      return EAaTrblCollect_Refused;
    case EAGAIN:
      return EAaTrblCollect_NoAnswer;  // too many collectors knock already
    default:
      return EAaTrblCollect_Gone;
  }
}

/// @return the names of the processes' sockets, in the order in which they were taken
std::vector<std::string> SocketNames(const RunFolder& folder) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, CloseDir> dir(::opendir(folder.Path().c_str()));
  while (const dirent* const entry = dir ? ::readdir(dir.get()) : nullptr) {
    std::string name = entry->d_name;
    if (name != "." && name != ".." && !IsLockName(name)) {
      names.push_back(std::move(name));
    }
  }
  std::ranges::sort(names, {}, [](const std::string& name) { return std::pair(name.size(), name); });
  return names;
}

/// One collection.
class Collection {
 public:
  Collection(std::chrono::milliseconds timeout, TAaTrblVisitor visitor, void* context)
      : m_timeout(timeout), m_visitor(visitor), m_context(context) {}

  /// Learns which files there are. A process that is none any more is left out.
  void ListAll(const RunFolder& folder) {
    for (const std::string& name : SocketNames(folder)) {
      Fd connection = ConnectTo(folder, name);
      if (connection) {
        m_processes.emplace_back(std::move(connection), m_timeout);
        ListLast();
      } else if (const EAaTrblCollect reason = WhyNotConnected(errno); reason != EAaTrblCollect_Gone) {
        VisitProcess(0, reason);
      }
    }
    std::ranges::stable_sort(m_files, std::ranges::greater{}, [](const File& file) { return file.listed.priority; });
  }

  void VisitAll() {
    for (const File& file : m_files) {
      TrblProcess& process = m_processes[file.process];
      const TrblProcess::Handed handed = process.Hand(file.listed.index);
      const SAaTrblFile seen{.name = file.listed.name.c_str(),
                             .path = file.listed.path.c_str(),
                             .priority = file.listed.priority,
                             .process = process.Pid(),
                             .result = static_cast<EAaTrblCollect>(handed.outcome.result),
                             .error = handed.outcome.error,
                             .content = handed.content.Get()};
      const bool copied = m_visitor(&seen, m_context) != GLO_FALSE;
      if (copied && seen.result == EAaTrblCollect_Ok) {
        process.Stored(file.listed.index);
      }
    }
  }

  bool AnyAnswered() const { return m_anyAnswered; }

 private:
  struct File {
    std::size_t process;
    TrblProcess::Listed listed;
  };

  void ListLast() {
    std::vector<TrblProcess::Listed> files;
    const EAaTrblCollect result = m_processes.back().List(files);
    m_anyAnswered = m_anyAnswered || result == EAaTrblCollect_Ok;
    for (TrblProcess::Listed& file : files) {
      m_files.push_back({.process = m_processes.size() - 1, .listed = std::move(file)});
    }
    if (result != EAaTrblCollect_Ok) {
      VisitProcess(m_processes.back().Pid(), result);
    }
  }

  void VisitProcess(u32 pid, EAaTrblCollect result) const {
    const SAaTrblFile seen{.name = nullptr,
                           .path = nullptr,
                           .priority = EAaTrblFilePriority_Low,
                           .process = pid,
                           .result = result,
                           .error = 0,
                           .content = -1};
    m_visitor(&seen, m_context);
  }

  std::chrono::milliseconds m_timeout;
  TAaTrblVisitor m_visitor;
  void* m_context;
  std::vector<TrblProcess> m_processes;
  std::vector<File> m_files;
  bool m_anyAnswered = false;
};

}  // namespace

TrblProcess::TrblProcess(Fd connection, std::chrono::milliseconds timeout)
    : m_connection(std::move(connection)),
      m_timeout(timeout),
      m_pid(static_cast<u32>(PeerOf(m_connection.Get()).pid)) {}

EAaTrblCollect TrblProcess::GiveUp(EAaTrblCollect reason) {
  m_state = reason;
  m_connection.Reset();
  return reason;
}

template <typename Answer>
EAaTrblCollect TrblProcess::Ask(TrblOperation operation, u32 index, Answer& answer, Fd& content) {
  if (m_state != EAaTrblCollect_Ok) {
    return m_state;
  }
  const TrblRequest request{.operation = operation, .index = index};
  // A failed send shows in what is received: perhaps a refusal that came before.
  SendWithFd(m_connection.Get(), &request, sizeof request, -1);
  const auto deadline = SteadyClock::now() + m_timeout;
  while (AwaitReadable(m_connection.Get(), deadline)) {
    const ssize_t size = ReceiveWithFd(m_connection.Get(), &answer, sizeof answer, content);
    if (size < 0 && (errno == EAGAIN || errno == EINTR || errno == ECONNRESET)) {
      continue;  // what came before a reset is still there
    }
    if (size != sizeof answer) {
      return GiveUp(EAaTrblCollect_Gone);
    }
    MakeSound(answer);
    return EAaTrblCollect_Ok;
  }
  return GiveUp(EAaTrblCollect_NoAnswer);
}

EAaTrblCollect TrblProcess::List(std::vector<Listed>& files) {
  for (u32 index = 0; index < kMostFiles; ++index) {
    TrblListAnswer answer{};
    Fd none;
    if (const EAaTrblCollect result = Ask(TrblOperation::List, index, answer, none); result != EAaTrblCollect_Ok) {
      return result;
    }
    if (answer.listed == TrblListed::Refused) {
      return GiveUp(EAaTrblCollect_Refused);
    }
    if (answer.listed != TrblListed::File) {
      break;
    }
    files.push_back({.name = answer.name.data(),
                     .path = answer.path.data(),
                     .priority = static_cast<EAaTrblFilePriority>(answer.priority),
                     .index = index});
  }
  return EAaTrblCollect_Ok;
}

TrblProcess::Handed TrblProcess::Hand(u32 index) {
  Handed handed{};
  const EAaTrblCollect asked = Ask(TrblOperation::Hand, index, handed.outcome, handed.content);
  if (asked != EAaTrblCollect_Ok) {
    handed.outcome = {.result = asked, .error = 0};
  }
  if (handed.outcome.result == EAaTrblCollect_Ok && !IsRegularFile(handed.content)) {
    handed.outcome = {.result = EAaTrblCollect_NoFile, .error = EINVAL};
  }
  if (handed.outcome.result != EAaTrblCollect_Ok) {
    handed.content.Reset();
  }
  return handed;
}

void TrblProcess::Stored(u32 index) {
  TrblOutcome outcome{};
  Fd none;
  Ask(TrblOperation::Stored, index, outcome, none);
}

i32 CollectTrblFiles(std::chrono::milliseconds timeout, TAaTrblVisitor visitor, void* context) {
  static const auto* const folder = new RunFolder(kTrblFolder);
  Collection collection(timeout, visitor, context);
  collection.ListAll(*folder);
  collection.VisitAll();
  return collection.AnyAnswered() ? EAaTrblRet_Ok : EAaTrblRet_Failed;
}

}  // namespace hwapi::qis
