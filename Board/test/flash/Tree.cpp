#include "Tree.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace flash {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFlash = "/ffs";

}  // namespace

Tree ReadFlash() {
  Tree tree;
  for (const auto& entry : fs::recursive_directory_iterator(kFlash)) {
    if (entry.is_symlink()) continue;
    struct stat status {};
    stat(entry.path().c_str(), &status);
    Node node{.isFolder = entry.is_directory(), .mode = status.st_mode & 07777, .id = status.st_ino};
    if (!node.isFolder) {
      std::ifstream file(entry.path(), std::ios::binary);
      node.content.assign(std::istreambuf_iterator<char>(file), {});
    }
    tree.emplace(entry.path(), std::move(node));
  }
  return tree;
}

void LayOutFlash(const Tree& tree) {
  for (const auto& entry : fs::directory_iterator(kFlash)) fs::remove_all(entry.path());
  fs::create_symlink("/ffs/fs1", "/ffs/run");
  fs::create_symlink("/ffs/fs2", "/ffs/stb");
  for (const auto& [path, node] : tree) {  // folders come before what is in them
    if (node.isFolder) {
      fs::create_directory(path);
    } else {
      std::ofstream(path, std::ios::binary) << node.content;
    }
    chmod(path.c_str(), node.mode);
  }
}

}  // namespace flash
