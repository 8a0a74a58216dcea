// Files by their names.
#pragma once

#include <string>

#include <qxsystem/platform/export.h>

namespace QXPlatform {

/// A file by name. Every question is asked anew of the system.
class QXPLATFORM_API QXFile {
public:
  /// Touches nothing yet.
  explicit QXFile(const std::string& name);

  /// True when there is something of that name, other than a directory.
  bool Exists() const;

  /// Its size in bytes; -1 when it does not exist, or is of a kind without a
  /// size, such as a pipe.
  long Size() const;

private:
  std::string name_;
};

/// The file's own name: `path` without directories, "b.gz" for "a/b.gz".
/// Empty when `path` ends in a "/". Endings stay, also those of compression.
QXPLATFORM_API std::string QXFileDetermineName(const std::string& path);

}  // namespace QXPlatform
