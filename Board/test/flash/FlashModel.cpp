#include "FlashModel.h"

#include <algorithm>
#include <random>
#include <set>

namespace flash {
namespace {

using Kind = Operation::Kind;

constexpr std::size_t kMostStates = 2048;
/// Content is cut at blocks of this many bytes, and of a multiple where these were too many.
constexpr std::size_t kBlock = 4;

bool ChangesContent(const Operation& operation) {
  return operation.kind == Kind::Write || operation.kind == Kind::Truncate || operation.kind == Kind::SetMode;
}

bool ChangesNames(const Operation& operation) {
  return !ChangesContent(operation) && operation.kind != Kind::Sync && operation.kind != Kind::SyncFolder;
}

bool Secures(const Operation& sync, const Operation& earlier) {
  if (ChangesContent(earlier)) return sync.kind == Kind::Sync && sync.file == earlier.file;
  return sync.kind == Kind::SyncFolder && sync.path == FolderOf(earlier.path);
}

void ChangeContent(Node& node, const Operation& operation) {
  if (operation.kind == Kind::SetMode) {
    node.mode = operation.mode;
  } else if (operation.kind == Kind::Truncate) {
    node.content.clear();
  } else {
    node.content.resize(std::max<std::size_t>(node.content.size(), operation.offset + operation.data.size()));
    node.content.replace(operation.offset, operation.data.size(), operation.data);
  }
}

/// @return what can be found in a file of which not everything was synced
std::vector<Node> Versions(const Node& synced, const Node& written, std::size_t mostBlocks) {
  const std::string& whole = written.content;
  std::set<std::string> contents = {whole, synced.content};
  const std::size_t block = (whole.size() / mostBlocks / kBlock + 1) * kBlock;
  for (std::size_t cut = 0; cut < whole.size(); cut += block) {
    const std::string part = whole.substr(0, cut);
    contents.insert(part);
    contents.insert(part + std::string(whole.size() - cut, '\0'));
    std::string holed = whole;
    std::fill_n(holed.begin() + static_cast<std::ptrdiff_t>(cut), std::min(block, whole.size() - cut), '\0');
    contents.insert(holed);
    if (cut < synced.content.size()) contents.insert(part + synced.content.substr(cut));
  }
  std::vector<Node> versions = {written};
  for (const std::string& content : contents) {
    Node version = synced;
    version.content = content;
    if (!(version == written)) versions.push_back(version);
  }
  return versions;
}

/// Counts through all combinations of choices, or draws some of them when there are too many.
class Combinations {
 public:
  explicit Combinations(std::vector<std::size_t> sizes) : m_sizes(std::move(sizes)), m_choices(m_sizes.size()) {
    for (const std::size_t size : m_sizes) m_count = std::min(m_count * size, kMostStates + 1);
    m_drawn = m_count > kMostStates;
    m_count = std::min(m_count, kMostStates);
  }
  std::size_t Count() const { return m_count; }
  const std::vector<std::size_t>& Choices() const { return m_choices; }
  void Next() {
    for (std::size_t i = 0; i < m_sizes.size(); ++i) {
      if (m_drawn) {
        m_choices[i] = m_random() % m_sizes[i];
      } else if (++m_choices[i] < m_sizes[i]) {
        return;
      } else {
        m_choices[i] = 0;
      }
    }
  }

 private:
  std::vector<std::size_t> m_sizes;
  std::vector<std::size_t> m_choices;
  std::size_t m_count = 1;
  bool m_drawn = false;
  std::minstd_rand m_random;
};

/// A text that only equal states share.
std::string KeyOf(const Tree& state, bool atEnd) {
  std::string key(1, atEnd ? '1' : '0');
  for (const auto& [path, node] : state) {
    key += path + '\n' + std::to_string(node.mode) + ' ' + std::to_string(node.content.size()) + '\n' + node.content;
  }
  return key;
}

void DropUnreachable(Tree& state) {
  std::erase_if(state, [&state](const auto& entry) {
    const std::string folder = FolderOf(entry.first);
    return folder != "/ffs" && !state.contains(folder);
  });
}

}  // namespace

/// What is not certain after some of the operations.
struct FlashModel::Loss {
  std::vector<const Operation*> names{};      ///< changes of names, in their order
  std::vector<bool> namesLast{};              ///< which of them last for certain
  std::vector<FileId> files{};                ///< what has been made or changed
  std::vector<std::vector<Node>> versions{};  ///< what each of those files can hold
  std::vector<std::size_t> sizes{};           ///< choices: two a change of names, then one a file's version
};

FlashModel::Loss FlashModel::LossAfter(std::size_t count) const {
  Loss loss;
  std::map<FileId, std::pair<Node, Node>> files;  // as synced, as written
  for (const auto& [path, node] : m_before) files[node.id] = {node, node};
  for (std::size_t i = 0; i < count; ++i) {
    const Operation& operation = m_operations[i];
    const auto end = m_operations.begin() + static_cast<std::ptrdiff_t>(count);
    const bool lasts = std::any_of(m_operations.begin() + static_cast<std::ptrdiff_t>(i), end,
                                   [&](const Operation& later) { return Secures(later, operation); });
    if (operation.kind == Kind::Create || operation.kind == Kind::MakeDirectory) {
      const Node made{.isFolder = operation.kind == Kind::MakeDirectory, .mode = operation.mode, .id = operation.file};
      files[operation.file] = {made, made};
    }
    if (ChangesNames(operation)) {
      loss.names.push_back(&operation);
      loss.namesLast.push_back(lasts);
      loss.sizes.push_back(lasts ? 1 : 2);
    } else if (ChangesContent(operation)) {
      auto& [synced, written] = files[operation.file];
      ChangeContent(written, operation);
      if (lasts) synced = written;
    }
  }
  for (const auto& [file, contents] : files) {
    loss.files.push_back(file);
    loss.versions.push_back(contents.first == contents.second
                                ? std::vector<Node>{contents.second}
                                : Versions(contents.first, contents.second, m_mostBlocks));
    loss.sizes.push_back(loss.versions.back().size());
  }
  return loss;
}

Tree FlashModel::StateWith(const Loss& loss, const std::vector<std::size_t>& choices) const {
  std::map<std::string, FileId> names;
  for (const auto& [path, node] : m_before) names[path] = node.id;
  for (std::size_t i = 0; i < loss.names.size(); ++i) {
    if (!loss.namesLast[i] && choices[i] != 0) continue;  // lost
    const Operation& operation = *loss.names[i];
    if (operation.kind == Kind::Rename || operation.kind == Kind::Remove) names.erase(operation.path);
    if (operation.kind == Kind::Rename) names[operation.newPath] = operation.file;
    if (operation.kind == Kind::Create || operation.kind == Kind::MakeDirectory) names[operation.path] = operation.file;
  }
  std::map<FileId, const Node*> nodes;
  for (std::size_t i = 0; i < loss.files.size(); ++i) {
    nodes[loss.files[i]] = &loss.versions[i][choices[loss.names.size() + i]];
  }
  Tree state;
  for (const auto& [path, file] : names) state.emplace(path, *nodes.at(file));
  DropUnreachable(state);
  return state;
}

FlashModel::Count FlashModel::ForEachState(const Visitor& visit) const {
  Count count;
  std::set<std::size_t> seen;
  for (std::size_t done = 0; done <= m_operations.size(); ++done) {
    const bool atEnd = done == m_operations.size();
    const Loss loss = LossAfter(done);
    Combinations combinations(loss.sizes);
    for (std::size_t i = 0; i < combinations.Count(); ++i, combinations.Next()) {
      ++count.states;
      const Tree state = StateWith(loss, combinations.Choices());
      if (!seen.insert(std::hash<std::string>()(KeyOf(state, atEnd))).second) continue;
      ++count.different;
      if (!visit(state, atEnd)) return count;
    }
  }
  return count;
}

}  // namespace flash
