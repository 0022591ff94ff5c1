#include "Operation.h"

#include <iomanip>
#include <sstream>

namespace flash {

std::string ToText(const Operations& operations) {
  std::ostringstream text;
  for (const Operation& operation : operations) {
    text << static_cast<int>(operation.kind) << ' ' << operation.file << ' ' << operation.offset << ' '
         << operation.mode << std::quoted(operation.path) << std::quoted(operation.newPath)
         << std::quoted(operation.data) << '\n';
  }
  return text.str();
}

Operations FromText(const std::string& text) {
  Operations operations;
  std::istringstream in(text);
  for (int kind = 0; in >> kind;) {
    Operation operation{.kind = static_cast<Operation::Kind>(kind)};
    in >> operation.file >> operation.offset >> operation.mode >> std::quoted(operation.path) >>
        std::quoted(operation.newPath) >> std::quoted(operation.data);
    operations.push_back(operation);
  }
  return operations;
}

std::string FolderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

}  // namespace flash
